#include "kxRasterMap.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <cmath>

using kxShade::vec3;
using kxShade::vec4;

namespace
{
constexpr int BandRows = 64;

struct Corner
{
    float x, y, z;
    float kept; // below 0 before the clipping plane
};

Corner mapped(const vec4 (&rows)[3], const QVector4D& plane, const QVector3D& p, float size)
{
    const vec3 q(p.x(), p.y(), p.z());
    const auto row = [&](int i) { return dot(vec3(rows[i].x, rows[i].y, rows[i].z), q) + rows[i].w; };
    return {row(0) * size, row(1) * size, row(2), QVector4D::dotProduct(plane, QVector4D(p, 1))};
}

void fillTriangle(kxShadeMap& map, const Corner (&c)[3], int firstRow, int lastRow, float nearest)
{
    const float area = (c[1].x - c[0].x) * (c[2].y - c[0].y) - (c[2].x - c[0].x) * (c[1].y - c[0].y);
    if (!(std::fabs(area) > 1e-12f) || !std::isfinite(area))
        return;
    const float limit = float(map.size - 1);
    const int x0 = int(std::clamp(std::min({c[0].x, c[1].x, c[2].x}) - 0.5f, 0.0f, limit));
    const int x1 = int(std::clamp(std::max({c[0].x, c[1].x, c[2].x}) + 0.5f, 0.0f, limit));
    const int y0 = std::max(firstRow, int(std::clamp(std::min({c[0].y, c[1].y, c[2].y}) - 0.5f, 0.0f, limit)));
    const int y1 = std::min(lastRow, int(std::clamp(std::max({c[0].y, c[1].y, c[2].y}) + 0.5f, 0.0f, limit)));
    for (int y = y0; y <= y1; ++y)
        for (int x = x0; x <= x1; ++x)
        {
            const float px = float(x) + 0.5f, py = float(y) + 0.5f;
            const float a = ((c[1].x - px) * (c[2].y - py) - (c[2].x - px) * (c[1].y - py)) / area;
            const float b = ((c[2].x - px) * (c[0].y - py) - (c[0].x - px) * (c[2].y - py)) / area;
            const float depth = a * c[0].z + b * c[1].z + (1 - a - b) * c[2].z;
            float& texel = map.values[std::size_t(y) * std::size_t(map.size) + std::size_t(x)];
            const bool isKept = a * c[0].kept + b * c[1].kept + (1 - a - b) * c[2].kept >= 0;
            if (a >= 0 && b >= 0 && a + b <= 1 && isKept && depth >= nearest && depth < texel)
                texel = depth;
        }
}

void blur(kxShadeMap& map, int stepX, int stepY)
{
    constexpr int Reach = 8;
    float weights[2 * Reach + 1], total = 0;
    for (int i = -Reach; i <= Reach; ++i)
        total += weights[i + Reach] = std::exp(-float(i * i) / 24.0f);
    std::vector<float> result(map.values.size());
    for (int y = 0; y < map.size; ++y)
        for (int x = 0; x < map.size; ++x)
        {
            float sum = 0;
            for (int i = -Reach; i <= Reach; ++i)
                sum += weights[i + Reach] * map.at(x + i * stepX, y + i * stepY);
            result[std::size_t(y) * std::size_t(map.size) + std::size_t(x)] = sum / total;
        }
    map.values = std::move(result);
}
} // namespace

kxShadeMap kxRasterMap::nearestDepths(const kxRenderScene& scene, int size, const vec4 (&rows)[3], float nearest)
{
    kxShadeMap map;
    map.size = size;
    map.values.assign(std::size_t(size) * std::size_t(size), 1.0f);
    std::vector<Corner> corners; // three a triangle
    std::vector<Corner> places;
    for (const kxRenderScene::Item& item : scene.items())
    {
        const osg::Mesh* const mesh = kxRenderScene::mesh(item.meshId);
        if (mesh == nullptr || item.isCutAway || scene.looks()[item.look].opacity < 0.5f)
            continue;
        const std::vector<float>& p = item.bent ? item.bent->positions : mesh->positions();
        places.clear();
        for (std::size_t i = 0; i + 2 < p.size(); i += 3)
            places.push_back(
                mapped(rows, scene.kept(), item.world.map(QVector3D(p[i], p[i + 1], p[i + 2])), float(size)));
        for (const osg::UInt32 index : mesh->indices())
            corners.push_back(places[index]);
    }
    const int bands = (size + BandRows - 1) / BandRows;
    tbb::parallel_for(0, bands,
                      [&](int band)
                      {
                          const int first = band * BandRows, last = std::min(size, first + BandRows) - 1;
                          for (std::size_t i = 0; i + 2 < corners.size(); i += 3)
                          {
                              const Corner(&c)[3] = reinterpret_cast<const Corner(&)[3]>(corners[i]);
                              if (std::max({c[0].y, c[1].y, c[2].y}) >= float(first) &&
                                  std::min({c[0].y, c[1].y, c[2].y}) <= float(last + 1))
                                  fillTriangle(map, c, first, last, nearest);
                          }
                      });
    return map;
}

kxShadeMap kxRasterMap::sun(const kxRenderScene& scene, const kxFrame& frame)
{
    const kxShadeUniforms& u = frame.uniforms;
    kxShadeMap map = nearestDepths(scene, kxFrame::ShadowMapSize, {u.uSunX, u.uSunY, u.uSunZ}, 0.0f);
    for (float& depth : map.values)
        depth += 0.0006f;
    return map;
}

kxShadeMap kxRasterMap::contact(const kxRenderScene& scene, const kxFrame& frame)
{
    const kxShadeUniforms& u = frame.uniforms;
    const float scale = 1 / frame.contactHeight;
    kxShadeMap map =
        nearestDepths(scene, kxFrame::ContactMapSize,
                      {vec4(u.uContactMap.x, 0, 0, u.uContactMap.z), vec4(0, 0, u.uContactMap.y, u.uContactMap.w),
                       vec4(0, scale, 0, -u.uFloor.x * scale)},
                      -0.05f);
    for (float& value : map.values)
    {
        const float close = std::clamp(1 - value, 0.0f, 1.0f);
        value = close * close;
    }
    map.outside = 0;
    blur(map, 1, 0);
    blur(map, 0, 1);
    return map;
}
