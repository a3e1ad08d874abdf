#pragma once

#include <osg/AnimNode.h>

#include <string>
#include <vector>

/// Edits of the tree of clips, and moves in any tree of animations. Each marks what it changes; nodes aren't null where
/// nothing else is said.
namespace kxClipStructure
{
/// True for a node with the core of a clip, of whatever kind; false for null.
bool isClip(const osg::NodePtr& node);

/// The clip that `node` is, else the nearest one that holds it; null where there is none.
osg::AnimNodePtr clipOf(const osg::NodePtr& node);

/// `node` as what takes a paste or a drop: only a clip does. Null for anything else, which the log says.
osg::AnimNodePtr targetOf(const osg::NodePtr& node);

/// A new clip of that name, made unique, at the end of the children of `parent`; without one at the top of the tree.
osg::AnimNodePtr addClip(const std::string& name, const osg::AnimNodePtr& parent);

/// Moves `node`, with all below it, to the end of the children of `parent`. False where `parent` is the node itself or
/// is below it.
bool moveInto(const osg::AnimNodePtr& node, const osg::NodePtr& parent);
/// Moves a clip to the top of the tree; does nothing with anything else, or with null.
void moveToTop(const osg::AnimNodePtr& node);

/// Puts `node` at the end of the children of `clip`, to begin at `seconds` of the root's time, on a free track.
void insert(const osg::AnimNodePtr& node, const osg::AnimNodePtr& clip, float seconds);

/// Puts a clone of `block` that no list shows into `clip`, `seconds` of the clip's time later than it is, on a free
/// track.
void addBlock(const osg::AnimNodePtr& block, const osg::AnimNodePtr& clip, float seconds);

/// An active clone of `node`, which shares its cores, at the same time in `clip`, on a free track. Null where `clip` is
/// the node itself or is below it.
osg::AnimNodePtr addClone(const osg::AnimNodePtr& node, const osg::AnimNodePtr& clip);
/// The same, `frames` later and `tracks` further down than `node` itself is. Null where that is no place that a
/// node can have.
osg::AnimNodePtr insertClone(const osg::AnimNodePtr& node, const osg::AnimNodePtr& clip, double frames, int tracks);

/// Clones of what was copied, the first of them at `frame` of the ruler, on free tracks of `clip`; their clips are
/// their own. Empty without a clip.
std::vector<osg::AnimNodePtr> paste(const osg::AnimNodePtr& clip, double frame);

/// A clone of `node` beside it, in a clip on a free track: its blocks are shared, its clips are its own. Empty for a
/// node without a parent. The animations' clipboard holds `node` from then on.
std::vector<osg::AnimNodePtr> duplicate(const osg::AnimNodePtr& node, bool flipped);

/// Takes nodes out of their clips, and clips that this leaves empty out of theirs; clips in `kept` stay.
void takeOut(const std::vector<osg::AnimNodePtr>& nodes, const std::vector<osg::AnimNodePtr>& kept);

/// Takes out what the kernel finds unused among all clips, whether or not it does so by itself.
void removeUnused();
} // namespace kxClipStructure
