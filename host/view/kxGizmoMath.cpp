#include "kxGizmoMath.h"

#include <QtMath>

#include <cmath>

bool kxGizmoMath::alongAxis(const kxRay& ray, const QVector3D& origin, const QVector3D& axis, float& length)
{
    const float cosine = QVector3D::dotProduct(ray.direction, axis);
    const float apart = 1 - cosine * cosine; // squared sine of the angle between
    if (apart < 1e-4f)
        return false;
    const QVector3D between = ray.origin - origin;
    length = (QVector3D::dotProduct(between, axis) - cosine * QVector3D::dotProduct(between, ray.direction)) / apart;
    return std::isfinite(length);
}

bool kxGizmoMath::onPlane(const kxRay& ray, const QVector3D& origin, const QVector3D& normal, QVector3D& point)
{
    const float slope = QVector3D::dotProduct(ray.direction, normal);
    if (std::fabs(slope) < 1e-4f)
        return false;
    const float distance = QVector3D::dotProduct(origin - ray.origin, normal) / slope;
    if (!(distance > 0) || !std::isfinite(distance))
        return false;
    point = ray.at(distance);
    return true;
}

bool kxGizmoMath::aroundAxis(const kxRay& ray, const QVector3D& origin, const QVector3D& axis, const QVector3D& zero,
                             float& degrees)
{
    QVector3D point;
    if (!onPlane(ray, origin, axis, point))
        return false;
    const QVector3D arm = point - origin;
    const float x = QVector3D::dotProduct(arm, zero);
    const float y = QVector3D::dotProduct(arm, QVector3D::crossProduct(axis, zero));
    if (x == 0 && y == 0)
        return false;
    degrees = qRadiansToDegrees(std::atan2(y, x));
    return true;
}

float kxGizmoMath::unrolled(float angle, float previous)
{
    return angle + 360.0f * std::round((previous - angle) / 360.0f);
}

float kxGizmoMath::snapped(float value, float step)
{
    return step > 0 ? std::round(value / step) * step : value;
}

float kxGizmoMath::roundStep(float length)
{
    if (!(length > 0) || !std::isfinite(length))
        return 1;
    const float power = std::pow(10.0f, std::floor(std::log10(length)));
    const float part = length / power;
    return power * (part >= 5 ? 5.0f : part >= 2 ? 2.0f : 1.0f);
}

QVector3D kxGizmoMath::perpendicular(const QVector3D& axis)
{
    const QVector3D other = std::fabs(axis.y()) < 0.9f ? QVector3D(0, 1, 0) : QVector3D(1, 0, 0);
    return QVector3D::crossProduct(axis, other).normalized();
}
