#include <animation/kxPlaybackQueue.h>

#include <animation/kxAnimEngine.h>
#include <animation/kxNodeTime.h>
#include <animation/kxPlaybackClock.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <osg/FieldContainerFactory.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
void setPlaying(const AnimNodePtr& node, bool playing)
{
    if (node == NullFC || node->getPlaying() == playing)
        return;
    node->setPlaying(playing);
    markChanged(node, AnimNodeBase::PlayingFieldMask);
}
} // namespace

kxPlaybackQueue::~kxPlaybackQueue()
{
    _entries.clear();
    updateTicks();
}

std::vector<kxPlaybackQueue::Entry>::iterator kxPlaybackQueue::find(UInt32 nodeId)
{
    return std::find_if(_entries.begin(), _entries.end(), [nodeId](const Entry& e) { return e.nodeId == nodeId; });
}

std::vector<kxPlaybackQueue::Entry>::const_iterator kxPlaybackQueue::find(UInt32 nodeId) const
{
    return std::find_if(_entries.begin(), _entries.end(), [nodeId](const Entry& e) { return e.nodeId == nodeId; });
}

void kxPlaybackQueue::enqueue(const AnimNodePtr& node, bool restart)
{
    double start = 0, end = 0;
    if (node == NullFC || !kxNodeTime::extent(*node, start, end))
        return;
    const auto known = find(node->getId());
    const double now = kxPlaybackClock::the().seconds();
    if (known == _entries.end())
        _entries.push_back(Entry{node->getId(), start, now, false, true});
    else if (restart)
        *known = Entry{node->getId(), start, now, false, true};
    else if (known->isPaused)
    {
        known->isPaused = false;
        known->lastClock = now; // the pause is no time that passed
    }
    setPlaying(node, true);
    updateTicks();
}

/// Takes an entry out and announces it. The node may have died.
void kxPlaybackQueue::leave(UInt32 nodeId)
{
    const auto entry = find(nodeId);
    if (entry == _entries.end())
        return;
    _entries.erase(entry);
    setPlaying(living<AnimNode>(nodeId), false);
    updateTicks();
    kxMessage message;
    message.set("animNodeId", static_cast<unsigned int>(nodeId));
    kxController::call(kxMessageName::DequeuedAnimation, message, 0);
}

void kxPlaybackQueue::dequeue(const AnimNodePtr& node, bool reset)
{
    if (node == NullFC)
        return;
    leave(node->getId());
    if (reset)
        showStart(node);
}

void kxPlaybackQueue::dequeueAll()
{
    std::vector<UInt32> ids;
    for (const Entry& entry : _entries)
        ids.push_back(entry.nodeId);
    for (const UInt32 id : ids)
        leave(id);
}

void kxPlaybackQueue::pause(const AnimNodePtr& node, bool pause)
{
    const auto entry = find(node.getFieldContainerId());
    if (entry == _entries.end() || entry->isPaused == pause)
        return;
    entry->isPaused = pause;
    entry->lastClock = kxPlaybackClock::the().seconds();
}

bool kxPlaybackQueue::isPlaying(const AnimNodePtr& node) const
{
    return node != NullFC && node->getPlaying() && find(node->getId()) != _entries.end();
}

bool kxPlaybackQueue::isPlaying(const std::string& name) const
{
    return std::any_of(_entries.begin(), _entries.end(),
                       [&name](const Entry& entry)
                       {
                           const AnimNodePtr node = living<AnimNode>(entry.nodeId);
                           return node != NullFC && node->getPlaying() && node->getNodeName() == name;
                       });
}

void kxPlaybackQueue::showStart(const AnimNodePtr& node)
{
    double start = 0, end = 0;
    if (node != NullFC && kxNodeTime::extent(*node, start, end))
        _engine.programs.show(node, start);
}

void kxPlaybackQueue::updateTicks()
{
    if (_entries.empty() && _ticks != 0)
    {
        kxPlaybackClock::the().stop(_ticks);
        _ticks = 0;
    }
    else if (!_entries.empty() && _ticks == 0)
        _ticks = kxPlaybackClock::the().start([this] { tick(); });
}

void kxPlaybackQueue::tick()
{
    const double now = kxPlaybackClock::the().seconds();
    std::vector<UInt32> ids;
    bool moves = false;
    for (const Entry& entry : _entries)
    {
        ids.push_back(entry.nodeId);
        moves = moves || !entry.isPaused;
    }
    // All show the same moment before anybody is notified that one has ended, and perhaps stops the others.
    std::vector<UInt32> ended;
    for (const UInt32 id : ids)
        if (advance(id, now))
            ended.push_back(id);
    for (const UInt32 id : ended)
        if (const auto entry = find(id); entry != _entries.end() && !entry->isFresh) // else somebody started it anew
            leave(id);
    if (moves)
        kxController::updateRender(true);
}

/// Moves one entry on to the clock; true where it has ended. Handlers of triggers may change the queue meanwhile.
bool kxPlaybackQueue::advance(UInt32 nodeId, double now)
{
    const auto entry = find(nodeId);
    const AnimNodePtr node = living<AnimNode>(nodeId);
    double start = 0, end = 0;
    if (entry == _entries.end())
        return false;
    if (node == NullFC || !node->getPlaying() || !kxNodeTime::extent(*node, start, end))
    {
        entry->isFresh = false;
        return true; // died, was stopped by a script, or lost its keys
    }
    if (entry->isPaused)
        return false;
    const double before = entry->position;
    const double after = std::min(std::max(before, start) + std::max(0.0, now - entry->lastClock), end);
    entry->lastClock = now;
    entry->position = after;
    const bool isFresh = entry->isFresh;
    entry->isFresh = false;
    if (isFresh)
        _engine.film.begin(node);
    _engine.programs.show(node, after);
    const kxTriggers::Playing playing(_engine.triggers);
    if (isFresh)
    {
        _engine.triggers.clear();
        _engine.triggers.pass(node, before, before); // what is at the very start
    }
    _engine.triggers.pass(node, before, after);
    return after >= end;
}
