#pragma once

#include <files/gltf/kxGltfBuffer.h>
#include <files/gltf/kxGltfProperties.h>

/// Writes the scene's animations into a glTF model, in which all else stands already.
class kxGltfAnimations
{
public:
    kxGltfAnimations(tinygltf::Model& model, kxGltfBuffer& buffer, const kxGltfPlaces& places, kxFileReport& report)
        : _model(model), _buffer(buffer), _places(places), _report(report)
    {
    }

    void write(const std::vector<kxExportSources::Animation>& animations);

private:
    void write(const kxExportSources::Animation& source);
    /// Says of a node whether it is shown, and always what the model says without the animation. Programs that know no
    /// pointers may pass over an animation that has some, so one that moves something else is written without these.
    bool isAsInModel(const kxGltfProperty& property, const kxExportCurves::Sampler& sampler) const;
    static osg::UInt32 choiceOf(const kxGltfProperty& property);
    /// True where it moves as far before the animation as that is long.
    static bool isMovedBefore(const kxExportSources::Animation& source, const kxGltfProperty& property);
    /// Says what isn't as near as the rest.
    void noteDistance(const kxExportSources::Animation& source, const kxGltfProperty& property, double off);
    void reserveStrength(const kxExportSources::Animation& source);
    kxExportCurves curvesOf(const kxExportSources::Animation& source, const kxGltfProperty& property);
    int addSampler(const kxExportCurves::Sampler& sampler, const kxGltfProperty& property, tinygltf::Animation& out);
    /// The channel keeps the name of the block in what the format leaves to applications.
    void addChannel(int sampler, const std::string& pointer, const std::string& block, tinygltf::Animation& out);
    int accessorOf(const std::vector<float>& values, int type, bool isTimes, bool isTruth);

    tinygltf::Model& _model;
    kxGltfBuffer& _buffer;
    const kxGltfPlaces& _places;
    kxFileReport& _report;
    std::map<std::pair<int, std::vector<float>>, int> _accessors; // by type and values: what is equal is written once
    std::size_t _added = 0, _left = 0, _still = 0;                // keys; animated values; channels without effect
    std::size_t _parts = 20000000; // of time that may still be looked at; a file may claim any number of repeats
};
