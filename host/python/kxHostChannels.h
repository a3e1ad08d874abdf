#pragma once

#include <kxAnimManager.h>
#include <osg/FCPtr.h>

#include <string>
#include <vector>

/// Keyable channels as scripts name them: the channel's name, "." and its suffix ("translation.X"), or the name alone
/// where it has no suffix ("visible").
///
/// Raises ValueError for an object that is null or gone, and KeyError, with the channels there are, for an unknown one.
namespace kxHostChannels
{
typedef kxAnimManager::kxOSGChannelData Channel;
Channel find(const osg::FieldContainerPtr& object, const std::string& name);
/// In the order of the object's fields.
std::vector<std::string> names(const osg::FieldContainerPtr& object);
double value(const osg::FieldContainerPtr& object, const std::string& channel);
/// One step on the undo stack where the value changes. Gives the value of the field then: numbers outside of what the
/// channel allows are clamped. Raises ValueError for a number that no float can hold.
double setValue(const osg::FieldContainerPtr& object, const std::string& channel, double value);
} // namespace kxHostChannels
