#include <files/assimp/kxAssimpMeshes.h>

#include <files/scene/kxFileReport.h>

#include <osg/Finite.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
constexpr std::size_t JointsAVertex = 4;
constexpr float LargestSmoothTurn = 60; // degrees

void append(std::vector<float>& out, const aiVector3D* vectors, unsigned count)
{
    out.reserve(std::size_t(count) * 3);
    for (unsigned i = 0; vectors != nullptr && i < count; ++i)
        out.insert(out.end(), {vectors[i].x, vectors[i].y, vectors[i].z});
}
} // namespace

kxAssimpMeshes::kxAssimpMeshes(const aiScene& scene, const kxAssimpMaterials& materials, kxFileReport& report)
    : _scene(scene), _materials(materials), _report(report), _entries(scene.mNumMeshes)
{
}

GeometryPtr kxAssimpMeshes::makeGeometry(unsigned index)
{
    if (index >= _scene.mNumMeshes)
    {
        _report.fail(QStringLiteral("a node names mesh %1 of %2").arg(index).arg(_scene.mNumMeshes));
        return GeometryPtr();
    }
    Entry& entry = _entries[index];
    if (!entry.made)
    {
        entry.made = true;
        make(index, entry);
    }
    if (!entry.mesh)
        return GeometryPtr();
    const GeometryPtr geometry = Geometry::create();
    geometry->setMesh(FieldContainerPtr(entry.mesh.get()));
    geometry->setMaterial(_materials.material(_scene.mMeshes[index]->mMaterialIndex));
    entry.geometries.push_back(geometry);
    return geometry;
}

void kxAssimpMeshes::make(unsigned index, Entry& entry)
{
    const aiMesh& source = *_scene.mMeshes[index];
    const QString what = QStringLiteral("mesh '%1'").arg(QString::fromUtf8(source.mName.C_Str()));
    if (source.mNumAnimMeshes > 0)
        _report.note(QStringLiteral("morph targets are left out"));
    kxMeshData data;
    append(data.positions, source.mVertices, source.mNumVertices);
    append(data.normals, source.mNormals, source.mNumVertices);
    for (unsigned i = 0; source.HasTextureCoords(0) && i < source.mNumVertices; ++i)
        data.texCoords.insert(data.texCoords.end(), {source.mTextureCoords[0][i].x, source.mTextureCoords[0][i].y});
    for (unsigned i = 0; source.HasVertexColors(0) && i < source.mNumVertices; ++i)
    {
        const aiColor4D& c = source.mColors[0][i];
        data.colors.insert(data.colors.end(), {c.r, c.g, c.b, c.a});
    }
    bool others = false;
    for (unsigned f = 0; f < source.mNumFaces; ++f)
    {
        const aiFace& face = source.mFaces[f];
        others = others || face.mNumIndices != 3;
        if (face.mNumIndices == 3)
            data.indices.insert(data.indices.end(), face.mIndices, face.mIndices + 3);
    }
    if (others)
        _report.note(QStringLiteral("points and lines are left out"));
    addBones(source, data);
    if (data.indices.empty())
        return;
    if (!data.repair())
    {
        _report.fail(QStringLiteral("%1: an index names no vertex, or a position isn't finite").arg(what));
        return;
    }
    data.normalizeWeights();
    // The library has steps for both, which take many times the memory, and of a large surface time by its square.
    if (data.normals.empty())
        data.smooth(LargestSmoothTurn);
    data.join();
    entry.joints = std::move(data.joints);
    entry.weights = std::move(data.weights);
    entry.mesh = data.makeMesh();
}

/// The four heaviest joints of each vertex.
void kxAssimpMeshes::addBones(const aiMesh& source, kxMeshData& data)
{
    if (source.mNumBones == 0)
        return;
    data.joints.assign(std::size_t(source.mNumVertices) * JointsAVertex, 0);
    data.weights.assign(data.joints.size(), 0.0f);
    for (unsigned b = 0; b < source.mNumBones; ++b)
        for (unsigned w = 0; w < source.mBones[b]->mNumWeights; ++w)
        {
            const aiVertexWeight& weight = source.mBones[b]->mWeights[w];
            if (weight.mVertexId >= source.mNumVertices || !std::isfinite(weight.mWeight))
                continue;
            float* const first = &data.weights[std::size_t(weight.mVertexId) * JointsAVertex];
            float* const lightest = std::min_element(first, first + JointsAVertex);
            if (weight.mWeight <= *lightest)
                continue;
            *lightest = weight.mWeight;
            data.joints[std::size_t(lightest - data.weights.data())] = b;
        }
}

void kxAssimpMeshes::addSkins(const std::map<std::string, NodePtr>& nodes)
{
    for (std::size_t i = 0; i < _entries.size(); ++i)
    {
        Entry& entry = _entries[i];
        const aiMesh& source = *_scene.mMeshes[i];
        if (!entry.mesh || entry.joints.empty() || entry.geometries.empty())
            continue;
        std::vector<NodePtr> joints;
        std::vector<float> matrices;
        for (unsigned b = 0; b < source.mNumBones; ++b)
        {
            const auto found = nodes.find(source.mBones[b]->mName.C_Str());
            if (found == nodes.end())
                break;
            joints.push_back(found->second);
            const aiMatrix4x4& m = source.mBones[b]->mOffsetMatrix;
            for (unsigned column = 0; column < 4; ++column)
                for (unsigned row = 0; row < 4; ++row)
                    matrices.push_back(m[row][column]);
        }
        const bool finite = isFinite(matrices);
        const osg::Share<Skin> skin(Skin::create());
        skin->setJoints(joints);
        skin->setInverseBindMatrices(std::move(matrices));
        skin->setVertexJoints(std::move(entry.joints));
        skin->setVertexWeights(std::move(entry.weights));
        if (!finite || joints.size() != source.mNumBones || !skin->isValid(entry.mesh->vertexCount()))
        {
            _report.note(QStringLiteral("mesh '%1' doesn't follow its joints: one of them is missing or damaged")
                             .arg(QString::fromUtf8(source.mName.C_Str())));
            continue;
        }
        for (const GeometryPtr& geometry : entry.geometries)
            geometry->setSkin(FieldContainerPtr(skin.get()));
    }
}
