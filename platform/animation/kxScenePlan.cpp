#include <animation/kxScenePlan.h>

#include <animation/kxAnimEngine.h>
#include <animation/kxAnimScene.h>
#include <animation/kxAttachmentRegistry.h>
#include <animation/kxCurveEvaluation.h>
#include <animation/kxNodeTime.h>
#include <animation/kxScenePlanBuilder.h>
#include <osg/AnimCores.h>
#include <osg/FieldContainerFactory.h>

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <unordered_map>

using namespace osg;

namespace
{
/// Below this many curves the start of threads costs more than it saves.
constexpr std::size_t ParallelThreshold = 4000;

std::size_t pairHash(UInt32 node, UInt32 curve)
{
    return (std::size_t(node) << 32) | curve;
}
} // namespace

bool kxScenePlan::isStale() const
{
    const kxAnimWatch& watch = _engine.watch;
    return _madeAt != watch.structureCount() || watch.areSceneTimesStale() || !watch.staleCurves().empty() ||
           !_dirty.empty();
}

void kxScenePlan::setOverwrittenBy(const AnimNodePtr& root, double seconds)
{
    setOverwritten();
    _areMany = holdsOthersThan(root);
    _shownRoot = root->getId();
    _shownClip = AnimClipPtr::dcast(root->getCore()) != NullFC ? root->getId() : 0;
    _shownSeconds = seconds;
}

AnimNodePtr kxScenePlan::shownClip(double& seconds) const
{
    seconds = _shownSeconds;
    return _isShown ? AnimNodePtr() : living<AnimNode>(_shownClip);
}

AnimNodePtr kxScenePlan::shownRoot(double& seconds) const
{
    seconds = _shownSeconds;
    return _isShown ? AnimNodePtr() : living<AnimNode>(_shownRoot);
}

bool kxScenePlan::holdsOthersThan(const AnimNodePtr& root) const
{
    return _areMany || (_shownRoot != 0 && _shownRoot != root.getFieldContainerId());
}

bool kxScenePlan::isLost() const
{
    return !_isShown && _shownClip != 0 && !kxAnimScene::contains(living<AnimNode>(_shownClip));
}

void kxScenePlan::clear()
{
    _entries.clear();
    _infos.clear();
    _evaluated.clear();
    _groups.clear();
    _masks.clear();
    _changed.clear();
    _dirty.clear();
    _contexts.clear();
    _madeAt = 0;
    _shownRoot = 0;
    _areMany = false;
}

void kxScenePlan::settle()
{
    _dirty.clear();
    _engine.watch.clearStale();
}

void kxScenePlan::setStale(const kxChannelTarget& target)
{
    update();
    for (std::size_t i = 0; i < _infos.size(); ++i)
        if (_infos[i].target == target)
            _dirty.push_back(UInt32(i));
}

std::vector<kxScenePlan::Pose> kxScenePlan::poses() const
{
    // A plan may be stale here: what it points to lives where it is found by its id.
    std::unordered_map<const FieldContainer*, UInt32> touched;
    for (const UInt32 id : _engine.watch.touched())
        if (const FieldContainerPtr container = FieldContainerFactory::the()->getContainer(id))
            touched.emplace(container.getCPtr(), id);
    std::vector<Pose> found;
    for (std::size_t g = 0; !touched.empty() && g < _groups.size(); ++g)
    {
        const auto container = touched.find(_groups[g].container);
        if (container == touched.end())
            continue;
        for (UInt32 i = _groups[g].begin; i < _groups[g].end; ++i)
        {
            const kxChannelTarget& target = _infos[i].target;
            if (const float value = target.value(); value != _evaluated[i])
                found.push_back({container->second, target.field, target.component, value});
        }
    }
    return found;
}

