#include "kxGlProgram.h"

#include "kxShadeUniforms.h"

#include <QDebug>

namespace
{
GLuint compiled(const kxGlFunctions& gl, const char* name, GLenum kind, const QByteArray& source)
{
    const GLuint shader = gl.CreateShader(kind);
    const char* const text = source.constData();
    gl.ShaderSource(shader, 1, &text, nullptr);
    gl.CompileShader(shader);
    GLint good = GL_FALSE;
    gl.GetShaderiv(shader, GL_COMPILE_STATUS, &good);
    if (good == GL_TRUE)
        return shader;
    char words[2048] = {};
    gl.GetShaderInfoLog(shader, sizeof words, nullptr, words);
    qWarning("The shader \"%s\" doesn't compile: %s", name, words);
    gl.DeleteShader(shader);
    return 0;
}
} // namespace

bool kxGlProgram::build(const kxGlFunctions& gl, const char* name, const QByteArray& vertex, const QByteArray& fragment)
{
    _places.clear();
    const GLuint parts[2] = {compiled(gl, name, GL_VERTEX_SHADER, vertex),
                             compiled(gl, name, GL_FRAGMENT_SHADER, fragment)};
    GLint good = GL_FALSE;
    if (parts[0] != 0 && parts[1] != 0)
    {
        _program = gl.CreateProgram();
        gl.BindAttribLocation(_program, 0, "aPosition");
        gl.BindAttribLocation(_program, 1, "aNormal");
        gl.BindAttribLocation(_program, 2, "aTexCoord");
        gl.BindAttribLocation(_program, 3, "aColor");
        for (const GLuint part : parts)
            gl.AttachShader(_program, part);
        gl.LinkProgram(_program);
        gl.GetProgramiv(_program, GL_LINK_STATUS, &good);
        if (good != GL_TRUE)
        {
            char words[2048] = {};
            gl.GetProgramInfoLog(_program, sizeof words, nullptr, words);
            qWarning("The shader \"%s\" doesn't link: %s", name, words);
        }
    }
    for (const GLuint part : parts)
        if (part != 0)
            gl.DeleteShader(part);
    return good == GL_TRUE;
}

void kxGlProgram::release(const kxGlFunctions& gl)
{
    gl.DeleteProgram(_program);
    _program = 0;
}

GLint kxGlProgram::place(const kxGlFunctions& gl, const char* name)
{
    const auto found = _places.find(name);
    if (found != _places.end())
        return found->second;
    const GLint place = gl.GetUniformLocation(_program, name);
    _places.emplace(name, place);
    return place;
}

namespace
{
void upload(const kxGlFunctions& gl, GLint place, float value)
{
    gl.Uniform1f(place, value);
}
void upload(const kxGlFunctions& gl, GLint place, int value)
{
    gl.Uniform1i(place, value);
}
void upload(const kxGlFunctions& gl, GLint place, const QVector3D& value)
{
    gl.Uniform3f(place, value.x(), value.y(), value.z());
}
void upload(const kxGlFunctions& gl, GLint place, const QVector4D& value)
{
    gl.Uniform4f(place, value.x(), value.y(), value.z(), value.w());
}
template <std::size_t Count>
void upload(const kxGlFunctions& gl, GLint place, const std::array<QVector4D, Count>& values)
{
    static_assert(sizeof values == Count * 4 * sizeof(float), "four floats a vector");
    gl.Uniform4fv(place, GLsizei(Count), reinterpret_cast<const float*>(values.data()));
}
} // namespace

void kxGlProgram::set(const kxGlFunctions& gl, const kxShadeUniforms& uniforms)
{
#define KX_UPLOAD(type, name) upload(gl, place(gl, #name), uniforms.name);
    KX_SHADE_UNIFORMS(KX_UPLOAD)
    KX_SHADE_ARRAYS(KX_UPLOAD)
#undef KX_UPLOAD
}
