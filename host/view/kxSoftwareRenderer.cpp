#include "kxSoftwareRenderer.h"

#include "kxRasterMap.h"
#include "kxSoftwareTexture.h"
#include "kxSoftwareTile.h"
#include "kxViewColors.h"

#include <QtMath>

#include <tbb/parallel_for.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>

struct kxSoftwareRenderer::Data
{
    kxShadeMap sun, contact;
    osg::UInt64 mapsRevision = ~osg::UInt64(0);
    struct Texture
    {
        kxSoftwareTexture texture;
        osg::UInt32 version;
    };
    std::unordered_map<osg::UInt32, Texture> textures; // by image id

    void updateMaps(const kxRenderScene& scene, const kxFrame& frame)
    {
        if (mapsRevision == scene.revision())
            return;
        mapsRevision = scene.revision();
        if (frame.hasShadow)
            sun = kxRasterMap::sun(scene, frame);
        contact = kxRasterMap::contact(scene, frame);
    }
    void updateTextures(kxRenderScene& scene)
    {
        std::unordered_map<osg::UInt32, Texture> used;
        for (const kxRenderScene::Look& look : scene.looks())
        {
            const QImage* const picture = look.imageId == 0 ? nullptr : scene.picture(look.imageId);
            if (picture == nullptr || used.count(look.imageId) > 0)
                continue;
            const auto known = textures.find(look.imageId);
            const osg::UInt32 version = scene.version(look.imageId);
            if (known != textures.end() && known->second.version == version)
                used.insert(*known);
            else
                used.emplace(look.imageId, Texture{kxSoftwareTexture(*picture), version});
        }
        textures = std::move(used);
    }
};

