#pragma once

#include <osg/Image.h>
#include <osg/SceneCores.h>
#include <osg/Share.h>

namespace osg
{

/// A surface's look in the metallic-roughness model. Colours are linear, 0 to 1; emissive may be brighter.
class KX_API UberMaterial : public Material
{
public:
    static constexpr BitVector BaseColorFieldMask = BitVector::bit(16);
    static constexpr BitVector MetallicFieldMask = BitVector::bit(17);
    static constexpr BitVector RoughnessFieldMask = BitVector::bit(18);
    static constexpr BitVector OpacityFieldMask = BitVector::bit(19);
    static constexpr BitVector EmissiveFieldMask = BitVector::bit(20);
    static constexpr BitVector BaseColorImageFieldMask = BitVector::bit(21);
    static constexpr BitVector DoubleSidedFieldMask = BitVector::bit(22);
    static constexpr BitVector AlphaCutoffFieldMask = BitVector::bit(23);
    static constexpr BitVector NormalImageFieldMask = BitVector::bit(24);
    static constexpr BitVector NormalScaleFieldMask = BitVector::bit(25);
    static constexpr BitVector RoughnessImageFieldMask = BitVector::bit(26);
    static constexpr BitVector OcclusionImageFieldMask = BitVector::bit(27);
    static constexpr BitVector OcclusionStrengthFieldMask = BitVector::bit(28);
    static constexpr BitVector EmissiveImageFieldMask = BitVector::bit(29);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static FCPtr<UberMaterial> create();

    const Color3f& getBaseColor() const { return _baseColor; }
    void setBaseColor(const Color3f& value) { _baseColor = value; }
    float getMetallic() const { return _metallic; }
    void setMetallic(float value) { _metallic = value; }
    float getRoughness() const { return _roughness; }
    void setRoughness(float value) { _roughness = value; }
    /// 1 opaque, 0 invisible.
    float getOpacity() const { return _opacity; }
    void setOpacity(float value) { _opacity = value; }
    const Color3f& getEmissive() const { return _emissive; }
    void setEmissive(const Color3f& value) { _emissive = value; }
    /// Multiplies the base colour and the opacity; sRGB; null for none.
    ImagePtr getBaseColorImage() const { return _baseColorImage; }
    void setBaseColorImage(const ImagePtr& image);
    bool getDoubleSided() const { return _doubleSided; }
    void setDoubleSided(bool value) { _doubleSided = value; }
    /// Above 0: texels with less opacity than this are cut out, the others are opaque.
    float getAlphaCutoff() const { return _alphaCutoff; }
    void setAlphaCutoff(float value) { _alphaCutoff = value; }
    /// Directions in the surface's own axes, red along its picture's rows, green upwards; linear; null for none.
    ImagePtr getNormalImage() const { return _normalImage; }
    void setNormalImage(const ImagePtr& image) { _normalImage = image; }
    /// Multiplies red and green of the above.
    float getNormalScale() const { return _normalScale; }
    void setNormalScale(float value) { _normalScale = value; }
    /// Green multiplies the roughness, blue the metallic; linear; null for none.
    ImagePtr getRoughnessImage() const { return _roughnessImage; }
    void setRoughnessImage(const ImagePtr& image) { _roughnessImage = image; }
    /// Red is how much of the light around reaches the surface; linear; null for none.
    ImagePtr getOcclusionImage() const { return _occlusionImage; }
    void setOcclusionImage(const ImagePtr& image) { _occlusionImage = image; }
    /// 0: the above counts for nothing, 1: for all.
    float getOcclusionStrength() const { return _occlusionStrength; }
    void setOcclusionStrength(float value) { _occlusionStrength = value; }
    /// Multiplies the emissive colour; sRGB; null for none.
    ImagePtr getEmissiveImage() const { return _emissiveImage; }
    void setEmissiveImage(const ImagePtr& image) { _emissiveImage = image; }

protected:
    UberMaterial() = default;

private:
    static void describeFields(FieldList& fields);

    Color3f _baseColor = Color3f(0.8f, 0.8f, 0.8f);
    float _metallic = 0.0f;
    float _roughness = 0.5f;
    float _opacity = 1.0f;
    Color3f _emissive;
    Share<Image> _baseColorImage;
    bool _doubleSided = false;
    float _alphaCutoff = 0.0f;
    Share<Image> _normalImage, _roughnessImage, _occlusionImage, _emissiveImage;
    float _normalScale = 1.0f;
    float _occlusionStrength = 1.0f;
};
typedef FCPtr<UberMaterial> UberMaterialPtr;

} // namespace osg
