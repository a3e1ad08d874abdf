#pragma once

#include <animation/kxChannelTarget.h>
#include <files/scene/kxExportedAnimations.h>
#include <osg/AnimNode.h>
#include <osg/Share.h>

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

/// What drives what in an animation that is exported.
namespace kxExportSources
{
/// A node on the way from the top of an animation to the curves of one channel.
struct Source
{
    const osg::AnimNode* node = nullptr;
    const osg::AnimCurve* curve = nullptr; ///< of a leaf, with keys
    bool isTimed = false;                  ///< which of those below counts depends on the time, else there is one
    std::vector<Source> below;
};

struct Channel
{
    kxChannelTarget target;
    Source source;
};

struct Animation
{
    std::string name;
    bool isTimeline = false;
    bool hasTriggers = false; ///< beside those that choose variants
    std::vector<Channel> channels;
    std::vector<osg::Share<osg::AnimNode>> made;             ///< for the channels that its triggers drive
    std::unordered_map<kxChannelTarget, std::size_t> places; ///< of the channels
    std::map<osg::UInt32, std::string> blocks;               ///< by container id, the name of a block that drives it
    double start = 0, end = 0;                               ///< seconds: all that is played

    /// Null where nothing drives it.
    const Channel* find(const kxChannelTarget& target) const
    {
        const auto found = places.find(target);
        return found == places.end() ? nullptr : &channels[found->second];
    }
};

/// Each clip at the top of the clip structure, active or not, and then what the timeline plays.
std::vector<Animation> ofScene(kxExportedAnimations wanted);
} // namespace kxExportSources
