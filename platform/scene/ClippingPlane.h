#pragma once

#include <osg/SceneCores.h>

namespace osg
{

/// Hides what lies before it: a plane in x and y of its node, which cuts away all that lies on the side of positive
/// z.
///
/// Of the planes of a scene the first one that is shown cuts. Its scale is the size of the quad by which it is seen;
/// the cut itself has no end.
class KX_API ClippingPlane : public Transform
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static FCPtr<ClippingPlane> create();

protected:
    ClippingPlane() = default;
};
typedef FCPtr<ClippingPlane> ClippingPlanePtr;

} // namespace osg
