#pragma once

#include <kxExport.h>

/// The kernel's part of a new scene.
namespace kxAnimScene
{
/// Stops what plays, empties the structure roots, forgets rest values and plans, and goes to frame 0 without a message.
/// Rates, ranges and the clipboard stay. Rest values aren't written back: the objects are about to go.
KX_API void clear();
} // namespace kxAnimScene
