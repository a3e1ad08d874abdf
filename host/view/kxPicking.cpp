#include "kxPicking.h"

#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>

#include <algorithm>
#include <limits>

namespace
{
bool meetsBox(const osg::BoxVolume& box, const kxRay& ray, float limit)
{
    osg::Pnt3f low, high;
    box.getBounds(low, high);
    float enter = 0, leave = limit;
    for (int i = 0; i < 3; ++i)
    {
        const std::size_t k = std::size_t(i);
        const float slack = 1e-4f * (high[k] - low[k]) + 1e-6f;
        if (ray.direction[i] == 0)
        {
            if (ray.origin[i] < low[k] - slack || ray.origin[i] > high[k] + slack)
                return false;
            continue;
        }
        float a = (low[k] - slack - ray.origin[i]) / ray.direction[i];
        float b = (high[k] + slack - ray.origin[i]) / ray.direction[i];
        if (a > b)
            std::swap(a, b);
        enter = std::max(enter, a);
        leave = std::min(leave, b);
    }
    return enter <= leave;
}

/// Shortens a ray, from `start` on and `limit` long, to what the clipping plane leaves of it; false for nothing.
bool keptPart(const QVector4D& kept, const kxRay& ray, float& start, float& limit)
{
    const float at = QVector4D::dotProduct(kept, QVector4D(ray.origin, 1));
    const float slope = QVector3D::dotProduct(kept.toVector3D(), ray.direction);
    if (at < 0 && slope <= 0)
        return false;
    if (at < 0)
        start = -at / slope;
    else if (slope < 0)
        limit = -at / slope;
    return true;
}

/// A bent mesh has another shape each time: a tree would cost more than it saves.
bool hitBent(const kxBentMesh& bent, const osg::Mesh& mesh, const kxRay& ray, float limit, kxMeshBvh::Sides sides,
             float& distance)
{
    bool found = false;
    const std::vector<osg::UInt32>& indices = mesh.indices();
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
    {
        QVector3D corners[3];
        for (std::size_t k = 0; k < 3; ++k)
        {
            const float* const p = &bent.positions[std::size_t(indices[i + k]) * 3];
            corners[k] = QVector3D(p[0], p[1], p[2]);
        }
        float t = 0;
        if (kxMeshBvh::hitTriangle(ray.origin, ray.direction, corners, sides, t) && t < limit)
        {
            limit = distance = t;
            found = true;
        }
    }
    return found;
}
} // namespace

const kxMeshBvh& kxPicking::tree(const kxRenderScene& scene, const osg::Mesh& mesh)
{
    for (auto entry = _trees.begin(); entry != _trees.end();)
        entry = kxRenderScene::mesh(entry->first) == nullptr ? _trees.erase(entry) : std::next(entry);
    const auto [entry, isNew] = _trees.try_emplace(mesh.getId());
    Tree& tree = entry->second;
    const osg::UInt32 version = scene.version(mesh.getId());
    if (isNew || tree.version != version)
    {
        tree.bvh.build(mesh.positions(), mesh.indices());
        tree.version = version;
    }
    return tree.bvh;
}

kxPicking::Hit kxPicking::pick(const kxRenderScene& scene, const kxRay& seen)
{
    Hit best;
    float start = 0, limit = std::numeric_limits<float>::max();
    if (!keptPart(scene.kept(), seen, start, limit))
        return best;
    const kxRay ray = {seen.at(start), seen.direction};
    for (const kxRenderScene::Item& item : scene.items())
    {
        const osg::Mesh* const mesh =
            !item.isCutAway && meetsBox(item.bounds, ray, limit) ? kxRenderScene::mesh(item.meshId) : nullptr;
        if (mesh == nullptr)
            continue;
        // In the mesh's own coordinates a mirror above it plays no part.
        const bool both = scene.looks()[item.look].doubleSided || item.isCut;
        const kxMeshBvh::Sides sides = both ? kxMeshBvh::Both : kxMeshBvh::Front;
        float distance = 0;
        bool found = false;
        if (item.bent)
            found = hitBent(*item.bent, *mesh, ray, limit, sides, distance);
        else
        {
            bool invertible = false;
            const QMatrix4x4 inverse = item.world.inverted(&invertible);
            kxMeshBvh::Hit hit;
            // The direction keeps the length that the map gives it, so that distances are the same on both sides.
            found =
                invertible &&
                tree(scene, *mesh).hit(inverse.map(ray.origin), inverse.mapVector(ray.direction), limit, sides, hit);
            distance = hit.distance;
        }
        if (found)
        {
            limit = distance;
            best = {item.nodeId, start + distance, ray.at(distance)};
        }
    }
    return best;
}

osg::NodePtr kxPicking::selectableNode(osg::NodePtr node)
{
    while (node != osg::NullFC && kxNodeUtils::isGeometryComponent(node) && node->getParent() != osg::NullFC)
        node = node->getParent();
    return node;
}
