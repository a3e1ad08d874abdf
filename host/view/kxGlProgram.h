#pragma once

#include "kxGlFunctions.h"

#include <QByteArray>
#include <QMatrix4x4>

#include <string>
#include <unordered_map>

struct kxShadeUniforms;

/// One linked program and the places of its uniforms. Freed by release(), while its context is current.
class kxGlProgram
{
public:
    /// Vertex attributes lie at 0 position, 1 normal, 2 texture coordinates, 3 colour. False, with the compiler's words
    /// on the standard error stream, where it doesn't link.
    bool build(const kxGlFunctions& gl, const char* name, const QByteArray& vertex, const QByteArray& fragment);
    void release(const kxGlFunctions& gl);

    void use(const kxGlFunctions& gl) const { gl.UseProgram(_program); }
    /// -1, which sets nothing, for a name that the program doesn't use. `name` must be a literal.
    GLint place(const kxGlFunctions& gl, const char* name);
    void set(const kxGlFunctions& gl, const char* name, float value) { gl.Uniform1f(place(gl, name), value); }
    void set(const kxGlFunctions& gl, const char* name, int value) { gl.Uniform1i(place(gl, name), value); }
    void set(const kxGlFunctions& gl, const char* name, float a, float b, float c, float d)
    {
        gl.Uniform4f(place(gl, name), a, b, c, d);
    }
    void set(const kxGlFunctions& gl, const char* name, const QMatrix4x4& matrix)
    {
        gl.UniformMatrix4fv(place(gl, name), 1, GL_FALSE, matrix.constData());
    }
    void set(const kxGlFunctions& gl, const kxShadeUniforms& uniforms);

private:
    GLuint _program = 0;
    std::unordered_map<const void*, GLint> _places; // by the address of the literal
};
