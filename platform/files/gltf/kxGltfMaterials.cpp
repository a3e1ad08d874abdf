#include <files/gltf/kxGltfMaterials.h>

#include <files/import/kxImageImport.h>
#include <files/scene/kxFileReport.h>
#include <files/scene/kxSceneSummary.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
const tinygltf::Value& extension(const tinygltf::ExtensionMap& extensions, const char* name)
{
    static const tinygltf::Value None;
    const auto found = extensions.find(name);
    return found != extensions.end() && found->second.IsObject() ? found->second : None;
}

double number(const tinygltf::Value& object, const char* key, double preset)
{
    if (!object.IsObject() || !object.Has(key) || !object.Get(key).IsNumber())
        return preset;
    const double value = object.Get(key).GetNumberAsDouble();
    return std::isfinite(value) ? value : preset;
}

double number(const tinygltf::Value& list, int index, double preset)
{
    if (!list.IsArray() || index >= int(list.ArrayLen()) || !list.Get(index).IsNumber())
        return preset;
    return list.Get(index).GetNumberAsDouble();
}

float unit(double value)
{
    return float(std::clamp(value, 0.0, 1.0));
}

kxGltfMaterials::Mapping mappingOf(const tinygltf::ExtensionMap& extensions, int texCoord)
{
    kxGltfMaterials::Mapping mapping;
    const tinygltf::Value& transform = extension(extensions, "KHR_texture_transform");
    mapping.texCoord = int(number(transform, "texCoord", texCoord));
    if (!transform.IsObject())
        return mapping;
    const tinygltf::Value none;
    const tinygltf::Value& offset = transform.Has("offset") ? transform.Get("offset") : none;
    const tinygltf::Value& scale = transform.Has("scale") ? transform.Get("scale") : none;
    const double angle = number(transform, "rotation", 0);
    const double sx = number(scale, 0, 1), sy = number(scale, 1, 1);
    const double c = std::cos(angle), s = std::sin(angle);
    mapping.changed = true;
    mapping.matrix = {float(c * sx),  float(s * sy), float(number(offset, 0, 0)),
                      float(-s * sx), float(c * sy), float(number(offset, 1, 0))};
    return mapping;
}
} // namespace

kxGltfMaterials::kxGltfMaterials(const kxGltfDocument& document, kxFileReport& report)
    : _document(document), _report(report)
{
    for (std::vector<Picture>& pictures : _pictures)
        pictures.resize(document.model().images.size());
    for (const tinygltf::Material& material : document.model().materials)
        add(material);
}

MaterialPtr kxGltfMaterials::material(int index)
{
    if (index >= 0)
        return _materials[std::size_t(index)].get();
    if (!_default)
    {
        const UberMaterialPtr material = UberMaterial::create();
        material->setNodeName("Default");
        material->setBaseColor(Color3f(1, 1, 1));
        material->setRoughness(0.7f);
        _default = osg::Share<Material>(material);
        _materials.push_back(_default);
    }
    return _default.get();
}

const kxGltfMaterials::Mapping& kxGltfMaterials::mapping(int index) const
{
    static const Mapping Plain;
    return index < 0 ? Plain : _mappings[std::size_t(index)];
}

void kxGltfMaterials::add(const tinygltf::Material& source)
{
    const UberMaterialPtr material = UberMaterial::create();
    _materials.emplace_back(material);
    material->setNodeName(source.name);
    material->setDoubleSided(source.doubleSided);
    Mapping mapping;
    addBaseColor(source, *material, mapping);
    addFactors(source, *material);
    addPictures(source, *material, mapping);
    _mappings.push_back(mapping);
}

void kxGltfMaterials::addBaseColor(const tinygltf::Material& source, UberMaterial& material, Mapping& mapping)
{
    const tinygltf::PbrMetallicRoughness& pbr = source.pbrMetallicRoughness;
    double color[4] = {1, 1, 1, 1};
    for (std::size_t i = 0; i < 4 && i < pbr.baseColorFactor.size(); ++i)
        color[i] = pbr.baseColorFactor[i];
    int texture = pbr.baseColorTexture.index;
    mapping = mappingOf(pbr.baseColorTexture.extensions, pbr.baseColorTexture.texCoord);
    const tinygltf::Value& glossy = extension(source.extensions, "KHR_materials_pbrSpecularGlossiness");
    if (glossy.IsObject())
    {
        _report.note(QStringLiteral("the specular colour of a glossiness material is left out"));
        if (glossy.Has("diffuseFactor"))
            for (int i = 0; i < 4; ++i)
                color[i] = number(glossy.Get("diffuseFactor"), i, 1);
        if (glossy.Has("diffuseTexture"))
        {
            const double index = number(glossy.Get("diffuseTexture"), "index", -1);
            texture = index >= 0 && index < double(_document.model().textures.size()) ? int(index) : -1;
            mapping = Mapping{int(number(glossy.Get("diffuseTexture"), "texCoord", 0))};
        }
    }
    material.setBaseColor(Color3f(unit(color[0]), unit(color[1]), unit(color[2])));
    const bool opaque = source.alphaMode != "BLEND" && source.alphaMode != "MASK";
    if (source.alphaMode == "BLEND")
        material.setOpacity(unit(color[3]));
    else if (source.alphaMode == "MASK")
    {
        // The factor scales the texels' opacity before the comparison.
        constexpr double Smallest = 1.0 / 512.0; // 0 would mean no cutting
        const double cutoff = color[3] > 0 ? source.alphaCutoff / color[3] : 1.0;
        material.setAlphaCutoff(float(std::clamp(cutoff, Smallest, 1.0)));
    }
    if (texture >= 0)
        material.setBaseColorImage(picture(texture, opaque));
}

