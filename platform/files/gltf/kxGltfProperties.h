#pragma once

#include <files/gltf/kxExportCurves.h>

#include <QString>

#include <map>
#include <set>
#include <string>
#include <tiny_gltf.h>

class kxFileReport;

/// Where the containers of the scene went in a glTF model that is written.
struct kxGltfPlaces
{
    std::map<osg::UInt32, int> nodes;                    ///< by the node's id
    std::map<osg::UInt32, std::vector<int>> nodesOfCore; ///< by the core's id
    std::map<osg::UInt32, std::vector<int>> camerasOfCore, lightsOfCore;
    std::map<osg::UInt32, int> materials; ///< by id
};

/// Something of a glTF model that an animation changes.
struct kxGltfProperty
{
    std::vector<std::string> pointers; ///< as of JSON: "/cameras/0/perspective/yfov"
    unsigned width = 1;
    bool isTruth = false;                ///< shown or not
    std::vector<kxChannelTarget> inputs; ///< six for a rotation
    kxExportCurves::Map map;             ///< null: the inputs themselves
    osg::UInt32 owner = 0;               ///< the container that is animated
    QString object;                      ///< whose it is, by name
    bool isRotation() const { return inputs.size() == 6 && width == 4; }
};

namespace kxGltfProperties
{
/// What the channels of an animation become; what has no place is noted with its object. Where it asks for it, the
/// model gets what is pointed to.
std::vector<kxGltfProperty> of(const kxExportSources::Animation& animation, const kxGltfPlaces& places,
                               tinygltf::Model& model, kxFileReport& report, std::size_t& left);
/// The nodes of which an animation changes whether they are shown, by id.
std::set<osg::UInt32> shownAndHidden(const std::vector<kxExportSources::Animation>& animations);
/// As a pointer names it.
constexpr char Visibility[] = "KHR_node_visibility";
constexpr char Strength[] = "KHR_materials_emissive_strength";
} // namespace kxGltfProperties
