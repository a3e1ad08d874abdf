#include "kxGlShaders.h"

#include "kxShadeUniforms.h"

namespace
{
const char ShadeSource[] =
#include "kxShadeSource.inc"
    ;

const char Head[] = "#version 330 core\n";

/// The shared source between its uniforms and look-ups.
QByteArray shading()
{
    QByteArray text(Head);
#define KX_DECLARE(type, name) text += "uniform " #type " " #name ";\n";
    KX_SHADE_UNIFORMS(KX_DECLARE)
#undef KX_DECLARE
#define KX_DECLARE(type, name)                                                                                         \
    text += "uniform " #type " " #name "[" + QByteArray::number(kxShadeUniforms::MaxLights) + "];\n";
    KX_SHADE_ARRAYS(KX_DECLARE)
#undef KX_DECLARE
    text += R"(
uniform sampler2DShadow uSunMap;
uniform sampler2D uContact;
float sunTap(vec2 place, float depth) { return textureLod(uSunMap, vec3(place, depth), 0.0); }
float contactTap(vec2 place) { return textureLod(uContact, place, 0.0).r; }
)";
    return text + ShadeSource;
}
} // namespace

QByteArray kxGlShaders::surfaceVertex()
{
    return QByteArray(Head) + R"(
in vec3 aPosition;
in vec3 aNormal;
in vec2 aTexCoord;
in vec4 aColor;
uniform mat4 uClip;
uniform mat4 uWorld;
uniform mat3 uNormal;
uniform vec4 uKept;
out vec3 vPosition;
out vec3 vNormal;
out vec2 vTexCoord;
out vec4 vColor;
void main()
{
    vec4 world = uWorld * vec4(aPosition, 1.0);
    vPosition = world.xyz;
    vNormal = uNormal * aNormal;
    vTexCoord = aTexCoord;
    vColor = aColor;
    gl_ClipDistance[0] = dot(uKept, world);
    gl_Position = uClip * world;
}
)";
}

QByteArray kxGlShaders::surfaceFragment()
{
    return shading() + R"(
in vec3 vPosition;
in vec3 vNormal;
in vec2 vTexCoord;
in vec4 vColor;
uniform vec4 uBase;     // rgb, opacity
uniform vec4 uEmissive; // rgb, alpha cut-off
uniform vec4 uSurface;  // metallic, roughness, 1 with picture, 1 with normals
uniform sampler2D uPicture;
uniform vec4 uPictures; // strength of the normals', 1 with roughness, strength of occlusion, 1 with emission; 0 without
uniform sampler2D uNormals;
uniform sampler2D uRoughness;
uniform sampler2D uOcclusion;
uniform sampler2D uGlow;
uniform vec4 uKept;
uniform float uSection; // 1: the inside is shown as the cut through a solid body
out vec4 oColor;

// The picture's normal around n: its axes follow from how place and texture coordinates change over the screen.
vec3 bumped(vec3 n)
{
    vec3 acrossPlace = dFdx(vPosition), upPlace = dFdy(vPosition);
    vec2 across = dFdx(vTexCoord), up = dFdy(vTexCoord);
    vec3 upSide = cross(upPlace, n), acrossSide = cross(n, acrossPlace);
    vec3 u = upSide * across.x + acrossSide * up.x;
    vec3 v = -(upSide * across.y + acrossSide * up.y); // rows of a picture go down
    float longest = max(dot(u, u), dot(v, v));
    vec3 m = texture(uNormals, vTexCoord).rgb * 2.0 - 1.0;
    if (longest < 1e-30)
        return n;
    m.xy *= uPictures.x;
    return normalize((u * m.x + v * m.y) * inversesqrt(longest) + n * m.z);
}

void main()
{
    vec4 base = uBase * vColor;
    if (uSurface.z > 0.5)
        base *= texture(uPicture, vTexCoord);
    if (uEmissive.w > 0.0)
    {
        if (base.a < uEmissive.w)
            discard;
        base.a = 1.0;
    }
    vec3 flatNormal = cross(dFdx(vPosition), dFdy(vPosition));
    vec3 n = uSurface.w > 0.5 && dot(vNormal, vNormal) > 1e-12 ? normalize(vNormal) : normalize(flatNormal);
    if (uSurface.w > 0.5 ? !gl_FrontFacing : dot(n, uEye - vPosition) < 0.0)
        n = -n;
    kxSurface s;
    s.position = vPosition;
    s.normal = n;
    if (uPictures.x != 0.0)
        s.normal = bumped(n);
    s.base = base.rgb;
    s.emissive = uEmissive.rgb;
    if (uPictures.w > 0.5)
        s.emissive *= texture(uGlow, vTexCoord).rgb;
    s.metallic = uSurface.x;
    s.roughness = uSurface.y;
    if (uPictures.y > 0.5)
    {
        vec2 look = texture(uRoughness, vTexCoord).gb;
        s.roughness *= look.x;
        s.metallic *= look.y;
    }
    s.open = 1.0;
    if (uPictures.z > 0.0)
        s.open = mix(1.0, texture(uOcclusion, vTexCoord).r, uPictures.z);
    if (uSection > 0.5 && !gl_FrontFacing)
        s = sectionOf(s, uKept);
    oColor = surfaceColor(s, base.a);
}
)";
}

