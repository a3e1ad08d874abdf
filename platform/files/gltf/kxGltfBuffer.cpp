#include <files/gltf/kxGltfBuffer.h>

#include <QtEndian>

#include <algorithm>

namespace
{
constexpr std::size_t Alignment = 4;
} // namespace

int kxGltfBuffer::addView(const void* data, std::size_t size, int target)
{
    _bytes.resize((_bytes.size() + Alignment - 1) / Alignment * Alignment, 0);
    tinygltf::BufferView view;
    view.buffer = 0;
    view.byteOffset = _bytes.size();
    view.byteLength = size;
    view.target = target;
    const auto* const bytes = static_cast<const unsigned char*>(data);
    _bytes.insert(_bytes.end(), bytes, bytes + size);
    _model.bufferViews.push_back(view);
    return int(_model.bufferViews.size() - 1);
}

int kxGltfBuffer::addBytes(const std::vector<unsigned char>& bytes)
{
    return addView(bytes.data(), bytes.size(), 0);
}

int kxGltfBuffer::addFloats(const std::vector<float>& values, int type, int target, bool bounds)
{
    const std::size_t components = std::size_t(tinygltf::GetNumComponentsInType(std::uint32_t(type)));
    std::vector<float> bytes(values.size());
    qToLittleEndian<float>(values.data(), qsizetype(values.size()), bytes.data());
    tinygltf::Accessor accessor;
    accessor.bufferView = addView(bytes.data(), bytes.size() * sizeof(float), target);
    accessor.componentType = TINYGLTF_COMPONENT_TYPE_FLOAT;
    accessor.type = type;
    accessor.count = values.size() / components;
    for (std::size_t c = 0; bounds && c < components && !values.empty(); ++c)
    {
        float low = values[c], high = values[c];
        for (std::size_t i = c; i < values.size(); i += components)
        {
            low = std::min(low, values[i]);
            high = std::max(high, values[i]);
        }
        accessor.minValues.push_back(double(low));
        accessor.maxValues.push_back(double(high));
    }
    _model.accessors.push_back(accessor);
    return int(_model.accessors.size() - 1);
}

int kxGltfBuffer::addIndices(const std::vector<std::uint32_t>& values, int type, int target)
{
    const bool narrow = std::all_of(values.begin(), values.end(), [](std::uint32_t value) { return value < 0xffffu; });
    tinygltf::Accessor accessor;
    if (narrow)
    {
        std::vector<quint16> bytes;
        bytes.reserve(values.size());
        for (const std::uint32_t value : values)
            bytes.push_back(qToLittleEndian(quint16(value)));
        accessor.bufferView = addView(bytes.data(), bytes.size() * sizeof(quint16), target);
    }
    else
    {
        std::vector<quint32> bytes;
        bytes.reserve(values.size());
        for (const std::uint32_t value : values)
            bytes.push_back(qToLittleEndian(quint32(value)));
        accessor.bufferView = addView(bytes.data(), bytes.size() * sizeof(quint32), target);
    }
    accessor.componentType = narrow ? TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT : TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT;
    accessor.type = type;
    accessor.count = values.size() / std::size_t(tinygltf::GetNumComponentsInType(std::uint32_t(type)));
    _model.accessors.push_back(accessor);
    return int(_model.accessors.size() - 1);
}

int kxGltfBuffer::addTruths(const std::vector<float>& values)
{
    const std::vector<unsigned char> bytes(values.begin(), values.end());
    tinygltf::Accessor accessor;
    accessor.bufferView = addView(bytes.data(), bytes.size(), 0);
    accessor.componentType = TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE;
    accessor.type = TINYGLTF_TYPE_SCALAR;
    accessor.count = bytes.size();
    _model.accessors.push_back(accessor);
    return int(_model.accessors.size() - 1);
}

void kxGltfBuffer::finish()
{
    if (_bytes.empty())
        return;
    tinygltf::Buffer buffer;
    buffer.data = std::move(_bytes);
    _model.buffers.push_back(std::move(buffer));
}
