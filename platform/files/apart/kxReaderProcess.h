#pragma once

#include <kxExport.h>

#include <functional>

/// The process that reads a file of another program, seen by the one who waits for it.
namespace kxReaderProcess
{
/// Asked by the thread that waits, some 30 times a second; may run an event loop. `share` is how much of the work is
/// done, from 0 to 1, below 0 where the reader can't tell. False ends the process at once, and reading fails with a
/// report that says isCancelled().
typedef std::function<bool(double share)> Watch;
/// Asked from then on; an empty one waits to the end.
KX_API void setWatch(const Watch& watch);
} // namespace kxReaderProcess
