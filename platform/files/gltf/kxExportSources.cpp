#include <files/gltf/kxExportSources.h>

#include <animation/kxAttachmentRegistry.h>
#include <animation/kxNodeTime.h>
#include <animation/kxTriggers.h>
#include <kxAnimManager.h>
#include <osg/AnimCores.h>
#include <osg/FieldContainerFactory.h>
#include <scene/FieldDescription.h>
#include <scene/kxScene.h>
#include <scene/kxScenery.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>

using namespace osg;

namespace
{
using kxExportSources::Animation;
using kxExportSources::Channel;
using kxExportSources::Source;

/// Sources by channel, in the order in which the channels were met.
struct Gathered
{
    std::vector<Channel> channels;
    std::unordered_map<kxChannelTarget, std::size_t> places;

    Channel& at(const kxChannelTarget& target)
    {
        const auto found = places.emplace(target, channels.size());
        if (found.second)
            channels.push_back(Channel{target, Source()});
        return channels[found.first->second];
    }
};

void addCurve(const AnimNode& node, const AnimCurve& curve, const std::vector<FieldContainerPtr>& objects,
              Gathered& result)
{
    for (const FieldContainerPtr& object : objects)
    {
        const kxChannelTarget target = kxChannelTarget::find(object, curve);
        if (target.isNull())
            continue;
        Source& source = result.at(target).source;
        source.node = &node;
        source.curve = &curve;
    }
}

/// `objects`: what the curves below an attachment drive; null in a clip, where each names its own.
Gathered gather(const AnimNode& node, const std::vector<FieldContainerPtr>* objects, bool isRoot)
{
    Gathered result;
    const bool isClip = AnimClipPtr::dcast(node.getCore()) != NullFC;
    if ((!isRoot && !node.isActive()) || (objects != nullptr && isClip)) // clips don't follow the scene's time
        return result;
    if (const AnimCurvePtr curve = AnimCurvePtr::dcast(node.getCore()))
    {
        if (!curve->isEmpty())
            addCurve(node, *curve.getCPtr(),
                     objects != nullptr ? *objects : kxAims::ofNode(NodePtr(const_cast<AnimNode*>(&node))), result);
        return result;
    }
    const bool isTimed = objects == nullptr && AnimBlockPtr::dcast(node.getCore()) == NullFC;
    for (const NodePtr& child : node.getChildren())
        if (const AnimNodePtr animation = AnimNodePtr::dcast(child))
            for (Channel& channel : gather(*animation, objects, false).channels)
            {
                Source& source = result.at(channel.target).source;
                source.node = &node;
                source.isTimed = isTimed;
                if (!isTimed)
                    source.below.clear(); // the last one counts
                source.below.push_back(std::move(channel.source));
            }
    return result;
}

const std::string* blockOf(const Source& source)
{
    if (AnimBlockPtr::dcast(source.node->getCore()) != NullFC)
        return &source.node->getNodeName();
    for (const Source& below : source.below)
        if (const std::string* const name = blockOf(below))
            return name;
    return nullptr;
}

void add(Gathered&& gathered, Animation& animation)
{
    for (Channel& channel : gathered.channels)
    {
        if (const std::string* const block = blockOf(channel.source))
            animation.blocks.emplace(channel.target.container->getId(), *block);
        const auto place = animation.places.emplace(channel.target, animation.channels.size());
        if (place.second)
            animation.channels.push_back(std::move(channel));
        else
            animation.channels[place.first->second] = std::move(channel);
    }
}

/// The full range of the timeline, and all of `node`.
void extend(const AnimNode& node, Animation& animation)
{
    double start = 0, end = 0;
    if (!kxNodeTime::extent(node, start, end))
        return;
    animation.start = std::min(animation.start, start);
    if (!std::isfinite(end)) // as far as the timeline
        return;
    // What a clip holds ends where a float lies, which may be short of its last key.
    if (AnimClipPtr::dcast(node.getCore()) != NullFC)
        end = double(std::nextafter(float(end), INFINITY));
    animation.end = std::max(animation.end, end);
}

/// A curve of steps, made for the export, that shows `choices` from their times on, and before that what the scene has.
void addChoices(const SwitchPtr& core, const std::vector<std::pair<double, Int32>>& choices, Animation& animation)
{
    const FieldDescription* const field = Switch::_type.field("choice");
    const AnimNodePtr node =
        kxAnimManager::the()->createChannelCurveNode(AnimAttachmentPtr(), field->name(), 0, field->suffixes()[0], "");
    const AnimCurvePtr curve = AnimCurvePtr::dcast(node->getCore());
    MField<CCPnt, 0>& points = curve->editControlPoints();
    points.clear();
    const auto add = [&points](double seconds, Int32 choice)
    {
        points.push_back(CCPnt(Pnt2f(float(seconds), float(choice)), Vec2f(), Vec2f(), UInt32(TangentType::Constant),
                               UInt32(TangentType::Constant)));
    };
    // Its value holds before it too. A file's time begins at 0, before which nothing has to be moved for it.
    const double first = choices.front().first;
    add(first > 0 ? first / 2 : first - 1, core->getChoice());
    for (const auto& [seconds, choice] : choices)
        if (points.back().x() < float(seconds))
            add(seconds, choice);
        else
            points.back().setY(float(choice)); // of several at one time the last counts
    animation.made.emplace_back(node);
    const kxChannelTarget target = {core.getCPtr(), field, 0};
    animation.places.emplace(target, animation.channels.size());
    animation.channels.push_back(Channel{target, Source{&*node, &*curve, false, {}}});
}

/// What the triggers of a clip choose, as its film shows it.
void addVariants(const AnimNode& clip, Animation& animation)
{
    std::map<UInt32, std::vector<std::pair<double, Int32>>> choices; // by the id of the switch
    for (const kxTriggers::Named& named : kxTriggers::until(clip, animation.end))
    {
        const auto [set, choice] = named.kind == kxTriggers::Kind::Variant ? kxScenery::findVariant(named.name)
                                                                           : std::pair<NodePtr, std::string>();
        const SwitchPtr core = set == NullFC ? SwitchPtr() : SwitchPtr::dcast(set->getCore());
        if (core == NullFC || animation.find({core.getCPtr(), Switch::_type.field("choice"), 0}) != nullptr)
        {
            animation.hasTriggers = true;
            continue;
        }
        std::vector<std::pair<double, Int32>>& ofSet = choices[core->getId()];
        const Int32 before = ofSet.empty() ? core->getChoice() : ofSet.back().second;
        const int index = kxScenery::choiceIndex(set, choice, before);
        ofSet.emplace_back(named.seconds, index >= 0 ? index : before);
    }
    for (const auto& [id, ofSet] : choices)
        addChoices(living<Switch>(id), ofSet, animation);
}

bool isInScene(const FieldContainerPtr& object)
{
    NodePtr top = NodePtr::dcast(object);
    if (top == NullFC)
        return true; // materials have no place in the tree
    while (top->getParent() != NullFC)
        top = top->getParent();
    return top == kxScene::the()->superRoot();
}
} // namespace

