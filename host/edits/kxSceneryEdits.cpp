#include "kxSceneryEdits.h"

#include "kxCameraTrackMaker.h"

#include "kxNodeCopy.h"
#include "kxSceneCommands.h"
#include "kxSceneEdits.h"
#include "kxSceneNotify.h"
#include <QCoreApplication>
#include <animation/kxAnimEngine.h>
#include <animation/kxAnimScene.h>
#include <animation/kxFrameTime.h>
#include <animation/kxNodeTime.h>
#include <animation/kxPoses.h>
#include <animation/kxShownMoment.h>
#include <kxAnimManager.h>
#include <kxLog.h>
#include <kxScenegraph.h>
#include <osg/AnimCores.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Finite.h>
#include <scene/kxScene.h>
#include <trust/kxCodeTrust.h>

#include <algorithm>
#include <set>

namespace
{
typedef kxSceneryEdits::Nodes Nodes;
using kxScenery::Kind;

QString tr(const char* text)
{
    return QCoreApplication::translate("kxSceneryEdits", text);
}

QString stepText(const char* text)
{
    return kxUndoString(QString::fromLatin1(text), QStringLiteral("Scenery"));
}

void add(kxUndoCommand* command)
{
    if (command != nullptr)
        kxUndoStack::get(0).add(command);
}

std::string freeName(Kind kind, const QString& name, const QString& word)
{
    const QString trimmed = name.trimmed();
    return kxNodeUtils::getUniqueName((trimmed.isEmpty() ? word : trimmed).toStdString(), kxScenery::names(kind));
}

/// Writes what a variant set shows of itself, also while an animation or a trigger shows something else.
class SetChoiceCommand : public kxCommand
{
public:
    SetChoiceCommand(const osg::SwitchPtr& core, float before, float after, const QString& text)
        : kxCommand(text), _id(core.getFieldContainerId()), _before(before), _after(after)
    {
    }

private:
    void apply(bool forward) override
    {
        const auto core = osg::living<osg::Switch>(_id);
        if (core == osg::NullFC)
            return;
        const float choice = forward ? _after : _before;
        kxAnimEngine::of(*kxAnimManager::the()).rest.set(_id, "choice", 0, choice);
        core->setChoice(osg::Int32(choice));
        osg::markChanged(core, osg::Switch::ChoiceFieldMask);
        kxSceneNotify::fieldChanged(core);
    }

    unsigned int _id;
    float _before, _after;
};

/// Switches blocks of the timeline off together.
class RestCommand : public kxCommand
{
public:
    RestCommand(const std::vector<osg::AnimNodePtr>& blocks, const QString& text) : kxCommand(text)
    {
        for (const osg::AnimNodePtr& block : blocks)
            _ids.push_back(block.getFieldContainerId());
    }
    /// A channel gets the value that it has now for its own.
    void keepValue(const kxScenePlan::Pose& present)
    {
        float before = present.value;
        rest().get(present.id, present.field->name(), present.component, before);
        _values.push_back({present, before});
    }

private:
    struct Value
    {
        kxScenePlan::Pose after;
        float before;
    };
    static kxRestValues& rest() { return kxAnimEngine::of(*kxAnimManager::the()).rest; }

    void apply(bool forward) override
    {
        for (const auto& [after, before] : _values)
        {
            rest().set(after.id, after.field->name(), after.component, forward ? after.value : before);
            if (const osg::FieldContainerPtr container = osg::FieldContainerFactory::the()->getContainer(after.id))
                osg::markChanged(container, after.field->mask());
        }
        for (const unsigned int id : _ids)
            if (const auto block = osg::living<osg::AnimNode>(id))
            {
                block->setTravMask(forward ? 0 : osg::Node::Active);
                osg::markChanged(block, osg::Node::TravMaskFieldMask);
            }
        kxSceneNotify::animationsChanged();
        kxAnimManager::the()->reevaluateAnimations(true);
    }

