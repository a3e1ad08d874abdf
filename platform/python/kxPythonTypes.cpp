#include <python/kxPythonHandles.h>

#include <python/kxPythonTypes.h>
#include <python/kxPythonVectors.h>

#include <boost/python/raw_function.hpp>

namespace bp = boost::python;

namespace
{
[[noreturn]] void refuse(const char* reason, PyTypeObject* type, PyObject* self)
{
    PyErr_Format(PyExc_TypeError, reason, type->tp_name, Py_TYPE(self)->tp_name);
    throw bp::error_already_set();
}

/// Constructors of Boost.Python write into whatever they are given as the object to make. This lets them have only
/// one of `type` that isn't made yet: what a made one holds may be in use by the call that leads here.
bp::object guarded(PyTypeObject* type, const bp::object& construct)
{
    const auto guard = [type, construct](const bp::tuple& arguments, const bp::dict& keywords)
    {
        PyObject* const self = PyTuple_GET_ITEM(arguments.ptr(), 0);
        if (!PyObject_TypeCheck(self, type))
            refuse("%s.__init__() needs an object of its class, not of %s", type, self);
        if (reinterpret_cast<const bp::objects::instance<>*>(self)->objects != nullptr)
            refuse("%s.__init__(): this %s is made already", type, self);
        return bp::object(bp::handle<>(PyObject_Call(construct.ptr(), arguments.ptr(), keywords.ptr())));
    };
    return bp::raw_function(guard, 1);
}

/// Boost.Python takes every object whose class is of its metaclass for one of its own.
PyObject* newClass(PyTypeObject* metatype, PyObject* arguments, PyObject* keywords)
{
    PyObject* const made = PyType_Type.tp_new(metatype, arguments, keywords);
    PyTypeObject* const base = bp::objects::class_type().get();
    if (made == nullptr || PyType_IsSubtype(reinterpret_cast<PyTypeObject*>(made), base))
        return made;
    Py_DECREF(made);
    return PyErr_Format(PyExc_TypeError, "a class of %s needs a base that is one", metatype->tp_name);
}

/// In all classes that the current scope has.
void guardClasses()
{
    PyTypeObject* const metatype = bp::objects::class_metatype().get();
    metatype->tp_new = newClass;
    const bp::list values(bp::scope().attr("__dict__").attr("values")());
    for (bp::ssize_t i = 0; i < bp::len(values); ++i)
    {
        const bp::object value = values[i];
        if (Py_TYPE(value.ptr()) != metatype)
            continue;
        const bp::object construct = value.attr("__init__");
        bp::delattr(value, "__init__"); // what is added beside it would be another overload
        bp::objects::add_to_namespace(value, "__init__",
                                      guarded(reinterpret_cast<PyTypeObject*>(value.ptr()), construct));
    }
}

void defineTypes()
{
    const bp::docstring_options docstrings(true, false);
    kxPythonHandles::define();
    kxPythonVectors::define();
    guardClasses();
}
} // namespace

extern "C" PyObject* kxPythonTypes::initModule()
{
    static PyModuleDef definition = {PyModuleDef_HEAD_INIT,
                                     ModuleName,
                                     "The types of the scene: vectors, and handles of nodes and materials.",
                                     -1,
                                     nullptr,
                                     nullptr,
                                     nullptr,
                                     nullptr,
                                     nullptr};
    return bp::detail::init_module(definition, defineTypes);
}
