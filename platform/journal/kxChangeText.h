#pragma once

#include <journal/kxJournal.h>

#include <QString>

#include <vector>

/// Changes of containers in a user's words. Asked right after they were committed: what they name is looked up in the
/// scene.
namespace kxChangeText
{
/// "Move 'Spin' by 12 frames in 'Show'".
QString act(const std::vector<kxJournal::Change>& changes);
/// What a step of this title was made to: keys as in detail(), or the names of things; empty where the title says it.
QString subject(const std::vector<kxJournal::Change>& changes, const QString& title);
/// Which keys were changed, as "Box, translation.X, frame 24"; empty where none were.
QString detail(const std::vector<kxJournal::Change>& changes);
} // namespace kxChangeText
