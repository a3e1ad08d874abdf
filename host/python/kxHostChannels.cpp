#include "kxRaise.h"

#include "kxHostChannels.h"

#include <edits/kxSceneEdits.h>
#include <kxAnimManager.h>

#include <cmath>
#include <limits>

namespace
{
using kxHostChannels::Channel;

std::string nameOf(const Channel& channel)
{
    return channel.suffix.empty() ? channel.name : channel.name + "." + channel.suffix;
}

std::vector<Channel> channelsOf(const osg::FieldContainerPtr& object)
{
    if (object == osg::NullFC)
        kxRaise(PyExc_ValueError, "the object is null, or it is gone");
    std::vector<Channel> channels;
    kxAnimManager::the()->getKeyableChannels(object, channels);
    return channels;
}
} // namespace

Channel kxHostChannels::find(const osg::FieldContainerPtr& object, const std::string& name)
{
    std::string known;
    for (const Channel& channel : channelsOf(object))
    {
        if (nameOf(channel) == name)
            return channel;
        known += (known.empty() ? "" : ", ") + nameOf(channel);
    }
    kxRaise(PyExc_KeyError, "no channel '" + name + "'; there are: " + (known.empty() ? "none" : known));
}
std::vector<std::string> kxHostChannels::names(const osg::FieldContainerPtr& object)
{
    std::vector<std::string> names;
    for (const Channel& channel : channelsOf(object))
        names.push_back(nameOf(channel));
    return names;
}

double kxHostChannels::value(const osg::FieldContainerPtr& object, const std::string& channel)
{
    return double(kxAnimManager::the()->getOSGFieldValue(find(object, channel)));
}

double kxHostChannels::setValue(const osg::FieldContainerPtr& object, const std::string& channel, double value)
{
    const Channel found = find(object, channel);
    if (!(std::fabs(value) <= double(std::numeric_limits<float>::max()))) // NaN fails too
        kxRaise(PyExc_ValueError, "the value of channel '" + channel + "' has to be a finite number");
    kxSceneEdits::setChannel(found, QString::fromStdString(channel), float(value));
    return double(kxAnimManager::the()->getOSGFieldValue(found));
}
