#pragma once

#include <boost/python.hpp>

#include <kxMessage.h>

/// Attributes of messages between Python and the application.
///
///     Python                      attribute
///     bool, int, float, str       bool, int (32 bits), double, std::string
///     handle of a node            osg::NodePtr; osg::AnimNodePtr for an animation node and for any AnimNodePtr
///     MaterialPtr                 osg::MaterialPtr
///     sequence of handles         a vector of the same; animations where all are, the empty one counts as nodes
///     set or sequence of str      std::set<QString>
namespace kxHostMessages
{
/// Raises TypeError, with the key, for a value that isn't in the table, OverflowError for an int of more than 32 bits.
void setAttribute(kxMessage& message, const std::string& key, const boost::python::object& value);

/// All attributes as a dict. Unsigned numbers are int, pointers and values of other types are left out.
boost::python::dict attributes(const kxMessage& message);

/// Sends the named message with these attributes and gives all that it carries afterwards. What its receivers read has
/// the type that they read, where a value leaves it open: ids are unsigned, frames doubles, an empty list is of theirs.
boost::python::dict send(const std::string& name, const boost::python::dict& attributes);
} // namespace kxHostMessages
