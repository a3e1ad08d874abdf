#pragma once

#include "kxFrame.h"
#include "kxShader.h"

#include <vector>

/// A triangle on its way to the pixels of a frame.
///
/// Homogeneous: e_i(x, y) = a x + b y + c is the weight of corner i over w, so that no triangle needs clipping and
/// everything that is interpolated is right in perspective (Olano and Greer, "Triangle Scan Conversion using 2D
/// Homogeneous Coordinates"). x and y count pixels from (left, top).
struct kxRasterTriangle
{
    float a[3], b[3], c[3];
    float depth[3];               ///< of the corners, z before the division
    float kept[3];                ///< of the corners, below 0 before the clipping plane
    int left, top, right, bottom; ///< pixels that it may cover, the last ones included
    osg::UInt32 index;            ///< first of its three indices in the mesh
    const kxRenderScene::Item* item;
    bool front; ///< seen from its front side

    /// Weights over w at a place; true where it lies inside.
    bool weights(float x, float y, float (&e)[3]) const
    {
        const float dx = x - float(left), dy = y - float(top);
        for (int i = 0; i < 3; ++i)
            e[i] = a[i] * dx + b[i] * dy + c[i];
        return e[0] >= 0 && e[1] >= 0 && e[2] >= 0;
    }
    bool isKeptAt(const float (&e)[3]) const { return kept[0] * e[0] + kept[1] * e[1] + kept[2] * e[2] >= 0; }
    /// -1 at the near plane, 1 at the far one.
    float depthAt(const float (&e)[3]) const { return depth[0] * e[0] + depth[1] * e[1] + depth[2] * e[2]; }
};

namespace kxRasterTriangles
{
/// Appends the triangles of an item that can be seen in a frame of this size, sides away from the eye left out where
/// the look asks for it (`everySide` overrides).
void append(std::vector<kxRasterTriangle>& out, const kxRenderScene& scene, const kxRenderScene::Item& item,
            const QMatrix4x4& clip, const QSize& size, bool everySide);
} // namespace kxRasterTriangles
