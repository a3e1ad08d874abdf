#pragma once

#include <kxExport.h>

/// Frames and seconds. Seconds live in records as floats; a frame that is written into one comes back as itself.
namespace kxFrameTime
{
/// frame / fps as the float that records hold; the limit of a float for greater frames.
KX_API float seconds(double frame, double fps);
/// The frame of a time from a record: the whole one where the time is that frame's within the rounding of floats.
KX_API double frame(double seconds, double fps);
/// `frame` without its fraction, as the timeline's widgets show it. A frame short of a whole one by rounding counts as
/// it.
KX_API int wholeFrame(double frame);
} // namespace kxFrameTime
