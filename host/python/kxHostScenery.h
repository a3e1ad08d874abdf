#pragma once

/// Viewpoints, camera tracks, variant sets and sequences for scripts.
namespace kxHostScenery
{
/// Puts the functions into the module that is being built.
void define();
} // namespace kxHostScenery
