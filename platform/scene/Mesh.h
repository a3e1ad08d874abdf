#pragma once

#include <osg/SceneCores.h>

#include <vector>

namespace osg
{

/// Triangles: the data of a surface, shared by all geometries that show it.
///
/// Arrays hold one entry a vertex (3 floats for positions and normals, 2 for texture coordinates, 4 for colours) or are
/// empty; indices hold 3 entries a triangle.
class KX_API Mesh : public FieldContainer
{
public:
    static constexpr BitVector MeshFieldMask = BitVector::bit(8);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static FCPtr<Mesh> create();

    const std::vector<float>& positions() const { return _positions; }
    const std::vector<float>& normals() const { return _normals; }
    /// u to the right, v down from the top of the picture.
    const std::vector<float>& texCoords() const { return _texCoords; }
    /// Linear RGBA.
    const std::vector<float>& colors() const { return _colors; }
    const std::vector<UInt32>& indices() const { return _indices; }
    UInt32 vertexCount() const { return UInt32(_positions.size() / 3); }
    UInt32 triangleCount() const { return UInt32(_indices.size() / 3); }

    void setPositions(std::vector<float> values);
    void setNormals(std::vector<float> values) { _normals = std::move(values); }
    void setTexCoords(std::vector<float> values) { _texCoords = std::move(values); }
    void setColors(std::vector<float> values) { _colors = std::move(values); }
    void setIndices(std::vector<UInt32> values) { _indices = std::move(values); }

    /// True where the arrays fit each other and every index names a vertex. A mesh that isn't valid is not drawn.
    bool isValid() const;
    /// Smooth normals from the triangles, weighted by area; for meshes that come without.
    void computeNormals();
    /// Of the positions, in the mesh's own coordinates.
    const BoxVolume& bounds() const;

protected:
    Mesh() = default;

private:
    static void describeFields(FieldList& fields);

    std::vector<float> _positions, _normals, _texCoords, _colors;
    std::vector<UInt32> _indices;
    mutable BoxVolume _bounds;
    mutable bool _boundsValid = false;
};
typedef FCPtr<Mesh> MeshPtr;

/// Bends a mesh by joints.
///
/// A vertex goes to sum(weight * joint world matrix * inverse bind matrix) * position; the geometry's own place plays
/// no part. Up to 4 joints a vertex.
class KX_API Skin : public FieldContainer
{
public:
    static constexpr BitVector SkinFieldMask = BitVector::bit(8);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static FCPtr<Skin> create();

    /// The joints, null where one has died. Not owned.
    std::vector<NodePtr> joints() const;
    void setJoints(const std::vector<NodePtr>& joints);
    /// The same by their ids, which stay where one has died: it may come back.
    const std::vector<UInt32>& jointIds() const { return _jointIds; }
    void setJointIds(std::vector<UInt32> ids) { _jointIds = std::move(ids); }
    /// 16 floats a joint, column by column.
    const std::vector<float>& inverseBindMatrices() const { return _inverseBindMatrices; }
    void setInverseBindMatrices(std::vector<float> values) { _inverseBindMatrices = std::move(values); }
    /// 4 joint indices a vertex, and their weights, which sum to 1.
    const std::vector<UInt32>& vertexJoints() const { return _vertexJoints; }
    void setVertexJoints(std::vector<UInt32> values) { _vertexJoints = std::move(values); }
    const std::vector<float>& vertexWeights() const { return _vertexWeights; }
    void setVertexWeights(std::vector<float> values) { _vertexWeights = std::move(values); }

    /// True where the arrays fit each other and `vertexCount`.
    bool isValid(UInt32 vertexCount) const;

protected:
    Skin() = default;

private:
    static void describeFields(FieldList& fields);

    std::vector<UInt32> _jointIds; // field container ids
    std::vector<float> _inverseBindMatrices;
    std::vector<UInt32> _vertexJoints;
    std::vector<float> _vertexWeights;
};
typedef FCPtr<Skin> SkinPtr;

} // namespace osg
