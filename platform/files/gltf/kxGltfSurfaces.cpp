#include <files/gltf/kxGltfSurfaces.h>

#include <files/gltf/kxGltfProperties.h>
#include <files/import/kxImageImport.h>
#include <files/scene/kxFileReport.h>

#include <osg/Share.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
std::vector<double> doubles(const Color3f& color, double scale = 1)
{
    return {double(color[0]) * scale, double(color[1]) * scale, double(color[2]) * scale};
}
/// Of unit length, as the format wants them. One of no direction takes that of the triangles around it.
std::vector<float> unitNormals(const Mesh& mesh)
{
    std::vector<float> normals = mesh.normals();
    Share<Mesh> smooth;
    for (std::size_t i = 0; i + 2 < normals.size(); i += 3)
    {
        const auto length = [&normals, i]
        {
            const double x = double(normals[i]), y = double(normals[i + 1]), z = double(normals[i + 2]);
            return std::sqrt(x * x + y * y + z * z);
        };
        if (!(length() > 0))
        {
            if (!smooth)
            {
                smooth = Share<Mesh>(Mesh::create());
                smooth.get()->setPositions(mesh.positions());
                smooth.get()->setIndices(mesh.indices());
                smooth.get()->computeNormals();
            }
            std::copy_n(smooth.get()->normals().begin() + long(i), 3, normals.begin() + long(i));
        }
        const double scale = 1 / length();
        for (std::size_t c = i; c < i + 3; ++c)
            normals[c] = float(scale * double(normals[c]));
    }
    return normals;
}

bool hasPictures(const tinygltf::Material& material)
{
    const tinygltf::PbrMetallicRoughness& pbr = material.pbrMetallicRoughness;
    return std::max({pbr.baseColorTexture.index, pbr.metallicRoughnessTexture.index, material.normalTexture.index,
                     material.occlusionTexture.index, material.emissiveTexture.index}) >= 0;
}

std::vector<float> clamped(std::vector<float> colors)
{
    for (float& value : colors)
        value = std::clamp(value, 0.0f, 1.0f);
    return colors;
}
} // namespace

const kxGltfSurfaces::Arrays& kxGltfSurfaces::arrays(const MeshPtr& mesh)
{
    const auto found = _arrays.find(mesh->getId());
    if (found != _arrays.end())
        return found->second;
    Arrays& arrays = _arrays[mesh->getId()];
    const auto add = [&](const char* name, const std::vector<float>& values, int type, bool bounds)
    {
        if (!values.empty())
            arrays.attributes[name] = _buffer.addFloats(values, type, TINYGLTF_TARGET_ARRAY_BUFFER, bounds);
    };
    add("POSITION", mesh->positions(), TINYGLTF_TYPE_VEC3, true);
    add("NORMAL", unitNormals(*mesh.getCPtr()), TINYGLTF_TYPE_VEC3, false);
    add("TEXCOORD_0", mesh->texCoords(), TINYGLTF_TYPE_VEC2, false);
    add("COLOR_0", clamped(mesh->colors()), TINYGLTF_TYPE_VEC4, false);
    arrays.indices = _buffer.addIndices(mesh->indices(), TINYGLTF_TYPE_SCALAR, TINYGLTF_TARGET_ELEMENT_ARRAY_BUFFER);
    return arrays;
}

int kxGltfSurfaces::mesh(const std::vector<GeometryPtr>& parts, const std::string& name)
{
    std::vector<UInt32> key;
    for (const GeometryPtr& part : parts)
        for (const FieldContainerPtr& container :
             {part->getMesh(), FieldContainerPtr(part->getMaterial()), part->getSkin()})
            key.push_back(container.getFieldContainerId());
    const auto found = _meshes.find(key);
    if (found != _meshes.end())
        return found->second;
    tinygltf::Mesh entry;
    entry.name = name;
    for (const GeometryPtr& part : parts)
    {
        const MeshPtr mesh = MeshPtr::dcast(part->getMesh());
        if (mesh == NullFC || !mesh->isValid() || mesh->triangleCount() == 0)
            continue;
        const Arrays& data = arrays(mesh);
        tinygltf::Primitive primitive;
        primitive.mode = TINYGLTF_MODE_TRIANGLES;
        primitive.attributes = data.attributes;
        primitive.indices = data.indices;
        primitive.material = material(part->getMaterial());
        if (primitive.material >= 0 && data.attributes.count("TEXCOORD_0") == 0 &&
            hasPictures(_model.materials[std::size_t(primitive.material)]))
            primitive.attributes["TEXCOORD_0"] = cornerCoords(mesh->vertexCount());
        const SkinPtr skin = SkinPtr::dcast(part->getSkin());
        if (skin != NullFC && skin->isValid(mesh->vertexCount()))
        {
            std::map<std::string, int>& accessors = _skins[skin->getId()];
            if (accessors.empty())
            {
                accessors["JOINTS_0"] =
                    _buffer.addIndices(skin->vertexJoints(), TINYGLTF_TYPE_VEC4, TINYGLTF_TARGET_ARRAY_BUFFER);
                accessors["WEIGHTS_0"] =
                    _buffer.addFloats(skin->vertexWeights(), TINYGLTF_TYPE_VEC4, TINYGLTF_TARGET_ARRAY_BUFFER, false);
            }
            primitive.attributes.insert(accessors.begin(), accessors.end());
        }
        entry.primitives.push_back(std::move(primitive));
    }
    int index = -1;
    if (!entry.primitives.empty())
    {
        _model.meshes.push_back(std::move(entry));
        index = int(_model.meshes.size() - 1);
    }
    return _meshes[key] = index;
}

