#include <curveeditor/edits/kxAddAnimKeyUndoCommand.h>

#include <osg/FieldContainerFactory.h>
#include <osg/Finite.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace
{
bool isBefore(const osg::CCPnt& a, const osg::CCPnt& b)
{
    return a.x() < b.x();
}

/// True where the key at `index` has the time of `key`, within the float rounding of undone moves.
bool isNear(const osg::AnimCurvePtr& curve, unsigned int index, const osg::CCPnt& key)
{
    constexpr float Tolerance = 1e-3f;
    return index < curve->getControlPoints().size() &&
           std::abs(curve->getControlPoints(index).x() - key.x()) <= Tolerance * std::max(1.0f, std::abs(key.x()));
}
} // namespace

kxAddAnimKeyUndoCommand::kxAddAnimKeyUndoCommand(const osg::AnimCurvePtr& curve, std::vector<osg::CCPnt>&& points,
                                                 QUndoCommand* parent)
    : kxMergingCommand(kxUndoString("Add Animation Key Points", "Animation"), parent), _isDelete(false),
      _curveId(curve.getFieldContainerId()), _points(std::move(points))
{
    points.clear();
    _points.erase(
        std::remove_if(_points.begin(), _points.end(), [](const osg::CCPnt& key) { return !osg::isFinite(key); }),
        _points.end());
    std::stable_sort(_points.begin(), _points.end(), isBefore);
}

kxAddAnimKeyUndoCommand::kxAddAnimKeyUndoCommand(const osg::AnimCurvePtr& curve, const osg::CCPnt& point,
                                                 QUndoCommand* parent)
    : kxAddAnimKeyUndoCommand(curve, std::vector<osg::CCPnt>(1, point), parent)
{
}

kxAddAnimKeyUndoCommand::kxAddAnimKeyUndoCommand(const osg::AnimCurvePtr& curve, std::vector<unsigned int>&& indices,
                                                 QUndoCommand* parent)
    : kxMergingCommand(kxUndoString("Delete Animation Key Points", "Animation"), parent), _isDelete(true),
      _curveId(curve.getFieldContainerId()), _indices(std::move(indices))
{
    indices.clear();
    std::sort(_indices.begin(), _indices.end());
    _indices.erase(std::unique(_indices.begin(), _indices.end()), _indices.end());
}

void kxAddAnimKeyUndoCommand::apply(bool forward)
{
    const osg::AnimCurvePtr curve = osg::living<osg::AnimCurve>(_curveId);
    if (curve == osg::NullFC)
        return;
    if (forward)
        keepAffected(curve);
    if (forward == _isDelete)
        removeIndices(curve);
    else
        addPoints(curve);
    if (!forward)
        restoreKept(curve);
    osg::markChanged(curve, osg::AnimCurveBase::ControlPointsFieldMask);
}

void kxAddAnimKeyUndoCommand::removeIndices(const osg::AnimCurvePtr& curve)
{
    if (_isDelete)
        _points.clear();
    unsigned int removed = 0;
    for (const unsigned int index : _indices)
    {
        const unsigned int k = index - removed; // where the key is after the removals before it
        if (k >= curve->getControlPoints().size())
            break;
        if (_isDelete)
            _points.push_back(curve->getControlPoints(k));
        curve->subPoint(k);
        if (!_keepsTangents)
        {
            if (index != removed) // else no key is left before it
                curve->computeOuttangent(k - 1, -1);
            curve->computeIntangent(k, -1);
        }
        ++removed;
    }
}

void kxAddAnimKeyUndoCommand::addPoints(const osg::AnimCurvePtr& curve)
{
    if (_isDelete)
    {
        // A deleted key comes back beside one of its own time, not in its place.
        for (const osg::CCPnt& key : _points)
            curve->addControlPoint(key, false, true);
        return;
    }
    const bool isFirstRun = _added.empty();
    std::vector<Added> added;
    _indices.clear();
    for (std::size_t i = 0; i < _points.size(); ++i)
    {
        osg::CCPnt key = _points[i];
        const bool replaces = !isFirstRun && !_added[i].isNew;
        if (replaces && isNear(curve, _added[i].index, key))
            key.setX(curve->getControlPoints(_added[i].index).x());
        const std::size_t size = curve->getControlPoints().size();
        const osg::UInt32 index = curve->addControlPoint(key, isFirstRun || replaces, true);
        const bool isNew = curve->getControlPoints().size() > size;
        added.push_back({index, isNew});
        if (isNew)
            _indices.push_back(index);
    }
    _added = std::move(added);
}

void kxAddAnimKeyUndoCommand::keepAffected(const osg::AnimCurvePtr& curve)
{
    const auto& keys = curve->getControlPoints();
    _kept.clear();
    _keptSize = keys.size();
    if (_isDelete)
    {
        for (const unsigned int index : _indices)
            keepAround(curve, index);
        return;
    }
    for (const osg::CCPnt& key : _points)
    {
        const auto behind = std::upper_bound(keys.begin(), keys.end(), key, isBefore);
        keepAround(curve, behind == keys.begin() ? 0 : unsigned(behind - keys.begin()) - 1);
    }
}

void kxAddAnimKeyUndoCommand::keepAround(const osg::AnimCurvePtr& curve, unsigned int index)
{
    for (unsigned int i = index == 0 ? 0 : index - 1; i <= index + 1 && i < curve->getControlPoints().size(); ++i)
        _kept.emplace(i, curve->getControlPoints(i));
}

void kxAddAnimKeyUndoCommand::restoreKept(const osg::AnimCurvePtr& curve)
{
    if (curve->getControlPoints().size() != _keptSize)
        return; // the curve changed behind the stack's back
    for (const auto& [index, kept] : _kept)
    {
        if (!isNear(curve, index, kept))
            continue;
        osg::CCPnt& key = curve->getControlPoints(index);
        const float seconds = key.x(); // so that the order stays
        key = kept;
        key.setX(seconds);
    }
}

bool kxAddAnimKeyUndoCommand::canMergeWith(const QUndoCommand*) const
{
    return false;
}

bool kxAddAnimKeyUndoCommand::mergeWith(const QUndoCommand*)
{
    return false;
}
