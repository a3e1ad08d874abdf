#pragma once

#include <boost/python.hpp>

#include <string>

/// The widgets on the screen for scripts that show or test how the application is used.
///
/// A widget is named by its object name, where that isn't enough behind names of widgets above it: "_properties/_name".
/// Only visible ones are found; none, or more than one, raises LookupError.
namespace kxHostWidgets
{
/// (x, y, width, height) in pixels of the screen, as a mouse that is moved by another program sees them.
boost::python::tuple rect(const std::string& path);
/// A property that is a truth value, a number or a text; others raise TypeError, unknown ones KeyError.
boost::python::object property(const std::string& path, const std::string& name);
} // namespace kxHostWidgets