void kxGltfMaterials::addFactors(const tinygltf::Material& source, UberMaterial& material)
{
    const tinygltf::PbrMetallicRoughness& pbr = source.pbrMetallicRoughness;
    double metallic = pbr.metallicFactor, roughness = pbr.roughnessFactor;
    const tinygltf::Value& glossy = extension(source.extensions, "KHR_materials_pbrSpecularGlossiness");
    if (glossy.IsObject())
    {
        metallic = 0;
        roughness = 1.0 - number(glossy, "glossinessFactor", 1.0);
    }
    if (source.extensions.count("KHR_materials_unlit") > 0)
    {
        _report.note(QStringLiteral("unlit materials are shown lit, rough"));
        metallic = 0;
        roughness = 1;
    }
    material.setMetallic(unit(metallic));
    material.setRoughness(unit(roughness));

    const double strength =
        number(extension(source.extensions, "KHR_materials_emissive_strength"), "emissiveStrength", 1.0);
    float emissive[3] = {0, 0, 0};
    for (std::size_t i = 0; i < 3 && i < source.emissiveFactor.size(); ++i)
        emissive[i] = float(std::clamp(source.emissiveFactor[i] * strength, 0.0, 1000.0));
    material.setEmissive(Color3f(emissive[0], emissive[1], emissive[2]));
}

void kxGltfMaterials::addPictures(const tinygltf::Material& source, UberMaterial& material, Mapping& mapping)
{
    bool mapped = material.getBaseColorImage() != NullFC;
    const auto read = [&](const auto& info)
    {
        const ImagePtr image = info.index < 0 ? ImagePtr() : picture(info.index, false);
        if (image == NullFC)
            return image;
        const Mapping own = mappingOf(info.extensions, info.texCoord);
        if (!mapped)
            mapping = own;
        mapped = true;
        if (own.texCoord != mapping.texCoord || own.matrix != mapping.matrix)
            _report.note(QStringLiteral("all pictures of a material take the texture coordinates of its first"));
        return image;
    };
    material.setNormalImage(read(source.normalTexture));
    material.setNormalScale(std::isfinite(float(source.normalTexture.scale)) ? float(source.normalTexture.scale)
                                                                             : 1.0f);
    material.setOcclusionImage(read(source.occlusionTexture));
    material.setOcclusionStrength(unit(source.occlusionTexture.strength));
    material.setEmissiveImage(read(source.emissiveTexture));
    const bool isPlain = !extension(source.extensions, "KHR_materials_pbrSpecularGlossiness").IsObject() &&
                         source.extensions.count("KHR_materials_unlit") == 0;
    if (isPlain)
        material.setRoughnessImage(read(source.pbrMetallicRoughness.metallicRoughnessTexture));
}

int kxGltfMaterials::imageOf(int texture) const
{
    return _document.model().textures[std::size_t(texture)].source;
}

ImagePtr kxGltfMaterials::picture(int texture, bool opaque)
{
    const int index = imageOf(texture);
    if (index < 0)
        return ImagePtr();
    const int sampler = _document.model().textures[std::size_t(texture)].sampler;
    const auto& samplers = _document.model().samplers;
    if (sampler >= 0 && std::size_t(sampler) < samplers.size() &&
        (samplers[std::size_t(sampler)].wrapS != TINYGLTF_TEXTURE_WRAP_REPEAT ||
         samplers[std::size_t(sampler)].wrapT != TINYGLTF_TEXTURE_WRAP_REPEAT))
        _report.note(QString::fromLatin1(kxSceneSummary::WrapNote));
    Picture& picture = _pictures[opaque ? 1 : 0][std::size_t(index)];
    if (!picture.read)
    {
        picture.read = true;
        const tinygltf::Image& image = _document.model().images[std::size_t(index)];
        const std::string name = image.name.empty() ? image.uri : image.name;
        picture.image = kxImageImport::fromEncoded(_document.imageBytes(index, _report), opaque,
                                                   QString::fromStdString(name), _known, _report);
    }
    return picture.image.get();
}
