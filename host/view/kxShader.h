#pragma once

#include "kxShadeUniforms.h"

#include <vector>

/// A square table of depths or coverages, 0 to 1, row by row; outside of it `outside`.
struct kxShadeMap
{
    int size = 0;
    float outside = 1.0f;
    std::vector<float> values;

    float at(int x, int y) const
    {
        if (x < 0 || y < 0 || x >= size || y >= size)
            return outside;
        return values[std::size_t(y) * std::size_t(size) + std::size_t(x)];
    }
};

namespace kxShade
{
/// The shading of kxShadeSource.inc on the processor.
///
/// Cheap to copy; each thread has its own. Doesn't own the maps, either may be null.
struct Shader : kxShadeUniforms
{
    const kxShadeMap* sunMap = nullptr;
    const kxShadeMap* contactMap = nullptr;

    /// Bilinear between the outcomes of four comparisons.
    float sunTap(vec2 place, float depth) const
    {
        if (sunMap == nullptr)
            return 1.0f;
        const float x = place.x * float(sunMap->size) - 0.5f, y = place.y * float(sunMap->size) - 0.5f;
        const int ix = int(std::floor(x)), iy = int(std::floor(y));
        const float fx = x - float(ix), fy = y - float(iy);
        const auto lit = [&](int dx, int dy) { return sunMap->at(ix + dx, iy + dy) >= depth ? 1.0f : 0.0f; };
        return (lit(0, 0) * (1 - fx) + lit(1, 0) * fx) * (1 - fy) + (lit(0, 1) * (1 - fx) + lit(1, 1) * fx) * fy;
    }
    float contactTap(vec2 place) const
    {
        if (contactMap == nullptr)
            return 0.0f;
        const float x = place.x * float(contactMap->size) - 0.5f, y = place.y * float(contactMap->size) - 0.5f;
        if (!(x > -2 && y > -2 && x < float(contactMap->size) + 1 && y < float(contactMap->size) + 1))
            return 0.0f;
        const int ix = int(std::floor(x)), iy = int(std::floor(y));
        const float fx = x - float(ix), fy = y - float(iy);
        return (contactMap->at(ix, iy) * (1 - fx) + contactMap->at(ix + 1, iy) * fx) * (1 - fy) +
               (contactMap->at(ix, iy + 1) * (1 - fx) + contactMap->at(ix + 1, iy + 1) * fx) * fy;
    }

#define KX_SHADE(...) __VA_ARGS__
#include "kxShadeSource.inc"
#undef KX_SHADE
};
} // namespace kxShade
using kxShader = kxShade::Shader;