/// A surface without coordinates shows the picture's first texel.
int kxGltfSurfaces::cornerCoords(UInt32 vertices)
{
    const auto found = _corners.find(vertices);
    if (found != _corners.end())
        return found->second;
    return _corners[vertices] = _buffer.addFloats(std::vector<float>(2 * std::size_t(vertices), 0.0f),
                                                  TINYGLTF_TYPE_VEC2, TINYGLTF_TARGET_ARRAY_BUFFER, false);
}

int kxGltfSurfaces::material(const MaterialPtr& material)
{
    const UberMaterialPtr source = UberMaterialPtr::dcast(material);
    if (source == NullFC)
        return -1;
    const auto found = _materials.find(source->getId());
    if (found != _materials.end())
        return found->second;
    tinygltf::Material target;
    target.name = source->getNodeName();
    describe(*source, target);
    _model.materials.push_back(std::move(target));
    return _materials[source->getId()] = int(_model.materials.size() - 1);
}

void kxGltfSurfaces::describe(const UberMaterial& source, tinygltf::Material& target)
{
    tinygltf::PbrMetallicRoughness& pbr = target.pbrMetallicRoughness;
    pbr.baseColorFactor = doubles(source.getBaseColor());
    pbr.baseColorFactor.push_back(double(source.getOpacity()));
    pbr.metallicFactor = double(source.getMetallic());
    pbr.roughnessFactor = double(source.getRoughness());
    target.doubleSided = source.getDoubleSided();
    if (source.getBaseColorImage() != NullFC)
        pbr.baseColorTexture.index = texture(source.getBaseColorImage());
    if (source.getRoughnessImage() != NullFC)
        pbr.metallicRoughnessTexture.index = texture(source.getRoughnessImage());
    if (source.getNormalImage() != NullFC)
        target.normalTexture.index = texture(source.getNormalImage());
    target.normalTexture.scale = double(source.getNormalScale());
    if (source.getOcclusionImage() != NullFC)
        target.occlusionTexture.index = texture(source.getOcclusionImage());
    target.occlusionTexture.strength = double(source.getOcclusionStrength());
    if (source.getEmissiveImage() != NullFC)
        target.emissiveTexture.index = texture(source.getEmissiveImage());
    if (source.getAlphaCutoff() > 0)
    {
        target.alphaMode = "MASK";
        target.alphaCutoff = double(source.getAlphaCutoff());
    }
    else if (source.getOpacity() < 1 || kxImageImport::hasAlpha(source.getBaseColorImage()))
        target.alphaMode = "BLEND";
    const Color3f& emissive = source.getEmissive();
    const double brightest = double(std::max({emissive[0], emissive[1], emissive[2]}));
    target.emissiveFactor = doubles(emissive, brightest > 1 ? 1 / brightest : 1);
    if (brightest > 1)
    {
        const char* const name = kxGltfProperties::Strength;
        target.extensions[name] =
            tinygltf::Value(tinygltf::Value::Object{{"emissiveStrength", tinygltf::Value(brightest)}});
        if (std::find(_model.extensionsUsed.begin(), _model.extensionsUsed.end(), name) == _model.extensionsUsed.end())
            _model.extensionsUsed.push_back(name);
    }
}

int kxGltfSurfaces::texture(const ImagePtr& image)
{
    const auto found = _textures.find(image->getId());
    if (found != _textures.end())
        return found->second;
    bool jpeg = false;
    const std::vector<unsigned char> bytes = kxImageImport::encoded(image, jpeg);
    if (bytes.empty())
    {
        _report.note(QStringLiteral("a picture without texels is left out"));
        return _textures[image->getId()] = -1;
    }
    tinygltf::Image entry;
    entry.mimeType = jpeg ? "image/jpeg" : "image/png";
    entry.bufferView = _buffer.addBytes(bytes);
    _model.images.push_back(std::move(entry));
    tinygltf::Texture use;
    use.source = int(_model.images.size() - 1);
    _model.textures.push_back(use);
    return _textures[image->getId()] = int(_model.textures.size() - 1);
}
