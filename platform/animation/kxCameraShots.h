#pragma once

#include <osg/AnimNode.h>

/// The curves that carry camera shots out.
namespace kxCameraShots
{
/// Writes the curves below each shot from `node` down: translation from startFrom to endFrom, rotation from the look at
/// startAt to the look at endAt, over the shot's duration, eased as its interpolation says (0 linear, 1 ease in, 2 ease
/// out, 3 both). Curves of other channels stay, and so do shots without a duration.
void updateCurves(const osg::AnimNodePtr& node);
} // namespace kxCameraShots
