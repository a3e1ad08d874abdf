#include "kxCameraRig.h"

#include <osg/Finite.h>

#include <QtMath>

#include <algorithm>
#include <cmath>

namespace
{
constexpr float Closest = 1e-3f;
constexpr float Farthest = 1e7f;
constexpr float RoomAround = 1.04f;

QVector3D backward(float yaw, float pitch)
{
    const float y = qDegreesToRadians(yaw), p = qDegreesToRadians(pitch);
    return QVector3D(std::sin(y) * std::cos(p), std::sin(p), std::cos(y) * std::cos(p));
}

bool isFinite(const kxCameraRig::Pose& p)
{
    return osg::isFinite(p.target.x(), p.target.y(), p.target.z(), p.distance, p.yaw, p.pitch);
}

float halfAngle()
{
    return std::tan(qDegreesToRadians(kxCameraRig::FieldOfView) * 0.5f);
}

QMatrix4x4 viewOf(const kxCameraRig::Pose& pose)
{
    QMatrix4x4 view;
    const QVector3D back = backward(pose.yaw, pose.pitch);
    view.lookAt(pose.target + back * pose.distance, pose.target, QVector3D(0, 1, 0));
    return view;
}
} // namespace

bool kxCameraRig::setPose(const Pose& pose)
{
    if (!isFinite(pose))
        return false;
    _animating = false;
    _pose = pose;
    _pose.distance = std::clamp(_pose.distance, Closest, Farthest);
    _pose.pitch = std::clamp(_pose.pitch, -LargestPitch, LargestPitch);
    _pose.yaw = std::remainder(_pose.yaw, 360.0f);
    return true;
}

void kxCameraRig::orbit(float dx, float dy, float pictureHeight)
{
    const float degrees = 180.0f / std::max(pictureHeight, 1.0f);
    Pose pose = _pose;
    pose.yaw -= dx * degrees;
    pose.pitch += dy * degrees;
    setPose(pose);
}

void kxCameraRig::pan(float dx, float dy, float pictureHeight)
{
    const QMatrix4x4 view = viewOf(_pose);
    const float length = 2 * _pose.distance * halfAngle() / std::max(pictureHeight, 1.0f);
    Pose pose = _pose;
    pose.target += (view.row(1).toVector3D() * dy - view.row(0).toVector3D() * dx) * length;
    setPose(pose);
}

void kxCameraRig::dolly(float steps)
{
    Pose pose = _pose;
    pose.distance *= std::pow(0.9f, std::clamp(steps, -100.0f, 100.0f));
    setPose(pose);
}

bool kxCameraRig::isUpright(const kxViewCamera& camera)
{
    constexpr float SameAngle = 0.05f; // degrees, of the field of view
    constexpr float SameTilt = 1e-3f;
    return std::fabs(camera.fieldOfView - FieldOfView) < SameAngle && std::fabs(camera.right().y()) < SameTilt &&
           camera.up().y() > 0;
}

kxCameraRig::Pose kxCameraRig::poseOf(const kxViewCamera& camera, float distance) const
{
    Pose pose = _pose;
    if (distance > 0)
        pose.distance = std::clamp(distance, Closest, Farthest);
    const QVector3D back = -camera.forward();
    pose.yaw = qRadiansToDegrees(std::atan2(back.x(), back.z()));
    pose.pitch = qRadiansToDegrees(std::asin(std::clamp(back.y(), -1.0f, 1.0f)));
    pose.target = camera.eye() - back * pose.distance;
    return pose;
}

kxCameraRig::Pose kxCameraRig::framed(const osg::BoxVolume& box, float aspect) const
{
    Pose pose = _pose;
    if (box.isEmpty())
        return pose;
    osg::Pnt3f low, high;
    box.getBounds(low, high);
    const QVector3D a(low.x(), low.y(), low.z()), b(high.x(), high.y(), high.z());
    pose.target = (a + b) * 0.5f;

    // Each corner gives the least distance from which it lies inside of the picture's four sides.
    const QVector3D back = backward(pose.yaw, pose.pitch);
    const QMatrix4x4 view = viewOf(pose);
    const QVector3D right = view.row(0).toVector3D(), up = view.row(1).toVector3D();
    const float tanY = halfAngle() / RoomAround, tanX = tanY * std::max(aspect, 0.05f);
    float distance = 0;
    for (int corner = 0; corner < 8; ++corner)
    {
        const QVector3D p(corner & 1 ? b.x() : a.x(), corner & 2 ? b.y() : a.y(), corner & 4 ? b.z() : a.z());
        const QVector3D d = p - pose.target;
        const float depth = QVector3D::dotProduct(d, back);
        distance = std::max({distance, depth + std::fabs(QVector3D::dotProduct(d, right)) / tanX,
                             depth + std::fabs(QVector3D::dotProduct(d, up)) / tanY});
    }
    const float size = (b - a).length();
    pose.distance = std::clamp(std::max(distance, size * 0.5f), Closest, Farthest);
    if (size < 1e-6f)
        pose.distance = std::min(_pose.distance, 2.0f);
    return isFinite(pose) ? pose : _pose;
}

void kxCameraRig::animateTo(const Pose& pose)
{
    if (!isFinite(pose))
        return;
    _from = _pose;
    _to = pose;
    // The shorter way around.
    _to.yaw = _from.yaw + std::remainder(pose.yaw - _from.yaw, 360.0f);
    _animating = true;
}

void kxCameraRig::advance(float progress)
{
    if (!_animating)
        return;
    const float t = std::clamp(progress, 0.0f, 1.0f);
    const float s = 1 - (1 - t) * (1 - t) * (1 - t);
    Pose pose;
    pose.target = _from.target + (_to.target - _from.target) * s;
    pose.distance = _from.distance * std::pow(_to.distance / _from.distance, s);
    pose.yaw = _from.yaw + (_to.yaw - _from.yaw) * s;
    pose.pitch = _from.pitch + (_to.pitch - _from.pitch) * s;
    setPose(t < 1 ? pose : _to);
    _animating = t < 1;
}

kxViewCamera kxCameraRig::camera(float aspect, const osg::BoxVolume& scene) const
{
    kxViewCamera camera;
    camera.view = viewOf(_pose);
    camera.fieldOfView = FieldOfView;
    camera.aspect = aspect;
    fitPlanes(camera, scene, _pose.distance);
    return camera;
}

void kxCameraRig::fitPlanes(kxViewCamera& camera, const osg::BoxVolume& scene, float distance)
{
    float nearest = distance * 0.05f, farthest = distance * 12.0f; // the floor around the target
    if (!scene.isEmpty())
    {
        osg::Pnt3f low, high;
        scene.getBounds(low, high);
        float sceneNear = std::numeric_limits<float>::max(), sceneFar = 0;
        for (int corner = 0; corner < 8; ++corner)
        {
            const QVector3D p(corner & 1 ? high.x() : low.x(), corner & 2 ? high.y() : low.y(),
                              corner & 4 ? high.z() : low.z());
            const float depth = -camera.view.map(p).z();
            sceneNear = std::min(sceneNear, depth);
            sceneFar = std::max(sceneFar, depth);
        }
        nearest = std::min(nearest, sceneNear);
        farthest = std::max(farthest, sceneFar * 1.05f);
    }
    // 24 bits of depth bear a ratio of some ten thousands.
    camera.farPlane = std::max(farthest, Closest * 10);
    camera.nearPlane = std::max({nearest, camera.farPlane * 2e-5f, Closest * 0.1f});
}
