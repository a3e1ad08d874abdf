#pragma once

#include <osg/AnimNode.h>

class kxAnimAbstractClipItem;

/// Which children of a clip the timeline shows, and as what.
namespace kxClipBars
{
/// Whether a node has a bar or a marker: by its core. Null has none.
bool isShown(const osg::AnimNodePtr& node);
/// The new bar or marker of a node, in no scene yet; null where it has none.
kxAnimAbstractClipItem* make(const osg::AnimNodePtr& node);
/// Whether a bar shows what its node is: place, length, cycles, state and name. Not where its node has died.
bool isCurrent(const kxAnimAbstractClipItem& bar);
} // namespace kxClipBars
