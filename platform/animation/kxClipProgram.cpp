#include <animation/kxClipProgram.h>

#include <animation/kxAnimEngine.h>
#include <animation/kxCurveEvaluation.h>
#include <animation/kxNodeTime.h>
#include <osg/AnimCores.h>

#include <algorithm>
#include <cmath>

using namespace osg;

/// Options by channel, in the order in which the channels were met.
struct kxClipProgram::Gathered
{
    std::vector<kxChannelTarget> targets;
    std::vector<std::vector<Option>> options; ///< beside targets
    std::unordered_map<kxChannelTarget, std::size_t> places;

    std::vector<Option>& at(const kxChannelTarget& target)
    {
        const auto found = places.emplace(target, targets.size());
        if (found.second)
        {
            targets.push_back(target);
            options.emplace_back();
        }
        return options[found.first->second];
    }
};

namespace
{
constexpr std::size_t MaxPrograms = 256; // more are the sign of a script that walks through all animations
} // namespace

kxClipProgram::~kxClipProgram() = default;

void kxClipProgram::addUsed(const FieldContainer& container) const
{
    _engine.watch.addRole(container.getId(), kxAnimWatch::Used);
}

/// What `node` drives, as one option of itself for each channel.
kxClipProgram::Gathered kxClipProgram::gather(const AnimNode& node, bool isRoot)
{
    Gathered result;
    addUsed(node);
    if (!isRoot && !node.isActive())
        return result;
    if (const AnimCurvePtr curve = AnimCurvePtr::dcast(node.getCore()))
    {
        _engine.watch.addCurve(curve->getId(), curve->isEmpty(), 0);
        if (curve->isEmpty())
            return result;
        for (const FieldContainerPtr& object : kxAims::ofNode(NodePtr(const_cast<AnimNode*>(&node))))
        {
            const kxChannelTarget target = kxChannelTarget::find(object, *curve);
            addUsed(*object);
            _hasScenery = _hasScenery || kxFilm::cameraOf(object) != NullFC;
            if (target.isNull())
                continue;
            addUsed(*target.container);
            Option option;
            option.node = &node;
            option.curve = curve.getCPtr();
            result.at(target).push_back(std::move(option));
        }
        return result;
    }
    _hasScenery = _hasScenery || AnimSequencePtr::dcast(node.getCore()) != NullFC;
    const bool isTimed = AnimBlockPtr::dcast(node.getCore()) == NullFC;
    Gathered below;
    for (const NodePtr& child : node.getChildren())
    {
        const AnimNodePtr animation = AnimNodePtr::dcast(child);
        if (animation == NullFC)
            continue;
        Gathered fromChild = gather(*animation, false);
        for (std::size_t i = 0; i < fromChild.targets.size(); ++i)
        {
            std::vector<Option>& options = below.at(fromChild.targets[i]);
            if (!isTimed)
                options.clear();
            options.push_back(std::move(fromChild.options[i].front()));
        }
    }
    for (std::size_t i = 0; i < below.targets.size(); ++i)
    {
        Option option;
        option.node = &node;
        option.isTimed = isTimed;
        option.below = std::make_unique<Choice>();
        option.below->options = std::move(below.options[i]);
        result.at(below.targets[i]).push_back(std::move(option));
    }
    return result;
}

kxClipProgram::kxClipProgram(kxAnimEngine& engine, const AnimNodePtr& root) : _engine(engine)
{
    addChannels(gather(*root, true));
}

kxClipProgram::kxClipProgram(kxAnimEngine& engine, const std::vector<AnimNodePtr>& curveNodes) : _engine(engine)
{
    Gathered all;
    for (const AnimNodePtr& node : curveNodes)
    {
        Gathered gathered = gather(*node, true);
        for (std::size_t i = 0; i < gathered.targets.size(); ++i)
        {
            Option option = std::move(gathered.options[i].front());
            // The nodes above place the curve as they do in the scene.
            for (NodePtr above = node->getParent(); above != NullFC; above = above->getParent())
                if (const AnimNodePtr animation = AnimNodePtr::dcast(above))
                {
                    addUsed(*animation);
                    Option outer;
                    outer.node = animation.getCPtr();
                    outer.below = std::make_unique<Choice>();
                    outer.below->options.push_back(std::move(option));
                    option = std::move(outer);
                }
            std::vector<Option>& options = all.at(gathered.targets[i]);
            options.clear();
            options.push_back(std::move(option));
        }
    }
    addChannels(std::move(all));
}

void kxClipProgram::addChannels(Gathered&& gathered)
{
    std::unordered_map<const FieldContainer*, std::size_t> order;
    for (std::size_t i = 0; i < gathered.targets.size(); ++i)
    {
        order.emplace(gathered.targets[i].container, order.size());
        const kxChannelTarget& target = gathered.targets[i];
        _channels.push_back(Channel{target, std::move(gathered.options[i].front()), target.value()});
        shorten(_channels.back().root, nullptr, false);
    }
    _passageOf.clear();
    std::stable_sort(_channels.begin(), _channels.end(),
                     [&order](const Channel& a, const Channel& b)
                     { return order[a.target.container] < order[b.target.container]; });
}

