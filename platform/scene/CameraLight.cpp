#include <scene/CameraLight.h>

#include <scene/FieldDescription.h>

#include <algorithm>
#include <cmath>

namespace osg
{

namespace
{
constexpr float DegreesPerRadian = 57.29577951308232f;
constexpr float SmallestView = 0.1f;
constexpr float LargestView = 179.0f;

float focalLengthOf(float fieldOfView)
{
    return Camera::SensorHeight / (2.0f * std::tan(fieldOfView / (2.0f * DegreesPerRadian)));
}
} // namespace

FieldContainerType Camera::_type(
    "Camera", &Transform::_type, nullptr, [] { return FieldContainerPtr(Camera::create()); }, &Camera::describeFields);
FieldContainerType Light::_type(
    "Light", &Transform::_type, nullptr, [] { return FieldContainerPtr(Light::create()); }, &Light::describeFields);

CameraPtr Camera::create()
{
    return CameraPtr(new Camera);
}

void Camera::describeFields(FieldList& fields)
{
    FieldDescription fieldOfView(
        "fieldOfView", LensFieldMask,
        [](const FieldContainer& container)
        { return FieldValue(static_cast<const Camera&>(container).getFieldOfView()); },
        [](FieldContainer& container, const FieldValue& value)
        {
            const float* const typed = std::get_if<float>(&value);
            if (typed == nullptr || !std::isfinite(*typed))
                return false;
            static_cast<Camera&>(container).setFieldOfView(*typed);
            return true;
        });
    fieldOfView.animatable(
        "fieldOfView", {""},
        [](const FieldContainer& container, unsigned)
        { return static_cast<const Camera&>(container).getFieldOfView(); },
        [](FieldContainer& container, unsigned, float value)
        { static_cast<Camera&>(container).setFieldOfView(value); });
    fields.push_back(fieldOfView.range(SmallestView, LargestView).transient());
    fields.push_back(FieldDescription::member("focalLength", LensFieldMask, &Camera::_focalLength)
                         .animatable<&Camera::_focalLength>("focalLength", {""})
                         .range(focalLengthOf(LargestView), focalLengthOf(SmallestView)));
    fields.push_back(FieldDescription::member("near", NearFieldMask, &Camera::_near)
                         .animatable<&Camera::_near>("near", {""})
                         .range(1e-6f, 1e9f));
    fields.push_back(FieldDescription::member("far", FarFieldMask, &Camera::_far)
                         .animatable<&Camera::_far>("far", {""})
                         .range(1e-5f, 1e12f));
}

float Camera::getFieldOfView() const
{
    return 2.0f * DegreesPerRadian * std::atan(SensorHeight / (2.0f * _focalLength));
}

void Camera::setFieldOfView(float degrees)
{
    if (std::isfinite(degrees))
        _focalLength = focalLengthOf(std::clamp(degrees, SmallestView, LargestView));
}

void Camera::setFocalLength(float millimetres)
{
    if (std::isfinite(millimetres))
        _focalLength = std::clamp(millimetres, focalLengthOf(LargestView), focalLengthOf(SmallestView));
}

LightPtr Light::create()
{
    return LightPtr(new Light);
}

void Light::describeFields(FieldList& fields)
{
    fields.push_back(FieldDescription::member("kind", KindFieldMask, &Light::_kind).range(0, Spot));
    fields.push_back(FieldDescription::member("color", ColorFieldMask, &Light::_color)
                         .animatable<&Light::_color>("color", {"R", "G", "B"})
                         .range(0, 1));
    fields.push_back(FieldDescription::member("intensity", IntensityFieldMask, &Light::_intensity)
                         .animatable<&Light::_intensity>("intensity", {""})
                         .range(0, 1e9f));
    fields.push_back(FieldDescription::member("coneAngle", ConeFieldMask, &Light::_coneAngle)
                         .animatable<&Light::_coneAngle>("coneAngle", {""})
                         .range(0.1f, 180.0f));
}

} // namespace osg
