#include <files/assimp/kxAssimpMaterials.h>

#include <files/import/kxImageImport.h>
#include <files/scene/kxFileReport.h>
#include <files/scene/kxSceneSummary.h>

#include <algorithm>
#include <assimp/GltfMaterial.h>
#include <assimp/material.h>
#include <cmath>

using namespace osg;

namespace
{
constexpr qint64 LargestPicture = qint64(1) << 28; ///< bytes of a file
constexpr float Darkest = 0.02f; ///< a base colour below this, under a picture, is a preset that nobody chose

float finite(float value, float low, float high, float preset)
{
    return std::isfinite(value) ? std::clamp(value, low, high) : preset;
}

/// Colours of these formats are meant as a screen shows them.
Color3f linear(const aiColor4D& color)
{
    const auto one = [](float value) { return kxImageImport::linearFromSrgb(finite(value, 0.0f, 1.0f, 0.8f)); };
    return Color3f(one(color.r), one(color.g), one(color.b));
}

ImagePtr fromTexels(const aiTexture& texture)
{
    const std::size_t count = std::size_t(texture.mWidth) * texture.mHeight;
    std::vector<UInt8> pixels;
    pixels.reserve(count * 4);
    for (std::size_t i = 0; i < count; ++i)
    {
        const aiTexel& texel = texture.pcData[i];
        pixels.insert(pixels.end(), {texel.r, texel.g, texel.b, texel.a});
    }
    const ImagePtr image = Image::create();
    image->set(texture.mWidth, texture.mHeight, std::move(pixels));
    return image;
}
} // namespace

kxAssimpMaterials::kxAssimpMaterials(const aiScene& scene, const QString& folder, kxFileReport& report)
    : _scene(scene), _folder(folder), _report(report), _surfaces(report)
{
    for (unsigned i = 0; i < scene.mNumMaterials; ++i)
        add(*scene.mMaterials[i]);
}

MaterialPtr kxAssimpMaterials::material(unsigned index) const
{
    return index < _materials.size() ? _materials[index].get() : MaterialPtr();
}

void kxAssimpMaterials::add(const aiMaterial& source)
{
    const UberMaterialPtr material = UberMaterial::create();
    _materials.emplace_back(material);
    aiString name;
    source.Get(AI_MATKEY_NAME, name);
    material->setNodeName(name.C_Str());
    addSurface(source, *material);
    addPictures(source, *material);
    const Color3f& color = material->getBaseColor();
    if (material->getBaseColorImage() != NullFC && std::max({color[0], color[1], color[2]}) < Darkest)
        material->setBaseColor(Color3f(1, 1, 1));
}

void kxAssimpMaterials::addSurface(const aiMaterial& source, UberMaterial& material) const
{
    aiColor4D color;
    if (source.Get(AI_MATKEY_BASE_COLOR, color) == AI_SUCCESS ||
        source.Get(AI_MATKEY_COLOR_DIFFUSE, color) == AI_SUCCESS)
        material.setBaseColor(linear(color));
    if (source.Get(AI_MATKEY_COLOR_EMISSIVE, color) == AI_SUCCESS)
        material.setEmissive(linear(color));
    float value = 0;
    // Files write 0 where they mean that nothing shines through.
    if (source.Get(AI_MATKEY_OPACITY, value) == AI_SUCCESS && value > 0)
        material.setOpacity(finite(value, 0.0f, 1.0f, 1.0f));
    if (source.Get(AI_MATKEY_METALLIC_FACTOR, value) == AI_SUCCESS)
        material.setMetallic(finite(value, 0.0f, 1.0f, 0.0f));
    if (source.Get(AI_MATKEY_ROUGHNESS_FACTOR, value) == AI_SUCCESS)
        material.setRoughness(finite(value, 0.0f, 1.0f, 0.5f));
    else if (source.Get(AI_MATKEY_SHININESS, value) == AI_SUCCESS && value > 0)
        // The width of the highlight of Blinn's model with this exponent.
        material.setRoughness(finite(std::sqrt(2.0f / (value + 2.0f)), 0.05f, 1.0f, 0.5f));
    // Where a file says these, the others are made up of its highlights.
    if (source.Get("$raw.3dsMax|main|metalness", 0, 0, value) == AI_SUCCESS)
        material.setMetallic(finite(value, 0.0f, 1.0f, 0.0f));
    if (source.Get("$raw.3dsMax|main|roughness", 0, 0, value) == AI_SUCCESS)
        material.setRoughness(finite(value, 0.0f, 1.0f, 0.5f));
    else if (source.Get("$raw.3dsMax|main|glossiness", 0, 0, value) == AI_SUCCESS)
        material.setRoughness(1 - finite(value, 0.0f, 1.0f, 0.5f));
    int twoSided = 0;
    if (source.Get(AI_MATKEY_TWOSIDED, twoSided) == AI_SUCCESS)
        material.setDoubleSided(twoSided != 0);
}

