#include <animation/kxCurveEvaluation.h>

#include <kxCurveMath.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace osg;

namespace
{
typedef std::vector<CCPnt> Keys;

/// The segment of `seconds` at or beside `cursor`, the number of keys where it is none of these. Playing forwards stays
/// in a segment or enters the next one; nothing else of the keys is touched then.
std::size_t nearSegment(const Keys& keys, double seconds, std::size_t cursor)
{
    const std::size_t count = keys.size();
    std::size_t i = cursor;
    if (i + 1 >= count)
        return count;
    if (seconds < keys[i].x())
        return i > 0 && keys[i - 1].x() <= seconds ? i - 1 : count;
    if (seconds < keys[i + 1].x())
        return i;
    return i + 2 < count && seconds < keys[i + 2].x() ? i + 1 : count;
}

/// The last i with keys[i].x() <= seconds, where the first key is at or before `seconds`.
std::size_t findSegment(const Keys& keys, double seconds)
{
    const auto behind =
        std::upper_bound(keys.begin(), keys.end(), seconds, [](double t, const CCPnt& key) { return t < key.x(); });
    return std::size_t(behind - keys.begin()) - 1;
}

bool isStep(const CCPnt& a, const CCPnt& b)
{
    return a.outtangent() == Vec2f() && b.intangent() == Vec2f();
}

/// In the segment from key i to key i + 1, or at its start where i is the last key.
float valueFrom(const Keys& keys, std::size_t i, double seconds, double tolerance, bool stepped)
{
    // A jump lies at the end of a step and where two keys share a time.
    while (i + 1 < keys.size() && keys[i + 1].x() - seconds <= tolerance &&
           (stepped || isStep(keys[i], keys[i + 1]) || (i + 2 < keys.size() && keys[i + 2].x() == keys[i + 1].x())))
    {
        ++i;
        seconds = std::max(seconds, double(keys[i].x()));
    }
    if (stepped)
        return keys[i].y();
    return kxCurveMath::segmentValue(keys[i], keys[std::min(i + 1, keys.size() - 1)], seconds);
}

/// Inside the keys: keys.front().x() <= seconds <= keys.back().x().
float insideValue(const Keys& keys, double seconds, UInt32& cursor, double tolerance, bool stepped)
{
    const std::size_t i = findSegment(keys, seconds);
    cursor = UInt32(i);
    return valueFrom(keys, i, seconds, tolerance, stepped);
}

float finite(double value)
{
    const double limit = std::numeric_limits<float>::max();
    return std::isnan(value) ? 0.0f : float(std::clamp(value, -limit, limit));
}

/// The end key's inner tangent goes on.
float linearValue(const CCPnt& end, const Vec2f& inner, double seconds)
{
    const double slope = inner.x() == 0 ? 0 : double(inner.y()) / inner.x();
    return finite(end.y() + slope * (seconds - end.x()));
}

float outsideValue(const Keys& keys, double seconds, InfinityMode mode, UInt32& cursor, double tolerance, bool stepped)
{
    const CCPnt& first = keys.front();
    const CCPnt& last = keys.back();
    const bool isBefore = seconds < first.x();
    const CCPnt& end = isBefore ? first : last;
    const double length = double(last.x()) - first.x();
    if (mode == InfinityMode::Linear && keys.size() > 1 && !stepped)
        return linearValue(end, isBefore ? first.outtangent() : last.intangent(), seconds);
    const bool repeats =
        mode == InfinityMode::Loop || mode == InfinityMode::LoopWithOffset || mode == InfinityMode::Oscillate;
    if (!repeats || length <= 0)
        return finite(end.y());

    const double passed = (seconds - first.x() + tolerance) / length;
    const double period = std::floor(passed);
    if (!std::isfinite(period))
        return finite(end.y());
    double inside = std::clamp(seconds - period * length, double(first.x()), double(last.x()));
    if (mode == InfinityMode::Oscillate && std::fmod(period, 2.0) != 0)
        inside = double(first.x()) + last.x() - inside;
    const double offset = mode == InfinityMode::LoopWithOffset ? period * (double(last.y()) - first.y()) : 0;
    return finite(insideValue(keys, inside, cursor, tolerance, stepped) + offset);
}
} // namespace

float kxCurveEvaluation::value(const AnimCurve& curve, double seconds, UInt32& cursor, double tolerance, bool stepped)
{
    const Keys& keys = curve.getControlPoints();
    std::size_t near = nearSegment(keys, seconds, cursor);
    if (near == keys.size())
        near = nearSegment(keys, seconds, likelySegment(curve, seconds, cursor));
    if (near < keys.size())
    {
        cursor = UInt32(near);
        return valueFrom(keys, near, seconds, tolerance, stepped);
    }
    if (keys.empty() || std::isnan(seconds))
        return 0;
    const double first = keys.front().x(), last = keys.back().x();
    if (seconds >= first - tolerance && seconds <= last + tolerance)
        return insideValue(keys, std::clamp(seconds, first, last), cursor, tolerance, stepped);
    const bool isBefore = seconds < first;
    const UInt32 mode = isBefore ? curve.getPreInfinityMode() : curve.getPostInfinityMode();
    return outsideValue(keys, seconds, InfinityMode(mode), cursor, tolerance, stepped);
}

float kxCurveEvaluation::value(const AnimCurve& curve, double seconds)
{
    UInt32 cursor = 0;
    return value(curve, seconds, cursor, 0);
}
