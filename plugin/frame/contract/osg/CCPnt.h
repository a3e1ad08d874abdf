#pragma once

#include <kxExport.h>
#include <osg/Vector.h>

namespace osg
{

/// Shape of one side of a key.
namespace TangentType
{
enum Type : UInt32
{
    Constant = 0,
    Linear = 1,
    Flat = 2,
    Hermite = 3,
    Following = 4,
    Free = 5
};
} // namespace TangentType

/// What a curve does before its first or after its last key.
enum class InfinityMode : UInt32
{
    Constant = 0,
    Linear = 1,
    Loop = 2,
    LoopWithOffset = 3,
    Oscillate = 4
};

/// One key of a curve; a value, freely copied.
class KX_API CCPnt
{
public:
    /// (0, 0), zero tangents, linear on both sides.
    CCPnt() = default;
    CCPnt(const Point<float, 2>& point, const Vector<float, 2>& intangent, const Vector<float, 2>& outtangent,
          UInt32 inTangentType, UInt32 outTangentType)
        : inType(inTangentType), outType(outTangentType), _point(point), _intangent(intangent), _outtangent(outtangent)
    {
    }
    CCPnt(const CCPnt&) = default;
    CCPnt& operator=(const CCPnt&) = default;
    virtual ~CCPnt() = default;

    /// Seconds, channel value.
    const Point<float, 2>& point() const { return _point; }
    float x() const { return _point[0]; }
    float y() const { return _point[1]; }
    void setPoint(const Point<float, 2>& point) { _point = point; }
    void setX(float seconds) { _point[0] = seconds; }
    void setY(float value) { _point[1] = value; }

    /// Relative to point(), in the same units.
    const Vector<float, 2>& intangent() const { return _intangent; }
    float inX() const { return _intangent[0]; }
    float inY() const { return _intangent[1]; }
    void setIntangent(const Vector<float, 2>& vector) { _intangent = vector; }

    /// Relative to point(), in the same units.
    const Vector<float, 2>& outtangent() const { return _outtangent; }
    float outX() const { return _outtangent[0]; }
    float outY() const { return _outtangent[1]; }
    void setOuttangent(const Vector<float, 2>& vector) { _outtangent = vector; }

    bool operator==(const CCPnt& o) const
    {
        return _point == o._point && _intangent == o._intangent && _outtangent == o._outtangent && inType == o.inType &&
               outType == o.outType;
    }
    bool operator!=(const CCPnt& o) const { return !(*this == o); }

    UInt32 inType = TangentType::Linear;
    UInt32 outType = TangentType::Linear;

private:
    Point<float, 2> _point;
    Vector<float, 2> _intangent;
    Vector<float, 2> _outtangent;
};

} // namespace osg