    std::vector<unsigned int> _ids;
    std::vector<Value> _values;
};

void showEnd(const osg::AnimNodePtr& clip, bool last)
{
    const kxAnimManager::kxAnimInfo info = kxAnimManager::the()->getInfo(clip);
    const double frame = kxFrameTime::frame(double(last ? info.end : info.start), kxAnimManager::the()->fps());
    kxAnimManager::the()->evaluateByFrame(clip, frame, false, false, false);
}

osg::NodePtr insert(const osg::NodePtr& node, const char* text)
{
    auto* const command = new kxPlaceNodesCommand(stepText(text));
    command->insertNode(node, kxScene::the()->sceneryRoot(), -1);
    add(command);
    return node;
}

void place(const osg::NodePtr& node, const kxViewCamera& camera, float distance)
{
    const auto core = osg::ViewpointPtr::dcast(node->getCore());
    kxSceneMath::setLocalMatrix(node, camera.view.inverted());
    core->setFieldOfView(camera.fieldOfView);
    core->setTargetDistance(distance);
}

/// Whether the name of `node` is one that triggers and steps use, and how they write it.
bool nameInUses(const osg::AttachmentContainerPtr& container, const std::string& name, Kind& kind, std::string& text)
{
    const osg::NodePtr node = osg::NodePtr::dcast(container);
    if (kxScenery::kindOf(node, kind) && kind != Kind::CameraTrack)
    {
        text = name;
        return true;
    }
    const osg::NodePtr set = node == osg::NullFC ? osg::NodePtr() : node->getParent();
    if (!kxScenery::kindOf(set, kind) || kind != Kind::VariantSet)
        return false;
    text = kxScenery::variantName(set->getNodeName(), name);
    return true;
}

typedef std::function<void(const osg::AnimNodePtr& node, const osg::AnimSequencePtr& trigger)> TriggerUse;
typedef std::function<void(const osg::NodePtr& sequence, const std::vector<std::string>& texts, int count)> StepUse;

/// Calls `trigger` and `steps` with all that is written anew when `before` becomes `after`.
void forUses(Kind kind, const std::string& before, const std::string& after, const TriggerUse& onTrigger,
             const StepUse& onSteps)
{
    kxScenery::forTriggers(kxAnimManager::the()->clipStructureRoot(),
                           [&](const osg::AnimNodePtr& node, const osg::AnimSequencePtr& trigger, Kind named)
                           {
                               std::string name = trigger->getName();
                               if (named == kind && kxScenery::renamed(kind, before, after, name))
                                   onTrigger(node, trigger);
                           });
    for (const osg::NodePtr& sequence : kxScenery::all(Kind::Sequence))
    {
        std::vector<std::string> texts = osg::SceneSequencePtr::dcast(sequence->getCore())->getSteps();
        int count = 0;
        for (std::string& text : texts)
        {
            kxSequenceStep step;
            if (!kxSequenceStep::fromText(text, step) || !kxScenery::renamed(kind, before, after, step))
                continue;
            text = step.toText();
            ++count;
        }
        if (count > 0)
            onSteps(sequence, texts, count);
    }
}

/// Puts a camera with its animation into the scene.
osg::NodePtr addTrack(const osg::NodePtr& node, const QString& name, const QString& word)
{
    node->setNodeName(freeName(Kind::CameraTrack, name, word));
    kxSceneEdits::addNode(node, osg::NodePtr(), QStringLiteral("Add Camera Track"));
    return node;
}
} // namespace

osg::NodePtr kxSceneryEdits::addViewpoint(const kxViewCamera& camera, float distance, const QString& name)
{
    const osg::NodePtr node = kxSceneEdits::makeNode(
        osg::Viewpoint::create(), QString::fromStdString(freeName(Kind::Viewpoint, name, tr("Viewpoint"))));
    place(node, camera, distance);
    return insert(node, "Add Viewpoint");
}

