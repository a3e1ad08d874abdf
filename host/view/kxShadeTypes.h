#pragma once

#include <algorithm>
#include <cmath>

/// The vectors and functions of the shading language, as far as kxShadeSource.inc uses them.
namespace kxShade
{
struct vec2
{
    float x = 0, y = 0;
    vec2() = default;
    vec2(float a, float b) : x(a), y(b) {}
};
struct vec3
{
    float x = 0, y = 0, z = 0;
    vec3() = default;
    explicit vec3(float a) : x(a), y(a), z(a) {}
    vec3(float a, float b, float c) : x(a), y(b), z(c) {}
};
struct vec4
{
    float x = 0, y = 0, z = 0, w = 0;
    vec4() = default;
    vec4(float a, float b, float c, float d) : x(a), y(b), z(c), w(d) {}
    vec4(const vec3& v, float d) : x(v.x), y(v.y), z(v.z), w(d) {}
};

inline vec2 operator+(vec2 a, vec2 b)
{
    return vec2(a.x + b.x, a.y + b.y);
}
inline vec2 operator-(vec2 a, vec2 b)
{
    return vec2(a.x - b.x, a.y - b.y);
}
inline vec2 operator*(vec2 a, float s)
{
    return vec2(a.x * s, a.y * s);
}
inline vec3 operator+(const vec3& a, const vec3& b)
{
    return vec3(a.x + b.x, a.y + b.y, a.z + b.z);
}
inline vec3 operator-(const vec3& a, const vec3& b)
{
    return vec3(a.x - b.x, a.y - b.y, a.z - b.z);
}
inline vec3 operator-(const vec3& a)
{
    return vec3(-a.x, -a.y, -a.z);
}
inline vec3 operator*(const vec3& a, const vec3& b)
{
    return vec3(a.x * b.x, a.y * b.y, a.z * b.z);
}
inline vec3 operator*(const vec3& a, float s)
{
    return vec3(a.x * s, a.y * s, a.z * s);
}
inline vec3 operator/(const vec3& a, float s)
{
    return a * (1.0f / s);
}
inline vec3 operator/(const vec3& a, const vec3& b)
{
    return vec3(a.x / b.x, a.y / b.y, a.z / b.z);
}

inline float dot(vec2 a, vec2 b)
{
    return a.x * b.x + a.y * b.y;
}
inline float dot(const vec3& a, const vec3& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline vec3 cross(const vec3& a, const vec3& b)
{
    return vec3(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}
inline float length(vec2 a)
{
    return std::sqrt(dot(a, a));
}
inline float length(const vec3& a)
{
    return std::sqrt(dot(a, a));
}
inline vec3 normalize(const vec3& a)
{
    const float l = length(a);
    return l > 0 ? a * (1.0f / l) : a;
}
inline float min(float a, float b)
{
    return a < b ? a : b;
}
inline float max(float a, float b)
{
    return a > b ? a : b;
}
inline float clamp(float x, float low, float high)
{
    return min(max(x, low), high);
}
inline vec3 clamp(const vec3& a, float low, float high)
{
    return vec3(clamp(a.x, low, high), clamp(a.y, low, high), clamp(a.z, low, high));
}
inline float mix(float a, float b, float t)
{
    return a + (b - a) * t;
}
inline vec3 mix(const vec3& a, const vec3& b, float t)
{
    return a + (b - a) * t;
}
inline float smoothstep(float low, float high, float x)
{
    const float t = clamp((x - low) / (high - low), 0.0f, 1.0f);
    return t * t * (3.0f - 2.0f * t);
}
inline vec3 reflect(const vec3& i, const vec3& n)
{
    return i - n * (2.0f * dot(n, i));
}
inline float fract(float x)
{
    return x - std::floor(x);
}
inline float exp2(float x)
{
    return std::exp2(x);
}
inline float sqrt(float x)
{
    return std::sqrt(x);
}
inline float abs(float x)
{
    return std::fabs(x);
}
inline float pow(float x, float y)
{
    return std::pow(x, y);
}
} // namespace kxShade
