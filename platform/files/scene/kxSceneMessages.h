#pragma once

/// The numbered messages that follow the acts on the whole scene.
namespace kxSceneMessages
{
void stopPlayback();
/// A new, empty scene.
void newScene();
/// Scene content and animations are others than before.
void contentChanged();
} // namespace kxSceneMessages
