#pragma once

/// Keys of the animation settings in the host's data.
namespace kxPreferenceKey
{
constexpr const char PlaybackSpeed[] = "Animation playback speed";
constexpr const char PlaybackCustomSpeed[] = "Animation playback custom speed";
constexpr const char Time[] = "Animation time";
constexpr const char LoopTimeline[] = "Animation loop timeline";
constexpr const char EvaluateSubframes[] = "Animation evaluate subframes";
constexpr const char KeepKeys[] = "Animation keep keys";
constexpr const char PlaybackRange[] = "Animation playback range";
constexpr const char PlaybackContext[] = "Animation playback context";
constexpr const char FullRangeStart[] = "Animation full timeline range start";
constexpr const char FullRangeEnd[] = "Animation full timeline range end";
constexpr const char DetailedRangeStart[] = "Animation detailed timeline range start";
constexpr const char DetailedRangeEnd[] = "Animation detailed timeline range end";
constexpr const char VerifyClipStructure[] = "Animation verify clip structure";
constexpr const char DontShowCreateCurveDialog[] = "Animation dont show create curve dialog";
} // namespace kxPreferenceKey
