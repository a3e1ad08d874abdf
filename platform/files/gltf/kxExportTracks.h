#pragma once

#include <animation/kxChannelTarget.h>
#include <osg/AnimNode.h>

#include <map>
#include <string>
#include <vector>

/// What drives what in an animation that is exported.
namespace kxExportTracks
{
/// A curve in its place: time = scale * curve's time + offset.
struct Track
{
    osg::AnimCurvePtr curve;
    double scale = 1, offset = 0;
    /// No node above it repeats, flips or cuts its time, and outside its keys it stands still.
    bool plain = true;
};

/// The tracks of the components of one field.
struct Field
{
    const osg::FieldDescription* description = nullptr;
    std::map<unsigned, std::vector<Track>> components;
};

struct Animation
{
    std::string name;
    osg::AnimNodePtr clip; ///< null for the animation of the scene itself
    /// By container id, then by the name of the field.
    std::map<osg::UInt32, std::map<std::string, Field>> targets;
    std::map<osg::UInt32, std::string> blocks; ///< by container id, the name of the first block that drives it
    float start = 0, end = 0;                  ///< seconds, of all that moves
};

/// Each active clip, and the active animations of the objects where no clip holds them.
std::vector<Animation> ofScene();
} // namespace kxExportTracks