void kxScenePlan::update()
{
    kxAnimWatch& watch = _engine.watch;
    if (_madeAt == watch.structureCount())
        return;
    collectStaleCurves();
    // What stays as it was keeps its cursor and isn't written again before the time moves, so that a value that the
    // user has just changed stays.
    std::unordered_map<std::size_t, UInt32> oldEntries;
    std::unordered_map<std::size_t, bool> oldDirty;
    for (std::size_t i = 0; i < _infos.size(); ++i)
        oldEntries.emplace(
            pairHash(_infos[i].nodeId, _infos[i].curveId) ^ std::hash<kxChannelTarget>()(_infos[i].target), UInt32(i));
    for (const UInt32 index : _dirty)
        oldDirty[index] = true;
    for (const Info& info : _infos)
        watch.subRole(info.curveId, kxAnimWatch::SceneCurve);
    for (const UInt32 id : _sceneNodes)
        watch.subRole(id, kxAnimWatch::SceneNode);
    _sceneNodes.clear();

    kxScenePlanBuilder builder(watch);
    builder.build();
    _contexts.assign(1, Context{nullptr, 0});
    for (const kxScenePlanBuilder::Place& place : builder.places)
        _contexts.push_back(Context{place.node, place.parent});

    std::vector<Entry> entries;
    std::vector<Info> infos;
    std::vector<float> evaluated;
    std::vector<kxChannelTarget> driven;
    entries.reserve(builder.drives.size());
    infos.reserve(builder.drives.size());
    evaluated.reserve(builder.drives.size());
    driven.reserve(builder.drives.size());
    _groups.clear();
    _masks.clear();
    _dirty.clear();
    for (const kxScenePlanBuilder::Drive& drive : builder.drives)
    {
        if (_groups.empty() || _groups.back().container != drive.target.container)
        {
            _groups.push_back(Group{drive.target.container, UInt32(entries.size()), UInt32(entries.size())});
            _masks.emplace_back();
        }
        ++_groups.back().end;
        _masks.back() |= drive.target.field->mask();
        const auto old =
            oldEntries.find(pairHash(drive.nodeId, drive.curve->getId()) ^ std::hash<kxChannelTarget>()(drive.target));
        const bool isKnown = old != oldEntries.end() && _infos[old->second].target == drive.target;
        if (!isKnown || oldDirty.count(old->second) != 0)
            _dirty.push_back(UInt32(entries.size()));
        entries.push_back(
            Entry{drive.curve, drive.target.address(), drive.place, isKnown ? _entries[old->second].cursor : 0});
        infos.push_back(Info{drive.target, drive.nodeId, drive.curve->getId()});
        evaluated.push_back(isKnown ? _evaluated[old->second] : drive.target.value());
        driven.push_back(drive.target);
        watch.addRole(drive.target.container->getId(), kxAnimWatch::Used);
        watch.addRole(drive.curve->getId(), kxAnimWatch::SceneCurve);
    }
    _entries.swap(entries);
    _infos.swap(infos);
    _evaluated.swap(evaluated);
    _changed.assign(_groups.size(), 0);
    _sceneNodes = builder.nodeIds;
    {
        const kxAnimWatch::Mute mute(watch);
        _engine.rest.update(driven);
    }
    _madeAt = watch.structureCount();
}

/// Turns the curves that changed into entries to evaluate.
void kxScenePlan::collectStaleCurves()
{
    kxAnimWatch& watch = _engine.watch;
    if (watch.areSceneTimesStale())
    {
        _dirty.resize(_entries.size());
        for (std::size_t i = 0; i < _dirty.size(); ++i)
            _dirty[i] = UInt32(i);
    }
    else if (!watch.staleCurves().empty())
    {
        std::vector<UInt32> stale = watch.staleCurves();
        std::sort(stale.begin(), stale.end());
        for (std::size_t i = 0; i < _infos.size(); ++i)
            if (std::binary_search(stale.begin(), stale.end(), _infos[i].curveId))
                _dirty.push_back(UInt32(i));
    }
    // Entries that were made dirty twice are evaluated twice: no harm.
    watch.clearStale();
}

