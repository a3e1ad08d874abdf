#include <boost/python.hpp>

#include <script/kxAnimScript.h>

void kxAnimScript::registerFunctions()
{
    // Docstrings as they are written, without generated signatures.
    const boost::python::docstring_options docstrings(true, false);
}
