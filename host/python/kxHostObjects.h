#pragma once

/// What a script builds a scene of: objects, materials, the clipping plane, triggers, and what animations do at their
/// ends. Raises ValueError for what isn't there and for numbers that make no sense.
namespace kxHostObjects
{
/// Enters the functions in the module that is being filled.
void define();
} // namespace kxHostObjects
