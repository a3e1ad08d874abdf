#pragma once

#include <osg/AnimNode.h>

/// Time in the animation tree, in double: how a parent's time falls into a node, and where a node lies. Seconds.
///
///   parent  ----|offset|== pass 0 ==|== pass 1 ==|---->      own time: (t - offset) / scale
///                      a           b = one content extent; passes after the first repeat it
namespace kxNodeTime
{
/// A straight map of times: root = scale * t + offset.
struct Map
{
    double scale = 1;
    double offset = 0;

    double to(double t) const { return scale * t + offset; }
    double from(double t) const { return (t - offset) / scale; }
};

/// From the time that the children of `parent` are placed in to the time of the tree's root. Repeats and flips of the
/// nodes above play no part: a bar has one place. Identity for null.
KX_API Map toRoot(const osg::NodePtr& parent);

/// The time of the content that `node` shows at `parentTime`: moved and scaled, held inside a play range, repeated by
/// cycles and flipped. Before the first pass and after the last one the time runs on, so that curves go on by their
/// infinity modes. A time that lies short of the border of two passes by `tolerance` counts as on it.
KX_API double contentTime(const osg::AnimNode& node, double parentTime, double tolerance);

/// Start and end with all passes in the parent's time; an endless node ends at infinity. False where it has no extent.
KX_API bool extent(const osg::AnimNode& node, double& start, double& end);

/// How far a time near `seconds` may be off by the rounding of keys, offsets and frames to float.
KX_API double tolerance(double seconds);
} // namespace kxNodeTime
