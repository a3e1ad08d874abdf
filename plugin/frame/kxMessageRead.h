#pragma once

#include <kxMessage.h>

#include <string>

/// Reads the attribute `key` into `out`, where it is present and of exactly the type of `out`.
///
/// False otherwise, and `out` keeps its value. An attribute that is missing is normal and silent; one of another type
/// is reported on the standard error stream in the name of `reader`, with a back trace.
///
/// There is one function for each type that messages carry: bool, int, unsigned int, double, std::string, void*,
/// osg::NodePtr, osg::AnimNodePtr, std::vector of osg::NodePtr, osg::AnimNodePtr and osg::MaterialPtr, and
/// std::set<QString>. Any other type doesn't link.
template <class T>
bool getFromMessage(const kxMessage& message, const std::string& key, T& out, const char* reader = "getFromMessage");
