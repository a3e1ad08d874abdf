#pragma once

#include <QStringList>

/// Files that the kernel lets this process reach.
namespace kxLandlock
{
/// Nothing but these can be read from now on, nothing written, and neither ports nor sockets nor signals reach others.
/// What isn't there is left out. Without privileges to gain (PR_SET_NO_NEW_PRIVS). False where the kernel refuses
/// though it knows this; true, and nothing happens, where it doesn't.
bool restrictTo(const QStringList& readable);
} // namespace kxLandlock
