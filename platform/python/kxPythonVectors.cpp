#include <python/kxPythonHandles.h>

#include <python/kxPythonVectors.h>

#include <osg/MField.h>
#include <osg/Vector.h>

#include <boost/make_shared.hpp>

#include <limits>
#include <new>

namespace bp = boost::python;

namespace
{
typedef bp::converter::rvalue_from_python_stage1_data Stage1;

/// Texts are sequences too, but never meant as one.
bool isSequence(PyObject* object)
{
    return PySequence_Check(object) != 0 && !PyUnicode_Check(object) && !PyBytes_Check(object) &&
           !PyByteArray_Check(object);
}

/// The items of a sequence; none where the object isn't one, or fails to give them.
class Items
{
public:
    explicit Items(PyObject* object) : _fast(isSequence(object) ? PySequence_Fast(object, "") : nullptr)
    {
        if (_fast == nullptr)
            PyErr_Clear();
    }
    ~Items() { Py_XDECREF(_fast); }
    Items(const Items&) = delete;
    Items& operator=(const Items&) = delete;

    bool isValid() const { return _fast != nullptr; }
    /// Asked again at each step: converting an item may run code that changes the list.
    Py_ssize_t size() const { return PySequence_Fast_GET_SIZE(_fast); }
    bp::object item(Py_ssize_t index) const
    {
        return bp::object(bp::handle<>(bp::borrowed(PySequence_Fast_GET_ITEM(_fast, index))));
    }

private:
    PyObject* _fast;
};

bool isNumber(PyObject* object)
{
    if (PyFloat_Check(object) || PyLong_Check(object) || PyIndex_Check(object))
        return true;
    const PyNumberMethods* const methods = Py_TYPE(object)->tp_as_number;
    return methods != nullptr && methods->nb_float != nullptr;
}

float toFloat(PyObject* object)
{
    const double value = PyFloat_AsDouble(object);
    if (value == -1.0 && PyErr_Occurred() != nullptr)
        bp::throw_error_already_set();
    return static_cast<float>(value);
}

// How one element is checked and read

struct FloatElement
{
    static bool accepts(PyObject* object) { return isNumber(object); }
    static float read(PyObject* object) { return toFloat(object); }
};

struct IntElement
{
    static bool accepts(PyObject* object) { return PyIndex_Check(object) != 0; }
    static int read(PyObject* object)
    {
        const Py_ssize_t value = PyNumber_AsSsize_t(object, PyExc_OverflowError);
        if (value == -1 && PyErr_Occurred() != nullptr)
            bp::throw_error_already_set();
        if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
        {
            PyErr_SetString(PyExc_OverflowError, "the number doesn't fit into 32 bits");
            bp::throw_error_already_set();
        }
        return int(value);
    }
};

struct StringElement
{
    static bool accepts(PyObject* object) { return PyUnicode_Check(object) != 0; }
    static std::string read(PyObject* object)
    {
        Py_ssize_t size = 0;
        const char* const text = PyUnicode_AsUTF8AndSize(object, &size);
        if (text == nullptr)
            bp::throw_error_already_set();
        return std::string(text, std::size_t(size));
    }
};

/// Any other type by the conversions that are registered for it.
template <class T>
struct RegisteredElement
{
    static bool accepts(PyObject* object) { return bp::extract<T>(object).check(); }
    static T read(PyObject* object) { return bp::extract<T>(object)(); }
};

template <class T, class Element>
struct VectorConversion
{
    typedef std::vector<T> Vector;

    static void* convertible(PyObject* object)
    {
        const Items items(object);
        if (!items.isValid())
            return nullptr;
        for (Py_ssize_t i = 0; i < items.size(); ++i)
            if (!Element::accepts(items.item(i).ptr()))
                return nullptr;
        return object;
    }

    static void construct(PyObject* object, Stage1* data)
    {
        void* const storage = reinterpret_cast<bp::converter::rvalue_from_python_storage<Vector>*>(data)->storage.bytes;
        Vector& vector = *new (storage) Vector;
        data->convertible = storage; // from here on the vector is destroyed by Boost.Python, whatever is thrown
        const Items items(object);
        if (!items.isValid())
            return;
        vector.reserve(std::size_t(items.size()));
        for (Py_ssize_t i = 0; i < items.size(); ++i)
            vector.push_back(Element::read(items.item(i).ptr()));
    }

    static PyObject* convert(const Vector& vector)
    {
        bp::list list;
        for (const T& element : vector)
            list.append(element);
        return bp::incref(list.ptr());
    }

