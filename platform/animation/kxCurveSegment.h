#pragma once

#include <osg/CCPnt.h>

#include <algorithm>
#include <cmath>

/// The vectors between two keys: x as a share of the time between them, y in values.
struct kxCurveSegment
{
    /// `perSecond`: one by the time between the keys.
    kxCurveSegment(const osg::CCPnt& a, const osg::CCPnt& b, double perSecond)
        : rise(double(b.y()) - a.y()), outX(a.outX() * perSecond), inX(b.inX() * perSecond), outY(a.outY()),
          inY(b.inY()), slack(2.0e-7 * std::abs(rise) + 5.0e-8 * std::abs(a.y()))
    {
    }

    /// The value jumps at the second key.
    bool isStep() const { return outX == 0 && inX == 0 && outY == 0 && inY == 0; }
    /// Both vectors on the chord, as linear sides and flat stretches have it: the curve is the chord, however fast it
    /// is run through. Not for vectors that run past the other key: there the way matters.
    bool isChord() const
    {
        return std::abs(outY - rise * outX) <= slack && std::abs(inY - rise * inX) <= slack && outX >= 0 && outX <= 1 &&
               inX <= 0 && inX >= -1;
    }

    double rise, outX, inX, outY, inY;

private:
    double slack;
};

/// x(u) and y(u) of a segment as polynomials without constant terms; x runs from 0 to 1, y to the rise.
class kxCurvePolynomial
{
public:
    explicit kxCurvePolynomial(const kxCurveSegment& segment)
        : _isEven(std::abs(segment.outX - 1.0 / 3) < 1.0e-9 && std::abs(segment.inX + 1.0 / 3) < 1.0e-9)
    {
        _x1 = 3 * segment.outX;
        _x2 = 3 * (1 + segment.inX) - 6 * segment.outX;
        _x3 = 1 - _x1 - _x2;
        _y1 = 3 * segment.outY;
        _y2 = 3 * (segment.rise + segment.inY) - 6 * segment.outY;
        _y3 = segment.rise - _y1 - _y2;
    }

    double x(double u) const { return ((_x3 * u + _x2) * u + _x1) * u; }
    double y(double u) const { return ((_y3 * u + _y2) * u + _y1) * u; }
    /// The u in [0, 1] with x(u) = s, for 0 <= s <= 1. Vectors of a third: x(u) is the straight line.
    double parameterAt(double s) const { return _isEven || s <= 0 || s >= 1 ? s : solve(s); }

private:
    double solve(double s) const;
    double xSlope(double u) const { return (3 * _x3 * u + 2 * _x2) * u + _x1; }

    double _x3, _x2, _x1;
    double _y3, _y2, _y1;
    bool _isEven;
};
