#pragma once

#include <animation/kxChannelTarget.h>
#include <osg/AnimCurve.h>

#include <vector>

class kxAnimEngine;

/// What a change of the scene's time does: a flat list of (curve, target) pairs, grouped by target container.
///
/// Made from all attachments of objects in the scene and of materials: active channel curves and the curves of active
/// blocks; a node counts as active where it and all above it are. Of several curves that drive one channel the last one
/// in the tree's order counts. Made again only when kxAnimWatch says that trees or channels changed.
class KX_API kxScenePlan
{
public:
    explicit kxScenePlan(kxAnimEngine& engine) : _engine(engine) {}

    /// True where the trees, the places in time or the keys have changed since the last evaluation.
    bool isStale() const;
    /// Evaluates at a time of the scene, in seconds: all, or what is stale.
    void evaluate(double seconds, bool all);
    /// Makes the plan anew where it is stale, which also settles the rest values.
    void update();
    /// Something else wrote this channel: evaluate() gives it the value of the time again where it is driven.
    void setStale(const kxChannelTarget& target);
    /// Values that something else gave to driven channels since time moved: they hold until it moves again.
    struct Pose
    {
        osg::UInt32 id; // of the container
        const osg::FieldDescription* field;
        unsigned component;
        float value;
    };
    std::vector<Pose> poses() const;
    /// Forgets all.
    void clear();

    /// False after something else than the scene's time was shown, as a clip at its own time.
    bool isShown() const { return _isShown; }
    void setOverwritten() { _isShown = false; }
    void setOverwrittenBy(const osg::AnimNodePtr& root, double seconds);
    /// The clip that is shown instead, and when, in seconds of its parent's time; null while the scene is shown.
    osg::AnimNodePtr shownClip(double& seconds) const;
    /// The animation that was shown last, which is a clip, a block or a curve; else as shownClip().
    osg::AnimNodePtr shownRoot(double& seconds) const;
    /// True where another animation than `root` has left values since the scene was shown.
    bool holdsOthersThan(const osg::AnimNodePtr& root) const;
    /// True where what is shown instead is a clip that has left the scene.
    bool isLost() const;
    /// Takes all that is stale as shown, for an evaluation that went another way.
    void settle();

    std::size_t curveCount() const { return _entries.size(); }

private:
    /// A place in time: what nodes on the way from the attachment's root to a curve do to the time.
    struct Context
    {
        const osg::AnimNode* node; ///< null for the scene's own time
        osg::UInt32 parent;
    };
    struct Entry
    {
        const osg::AnimCurve* curve;
        float* address; ///< null where the field's writer is needed
        osg::UInt32 context;
        osg::UInt32 cursor;
    };
    struct Info
    {
        kxChannelTarget target;
        osg::UInt32 nodeId;
        osg::UInt32 curveId;
    };
    struct Group
    {
        osg::FieldContainer* container;
        osg::UInt32 begin, end; ///< entries
    };

    float valueOf(Entry& entry, bool stepped) const;
    bool writeEntry(std::size_t index);
    void computeTimes(double seconds);
    void evaluateAll();
    void evaluateDirty();
    void evaluateGroups(std::size_t first, std::size_t last);
    void markGroup(const Group& group, const osg::BitVector& mask) const;
    void collectStaleCurves();

    kxAnimEngine& _engine;
    std::vector<Context> _contexts; // a parent before its children; the first is the scene's time
    std::vector<double> _times;     // of the contexts at the present evaluation
    std::vector<Entry> _entries;
    std::vector<Info> _infos;      // beside _entries: what the hot loop doesn't need
    std::vector<float> _evaluated; // beside _entries: the value that evaluation gave the channel last
    std::vector<Group> _groups;
    std::vector<osg::BitVector> _masks; // beside _groups: all fields that the group writes
    std::vector<osg::UInt8> _changed;   // beside _groups
    std::vector<osg::UInt32> _dirty;    // entries to evaluate though time is at rest
    std::vector<osg::UInt32> _sceneNodes;
    double _tolerance = 0;
    bool _isShown = true;
    osg::UInt32 _shownClip = 0; // while the scene isn't
    osg::UInt32 _shownRoot = 0; // what has written last what the scene doesn't drive
    bool _areMany = false;      // others have before
    double _shownSeconds = 0;   // of its parent's time
    osg::UInt64 _madeAt = 0;    // structure count
};
