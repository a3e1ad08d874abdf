#include <osg/AnimCurve.h>

#include <kxAnimManager.h>
#include <kxCurveMath.h>
#include <osg/Finite.h>
#include <scene/FieldDescription.h>

#include <algorithm>
#include <cmath>

namespace osg
{

namespace
{
typedef std::vector<CCPnt> Keys;

bool isBefore(float seconds, const CCPnt& key)
{
    return seconds < key.x();
}

kxCurveMath::Place placeOf(const CCPnt& key)
{
    return {key.x(), key.y()};
}

Vec2f computedVector(const Keys& keys, std::size_t index, kxCurveMath::Side side, UInt32 type)
{
    const CCPnt& key = keys[index];
    kxCurveMath::Neighbourhood around;
    around.key = placeOf(key);
    around.in = {key.inX(), key.inY()};
    around.out = {key.outX(), key.outY()};
    kxCurveMath::Place previous, next;
    if (index > 0)
    {
        previous = placeOf(keys[index - 1]);
        around.previous = &previous;
    }
    if (index + 1 < keys.size())
    {
        next = placeOf(keys[index + 1]);
        around.next = &next;
    }
    if (type > TangentType::Free)
        around.otherLength = 10.0 / kxAnimManager::the()->fps();
    const kxCurveMath::Place vector = kxCurveMath::tangentVector(side, type, around);
    return Vec2f(float(vector.x), float(vector.y));
}

void computeIn(Keys& keys, std::size_t index)
{
    CCPnt& key = keys[index];
    if (key.inType != TangentType::Free)
        key.setIntangent(computedVector(keys, index, kxCurveMath::Side::In, key.inType));
}

void computeOut(Keys& keys, std::size_t index)
{
    CCPnt& key = keys[index];
    if (key.outType != TangentType::Free)
        key.setOuttangent(computedVector(keys, index, kxCurveMath::Side::Out, key.outType));
}
} // namespace

FieldContainerType AnimCurveBase::_type("AnimCurveBase", &AnimObject::_type, nullptr, nullptr,
                                        &AnimCurveBase::describeFields);
FieldContainerType AnimCurve::_type(
    "AnimCurve", &AnimCurveBase::_type, nullptr, [] { return FieldContainerPtr(AnimCurveBase::create()); }, nullptr);

AnimCurvePtr AnimCurveBase::create()
{
    return AnimCurvePtr(new AnimCurve);
}

void AnimCurveBase::describeFields(FieldList& fields)
{
    fields.push_back(FieldDescription::member("channelName", ChannelNameFieldMask, &AnimCurveBase::_channelName));
    fields.push_back(FieldDescription::member("suffix", SuffixFieldMask, &AnimCurveBase::_suffix));
    fields.push_back(FieldDescription::member("color", ColorFieldMask, &AnimCurveBase::_color));
    fields.push_back(FieldDescription(
        "controlPoints", ControlPointsFieldMask,
        [](const FieldContainer& container)
        { return FieldValue(static_cast<const AnimCurveBase&>(container)._controlPoints); },
        [](FieldContainer& container, const FieldValue& value)
        {
            const auto* const keys = std::get_if<MField<CCPnt, 0>>(&value);
            const auto isLater = [](const CCPnt& a, const CCPnt& b) { return a.x() < b.x(); };
            if (keys == nullptr ||
                !std::all_of(keys->begin(), keys->end(), [](const CCPnt& key) { return isFinite(key); }) ||
                !std::is_sorted(keys->begin(), keys->end(), isLater))
                return false;
            static_cast<AnimCurveBase&>(container)._controlPoints = *keys;
            return true;
        }));
    fields.push_back(
        FieldDescription::member("preInfinityMode", PreInfinityModeFieldMask, &AnimCurveBase::_preInfinityMode));
    fields.push_back(
        FieldDescription::member("postInfinityMode", PostInfinityModeFieldMask, &AnimCurveBase::_postInfinityMode));
}

UInt32 AnimCurve::addPoint(const Point<float, 2>& point, const Vector<float, 2>& intangent,
                           const Vector<float, 2>& outtangent, UInt32 inType, UInt32 outType, bool replace,
                           bool updateNeighbours)
{
    return addControlPoint(CCPnt(point, intangent, outtangent, inType, outType), replace, updateNeighbours);
}

UInt32 AnimCurve::addControlPoint(const CCPnt& point, bool replace, bool updateNeighbours)
{
    const CCPnt key = point; // it may lie in the array that grows
    if (!isFinite(key))
        return NoKey;
    Keys& keys = _controlPoints;
    // Keys mostly come in ascending order.
    const bool isLast = keys.empty() || !isBefore(key.x(), keys.back());
    std::size_t index = isLast
                            ? keys.size()
                            : std::size_t(std::upper_bound(keys.begin(), keys.end(), key.x(), isBefore) - keys.begin());
    if (replace && index > 0 && keys[index - 1].x() == key.x())
        keys[--index] = key;
    else
        keys.insert(keys.begin() + std::ptrdiff_t(index), key);

    if (key.intangent() == Vec2f())
        computeIn(keys, index);
    if (key.outtangent() == Vec2f())
        computeOut(keys, index);
    if (updateNeighbours)
    {
        if (index > 0)
        {
            computeIn(keys, index - 1);
            computeOut(keys, index - 1);
        }
        if (index + 1 < keys.size())
        {
            computeIn(keys, index + 1);
            computeOut(keys, index + 1);
        }
    }
    return UInt32(index);
}

void AnimCurve::subPoint(UInt32 index)
{
    if (index < _controlPoints.size())
        _controlPoints.erase(_controlPoints.begin() + std::ptrdiff_t(index));
}

void AnimCurve::computeIntangent(UInt32 index, Int32 type)
{
    if (index >= _controlPoints.size() || type < -1)
        return;
    if (type >= 0)
        _controlPoints[index].inType = UInt32(type);
    computeIn(_controlPoints, index);
}

void AnimCurve::computeOuttangent(UInt32 index, Int32 type)
{
    if (index >= _controlPoints.size() || type < -1)
        return;
    if (type >= 0)
        _controlPoints[index].outType = UInt32(type);
    computeOut(_controlPoints, index);
}

void AnimCurve::clear()
{
    _controlPoints.clear();
}

void AnimCurve::clearConstantControlPoints()
{
    Keys& keys = _controlPoints;
    if (keys.empty())
        return;
    // Values are one where they differ by no more than the rounding of the curve's largest.
    float largest = 0;
    for (const CCPnt& key : keys)
        largest = std::max(largest, std::abs(key.y()));
    const float slack = 1.0e-6f * largest;
    const auto isSame = [slack](float a, float b) { return std::abs(a - b) <= slack; };
    const auto isFlat = [&isSame](const CCPnt& key) { return isSame(key.inY(), 0) && isSame(key.outY(), 0); };
    const float value = keys.front().y();
    if (std::all_of(keys.begin(), keys.end(), [&](const CCPnt& key) { return isFlat(key) && isSame(key.y(), value); }))
    {
        keys.clear();
        return;
    }
    // A key inside goes where the curve is flat from the key before it to the key after it.
    std::size_t kept = 1;
    for (std::size_t i = 1; i < keys.size(); ++i)
    {
        const CCPnt& before = keys[kept - 1];
        const bool isInside = i + 1 < keys.size();
        const bool changesNothing = isInside && isFlat(keys[i]) && isSame(before.y(), keys[i].y()) &&
                                    isSame(before.outY(), 0) && isSame(keys[i + 1].y(), keys[i].y()) &&
                                    isSame(keys[i + 1].inY(), 0);
        if (!changesNothing)
            keys[kept++] = keys[i];
    }
    keys.resize(kept);
}

} // namespace osg
