#pragma once

#include <set>

/// Frames as the timeline shows them and walks along them.
namespace kxKeyFrames
{
/// The whole frame of `frame`, cut towards 0; the nearest that an int can hold where it is out of reach, 0 for NaN. A
/// frame short of a whole one by the rounding of sums counts as it, as it does for the kernel.
int truncated(double frame);

/// The frame of a key: the whole one where its time, a float, is that frame's within rounding. Without that a walk
/// would land before a key that is on a frame, and find it again.
float ofKey(float seconds, double fps);

/// The last key before `frame`, else the last of all; `keys` isn't empty.
float previous(const std::set<float>& keys, int frame);
/// The first key after `frame`, else the first of all; `keys` isn't empty.
float next(const std::set<float>& keys, int frame);
} // namespace kxKeyFrames
