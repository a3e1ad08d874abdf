#include <scene/ClippingPlane.h>

namespace osg
{

FieldContainerType ClippingPlane::_type(
    "ClippingPlane", &Transform::_type, nullptr, [] { return FieldContainerPtr(ClippingPlane::create()); }, nullptr);

ClippingPlanePtr ClippingPlane::create()
{
    return ClippingPlanePtr(new ClippingPlane);
}

} // namespace osg
