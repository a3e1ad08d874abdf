#pragma once

#include <kxExport.h>
#include <osg/AnimNode.h>

#include <functional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

/// Events in time: what an animation's triggers name is fired when time passes over them.
class KX_API kxTriggers
{
public:
    enum class Kind
    {
        Sequence,
        Viewpoint,
        Variant
    };

    /// Fires what a trigger names, after the values of the frame have been written. Set by the host; without one
    /// nothing happens.
    typedef std::function<void(const std::string& name, Kind kind)> Handler;
    void setHandler(Handler handler) { _handler = std::move(handler); }

    /// While blocked nothing fires.
    void setBlocked(bool blocked) { _isBlocked = blocked; }

    /// Where time passes because something plays. Elsewhere it is moved by hand: then sequences don't fire, and one
    /// that the time stands on fires when playing begins there.
    class Playing
    {
    public:
        explicit Playing(kxTriggers& triggers) : _triggers(triggers) { ++_triggers._players; }
        ~Playing() { --_triggers._players; }
        Playing(const Playing&) = delete;
        Playing& operator=(const Playing&) = delete;

    private:
        kxTriggers& _triggers;
    };

    /// Fires the active triggers below `node` between `from` and `to`, both in the parent's time of `node`, in the
    /// order of time; `from` itself not, since it fired when time reached it. With `from` equal to `to` the evaluation
    /// starts anew there: a trigger at that very time fires, unless it was the last thing that fired there.
    void pass(const osg::AnimNodePtr& node, double from, double to);

    /// What is named on the way to `seconds` of the parent's time of `root`, from before all of it: what has fired when
    /// an evaluation goes there straight from the beginning. In the order of time.
    typedef std::vector<std::pair<std::string, Kind>> Names;
    /// The same with its time.
    struct Named
    {
        double seconds;
        std::string name;
        Kind kind;
    };
    static std::vector<Named> until(const osg::AnimNode& root, double seconds);
    static Names before(const osg::AnimNode& root, double seconds);

    /// Forgets what fired last.
    void clear();

private:
    Handler _handler;
    bool _isBlocked = false;
    int _players = 0;
    osg::UInt32 _rootId = 0; // where the time is, and what has fired there
    double _standingAt = 0;
    std::unordered_set<osg::UInt32> _firedHere;
};
