#pragma once

#include <kxAnimManager.h>
#include <osg/SceneCores.h>
#include <scene/Scenery.h>
#include <scene/kxSequenceStep.h>

#include <string>
#include <utility>
#include <vector>

/// What a presentation of the scene is made of, found by kind and name.
///
/// Viewpoints and sequences are nodes below the scenery root. Camera tracks are the cameras of the scene that have a
/// block of animation, variant sets are its switches, whose children are the choices.
namespace kxScenery
{
enum class Kind
{
    Viewpoint,
    CameraTrack,
    VariantSet,
    Sequence
};
constexpr int KindCount = 4;

/// In the order of the tree.
KX_API std::vector<osg::NodePtr> all(Kind kind);
KX_API std::vector<std::string> names(Kind kind);
/// The first of this name; null for none and for an empty name.
KX_API osg::NodePtr find(Kind kind, const std::string& name);
/// False for a node that is none of the four, or is outside of the scene.
KX_API bool kindOf(const osg::NodePtr& node, Kind& kind);

/// The names of a variant set's choices; a child without a name goes by its number, from 1.
KX_API std::vector<std::string> choices(const osg::NodePtr& set);
/// The name of what the set shows, empty for none or all.
KX_API std::string shownChoice(const osg::NodePtr& set);
/// The index of the choice of this name, -1 for none. `choice` empty: the one after the one that is shown, around, or
/// after `shown` where it's given.
KX_API int choiceIndex(const osg::NodePtr& set, const std::string& choice);
KX_API int choiceIndex(const osg::NodePtr& set, const std::string& choice, int shown);

/// A set, or a set and one of its choices, in one text, as triggers name it: "Door", "Door/Open".
KX_API std::string variantName(const std::string& set, const std::string& choice);
/// The set that `text` names and the choice in it, empty for none. The set is null where there is none such.
KX_API std::pair<osg::NodePtr, std::string> findVariant(const std::string& text);
/// All texts that findVariant() knows: each set, and each of its choices.
KX_API std::vector<std::string> variantNames();

/// The steps that can be read; `unread`, where given, gets the number of the others.
KX_API std::vector<kxSequenceStep> steps(const osg::NodePtr& sequence, int* unread = nullptr);
KX_API std::vector<std::string> stepTexts(const std::vector<kxSequenceStep>& steps);

/// The kind of what a trigger names.
KX_API Kind kindOf(const osg::AnimSequencePtr& trigger);
/// All that a trigger of this kind could name.
KX_API std::vector<std::string> targets(const osg::AnimSequencePtr& trigger);
/// True where what a trigger of this kind and name fires is in the scene.
KX_API bool isKnown(Kind kind, const std::string& name);
/// Calls `use` with each trigger below `clips`, and the kind of what it names.
KX_API void forTriggers(
    const osg::AnimNodePtr& clips,
    const std::function<void(const osg::AnimNodePtr& node, const osg::AnimSequencePtr& trigger, Kind kind)>& use);
/// What a trigger's or a step's text becomes when a thing of this kind is renamed; false where it names another. For
/// choices, `before` and `after` are the texts of variantName() and the kind is VariantSet.
KX_API bool renamed(Kind kind, const std::string& before, const std::string& after, std::string& text);
/// Writes the new name of a thing into the triggers below `clips` and the steps below `scenery`, unmarked.
KX_API void rename(Kind kind, const std::string& before, const std::string& after, const osg::AnimNodePtr& clips,
                   const osg::NodePtr& scenery);
/// The same for a step.
KX_API bool renamed(Kind kind, const std::string& before, const std::string& after, kxSequenceStep& step);
/// For whoever gives a clip or block the name `after` next: the steps that play it by its present name follow.
KX_API void followAnimation(const osg::AnimNodePtr& animation, const std::string& after);
/// Writes the new name of a clip or block into the steps below `scenery` that play it. `isMeant`, where given, is asked
/// once there is such a step, and has the last word. False where nothing was written.
KX_API bool renameAnimation(const std::string& before, const std::string& after, const osg::NodePtr& scenery,
                            const std::function<bool()>& isMeant = {});
/// The setting of the scene that holds in and out of the film of a clip, of the timeline for an empty name.
KX_API std::string filmRangeKey(const std::string& clip);
} // namespace kxScenery
