#pragma once

#include <osg/AnimNode.h>

#include <algorithm>
#include <vector>

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

/// Which of several animations in a clip counts at `time`, which is moved to the end of the one that it lies outside
/// of: the one that holds it, else the one that ended last, else the one that starts first; of equals the one on the
/// higher track, then the later one. Each has a `node`. Null where none has an extent.
template <class Options>
auto choose(Options& options, double& time, double tolerance) -> decltype(options.data())
{
    enum Rank
    {
        StartsLater,
        Ended,
        Holds
    };
    decltype(options.data()) best = nullptr;
    Rank bestRank = StartsLater;
    double bestNearness = 0, bestTime = time;
    for (auto& option : options)
    {
        double start = 0, end = 0;
        if (!extent(*option.node, start, end))
            continue;
        const Rank rank = time < start - tolerance ? StartsLater : time > end + tolerance ? Ended : Holds;
        // Greater is better: the latest end, the earliest start.
        const double nearness = rank == Ended ? end : rank == StartsLater ? -start : 0;
        const float track = option.node->getOffset().y();
        if (best != nullptr)
        {
            if (rank < bestRank || (rank == bestRank && nearness < bestNearness))
                continue;
            if (rank == bestRank && nearness == bestNearness && track < best->node->getOffset().y())
                continue;
        }
        best = &option;
        bestRank = rank;
        bestNearness = nearness;
        bestTime = std::clamp(time, start, end);
    }
    time = bestTime;
    return best;
}

/// How far a time near `seconds` may be off by the rounding of keys, offsets and frames to float.
KX_API double tolerance(double seconds);
} // namespace kxNodeTime