std::vector<Animation> kxExportSources::ofScene(kxExportedAnimations wanted)
{
    const kxAnimManager* const manager = kxAnimManager::the();
    Animation empty;
    empty.start = double(manager->fullRangeStart()) / manager->fps();
    empty.end = double(manager->fullRangeEnd()) / manager->fps();
    std::vector<Animation> animations;
    for (const NodePtr& child : manager->clipStructureRoot()->getChildren())
    {
        const AnimNodePtr clip = AnimNodePtr::dcast(child);
        if (clip == NullFC || wanted == kxExportedAnimations::Timeline)
            continue;
        animations.push_back(empty);
        animations.back().name = clip->getNodeName();
        add(gather(*clip, nullptr, true), animations.back());
        extend(*clip, animations.back());
        addVariants(*clip, animations.back());
    }
    if (wanted == kxExportedAnimations::Clips)
        return animations;
    animations.push_back(empty);
    Animation& timeline = animations.back();
    timeline.name = "Scene";
    timeline.isTimeline = true;
    for (const AnimAttachmentPtr& attachment : kxAttachmentRegistry::all())
    {
        std::vector<FieldContainerPtr> objects;
        for (const AttachmentContainerPtr& parent : attachment->getParents())
            if (isInScene(parent))
                objects.push_back(parent);
        if (objects.empty())
            continue;
        const AnimNodePtr root = attachment->getAnimationRoot();
        add(gather(*root, &objects, false), timeline);
        for (const NodePtr& child : root->getChildren())
            if (const AnimNodePtr animation = AnimNodePtr::dcast(child); animation != NullFC && animation->isActive())
                extend(*animation, timeline);
    }
    return animations;
}
