#pragma once

#include <animation/kxChannelTarget.h>
#include <animation/kxScenePlan.h>

#include <deque>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

class kxAnimEngine;

/// What one animation drives, made ready for evaluation at any time.
///
/// For each channel that anything below the root drives, a clip chooses among its active children: the one whose extent
/// holds the time (of several the one on the higher track, then the later child); else the one that ended last, held at
/// its end; else the one that starts first, at its start. In a block the last child counts. The root itself counts
/// whether it is active or not: it was asked for.
class KX_API kxClipProgram
{
public:
    kxClipProgram(kxAnimEngine& engine, const osg::AnimNodePtr& root);
    /// The curves of these nodes alone, each at the time that its place in the tree gives, active or not. `seconds` of
    /// evaluate() is the time of their trees' roots.
    kxClipProgram(kxAnimEngine& engine, const std::vector<osg::AnimNodePtr>& curveNodes);
    ~kxClipProgram();

    /// Writes all values at `seconds` of the parent's time, and marks each container once.
    void evaluate(double seconds);
    bool isEmpty() const { return _channels.empty(); }
    /// True where cameras, viewpoints, variants or sequences play a part.
    bool hasScenery() const { return _hasScenery; }
    /// Notes the rest values of what evaluate() writes.
    void noteRestValues() const;
    /// The channels of `touched` containers that something else has written since evaluate().
    std::vector<kxScenePlan::Pose> poses(const std::vector<osg::UInt32>& touched) const;

private:
    /// The way of a time down the tree to a node, through nodes that leave no choice. Channels that go the same way
    /// share it, so that nesting costs once a frame and not once a channel.
    struct Passage
    {
        const osg::AnimNode* node = nullptr;
        Passage* above = nullptr;   ///< null where the way begins
        bool isHeld = false;        ///< a time outside of the node's extent is taken to its end
        osg::UInt64 evaluation = 0; ///< what is below was found in
        double entry = 0;           ///< the time where the way begins
        double time = 0;            ///< the node's own
        double tolerance = 0;
    };
    struct Option;
    /// The options of one channel at one place of the tree.
    struct Choice
    {
        std::vector<Option> options;
    };
    struct Option
    {
        const osg::AnimNode* node = nullptr;   ///< what is chosen
        Passage* passage = nullptr;            ///< from there to the curve or to the next choice
        const osg::AnimCurve* curve = nullptr; ///< for a leaf
        osg::UInt32 cursor = 0;
        bool isTimed = false; ///< the choice below is made by time, else it has one option
        std::unique_ptr<Choice> below;
    };
    struct Gathered;

    Gathered gather(const osg::AnimNode& node, bool isRoot);
    void addUsed(const osg::FieldContainer& container) const;
    float valueOf(Option& option, double parentTime, double tolerance, bool stepped);
    const Passage& passed(Passage& passage, double entry, double tolerance) const;
    static Option& choose(Choice& choice, double& time, double tolerance);

    struct Channel
    {
        kxChannelTarget target;
        Option root;
        float evaluated = 0;
    };
    void addChannels(Gathered&& gathered);
    /// Takes choices with one option out of the way.
    void shorten(Option& option, Passage* above, bool isHeld);

    kxAnimEngine& _engine;
    std::vector<Channel> _channels; // those of one container in a row
    std::deque<Passage> _passages;
    std::map<std::pair<const osg::AnimNode*, const Passage*>, Passage*> _passageOf; // by node and what is above
    osg::UInt64 _evaluation = 0;
    bool _hasScenery = false;
};

/// The programs of the animations that were evaluated lately; made anew when trees change.
class kxClipPrograms
{
public:
    explicit kxClipPrograms(kxAnimEngine& engine) : _engine(engine) {}
    kxClipProgram& of(const osg::AnimNodePtr& root);
    /// Null where none has been made.
    const kxClipProgram* find(const osg::AnimNodePtr& root) const;
    /// Shows an animation beside the scene's time, at `seconds` of its parent's time. What it drives has its rest value
    /// noted, and gets it back when the scene is evaluated next.
    void show(const osg::AnimNodePtr& root, double seconds);
    /// For the curves that the graph shows.
    kxClipProgram& ofCurves(const std::vector<osg::AnimNodePtr>& curveNodes);
    void clear();

private:
    void dropStale();

    kxAnimEngine& _engine;
    std::unordered_map<osg::UInt32, std::unique_ptr<kxClipProgram>> _programs; // by root id
    std::unique_ptr<kxClipProgram> _curvesProgram;
    std::vector<osg::AnimNodePtr> _curveNodes;
    osg::UInt64 _madeAt = 0;
};
