#include "kxRasterTriangle.h"

#include <QVector4D>

#include <algorithm>
#include <cmath>

namespace
{
constexpr float Nearest = 1e-6f; // of w

/// The pixels around the part of the triangle before the eye; false where there are none.
bool findExtent(kxRasterTriangle& t, const QVector4D (&p)[3], const QSize& size)
{
    float x0 = 1e30f, y0 = 1e30f, x1 = -1e30f, y1 = -1e30f;
    const auto extend = [&](const QVector4D& q)
    {
        const float x = q.x() / q.w(), y = q.y() / q.w();
        x0 = std::min(x0, x);
        x1 = std::max(x1, x);
        y0 = std::min(y0, y);
        y1 = std::max(y1, y);
    };
    for (int i = 0; i < 3; ++i)
    {
        const QVector4D &a = p[i], &b = p[(i + 1) % 3];
        // Before the near plane means z > -w.
        const float da = a.z() + a.w(), db = b.z() + b.w();
        if (da > 0 && a.w() > Nearest)
            extend(a);
        if ((da > 0) != (db > 0))
        {
            const QVector4D cut = a + (b - a) * (da / (da - db));
            if (cut.w() > Nearest)
                extend(cut);
        }
    }
    const float right = float(size.width()), bottom = float(size.height());
    if (!(x0 < right && x1 >= 0 && y0 < bottom && y1 >= 0)) // nothing, outside, or not a number
        return false;
    t.left = int(std::clamp(x0, 0.0f, right - 1));
    t.right = int(std::clamp(x1, 0.0f, right - 1));
    t.top = int(std::clamp(y0, 0.0f, bottom - 1));
    t.bottom = int(std::clamp(y1, 0.0f, bottom - 1));
    return true;
}

/// Rows of the inverse of the corners' (x, y, w), relative to (left, top); false for a triangle seen edge-on.
bool findEdges(kxRasterTriangle& t, const QVector4D (&p)[3])
{
    double x[3], y[3], w[3];
    for (int i = 0; i < 3; ++i)
    {
        w[i] = double(p[i].w());
        x[i] = double(p[i].x()) - double(t.left) * w[i];
        y[i] = double(p[i].y()) - double(t.top) * w[i];
        t.depth[i] = p[i].z();
    }
    const double det =
        x[0] * (y[1] * w[2] - y[2] * w[1]) - y[0] * (x[1] * w[2] - x[2] * w[1]) + w[0] * (x[1] * y[2] - x[2] * y[1]);
    if (!(std::fabs(det) > 1e-18) || !std::isfinite(det))
        return false;
    t.front = det < 0; // y points down
    for (int i = 0; i < 3; ++i)
    {
        const int j = (i + 1) % 3, k = (i + 2) % 3;
        t.a[i] = float((y[j] * w[k] - y[k] * w[j]) / det);
        t.b[i] = float((w[j] * x[k] - w[k] * x[j]) / det);
        t.c[i] = float((x[j] * y[k] - x[k] * y[j]) / det);
    }
    return true;
}
} // namespace

void kxRasterTriangles::append(std::vector<kxRasterTriangle>& out, const kxRenderScene& scene,
                               const kxRenderScene::Item& item, const QMatrix4x4& clip, const QSize& size,
                               bool everySide)
{
    const osg::Mesh* const mesh = kxRenderScene::mesh(item.meshId);
    if (mesh == nullptr)
        return;
    // From clip space to pixels, still before the division.
    QMatrix4x4 toPixels;
    toPixels.scale(float(size.width()) / 2, -float(size.height()) / 2, 1);
    QMatrix4x4 matrix = toPixels * clip * item.world;
    matrix.setRow(0, matrix.row(0) + matrix.row(3) * (float(size.width()) / 2));
    matrix.setRow(1, matrix.row(1) + matrix.row(3) * (float(size.height()) / 2));

    const std::vector<float>& source = item.bent ? item.bent->positions : mesh->positions();
    std::vector<QVector4D> places;
    std::vector<float> kept; // empty where nothing is cut
    places.reserve(source.size() / 3);
    const QVector4D plane = scene.kept() * item.world; // in the coordinates of the mesh
    for (std::size_t i = 0; i + 2 < source.size(); i += 3)
    {
        const QVector4D place(source[i], source[i + 1], source[i + 2], 1);
        places.push_back(matrix * place);
        if (item.isCut)
            kept.push_back(QVector4D::dotProduct(plane, place));
    }
    const bool both = everySide || item.isCut || scene.looks()[item.look].doubleSided;
    const std::vector<osg::UInt32>& indices = mesh->indices();
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
    {
        const QVector4D corners[3] = {places[indices[i]], places[indices[i + 1]], places[indices[i + 2]]};
        kxRasterTriangle t;
        if (!findExtent(t, corners, size) || !findEdges(t, corners))
            continue;
        t.front = t.front != item.mirrored;
        if (!t.front && !both)
            continue;
        t.index = osg::UInt32(i);
        t.item = &item;
        for (std::size_t k = 0; k < 3; ++k)
            t.kept[k] = item.isCut ? kept[indices[i + k]] : 1.0f;
        out.push_back(t);
    }
}
