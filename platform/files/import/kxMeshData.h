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
    /// Normals, smooth where the surface turns by no more than so many degrees. Each corner gets a vertex of its own.
    void smooth(float largestTurn);
    /// Vertices that are the same in everything become one, the first. All numbers are finite.
    void join();
    /// Weights that aren't negative and sum to 1; a vertex without weights follows the first joint.
    void normalizeWeights();
    /// Moves all arrays out. Without normals, smooth ones are made.
    osg::MeshPtr makeMesh();

private:
    /// Calls `use` with each array that goes by vertices, and how many of its entries a vertex has.
    template <class Use>
    void forArrays(const Use& use)
    {
        use(positions, 3);
        use(normals, 3);
        use(texCoords, 2);
        use(colors, 4);
        use(joints, 4);
        use(weights, 4);
    }
};
