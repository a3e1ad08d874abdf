#pragma once

#include <files/gltf/kxGltfMaterials.h>
#include <files/import/kxMeshData.h>

#include <optional>

/// The surfaces of a glTF file. A mesh that is in several places is read once.
class kxGltfMeshes
{
public:
    kxGltfMeshes(const kxGltfDocument& document, kxGltfMaterials& materials, kxFileReport& report);

    /// What is drawn of one primitive.
    struct Part
    {
        osg::Share<osg::Mesh> mesh;
        osg::Share<osg::Material> material;
        std::vector<std::uint32_t> joints; ///< 4 a vertex, empty without
        std::vector<float> weights;
    };
    /// The parts of a mesh; null after a failure, which the report names.
    const std::vector<Part>* parts(int mesh);

private:
    bool readPart(const tinygltf::Primitive& primitive, const QString& what, std::vector<Part>& parts);
    bool readAttributes(const tinygltf::Primitive& primitive, kxMeshData& data, const QString& what);
    bool readColors(int accessor, kxMeshData& data);
    bool readSkin(const tinygltf::Primitive& primitive, kxMeshData& data, const QString& what);
    bool readTriangles(const tinygltf::Primitive& primitive, kxMeshData& data, const QString& what);

    const kxGltfDocument& _document;
    kxGltfMaterials& _materials;
    kxFileReport& _report;
    std::vector<std::optional<std::vector<Part>>> _meshes;
};