namespace
{
/// Triangles of a list of items in the order of the list, made in parallel.
std::vector<kxRasterTriangle> gather(const std::vector<const kxRenderScene::Item*>& items, const kxRenderScene& scene,
                                     const kxFrame& frame, bool everySide)
{
    std::vector<std::vector<kxRasterTriangle>> parts(items.size());
    const QMatrix4x4 clip = frame.camera.viewProjection();
    tbb::parallel_for(std::size_t(0), items.size(),
                      [&](std::size_t i)
                      { kxRasterTriangles::append(parts[i], scene, *items[i], clip, frame.size, everySide); });
    std::vector<kxRasterTriangle> all;
    std::size_t count = 0;
    for (const auto& part : parts)
        count += part.size();
    all.reserve(count);
    for (const auto& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// Within an item too, what is farther comes first.
void sortFarthestFirst(std::vector<kxRasterTriangle>& triangles)
{
    const auto depth = [](const kxRasterTriangle& t) { return t.depth[0] + t.depth[1] + t.depth[2]; };
    auto begin = triangles.begin();
    while (begin != triangles.end())
    {
        const auto end =
            std::find_if(begin, triangles.end(), [&](const kxRasterTriangle& t) { return t.item != begin->item; });
        std::stable_sort(begin, end, [&](const auto& a, const auto& b) { return depth(a) > depth(b); });
        begin = end;
    }
}

/// For each tile the triangles that may touch it, in order.
std::vector<std::vector<osg::UInt32>> binned(const std::vector<kxRasterTriangle>& triangles, int columns, int rows)
{
    std::vector<std::vector<osg::UInt32>> bins(std::size_t(columns) * std::size_t(rows));
    for (std::size_t i = 0; i < triangles.size(); ++i)
    {
        const kxRasterTriangle& t = triangles[i];
        for (int y = t.top / kxSoftwareTile::Side; y <= t.bottom / kxSoftwareTile::Side; ++y)
            for (int x = t.left / kxSoftwareTile::Side; x <= t.right / kxSoftwareTile::Side; ++x)
                bins[std::size_t(y) * std::size_t(columns) + std::size_t(x)].push_back(osg::UInt32(i));
    }
    return bins;
}

/// The line around what the mask holds: the same as the one of the OpenGL renderer.
void drawOutline(QImage& image, const std::vector<osg::UInt8>& mask, float width)
{
    const int w = image.width(), h = image.height();
    const auto at = [&](int x, int y)
    { return x < 0 || y < 0 || x >= w || y >= h ? 0 : int(mask[std::size_t(y) * std::size_t(w) + std::size_t(x)]); };
    int dx[12], dy[12];
    for (int i = 0; i < 12; ++i)
    {
        dx[i] = qRound(std::cos(double(i) * M_PI / 6) * double(width));
        dy[i] = qRound(std::sin(double(i) * M_PI / 6) * double(width));
    }
    const QColor color = kxViewColor::Selection;
    const int rgb[3] = {color.red(), color.green(), color.blue()};
    tbb::parallel_for(0, h,
                      [&](int y)
                      {
                          uchar* const line = image.bits() + std::ptrdiff_t(y) * image.bytesPerLine();
                          for (int x = 0; x < w; ++x)
                          {
                              int near = 0;
                              for (int i = 0; i < 12; ++i)
                                  near = std::max(near, at(x + dx[i], y + dy[i]));
                              const int weight = near * (4 - at(x, y)); // of 16
                              if (weight == 0)
                                  continue;
                              uchar* const pixel = line + 4 * x;
                              for (int k = 0; k < 3; ++k)
                                  pixel[k] = uchar((rgb[k] * weight + pixel[k] * (16 - weight)) / 16);
                              pixel[3] = uchar((255 * weight + pixel[3] * (16 - weight)) / 16);
                          }
                      });
}
} // namespace

kxSoftwareRenderer::kxSoftwareRenderer() : _data(std::make_unique<Data>()) {}

kxSoftwareRenderer::~kxSoftwareRenderer() = default;

QImage kxSoftwareRenderer::render(kxRenderScene& scene, const kxFrame& frame)
{
    QImage image(frame.size,
                 frame.options.transparent ? QImage::Format_RGBA8888_Premultiplied : QImage::Format_RGBX8888);
    if (image.isNull())
        return image;
    _data->updateMaps(scene, frame);
    _data->updateTextures(scene);

    const std::vector<kxRasterTriangle> solid = gather(frame.opaque, scene, frame, false);
    std::vector<kxRasterTriangle> clear = gather(frame.transparent, scene, frame, false);
    sortFarthestFirst(clear);
    const bool outline = frame.options.outline && frame.anySelected;
    std::vector<const kxRenderScene::Item*> chosen;
    for (const auto* const items : {&frame.opaque, &frame.transparent})
        for (const kxRenderScene::Item* const item : *items)
            if (outline && item->selected)
                chosen.push_back(item);
    const std::vector<kxRasterTriangle> selected = gather(chosen, scene, frame, true);

    const int columns = (image.width() + kxSoftwareTile::Side - 1) / kxSoftwareTile::Side;
    const int rows = (image.height() + kxSoftwareTile::Side - 1) / kxSoftwareTile::Side;
    const auto solidBins = binned(solid, columns, rows), clearBins = binned(clear, columns, rows);
    const auto selectedBins = binned(selected, columns, rows);
    std::vector<osg::UInt8> mask(outline ? std::size_t(image.width()) * std::size_t(image.height()) : 0);
    uchar* const pixels = image.bits(); // detaches here, not in the threads

    kxShader shader;
    static_cast<kxShadeUniforms&>(shader) = frame.uniforms;
    shader.sunMap = frame.hasShadow ? &_data->sun : nullptr;
    shader.contactMap = &_data->contact;
    std::unordered_map<osg::UInt32, const kxSoftwareTexture*> textures;
    for (const auto& entry : _data->textures)
        textures.emplace(entry.first, &entry.second.texture);
    tbb::parallel_for(0, columns * rows,
                      [&](int i)
                      {
                          kxSoftwareTile tile(scene, frame, shader, textures, (i % columns) * kxSoftwareTile::Side,
                                              (i / columns) * kxSoftwareTile::Side);
                          const std::size_t bin = std::size_t(i);
                          tile.drawSolid(solid, solidBins[bin]);
                          tile.drawFloor();
                          tile.drawTransparent(clear, clearBins[bin]);
                          tile.resolve(pixels, image.bytesPerLine());
                          if (!mask.empty())
                              tile.markSelected(selected, selectedBins[bin], mask.data());
                      });
    if (!mask.empty())
        drawOutline(image, mask, frame.outlineWidth);
    return image;
}
