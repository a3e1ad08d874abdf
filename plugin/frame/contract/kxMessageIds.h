#pragma once

#include <cstdint>

/// The numbered messages of the host. Each is one bit, so that a module's mask says which it gets.
namespace kxMessageId
{
enum Id : std::uint64_t
{
    NewScene = 0x10,               ///< a new, empty scene
    SceneChanged = 0x20,           ///< scene content changed
    SelectionChanged = 0x100,      ///< scene selection changed
    AnimationsChanged = 0x8000,    ///< animations changed wholesale: rebuild
    ViewChanged = 0x80000,         ///< the view changed
    AnimationsLoaded = 0x200000,   ///< as AnimationsChanged, after a file was read
    StopPlayback = 0x800000,       ///< stop playback, close the wizard dialogs
    ClipsChanged = 0x4000000,      ///< as AnimationsChanged, for clips
    MaterialSelection = 0x8000000, ///< attribute "materials": materials
    NodeSelection = 0x10000000,    ///< attribute "nodes": nodes
    NodePicked = 0x20000000        ///< attribute "nodes": nodes
};
} // namespace kxMessageId
