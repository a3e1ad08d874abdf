#pragma once

#include <QString>

#include <map>
#include <string>

/// Names of the nodes of a Collada file by their ids. Ids are what animations, cameras and joints go by; several nodes
/// may have one name.
namespace kxColladaNames
{
/// Empty where the file isn't Collada, or names nodes that have no id.
std::map<std::string, std::string> byId(const QString& path);
} // namespace kxColladaNames
