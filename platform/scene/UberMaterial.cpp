#include <scene/UberMaterial.h>

#include <scene/FieldDescription.h>

namespace osg
{

namespace
{
const std::vector<std::string> Channels = {"R", "G", "B"};
constexpr float Brightest = 1000.0f; ///< of an emissive component
} // namespace

FieldContainerType UberMaterial::_type(
    "UberMaterial", &Material::_type, nullptr, [] { return FieldContainerPtr(UberMaterial::create()); },
    &UberMaterial::describeFields);

UberMaterialPtr UberMaterial::create()
{
    return UberMaterialPtr(new UberMaterial);
}

void UberMaterial::describeFields(FieldList& fields)
{
    typedef UberMaterial M;
    fields.push_back(FieldDescription::member("baseColor", BaseColorFieldMask, &M::_baseColor)
                         .animatable<&M::_baseColor>("baseColor", Channels)
                         .range(0, 1));
    fields.push_back(FieldDescription::member("metallic", MetallicFieldMask, &M::_metallic)
                         .animatable<&M::_metallic>("metallic", {""})
                         .range(0, 1));
    fields.push_back(FieldDescription::member("roughness", RoughnessFieldMask, &M::_roughness)
                         .animatable<&M::_roughness>("roughness", {""})
                         .range(0, 1));
    fields.push_back(FieldDescription::member("opacity", OpacityFieldMask, &M::_opacity)
                         .animatable<&M::_opacity>("opacity", {""})
                         .range(0, 1));
    fields.push_back(FieldDescription::member("emissive", EmissiveFieldMask, &M::_emissive)
                         .animatable<&M::_emissive>("emissive", Channels)
                         .range(0, Brightest));
    fields.push_back(
        referenceField("baseColorImage", BaseColorImageFieldMask, &M::getBaseColorImage, &M::setBaseColorImage));
    fields.push_back(FieldDescription::member("doubleSided", DoubleSidedFieldMask, &M::_doubleSided));
    fields.push_back(FieldDescription::member("alphaCutoff", AlphaCutoffFieldMask, &M::_alphaCutoff).range(0, 1));
    fields.push_back(referenceField("normalImage", NormalImageFieldMask, &M::getNormalImage, &M::setNormalImage));
    fields.push_back(FieldDescription::member("normalScale", NormalScaleFieldMask, &M::_normalScale));
    fields.push_back(
        referenceField("roughnessImage", RoughnessImageFieldMask, &M::getRoughnessImage, &M::setRoughnessImage));
    fields.push_back(
        referenceField("occlusionImage", OcclusionImageFieldMask, &M::getOcclusionImage, &M::setOcclusionImage));
    fields.push_back(
        FieldDescription::member("occlusionStrength", OcclusionStrengthFieldMask, &M::_occlusionStrength).range(0, 1));
    fields.push_back(
        referenceField("emissiveImage", EmissiveImageFieldMask, &M::getEmissiveImage, &M::setEmissiveImage));
}

void UberMaterial::setBaseColorImage(const ImagePtr& image)
{
    _baseColorImage = image;
}

} // namespace osg
