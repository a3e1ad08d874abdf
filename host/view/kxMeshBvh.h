#pragma once

#include "kxViewCamera.h"

#include <osg/Types.h>

#include <vector>

/// A tree of boxes over the triangles of a mesh, to find what a ray meets first.
class kxMeshBvh
{
public:
    /// Which side of a triangle counts. Front: its corners run against the clock, seen from the ray's origin.
    enum Sides
    {
        Both,
        Front,
        Back
    };
    struct Hit
    {
        float distance = 0; ///< in lengths of the ray's direction
        osg::UInt32 triangle = 0;
    };

    /// `positions` and `indices` of a valid mesh, copied.
    void build(const std::vector<float>& positions, const std::vector<osg::UInt32>& indices);

    /// The nearest hit before `limit`; the direction may have any length but 0.
    bool hit(const QVector3D& origin, const QVector3D& direction, float limit, Sides sides, Hit& result) const;

    /// One triangle: distance to it along the ray. Möller and Trumbore, "Fast, Minimum Storage Ray/Triangle
    /// Intersection".
    static bool hitTriangle(const QVector3D& origin, const QVector3D& direction, const QVector3D (&corners)[3],
                            Sides sides, float& distance);

private:
    struct Box
    {
        float low[3], high[3];
        void extend(const Box& other);
    };
    struct Node
    {
        Box box;
        osg::UInt32 first; ///< of its triangles in _order, or the right child
        osg::UInt32 count; ///< 0 for a branch, whose left child is the next node
    };
    void split(std::size_t begin, std::size_t end, const std::vector<Box>& boxes);
    void corners(osg::UInt32 triangle, QVector3D (&result)[3]) const;

    std::vector<float> _positions;
    std::vector<osg::UInt32> _indices;
    std::vector<osg::UInt32> _order; // triangles
    std::vector<Node> _nodes;
};
