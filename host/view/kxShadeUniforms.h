#pragma once

#include <QVector3D>
#include <QVector4D>

#include <array>

/// Everything of a picture that its shading depends on: name and type, for the shaders and for what fills them in.
#define KX_SHADE_UNIFORMS(X)                                                                                           \
    X(vec3, uEye)        /* place of the eye */                                                                        \
    X(float, uStudio)    /* strength of the studio's light around the scene */                                         \
    X(float, uExposure)  /* factor on all light */                                                                     \
    X(int, uLightCount)  /* how many of the lights below are used */                                                   \
    X(int, uShadowLight) /* the light that throws the shadow, -1 for none */                                           \
    X(vec4, uSunX)       /* rows of the affine map from the scene to the shadow map, 0 to 1 */                         \
    X(vec4, uSunY)                                                                                                     \
    X(vec4, uSunZ)                                                                                                     \
    X(vec4, uSunInfo)    /* x: one texel, y, z: bias along the normal and in depth, w: 1 / contact height */           \
    X(vec4, uContactMap) /* from x and z of the scene to the contact map: x, y scale, z, w offset */                   \
    X(vec4, uFloor) /* x: height of the shadow's floor, y: how far it is seen, z: 1 with shadow, w: 1 with grid */     \
    X(vec4, uFloorCentre) /* xyz: middle of the grid, w: finest distance of its lines */                               \
    X(int,                                                                                                             \
      uShadowTaps) /* look-ups to each side in the shadow map; a uniform, so that drivers don't unroll them all */     \
    X(float, uGridFade) /* strength of the finest lines, 0 to 1 */                                                     \
    X(float, uAspect)   /* width / height */                                                                           \
    X(float, uIsLight)  /* 1: colours come as light, linear and without bounds, not ready for the screen */

/// Arrays of MaxLights vectors. Place: xyz position, or direction to the light; w 0 directional, 1 point, 2 spot.
/// Colour: rgb times intensity; w cosine of half the cone. Aim: xyz where a spot shines; w cosine where it begins to
/// fade.
#define KX_SHADE_ARRAYS(X)                                                                                             \
    X(vec4, uLightPlace)                                                                                               \
    X(vec4, uLightColor)                                                                                               \
    X(vec4, uLightAim)

struct kxShadeUniforms
{
    static constexpr int MaxLights = 8;
    using vec3 = QVector3D;
    using vec4 = QVector4D;

#define KX_MEMBER(type, name) type name{};
    KX_SHADE_UNIFORMS(KX_MEMBER)
#undef KX_MEMBER
#define KX_MEMBER(type, name) std::array<type, MaxLights> name;
    KX_SHADE_ARRAYS(KX_MEMBER)
#undef KX_MEMBER
};