void kxSceneryEdits::updateViewpoint(const osg::NodePtr& viewpoint, const kxViewCamera& camera, float distance)
{
    const osg::NodePtr probe = kxSceneEdits::makeNode(osg::Viewpoint::create(), QString());
    const osg::Share<osg::Node> share(probe);
    place(probe, camera, distance);
    const QString text = stepText("Move Viewpoint");
    const kxScopedUndo scope(true);
    for (const char* const field : {"translation", "eulerRotation", "focalLength", "targetDistance"})
        add(kxSetFieldCommand::make(viewpoint->getCore(), field,
                                    osg::Viewpoint::_type.field(field)->value(*probe->getCore()), text));
}

osg::NodePtr kxSceneryEdits::addCameraTrack(const Nodes& viewpoints, double seconds, const QString& name)
{
    const osg::NodePtr node = kxCameraTrackMaker::through(viewpoints, seconds);
    return node == osg::NullFC ? node : addTrack(node, name, tr("Camera Track"));
}

osg::NodePtr kxSceneryEdits::addTurntable(const kxCameraRig::Pose& pose, double seconds, const QString& name)
{
    const osg::NodePtr node = kxCameraTrackMaker::around(pose, seconds);
    return node == osg::NullFC ? node : addTrack(node, name, tr("Turntable"));
}

osg::NodePtr kxSceneryEdits::addVariantSet(const Nodes& nodes, const QString& name)
{
    const Nodes top = kxSceneEdits::topmost(nodes);
    const osg::NodePtr parent = top.empty() ? kxScene::the()->root() : top.front()->getParent();
    const osg::NodePtr set = kxSceneEdits::makeNode(osg::Switch::create(), QString());
    set->setNodeName(freeName(Kind::VariantSet, name, tr("Variants")));
    const kxScopedUndo scope(true);
    auto* const command = new kxPlaceNodesCommand(stepText("Add Variant Set"));
    command->insertNode(set, parent, top.empty() ? -1 : parent->findChild(top.front()));
    add(command);
    if (!top.empty())
        kxSceneEdits::moveNodes(top, set, -1);
    kxSelectionManager::selectNode(set);
    return set;
}

bool kxSceneryEdits::setChoice(const osg::NodePtr& set, int choice)
{
    const osg::SwitchPtr core = set == osg::NullFC ? osg::SwitchPtr() : osg::SwitchPtr::dcast(set->getCore());
    if (core == osg::NullFC || choice < 0 || unsigned(choice) >= set->getNChildren())
        return false;
    float rest = float(core->getChoice());
    kxAnimEngine::of(*kxAnimManager::the()).rest.get(core.getFieldContainerId(), "choice", 0, rest);
    if (int(rest) != choice || core->getChoice() != choice)
        add(new SetChoiceCommand(core, rest, float(choice),
                                 stepText("Show %1").arg(QString::fromStdString(kxScenery::variantName(
                                     set->getNodeName(), kxScenery::choices(set)[std::size_t(choice)])))));
    return true;
}

osg::NodePtr kxSceneryEdits::addSequence(const std::vector<kxSequenceStep>& steps, const QString& name)
{
    kxCodeTrust::the().written({}, steps);
    const osg::SceneSequencePtr core = osg::SceneSequence::create();
    core->setSteps(kxScenery::stepTexts(steps));
    return insert(kxSceneEdits::makeNode(core, QString::fromStdString(freeName(Kind::Sequence, name, tr("Sequence")))),
                  "Add Sequence");
}

void kxSceneryEdits::setSteps(const osg::NodePtr& sequence, const std::vector<kxSequenceStep>& steps)
{
    kxCodeTrust::the().written(kxScenery::steps(sequence), steps);
    add(kxSetFieldCommand::make(sequence->getCore(), "steps", osg::FieldValue(kxScenery::stepTexts(steps)),
                                stepText("Change Steps of %1").arg(QString::fromStdString(sequence->getNodeName()))));
}

