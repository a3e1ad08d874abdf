#include "kxGlTarget.h"

#include <algorithm>

namespace
{
GLuint newTexture(const kxGlFunctions& gl, GLint format, GLenum layout, GLenum type, const QSize& size)
{
    GLuint texture = 0;
    gl.GenTextures(1, &texture);
    gl.BindTexture(GL_TEXTURE_2D, texture);
    gl.TexImage2D(GL_TEXTURE_2D, 0, format, size.width(), size.height(), 0, layout, type, nullptr);
    gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    return texture;
}

GLuint newBuffer(const kxGlFunctions& gl, GLenum format, GLsizei samples, const QSize& size)
{
    GLuint buffer = 0;
    gl.GenRenderbuffers(1, &buffer);
    gl.BindRenderbuffer(GL_RENDERBUFFER, buffer);
    gl.RenderbufferStorageMultisample(GL_RENDERBUFFER, samples, format, size.width(), size.height());
    return buffer;
}

void setEdge(const kxGlFunctions& gl, GLenum wrap, const float (&border)[4])
{
    gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GLint(wrap));
    gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GLint(wrap));
    gl.TexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, border);
}
} // namespace

bool kxGlTarget::prepare(const kxGlFunctions& gl, Kind kind, const QSize& size)
{
    if (_frameBuffer != 0 && size == _size)
        return true;
    release(gl);
    _size = size;
    gl.GenFramebuffers(1, &_frameBuffer);
    gl.BindFramebuffer(GL_FRAMEBUFFER, _frameBuffer);
    if (kind == Multisampled || kind == SingleSample || kind == LightSamples)
    {
        GLint most = 0;
        gl.GetIntegerv(GL_MAX_SAMPLES, &most);
        const GLsizei samples = kind == SingleSample ? 0 : std::min<GLint>(4, most);
        _color = newBuffer(gl, kind == LightSamples ? GL_RGBA16F : GL_RGBA8, samples, size);
        _depth = newBuffer(gl, GL_DEPTH_COMPONENT24, samples, size);
        gl.FramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, _color);
    }
    else if (kind == Shadow)
    {
        _texture = newTexture(gl, GL_DEPTH_COMPONENT24, GL_DEPTH_COMPONENT, GL_UNSIGNED_INT, size);
        setEdge(gl, GL_CLAMP_TO_BORDER, {1, 1, 1, 1});
        gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_REF_TO_TEXTURE);
        gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL);
        gl.FramebufferTexture2D(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_TEXTURE_2D, _texture, 0);
        gl.DrawBuffer(GL_NONE);
        gl.ReadBuffer(GL_NONE);
    }
    else
    {
        const bool map = kind == Map;
        const GLint format = kind == Light ? GL_RGBA16F : GL_RGBA8;
        _texture = newTexture(gl, map ? GL_R8 : format, map ? GL_RED : GL_RGBA, GL_UNSIGNED_BYTE, size);
        setEdge(gl, map ? GL_CLAMP_TO_BORDER : GL_CLAMP_TO_EDGE, {0, 0, 0, 0});
        if (map)
            _depth = newBuffer(gl, GL_DEPTH_COMPONENT24, 0, size);
        gl.FramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, _texture, 0);
    }
    if (_depth != 0)
        gl.FramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, _depth);
    return gl.CheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

void kxGlTarget::release(const kxGlFunctions& gl)
{
    gl.DeleteFramebuffers(1, &_frameBuffer);
    gl.DeleteTextures(1, &_texture);
    gl.DeleteRenderbuffers(1, &_color);
    gl.DeleteRenderbuffers(1, &_depth);
    *this = kxGlTarget();
}

void kxGlTarget::bind(const kxGlFunctions& gl) const
{
    gl.BindFramebuffer(GL_FRAMEBUFFER, _frameBuffer);
    gl.Viewport(0, 0, _size.width(), _size.height());
}
