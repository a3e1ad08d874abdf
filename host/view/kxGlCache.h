#pragma once

#include "kxGlFunctions.h"
#include "kxRenderScene.h"

#include <unordered_map>

/// What lies on the graphics card of one context: buffers of meshes, textures of pictures.
///
/// Every call needs the context to be current.
class kxGlCache
{
public:
    struct Mesh
    {
        GLuint vertexArray = 0;
        GLuint buffers[5] = {}; ///< positions, normals, texture coordinates, colours, indices; 0 for none
        GLsizei indexCount = 0;
        bool hasNormals = false;
        osg::UInt32 version = 0;
    };

    void init(const kxGlFunctions& gl);
    void release(const kxGlFunctions& gl);

    /// Uploads what isn't there yet or is out of date. Owned here, until sweep() or release(); null where the mesh has
    /// died.
    const Mesh* mesh(const kxGlFunctions& gl, const kxRenderScene& scene, const kxRenderScene::Item& item);
    enum class Meaning
    {
        Color, ///< sRGB
        Numbers
    };
    /// With mipmaps; 0 where there is no picture.
    GLuint texture(const kxGlFunctions& gl, kxRenderScene& scene, osg::UInt32 imageId, Meaning meaning);
    /// Frees what belongs to containers that have died.
    void sweep(const kxGlFunctions& gl);

private:
    struct Texture
    {
        GLuint name = 0;
        osg::UInt32 version = 0;
    };
    void upload(const kxGlFunctions& gl, Mesh& target, const osg::Mesh& mesh, const kxBentMesh* bent);
    void uploadBent(const kxGlFunctions& gl, Mesh& target, const kxBentMesh& bent);
    static void free(const kxGlFunctions& gl, Mesh& mesh);

    std::unordered_map<osg::UInt32, Mesh> _meshes; // by mesh id; bent ones by the id of their node
    static osg::UInt64 keyOf(osg::UInt32 imageId, Meaning meaning)
    {
        return osg::UInt64(imageId) << 1 | osg::UInt64(meaning);
    }

    std::unordered_map<osg::UInt64, Texture> _textures; // by keyOf()
    float _anisotropy = 0;
    GLint _largest = 2048;
};
