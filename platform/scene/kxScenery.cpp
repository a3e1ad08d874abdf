#include <scene/kxScenery.h>

#include <osg/AnimCores.h>
#include <scene/kxScene.h>

#include <algorithm>

using namespace osg;

namespace
{
constexpr char Separator = '/';

bool isOfKind(const NodePtr& node, kxScenery::Kind kind)
{
    const NodeCorePtr core = node->getCore();
    switch (kind)
    {
    case kxScenery::Kind::Viewpoint:
        return ViewpointPtr::dcast(core) != NullFC;
    case kxScenery::Kind::CameraTrack:
        return CameraPtr::dcast(core) != NullFC && kxAnimManager::the()->getCameraTrackBlock(node) != NullFC;
    case kxScenery::Kind::VariantSet:
        return SwitchPtr::dcast(core) != NullFC;
    case kxScenery::Kind::Sequence:
        return SceneSequencePtr::dcast(core) != NullFC;
    }
    return false;
}

/// Where the things of a kind are.
NodePtr rootOf(kxScenery::Kind kind)
{
    const bool ofScenery = kind == kxScenery::Kind::Viewpoint || kind == kxScenery::Kind::Sequence;
    return ofScenery ? kxScene::the()->sceneryRoot() : kxScene::the()->root();
}

bool plays(const kxSequenceStep& step)
{
    return step.kind == kxSequenceStep::Kind::PlayClip || step.kind == kxSequenceStep::Kind::StartClip;
}

std::string choiceName(const NodePtr& set, UInt32 index)
{
    const std::string& name = set->getChild(index)->getNodeName();
    return name.empty() ? std::to_string(index + 1) : name;
}
} // namespace

std::vector<NodePtr> kxScenery::all(Kind kind)
{
    std::vector<NodePtr> nodes;
    const NodePtr root = rootOf(kind);
    traverse(root,
             [&](const NodePtr& node)
             {
                 if (node != root && isOfKind(node, kind))
                     nodes.push_back(node);
                 return Action::Continue;
             });
    return nodes;
}

std::vector<std::string> kxScenery::names(Kind kind)
{
    std::vector<std::string> names;
    for (const NodePtr& node : all(kind))
        names.push_back(node->getNodeName());
    return names;
}

NodePtr kxScenery::find(Kind kind, const std::string& name)
{
    NodePtr found;
    if (name.empty())
        return found;
    const NodePtr root = rootOf(kind);
    traverse(root,
             [&](const NodePtr& node)
             {
                 if (node != root && node->getNodeName() == name && isOfKind(node, kind))
                     found = node;
                 return found == NullFC ? Action::Continue : Action::Quit;
             });
    return found;
}

bool kxScenery::kindOf(const NodePtr& node, Kind& kind)
{
    if (node == NullFC || !kxScene::the()->contains(node))
        return false;
    for (int i = 0; i < KindCount; ++i)
        if (isOfKind(node, Kind(i)))
        {
            kind = Kind(i);
            return true;
        }
    return false;
}

std::vector<std::string> kxScenery::choices(const NodePtr& set)
{
    std::vector<std::string> names;
    for (UInt32 i = 0; set != NullFC && i < set->getNChildren(); ++i)
        names.push_back(choiceName(set, i));
    return names;
}

std::string kxScenery::shownChoice(const NodePtr& set)
{
    const SwitchPtr core = set == NullFC ? SwitchPtr() : SwitchPtr::dcast(set->getCore());
    const bool shows = core != NullFC && core->getChoice() >= 0 && UInt32(core->getChoice()) < set->getNChildren();
    return shows ? choiceName(set, UInt32(core->getChoice())) : std::string();
}

int kxScenery::choiceIndex(const NodePtr& set, const std::string& choice)
{
    const SwitchPtr core = set == NullFC ? SwitchPtr() : SwitchPtr::dcast(set->getCore());
    return core == NullFC ? -1 : choiceIndex(set, choice, int(core->getChoice()));
}

int kxScenery::choiceIndex(const NodePtr& set, const std::string& choice, int shown)
{
    const int count = set == NullFC ? 0 : int(set->getNChildren());
    if (choice.empty() && count > 0)
        return shown < 0 || shown >= count - 1 ? 0 : shown + 1;
    for (int i = 0; i < count; ++i)
        if (choiceName(set, UInt32(i)) == choice)
            return i;
    return -1;
}