osg::AnimNodePtr kxSceneryEdits::addTrigger(Kind kind, const std::string& name, const osg::AnimNodePtr& clip,
                                            double frame)
{
    const double seconds = frame / kxAnimManager::the()->fps();
    const double own = kxNodeTime::toRoot(clip).from(seconds);
    if (!osg::isFinite(float(seconds), float(own)))
        return osg::AnimNodePtr();
    const osg::AnimSequencePtr core = osg::AnimSequenceBase::create();
    core->setName(name);
    core->setIsVariant(kind == Kind::VariantSet);
    core->setIsViewpoint(kind == Kind::Viewpoint);
    const osg::AnimNodePtr node = osg::AnimNodeBase::create();
    node->setCore(core);
    node->moveBy(float(own),
                 kxAnimManager::the()->calculateFreeOffsetYFor(float(seconds), 0, clip, osg::AnimNodePtr()));
    kxNodeUtils::setName(node, name, true, osg::NodePtr());
    auto* const command = new kxPlaceNodesCommand(kxUndoString(QStringLiteral("Add Trigger"), QStringLiteral("Scene")));
    command->insertNode(node, clip, -1);
    add(command);
    return node;
}

void kxSceneryEdits::retarget(const osg::AnimNodePtr& trigger, const std::string& name)
{
    const osg::AnimSequencePtr core =
        trigger == osg::NullFC ? osg::AnimSequencePtr() : osg::AnimSequencePtr::dcast(trigger->getCore());
    if (core == osg::NullFC || name.empty() || core->getName() == name)
        return;
    const kxScopedUndo scope(true);
    const std::vector<osg::NodePtr> nodes = core->getParents(); // a trigger's duplicates are it, too
    for (const osg::NodePtr& node : nodes)
        if (node->getNodeName() == core->getName())
            add(new kxRenameCommand(node, name));
    add(kxSetFieldCommand::make(core, "name", osg::FieldValue(name),
                                stepText("Let the Trigger %1 Name %2")
                                    .arg(QString::fromStdString(core->getName()), QString::fromStdString(name))));
}

std::vector<osg::AnimNodePtr> kxSceneryEdits::restless(const osg::AnimNodePtr& clip)
{
    std::vector<osg::AnimNodePtr> blocks;
    std::set<unsigned int> seen;
    const osg::NodePtr clips = kxAnimManager::the()->clipStructureRoot();
    osg::traverse(clip,
                  [&](const osg::NodePtr& bar)
                  {
                      const auto core = osg::AnimBlockPtr::dcast(bar->getCore());
                      if (core == osg::NullFC || !seen.insert(core.getFieldContainerId()).second)
                          return osg::Action::Continue;
                      for (const osg::NodePtr& node : core->getParents())
                          if (const auto block = osg::AnimNodePtr::dcast(node); block->isActive() &&
                                                                                !kxNodeUtils::hasParent(block, clips) &&
                                                                                kxAnimScene::contains(block))
                              blocks.push_back(block);
                      return osg::Action::Continue;
                  });
    return blocks;
}

int kxSceneryEdits::rest(const osg::AnimNodePtr& clip, Stand stand)
{
    const std::vector<osg::AnimNodePtr> blocks = restless(clip);
    if (blocks.empty())
        return 0;
    auto* const command =
        new RestCommand(blocks, stepText("Rest of %1").arg(QString::fromStdString(clip->getNodeName())));
    const kxShownMoment shown;
    if (stand == Stand::Begin || stand == Stand::End)
        showEnd(clip, stand == Stand::End);
    if (stand != Stand::Own)
        for (const osg::AnimNodePtr& block : blocks)
            for (const kxScenePlan::Pose& value : kxPoses::drivenBy(block))
                command->keepValue(value);
    if (stand == Stand::Begin || stand == Stand::End)
        shown.show();
    add(command);
    return int(blocks.size());
}

void kxSceneryEdits::duplicate(const Nodes& nodes)
{
    const kxScopedUndo scope(true);
    Nodes objects;
    for (const osg::NodePtr& node : nodes)
    {
        Kind kind = Kind::Viewpoint;
        if (!kxScenery::kindOf(node, kind))
            continue;
        if (kind == Kind::CameraTrack || kind == Kind::VariantSet)
        {
            objects.push_back(node);
            continue;
        }
        const osg::NodePtr copy = kxNodeCopy::copyTree(node);
        copy->setNodeName(kxNodeUtils::getUniqueName(node->getNodeName(), kxScenery::names(kind)));
        insert(copy, "Duplicate");
    }
    kxSceneEdits::duplicateNodes(objects);
}

