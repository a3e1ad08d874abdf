#include <curveeditor/kxAnimGraphGeometry.h>

#include <algorithm>
#include <cmath>

double kxAnimGraphGeometry::snapped(double from, double to)
{
    if (to == std::trunc(to))
        return to;
    if (std::trunc(to) == std::trunc(from))
        return from;
    return (to > from ? std::trunc(to) : std::trunc(to + 1.0)) + 0.0; // no -0
}

QPointF kxAnimGraphGeometry::handlePos(kxCurveMath::Side side, const QPointF& mouse, const HandleLimits& limits)
{
    // The out side is the in side of a mirrored picture: all lengths below count away from the key on the handle's
    // side.
    const bool isIn = side == kxCurveMath::Side::In;
    const double direction = isIn ? -1 : 1;
    const QPointF wish = mouse - limits.key;
    const double length = direction * wish.x();
    if (length <= 0)
        return QPointF(0, wish.y());

    const std::optional<double>& nearX = isIn ? limits.previousX : limits.nextX;
    const std::optional<double>& farX = isIn ? limits.nextX : limits.previousX;
    const auto reaches = [direction](double x, const std::optional<double>& neighbour, double towards)
    { return neighbour && towards * direction * (x - *neighbour) >= 0; };
    const bool isAtNear = reaches(mouse.x(), nearX, 1);
    const bool isAtFar = limits.isMirrored && reaches(limits.key.x() - wish.x(), farX, -1);
    if (!isAtNear && !isAtFar)
        return wish;
    const float own = float(isAtNear ? direction * (*nearX - limits.key.x()) : length);
    const float mirrored = isAtFar ? float(-direction * (*farX - limits.key.x())) : own;
    return QPointF(direction * double(std::min(own, mirrored)), wish.y());
}