    static void define()
    {
        bp::converter::registry::push_back(convertible, construct, bp::type_id<Vector>());
        bp::to_python_converter<Vector, VectorConversion>();
    }
};

// Vec3f

struct Vec3fFromSequence
{
    static void* convertible(PyObject* object)
    {
        const Items items(object);
        if (!items.isValid() || items.size() != 3)
            return nullptr;
        for (Py_ssize_t i = 0; i < 3; ++i)
            if (!isNumber(items.item(i).ptr()))
                return nullptr;
        return object;
    }
    static void construct(PyObject* object, Stage1* data)
    {
        void* const storage =
            reinterpret_cast<bp::converter::rvalue_from_python_storage<osg::Vec3f>*>(data)->storage.bytes;
        osg::Vec3f& vector = *new (storage) osg::Vec3f;
        data->convertible = storage;
        const Items items(object);
        for (Py_ssize_t i = 0; items.isValid() && i < 3 && i < items.size(); ++i)
            vector[std::size_t(i)] = toFloat(items.item(i).ptr());
    }
};

template <int index>
float getComponent(const osg::Vec3f& vector)
{
    return vector[index];
}

template <int index>
void setComponent(osg::Vec3f& vector, float value)
{
    vector[index] = value;
}

std::size_t checkedIndex(long index)
{
    if (index < -3 || index > 2)
    {
        PyErr_SetString(PyExc_IndexError, "Vec3f index out of range");
        bp::throw_error_already_set();
    }
    return std::size_t(index < 0 ? index + 3 : index);
}

// What reads a sequence calls these: they take a Vec3f itself, and no sequence for one.

float getItem(osg::Vec3f& vector, long index)
{
    return vector[checkedIndex(index)];
}

std::size_t length(osg::Vec3f&)
{
    return 3;
}

void setItem(osg::Vec3f& vector, long index, float value)
{
    vector[checkedIndex(index)] = value;
}

osg::Vec3f divided(const osg::Vec3f& vector, float divisor)
{
    if (divisor == 0)
    {
        PyErr_SetString(PyExc_ZeroDivisionError, "Vec3f division by zero");
        bp::throw_error_already_set();
    }
    return osg::Vec3f(vector[0] / divisor, vector[1] / divisor, vector[2] / divisor);
}

osg::Vec3f multiplied(const osg::Vec3f& vector, float factor)
{
    return vector * factor;
}

osg::Vec3f subtractedFrom(const osg::Vec3f& vector, const osg::Vec3f& other)
{
    return other - vector;
}

std::string represent(const osg::Vec3f& vector)
{
    return "Vec3f(" + osg::toString(vector[0]) + ", " + osg::toString(vector[1]) + ", " + osg::toString(vector[2]) +
           ")";
}

boost::shared_ptr<osg::Vec3f> copy(const osg::Vec3f& vector)
{
    return boost::make_shared<osg::Vec3f>(vector);
}

/// Python's answer to an operand that doesn't fit.
bp::object notImplemented()
{
    return bp::object(bp::handle<>(bp::borrowed(Py_NotImplemented)));
}

bp::object isEqual(const osg::Vec3f& vector, const bp::object& other)
{
    const bp::extract<osg::Vec3f> operand(other);
    return operand.check() ? bp::object(vector == osg::Vec3f(operand())) : notImplemented();
}

template <osg::Vec3f (*operation)(const osg::Vec3f&, const osg::Vec3f&)>
bp::object withVector(const osg::Vec3f& vector, const bp::object& other)
{
    const bp::extract<osg::Vec3f> operand(other);
    return operand.check() ? bp::object(operation(vector, operand())) : notImplemented();
}

template <osg::Vec3f (*operation)(const osg::Vec3f&, float)>
bp::object withNumber(const osg::Vec3f& vector, const bp::object& other)
{
    return isNumber(other.ptr()) ? bp::object(operation(vector, toFloat(other.ptr()))) : notImplemented();
}

osg::Vec3f added(const osg::Vec3f& a, const osg::Vec3f& b)
{
    return a + b;
}

osg::Vec3f subtracted(const osg::Vec3f& a, const osg::Vec3f& b)
{
    return a - b;
}

osg::Vec3f negated(const osg::Vec3f& vector)
{
    return -vector;
}

void defineVec3f()
{
    bp::class_<osg::Vec3f> type("Vec3f",
                                "Three floats: a place, a direction, an angle about each axis, a scale.\n\n"
                                "Vec3f() is (0, 0, 0). Vec3f(x, y, z) and Vec3f(sequence) take numbers. Wherever a "
                                "Vec3f is taken, so is any sequence of three numbers.");
    type.def(bp::init<float, float, float>((bp::arg("x"), bp::arg("y"), bp::arg("z"))))
        .def("__init__", bp::make_constructor(copy))
        .add_property("x", getComponent<0>, setComponent<0>, "First component.")
        .add_property("y", getComponent<1>, setComponent<1>, "Second component.")
        .add_property("z", getComponent<2>, setComponent<2>, "Third component.")
        .def("__len__", length)
        .def("__getitem__", getItem)
        .def("__setitem__", setItem)
        .def("__eq__", isEqual)
        .def("__add__", withVector<added>)
        .def("__radd__", withVector<added>)
        .def("__sub__", withVector<subtracted>)
        .def("__rsub__", withVector<subtractedFrom>)
        .def("__mul__", withNumber<multiplied>)
        .def("__rmul__", withNumber<multiplied>)
        .def("__truediv__", withNumber<divided>)
        .def("__neg__", negated)
        .def("__repr__", represent);
    type.attr("__hash__") = bp::object(); // mutable
}
} // namespace

void kxPythonVectors::define()
{
    defineVec3f();
    bp::converter::registry::push_back(Vec3fFromSequence::convertible, Vec3fFromSequence::construct,
                                       bp::type_id<osg::Vec3f>());

    VectorConversion<float, FloatElement>::define();
    VectorConversion<int, IntElement>::define();
    VectorConversion<std::string, StringElement>::define();
    VectorConversion<osg::Vec3f, RegisteredElement<osg::Vec3f>>::define();
    VectorConversion<kxNodePtr, RegisteredElement<kxNodePtr>>::define();
    VectorConversion<osg::NodePtr, RegisteredElement<osg::NodePtr>>::define();
    VectorConversion<osg::AnimNodePtr, RegisteredElement<osg::AnimNodePtr>>::define();
    VectorConversion<osg::MaterialPtr, RegisteredElement<osg::MaterialPtr>>::define();
}
