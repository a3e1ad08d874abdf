#pragma once

// The prototypes give the types below; nothing links against them. Not to be included where Qt's OpenGL headers are.
#define GL_GLEXT_PROTOTYPES
#include <GL/glcorearb.h>

#include <functional>

// clang-format off
#define KX_GL_FUNCTIONS(X)                                                                                      \
    X(ActiveTexture) X(AttachShader) X(BindAttribLocation) X(BindBuffer) X(BindFramebuffer)                     \
    X(BindRenderbuffer) X(BindTexture) X(BindVertexArray) X(BlendFuncSeparate) X(BlitFramebuffer)               \
    X(BufferData) X(BufferSubData) X(CheckFramebufferStatus) X(Clear) X(ClearColor) X(ColorMask)                \
    X(CompileShader) X(CreateProgram) X(CreateShader) X(CullFace) X(DeleteBuffers) X(DeleteFramebuffers)        \
    X(DeleteProgram) X(DeleteRenderbuffers) X(DeleteShader) X(DeleteTextures) X(DeleteVertexArrays)             \
    X(DepthFunc) X(DepthMask) X(Disable) X(DisableVertexAttribArray) X(DrawArrays) X(DrawBuffer)                \
    X(DrawElements) X(Enable) X(EnableVertexAttribArray) X(Finish) X(FramebufferRenderbuffer)                   \
    X(FramebufferTexture2D) X(FrontFace) X(GenBuffers) X(GenFramebuffers) X(GenRenderbuffers)                   \
    X(GenTextures) X(GenVertexArrays) X(GenerateMipmap) X(GetAttribLocation) X(GetError) X(GetFloatv)           \
    X(GetIntegerv) X(GetProgramInfoLog) X(GetProgramiv) X(GetShaderInfoLog) X(GetShaderiv) X(GetString)         \
    X(GetStringi) X(GetUniformLocation) X(LinkProgram) X(PixelStorei) X(PolygonMode) X(PolygonOffset)           \
    X(ReadBuffer) X(ReadPixels) X(RenderbufferStorageMultisample) X(ShaderSource) X(TexImage2D)                 \
    X(TexParameterf) X(TexParameterfv) X(TexParameteri) X(TexSubImage2D) X(Uniform1f) X(Uniform1i)              \
    X(Uniform3f) X(Uniform3fv) X(Uniform4f) X(Uniform4fv) X(UniformMatrix3fv) X(UniformMatrix4fv)               \
    X(UseProgram) X(VertexAttrib4f) X(VertexAttribPointer) X(Viewport)
// clang-format on

/// The entry points of one OpenGL context, whoever made it.
struct kxGlFunctions
{
    typedef std::function<void*(const char* name)> Loader;

#define KX_MEMBER(name) decltype(&::gl##name) name = nullptr;
    KX_GL_FUNCTIONS(KX_MEMBER)
#undef KX_MEMBER

    /// False where one is missing, or the context is older than 3.3. The context must be current.
    bool load(const Loader& loader);
};
