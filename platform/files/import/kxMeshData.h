#pragma once

#include <scene/Mesh.h>

#include <cstdint>
#include <vector>

/// The arrays of a surface on their way into a mesh, with up to 4 joints a vertex.
struct kxMeshData
{
    std::vector<float> positions, normals, texCoords, colors;
    std::vector<std::uint32_t> indices;
    std::vector<std::uint32_t> joints;
    std::vector<float> weights;

    std::size_t vertexCount() const { return positions.size() / 3; }
    /// Each triangle gets vertices of its own, so that it can have a normal of its own.
    void unshare();
    /// Takes out arrays of another length than the vertices need and numbers that aren't finite, but for positions: a
    /// mesh with such a position, or an index beyond its vertices, is no mesh (false).
    bool repair();
    /// Weights that aren't negative and sum to 1; a vertex without weights follows the first joint.
    void normalizeWeights();
    /// Moves all arrays out. Without normals, smooth ones are made.
    osg::MeshPtr makeMesh();
};
