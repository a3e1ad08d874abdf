#pragma once

#include <cstdint>
#include <tiny_gltf.h>
#include <vector>

/// Fills the one buffer of a glTF model that is written, with views and accessors on it.
class kxGltfBuffer
{
public:
    explicit kxGltfBuffer(tinygltf::Model& model) : _model(model) {}

    /// The index of a new accessor of `values`, one after another for each element; `type` is TINYGLTF_TYPE_... of an
    /// element. `target`: what a graphics card takes the view for (TINYGLTF_TARGET_...), 0 for nothing. `bounds`: the
    /// smallest and the largest values are written too.
    int addFloats(const std::vector<float>& values, int type, int target, bool bounds);
    /// The same for unsigned numbers of 32 bits.
    int addIndices(const std::vector<std::uint32_t>& values, int type, int target);
    /// Numbers from 0 to 255, one to an element, in a byte each: truth values.
    int addTruths(const std::vector<float>& values);
    /// Bytes as they are; the index of their view.
    int addBytes(const std::vector<unsigned char>& bytes);
    /// Puts the buffer into the model; nothing may be added after that.
    void finish();
    std::size_t size() const { return _bytes.size(); }

private:
    int addView(const void* data, std::size_t size, int target);

    tinygltf::Model& _model;
    std::vector<unsigned char> _bytes;
};
