#pragma once

#include <clipmaker/edits/kxClipGeometry.h>

#include <osg/AnimNode.h>

#include <string>

/// What bars and rows do with their nodes. A write that changes nothing is left out and marks nothing, so that showing
/// a clip leaves the scene as it is. The nodes aren't null.
namespace kxClipNodes
{
/// Where a node is in the time of the tree's root, with all its cycles; in seconds.
struct Extent
{
    double start;
    double end;
};
Extent extentOf(const osg::AnimNodePtr& node);
/// Where a node is on the timeline: its start and one pass, in frames. Empty for null.
kxClipGeometry::Span spanOf(const osg::AnimNodePtr& node);

void setActive(const osg::AnimNodePtr& node, bool value);
void setLocked(const osg::AnimNodePtr& node, bool value);
void setFlipped(const osg::AnimNodePtr& node, bool value);
void setPostCycles(const osg::AnimNodePtr& node, int value);
/// With `below` for all nodes below it as well.
void setMotionBlur(const osg::AnimNodePtr& node, bool value, bool below);
/// The same for what a bar shows: of a block, with all nodes below it.
void setMotionBlur(const osg::AnimNodePtr& node, bool value);

/// Seconds of the root's time; with `keepEnd` the node is stretched, else it is moved. False where it would begin at
/// or after the end that it keeps.
bool setStart(const osg::AnimNodePtr& node, float seconds, bool keepEnd);
/// The same for its end.
bool setEnd(const osg::AnimNodePtr& node, float seconds, bool keepStart);
/// Stretches a node, with all its cycles, about its start.
void setDuration(const osg::AnimNodePtr& node, double frames);

/// Takes a node along with its bar, which goes from `from` to `to` in scene units. False where that is no way that a
/// node can hold.
bool move(const osg::AnimNodePtr& node, const QPointF& from, const QPointF& to);
/// Moves a node by seconds of the root's time, to the first track of its parent that is free there.
void moveToFreeTrack(const osg::AnimNodePtr& node, float seconds);
/// Moves a node to begin at `seconds` of the root's time, on a free track; one that does so stays on its track.
void beginAt(const osg::AnimNodePtr& node, float seconds);
/// Takes a node along with its bar, whose length goes from `from` to `to` frames about its start at frame `x`. False
/// where that is no length that a node can hold.
bool stretch(const osg::AnimNodePtr& node, double from, double to, double x);

/// Whether `clip` is `node` or is below it, or below one that shares its core: a clip that took such a node in
/// would hold itself.
bool holds(const osg::AnimNodePtr& node, const osg::AnimNodePtr& clip);

/// A node of this core, in no tree; its name is made unique.
osg::AnimNodePtr make(const osg::NodeCorePtr& core, const std::string& name);
/// A clone of a node that shares its cores, which no list shows.
osg::AnimNodePtr hiddenClone(const osg::AnimNodePtr& node);
/// A clone of a node that shares its blocks, beside it on a free track, `flip`ped the other way. Null where the node
/// has no parent.
osg::AnimNodePtr duplicate(const osg::AnimNodePtr& node, bool flip);
} // namespace kxClipNodes
