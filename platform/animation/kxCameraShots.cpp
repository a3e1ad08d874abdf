#include <animation/kxCameraShots.h>

#include <osg/AnimCores.h>
#include <osg/AnimCurve.h>
#include <scene/kxScene.h>

#include <QMatrix4x4>
#include <QQuaternion>

#include <cmath>

using namespace osg;

namespace
{
QVector3D vectorOf(const detail::Components<float, 3>& v)
{
    return QVector3D(v.x(), v.y(), v.z());
}

/// Degrees of a camera at `from` that looks down its negative z axis at `at`, nearest to `nearest`.
Vec3f lookAngles(const Pnt3f& from, const Pnt3f& at, const Vec3f& up, const Vec3f& nearest)
{
    const QVector3D back = (vectorOf(from) - vectorOf(at)).normalized();
    const QVector3D right = QVector3D::crossProduct(vectorOf(up), back).normalized();
    if (back.isNull() || right.isNull())
        return nearest; // looks at itself, or straight along its up vector
    const QQuaternion q = QQuaternion::fromAxes(right, QVector3D::crossProduct(back, right), back);
    return kxSceneMath::eulerFromQuaternion(q.scalar(), q.x(), q.y(), q.z(), nearest);
}

int axisOf(const std::string& suffix)
{
    return suffix == "X" ? 0 : suffix == "Y" ? 1 : suffix == "Z" ? 2 : -1;
}

void writeKeys(const AnimCurvePtr& curve, float duration, float start, float end, UInt32 interpolation)
{
    curve->clear();
    curve->addPoint(Pnt2f(0, start), Vec2f(), Vec2f(), TangentType::Linear, TangentType::Linear, false, false);
    curve->addPoint(Pnt2f(duration, end), Vec2f(), Vec2f(), TangentType::Linear, TangentType::Linear, false, false);
    curve->computeOuttangent(0, interpolation == 1 || interpolation == 3 ? TangentType::Flat : TangentType::Linear);
    curve->computeIntangent(1, interpolation == 2 || interpolation == 3 ? TangentType::Flat : TangentType::Linear);
    markChanged(curve, AnimCurveBase::ControlPointsFieldMask);
}

void updateShot(const AnimNodePtr& node, const AnimShot& shot)
{
    const float duration = shot.getShotDuration();
    if (!std::isfinite(duration) || duration <= 0)
        return;
    const Vec3f startAngles = lookAngles(shot.getStartFrom(), shot.getStartAt(), shot.getStartUp(), Vec3f());
    const Vec3f endAngles = lookAngles(shot.getEndFrom(), shot.getEndAt(), shot.getEndUp(), startAngles);
    for (const NodePtr& child : node->getChildren())
    {
        const AnimCurvePtr curve = AnimCurvePtr::dcast(child->getCore());
        const int axis = curve == NullFC ? -1 : axisOf(curve->getSuffix());
        if (axis < 0)
            continue;
        if (curve->getChannelName() == "translation")
            writeKeys(curve, duration, shot.getStartFrom()[std::size_t(axis)], shot.getEndFrom()[std::size_t(axis)],
                      shot.getInterpolation());
        else if (curve->getChannelName() == "rotation")
            writeKeys(curve, duration, startAngles[std::size_t(axis)], endAngles[std::size_t(axis)],
                      shot.getInterpolation());
    }
}
} // namespace

void kxCameraShots::updateCurves(const AnimNodePtr& node)
{
    traverse(node,
             [](const NodePtr& below)
             {
                 const AnimNodePtr animation = AnimNodePtr::dcast(below);
                 const AnimShotPtr shot = AnimShotPtr::dcast(below->getCore());
                 if (animation != NullFC && shot != NullFC)
                     updateShot(animation, *shot);
                 return Action::Continue;
             });
}
