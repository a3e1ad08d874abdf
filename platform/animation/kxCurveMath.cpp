#include <animation/kxCurveSegment.h>
#include <kxCurveMath.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace osg;

namespace
{
constexpr double FloatLimit = std::numeric_limits<float>::max();

double slope(const kxCurveMath::Place& a, const kxCurveMath::Place& b)
{
    const double dx = b.x - a.x;
    return dx > 0 ? (b.y - a.y) / dx : 0;
}

/// A number that a record can hold.
double narrowable(double value)
{
    return std::isnan(value) ? 0 : std::clamp(value, -FloatLimit, FloatLimit);
}

/// Type 5: the present vector, shortened where a side has reached a neighbour.
kxCurveMath::Place freeVector(kxCurveMath::Side side, const kxCurveMath::Neighbourhood& n)
{
    const bool isIn = side == kxCurveMath::Side::In;
    const kxCurveMath::Place& vector = isIn ? n.in : n.out;
    const bool isInClear = n.previous == nullptr || n.key.x + n.in.x > n.previous->x;
    const bool isOutClear = n.next == nullptr || n.next->x > n.key.x + n.out.x;
    if ((isInClear && isOutClear) || vector.x == 0)
        return vector;
    double length = std::numeric_limits<double>::infinity();
    if (n.previous != nullptr)
        length = n.key.x - n.previous->x;
    if (n.next != nullptr)
        length = std::min(length, n.next->x - n.key.x);
    const double x = isIn ? -length : length;
    return {x, narrowable(x * (vector.y / vector.x))};
}
} // namespace

kxCurveMath::Place kxCurveMath::tangentVector(Side side, UInt32 type, const Neighbourhood& n)
{
    const bool isIn = side == Side::In;
    if (n.previous == nullptr && n.next == nullptr)
        return isIn ? n.in : n.out;
    if (type == TangentType::Constant)
        return {};
    if (type == TangentType::Free)
        return freeVector(side, n);
    if (type > TangentType::Free)
        return {isIn ? -n.otherLength : n.otherLength, 0};

    const bool isFirst = n.previous == nullptr, isLast = n.next == nullptr;
    const double left = isFirst ? 0 : n.key.x - n.previous->x;
    const double right = isLast ? 0 : n.next->x - n.key.x;
    const double toPrevious = isFirst ? 0 : slope(*n.previous, n.key);
    const double toNext = isLast ? 0 : slope(n.key, *n.next);
    const bool isInside = !isFirst && !isLast;
    double length = (isFirst ? right : isLast ? left : isIn ? left : right) / 2;
    double m = 0;
    switch (type)
    {
    case TangentType::Linear:
        m = isIn ? toPrevious : toNext;
        break;
    case TangentType::Hermite:
        m = isFirst ? toNext : isLast ? toPrevious : slope(*n.previous, *n.next);
        break;
    case TangentType::Following:
        m = toNext;
        break;
    default:
        break;
    }
    if (isInside && type != TangentType::Linear)
        length = std::min(length, (left + right) / 3);
    const double x = isIn ? -length : length;
    return {x, narrowable(x * m)};
}

/// Halley's steps while they stay inside the bracket and get shorter; else the bracket is halved. x(0) = 0 and x(1) = 1
/// lie on both sides of s, so that there is a root even where x runs back on the way.
double kxCurvePolynomial::solve(double s) const
{
    double low = 0, high = 1, u = s, previousStep = 1;
    for (int i = 0; i < 100; ++i)
    {
        const double error = x(u) - s;
        (error > 0 ? high : low) = u;
        const double gradient = xSlope(u);
        const double bend = 3 * _x3 * u + _x2; // half the second derivative
        const double step = error * gradient / (gradient * gradient - error * bend);
        double next = u - step;
        const bool isGood = next > low && next < high && std::abs(step) < 0.9 * previousStep;
        if (!isGood)
        {
            if (error == 0)
                return u;
            next = 0.5 * (low + high);
        }
        const double moved = std::abs(next - u);
        // What a step leaves is of the order of its cube; where the gradient isn't small that is below 1e-8.
        if (moved < 1.0e-9 || (isGood && moved < 3.0e-4 && gradient > 0.2))
            return next;
        previousStep = moved;
        u = next;
    }
    return u;
}

namespace
{
float finite(double value, float fallback)
{
    if (std::isnan(value))
        return std::isfinite(fallback) ? fallback : 0.0f;
    return float(std::clamp(value, -FloatLimit, FloatLimit));
}
} // namespace

float kxCurveMath::segmentValue(const CCPnt& a, const CCPnt& b, double seconds)
{
    const double length = double(b.x()) - a.x();
    const double perSecond = 1 / length;
    const double s = (seconds - a.x()) * perSecond;
    if (!(s > 0))
        return finite(a.y(), 0);
    if (!(s < 1))
        return finite(b.y(), 0);

    const kxCurveSegment segment(a, b, perSecond);
    if (segment.isStep())
        return finite(a.y(), 0);
    if (segment.isChord())
        return finite(a.y() + segment.rise * s, a.y());
    const kxCurvePolynomial polynomial(segment);
    return finite(a.y() + polynomial.y(polynomial.parameterAt(s)), a.y());
}
