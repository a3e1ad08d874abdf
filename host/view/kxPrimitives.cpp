#include "kxPrimitives.h"

#include <algorithm>
#include <cmath>

using osg::UInt32;
using osg::Vec2f;
using osg::Vec3f;

namespace
{
constexpr float Pi = 3.14159265358979f;
constexpr float Smallest = 1e-4f;
constexpr int MostSegments = 1024;

int atLeast(int count, int minimum)
{
    return std::clamp(count, minimum, MostSegments);
}
float positive(float size)
{
    return size > Smallest ? size : Smallest;
} // NaN too

/// Gathers vertices and triangles, then becomes a mesh.
class Builder
{
public:
    UInt32 vertex(const Vec3f& position, const Vec3f& normal, float u, float v)
    {
        _positions.insert(_positions.end(), {position.x(), position.y(), position.z()});
        _normals.insert(_normals.end(), {normal.x(), normal.y(), normal.z()});
        _texCoords.insert(_texCoords.end(), {u, v});
        return UInt32(_positions.size() / 3 - 1);
    }
    void triangle(UInt32 a, UInt32 b, UInt32 c) { _indices.insert(_indices.end(), {a, b, c}); }
    /// Corners against the clock, seen from outside.
    void quad(UInt32 a, UInt32 b, UInt32 c, UInt32 d)
    {
        triangle(a, b, c);
        triangle(a, c, d);
    }
    osg::MeshPtr mesh()
    {
        const osg::MeshPtr result = osg::Mesh::create();
        result->setPositions(std::move(_positions));
        result->setNormals(std::move(_normals));
        result->setTexCoords(std::move(_texCoords));
        result->setIndices(std::move(_indices));
        return result;
    }

private:
    std::vector<float> _positions, _normals, _texCoords;
    std::vector<UInt32> _indices;
};

/// Face `face` of a cube: its normal along axis face / 2, the sign by face % 2, `u` x `v` = normal.
Vec3f onFace(int face, float u, float v, float n)
{
    const std::size_t axis = std::size_t(face / 2);
    const float sign = face % 2 == 0 ? 1.0f : -1.0f;
    Vec3f p;
    p[axis] = n * sign;
    p[(axis + 1) % 3] = u * sign;
    p[(axis + 2) % 3] = v;
    return p;
}

/// Marks along half a side of length `half` with rounding `radius`: both corners' arcs, even in angle.
std::vector<float> roundedMarks(float half, float radius, int segments)
{
    std::vector<float> marks;
    for (int i = segments; i >= 0; --i)
        marks.push_back(-(half - radius) - radius * std::tan(Pi / 4 * float(i) / float(segments)));
    for (int i = 0; i <= segments; ++i)
        marks.push_back(half - radius + radius * std::tan(Pi / 4 * float(i) / float(segments)));
    return marks;
}

/// The normal of a segment of a profile, which has its outside to the right.
Vec2f profileNormal(const Vec2f& a, const Vec2f& b)
{
    const Vec2f along = b - a;
    const float length = std::sqrt(along.x() * along.x() + along.y() * along.y());
    return length > 0 ? Vec2f(along.y() / length, -along.x() / length) : Vec2f(1, 0);
}

Vec2f smoothed(const Vec2f& own, const Vec2f& neighbour, float smoothCosine)
{
    if (own.x() * neighbour.x() + own.y() * neighbour.y() < smoothCosine)
        return own;
    const Vec2f sum = own + neighbour;
    const float length = std::sqrt(sum.x() * sum.x() + sum.y() * sum.y());
    return length > 1e-6f ? Vec2f(sum.x() / length, sum.y() / length) : own;
}

void latheRing(Builder& builder, const Vec2f& place, const Vec2f& normal, float v, int segments)
{
    for (int i = 0; i <= segments; ++i)
    {
        const float turn = float(i) / float(segments);
        const float s = i == segments ? 0.0f : std::sin(2 * Pi * turn);
        const float c = i == segments ? 1.0f : std::cos(2 * Pi * turn);
        builder.vertex(Vec3f(place.x() * s, place.y(), place.x() * c),
                       Vec3f(normal.x() * s, normal.y(), normal.x() * c), turn, v);
    }
}
} // namespace

