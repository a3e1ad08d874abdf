#pragma once

#include <kxExport.h>

#include <map>
#include <string>

/// The settings of the animation kernel that belong to a scene: rates, ranges, the current frame and how it plays.
namespace kxSceneTiming
{
KX_API std::map<std::string, double> values();
/// Names that aren't known and values that a setting can't take are skipped. The scene has to be empty, so that a
/// change of the rate rescales no keys. The frame is set without an evaluation.
void apply(const std::map<std::string, double>& values);
} // namespace kxSceneTiming
