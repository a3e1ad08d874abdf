#pragma once

#include <files/import/kxImageImport.h>
#include <files/import/kxModelFolder.h>
#include <files/import/kxSurfacePictures.h>
#include <osg/Share.h>
#include <scene/UberMaterial.h>

#include <QString>

#include <assimp/scene.h>
#include <map>
#include <vector>

class kxFileReport;

/// The materials of a file that Assimp read, with the pictures inside and beside it.
class kxAssimpMaterials
{
public:
    kxAssimpMaterials(const aiScene& scene, const QString& folder, kxFileReport& report);

    const std::vector<osg::Share<osg::Material>>& materials() const { return _materials; }
    /// Null for an index that isn't there.
    osg::MaterialPtr material(unsigned index) const;

private:
    void add(const aiMaterial& source);
    void addSurface(const aiMaterial& source, osg::UberMaterial& material) const;
    void addPictures(const aiMaterial& source, osg::UberMaterial& material);
    void addJoinedPictures(const aiMaterial& source, osg::UberMaterial& material);
    void noteOthers(const aiMaterial& source);
    /// The first of these kinds that the material has; null for none.
    osg::ImagePtr picture(const aiMaterial& source, std::initializer_list<aiTextureType> types);
    osg::ImagePtr read(const QString& path);

    const aiScene& _scene;
    kxModelFolder _folder;
    kxFileReport& _report;
    kxSurfacePictures _surfaces;
    std::vector<osg::Share<osg::Material>> _materials;
    kxImageImport::Known _known;
    std::map<QString, osg::Share<osg::Image>> _pictures; // by the name in the file; null for what can't be read
};