void kxAssimpMaterials::addPictures(const aiMaterial& source, UberMaterial& material)
{
    material.setBaseColorImage(picture(source, {aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE}));
    material.setNormalImage(picture(source, {aiTextureType_NORMAL_CAMERA, aiTextureType_NORMALS}));
    material.setOcclusionImage(picture(source, {aiTextureType_AMBIENT_OCCLUSION}));
    material.setEmissiveImage(picture(source, {aiTextureType_EMISSION_COLOR, aiTextureType_EMISSIVE}));
    const Color3f& emissive = material.getEmissive();
    if (material.getEmissiveImage() != NullFC && std::max({emissive[0], emissive[1], emissive[2]}) <= 0)
        material.setEmissive(Color3f(1, 1, 1)); // black is a preset too
    addJoinedPictures(source, material);
    noteOthers(source);
}

/// A picture stands in the place of its number, which the formats leave at any preset.
void kxAssimpMaterials::addJoinedPictures(const aiMaterial& source, UberMaterial& material)
{
    kxSurfacePictures::Parts parts;
    parts.metal = picture(source, {aiTextureType_METALNESS});
    parts.roughness = picture(source, {aiTextureType_DIFFUSE_ROUGHNESS});
    if (parts.roughness == NullFC && (parts.roughness = picture(source, {aiTextureType_SHININESS})) != NullFC)
    {
        // A number of roughness is there where the picture doesn't go with an exponent.
        float exponent = 0, roughness = 0;
        if (source.Get(AI_MATKEY_ROUGHNESS_FACTOR, roughness) != AI_SUCCESS)
            source.Get(AI_MATKEY_SHININESS, exponent);
        parts.exponent = finite(exponent, 0, 1e6f, 0);
    }
    if (parts.metal == NullFC && parts.roughness == NullFC)
        return;
    parts.occlusion = material.getOcclusionImage();
    const ImagePtr joined = _surfaces.joined(parts, QString::fromStdString(material.getNodeName()));
    if (joined == NullFC)
        return;
    material.setRoughnessImage(joined);
    if (parts.occlusion != NullFC)
        material.setOcclusionImage(joined);
    if (parts.metal != NullFC)
        material.setMetallic(1);
    if (parts.roughness != NullFC)
        material.setRoughness(1);
}

void kxAssimpMaterials::noteOthers(const aiMaterial& source)
{
    const auto name = [&source](aiTextureType type)
    {
        aiString path;
        source.GetTexture(type, 0, &path);
        return std::string(path.C_Str());
    };
    for (const aiTextureType type : {aiTextureType_HEIGHT, aiTextureType_SPECULAR})
        if (!name(type).empty())
            _report.note(QStringLiteral("pictures of heights and highlights are left out"));
    // Of those that aren't looked for.
    for (int type = aiTextureType_NONE; type <= aiTextureType_UNKNOWN; ++type)
        if (const QString path = QString::fromStdString(name(aiTextureType(type)));
            !path.isEmpty() && _pictures.count(path) == 0 && _folder.leadsOut(path))
            _folder.refuse(path, _report);
    // That of the colour has an opacity of its own.
    const std::string opacity = name(aiTextureType_OPACITY);
    if (!opacity.empty() && opacity != name(aiTextureType_BASE_COLOR) && opacity != name(aiTextureType_DIFFUSE))
        _report.note(QStringLiteral("pictures of opacity beside those of colour are left out"));
}

ImagePtr kxAssimpMaterials::picture(const aiMaterial& source, std::initializer_list<aiTextureType> types)
{
    aiString path;
    unsigned coordinates = 0;
    aiTextureMapMode wrap[3] = {aiTextureMapMode_Wrap, aiTextureMapMode_Wrap, aiTextureMapMode_Wrap};
    const auto find = [&](aiTextureType type)
    { return source.GetTexture(type, 0, &path, nullptr, &coordinates, nullptr, nullptr, wrap) == AI_SUCCESS; };
    if (std::none_of(types.begin(), types.end(), find) || path.length == 0)
        return ImagePtr();
    if (wrap[0] != aiTextureMapMode_Wrap || wrap[1] != aiTextureMapMode_Wrap)
        _report.note(QString::fromLatin1(kxSceneSummary::WrapNote));
    const auto hasOthers = [&](const aiMesh* mesh)
    { return _scene.mMaterials[mesh->mMaterialIndex] == &source && mesh->HasTextureCoords(coordinates); };
    if (coordinates != 0 && std::any_of(_scene.mMeshes, _scene.mMeshes + _scene.mNumMeshes, hasOthers))
        _report.note(
            QStringLiteral("pictures take the first texture coordinates of a surface, also those made for others"));
    const QString name = QString::fromUtf8(path.C_Str());
    const auto found = _pictures.find(name);
    if (found != _pictures.end())
        return found->second.get();
    return (_pictures[name] = read(name)).get();
}

ImagePtr kxAssimpMaterials::read(const QString& path)
{
    const aiTexture* const embedded = _scene.GetEmbeddedTexture(path.toUtf8().constData());
    if (embedded == nullptr)
        return kxImageImport::fromEncoded(_folder.bytesOf(path, LargestPicture, _report), false, path, _known, _report);
    if (embedded->mHeight > 0)
        return fromTexels(*embedded);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(embedded->pcData);
    return kxImageImport::fromEncoded(std::vector<unsigned char>(bytes, bytes + embedded->mWidth), false, path, _known,
                                      _report);
}
