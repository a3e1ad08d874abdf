#pragma once

#include <set>

/// Frames as the timeline shows them and walks along them.
namespace kxKeyFrames
{
/// The whole frame of `frame`, cut towards 0; the nearest that an int can hold where it is out of reach, 0 for NaN.
int truncated(double frame);

/// The last key before `frame`, else the last of all; `keys` isn't empty.
float previous(const std::set<float>& keys, int frame);
/// The first key behind `frame`, else the first of all; `keys` isn't empty.
float next(const std::set<float>& keys, int frame);
} // namespace kxKeyFrames
