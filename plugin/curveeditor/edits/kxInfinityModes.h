#pragma once

#include <osg/AnimCurve.h>

#include <vector>

/// How curves go on before their first key and after their last.
namespace kxInfinityModes
{
enum class Side
{
    Pre,
    Post
};

/// Gives curves a mode, a number of osg::InfinityMode, and shows what comes of it at the present frame.
void set(const std::vector<osg::AnimCurvePtr>& curves, Side side, osg::UInt32 mode);
} // namespace kxInfinityModes
