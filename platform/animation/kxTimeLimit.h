#pragma once

#include <algorithm>

/// How far the time of a scene goes: what a file claims beyond it is brought back when the file is read.
namespace kxTimeLimit
{
/// Before and behind frame 0. Times are floats, which hardly tell frames apart beyond it.
constexpr int Frames = 10000000;
/// How much longer or shorter than itself an animation may be in what it stands in.
constexpr double Stretch = 1.0e6;
/// Of offsets in y.
constexpr double Tracks = 1.0e6;

/// The limit at a frame rate. Odd rates make it no shorter than hours, no longer than months.
constexpr double seconds(double fps)
{
    return Frames / std::clamp(fps, 1.0, 1000.0);
}
} // namespace kxTimeLimit
