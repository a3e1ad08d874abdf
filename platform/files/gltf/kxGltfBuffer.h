#pragma once

#include <cstdint>
#include <tiny_gltf.h>
#include <vector>

/// Fills the one buffer of a glTF model that is written, with views and accessors on it.
class kxGltfBuffer
{
public:
    explicit kxGltfBuffer(tinygltf::Model& model) : _model(model) {}

    /// `target`: what a graphics card takes the view for, 0 for nothing. `bounds`: smallest and largest values are
    /// told.
    int addFloats(const std::vector<float>& values, int type, int target, bool bounds);
    int addIndices(const std::vector<std::uint32_t>& values, int type, int target);
    /// Bytes as they are; the view.
    int addBytes(const std::vector<unsigned char>& bytes);
    /// Puts the buffer into the model; nothing may be added behind.
    void finish();
    std::size_t size() const { return _bytes.size(); }

private:
    int addView(const void* data, std::size_t size, int target);

    tinygltf::Model& _model;
    std::vector<unsigned char> _bytes;
};
