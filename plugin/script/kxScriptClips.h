#pragma once

#include <kxNodePtr.h>

#include <string>

/// Making, finding, filling and placing clips.
///
/// Frames count at the rate of the scene. A handle that is null or no clip is let pass without effect; every change
/// brings the clip maker's tree up to date where it is visible.
namespace kxScriptClips
{
/// Enters the functions in the module that is being filled.
void define();

/// Gets a name that no other animation has. Top-level where `parent` is no clip.
kxNodePtr create(const std::string& name, const kxNodePtr& parent);

// Null where there is none of this name.
kxNodePtr findClip(const std::string& name);
kxNodePtr findBlock(const std::string& name);
/// `name` of the camera track, not of the block that moves its camera.
kxNodePtr findCameraTrackBlock(const std::string& name);

/// Puts a hidden copy of a block on the first free track at `frame`, or a clip itself wherever it is. False for
/// anything else, and for a clip that `clip` is in.
bool add(const kxNodePtr& clip, const kxNodePtr& object, int frame);

void setDuration(const kxNodePtr& clip, int frames);
/// Moves the clip, or with the other end kept changes its length; a length that wouldn't be above 0 is refused.
///
///     before          |-------|
///     start, moved        |-------|
///     start, end kept     |---|
void setStart(const kxNodePtr& clip, int frame, bool keepEnd);
void setEnd(const kxNodePtr& clip, int frame, bool keepStart);

void setActive(const kxNodePtr& clip, bool active);
void setLocked(const kxNodePtr& clip, bool locked);
void setFlipped(const kxNodePtr& clip, bool flipped);
} // namespace kxScriptClips
