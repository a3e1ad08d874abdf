#include "kxSoftwareTile.h"

#include <QtMath>

#include <algorithm>
#include <cmath>

using kxShade::vec2;
using kxShade::vec3;
using kxShade::vec4;

// A rotated grid: no two samples share a row or a column.
const kxSoftwareTile::Place kxSoftwareTile::Offsets[Samples] = {
    {0.375f, 0.125f}, {0.875f, 0.375f}, {0.125f, 0.625f}, {0.625f, 0.875f}};

namespace
{
vec3 toVec(const QVector3D& v)
{
    return vec3(v.x(), v.y(), v.z());
}

/// Weights, over w, to weights that sum to 1.
void divide(float (&e)[3])
{
    const float w = 1 / (e[0] + e[1] + e[2]);
    for (float& value : e)
        value *= w;
}

template <std::size_t N>
std::array<float, N> interpolated(const std::vector<float>& values, const osg::UInt32* corners,
                                  const float (&weights)[3])
{
    std::array<float, N> result{};
    for (int i = 0; i < 3; ++i)
        for (std::size_t k = 0; k < N; ++k)
            result[k] += weights[i] * values[std::size_t(corners[i]) * N + k];
    return result;
}

void blendOver(vec4& below, const vec3& color, float alpha)
{
    below = vec4(color.x * alpha + below.x * (1 - alpha), color.y * alpha + below.y * (1 - alpha),
                 color.z * alpha + below.z * (1 - alpha), alpha + below.w * (1 - alpha));
}
} // namespace

kxSoftwareTile::kxSoftwareTile(const kxRenderScene& scene, const kxFrame& frame, const kxShader& shader,
                               const Textures& textures, int left, int top)
    : _scene(scene), _frame(frame), _shader(shader), _textures(textures), _left(left), _top(top),
      _right(std::min(left + Side, frame.size.width())), _bottom(std::min(top + Side, frame.size.height()))
{
    const kxViewCamera& camera = frame.camera;
    const float tan = std::tan(qDegreesToRadians(camera.fieldOfView) * 0.5f);
    _rayRight = toVec(camera.right()) * (tan * camera.aspect);
    _rayUp = toVec(camera.up()) * tan;
    _rayForward = toVec(camera.forward());
}

template <class Function>
void kxSoftwareTile::eachPixel(const kxRasterTriangle& triangle, Function function) const
{
    const int x1 = std::min(_right - 1, triangle.right), y1 = std::min(_bottom - 1, triangle.bottom);
    for (int y = std::max(_top, triangle.top); y <= y1; ++y)
        for (int x = std::max(_left, triangle.left); x <= x1; ++x)
            function(x, y);
}

void kxSoftwareTile::drawSolid(const std::vector<kxRasterTriangle>& triangles, const std::vector<osg::UInt32>& bin)
{
    for (const osg::UInt32 index : bin)
    {
        const kxRasterTriangle& triangle = triangles[index];
        const bool cut = _scene.looks()[triangle.item->look].alphaCutoff > 0;
        eachPixel(triangle,
                  [&](int x, int y)
                  {
                      Sample* const pixel = samples(x, y);
                      for (int s = 0; s < Samples; ++s)
                      {
                          float e[3];
                          const float px = float(x) + Offsets[s].x, py = float(y) + Offsets[s].y;
                          if (!triangle.weights(px, py, e))
                              continue;
                          const float depth = triangle.depthAt(e);
                          if (depth < -1 || depth >= pixel[s].depth || !triangle.isKeptAt(e) ||
                              (cut && isCutOut(triangle, px, py)))
                              continue;
                          pixel[s].depth = depth;
                          pixel[s].triangle = index;
                      }
                  });
    }
    for (int y = _top; y < _bottom; ++y)
        for (int x = _left; x < _right; ++x)
        {
            Sample* const pixel = samples(x, y);
            for (int s = 0; s < Samples; ++s)
            {
                const osg::UInt32 index = pixel[s].triangle;
                bool known = false;
                for (int before = 0; before < s && !known; ++before)
                    if (pixel[before].triangle == index)
                    {
                        pixel[s].color = pixel[before].color;
                        known = true;
                    }
                if (known)
                    continue;
                if (index != Nothing)
                {
                    // Shaded where the surface covers the pixel, not in its middle, which may lie outside.
                    float px = 0, py = 0, count = 0;
                    for (int other = s; other < Samples; ++other)
                        if (pixel[other].triangle == index)
                        {
                            px += Offsets[other].x;
                            py += Offsets[other].y;
                            ++count;
                        }
                    const vec4 color = shade(triangles[index], float(x) + px / count, float(y) + py / count);
                    pixel[s].color = vec4(color.x, color.y, color.z, 1);
                }
                else if (!_frame.options.transparent)
                    pixel[s].color =
                        vec4(_shader.backdrop(vec2((float(x) + 0.5f) * 2 / float(_frame.size.width()) - 1,
                                                   1 - (float(y) + 0.5f) * 2 / float(_frame.size.height()))),
                             1);
            }
        }
}