QByteArray kxGlShaders::flatVertex()
{
    return QByteArray(Head) + R"(
in vec3 aPosition;
uniform mat4 uClip;
uniform mat4 uWorld;
uniform vec4 uKept;
out float vHeight;
void main()
{
    vec4 world = uWorld * vec4(aPosition, 1.0);
    vHeight = world.y;
    gl_ClipDistance[0] = dot(uKept, world);
    gl_Position = uClip * world;
}
)";
}

QByteArray kxGlShaders::flatFragment()
{
    return QByteArray(Head) + R"(
uniform vec4 uColor;
out vec4 oColor;
void main() { oColor = uColor; }
)";
}

QByteArray kxGlShaders::contactFragment()
{
    return QByteArray(Head) + R"(
in float vHeight;
uniform vec4 uColor; // x: the floor, y: height without effect
out vec4 oColor;
void main()
{
    float close = clamp(1.0 - (vHeight - uColor.x) / uColor.y, 0.0, 1.0);
    oColor = vec4(close * close);
}
)";
}

QByteArray kxGlShaders::screenVertex()
{
    return QByteArray(Head) + R"(
out vec2 vAt;
void main()
{
    vAt = vec2(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0);
    gl_Position = vec4(vAt, 0.9999999, 1.0);
}
)";
}

QByteArray kxGlShaders::backdropFragment()
{
    return shading() + R"(
in vec2 vAt;
out vec4 oColor;
void main() { oColor = vec4(backdrop(vAt), 1.0); }
)";
}

QByteArray kxGlShaders::floorVertex()
{
    return QByteArray(Head) + R"(
uniform mat4 uClip;
uniform vec4 uFloor;
uniform vec4 uFloorCentre;
out vec3 vPosition;
void main()
{
    vec2 corner = vec2(gl_VertexID & 1, gl_VertexID >> 1) * 2.0 - 1.0;
    vPosition = vec3(uFloorCentre.x + corner.x * uFloor.y * 3.0, uFloor.x, uFloorCentre.z + corner.y * uFloor.y * 3.0);
    gl_Position = uClip * vec4(vPosition, 1.0);
}
)";
}

QByteArray kxGlShaders::floorFragment()
{
    return shading() + R"(
in vec3 vPosition;
out vec4 oColor;
void main()
{
    vec4 color = floorColor(vPosition, fwidth(vPosition.xz));
    if (color.a <= 0.002)
        discard;
    oColor = color;
}
)";
}

QByteArray kxGlShaders::blurFragment()
{
    return QByteArray(Head) + R"(
in vec2 vAt;
uniform sampler2D uPicture;
uniform vec4 uColor; // xy: one step
out vec4 oColor;
void main()
{
    vec2 at = vAt * 0.5 + 0.5;
    float sum = 0.0;
    float weights = 0.0;
    for (int i = -8; i <= 8; ++i)
    {
        float w = exp(-float(i * i) / 24.0);
        sum += w * texture(uPicture, at + uColor.xy * float(i)).r;
        weights += w;
    }
    oColor = vec4(sum / weights);
}
)";
}

QByteArray kxGlShaders::outlineFragment()
{
    return QByteArray(Head) + R"(
in vec2 vAt;
uniform sampler2D uPicture;
uniform vec4 uColor;
uniform vec4 uStep; // xy: one pixel, z: width of the line in pixels
out vec4 oColor;
void main()
{
    vec2 at = vAt * 0.5 + 0.5;
    float inside = texture(uPicture, at).r;
    float near = 0.0;
    for (int i = 0; i < 12; ++i)
    {
        float angle = float(i) * 0.5235988;
        near = max(near, texture(uPicture, at + vec2(cos(angle), sin(angle)) * uStep.xy * uStep.z).r);
    }
    float line = near * (1.0 - inside);
    if (line < 0.01)
        discard;
    oColor = vec4(uColor.rgb, uColor.a * line);
}
)";
}

QByteArray kxGlShaders::pictureFragment()
{
    return QByteArray(Head) + R"(
in vec2 vAt;
uniform sampler2D uPicture;
out vec4 oColor;
void main() { oColor = texture(uPicture, vec2(vAt.x * 0.5 + 0.5, 0.5 - vAt.y * 0.5)); }
)";
}
