#include <files/gltf/kxGltfMeshes.h>

#include <files/scene/kxFileReport.h>

using namespace osg;

namespace
{
/// The accessor of an attribute, -1 where there is none.
int attribute(const tinygltf::Primitive& primitive, const std::string& name)
{
    const auto found = primitive.attributes.find(name);
    return found == primitive.attributes.end() ? -1 : found->second;
}
} // namespace

kxGltfMeshes::kxGltfMeshes(const kxGltfDocument& document, kxGltfMaterials& materials, kxFileReport& report)
    : _document(document), _materials(materials), _report(report), _meshes(document.model().meshes.size())
{
}

const std::vector<kxGltfMeshes::Part>* kxGltfMeshes::parts(int mesh)
{
    std::optional<std::vector<Part>>& entry = _meshes[std::size_t(mesh)];
    if (!entry)
    {
        std::vector<Part> parts;
        int index = 0;
        for (const tinygltf::Primitive& primitive : _document.model().meshes[std::size_t(mesh)].primitives)
            if (!readPart(primitive, QStringLiteral("meshes[%1].primitives[%2]").arg(mesh).arg(index++), parts))
                return nullptr;
        entry = std::move(parts);
    }
    return &*entry;
}

bool kxGltfMeshes::readPart(const tinygltf::Primitive& primitive, const QString& what, std::vector<Part>& parts)
{
    if (primitive.mode < TINYGLTF_MODE_TRIANGLES || primitive.mode > TINYGLTF_MODE_TRIANGLE_FAN)
    {
        _report.note(QStringLiteral("points and lines are left out"));
        return true;
    }
    if (!primitive.targets.empty())
        _report.note(QStringLiteral("morph targets are left out"));
    kxMeshData data;
    if (!readAttributes(primitive, data, what) || !readSkin(primitive, data, what) ||
        !readTriangles(primitive, data, what))
        return false;
    if (data.positions.empty())
        return true; // nothing of it can be seen
    const std::size_t vertices = data.vertexCount();
    const bool complete = (data.normals.empty() || data.normals.size() == 3 * vertices) &&
                          (data.texCoords.empty() || data.texCoords.size() == 2 * vertices) &&
                          (data.colors.empty() || data.colors.size() == 4 * vertices);
    if (!complete)
        _report.note(QStringLiteral("%1: attributes that don't fit its positions are left out").arg(what));
    if (!data.repair())
        return _report.fail(QStringLiteral("%1: an index names no vertex, or a position isn't finite").arg(what));
    if (data.normals.empty())
        data.unshare(); // without normals a surface is flat between its edges
    data.normalizeWeights();
    Part part;
    part.joints = std::move(data.joints);
    part.weights = std::move(data.weights);
    part.mesh = data.makeMesh();
    part.material = _materials.material(primitive.material);
    parts.push_back(std::move(part));
    return true;
}

bool kxGltfMeshes::readAttributes(const tinygltf::Primitive& primitive, kxMeshData& data, const QString& what)
{
    const int positions = attribute(primitive, "POSITION"), normals = attribute(primitive, "NORMAL");
    int three = 3, two = 2;
    if (positions < 0)
    {
        _report.note(QStringLiteral("%1 has no positions and is left out").arg(what));
        return true;
    }
    if (!_document.readFloats(positions, three, data.positions, _report) ||
        (normals >= 0 && !_document.readFloats(normals, three, data.normals, _report)))
        return false;
    const kxGltfMaterials::Mapping& mapping = _materials.mapping(primitive.material);
    const int texCoords = attribute(primitive, "TEXCOORD_" + std::to_string(mapping.texCoord));
    if (texCoords >= 0 && !_document.readFloats(texCoords, two, data.texCoords, _report))
        return false;
    if (mapping.changed)
        for (std::size_t i = 0; i + 1 < data.texCoords.size(); i += 2)
        {
            const float u = data.texCoords[i], v = data.texCoords[i + 1];
            const std::array<float, 6>& m = mapping.matrix;
            data.texCoords[i] = m[0] * u + m[1] * v + m[2];
            data.texCoords[i + 1] = m[3] * u + m[4] * v + m[5];
        }
    const int colors = attribute(primitive, "COLOR_0");
    return colors < 0 || readColors(colors, data);
}

bool kxGltfMeshes::readColors(int accessor, kxMeshData& data)
{
    int components = 0;
    std::vector<float> values;
    if (!_document.readFloats(accessor, components, values, _report))
        return false;
    if (components != 3 && components != 4)
        return _report.fail(QStringLiteral("accessors[%1] holds no colours").arg(accessor));
    const std::size_t stride = std::size_t(components);
    for (std::size_t i = 0; i + stride <= values.size(); i += stride)
    {
        data.colors.insert(data.colors.end(), values.begin() + long(i), values.begin() + long(i + 3));
        data.colors.push_back(stride == 4 ? values[i + 3] : 1.0f);
    }
    return true;
}

bool kxGltfMeshes::readSkin(const tinygltf::Primitive& primitive, kxMeshData& data, const QString& what)
{
    const int joints = attribute(primitive, "JOINTS_0"), weights = attribute(primitive, "WEIGHTS_0");
    int four = 4;
    if (joints < 0 || weights < 0)
        return true;
    if (attribute(primitive, "JOINTS_1") >= 0)
        _report.note(QStringLiteral("%1: of more than 4 joints a vertex, the first 4 are used").arg(what));
    return _document.readIndices(joints, four, data.joints, _report) &&
           _document.readFloats(weights, four, data.weights, _report);
}

bool kxGltfMeshes::readTriangles(const tinygltf::Primitive& primitive, kxMeshData& data, const QString& what)
{
    std::vector<std::uint32_t> order;
    int one = 1;
    if (primitive.indices >= 0)
    {
        if (!_document.readIndices(primitive.indices, one, order, _report))
            return false;
    }
    else
    {
        order.resize(data.vertexCount());
        for (std::size_t i = 0; i < order.size(); ++i)
            order[i] = std::uint32_t(i);
    }
    if (primitive.mode == TINYGLTF_MODE_TRIANGLES)
    {
        if (order.size() % 3 != 0)
        {
            _report.note(QStringLiteral("%1: its last triangle isn't complete and is left out").arg(what));
            order.resize(order.size() - order.size() % 3);
        }
        data.indices = std::move(order);
        return true;
    }
    for (std::size_t i = 2; i < order.size(); ++i)
    {
        const bool fan = primitive.mode == TINYGLTF_MODE_TRIANGLE_FAN;
        const bool turned = !fan && i % 2 == 1; // every other triangle of a strip runs the other way round
        const std::uint32_t a = fan ? order[0] : order[i - 2], b = order[i - 1], c = order[i];
        if (a != b && b != c && a != c)
            data.indices.insert(data.indices.end(), {turned ? b : a, turned ? a : b, c});
    }
    return true;
}
