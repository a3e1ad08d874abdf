#pragma once

#include <osg/FieldContainer.h>

/// The scene with its animations.
namespace kxAnimScene
{
/// The kernel's part of a new scene.
/// Stops what plays, empties the structure roots, forgets rest values and plans, and goes to frame 0 without a message.
/// Rates, ranges and the clipboard stay. Rest values aren't written back: the objects are about to go.
KX_API void clear();

/// The frame of the timeline, for which the scene was evaluated last. The kernel's current frame may be a clip's, which
/// the clip maker shows.
KX_API double frame();

/// True for what is in the scene: its nodes and materials, the animations of these, clips and what is in them.
/// False for what only the undo stack, the clipboard or a handle still knows.
KX_API bool contains(const osg::FieldContainerPtr& object);
} // namespace kxAnimScene
