#pragma once

#include <files/assimp/kxAssimpMaterials.h>
#include <files/import/kxMeshData.h>

#include <map>
#include <string>

/// The surfaces of a file that Assimp read. A mesh that is in several places is made once.
class kxAssimpMeshes
{
public:
    kxAssimpMeshes(const aiScene& scene, const kxAssimpMaterials& materials, kxFileReport& report);

    /// A surface for a mesh; null where there is nothing to see, or after a failure, which the report names.
    osg::GeometryPtr makeGeometry(unsigned mesh);
    /// Binds the surfaces to their joints, once all nodes are there.
    void addSkins(const std::map<std::string, osg::NodePtr>& nodes);

private:
    struct Entry
    {
        bool made = false;
        osg::Share<osg::Mesh> mesh; ///< null where there is nothing to see
        std::vector<std::uint32_t> joints;
        std::vector<float> weights;
        std::vector<osg::GeometryPtr> geometries;
    };

    void make(unsigned index, Entry& entry);
    static void addBones(const aiMesh& source, kxMeshData& data);

    const aiScene& _scene;
    const kxAssimpMaterials& _materials;
    kxFileReport& _report;
    std::vector<Entry> _entries;
};
