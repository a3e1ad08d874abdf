#pragma once

#include <osg/Node.h>

#include <string>
#include <vector>

class kxFileReport;
struct kxSceneContent;

/// Turns the animations of other programs' files into blocks and clips.
///
/// Each animated object gets a block for each animation that moves it, each animation a clip with hidden clones of its
/// blocks. Only the blocks of the first animation are active.
namespace kxAnimImport
{
/// Among the extras of a glTF channel.
constexpr char BlockName[] = "block";

enum class Path
{
    Translation,
    Rotation, ///< values are quaternions x, y, z, w
    Scale
};

enum class Interpolation
{
    Linear,
    Step,
    CubicSpline
};

/// The keys of one field of one object. Values hold 3 numbers a key, 4 for a rotation.
struct Channel
{
    osg::NodePtr target;
    std::string block; ///< the name of the object's block; empty for the animation's
    Path path = Path::Translation;
    Interpolation interpolation = Interpolation::Linear;
    std::vector<float> times; ///< seconds
    std::vector<float> values;
    /// Of a cubic spline, as many as values: change in a second before and after the key.
    std::vector<float> inTangents, outTangents;
};

struct Animation
{
    std::string name; ///< may be empty or taken
    std::vector<Channel> channels;
};

void add(const std::vector<Animation>& animations, kxSceneContent& content, kxFileReport& report);
} // namespace kxAnimImport
