#pragma once

/// Moves all times of animations from one frame rate to another.
namespace kxTimeRescale
{
/// Keys, tangents, offsets and ranges keep their frames, so their seconds change by oldFps / newFps. Reaches every
/// animation in memory, also those that an undo step or the clipboard holds.
void keepFrames(double oldFps, double newFps);
} // namespace kxTimeRescale
