#include "kxSmoothNormals.h"

#include "kxAlike.h"

#include <QVector3D>

#include <algorithm>
#include <cmath>

namespace
{
/// Of the triangle of three places, however small or large; no length where it has no area.
QVector3D normalOf(const float* corners)
{
    double a[3], b[3];
    for (std::size_t i = 0; i < 3; ++i)
    {
        a[i] = double(corners[3 + i]) - double(corners[i]);
        b[i] = double(corners[6 + i]) - double(corners[i]);
    }
    const double n[3] = {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
    const double length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
    return length > 0 ? QVector3D(float(n[0] / length), float(n[1] / length), float(n[2] / length)) : QVector3D();
}

/// How far apart places are that only rounding tells apart: a thousandth of a usual edge, whatever lies far away.
double roundingOf(const std::vector<float>& triangles)
{
    constexpr double Share = 1.0e-3;
    double logarithms = 0, count = 0;
    for (std::size_t t = 0; t + 9 <= triangles.size(); t += 9)
    {
        double square = 0;
        for (std::size_t axis = t; axis < t + 3; ++axis)
            square += std::pow(double(triangles[axis + 3]) - double(triangles[axis]), 2);
        if (square > 0)
        {
            logarithms += std::log(square);
            ++count;
        }
    }
    return Share * std::exp(logarithms / 2 / std::max(count, 1.0));
}

/// For each place the first one that only rounding tells apart from it.
std::vector<std::uint32_t> firstAtPlaces(std::vector<float> places)
{
    const double size = roundingOf(places);
    std::vector<std::uint32_t> first;
    for (const double shift : {0.0, 0.5}) // two beside an edge of one cell are well within another one
    {
        const auto cell = [&](std::size_t place, std::size_t axis)
        { return float(std::floor(double(places[3 * place + axis]) / size + shift)); };
        const auto hash = [&cell](std::size_t place)
        {
            const float cells[] = {cell(place, 0), cell(place, 1), cell(place, 2)};
            return kxAlike::hashOf(cells, 3);
        };
        const auto isSame = [&cell](std::size_t a, std::size_t b)
        { return cell(a, 0) == cell(b, 0) && cell(a, 1) == cell(b, 1) && cell(a, 2) == cell(b, 2); };
        first = kxAlike::first(places.size() / 3, hash, isSame);
        for (std::size_t v = 0; v < first.size(); ++v)
            std::copy_n(&places[3 * std::size_t(first[v])], 3, &places[3 * v]);
    }
    return first;
}

/// Each vertex leads to another one at its place, and all of these back to it.
std::vector<std::uint32_t> ringsOf(const std::vector<float>& places)
{
    std::vector<std::uint32_t> next = firstAtPlaces(places);
    for (std::size_t v = 0; v < next.size(); ++v)
        if (const std::uint32_t first = next[v]; first != v)
        {
            next[v] = next[first];
            next[first] = std::uint32_t(v);
        }
    return next;
}

/// Of the triangle's corner.
double angleAt(const float* triangle, std::size_t corner)
{
    const auto side = [&](std::size_t other, std::size_t axis)
    { return double(triangle[3 * (other % 3) + axis]) - double(triangle[3 * corner + axis]); };
    double along = 0, first = 0, second = 0;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        along += side(corner + 1, axis) * side(corner + 2, axis);
        first += side(corner + 1, axis) * side(corner + 1, axis);
        second += side(corner + 2, axis) * side(corner + 2, axis);
    }
    const double lengths = std::sqrt(first) * std::sqrt(second);
    return lengths > 0 ? std::acos(std::clamp(along / lengths, -1.0, 1.0)) : 0;
}

/// Of a triangle, with what it adds to the normals at its place.
struct Corner
{
    std::size_t vertex;
    QVector3D normal;
    float weight;
};

/// The sum of those that turn away from the one by no more than that. Of the same ones it is the same, to the last bit.
QVector3D sumOf(const std::vector<Corner>& corners, const Corner& one, float leastCosine)
{
    QVector3D sum;
    for (const Corner& other : corners)
        if (&other == &one || QVector3D::dotProduct(one.normal, other.normal) >= leastCosine)
            sum += other.normal * other.weight;
    return sum.isNull() ? one.normal : sum.normalized();
}
} // namespace

std::vector<float> kxSmoothNormals::of(const std::vector<float>& triangles, float largestTurn)
{
    constexpr float Degrees = 57.2957795f;
    const float leastCosine = std::cos(largestTurn / Degrees);
    const std::vector<std::uint32_t> next = ringsOf(triangles);
    std::vector<float> normals(triangles.size());
    std::vector<bool> isDone(next.size());
    std::vector<Corner> corners;
    for (std::size_t v = 0; v < next.size(); ++v)
    {
        corners.clear();
        for (std::size_t at = v; !isDone[at]; at = next[at])
        {
            isDone[at] = true;
            const float* const triangle = &triangles[at / 3 * 9];
            if (const QVector3D normal = normalOf(triangle); !normal.isNull())
                corners.push_back({at, normal, float(angleAt(triangle, at % 3))});
        }
        for (const Corner& corner : corners)
        {
            const QVector3D sum = sumOf(corners, corner, leastCosine);
            for (int axis = 0; axis < 3; ++axis)
                normals[3 * corner.vertex + std::size_t(axis)] = sum[axis];
        }
    }
    return normals;
}
