#pragma once

#include <osg/Types.h>

#include <cstddef>

namespace osg
{

namespace detail
{
/// Storage and componentwise comparison shared by Vector and Point.
template <class T, std::size_t N>
class Components
{
public:
    constexpr Components() : _v{} {}
    constexpr Components(T a, T b) : _v{a, b} { static_assert(N == 2, "two components"); }
    constexpr Components(T a, T b, T c) : _v{a, b, c} { static_assert(N == 3, "three components"); }
    constexpr Components(T a, T b, T c, T d) : _v{a, b, c, d} { static_assert(N == 4, "four components"); }

    T& operator[](std::size_t i) { return _v[i]; }
    constexpr const T& operator[](std::size_t i) const { return _v[i]; }
    constexpr T x() const { return _v[0]; }
    constexpr T y() const { return _v[1]; }
    constexpr T z() const { return _v[2]; }
    constexpr T w() const { return _v[3]; }
    const T* data() const { return _v; }
    T* data() { return _v; }
    static constexpr std::size_t size() { return N; }

    bool operator==(const Components& o) const
    {
        for (std::size_t i = 0; i < N; ++i)
            if (!(_v[i] == o._v[i]))
                return false;
        return true;
    }
    bool operator!=(const Components& o) const { return !(*this == o); }

protected:
    T _v[N];
};
} // namespace detail

/// A difference or direction of N components.
template <class T, std::size_t N>
class Vector : public detail::Components<T, N>
{
public:
    using detail::Components<T, N>::Components;
    Vector operator+(const Vector& o) const { return combined(o, 1); }
    Vector operator-(const Vector& o) const { return combined(o, -1); }
    Vector& operator+=(const Vector& o) { return *this = *this + o; }
    Vector& operator-=(const Vector& o) { return *this = *this - o; }
    Vector operator-() const { return Vector() - *this; }
    Vector operator*(T s) const
    {
        Vector r;
        for (std::size_t i = 0; i < N; ++i)
            r[i] = (*this)[i] * s;
        return r;
    }

private:
    Vector combined(const Vector& o, T sign) const
    {
        Vector r;
        for (std::size_t i = 0; i < N; ++i)
            r[i] = (*this)[i] + sign * o[i];
        return r;
    }
};

/// A place of N components; the difference of two places is a Vector.
template <class T, std::size_t N>
class Point : public detail::Components<T, N>
{
public:
    using detail::Components<T, N>::Components;
    Vector<T, N> operator-(const Point& o) const
    {
        Vector<T, N> r;
        for (std::size_t i = 0; i < N; ++i)
            r[i] = (*this)[i] - o[i];
        return r;
    }
    Point operator+(const Vector<T, N>& v) const
    {
        Point r;
        for (std::size_t i = 0; i < N; ++i)
            r[i] = (*this)[i] + v[i];
        return r;
    }
};

/// Red, green, blue; 0 to 1 for a colour on the screen.
template <class T>
class Color3 : public detail::Components<T, 3>
{
public:
    using detail::Components<T, 3>::Components;
    constexpr T red() const { return (*this)[0]; }
    constexpr T green() const { return (*this)[1]; }
    constexpr T blue() const { return (*this)[2]; }
};

typedef Vector<float, 2> Vec2f;
typedef Vector<float, 3> Vec3f;
typedef Vector<float, 4> Vec4f;
typedef Point<float, 2> Pnt2f;
typedef Point<float, 3> Pnt3f;
typedef Color3<float> Color3f;

} // namespace osg