osg::MeshPtr kxPrimitives::box(const Vec3f& size)
{
    Builder builder;
    const Vec3f half(positive(size.x()) / 2, positive(size.y()) / 2, positive(size.z()) / 2);
    for (int face = 0; face < 6; ++face)
    {
        const std::size_t axis = std::size_t(face / 2);
        const float a = half[(axis + 1) % 3], b = half[(axis + 2) % 3], n = half[axis];
        const Vec3f normal = onFace(face, 0, 0, 1);
        const UInt32 first = builder.vertex(onFace(face, -a, -b, n), normal, 0, 1);
        builder.vertex(onFace(face, a, -b, n), normal, 1, 1);
        builder.vertex(onFace(face, a, b, n), normal, 1, 0);
        builder.vertex(onFace(face, -a, b, n), normal, 0, 0);
        builder.quad(first, first + 1, first + 2, first + 3);
    }
    return builder.mesh();
}

osg::MeshPtr kxPrimitives::roundedBox(const Vec3f& size, float radius, int segments)
{
    const Vec3f half(positive(size.x()) / 2, positive(size.y()) / 2, positive(size.z()) / 2);
    const float r = std::min({positive(radius), half.x(), half.y(), half.z()});
    segments = atLeast(segments, 1);
    Builder builder;
    for (int face = 0; face < 6; ++face)
    {
        const std::size_t axis = std::size_t(face / 2);
        const float halfU = half[(axis + 1) % 3], halfV = half[(axis + 2) % 3];
        const std::vector<float> us = roundedMarks(halfU, r, segments), vs = roundedMarks(halfV, r, segments);
        const UInt32 columns = UInt32(us.size());
        for (std::size_t j = 0; j < vs.size(); ++j)
            for (std::size_t i = 0; i < us.size(); ++i)
            {
                const Vec3f flat = onFace(face, us[i], vs[j], half[axis]);
                Vec3f inner, normal;
                float length = 0;
                for (std::size_t k = 0; k < 3; ++k)
                {
                    inner[k] = std::clamp(flat[k], -(half[k] - r), half[k] - r);
                    normal[k] = flat[k] - inner[k];
                    length += normal[k] * normal[k];
                }
                normal = normal * (1 / std::sqrt(length));
                const UInt32 index =
                    builder.vertex(inner + normal * r, normal, 0.5f + us[i] / (2 * halfU), 0.5f - vs[j] / (2 * halfV));
                if (i > 0 && j > 0)
                    builder.quad(index - columns - 1, index - columns, index, index - 1);
            }
    }
    return builder.mesh();
}

osg::MeshPtr kxPrimitives::sphere(float radius, int segments)
{
    radius = positive(radius);
    segments = atLeast(segments, 4);
    const int rows = std::max(2, segments / 2);
    Builder builder;
    for (int row = 0; row <= rows; ++row)
    {
        const float tilt = Pi * float(row) / float(rows); // 0 at the bottom
        const float s = row == 0 || row == rows ? 0.0f : std::sin(tilt);
        latheRing(builder, Vec2f(radius * s, -radius * std::cos(tilt)), Vec2f(s, -std::cos(tilt)),
                  1 - float(row) / float(rows), segments);
    }
    const UInt32 columns = UInt32(segments) + 1;
    for (UInt32 row = 0; row < UInt32(rows); ++row)
        for (UInt32 i = 0; i < UInt32(segments); ++i)
        {
            const UInt32 a = row * columns + i;
            if (row > 0)
                builder.triangle(a, a + 1, a + columns + 1);
            if (row + 1 < UInt32(rows))
                builder.triangle(a, a + columns + 1, a + columns);
        }
    return builder.mesh();
}

