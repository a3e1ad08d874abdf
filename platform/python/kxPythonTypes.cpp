#include <python/kxPythonHandles.h>

#include <python/kxPythonTypes.h>
#include <python/kxPythonVectors.h>

namespace bp = boost::python;

namespace
{
void defineTypes()
{
    const bp::docstring_options docstrings(true, false);
    kxPythonHandles::define();
    kxPythonVectors::define();
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
