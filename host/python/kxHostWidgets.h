#pragma once

#include <boost/python.hpp>

#include <osg/Vector.h>

#include <string>

/// The widgets on the screen for scripts that show or test how the application is used.
///
/// A widget is named by its object name, where that isn't enough after names of widgets above it: "_properties/_name".
/// Only visible ones are found; none, or more than one, raises LookupError.
namespace kxHostWidgets
{
/// (x, y, width, height) in pixels of the screen, as a mouse that is moved by another program sees them.
boost::python::tuple rect(const std::string& path);
/// The place of a row's text, as rect(). `row` is the texts of the rows above it and its own, each in column 0. Raises
/// LookupError where the widget has no such row in sight.
boost::python::tuple rowRect(const std::string& path, const boost::python::list& row, int column);
/// The texts of all rows that are not folded away, from the top, each a list as rowRect() takes.
boost::python::list rows(const std::string& path);
/// The text that a row shows in a column.
std::string rowText(const std::string& path, const boost::python::list& row, int column);
/// The place of an entry of a menu, menu bar or tool bar, as rect(). `path` empty: of the menu that is open. Raises
/// LookupError where there is no visible entry of this text.
boost::python::tuple actionRect(const std::string& path, const std::string& text);
/// The place of a tab of this text, as rect(): of tabbed dock windows, mostly. Raises LookupError where none is
/// visible.
boost::python::tuple tabRect(const std::string& text);
/// (x, y) in pixels of the screen of a point of the scene that a graphics view shows.
boost::python::tuple scenePoint(const std::string& path, double x, double y);
/// (x, y) in pixels of the screen of a point of the 3D scene, also one beside or behind what the view shows of it.
/// Raises LookupError where no 3D view is visible or the point lies behind the eye, ValueError for numbers that aren't
/// finite.
boost::python::tuple pointInView(const osg::Vec3f& point);
/// A property that is a truth value, a number or a text; others raise TypeError, unknown ones KeyError.
boost::python::object property(const std::string& path, const std::string& name);
} // namespace kxHostWidgets