osg::MeshPtr kxPrimitives::cylinder(float radius, float height, int segments)
{
    const float r = positive(radius), h = positive(height) / 2;
    return lathe({Vec2f(0, -h), Vec2f(r, -h), Vec2f(r, h), Vec2f(0, h)}, segments);
}

osg::MeshPtr kxPrimitives::cone(float radius, float height, int segments)
{
    const float r = positive(radius), h = positive(height) / 2;
    return lathe({Vec2f(0, -h), Vec2f(r, -h), Vec2f(0, h)}, segments);
}

osg::MeshPtr kxPrimitives::torus(float radius, float tube, int segments, int tubeSegments)
{
    radius = positive(radius);
    tube = positive(tube);
    segments = atLeast(segments, 3);
    tubeSegments = atLeast(tubeSegments, 3);
    Builder builder;
    for (int row = 0; row <= tubeSegments; ++row)
    {
        const float angle = row == tubeSegments ? -Pi : -Pi + 2 * Pi * float(row) / float(tubeSegments);
        const Vec2f normal(std::cos(angle), std::sin(angle));
        latheRing(builder, Vec2f(radius + tube * normal.x(), tube * normal.y()), normal,
                  1 - float(row) / float(tubeSegments), segments);
    }
    const UInt32 columns = UInt32(segments) + 1;
    for (UInt32 row = 0; row < UInt32(tubeSegments); ++row)
        for (UInt32 i = 0; i < UInt32(segments); ++i)
        {
            const UInt32 a = row * columns + i;
            builder.quad(a, a + 1, a + columns + 1, a + columns);
        }
    return builder.mesh();
}

osg::MeshPtr kxPrimitives::plane(float width, float depth)
{
    Builder builder;
    const float x = positive(width) / 2, z = positive(depth) / 2;
    const Vec3f up(0, 1, 0);
    builder.vertex(Vec3f(-x, 0, z), up, 0, 1);
    builder.vertex(Vec3f(x, 0, z), up, 1, 1);
    builder.vertex(Vec3f(x, 0, -z), up, 1, 0);
    builder.vertex(Vec3f(-x, 0, -z), up, 0, 0);
    builder.quad(0, 1, 2, 3);
    return builder.mesh();
}

osg::MeshPtr kxPrimitives::lathe(const std::vector<Vec2f>& profile, int segments, float smoothAngle)
{
    if (profile.size() < 2)
        return osg::MeshPtr();
    segments = atLeast(segments, 3);
    const float cosine = std::cos(smoothAngle * Pi / 180);
    std::vector<float> lengths(1, 0.0f);
    for (std::size_t i = 1; i < profile.size(); ++i)
        lengths.push_back(lengths.back() +
                          std::hypot(profile[i].x() - profile[i - 1].x(), profile[i].y() - profile[i - 1].y()));
    const float total = std::max(lengths.back(), Smallest);

    Builder builder;
    const UInt32 columns = UInt32(segments) + 1;
    UInt32 first = 0;
    for (std::size_t i = 0; i + 1 < profile.size(); ++i)
    {
        const Vec2f own = profileNormal(profile[i], profile[i + 1]);
        const Vec2f before = i > 0 ? profileNormal(profile[i - 1], profile[i]) : own;
        const Vec2f after = i + 2 < profile.size() ? profileNormal(profile[i + 1], profile[i + 2]) : own;
        latheRing(builder, profile[i], smoothed(own, before, cosine), 1 - lengths[i] / total, segments);
        latheRing(builder, profile[i + 1], smoothed(own, after, cosine), 1 - lengths[i + 1] / total, segments);
        for (UInt32 k = 0; k < UInt32(segments); ++k)
        {
            const UInt32 a = first + k;
            if (profile[i].x() > 0)
                builder.triangle(a, a + 1, a + columns + 1);
            if (profile[i + 1].x() > 0)
                builder.triangle(a, a + columns + 1, a + columns);
        }
        first += 2 * columns;
    }
    return builder.mesh();
}