std::string kxScenery::variantName(const std::string& set, const std::string& choice)
{
    return choice.empty() ? set : set + Separator + choice;
}

std::pair<NodePtr, std::string> kxScenery::findVariant(const std::string& text)
{
    if (const NodePtr set = find(Kind::VariantSet, text))
        return {set, std::string()};
    // Names may hold the separator themselves: the set that has the choice is meant.
    std::pair<NodePtr, std::string> found;
    for (std::size_t at = text.find(Separator); at != std::string::npos; at = text.find(Separator, at + 1))
        if (const NodePtr set = find(Kind::VariantSet, text.substr(0, at)))
        {
            const std::string choice = text.substr(at + 1);
            if (!choice.empty() && choiceIndex(set, choice) >= 0)
                return {set, choice};
            if (found.first == NullFC)
                found = {set, choice};
        }
    return found;
}

std::vector<std::string> kxScenery::variantNames()
{
    std::vector<std::string> names;
    for (const NodePtr& set : all(Kind::VariantSet))
    {
        if (set->getNodeName().empty())
            continue;
        names.push_back(set->getNodeName());
        for (const std::string& choice : choices(set))
            names.push_back(variantName(set->getNodeName(), choice));
    }
    return names;
}

std::vector<kxSequenceStep> kxScenery::steps(const NodePtr& sequence, int* unread)
{
    std::vector<kxSequenceStep> steps;
    int failures = 0;
    const SceneSequencePtr core =
        sequence == NullFC ? SceneSequencePtr() : SceneSequencePtr::dcast(sequence->getCore());
    if (core != NullFC)
        for (const std::string& text : core->getSteps())
        {
            kxSequenceStep step;
            if (kxSequenceStep::fromText(text, step))
                steps.push_back(step);
            else
                ++failures;
        }
    if (unread != nullptr)
        *unread = failures;
    return steps;
}

std::vector<std::string> kxScenery::stepTexts(const std::vector<kxSequenceStep>& steps)
{
    std::vector<std::string> texts;
    texts.reserve(steps.size());
    for (const kxSequenceStep& step : steps)
        texts.push_back(step.toText());
    return texts;
}

kxScenery::Kind kxScenery::kindOf(const AnimSequencePtr& trigger)
{
    return trigger->getIsVariant() ? Kind::VariantSet : trigger->getIsViewpoint() ? Kind::Viewpoint : Kind::Sequence;
}

std::vector<std::string> kxScenery::targets(const AnimSequencePtr& trigger)
{
    const Kind kind = kindOf(trigger);
    return kind == Kind::VariantSet ? variantNames() : names(kind);
}

bool kxScenery::isKnown(Kind kind, const std::string& name)
{
    if (kind != Kind::VariantSet)
        return find(kind, name) != NullFC;
    const auto [set, choice] = findVariant(name);
    return set != NullFC && choiceIndex(set, choice) >= 0;
}

void kxScenery::forTriggers(
    const AnimNodePtr& clips,
    const std::function<void(const AnimNodePtr& node, const AnimSequencePtr& trigger, Kind kind)>& use)
{
    traverse(clips,
             [&use](const NodePtr& node)
             {
                 const AnimSequencePtr trigger = AnimSequencePtr::dcast(node->getCore());
                 if (trigger != NullFC)
                     use(AnimNodePtr::dcast(node), trigger, kindOf(trigger));
                 return Action::Continue;
             });
}

bool kxScenery::renamed(Kind kind, const std::string& before, const std::string& after, std::string& text)
{
    if (before.empty() || before == after)
        return false;
    const bool isBelow = kind == Kind::VariantSet && text.compare(0, before.size() + 1, before + Separator) == 0;
    if (text != before && !isBelow)
        return false;
    text.replace(0, before.size(), after);
    return true;
}

