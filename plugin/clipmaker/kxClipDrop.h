#pragma once

#include <osg/AnimNode.h>

#include <QPointF>

class QMimeData;

/// Library items that are dropped on the clip timeline.
namespace kxClipDrop
{
/// The one block or shape cache that a drag out of the library carries; null for anything else, without a clip, and
/// where the clip stands in what is dragged.
osg::AnimNodePtr nodeFor(const osg::AnimNodePtr& clip, const QMimeData* data);

/// Puts a clone of `node`, which shares its curves, into `clip`, `frames` later and `tracks` further down than `node`
/// itself stands. Null where that is no place that a node can have.
osg::AnimNodePtr insert(const osg::AnimNodePtr& node, const osg::AnimNodePtr& clip, double frames, int tracks);
} // namespace kxClipDrop
