#pragma once

#include <QString>

#include <map>
#include <string>

struct aiScene;

/// What Assimp loses of a Collada file, or doesn't say. Nothing for other files.
struct kxColladaNames
{
    /// Names of the nodes by their ids, which are what animations, cameras and joints go by; several nodes may have one
    /// name. Empty where the file names nodes that have no id.
    std::map<std::string, std::string> byId;
    bool hasOrthographic = false; ///< a camera

    /// By what the library calls the node: how high its camera sees, in degrees; 0 where the file doesn't say.
    std::map<std::string, double> lenses;

    /// Gives the cameras these lenses.
    void mend(aiScene& scene) const;
    static kxColladaNames of(const QString& path);
};
