#pragma once

#include <vector>

/// Normals for a surface that comes without.
namespace kxSmoothNormals
{
/// Of triangles of three places each, smooth where the surface turns by no more than so many degrees. Each corner of a
/// triangle counts by its angle, so that it doesn't matter which way a face was cut into triangles.
std::vector<float> of(const std::vector<float>& triangles, float largestTurn);
} // namespace kxSmoothNormals
