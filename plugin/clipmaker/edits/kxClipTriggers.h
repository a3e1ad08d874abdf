#pragma once

#include <osg/AnimNode.h>

#include <string>

/// What a clip fires or shows at a time. Each is put on the first free track of `clip`, with its time 0 at `frame` of
/// the ruler. Nodes aren't null.
namespace kxClipTriggers
{
enum Type : unsigned int
{
    Sequence = 0,
    Viewpoint = 1,
    VariantSet = 2,
    CameraTrack = 3
};

/// A trigger that fires what is called `name` when its time is passed; of any type but a camera track.
void add(unsigned int type, const std::string& name, const osg::AnimNodePtr& clip, double frame);
/// A clone of a camera track's `block`, which no list shows.
void addCameraTrack(const osg::AnimNodePtr& block, const osg::AnimNodePtr& clip, double frame);
} // namespace kxClipTriggers
