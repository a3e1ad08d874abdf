#pragma once

#include <files/gltf/kxExportCurves.h>
#include <files/gltf/kxExportTracks.h>
#include <files/gltf/kxGltfBuffer.h>

class kxFileReport;

/// Writes the scene's animations into a glTF model.
class kxGltfAnimations
{
public:
    /// `nodes`: the indices of the nodes that show a core, by the core's id.
    kxGltfAnimations(tinygltf::Model& model, kxGltfBuffer& buffer, std::map<osg::UInt32, std::vector<int>> nodes,
                     kxFileReport& report);

    void write();

private:
    struct Samples;

    void write(const kxExportTracks::Animation& source);
    void writeField(const kxExportTracks::Animation& source, const osg::TransformPtr& core,
                    const kxExportTracks::Field& field, float shift, const Samples& samples, tinygltf::Animation& out);
    /// The channel keeps the name of the block in what the format leaves to applications.
    void append(const kxExportCurves::Sampler& sampler, float shift, const osg::TransformPtr& core, const char* path,
                const std::string& block, tinygltf::Animation& out);
    Samples sample(const kxExportTracks::Animation& source);
    std::string nameOf(const osg::TransformPtr& core) const;

    tinygltf::Model& _model;
    kxGltfBuffer& _buffer;
    std::map<osg::UInt32, std::vector<int>> _nodes;
    kxFileReport& _report;
};