bool kxScenery::renamed(Kind kind, const std::string& before, const std::string& after, kxSequenceStep& step)
{
    typedef kxSequenceStep::Kind Step;
    if ((kind == Kind::Viewpoint && step.kind == Step::ShowViewpoint) ||
        (kind == Kind::Sequence && step.kind == Step::PlaySequence))
        return renamed(kind, before, after, step.name);
    if (kind != Kind::VariantSet || step.kind != Step::SetVariant || before == after)
        return false;
    if (step.name == before)
    {
        step.name = after;
        return true;
    }
    const std::string own = step.name + Separator;
    if (step.choice.empty() || variantName(step.name, step.choice) != before || after.compare(0, own.size(), own) != 0)
        return false;
    step.choice = after.substr(own.size());
    return true;
}

void kxScenery::rename(Kind kind, const std::string& before, const std::string& after, const AnimNodePtr& clips,
                       const NodePtr& scenery)
{
    std::vector<AnimSequencePtr> triggers; // several nodes may share one
    forTriggers(clips,
                [&](const AnimNodePtr& node, const AnimSequencePtr& trigger, Kind kindOfTrigger)
                {
                    std::string name = trigger->getName();
                    const bool isLabel = node->getNodeName() == name;
                    if (kindOfTrigger != kind || !renamed(kind, before, after, name))
                        return;
                    triggers.push_back(trigger);
                    if (isLabel)
                        node->setNodeName(name);
                });
    for (const AnimSequencePtr& trigger : triggers)
    {
        std::string name = trigger->getName();
        if (renamed(kind, before, after, name))
            trigger->setName(name);
    }
    for (UInt32 i = 0; scenery != NullFC && i < scenery->getNChildren(); ++i)
    {
        const SceneSequencePtr core = SceneSequencePtr::dcast(scenery->getChild(i)->getCore());
        if (core == NullFC)
            continue;
        std::vector<std::string> texts = core->getSteps();
        for (std::string& text : texts)
        {
            kxSequenceStep step;
            if (kxSequenceStep::fromText(text, step) && renamed(kind, before, after, step))
                text = step.toText();
        }
        core->setSteps(texts);
    }
}

bool kxScenery::renameAnimation(const std::string& before, const std::string& after, const NodePtr& scenery,
                                const std::function<bool()>& isMeant)
{
    bool isKnown = false;
    for (UInt32 i = 0; scenery != NullFC && i < scenery->getNChildren(); ++i)
    {
        const SceneSequencePtr core = SceneSequencePtr::dcast(scenery->getChild(i)->getCore());
        if (core == NullFC)
            continue;
        std::vector<std::string> texts = core->getSteps();
        const std::vector<std::string> old = texts;
        for (std::string& text : texts)
        {
            kxSequenceStep step;
            if (!kxSequenceStep::fromText(text, step) || step.name != before || !plays(step))
                continue;
            if (!isKnown && isMeant && !isMeant())
                return false;
            isKnown = true;
            step.name = after;
            text = step.toText();
        }
        if (texts == old)
            continue;
        core->setSteps(texts);
        markChanged(core, SceneSequence::StepsFieldMask);
    }
    return isKnown;
}

std::string kxScenery::filmRangeKey(const std::string& clip)
{
    return clip.empty() ? "film.range" : "film.range/" + clip;
}

namespace
{
/// In and out stay with a clip that gets another name.
void followFilmRange(const std::string& before, const std::string& after, const AnimNodePtr& animation)
{
    auto settings = kxScene::the()->settings();
    const auto known = settings.find(kxScenery::filmRangeKey(before));
    if (known == settings.end() || AnimClipPtr::dcast(animation->getCore()) == NullFC)
        return;
    settings[kxScenery::filmRangeKey(after)] = known->second;
    settings.erase(known);
    kxScene::the()->setSettings(settings);
    kxScene::the()->markSettingsChanged();
}
} // namespace

void kxScenery::followAnimation(const AnimNodePtr& animation, const std::string& after)
{
    const std::string before = animation->getNodeName();
    if (before.empty() || before == after)
        return;
    // Clones in clips have the name of their block: a step means what it would play.
    followFilmRange(before, after, animation);
    const auto isMeant = [&] { return kxAnimManager::the()->find(before) == animation; };
    if (renameAnimation(before, after, kxScene::the()->sceneryRoot(), isMeant))
        kxScene::the()->markStructureChanged();
}
