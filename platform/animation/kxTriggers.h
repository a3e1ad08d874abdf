#pragma once

#include <kxExport.h>
#include <osg/AnimNode.h>

#include <functional>
#include <string>

/// Events in time: what an animation's triggers name is fired when time passes over them.
namespace kxTriggers
{
enum class Kind
{
    Sequence,
    Viewpoint,
    Variant
};

/// Fires what a trigger names, after the values of the frame have been written. Set by the host; without one nothing
/// happens.
typedef std::function<void(const std::string& name, Kind kind)> Handler;
KX_API void setHandler(Handler handler);

/// While blocked nothing fires.
KX_API void setBlocked(bool blocked);
KX_API bool isBlocked();

/// Fires the active triggers below `node` between `from` and `to`, both in the parent's time of `node`, in the order of
/// time; `from` itself not, since it fired when time reached it. With `from` equal to `to` the evaluation starts anew
/// there: a trigger at that very time fires, unless it was the last thing that fired there.
KX_API void pass(const osg::AnimNodePtr& node, double from, double to);

/// Forgets what fired last.
void clear();
} // namespace kxTriggers
