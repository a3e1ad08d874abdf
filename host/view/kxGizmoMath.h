#pragma once

#include "kxViewCamera.h"

/// Drags in space: where a ray meets the things that a gizmo is made of. Axes and normals have unit length.
namespace kxGizmoMath
{
/// Where on the line through `origin` along `axis` a ray passes closest, in lengths from the origin. False where both
/// are nearly parallel.
bool alongAxis(const kxRay& ray, const QVector3D& origin, const QVector3D& axis, float& length);
/// Where a ray meets a plane. False where it runs along it, or the plane lies behind.
bool onPlane(const kxRay& ray, const QVector3D& origin, const QVector3D& normal, QVector3D& point);
/// The angle, in degrees from -180 to 180, at which a ray meets the plane around `axis`, counted against the clock from
/// `zero`, seen against the axis. False as onPlane(), and for the origin itself.
bool aroundAxis(const kxRay& ray, const QVector3D& origin, const QVector3D& axis, const QVector3D& zero,
                float& degrees);
/// `angle` plus full turns, nearest to `previous`.
float unrolled(float angle, float previous);
/// The nearest multiple of `step`, or `value` for a step of 0.
float snapped(float value, float step);
/// Of 1, 2, 5 times a power of ten, the greatest that isn't above `length`.
float roundStep(float length);
/// Any vector of unit length at a right angle to `axis`.
QVector3D perpendicular(const QVector3D& axis);
} // namespace kxGizmoMath
