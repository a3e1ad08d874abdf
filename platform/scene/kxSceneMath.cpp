#include <scene/kxScene.h>

#include <scene/Mesh.h>

#include <osg/Finite.h>

#include <QQuaternion>

#include <array>
#include <cmath>

using namespace osg;

namespace
{
constexpr double Degrees = 57.295779513082320877;

/// The angle equal to `degrees` up to whole turns that lies nearest to `nearest`.
double unrolled(double degrees, double nearest)
{
    return degrees + 360.0 * std::round((nearest - degrees) / 360.0);
}

double squaredDistance(const std::array<double, 3>& a, const Vec3f& b)
{
    double sum = 0;
    for (std::size_t i = 0; i < 3; ++i)
        sum += (a[i] - double(b[i])) * (a[i] - double(b[i]));
    return sum;
}

void extendByMesh(BoxVolume& volume, const Mesh& mesh, const QMatrix4x4& matrix)
{
    if (mesh.bounds().isEmpty())
        return;
    Pnt3f low, high;
    mesh.bounds().getBounds(low, high);
    for (unsigned corner = 0; corner < 8; ++corner)
    {
        const QVector3D p = matrix.map(QVector3D(corner & 1 ? high.x() : low.x(), corner & 2 ? high.y() : low.y(),
                                                 corner & 4 ? high.z() : low.z()));
        volume.extendBy(Pnt3f(p.x(), p.y(), p.z()));
    }
}

/// The box of a skinned mesh: that of its vertices where its joints are, taken joint by joint.
void extendBySkin(BoxVolume& volume, const Mesh& mesh, const Skin& skin)
{
    const std::vector<NodePtr> joints = skin.joints();
    std::vector<BoxVolume> boxes(joints.size());
    for (UInt32 v = 0; v < mesh.vertexCount(); ++v)
        for (std::size_t k = 0; k < 4; ++k)
            if (skin.vertexWeights()[4 * std::size_t(v) + k] > 0.0f)
            {
                const float* const place = mesh.positions().data() + 3 * std::size_t(v);
                boxes[skin.vertexJoints()[4 * std::size_t(v) + k]].extendBy(Pnt3f(place[0], place[1], place[2]));
            }
    for (std::size_t j = 0; j < joints.size(); ++j)
    {
        if (joints[j] == NullFC || boxes[j].isEmpty())
            continue;
        const float* const bind = &skin.inverseBindMatrices()[16 * j];
        const QMatrix4x4 inverseBind = QMatrix4x4(bind).transposed();
        const QMatrix4x4 matrix = kxSceneMath::worldMatrix(joints[j]) * inverseBind;
        Pnt3f low, high;
        boxes[j].getBounds(low, high);
        for (unsigned corner = 0; corner < 8; ++corner)
        {
            const QVector3D p = matrix.map(QVector3D(corner & 1 ? high.x() : low.x(), corner & 2 ? high.y() : low.y(),
                                                     corner & 4 ? high.z() : low.z()));
            volume.extendBy(Pnt3f(p.x(), p.y(), p.z()));
        }
    }
}

void extendByNode(BoxVolume& volume, const NodePtr& node, const QMatrix4x4& parentMatrix)
{
    if (!node->isActive())
        return;
    const QMatrix4x4 matrix = parentMatrix * kxSceneMath::localMatrix(node);
    if (const GeometryPtr geometry = GeometryPtr::dcast(node->getCore()); geometry != NullFC)
    {
        const MeshPtr mesh = MeshPtr::dcast(geometry->getMesh());
        const SkinPtr skin = SkinPtr::dcast(geometry->getSkin());
        if (mesh != NullFC && skin != NullFC && skin->isValid(mesh->vertexCount()))
            extendBySkin(volume, *mesh, *skin);
        else if (mesh != NullFC)
            extendByMesh(volume, *mesh, matrix);
    }
    const SwitchPtr choice = SwitchPtr::dcast(node->getCore());
    for (UInt32 i = 0; i < node->getNChildren(); ++i)
        if (choice == NullFC || choice->getChoice() == Switch::All || choice->getChoice() == Int32(i))
            extendByNode(volume, node->getChild(i), matrix);
}
} // namespace