vec3 kxSoftwareTile::direction(float x, float y) const
{
    return _rayForward + _rayRight * (x * 2 / float(_frame.size.width()) - 1) +
           _rayUp * (1 - y * 2 / float(_frame.size.height()));
}

void kxSoftwareTile::drawFloor()
{
    const vec3 eye = _shader.uEye;
    const float height = _shader.uFloor.x - eye.y;
    if ((_shader.uFloor.z < 0.5f && _shader.uFloor.w < 0.5f) || height >= 0)
        return;
    const QMatrix4x4 clip = _frame.camera.viewProjection();
    const auto hit = [&](float x, float y, vec3& place)
    {
        const vec3 ray = direction(x, y);
        if (ray.y >= -1e-6f)
            return false;
        place = eye + ray * (height / ray.y);
        return true;
    };
    for (int y = _top; y < _bottom; ++y)
        for (int x = _left; x < _right; ++x)
        {
            const float px = float(x) + 0.5f, py = float(y) + 0.5f;
            vec3 place, right, down;
            if (!hit(px, py, place) || !hit(px + 1, py, right) || !hit(px, py + 1, down))
                continue;
            const QVector4D seen = clip * QVector4D(place.x, place.y, place.z, 1);
            const float depth = seen.z() / seen.w();
            Sample* const pixel = samples(x, y);
            bool visible = false;
            for (int s = 0; s < Samples; ++s)
                visible = visible || depth < pixel[s].depth;
            if (!visible)
                continue;
            const vec2 width(std::fabs(right.x - place.x) + std::fabs(down.x - place.x),
                             std::fabs(right.z - place.z) + std::fabs(down.z - place.z));
            const vec4 color = _shader.floorColor(place, width);
            for (int s = 0; s < Samples; ++s)
                if (depth < pixel[s].depth)
                    blendOver(pixel[s].color, vec3(color.x, color.y, color.z), color.w);
        }
}

void kxSoftwareTile::drawTransparent(const std::vector<kxRasterTriangle>& triangles,
                                     const std::vector<osg::UInt32>& bin)
{
    for (const osg::UInt32 index : bin)
    {
        const kxRasterTriangle& triangle = triangles[index];
        eachPixel(triangle,
                  [&](int x, int y)
                  {
                      Sample* const pixel = samples(x, y);
                      bool covered[Samples] = {};
                      float px = 0, py = 0, count = 0;
                      for (int s = 0; s < Samples; ++s)
                      {
                          float e[3];
                          if (!triangle.weights(float(x) + Offsets[s].x, float(y) + Offsets[s].y, e))
                              continue;
                          const float depth = triangle.depthAt(e);
                          covered[s] = depth >= -1 && depth < pixel[s].depth && triangle.isKeptAt(e);
                          if (covered[s])
                          {
                              px += Offsets[s].x;
                              py += Offsets[s].y;
                              ++count;
                          }
                      }
                      if (count == 0)
                          return;
                      const vec4 color = shade(triangle, float(x) + px / count, float(y) + py / count);
                      for (int s = 0; s < Samples; ++s)
                          if (covered[s])
                              blendOver(pixel[s].color, vec3(color.x, color.y, color.z), color.w);
                  });
    }
}

