#pragma once

#include <kxAnimManager.h>

/// The message box that gives the counts, extents and scales of an animation.
namespace kxClipInfo
{
/// One line a value, each with a line feed; times in seconds and in frames of `fps`.
QString text(const kxAnimManager::kxAnimInfo& info, double fps);
/// Modal. Null shows nothing.
void show(const osg::AnimNodePtr& node);
} // namespace kxClipInfo
