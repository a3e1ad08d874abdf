#pragma once

#include <osg/AnimCurve.h>

#include <limits>
#include <vector>

/// Curves that have been trouble somewhere, under names. Shared by the tests of evaluation, files and the graph.
struct kxAwkwardCurve
{
    const char* name;
    std::vector<osg::CCPnt> keys;
    bool isMonotone = true; ///< time never runs back inside a segment
};

inline const std::vector<kxAwkwardCurve>& kxAwkwardCurves()
{
    using osg::CCPnt;
    using osg::Pnt2f;
    using osg::Vec2f;
    const auto key = [](float x, float y, float inX, float inY, float outX, float outY)
    { return CCPnt(Pnt2f(x, y), Vec2f(inX, inY), Vec2f(outX, outY), 5, 5); };
    const float huge = std::numeric_limits<float>::max();
    const float tiny = std::numeric_limits<float>::denorm_min();
    static const std::vector<kxAwkwardCurve> curves = {
        {"one key", {key(1, 5, -1, 3, 1, 3)}},
        {"two keys at one time",
         {key(0, 1, 0, 0, 0, 0), key(1, 2, -0.3f, 0, 0, 0), key(1, 7, 0, 0, 0.3f, 1), key(2, 3, -0.3f, 0, 0, 0)}},
        {"all keys at one time", {key(1, 1, 0, 0, 0, 0), key(1, 2, 0, 0, 0, 0), key(1, 3, 0, 0, 0, 0)}},
        {"vectors meet in the middle: infinite slope", {key(0, 0, 0, 0, 1, 0), key(1, 20, -1, 0, 0, 0)}},
        {"vertical vectors", {key(0, 0, 0, 0, 0, 10), key(1, 0, 0, -10, 0, 0)}},
        {"thirds", {key(0, 0, 0, 0, 1 / 3.0f, 4), key(1, 2, -1 / 3.0f, 9, 0, 0)}},
        {"overshoot", {key(0, 0, 0, 0, 0.9f, -80), key(1, 1, -0.9f, 60, 0, 0)}},
        {"frames of a long film", {key(3600, 0, 0, 0, 0.01f, 5), key(3600.0417f, 9, -0.03f, 2, 0, 0)}},
        {"nearly a step", {key(0, 0, 0, 0, 1.0e-6f, 0), key(1, 100, -1.0e-6f, 0, 0, 0)}},
        {"crossed vectors: time runs back", {key(0, 0, 0, 0, 3, 5), key(1, 1, -3, 5, 0, 0)}, false},
        {"vectors point away", {key(0, 0, 0, 0, -2, 1), key(1, 1, 2, 1, 0, 0)}, false},
        {"one vector far past both keys", {key(0, 0, 0, 0, 50, 8), key(1, 1, 0, 0, 0, 0)}, false},
        {"greatest numbers", {key(-huge, -huge, 0, 0, huge, huge), key(huge, huge, -huge, huge, 0, 0)}, false},
        {"smallest span", {key(0, -huge, 0, 0, huge, huge), key(tiny, huge, -huge, -huge, 0, 0)}, false},
    };
    return curves;
}
