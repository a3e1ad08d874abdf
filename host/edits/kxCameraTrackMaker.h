#pragma once

#include <osg/SceneCores.h>
#include <view/kxCameraRig.h>

#include <vector>

/// Cameras whose animation is in one block.
namespace kxCameraTrackMaker
{
/// Through the viewpoints in their order, `seconds` from each to the next, smooth in between and at rest at both ends.
/// The node is in no tree yet; null for fewer than two viewpoints and for a time that isn't above 0.
osg::NodePtr through(const std::vector<osg::NodePtr>& viewpoints, double seconds);
/// Once around the target of `pose`, at its distance and height, in steady motion that goes on in a loop.
osg::NodePtr around(const kxCameraRig::Pose& pose, double seconds);
} // namespace kxCameraTrackMaker
