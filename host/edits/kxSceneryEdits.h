#pragma once

#include <QString>
#include <osg/AnimNode.h>
#include <scene/kxScenery.h>
#include <view/kxCameraRig.h>

#include <vector>

/// What a user does to viewpoints, camera tracks, variant sets and sequences, each a step on the undo list. Names that
/// are taken get a number.
namespace kxSceneryEdits
{
typedef std::vector<osg::NodePtr> Nodes;

/// Where `camera` is, with a target `distance` before it. `name` empty: a word and a number.
osg::NodePtr addViewpoint(const kxViewCamera& camera, float distance, const QString& name = QString());
/// Gives a viewpoint another place.
void updateViewpoint(const osg::NodePtr& viewpoint, const kxViewCamera& camera, float distance);

/// A camera that travels from one viewpoint to the next, `seconds` each. Null for fewer than two.
osg::NodePtr addCameraTrack(const Nodes& viewpoints, double seconds, const QString& name = QString());
/// A camera that goes once around the target of `pose` in `seconds`, in steady motion.
osg::NodePtr addTurntable(const kxCameraRig::Pose& pose, double seconds, const QString& name = QString());

/// A switch in the place of the first of the nodes, which become its choices; without nodes an empty one. The first
/// choice is shown.
osg::NodePtr addVariantSet(const Nodes& nodes, const QString& name = QString());
/// False where the set has no such choice.
bool setChoice(const osg::NodePtr& set, int choice);

osg::NodePtr addSequence(const std::vector<kxSequenceStep>& steps, const QString& name = QString());
void setSteps(const osg::NodePtr& sequence, const std::vector<kxSequenceStep>& steps);

/// A trigger of what has this kind and name, on the first free track of `clip`, with its time at `frame` of the ruler.
/// Null where that isn't finite.
osg::AnimNodePtr addTrigger(kxScenery::Kind kind, const std::string& name, const osg::AnimNodePtr& clip, double frame);

/// Lets a trigger name another thing of its kind; its label follows where it is what it named.
void retarget(const osg::AnimNodePtr& trigger, const std::string& name);

/// The active blocks of the timeline whose clones stand in a clip: at the timeline's frames they move their objects
/// too.
std::vector<osg::AnimNodePtr> restless(const osg::AnimNodePtr& clip);
/// How what blocks drive stands once they are off.
enum class Stand
{
    Own,    ///< with the values that it has of itself
    Begin,  ///< as the clip begins
    End,    ///< as it ends
    Present ///< as it stands at the moment
};
/// Switches them off together, and what they drove stands so where the clip isn't shown; one step. Gives how many they
/// were.
int rest(const osg::AnimNodePtr& clip, Stand stand = Stand::Own);

/// Copies of viewpoints, sequences and objects.
void duplicate(const Nodes& nodes);
/// Says in the log where triggers and steps go on naming what went.
void remove(const Nodes& nodes);

/// Why a thing can't bear a name, empty where it can: names are trimmed, not empty, and distinguish viewpoints from
/// viewpoints and sequences from sequences.
QString problemOfName(const osg::NodePtr& node, const QString& name);
/// The triggers and steps that name `node` by its present name follow it to `name`; for whoever renames it next.
void followRename(const osg::AttachmentContainerPtr& node, const std::string& name);
/// How many triggers and steps name it.
int countUses(const osg::NodePtr& node);
} // namespace kxSceneryEdits