void kxClipProgram::shorten(Option& option, Passage* above, bool isHeld)
{
    Passage*& passage = _passageOf[{option.node, above}];
    if (passage == nullptr)
    {
        _passages.emplace_back();
        passage = &_passages.back();
        passage->node = option.node;
        passage->above = above;
        passage->isHeld = isHeld;
    }
    option.passage = passage;
    if (option.curve != nullptr)
        return;
    std::vector<Option>& below = option.below->options;
    if (below.size() > 1)
    {
        for (Option& each : below)
            shorten(each, nullptr, false); // a choice holds the time itself
        return;
    }
    shorten(below.front(), passage, option.isTimed);
    const AnimNode* const chosen = option.node;
    Option only = std::move(below.front());
    option = std::move(only);
    option.node = chosen;
}

/// Chooses by `time`, which is moved to the end of the option it lies outside of.
kxClipProgram::Option& kxClipProgram::choose(Choice& choice, double& time, double tolerance)
{
    Option* const best = kxNodeTime::choose(choice.options, time, tolerance);
    return best == nullptr ? choice.options.back() : *best;
}

const kxClipProgram::Passage& kxClipProgram::passed(Passage& passage, double entry, double tolerance) const
{
    if (passage.evaluation == _evaluation && passage.entry == entry)
        return passage;
    double time = entry, ownTolerance = tolerance;
    if (passage.above != nullptr)
    {
        const Passage& above = passed(*passage.above, entry, tolerance);
        time = above.time;
        ownTolerance = above.tolerance;
    }
    double start = 0, end = 0;
    if (passage.isHeld && kxNodeTime::extent(*passage.node, start, end))
        time = std::clamp(time, start, end);
    passage.time = kxNodeTime::contentTime(*passage.node, time, ownTolerance);
    passage.tolerance = ownTolerance / passage.node->getScale();
    passage.entry = entry;
    passage.evaluation = _evaluation;
    return passage;
}

float kxClipProgram::valueOf(Option& option, double parentTime, double tolerance, bool stepped)
{
    const Passage& passage = passed(*option.passage, parentTime, tolerance);
    if (option.curve != nullptr)
        return kxCurveEvaluation::value(*option.curve, passage.time, option.cursor, passage.tolerance, stepped);
    double time = passage.time;
    Option& chosen = choose(*option.below, time, passage.tolerance);
    return valueOf(chosen, time, passage.tolerance, stepped);
}

void kxClipProgram::evaluate(double seconds)
{
    if (_channels.empty() || !std::isfinite(seconds))
        return;
    ++_evaluation;
    const double tolerance = kxNodeTime::tolerance(seconds);
    for (std::size_t i = 0; i < _channels.size();)
    {
        FieldContainer* const container = _channels[i].target.container;
        BitVector changed;
        for (; i < _channels.size() && _channels[i].target.container == container; ++i)
        {
            const kxChannelTarget& target = _channels[i].target;
            if (target.write(valueOf(_channels[i].root, seconds, tolerance, target.field->isStepped())))
                changed |= target.field->mask();
            _channels[i].evaluated = target.value(); // the writer may round
        }
        if (!changed.any())
            continue;
        const kxAnimWatch::Mute mute(_engine.watch);
        markChanged(FieldContainerPtr(container), changed);
    }
}

void kxClipProgram::noteRestValues() const
{
    for (const Channel& channel : _channels)
        _engine.rest.note(channel.target);
}

std::vector<kxScenePlan::Pose> kxClipProgram::poses(const std::vector<UInt32>& touched) const
{
    std::vector<kxScenePlan::Pose> found;
    for (const Channel& channel : _channels)
    {
        const kxChannelTarget& target = channel.target;
        const UInt32 id = target.container->getId();
        const float value = target.value();
        if (value != channel.evaluated && std::find(touched.begin(), touched.end(), id) != touched.end())
            found.push_back({id, target.field, target.component, value});
    }
    return found;
}

void kxClipPrograms::clear()
{
    _programs.clear();
    _curvesProgram.reset();
    _curveNodes.clear();
}

void kxClipPrograms::dropStale()
{
    if (_madeAt != _engine.watch.structureCount() || _programs.size() > MaxPrograms)
        clear();
    _madeAt = _engine.watch.structureCount();
}

kxClipProgram& kxClipPrograms::of(const AnimNodePtr& root)
{
    dropStale();
    std::unique_ptr<kxClipProgram>& program = _programs[root->getId()];
    if (program == nullptr)
        program = std::make_unique<kxClipProgram>(_engine, root);
    return *program;
}

const kxClipProgram* kxClipPrograms::find(const AnimNodePtr& root) const
{
    const auto known =
        _madeAt == _engine.watch.structureCount() ? _programs.find(root.getFieldContainerId()) : _programs.end();
    return known == _programs.end() ? nullptr : known->second.get();
}

void kxClipPrograms::show(const AnimNodePtr& root, double seconds)
{
    _engine.plan.update(); // what the scene drives is noted before it is written over
    kxClipProgram& program = of(root);
    program.noteRestValues();
    _engine.plan.setOverwrittenBy(root, seconds);
    program.evaluate(seconds);
    _engine.film.show(root, seconds, program);
    _engine.watch.clearTouched();
}

kxClipProgram& kxClipPrograms::ofCurves(const std::vector<AnimNodePtr>& curveNodes)
{
    dropStale();
    if (_curvesProgram == nullptr || _curveNodes != curveNodes)
    {
        _curvesProgram = std::make_unique<kxClipProgram>(_engine, curveNodes);
        _curveNodes = curveNodes;
    }
    return *_curvesProgram;
}
