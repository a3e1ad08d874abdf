#pragma once

#include <files/gltf/kxGltfDocument.h>
#include <files/import/kxAnimImport.h>
#include <osg/Share.h>

#include <map>
#include <set>

/// The animations of a glTF file, of nodes and of what JSON pointers name.
class kxGltfChannels
{
public:
    /// What a file's parts became.
    struct Targets
    {
        std::vector<osg::Share<osg::Node>> nodes; ///< by index; null where the scene doesn't show them
        std::map<int, std::vector<osg::NodePtr>> cameras, lights;
        std::set<osg::NodePtr> switches;
        std::vector<osg::MaterialPtr> materials;
    };

    kxGltfChannels(const kxGltfDocument& document, const Targets& targets, kxFileReport& report)
        : _document(document), _targets(targets), _report(report)
    {
    }

    /// False where a sampler is damaged. What can't be shown is noted.
    bool read(std::vector<kxAnimImport::Animation>& animations);

private:
    /// A field that a channel drives: a part of its numbers, each times `factor`.
    struct Use
    {
        osg::AttachmentContainerPtr target;
        kxAnimImport::Path path = kxAnimImport::Path::Field;
        std::string field;
        unsigned first = 0, width = 1;
        double factor = 1;
    };

    bool addChannel(const tinygltf::Animation& animation, const tinygltf::AnimationChannel& source, const QString& what,
                    kxAnimImport::Animation& out);
    std::vector<Use> usesOf(const tinygltf::AnimationChannel& source) const;
    std::vector<Use> pointed(const std::string& pointer) const;
    std::vector<Use> ofMaterial(int index, const std::string& rest) const;
    kxAnimImport::Channel channelOf(const Use& use, const kxAnimImport::Channel& all, unsigned width) const;

    const kxGltfDocument& _document;
    const Targets& _targets;
    kxFileReport& _report;
};
