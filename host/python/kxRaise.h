#pragma once

#include <boost/python.hpp>

#include <string>

/// Raises a Python exception out of a function that a script called.
[[noreturn]] inline void kxRaise(PyObject* type, const std::string& text)
{
    PyErr_SetObject(type, boost::python::str(text.data(), text.size()).ptr());
    boost::python::throw_error_already_set();
    std::terminate(); // not reached: the line above throws
}
