#include <curveeditor/edits/kxAnimCurveUndoCommand.h>

#include <curveeditor/edits/kxAnimKeyMath.h>

#include <osg/FieldContainerFactory.h>
#include <osg/Finite.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
bool isBefore(const osg::CCPnt& a, const osg::CCPnt& b)
{
    return a.x() < b.x();
}

bool areFinite(const std::vector<osg::CCPnt>& keys)
{
    return std::all_of(keys.begin(), keys.end(), [](const osg::CCPnt& key) { return osg::isFinite(key); });
}

std::vector<osg::CCPnt> differencesTo(const std::vector<osg::CCPnt>& points, const osg::AnimCurvePtr& curve)
{
    std::vector<osg::CCPnt> differences;
    if (curve == osg::NullFC || points.size() != curve->getControlPoints().size() ||
        !std::is_sorted(points.begin(), points.end(), isBefore))
        return differences;
    differences.reserve(points.size());
    for (osg::UInt32 i = 0; i < points.size(); ++i)
        differences.push_back(kxAnimKeyMath::difference(points[i], curve->getControlPoints(i)));
    if (!areFinite(points) || !areFinite(differences))
        differences.clear();
    return differences;
}

/// True where `difference` is no more than what rounding leaves of a `key` that went away and came back.
bool isRounding(const osg::CCPnt& difference, const osg::CCPnt& key)
{
    const auto isSmall = [](float by, float of, float tangent)
    { return std::abs(by) <= 2 * std::numeric_limits<float>::epsilon() * std::max(std::abs(of), std::abs(tangent)); };
    return difference.inType == 0 && difference.outType == 0 && isSmall(difference.x(), key.x(), 0) &&
           isSmall(difference.y(), key.y(), 0) && isSmall(difference.inX(), key.x(), key.inX()) &&
           isSmall(difference.inY(), key.y(), key.inY()) && isSmall(difference.outX(), key.x(), key.outX()) &&
           isSmall(difference.outY(), key.y(), key.outY());
}

/// Float rounding may leave a key a last digit before its neighbour where both were moved to nearly one time.
void keepSorted(std::vector<osg::CCPnt>& keys)
{
    for (std::size_t i = 1; i < keys.size(); ++i)
        if (isBefore(keys[i], keys[i - 1]))
            keys[i].setX(keys[i - 1].x());
}
} // namespace

kxAnimCurveUndoCommand::kxAnimCurveUndoCommand(const osg::AnimCurvePtr& curve, const std::vector<osg::CCPnt>& points,
                                               QUndoCommand* parent)
    : kxMergingCommand(kxUndoString("Move Control Points", "Animation"), parent), _curveId(curve.getFieldContainerId()),
      _differences(differencesTo(points, curve))
{
    const osg::CCPnt none({}, {}, {}, 0, 0);
    setObsolete(std::count(_differences.begin(), _differences.end(), none) == std::ptrdiff_t(_differences.size()));
}

void kxAnimCurveUndoCommand::apply(bool forward)
{
    const osg::AnimCurvePtr curve = osg::living<osg::AnimCurve>(_curveId);
    // A curve that gained or lost keys behind the stack's back is none that the differences fit.
    if (curve == osg::NullFC || _differences.empty() || curve->getControlPoints().size() != _differences.size())
        return;
    std::vector<osg::CCPnt> keys;
    keys.reserve(_differences.size());
    for (osg::UInt32 i = 0; i < _differences.size(); ++i)
        keys.push_back(kxAnimKeyMath::added(curve->getControlPoints(i), _differences[i], forward ? 1 : -1));
    if (!areFinite(keys))
        return;
    keepSorted(keys);
    std::copy(keys.begin(), keys.end(), curve->editControlPoints().begin());
    osg::markChanged(curve, osg::AnimCurveBase::ControlPointsFieldMask);
}

bool kxAnimCurveUndoCommand::isBackAtStart() const
{
    const osg::AnimCurvePtr curve = osg::living<osg::AnimCurve>(_curveId);
    if (curve == osg::NullFC || curve->getControlPoints().size() != _differences.size())
        return false;
    for (osg::UInt32 i = 0; i < _differences.size(); ++i)
        if (!isRounding(_differences[i], curve->getControlPoints(i)))
            return false;
    return true;
}

bool kxAnimCurveUndoCommand::canMergeWith(const QUndoCommand* other) const
{
    if (!kxUndoCommand::canMergeWith(other))
        return false;
    const auto& next = static_cast<const kxAnimCurveUndoCommand&>(*other);
    if (next._curveId != _curveId || next._differences.size() != _differences.size())
        return false;
    for (std::size_t i = 0; i < _differences.size(); ++i)
        if (!osg::isFinite(kxAnimKeyMath::added(_differences[i], next._differences[i], 1)))
            return false;
    return true;
}

bool kxAnimCurveUndoCommand::mergeWith(const QUndoCommand* other)
{
    if (!canMergeWith(other))
        return false;
    const auto& next = static_cast<const kxAnimCurveUndoCommand&>(*other);
    setMergeValue(next.mergeValue());
    for (std::size_t i = 0; i < _differences.size(); ++i)
        _differences[i] = kxAnimKeyMath::added(_differences[i], next._differences[i], 1);
    setObsolete(isBackAtStart());
    return true;
}
