#pragma once

/// The sample scene: a desk fan on a turntable, with the animations that show it off.
namespace kxTurntable
{
/// Length of the animation, in seconds; it runs on without a seam.
constexpr float Seconds = 4.0f;

/// Fills the open scene, which has to be empty.
void build();
} // namespace kxTurntable
