#pragma once

#include <osg/AnimNode.h>

#include <vector>

class kxAnimEngine;

/// Animations that play in their own time beside the timeline, one pass of their extent each.
///
/// "dequeuedAnimation" goes out for each one that leaves.
class kxPlaybackQueue
{
public:
    explicit kxPlaybackQueue(kxAnimEngine& engine) : _engine(engine) {}
    ~kxPlaybackQueue();
    kxPlaybackQueue(const kxPlaybackQueue&) = delete;
    kxPlaybackQueue& operator=(const kxPlaybackQueue&) = delete;

    void enqueue(const osg::AnimNodePtr& node, bool restart);
    /// `reset`: the objects go to the state at the animation's start.
    void dequeue(const osg::AnimNodePtr& node, bool reset);
    void dequeueAll();
    void pause(const osg::AnimNodePtr& node, bool pause);
    bool isPlaying(const osg::AnimNodePtr& node) const;
    bool isPlaying(const std::string& name) const;
    bool isEmpty() const { return _entries.empty(); }
    /// Writes the values at the start of the animation's extent.
    void showStart(const osg::AnimNodePtr& node);

private:
    struct Entry
    {
        osg::UInt32 nodeId;
        double position;  // seconds of the parent's time
        double lastClock; // of the playback clock
        bool isPaused;
        bool isFresh; // nothing of it was shown yet
    };
    std::vector<Entry>::iterator find(osg::UInt32 nodeId);
    std::vector<Entry>::const_iterator find(osg::UInt32 nodeId) const;
    void leave(osg::UInt32 nodeId);
    void tick();
    bool advance(osg::UInt32 nodeId, double now);
    void updateTicks();

    kxAnimEngine& _engine;
    std::vector<Entry> _entries;
    int _ticks = 0; // number of the clock's ticker, 0 for none
};