vec4 kxSoftwareTile::base(const kxRasterTriangle& triangle, const float (&weights)[3], float x, float y) const
{
    const kxRenderScene::Look& look = _scene.looks()[triangle.item->look];
    const osg::Mesh& mesh = *kxRenderScene::mesh(triangle.item->meshId);
    const osg::UInt32* const corners = &mesh.indices()[triangle.index];
    vec4 color(look.base[0], look.base[1], look.base[2], look.opacity);
    const auto multiply = [&color](const vec4& by)
    { color = vec4(color.x * by.x, color.y * by.y, color.z * by.z, color.w * by.w); };
    if (!mesh.colors().empty())
    {
        const auto tint = interpolated<4>(mesh.colors(), corners, weights);
        multiply(vec4(tint[0], tint[1], tint[2], tint[3]));
    }
    const auto texture = look.imageId == 0 ? _textures.end() : _textures.find(look.imageId);
    if (texture == _textures.end())
        return color;
    std::array<float, 2> uv{};
    float across = 0;
    if (!mesh.texCoords().empty())
    {
        uv = interpolated<2>(mesh.texCoords(), corners, weights);
        for (int axis = 0; axis < 2; ++axis)
        {
            float e[3];
            triangle.weights(x + float(axis == 0), y + float(axis == 1), e);
            divide(e);
            const auto next = interpolated<2>(mesh.texCoords(), corners, e);
            across = std::max(across, std::hypot(next[0] - uv[0], next[1] - uv[1]));
        }
    }
    multiply(texture->second->at(vec2(uv[0], uv[1]), across));
    return color;
}

bool kxSoftwareTile::isCutOut(const kxRasterTriangle& triangle, float x, float y) const
{
    float e[3];
    triangle.weights(x, y, e);
    divide(e);
    return base(triangle, e, x, y).w < _scene.looks()[triangle.item->look].alphaCutoff;
}

