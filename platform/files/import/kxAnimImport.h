#pragma once

#include <osg/AttachmentContainer.h>
#include <osg/Node.h>

#include <string>
#include <vector>

class kxFileReport;
struct kxSceneContent;

/// Turns the animations of other programs' files into blocks and clips.
///
/// Each animated object gets a block for each animation that moves it, each animation a clip of its name with hidden
/// clones of its blocks. A block is called after its object and the animation, unless the file has a name for it:
/// blocks of one object and name that show the same are one, others are told apart by the animation. Only the blocks of
/// the first animation are active; in a file that says what the timeline plays, those that it plays.
namespace kxAnimImport
{
/// Among the extras of a glTF channel.
constexpr char BlockName[] = "block";
/// Among the extras of a glTF animation: true for what the timeline plays, false for a clip.
constexpr char TimelineName[] = "timeline";
/// Among the extras of a glTF animation: how many seconds later all of it lies in the file, which knows no time before
/// 0.
constexpr char ShiftName[] = "shift";
/// Among the extras of a glTF node that shows one of those below it: the index, as an animation is to change it.
constexpr char ChoiceName[] = "choice";

enum class Path
{
    Translation,
    Rotation, ///< values are quaternions x, y, z, w
    Scale,
    Field ///< what the channel names, in the numbers of the field
};

enum class Interpolation
{
    Linear,
    Step,
    CubicSpline
};

/// The keys of one field of one object. Values hold 3 numbers a key, 4 for a rotation, `width` for a named field.
struct Channel
{
    osg::AttachmentContainerPtr target; ///< a node, also for what its core has, or a material
    std::string field;                  ///< of Path::Field
    unsigned width = 3;
    std::string block; ///< the name of the object's block, where the file has one
    Path path = Path::Translation;
    Interpolation interpolation = Interpolation::Linear;
    std::vector<float> times; ///< seconds
    std::vector<float> values;
    /// Of a cubic spline, as many as values: change in a second before and after the key.
    std::vector<float> inTangents, outTangents;
};

enum class Kind
{
    Unsaid,
    Clip,
    Timeline ///< no clip: what the scene's own time plays
};

struct Animation
{
    std::string name; ///< may be empty or taken
    Kind kind = Kind::Unsaid;
    double shift = 0; ///< seconds that its times in the file lie behind those here
    std::vector<Channel> channels;
};

void add(const std::vector<Animation>& animations, kxSceneContent& content, kxFileReport& report);
} // namespace kxAnimImport
