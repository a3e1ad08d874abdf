#include <files/assimp/kxAssimpLooks.h>

#include <files/assimp/kxAssimpUnits.h>
#include <files/assimp/kxCameras3ds.h>

#include <cmath>

namespace
{
QVector3D column(const aiMatrix4x4& m, unsigned index)
{
    return QVector3D(m[0][index], m[1][index], m[2][index]);
}

/// A look at a point comes with the up that the file names, which needn't be square to it: the look stays.
void straighten(aiNode& node)
{
    constexpr float Tolerance = 1e-4f;
    aiMatrix4x4& m = node.mTransformation;
    const QVector3D right = column(m, 0), up = column(m, 1), back = column(m, 2);
    const float skew = QVector3D::dotProduct(up.normalized(), back.normalized());
    if (std::abs(skew) < Tolerance || std::abs(skew) > 1 - Tolerance)
        return;
    const QMatrix4x4 look = kxAssimpLooks::matrix(QVector3D(), -back, up);
    const float lengths[] = {right.length(), up.length(), back.length()};
    for (unsigned c = 0; c < 3; ++c)
        for (unsigned r = 0; r < 3; ++r)
            m[r][c] = look(int(r), int(c)) * lengths[c];
}
} // namespace

void kxAssimpLooks::mend(const QString& path, aiScene& scene)
{
    const std::string format = kxAssimpUnits::format(scene);
    if (scene.mRootNode == nullptr)
        return;
    if (format == "Discreet 3DS Importer")
        kxCameras3ds::turn(path, scene);
    // Their nodes are turned as those of all others; what looks down their +z are the cameras of the importer.
    if (format == "ASE Importer" || format == "LightWave Scene Importer")
        for (unsigned i = 0; i < scene.mNumCameras; ++i)
            scene.mCameras[i]->mLookAt = aiVector3D(0, 0, -1);
    if (format != "Collada Importer")
        return;
    // The file's unit is a scale of the root, which lenses know nothing of.
    const aiMatrix4x4& root = scene.mRootNode->mTransformation;
    const float unit = aiVector3D(root.a3, root.b3, root.c3).Length();
    for (unsigned i = 0; i < scene.mNumCameras; ++i)
    {
        if (aiNode* const node = scene.mRootNode->FindNode(scene.mCameras[i]->mName))
            straighten(*node);
        scene.mCameras[i]->mClipPlaneNear *= unit;
        scene.mCameras[i]->mClipPlaneFar *= unit;
    }
}

QMatrix4x4 kxAssimpLooks::matrix(const QVector3D& place, const QVector3D& direction, const QVector3D& up)
{
    QVector3D back = -direction.normalized();
    if (back.isNull())
        back = QVector3D(0, 0, 1);
    QVector3D right = QVector3D::crossProduct(up, back).normalized();
    if (right.isNull())
        right = QVector3D::crossProduct(std::abs(back.y()) < 0.9f ? QVector3D(0, 1, 0) : QVector3D(1, 0, 0), back)
                    .normalized();
    const QVector3D newUp = QVector3D::crossProduct(back, right);
    QMatrix4x4 matrix;
    matrix.setColumn(0, QVector4D(right, 0));
    matrix.setColumn(1, QVector4D(newUp, 0));
    matrix.setColumn(2, QVector4D(back, 0));
    matrix.setColumn(3, QVector4D(place, 1));
    return matrix;
}