void kxSceneryEdits::remove(const Nodes& nodes)
{
    const kxScopedUndo scope(true);
    Nodes objects;
    auto* const command = new kxPlaceNodesCommand(
        nodes.size() == 1 ? stepText("Delete %1").arg(QString::fromStdString(nodes.front()->getNodeName()))
                          : stepText("Delete"));
    bool any = false;
    for (const osg::NodePtr& node : nodes)
    {
        Kind kind = Kind::Viewpoint;
        if (!kxScenery::kindOf(node, kind))
            continue;
        if (const int uses = countUses(node))
            kxLog::warning(tr("\"%1\" was deleted; %2 go on naming it and will do nothing.")
                               .arg(QString::fromStdString(node->getNodeName()),
                                    uses == 1 ? tr("one trigger or step") : tr("%1 triggers and steps").arg(uses)));
        if (node->getParent() != kxScene::the()->sceneryRoot())
        {
            objects.push_back(node);
            continue;
        }
        command->removeNode(node);
        any = true;
    }
    if (any)
        add(command);
    else
        delete command;
    if (!objects.empty())
        kxSceneEdits::deleteNodes(objects);
}

QString kxSceneryEdits::problemOfName(const osg::NodePtr& node, const QString& name)
{
    const std::string trimmed = name.trimmed().toStdString();
    if (trimmed.empty())
        return tr("A name can't be empty.");
    Kind kind = Kind::Viewpoint;
    if (!kxScenery::kindOf(node, kind) || (kind != Kind::Viewpoint && kind != Kind::Sequence))
        return QString();
    const osg::NodePtr other = kxScenery::find(kind, trimmed);
    if (other == osg::NullFC || other == node)
        return QString();
    return (kind == Kind::Viewpoint ? tr("There is a viewpoint \"%1\" already.")
                                    : tr("There is a sequence \"%1\" already."))
        .arg(name.trimmed());
}

void kxSceneryEdits::followRename(const osg::AttachmentContainerPtr& node, const std::string& name)
{
    Kind kind = Kind::Viewpoint;
    std::string before, after;
    if (!nameInUses(node, node->getNodeName(), kind, before) || !nameInUses(node, name, kind, after))
        return;
    // Others of the same name are meant as much.
    if (kind != Kind::VariantSet || before == node->getNodeName())
        if (kxScenery::find(kind, before) != osg::NodePtr::dcast(node))
            return;
    const QString text = stepText("Rename");
    std::vector<osg::AnimSequencePtr> triggers;
    std::vector<std::pair<osg::NodePtr, std::vector<std::string>>> sequences;
    forUses(
        kind, before, after,
        [&](const osg::AnimNodePtr& trigger, const osg::AnimSequencePtr& core)
        {
            if (trigger->getNodeName() == core->getName())
                add(new kxRenameCommand(trigger, after));
            triggers.push_back(core);
        },
        [&](const osg::NodePtr& sequence, const std::vector<std::string>& texts, int)
        { sequences.emplace_back(sequence, texts); });
    for (const osg::AnimSequencePtr& core : triggers)
    {
        std::string renamed = core->getName();
        if (kxScenery::renamed(kind, before, after, renamed)) // clones share a core
            add(kxSetFieldCommand::make(core, "name", osg::FieldValue(renamed), text));
    }
    for (const auto& [sequence, texts] : sequences)
        add(kxSetFieldCommand::make(sequence->getCore(), "steps", osg::FieldValue(texts), text));
}

int kxSceneryEdits::countUses(const osg::NodePtr& node)
{
    Kind kind = Kind::Viewpoint;
    std::string text;
    int count = 0;
    if (nameInUses(node, node->getNodeName(), kind, text))
        forUses(
            kind, text, text + "'", [&count](const osg::AnimNodePtr&, const osg::AnimSequencePtr&) { ++count; },
            [&count](const osg::NodePtr&, const std::vector<std::string>&, int steps) { count += steps; });
    return count;
}
