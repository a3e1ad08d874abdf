#pragma once

#include <files/scene/kxSceneContent.h>

#include <QString>

/// What a user is shown about a file that was read, and names by which its materials can be distinguished.
namespace kxSceneSummary
{
/// Of textures that don't repeat at their edges.
constexpr char WrapNote[] = "textures that are clamped or mirrored at their edges are repeated";

/// "12 objects, 3 materials, 2 textures, 1 animation, no clips".
QString of(const kxSceneContent& content);
/// "2 animations, 9 keyed channels": the channels that have keys of their own, in no animation, where there are any.
QString ofAnimations(std::size_t whole, std::size_t channels);

/// Names materials without a name after the first object that shows them, and gives those that share a name, or have
/// one that is in `taken`, a number.
void nameMaterials(const kxSceneContent& content, const std::vector<osg::MaterialPtr>& taken);
} // namespace kxSceneSummary
