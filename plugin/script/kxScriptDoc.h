#pragma once

#include <boost/python.hpp>

#include <initializer_list>
#include <string>

/// The docstrings of the script functions, all in one form.
class kxScriptDoc
{
public:
    struct Parameter
    {
        const char* name;
        const char* text;
        const char* type;
    };

    kxScriptDoc(const char* summary, std::initializer_list<Parameter> parameters);

    /// What the function gives; `type` as scripts know it.
    kxScriptDoc& returns(const char* text, const char* type);

    /// Enters a function with its docstring in the module that is being filled; `keywords` as boost::python::args().
    template <class Function>
    static void define(const char* name, Function function, const kxScriptDoc& doc)
    {
        boost::python::def(name, function, doc._text.c_str());
    }
    template <class Function, class Keywords>
    static void define(const char* name, Function function, const Keywords& keywords, const kxScriptDoc& doc)
    {
        boost::python::def(name, function, keywords, doc._text.c_str());
    }

private:
    std::string _text;
};
