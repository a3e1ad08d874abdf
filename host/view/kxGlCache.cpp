#include "kxGlCache.h"

#include <osg/FieldContainerFactory.h>

#include <algorithm>
#include <cstring>

namespace
{
constexpr GLenum MaxAnisotropy = 0x84FF; // of EXT_texture_filter_anisotropic
constexpr GLenum Anisotropy = 0x84FE;
constexpr GLint Components[4] = {3, 3, 2, 4};
} // namespace

void kxGlCache::init(const kxGlFunctions& gl)
{
    _meshes.clear();
    _textures.clear();
    GLint count = 0;
    gl.GetIntegerv(GL_NUM_EXTENSIONS, &count);
    for (GLint i = 0; i < count; ++i)
        if (std::strstr(reinterpret_cast<const char*>(gl.GetStringi(GL_EXTENSIONS, GLuint(i))),
                        "_texture_filter_anisotropic") != nullptr)
            gl.GetFloatv(MaxAnisotropy, &_anisotropy);
    _anisotropy = std::min(_anisotropy, 8.0f);
    gl.GetIntegerv(GL_MAX_TEXTURE_SIZE, &_largest);
}

void kxGlCache::release(const kxGlFunctions& gl)
{
    for (auto& entry : _meshes)
        free(gl, entry.second);
    for (auto& entry : _textures)
        gl.DeleteTextures(1, &entry.second.name);
    _meshes.clear();
    _textures.clear();
}

void kxGlCache::free(const kxGlFunctions& gl, Mesh& mesh)
{
    gl.DeleteBuffers(5, mesh.buffers);
    gl.DeleteVertexArrays(1, &mesh.vertexArray);
    mesh = Mesh();
}

void kxGlCache::sweep(const kxGlFunctions& gl)
{
    for (auto entry = _meshes.begin(); entry != _meshes.end();)
    {
        if (osg::living<osg::FieldContainer>(entry->first) != osg::NullFC)
        {
            ++entry;
            continue;
        }
        free(gl, entry->second);
        entry = _meshes.erase(entry);
    }
    for (auto entry = _textures.begin(); entry != _textures.end();)
    {
        if (osg::living<osg::FieldContainer>(osg::UInt32(entry->first >> 1)) != osg::NullFC)
        {
            ++entry;
            continue;
        }
        gl.DeleteTextures(1, &entry->second.name);
        entry = _textures.erase(entry);
    }
}

const kxGlCache::Mesh* kxGlCache::mesh(const kxGlFunctions& gl, const kxRenderScene& scene,
                                       const kxRenderScene::Item& item)
{
    const osg::Mesh* const mesh = kxRenderScene::mesh(item.meshId);
    if (mesh == nullptr)
        return nullptr;
    const kxBentMesh* const bent = item.bent.get();
    const osg::UInt32 version = bent != nullptr ? bent->version : scene.version(item.meshId);
    Mesh& cached = _meshes[bent != nullptr ? item.nodeId : item.meshId];
    if (cached.vertexArray != 0 && cached.version == version)
        return &cached;
    const bool sameShape = cached.vertexArray != 0 && bent != nullptr && scene.version(item.meshId) == 0;
    if (sameShape)
        uploadBent(gl, cached, *bent);
    else
        upload(gl, cached, *mesh, bent);
    cached.version = version;
    return &cached;
}

void kxGlCache::upload(const kxGlFunctions& gl, Mesh& target, const osg::Mesh& mesh, const kxBentMesh* bent)
{
    free(gl, target);
    gl.GenVertexArrays(1, &target.vertexArray);
    gl.BindVertexArray(target.vertexArray);
    const std::vector<float>* const arrays[4] = {bent != nullptr ? &bent->positions : &mesh.positions(),
                                                 bent != nullptr ? &bent->normals : &mesh.normals(), &mesh.texCoords(),
                                                 &mesh.colors()};
    for (GLuint i = 0; i < 4; ++i)
    {
        if (arrays[i]->empty())
            continue;
        gl.GenBuffers(1, &target.buffers[i]);
        gl.BindBuffer(GL_ARRAY_BUFFER, target.buffers[i]);
        gl.BufferData(GL_ARRAY_BUFFER, GLsizeiptr(arrays[i]->size() * sizeof(float)), arrays[i]->data(),
                      bent != nullptr && i < 2 ? GL_STREAM_DRAW : GL_STATIC_DRAW);
        gl.VertexAttribPointer(i, Components[i], GL_FLOAT, GL_FALSE, 0, nullptr);
        gl.EnableVertexAttribArray(i);
    }
    gl.GenBuffers(1, &target.buffers[4]);
    gl.BindBuffer(GL_ELEMENT_ARRAY_BUFFER, target.buffers[4]);
    gl.BufferData(GL_ELEMENT_ARRAY_BUFFER, GLsizeiptr(mesh.indices().size() * sizeof(osg::UInt32)),
                  mesh.indices().data(), GL_STATIC_DRAW);
    gl.BindVertexArray(0);
    target.indexCount = GLsizei(mesh.indices().size());
    target.hasNormals = !arrays[1]->empty();
}

void kxGlCache::uploadBent(const kxGlFunctions& gl, Mesh& target, const kxBentMesh& bent)
{
    const std::vector<float>* const arrays[2] = {&bent.positions, &bent.normals};
    for (GLuint i = 0; i < 2; ++i)
    {
        if (target.buffers[i] == 0)
            continue;
        gl.BindBuffer(GL_ARRAY_BUFFER, target.buffers[i]);
        gl.BufferData(GL_ARRAY_BUFFER, GLsizeiptr(arrays[i]->size() * sizeof(float)), arrays[i]->data(),
                      GL_STREAM_DRAW);
    }
}

GLuint kxGlCache::texture(const kxGlFunctions& gl, kxRenderScene& scene, osg::UInt32 imageId, Meaning meaning)
{
    if (imageId == 0)
        return 0;
    const osg::UInt32 version = scene.version(imageId);
    Texture& cached = _textures[keyOf(imageId, meaning)];
    if (cached.name != 0 && cached.version == version)
        return cached.name;
    const QImage* const picture = scene.picture(imageId);
    if (picture == nullptr)
        return 0;
    QImage pixels = *picture;
    if (pixels.width() > _largest || pixels.height() > _largest)
        pixels = pixels.scaled(_largest, _largest, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                     .convertToFormat(QImage::Format_RGBA8888);
    if (cached.name == 0)
        gl.GenTextures(1, &cached.name);
    gl.ActiveTexture(GL_TEXTURE0); // a map is bound to each of the others
    gl.BindTexture(GL_TEXTURE_2D, cached.name);
    gl.PixelStorei(GL_UNPACK_ALIGNMENT, 4);
    gl.TexImage2D(GL_TEXTURE_2D, 0, meaning == Meaning::Color ? GL_SRGB8_ALPHA8 : GL_RGBA8, pixels.width(),
                  pixels.height(), 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.constBits());
    gl.GenerateMipmap(GL_TEXTURE_2D);
    gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    if (_anisotropy > 1)
        gl.TexParameterf(GL_TEXTURE_2D, Anisotropy, _anisotropy);
    cached.version = version;
    return cached.name;
}
