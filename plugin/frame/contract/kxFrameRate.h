#pragma once

/// Frames a second that a frame rate or a playback rate may have: what keeps every frame of a timeline, and every time
/// that a float holds, apart from its neighbours. False for what is no number.
constexpr bool kxIsFrameRate(double fps)
{
    return fps >= 0.001 && fps <= 1.0e6;
}
