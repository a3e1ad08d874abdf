#include <scene/Mesh.h>

#include <osg/FieldContainerFactory.h>
#include <osg/Finite.h>
#include <scene/FieldDescription.h>

#include <algorithm>
#include <cmath>

namespace osg
{

FieldContainerType Mesh::_type(
    "Mesh", &FieldContainer::_type, "Mesh", [] { return FieldContainerPtr(Mesh::create()); }, &Mesh::describeFields);
FieldContainerType Skin::_type(
    "Skin", &FieldContainer::_type, "Skin", [] { return FieldContainerPtr(Skin::create()); }, &Skin::describeFields);

MeshPtr Mesh::create()
{
    return MeshPtr(new Mesh);
}

void Mesh::describeFields(FieldList& fields)
{
    fields.push_back(FieldDescription(
        "positions", MeshFieldMask,
        [](const FieldContainer& container) { return FieldValue(static_cast<const Mesh&>(container)._positions); },
        [](FieldContainer& container, const FieldValue& value)
        {
            const std::vector<float>* const typed = std::get_if<std::vector<float>>(&value);
            if (typed == nullptr)
                return false;
            static_cast<Mesh&>(container).setPositions(*typed);
            return true;
        }));
    fields.push_back(FieldDescription::member("normals", MeshFieldMask, &Mesh::_normals));
    fields.push_back(FieldDescription::member("texCoords", MeshFieldMask, &Mesh::_texCoords));
    fields.push_back(FieldDescription::member("colors", MeshFieldMask, &Mesh::_colors));
    fields.push_back(FieldDescription::member("indices", MeshFieldMask, &Mesh::_indices));
}

void Mesh::setPositions(std::vector<float> values)
{
    _positions = std::move(values);
    _boundsValid = false;
}

bool Mesh::isValid() const
{
    const std::size_t vertices = _positions.size() / 3;
    const auto fits = [vertices](const std::vector<float>& values, std::size_t components)
    { return values.empty() || values.size() == vertices * components; };
    return _positions.size() % 3 == 0 && _indices.size() % 3 == 0 && fits(_normals, 3) && fits(_texCoords, 2) &&
           fits(_colors, 4) && isFinite(_positions) &&
           std::all_of(_indices.begin(), _indices.end(), [vertices](UInt32 index) { return index < vertices; });
}

void Mesh::computeNormals()
{
    _normals.assign(_positions.size(), 0.0f);
    for (std::size_t t = 0; t + 2 < _indices.size(); t += 3)
    {
        const float* p[3];
        for (std::size_t k = 0; k < 3; ++k)
        {
            if (_indices[t + k] >= vertexCount())
                return;
            p[k] = &_positions[3 * std::size_t(_indices[t + k])];
        }
        float a[3], b[3];
        for (std::size_t i = 0; i < 3; ++i)
        {
            a[i] = p[1][i] - p[0][i];
            b[i] = p[2][i] - p[0][i];
        }
        // The cross product's length is twice the area, which is the weight.
        const float n[3] = {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
        for (std::size_t k = 0; k < 3; ++k)
            for (std::size_t i = 0; i < 3; ++i)
                _normals[3 * std::size_t(_indices[t + k]) + i] += n[i];
    }
    for (std::size_t v = 0; v + 2 < _normals.size(); v += 3)
    {
        float* const n = &_normals[v];
        const float length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
        if (length > 0)
            for (std::size_t i = 0; i < 3; ++i)
                n[i] /= length;
        else
            n[1] = 1.0f;
    }
}

const BoxVolume& Mesh::bounds() const
{
    if (!_boundsValid)
    {
        _bounds.setEmpty();
        for (std::size_t i = 0; i + 2 < _positions.size(); i += 3)
            _bounds.extendBy(Pnt3f(_positions[i], _positions[i + 1], _positions[i + 2]));
        _boundsValid = true;
    }
    return _bounds;
}

SkinPtr Skin::create()
{
    return SkinPtr(new Skin);
}

void Skin::describeFields(FieldList& fields)
{
    fields.push_back(FieldDescription(
        "joints", SkinFieldMask,
        [](const FieldContainer& container)
        {
            std::vector<FieldContainerPtr> joints;
            for (const NodePtr& joint : static_cast<const Skin&>(container).joints())
                joints.push_back(joint);
            return FieldValue(joints);
        },
        [](FieldContainer& container, const FieldValue& value)
        {
            const auto* const typed = std::get_if<std::vector<FieldContainerPtr>>(&value);
            if (typed == nullptr)
                return false;
            std::vector<NodePtr> joints;
            for (const FieldContainerPtr& joint : *typed)
                joints.push_back(NodePtr::dcast(joint));
            static_cast<Skin&>(container).setJoints(joints);
            return true;
        }));
    fields.push_back(FieldDescription::member("inverseBindMatrices", SkinFieldMask, &Skin::_inverseBindMatrices));
    fields.push_back(FieldDescription::member("vertexJoints", SkinFieldMask, &Skin::_vertexJoints));
    fields.push_back(FieldDescription::member("vertexWeights", SkinFieldMask, &Skin::_vertexWeights));
}

std::vector<NodePtr> Skin::joints() const
{
    std::vector<NodePtr> result;
    result.reserve(_jointIds.size());
    for (const UInt32 id : _jointIds)
        result.push_back(living<Node>(id));
    return result;
}

void Skin::setJoints(const std::vector<NodePtr>& joints)
{
    _jointIds.clear();
    for (const NodePtr& joint : joints)
        _jointIds.push_back(joint.getFieldContainerId());
}

bool Skin::isValid(UInt32 vertexCount) const
{
    const std::size_t joints = _jointIds.size();
    return _inverseBindMatrices.size() == joints * 16 && _vertexJoints.size() == std::size_t(vertexCount) * 4 &&
           _vertexWeights.size() == _vertexJoints.size() &&
           std::all_of(_vertexJoints.begin(), _vertexJoints.end(), [joints](UInt32 index) { return index < joints; });
}

} // namespace osg
