#pragma once

#include <kxExport.h>
#include <osg/CCPnt.h>

/// The rules of curves as pure functions. The kernel's keys and the graph's live handles share them.
namespace kxCurveMath
{

enum class Side
{
    In,
    Out
};

/// A key's place, or a vector from it. x in seconds or in frames, as the caller has it; y in channel values.
struct Place
{
    double x = 0;
    double y = 0;
};

/// What a side's vector depends on.
struct Neighbourhood
{
    const Place* previous = nullptr; ///< null for the first key
    Place key;
    const Place* next = nullptr; ///< null for the last key
    Place in;                    ///< present vectors, relative to the key
    Place out;
    double otherLength = 0; ///< length for a type without a rule: 10 frames in the caller's unit of x
};

/// The vector of one side by `type`, relative to the key; always finite. The in side's x is never above 0, the out
/// side's never below.
///
/// With the gaps gl and gr to the neighbours and s = gl + gr, length and slope are:
///
///                 no previous       no next            both neighbours
///   0 constant    0                 0                  0
///   1 linear, in  gr/2, flat        gl/2, to previous  gl/2, to previous
///   1 linear, out gr/2, to next     gl/2, flat         gr/2, to next
///   2 flat        gr/2, flat        gl/2, flat         min(side's gap/2, s/3), flat
///   3 hermite     gr/2, to next     gl/2, to previous  min(side's gap/2, s/3), previous to next
///   4 following   gr/2, to next     gl/2, flat         min(side's gap/2, s/3), to next
///
/// Type 5 keeps the vector unless a side reaches a neighbour; then it keeps its direction and takes the length of the
/// shorter gap. A vertical vector stays. Any other type gives a flat vector of `otherLength`. A key without neighbours
/// keeps its vector. Neighbours at the key's own time give no slope.
KX_API Place tangentVector(Side side, osg::UInt32 type, const Neighbourhood& around);

/// Value of the segment from key `a` to key `b` at `seconds`, always finite.
///
/// Domain a.x() <= seconds <= b.x(); outside it, the nearer key's value. The cubic Bezier curve through a, a + out(a),
/// b + in(b), b: x(u) = seconds is solved in double inside a bracket, then y(u) taken. Where both vectors are zero the
/// value jumps at b. Source: Farin, "Curves and Surfaces for CAGD", Bernstein form.
KX_API float segmentValue(const osg::CCPnt& a, const osg::CCPnt& b, double seconds);

} // namespace kxCurveMath
