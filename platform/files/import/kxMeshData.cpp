#include <files/import/kxMeshData.h>

#include "kxAlike.h"
#include "kxSmoothNormals.h"

#include <osg/Finite.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
template <class T>
void spread(std::vector<T>& values, const std::vector<std::uint32_t>& indices, std::size_t components)
{
    if (values.empty())
        return;
    std::vector<T> result;
    result.reserve(indices.size() * components);
    for (const std::uint32_t index : indices)
        result.insert(result.end(), values.begin() + long(index * components),
                      values.begin() + long((index + 1) * components));
    values.swap(result);
}
} // namespace

void kxMeshData::unshare()
{
    forArrays([this](auto& values, std::size_t components) { spread(values, indices, components); });
    for (std::size_t i = 0; i < indices.size(); ++i)
        indices[i] = std::uint32_t(i);
}

void kxMeshData::smooth(float largestTurn)
{
    unshare();
    normals = kxSmoothNormals::of(positions, largestTurn);
}

void kxMeshData::join()
{
    const auto hash = [this](std::size_t v)
    {
        std::size_t all = 0;
        forArrays([&](const auto& values, std::size_t components)
                  { all = values.empty() ? all : kxAlike::hashOf(&values[v * components], components, all); });
        return all;
    };
    const auto isSame = [this](std::size_t a, std::size_t b)
    {
        bool all = true;
        forArrays(
            [&](const auto& values, std::size_t components)
            {
                const auto* const rows = values.data();
                all = all && (values.empty() ||
                              std::equal(rows + a * components, rows + (a + 1) * components, rows + b * components));
            });
        return all;
    };
    std::vector<std::uint32_t> kept = kxAlike::first(vertexCount(), hash, isSame);
    std::size_t count = 0;
    for (std::size_t v = 0; v < kept.size(); ++v)
    {
        if (kept[v] != v)
        {
            kept[v] = kept[kept[v]];
            continue;
        }
        forArrays(
            [&](auto& values, std::size_t components)
            {
                if (!values.empty())
                    std::copy_n(values.begin() + long(v * components), components,
                                values.begin() + long(count * components));
            });
        kept[v] = std::uint32_t(count++);
    }
    for (std::uint32_t& index : indices)
        index = kept[index];
    forArrays(
        [&](auto& values, std::size_t components)
        {
            if (values.empty())
                return;
            values.resize(count * components);
            values.shrink_to_fit();
        });
}

bool kxMeshData::repair()
{
    const std::size_t vertices = vertexCount();
    if (positions.size() % 3 != 0 || !osg::isFinite(positions) || indices.size() % 3 != 0 ||
        std::any_of(indices.begin(), indices.end(), [vertices](std::uint32_t index) { return index >= vertices; }))
        return false;
    const auto check = [vertices](std::vector<float>& values, std::size_t components)
    {
        if (values.size() != vertices * components || !osg::isFinite(values))
            values.clear();
    };
    check(normals, 3);
    check(texCoords, 2);
    check(colors, 4);
    check(weights, 4);
    if (joints.size() != vertices * 4 || weights.empty())
    {
        joints.clear();
        weights.clear();
    }
    return true;
}

void kxMeshData::normalizeWeights()
{
    for (std::size_t v = 0; v + 3 < weights.size(); v += 4)
    {
        float sum = 0;
        for (std::size_t k = 0; k < 4; ++k)
        {
            weights[v + k] = std::max(weights[v + k], 0.0f);
            sum += weights[v + k];
        }
        if (sum > 0)
            for (std::size_t k = 0; k < 4; ++k)
                weights[v + k] /= sum;
        else
            weights[v] = 1.0f;
    }
}

MeshPtr kxMeshData::makeMesh()
{
    const MeshPtr mesh = Mesh::create();
    mesh->setPositions(std::move(positions));
    mesh->setNormals(std::move(normals));
    mesh->setTexCoords(std::move(texCoords));
    mesh->setColors(std::move(colors));
    mesh->setIndices(std::move(indices));
    if (mesh->normals().empty())
        mesh->computeNormals();
    return mesh;
}