void kxScenePlan::computeTimes(double seconds)
{
    _times.resize(_contexts.size());
    _tolerance = kxNodeTime::tolerance(seconds);
    _times[0] = seconds;
    for (std::size_t i = 1; i < _contexts.size(); ++i)
        _times[i] = kxNodeTime::contentTime(*_contexts[i].node, _times[_contexts[i].parent], _tolerance);
}

float kxScenePlan::valueOf(Entry& entry, bool stepped) const
{
    return kxCurveEvaluation::value(*entry.curve, _times[entry.context], entry.cursor, _tolerance, stepped);
}

bool kxScenePlan::writeEntry(std::size_t index)
{
    Entry& entry = _entries[index];
    if (entry.address == nullptr)
    {
        const kxChannelTarget& target = _infos[index].target;
        const bool changed = target.write(valueOf(entry, target.field->isStepped()));
        _evaluated[index] = target.value(); // the writer may round
        return changed;
    }
    const float value = valueOf(entry, false); // what jumps has no address
    _evaluated[index] = value;
    if (*entry.address == value)
        return false;
    *entry.address = value;
    return true;
}

/// Evaluates the groups from `first` to before `last` and notes which of them changed.
void kxScenePlan::evaluateGroups(std::size_t first, std::size_t last)
{
    if (first == last)
        return;
    const std::size_t begin = _groups[first].begin;
    std::size_t group = first;
    bool changed = false;
    kxCurveEvaluation::forEachFetched(
        &_entries[begin], _groups[last - 1].end - begin, [this](const Entry& entry) { return _times[entry.context]; },
        [&](Entry& entry)
        {
            const std::size_t index = std::size_t(&entry - _entries.data());
            if (index == _groups[group].end)
            {
                _changed[group++] = changed ? 1 : 0;
                changed = false;
            }
            changed = writeEntry(index) || changed;
        });
    _changed[group] = changed ? 1 : 0;
}

void kxScenePlan::markGroup(const Group& group, const BitVector& mask) const
{
    markChanged(FieldContainerPtr(group.container), mask);
}

void kxScenePlan::evaluateAll()
{
    // A container is written by one thread: the writers of its fields may share data.
    if (_entries.size() < ParallelThreshold)
        evaluateGroups(0, _groups.size());
    else
        tbb::parallel_for(tbb::blocked_range<std::size_t>(0, _groups.size(), 128),
                          [this](const tbb::blocked_range<std::size_t>& r) { evaluateGroups(r.begin(), r.end()); });
    for (std::size_t g = 0; g < _groups.size(); ++g)
        if (_changed[g] != 0)
            markGroup(_groups[g], _masks[g]);
}

void kxScenePlan::evaluateDirty()
{
    std::sort(_dirty.begin(), _dirty.end());
    std::size_t g = 0;
    for (std::size_t i = 0; i < _dirty.size();)
    {
        while (_groups[g].end <= _dirty[i])
            ++g;
        bool changed = false;
        BitVector mask;
        for (; i < _dirty.size() && _dirty[i] < _groups[g].end; ++i)
            if (writeEntry(_dirty[i]))
            {
                changed = true;
                mask |= _infos[_dirty[i]].target.field->mask();
            }
        if (changed)
            markGroup(_groups[g], mask);
    }
}

void kxScenePlan::evaluate(double seconds, bool all)
{
    update();
    collectStaleCurves();
    if (all)
    {
        // What plays beside the timeline keeps what it shows until it has ended.
        if (_engine.queue.isEmpty())
        {
            _engine.rest.writeBackNoted();
            _engine.film.clear();
            _shownRoot = 0;
            _areMany = false;
        }
        _isShown = true;
        _shownClip = 0;
        _engine.watch.clearTouched();
    }
    if (_entries.empty() || (!all && _dirty.empty()))
    {
        _dirty.clear();
        return;
    }
    computeTimes(seconds);
    const kxAnimWatch::Mute mute(_engine.watch);
    if (all)
        evaluateAll();
    else
        evaluateDirty();
    _dirty.clear();
}
