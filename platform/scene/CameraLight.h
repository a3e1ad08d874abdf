#pragma once

#include <osg/SceneCores.h>

namespace osg
{

/// A camera that looks down its negative z axis, y up.
///
/// Field of view and focal length are two views of one number: fov = 2 atan(sensorHeight / (2 focalLength)).
class KX_API Camera : public Transform
{
public:
    static constexpr BitVector LensFieldMask = BitVector::bit(32);
    static constexpr BitVector NearFieldMask = BitVector::bit(33);
    static constexpr BitVector FarFieldMask = BitVector::bit(34);
    static constexpr float SensorHeight = 24.0f; ///< millimetres

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static FCPtr<Camera> create();

    /// Vertical, in degrees, 0.1 to 179.
    float getFieldOfView() const;
    void setFieldOfView(float degrees);
    /// Millimetres.
    float getFocalLength() const { return _focalLength; }
    void setFocalLength(float millimetres);
    float getNear() const { return _near; }
    void setNear(float value) { _near = value; }
    float getFar() const { return _far; }
    void setFar(float value) { _far = value; }

protected:
    Camera() = default;

private:
    static void describeFields(FieldList& fields);

    float _focalLength = 35.0f;
    float _near = 0.1f;
    float _far = 10000.0f;
};
typedef FCPtr<Camera> CameraPtr;

/// A light that shines down its negative z axis.
class KX_API Light : public Transform
{
public:
    enum Kind : UInt32
    {
        Directional = 0,
        PointLight = 1,
        Spot = 2
    };
    static constexpr BitVector KindFieldMask = BitVector::bit(32);
    static constexpr BitVector ColorFieldMask = BitVector::bit(33);
    static constexpr BitVector IntensityFieldMask = BitVector::bit(34);
    static constexpr BitVector ConeFieldMask = BitVector::bit(35);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static FCPtr<Light> create();

    UInt32 getKind() const { return _kind; }
    void setKind(UInt32 kind) { _kind = kind > Spot ? UInt32(Directional) : kind; }
    /// Linear.
    const Color3f& getColor() const { return _color; }
    void setColor(const Color3f& color) { _color = color; }
    /// Of a directional light: times pi, what a white surface that faces it shows. Of others: at a distance of 1.
    float getIntensity() const { return _intensity; }
    void setIntensity(float value) { _intensity = value; }
    /// Whole opening angle of a spot, in degrees.
    float getConeAngle() const { return _coneAngle; }
    void setConeAngle(float degrees) { _coneAngle = degrees; }

protected:
    Light() = default;

private:
    static void describeFields(FieldList& fields);

    UInt32 _kind = Directional;
    Color3f _color = Color3f(1, 1, 1);
    float _intensity = 1.0f;
    float _coneAngle = 45.0f;
};
typedef FCPtr<Light> LightPtr;

} // namespace osg