vec4 kxSoftwareTile::shade(const kxRasterTriangle& triangle, float x, float y)
{
    float e[3];
    triangle.weights(x, y, e);
    float edge = 1e9f; // distance to the nearest edge, pixels
    for (int i = 0; i < 3; ++i)
        edge = std::min(edge, std::fabs(e[i]) / std::max(std::hypot(triangle.a[i], triangle.b[i]), 1e-20f));
    divide(e);
    const kxRenderScene::Item& item = *triangle.item;
    const kxRenderScene::Look& look = _scene.looks()[item.look];
    const osg::Mesh& mesh = *kxRenderScene::mesh(item.meshId);
    const osg::UInt32* const corners = &mesh.indices()[triangle.index];
    const std::vector<float>& positions = item.bent ? item.bent->positions : mesh.positions();
    const std::vector<float>& normals = item.bent ? item.bent->normals : mesh.normals();
    const vec4 color = base(triangle, e, x, y);

    const auto p = interpolated<3>(positions, corners, e);
    kxShade::Shader::kxSurface s;
    s.position = toVec(item.world.map(QVector3D(p[0], p[1], p[2])));
    if (!normals.empty())
    {
        const auto n = interpolated<3>(normals, corners, e);
        const QMatrix3x3 turn = item.world.normalMatrix();
        s.normal = normalize(vec3(turn(0, 0) * n[0] + turn(0, 1) * n[1] + turn(0, 2) * n[2],
                                  turn(1, 0) * n[0] + turn(1, 1) * n[1] + turn(1, 2) * n[2],
                                  turn(2, 0) * n[0] + turn(2, 1) * n[1] + turn(2, 2) * n[2]));
        if (!triangle.front)
            s.normal = -s.normal;
    }
    if (normals.empty() || dot(s.normal, s.normal) < 0.5f)
    {
        vec3 c[3];
        for (int i = 0; i < 3; ++i)
        {
            const float* const q = &positions[std::size_t(corners[i]) * 3];
            c[i] = toVec(item.world.map(QVector3D(q[0], q[1], q[2])));
        }
        s.normal = normalize(cross(c[1] - c[0], c[2] - c[0]));
        if (dot(s.normal, _shader.uEye - s.position) < 0)
            s.normal = -s.normal;
    }
    s.base = vec3(color.x, color.y, color.z);
    s.emissive = vec3(look.emissive[0], look.emissive[1], look.emissive[2]);
    s.metallic = look.metallic;
    s.roughness = look.roughness;
    if (item.isCut && !triangle.front && !look.doubleSided && look.opacity >= 1)
        s = _shader.sectionOf(s, vec4(_frame.kept.x(), _frame.kept.y(), _frame.kept.z(), _frame.kept.w()));
    const float opacity = look.alphaCutoff > 0 ? 1.0f : kxShade::clamp(color.w, 0.0f, 1.0f);
    const vec4 result = _shader.surfaceColor(s, opacity);
    const float line = _frame.options.wire ? 0.4f * kxShade::clamp(1.1f - edge, 0.0f, 1.0f) : 0.0f;
    return vec4(mix(vec3(result.x, result.y, result.z), vec3(0.05f, 0.05f, 0.06f), line), result.w);
}

void kxSoftwareTile::resolve(unsigned char* pixels, int bytesPerLine) const
{
    for (int y = _top; y < _bottom; ++y)
        for (int x = _left; x < _right; ++x)
        {
            const Sample* const pixel = &_samples[std::size_t(((y - _top) * Side + x - _left) * Samples)];
            float sum[4] = {};
            for (int s = 0; s < Samples; ++s)
            {
                const vec4& color = pixel[s].color;
                const float parts[4] = {color.x, color.y, color.z, color.w};
                for (int k = 0; k < 4; ++k)
                    sum[k] += parts[k];
            }
            unsigned char* const out = pixels + std::ptrdiff_t(y) * bytesPerLine + 4 * x;
            for (int k = 0; k < 4; ++k)
                out[k] = static_cast<unsigned char>(kxShade::clamp(sum[k] / Samples, 0.0f, 1.0f) * 255 + 0.5f);
        }
}

void kxSoftwareTile::markSelected(const std::vector<kxRasterTriangle>& triangles, const std::vector<osg::UInt32>& bin,
                                  osg::UInt8* mask) const
{
    std::array<osg::UInt8, std::size_t(Side * Side)> bits{};
    for (const osg::UInt32 index : bin)
        eachPixel(triangles[index],
                  [&](int x, int y)
                  {
                      for (int s = 0; s < Samples; ++s)
                      {
                          float e[3];
                          if (triangles[index].weights(float(x) + Offsets[s].x, float(y) + Offsets[s].y, e) &&
                              triangles[index].isKeptAt(e))
                              bits[std::size_t((y - _top) * Side + x - _left)] |= osg::UInt8(1 << s);
                      }
                  });
    for (int y = _top; y < _bottom; ++y)
        for (int x = _left; x < _right; ++x)
        {
            const osg::UInt8 b = bits[std::size_t((y - _top) * Side + x - _left)];
            mask[std::size_t(y) * std::size_t(_frame.size.width()) + std::size_t(x)] =
                osg::UInt8((b & 1) + (b >> 1 & 1) + (b >> 2 & 1) + (b >> 3 & 1));
        }
}
