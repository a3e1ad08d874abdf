#include <animation/kxFilm.h>

#include <animation/kxAnimEngine.h>
#include <animation/kxAnimScene.h>
#include <animation/kxNodeTime.h>
#include <osg/AnimCores.h>
#include <osg/FieldContainerFactory.h>
#include <scene/CameraLight.h>
#include <scene/kxScene.h>
#include <scene/kxScenery.h>

#include <algorithm>
#include <map>
#include <tuple>

using namespace osg;

namespace
{
/// Of bars that hold a time the greatest counts.
typedef std::tuple<bool, float, double> Rank;

NodePtr trackCamera(const AnimNode& node, double parentTime, double tolerance);

NodePtr cameraOfBlock(const AnimNode& block)
{
    for (const FieldContainerPtr& object : kxAims::ofNode(NodePtr(const_cast<AnimNode*>(&block))))
        if (const NodePtr camera = kxFilm::cameraOf(object))
            return camera;
    return NodePtr();
}

/// Of what stands in a clip, at the time that its children are placed in.
NodePtr cameraOfContent(const AnimNode& node, double time, double tolerance)
{
    NodePtr best;
    Rank bestRank;
    for (const NodePtr& child : node.getChildren())
    {
        const AnimNodePtr bar = AnimNodePtr::dcast(child);
        double start = 0, end = 0;
        if (bar == NullFC || !bar->isActive() || !kxNodeTime::extent(*bar, start, end) || time < start - tolerance ||
            time > end + tolerance)
            continue;
        const Rank rank(time < end - tolerance, bar->getOffset().y(), start);
        if (best != NullFC && rank < bestRank)
            continue;
        if (const NodePtr camera = trackCamera(*bar, time, tolerance))
        {
            best = camera;
            bestRank = rank;
        }
    }
    return best;
}

NodePtr trackCamera(const AnimNode& node, double parentTime, double tolerance)
{
    if (AnimBlockPtr::dcast(node.getCore()) != NullFC)
        return cameraOfBlock(node);
    const double scale = node.getScale();
    return cameraOfContent(node, kxNodeTime::contentTime(node, parentTime, tolerance), tolerance / scale);
}
} // namespace

NodePtr kxFilm::cameraOf(const FieldContainerPtr& object)
{
    for (NodePtr node = NodePtr::dcast(object); node != NullFC; node = node->getParent())
        if (CameraPtr::dcast(node->getCore()) != NullFC)
            return kxScene::the()->contains(node) ? node : NodePtr();
    return NodePtr();
}

NodePtr kxFilm::cameraAt(const AnimNode& root, double seconds)
{
    double start = 0, end = 0;
    if (!kxNodeTime::extent(root, start, end) || AnimBlockPtr::dcast(root.getCore()) != NullFC)
        return NodePtr(); // a block by itself is looked at
    // The last frame of a film may lie behind its end, where values are held too.
    if (const NodePtr camera =
            trackCamera(root, std::clamp(seconds, start, end), kxNodeTime::tolerance(std::abs(seconds))))
        return camera;
    const kxTriggers::Names names = kxTriggers::before(root, seconds);
    for (auto name = names.rbegin(); name != names.rend(); ++name)
        if (name->second == kxTriggers::Kind::Viewpoint)
            if (const NodePtr viewpoint = kxScenery::find(kxScenery::Kind::Viewpoint, name->first))
                return viewpoint;
    return NodePtr();
}

NodePtr kxFilm::camera() const
{
    for (auto shown = _shown.rbegin(); _hasCamera && shown != _shown.rend(); ++shown)
        if (const AnimNodePtr root = living<AnimNode>(shown->rootId); kxAnimScene::contains(root))
            if (const NodePtr found = cameraAt(*root, shown->seconds))
                return found;
    return NodePtr();
}

/// Found once for each text: a scene may be large, and a film asks at each frame.
std::pair<NodePtr, std::string> kxFilm::variant(const std::string& text)
{
    const auto known = _variants.find(text);
    if (known != _variants.end())
    {
        const NodePtr set = living<Node>(known->second.first);
        if (kxScene::the()->contains(set) && kxScenery::variantName(set->getNodeName(), known->second.second) == text)
            return {set, known->second.second};
    }
    const auto found = kxScenery::findVariant(text);
    if (found.first != NullFC)
        _variants[text] = {found.first->getId(), found.second};
    return found;
}

