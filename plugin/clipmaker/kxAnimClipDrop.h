#pragma once

#include <osg/AnimNode.h>

#include <QPointF>

class QMimeData;

/// Library items that are dropped on the clip timeline.
namespace kxClipDrop
{
/// The one block or shape cache that a drag out of the library carries; null for anything else.
osg::AnimNodePtr nodeOf(const QMimeData* data);

/// Puts a clone of `node`, which shares its curves, into `clip`, `frames` later and `tracks` further down than `node`
/// itself stands. Active: what is placed plays. Null where the clip can't take it: it stands in the node.
osg::AnimNodePtr insert(const osg::AnimNodePtr& node, const osg::AnimNodePtr& clip, double frames, int tracks);
} // namespace kxClipDrop
