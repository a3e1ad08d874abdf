#pragma once

#include <osg/FieldContainer.h>

#include <map>
#include <string>
#include <vector>

class kxFileReport;

/// Brings what a file says of time back to what can be played (see kxTimeLimit), and names what that changed: keys,
/// places, stretches and repeats of animations, and the frames among the settings of a scene.
namespace kxTimeBounds
{
/// `containers` are in their trees, and nobody has asked for an extent yet; `settings` are those of kxSceneTiming,
/// whose frame rate counts.
void clamp(const std::vector<osg::FieldContainerPtr>& containers, std::map<std::string, double>& settings,
           kxFileReport& report);
} // namespace kxTimeBounds