void kxFilm::write(UInt32 coreId, Int32 choice)
{
    const SwitchPtr core = living<Switch>(coreId);
    if (core == NullFC || core->getChoice() == choice)
        return;
    _engine.rest.note(kxChannelTarget{&*core, Switch::_type.field("choice"), 0});
    core->setChoice(choice);
    const kxAnimWatch::Mute mute(_engine.watch);
    markChanged(core, Switch::ChoiceFieldMask);
}

/// False where neither it nor what was shown before plays a part.
bool kxFilm::note(const AnimNodePtr& root, double seconds, bool hasScenery)
{
    const auto isGone = [](const Shown& shown) { return living<AnimNode>(shown.rootId) == NullFC; };
    _shown.erase(std::remove_if(_shown.begin(), _shown.end(), isGone), _shown.end());
    const auto known = findShown(root->getId());
    const bool wasShown = known != _shown.end();
    if (!hasScenery)
    {
        if (wasShown)
            _shown.erase(known);
        return wasShown;
    }
    _hasCamera = true;
    if (wasShown)
        known->seconds = seconds;
    else
        _shown.push_back({root->getId(), seconds});
    return true;
}

std::vector<kxFilm::Shown>::iterator kxFilm::findShown(UInt32 rootId)
{
    return std::find_if(_shown.begin(), _shown.end(), [rootId](const Shown& shown) { return shown.rootId == rootId; });
}

void kxFilm::begin(const AnimNodePtr& root)
{
    if (const auto known = findShown(root->getId()); known != _shown.end())
        std::rotate(known, known + 1, _shown.end());
}

kxTriggers::Names kxFilm::passedTriggers() const
{
    kxTriggers::Names names;
    for (const Shown& shown : _shown)
        if (const AnimNodePtr clip = living<AnimNode>(shown.rootId); kxAnimScene::contains(clip))
            for (auto& name : kxTriggers::before(*clip, shown.seconds))
                names.push_back(std::move(name));
    return names;
}

void kxFilm::show(const AnimNodePtr& root, double seconds, const kxClipProgram& program)
{
    if (!note(root, seconds, program.hasScenery()))
        return;
    std::map<UInt32, Int32> choices; // by the switch's id
    for (const auto& [name, kind] : passedTriggers())
    {
        const auto [set, choice] = kind == kxTriggers::Kind::Variant ? variant(name) : decltype(variant(name))();
        const SwitchPtr core = set == NullFC ? SwitchPtr() : SwitchPtr::dcast(set->getCore());
        if (core == NullFC)
            continue;
        const auto known = _sets.find(core->getId());
        const bool isOurs = known != _sets.end() && known->second.written == core->getChoice();
        Int32& chosen = choices.emplace(core->getId(), isOurs ? known->second.own : core->getChoice()).first->second;
        _sets[core->getId()] = {isOurs ? known->second.own : core->getChoice(), core->getChoice()};
        const int index = kxScenery::choiceIndex(set, choice, chosen);
        if (index >= 0)
            chosen = index;
    }
    for (auto set = _sets.begin(); set != _sets.end();)
    {
        const auto chosen = choices.find(set->first);
        const SwitchPtr core = living<Switch>(set->first);
        if (chosen != choices.end())
            write(set->first, set->second.written = chosen->second);
        else if (core != NullFC && core->getChoice() == set->second.written)
            write(set->first, set->second.own);
        set = chosen != choices.end() ? std::next(set) : _sets.erase(set);
    }
}

void kxFilm::choose(const SwitchPtr& set, Int32 choice)
{
    if (set->getChoice() == choice)
        return;
    _engine.rest.note(kxChannelTarget{&*set, Switch::_type.field("choice"), 0});
    _chosen.push_back(set->getId());
    set->setChoice(choice);
    markChanged(set, Switch::ChoiceFieldMask);
}

void kxFilm::clear()
{
    _chosen.clear();
    _shown.clear();
    _hasCamera = false;
    _sets.clear();
    _variants.clear();
}
