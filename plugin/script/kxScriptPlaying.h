#pragma once

#include <string>

/// Playing, stopping and resetting animations by name. An empty name, or one that no animation has, does nothing.
namespace kxScriptPlaying
{
/// Enters the functions in the module that is being filled.
void define();

/// Through the application, as a user plays; `start` and `end` in frames.
void play(const std::string& name);
/// Limits the animation to a range first, where `start` or `end` isn't 0.
void playRange(const std::string& name, float start, float end);
/// Ends the play range and clears the playing flag.
void stop(const std::string& name);
/// Into the state at the animation's start.
void reset(const std::string& name);

/// Beside the timeline; returns at once.
void enqueue(const std::string& name);
void enqueueRange(const std::string& name, float start, float end);
void pause(const std::string& name, bool pause);
bool isPlaying(const std::string& name);
} // namespace kxScriptPlaying