namespace kxSceneMath
{

QMatrix4x4 localMatrix(const NodePtr& node)
{
    const TransformPtr transform = node == NullFC ? TransformPtr() : TransformPtr::dcast(node->getCore());
    return transform == NullFC ? QMatrix4x4() : transform->getMatrix();
}

QMatrix4x4 worldMatrix(const NodePtr& node)
{
    QMatrix4x4 matrix;
    for (NodePtr above = node; above != NullFC; above = above->getParent())
        matrix = localMatrix(above) * matrix;
    return matrix;
}

// Shoemake, "Euler Angle Conversion", Graphics Gems IV, for R = Rz * Ry * Rx.
Vec3f eulerFromQuaternion(float w, float x, float y, float z, const Vec3f& nearest)
{
    const double n = double(w) * w + double(x) * x + double(y) * y + double(z) * z;
    if (!(n > 0) || !std::isfinite(n))
        return nearest;
    const double s = 2.0 / n;
    const double r00 = 1 - s * (double(y) * y + double(z) * z);
    const double r10 = s * (double(x) * y + double(w) * z);
    const double r20 = s * (double(x) * z - double(w) * y);
    const double r21 = s * (double(y) * z + double(w) * x);
    const double r22 = 1 - s * (double(x) * x + double(y) * y);
    const double r11 = 1 - s * (double(x) * x + double(z) * z);
    const double r12 = s * (double(y) * z - double(w) * x);

    const double cosY = std::hypot(r00, r10);
    if (cosY < 1e-6)
    {
        // Only one combination of x and z is known; x keeps its present value and z takes the rest.
        const double yAngle = std::atan2(-r20, cosY) * Degrees;
        const double combined = std::atan2(-r12, r11) * Degrees; // x - z above, x + z below
        const double zAngle = r20 < 0 ? double(nearest.x()) - combined : combined - double(nearest.x());
        return Vec3f(nearest.x(), float(unrolled(yAngle, double(nearest.y()))),
                     float(unrolled(zAngle, double(nearest.z()))));
    }
    std::array<double, 3> first = {std::atan2(r21, r22) * Degrees, std::atan2(-r20, cosY) * Degrees,
                                   std::atan2(r10, r00) * Degrees};
    std::array<double, 3> second = {first[0] + 180.0, 180.0 - first[1], first[2] + 180.0};
    for (std::size_t i = 0; i < 3; ++i)
    {
        first[i] = unrolled(first[i], double(nearest[i]));
        second[i] = unrolled(second[i], double(nearest[i]));
    }
    const std::array<double, 3>& best =
        squaredDistance(second, nearest) < squaredDistance(first, nearest) ? second : first;
    return Vec3f(float(best[0]), float(best[1]), float(best[2]));
}

void quaternionFromEuler(const Vec3f& degrees, float& w, float& x, float& y, float& z)
{
    const double a = double(degrees.x()) / Degrees / 2, b = double(degrees.y()) / Degrees / 2,
                 c = double(degrees.z()) / Degrees / 2;
    const double cx = std::cos(a), sx = std::sin(a), cy = std::cos(b), sy = std::sin(b), cz = std::cos(c),
                 sz = std::sin(c);
    w = float(cz * cy * cx + sz * sy * sx);
    x = float(cz * cy * sx - sz * sy * cx);
    y = float(cz * sy * cx + sz * cy * sx);
    z = float(sz * cy * cx - cz * sy * sx);
}

bool setLocalMatrix(const NodePtr& node, const QMatrix4x4& matrix)
{
    const TransformPtr transform = node == NullFC ? TransformPtr() : TransformPtr::dcast(node->getCore());
    if (transform == NullFC)
        return false;
    if (!isFinite(matrix.constData(), 16))
        return false;
    QVector3D axis[3];
    float length[3];
    for (int i = 0; i < 3; ++i)
    {
        axis[i] = matrix.column(i).toVector3D();
        length[i] = axis[i].length();
        if (!(length[i] > 1e-12f))
            return false;
        axis[i] /= length[i];
    }
    // Shear goes: the axes are made square again, the first one kept.
    axis[1] = (axis[1] - axis[0] * QVector3D::dotProduct(axis[0], axis[1])).normalized();
    if (axis[1].isNull())
        return false;
    const QVector3D third = QVector3D::crossProduct(axis[0], axis[1]);
    if (QVector3D::dotProduct(third, axis[2]) < 0)
        length[2] = -length[2]; // a mirror image keeps its mirror in the scale
    axis[2] = third;

    QMatrix3x3 rotation;
    for (int column = 0; column < 3; ++column)
        for (int row = 0; row < 3; ++row)
            rotation(row, column) = axis[column][row];
    float ow, ox, oy, oz;
    quaternionFromEuler(transform->getEulerRotationOrientation(), ow, ox, oy, oz);
    const QQuaternion q = QQuaternion::fromRotationMatrix(rotation) * QQuaternion(ow, ox, oy, oz).conjugated();

    const QVector3D place = matrix.column(3).toVector3D();
    transform->setTranslation(Vec3f(place.x(), place.y(), place.z()));
    transform->setEulerRotation(eulerFromQuaternion(q.scalar(), q.x(), q.y(), q.z(), transform->getEulerRotation()));
    transform->setScale(Vec3f(length[0], length[1], length[2]));
    return true;
}

BoxVolume worldBounds(const NodePtr& node)
{
    BoxVolume volume;
    if (node != NullFC)
        extendByNode(volume, node, worldMatrix(node->getParent()));
    return volume;
}

bool isShown(const NodePtr& node)
{
    NodePtr below;
    for (NodePtr above = node; above != NullFC; below = above, above = above->getParent())
    {
        if (!above->isActive())
            return false;
        const SwitchPtr choice = SwitchPtr::dcast(above->getCore());
        if (choice != NullFC && below != NullFC && choice->getChoice() != Switch::All &&
            choice->getChoice() != above->findChild(below))
            return false;
    }
    return node != NullFC;
}

} // namespace kxSceneMath

void osg::Node::getWorldVolume(BoxVolume& volume) const
{
    volume = kxSceneMath::worldBounds(NodePtr(const_cast<Node*>(this)));
}
