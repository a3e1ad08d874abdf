#pragma once

#include <assimp/scene.h>
#include <string>

/// What a file that Assimp read says of itself: its kind, its lengths and times.
namespace kxAssimpUnits
{
/// Which reader of Assimp it was; empty where that isn't known.
std::string format(const aiScene& scene);
/// Metres a unit of length; 1 where the file doesn't say, or says it in its nodes.
double metres(const aiScene& scene);
/// Multiplies all lengths: places, surfaces, what joints undo, keys, cameras and lights.
void scale(aiScene& scene, float factor);
/// Frames a second; 0 where the file doesn't say.
double frameRate(const aiScene& scene);
} // namespace kxAssimpUnits
