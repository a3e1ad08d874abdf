#include "kxMeshBvh.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace
{
constexpr std::size_t LeafSize = 4;

/// Where the ray enters the box, up to `limit`; false where it misses it.
bool entersBox(const float (&low)[3], const float (&high)[3], const QVector3D& origin, const QVector3D& inverse,
               float limit)
{
    float enter = 0, leave = limit;
    for (int i = 0; i < 3; ++i)
    {
        float a = (low[i] - origin[i]) * inverse[i], b = (high[i] - origin[i]) * inverse[i];
        if (a > b)
            std::swap(a, b);
        // Written so that not-a-number (a ray inside of a side's plane) changes nothing.
        enter = a > enter ? a : enter;
        leave = b < leave ? b : leave;
    }
    // The rounding of the two divisions must not lose a flat box.
    return enter <= leave * (1 + 4e-6f) + 1e-12f;
}
} // namespace

void kxMeshBvh::Box::extend(const Box& other)
{
    for (int i = 0; i < 3; ++i)
    {
        low[i] = std::min(low[i], other.low[i]);
        high[i] = std::max(high[i], other.high[i]);
    }
}

void kxMeshBvh::build(const std::vector<float>& positions, const std::vector<osg::UInt32>& indices)
{
    _positions = positions;
    _indices = indices;
    _nodes.clear();
    const std::size_t count = indices.size() / 3;
    std::vector<Box> boxes(count);
    _order.resize(count);
    for (std::size_t t = 0; t < count; ++t)
    {
        _order[t] = osg::UInt32(t);
        for (int axis = 0; axis < 3; ++axis)
        {
            float values[3];
            for (std::size_t k = 0; k < 3; ++k)
                values[k] = positions[std::size_t(indices[3 * t + k]) * 3 + std::size_t(axis)];
            boxes[t].low[axis] = std::min({values[0], values[1], values[2]});
            boxes[t].high[axis] = std::max({values[0], values[1], values[2]});
        }
    }
    if (count > 0)
    {
        _nodes.reserve(count);
        split(0, count, boxes);
    }
}

void kxMeshBvh::split(std::size_t begin, std::size_t end, const std::vector<Box>& boxes)
{
    const std::size_t index = _nodes.size();
    Node node;
    node.box = boxes[_order[begin]];
    for (std::size_t i = begin + 1; i < end; ++i)
        node.box.extend(boxes[_order[i]]);
    node.first = osg::UInt32(begin);
    node.count = osg::UInt32(end - begin);
    _nodes.push_back(node);
    if (end - begin <= LeafSize)
        return;

    int axis = 0;
    for (int i = 1; i < 3; ++i)
        if (node.box.high[i] - node.box.low[i] > node.box.high[axis] - node.box.low[axis])
            axis = i;
    const auto middleOf = [&](osg::UInt32 t) { return boxes[t].low[axis] + boxes[t].high[axis]; };
    const float middle = node.box.low[axis] + node.box.high[axis];
    const auto first = _order.begin() + std::ptrdiff_t(begin), last = _order.begin() + std::ptrdiff_t(end);
    auto cut = std::partition(first, last, [&](osg::UInt32 t) { return middleOf(t) < middle; });
    // A lopsided cut would make the tree deep: half of the triangles on each side then.
    const std::ptrdiff_t least = (last - first) / 8;
    if (cut - first < least || last - cut < least || cut == first || cut == last)
    {
        cut = first + (last - first) / 2;
        std::nth_element(first, cut, last, [&](osg::UInt32 a, osg::UInt32 b) { return middleOf(a) < middleOf(b); });
    }
    const std::size_t half = std::size_t(cut - _order.begin());
    split(begin, half, boxes);
    _nodes[index].count = 0;
    _nodes[index].first = osg::UInt32(_nodes.size());
    split(half, end, boxes);
}

void kxMeshBvh::corners(osg::UInt32 triangle, QVector3D (&result)[3]) const
{
    for (std::size_t k = 0; k < 3; ++k)
    {
        const float* const p = &_positions[std::size_t(_indices[3 * std::size_t(triangle) + k]) * 3];
        result[k] = QVector3D(p[0], p[1], p[2]);
    }
}

bool kxMeshBvh::hitTriangle(const QVector3D& origin, const QVector3D& direction, const QVector3D (&corners)[3],
                            Sides sides, float& distance)
{
    const QVector3D a = corners[1] - corners[0], b = corners[2] - corners[0];
    const QVector3D p = QVector3D::crossProduct(direction, b);
    const float det = QVector3D::dotProduct(a, p);
    if (det == 0 || !std::isfinite(det) || (sides == Front && det < 0) || (sides == Back && det > 0))
        return false;
    const QVector3D s = origin - corners[0];
    const float u = QVector3D::dotProduct(s, p) / det;
    if (!(u >= 0 && u <= 1))
        return false;
    const QVector3D q = QVector3D::crossProduct(s, a);
    const float v = QVector3D::dotProduct(direction, q) / det;
    if (!(v >= 0 && u + v <= 1))
        return false;
    const float t = QVector3D::dotProduct(b, q) / det;
    if (!(t >= 0) || !std::isfinite(t))
        return false;
    distance = t;
    return true;
}

bool kxMeshBvh::hit(const QVector3D& origin, const QVector3D& direction, float limit, Sides sides, Hit& result) const
{
    if (_nodes.empty())
        return false;
    const QVector3D inverse(1 / direction.x(), 1 / direction.y(), 1 / direction.z());
    bool found = false;
    std::vector<osg::UInt32> open(1, 0);
    while (!open.empty())
    {
        const osg::UInt32 index = open.back();
        open.pop_back();
        const Node& node = _nodes[index];
        if (!entersBox(node.box.low, node.box.high, origin, inverse, limit))
            continue;
        if (node.count == 0)
        {
            open.push_back(node.first);
            open.push_back(index + 1);
            continue;
        }
        for (osg::UInt32 i = node.first; i < node.first + node.count; ++i)
        {
            QVector3D c[3];
            corners(_order[i], c);
            float distance = 0;
            if (hitTriangle(origin, direction, c, sides, distance) && distance < limit)
            {
                limit = distance;
                result = {distance, _order[i]};
                found = true;
            }
        }
    }
    return found;
}
