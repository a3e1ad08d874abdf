#pragma once

#include <QString>

#include <map>
#include <string>

/// What Assimp loses of a Collada file, or doesn't say. Nothing for other files.
struct kxColladaNames
{
    /// Names of the nodes by their ids, which are what animations, cameras and joints go by; several nodes may have one
    /// name. Empty where the file names nodes that have no id.
    std::map<std::string, std::string> byId;
    bool hasOrthographic = false; ///< a camera

    static kxColladaNames of(const QString& path);
};
