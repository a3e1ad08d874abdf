#pragma once

#include "kxFrame.h"
#include "kxShader.h"

/// Tables of the scene as it is seen along one direction, made on the processor.
namespace kxRasterMap
{
/// For each texel the least depth of what throws shadows. The rows map the root's coordinates to 0..1 (place) and to
/// the depth; what lies below `nearest` is left out.
kxShadeMap nearestDepths(const kxRenderScene& scene, int size, const kxShade::vec4 (&rows)[3], float nearest);
/// The shadow map of a frame.
kxShadeMap sun(const kxRenderScene& scene, const kxFrame& frame);
/// The contact map of a frame: how much stands close above the floor, blurred.
kxShadeMap contact(const kxRenderScene& scene, const kxFrame& frame);
} // namespace kxRasterMap
