#pragma once

#include <kxExport.h>

/// Moves all times of animations from one frame rate to another.
namespace kxTimeRescale
{
/// Keys, tangents, offsets and ranges keep their frames, so their seconds change by oldFps / newFps. Reaches every
/// animation in memory, also those that an undo step or the clipboard holds. True where a time changed.
bool keepFrames(double oldFps, double newFps);

/// While one lives, changes of the rate rescale nothing: the times that are being read belong to the rate that is being
/// read with them.
class KX_API Pause
{
public:
    Pause();
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
};
} // namespace kxTimeRescale
