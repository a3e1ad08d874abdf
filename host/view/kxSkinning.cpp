#include "kxSkinning.h"

#include <scene/kxScene.h>

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#include <cmath>

std::vector<float> kxSkinning::jointMatrices(const osg::Skin& skin)
{
    const std::vector<osg::NodePtr> joints = skin.joints();
    const std::vector<float>& inverse = skin.inverseBindMatrices();
    std::vector<float> result;
    result.reserve(joints.size() * 16);
    for (std::size_t joint = 0; joint < joints.size(); ++joint)
    {
        QMatrix4x4 matrix;
        if (joints[joint] != osg::NullFC)
        {
            matrix = kxSceneMath::worldMatrix(joints[joint]);
            if (inverse.size() >= (joint + 1) * 16)
                matrix = matrix * QMatrix4x4(inverse.data() + joint * 16).transposed(); // Qt reads row by row
        }
        result.insert(result.end(), matrix.constData(), matrix.constData() + 16);
    }
    return result;
}

void kxSkinning::bend(const osg::Mesh& mesh, const osg::Skin& skin, const std::vector<float>& matrices,
                      std::vector<float>& positions, std::vector<float>& normals)
{
    const std::vector<float>& source = mesh.positions();
    const std::vector<float>& sourceNormals = mesh.normals();
    const std::vector<osg::UInt32>& joints = skin.vertexJoints();
    const std::vector<float>& weights = skin.vertexWeights();
    positions.resize(source.size());
    normals.resize(sourceNormals.size());

    const auto vertex = [&](std::size_t v)
    {
        float m[12] = {}; // three rows of the blended matrix
        for (std::size_t k = 0; k < 4; ++k)
        {
            const float weight = weights[4 * v + k];
            if (weight == 0)
                continue;
            const float* const j = matrices.data() + 16 * std::size_t(joints[4 * v + k]);
            for (std::size_t row = 0; row < 3; ++row)
                for (std::size_t column = 0; column < 4; ++column)
                    m[4 * row + column] += weight * j[4 * column + row];
        }
        const float *const p = source.data() + 3 * v, *const n = sourceNormals.data() + 3 * v;
        for (std::size_t row = 0; row < 3; ++row)
            positions[3 * v + row] = m[4 * row] * p[0] + m[4 * row + 1] * p[1] + m[4 * row + 2] * p[2] + m[4 * row + 3];
        if (normals.empty())
            return;
        float length = 0;
        for (std::size_t row = 0; row < 3; ++row)
        {
            const float value = m[4 * row] * n[0] + m[4 * row + 1] * n[1] + m[4 * row + 2] * n[2];
            normals[3 * v + row] = value;
            length += value * value;
        }
        const float scale = length > 0 ? 1 / std::sqrt(length) : 0;
        for (std::size_t row = 0; row < 3; ++row)
            normals[3 * v + row] *= scale;
    };
    tbb::parallel_for(tbb::blocked_range<std::size_t>(0, mesh.vertexCount(), 2048),
                      [&](const tbb::blocked_range<std::size_t>& range)
                      {
                          for (std::size_t v = range.begin(); v != range.end(); ++v)
                              vertex(v);
                      });
}
