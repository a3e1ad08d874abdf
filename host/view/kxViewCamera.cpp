#include "kxViewCamera.h"

#include <scene/CameraLight.h>
#include <scene/kxScene.h>

#include <QtMath>

#include <algorithm>
#include <cmath>

QMatrix4x4 kxViewCamera::projection() const
{
    QMatrix4x4 matrix;
    matrix.perspective(fieldOfView, std::max(aspect, 1e-3f), nearPlane, farPlane);
    return matrix;
}

QVector3D kxViewCamera::eye() const
{
    const QVector3D moved = view.column(3).toVector3D();
    return -(right() * moved.x() + up() * moved.y() - forward() * moved.z());
}

kxRay kxViewCamera::ray(const QPointF& point, const QSizeF& size) const
{
    const float height = std::tan(qDegreesToRadians(fieldOfView) * 0.5f);
    const float x = float(2.0 * point.x() / std::max(size.width(), 1.0) - 1.0) * height * aspect;
    const float y = float(1.0 - 2.0 * point.y() / std::max(size.height(), 1.0)) * height;
    return {eye(), (forward() + right() * x + up() * y).normalized()};
}

bool kxViewCamera::project(const QVector3D& point, const QSizeF& size, QPointF& result) const
{
    const QVector3D seen = view.map(point);
    if (seen.z() > -1e-6f)
        return false;
    const float height = std::tan(qDegreesToRadians(fieldOfView) * 0.5f) * -seen.z();
    result = QPointF((0.5 + 0.5 * double(seen.x() / (height * std::max(aspect, 1e-3f)))) * size.width(),
                     (0.5 - 0.5 * double(seen.y() / height)) * size.height());
    return true;
}

float kxViewCamera::pixelLength(const QVector3D& point, double pictureHeight) const
{
    const float depth = std::max(-view.map(point).z(), nearPlane);
    return 2.0f * depth * std::tan(qDegreesToRadians(fieldOfView) * 0.5f) / float(std::max(pictureHeight, 1.0));
}

void kxViewCamera::widenFor(float pictureAspect)
{
    const float wider = std::max(1.0f, pictureAspect / std::max(aspect, 1e-3f));
    fieldOfView = 2 * qRadiansToDegrees(std::atan(std::tan(qDegreesToRadians(fieldOfView) * 0.5f) * wider));
}

kxViewCamera kxViewCamera::fromNode(const osg::NodePtr& node, float aspect)
{
    kxViewCamera camera;
    camera.aspect = aspect;
    if (node == osg::NullFC)
        return camera;
    const osg::CameraPtr core = osg::CameraPtr::dcast(node->getCore());
    if (core == osg::NullFC)
        return camera;
    const QMatrix4x4 world = kxSceneMath::worldMatrix(node);
    QVector3D back = world.column(2).toVector3D().normalized();
    if (back.isNull())
        back = QVector3D(0, 0, 1);
    QVector3D side = QVector3D::crossProduct(world.column(1).toVector3D(), back).normalized();
    if (side.isNull())
        side = QVector3D::crossProduct(QVector3D(0, 0, 1), back).normalized();
    const QVector3D upward = QVector3D::crossProduct(back, side);
    const QVector3D place = world.column(3).toVector3D();
    camera.view = QMatrix4x4(side.x(), side.y(), side.z(), -QVector3D::dotProduct(side, place),         //
                             upward.x(), upward.y(), upward.z(), -QVector3D::dotProduct(upward, place), //
                             back.x(), back.y(), back.z(), -QVector3D::dotProduct(back, place),         //
                             0, 0, 0, 1);
    camera.fieldOfView = std::clamp(core->getFieldOfView(), 1.0f, 170.0f);
    camera.nearPlane = std::max(core->getNear(), 1e-4f);
    camera.farPlane = std::max(core->getFar(), camera.nearPlane * 1.001f);
    return camera;
}
