#pragma once

#include <files/gltf/kxGltfBuffer.h>
#include <scene/Mesh.h>
#include <scene/UberMaterial.h>

#include <map>

class kxFileReport;

/// Writes meshes, materials and pictures into a glTF model, each once.
class kxGltfSurfaces
{
public:
    kxGltfSurfaces(tinygltf::Model& model, kxGltfBuffer& buffer, kxFileReport& report)
        : _model(model), _buffer(buffer), _report(report)
    {
    }

    /// The index of a mesh that has these surfaces as its primitives, -1 where there is nothing to see.
    int mesh(const std::vector<osg::GeometryPtr>& parts, const std::string& name);

    /// The index of each written material, by container id.
    const std::map<osg::UInt32, int>& materials() const { return _materials; }

private:
    struct Arrays
    {
        std::map<std::string, int> attributes;
        int indices = -1;
    };

    const Arrays& arrays(const osg::MeshPtr& mesh);
    int cornerCoords(osg::UInt32 vertices);
    int material(const osg::MaterialPtr& material);
    void describe(const osg::UberMaterial& source, tinygltf::Material& target);
    int texture(const osg::ImagePtr& image);

    tinygltf::Model& _model;
    kxGltfBuffer& _buffer;
    kxFileReport& _report;
    std::map<osg::UInt32, Arrays> _arrays; // by container id, like all below
    std::map<osg::UInt32, std::map<std::string, int>> _skins;
    std::map<osg::UInt32, int> _corners; // by the number of vertices
    std::map<osg::UInt32, int> _materials;
    std::map<osg::UInt32, int> _textures;
    std::map<std::vector<osg::UInt32>, int> _meshes; // by mesh, material and skin of each part
};
