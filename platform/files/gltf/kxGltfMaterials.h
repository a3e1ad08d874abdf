#pragma once

#include <files/gltf/kxGltfDocument.h>
#include <files/import/kxImageImport.h>
#include <osg/Share.h>
#include <scene/UberMaterial.h>

#include <array>

/// The materials of a glTF file.
class kxGltfMaterials
{
public:
    kxGltfMaterials(const kxGltfDocument& document, kxFileReport& report);

    const std::vector<osg::Share<osg::Material>>& materials() const { return _materials; }
    /// The material of a primitive; that of the format's default for -1.
    osg::MaterialPtr material(int index);

    /// Which texture coordinates the pictures take, and how they are changed.
    struct Mapping
    {
        int texCoord = 0;
        bool changed = false;
        std::array<float, 6> matrix = {1, 0, 0, 0, 1, 0}; ///< two rows of three
    };
    const Mapping& mapping(int index) const;

private:
    struct Picture
    {
        bool read = false;
        osg::Share<osg::Image> image;
    };

    void add(const tinygltf::Material& source);
    void addBaseColor(const tinygltf::Material& source, osg::UberMaterial& material, Mapping& mapping);
    void addFactors(const tinygltf::Material& source, osg::UberMaterial& material);
    /// The pictures beside that of the base colour, with its mapping where there is one.
    void addPictures(const tinygltf::Material& source, osg::UberMaterial& material, Mapping& mapping);
    osg::ImagePtr picture(int texture, bool opaque);
    int imageOf(int texture) const;

    const kxGltfDocument& _document;
    kxFileReport& _report;
    std::vector<osg::Share<osg::Material>> _materials;
    osg::Share<osg::Material> _default;
    std::vector<Mapping> _mappings;
    kxImageImport::Known _known;
    std::vector<Picture> _pictures[2]; ///< by image; with its alpha, and without
};
