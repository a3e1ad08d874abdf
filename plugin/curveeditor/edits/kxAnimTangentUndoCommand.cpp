#include <curveeditor/edits/kxAnimTangentUndoCommand.h>

#include <osg/FieldContainerFactory.h>
#include <osg/Finite.h>

namespace
{

bool hasKey(const osg::AnimCurvePtr& curve, unsigned int index)
{
    return curve != osg::NullFC && index < curve->getControlPoints().size();
}

osg::Vec2f tangent(const osg::CCPnt& key, bool isIn)
{
    return isIn ? key.intangent() : key.outtangent();
}

unsigned int tangentType(const osg::CCPnt& key, bool isIn)
{
    return isIn ? key.inType : key.outType;
}

void setTangent(osg::CCPnt& key, bool isIn, const osg::Vec2f& vector)
{
    if (isIn)
        key.setIntangent(vector);
    else
        key.setOuttangent(vector);
}

void computeTangent(const osg::AnimCurvePtr& curve, unsigned int index, bool isIn, unsigned int type)
{
    if (isIn)
        curve->computeIntangent(index, osg::Int32(type));
    else
        curve->computeOuttangent(index, osg::Int32(type));
}

/// True where the tangent's own type gives its vector, so that setting that type again changes nothing.
bool isAsComputed(const osg::AnimCurvePtr& curve, unsigned int index, bool isIn)
{
    const osg::CCPnt before = curve->getControlPoints(index);
    computeTangent(curve, index, isIn, tangentType(before, isIn));
    const bool isSame = curve->getControlPoints(index) == before;
    curve->getControlPoints(index) = before;
    if (isIn || before.outType != osg::TangentType::Constant || !hasKey(curve, index + 1))
        return isSame;
    const osg::CCPnt& next = curve->getControlPoints(index + 1);
    return isSame && next.inType == osg::TangentType::Constant && next.intangent() == osg::Vec2f();
}
} // namespace

kxAnimTangentUndoCommand::kxAnimTangentUndoCommand(const osg::AnimCurvePtr& curve, unsigned int index, bool isIn,
                                                   const osg::Vector<float, 2>& vector, QUndoCommand* parent)
    : kxMergingCommand(kxUndoString("Move Tangent", "Animation"), parent), _curveId(0), _index(index), _isIn(isIn),
      _oldType(osg::TangentType::Free), _newType(osg::TangentType::Free)
{
    setObsolete(true);
    if (!hasKey(curve, index))
        return;
    const osg::CCPnt& key = curve->getControlPoints(index);
    const osg::Vec2f difference = vector - tangent(key, isIn);
    if (!osg::isFinite(difference))
        return;
    _curveId = curve.getFieldContainerId();
    _oldType = tangentType(key, isIn);
    _oldVector = tangent(key, isIn);
    _difference = difference;
    setObsolete(_oldType == osg::TangentType::Free && difference == osg::Vec2f());
}

kxAnimTangentUndoCommand::kxAnimTangentUndoCommand(const osg::AnimCurvePtr& curve, unsigned int index, bool isIn,
                                                   unsigned int type, QUndoCommand* parent)
    : kxMergingCommand(kxUndoString("Move Tangent", "Animation"), parent), _curveId(0), _index(index), _isIn(isIn),
      _oldType(type), _newType(type)
{
    setObsolete(true);
    if (!hasKey(curve, index) || type > osg::TangentType::Free)
        return;
    _curveId = curve.getFieldContainerId();
    _oldVector = tangent(curve->getControlPoints(index), isIn);
    _oldType = tangentType(curve->getControlPoints(index), isIn);
    if (_oldType == osg::TangentType::Free)
    {
        computeTangent(curve, index, isIn, type);
        _difference = tangent(curve->getControlPoints(index), isIn) - _oldVector;
    }
    setObsolete(type == _oldType && isAsComputed(curve, index, isIn));
    osg::markChanged(curve, osg::AnimCurveBase::ControlPointsFieldMask);
}

void kxAnimTangentUndoCommand::apply(bool forward)
{
    forward ? setNew() : setOld();
}

void kxAnimTangentUndoCommand::setNew()
{
    const osg::AnimCurvePtr curve = osg::living<osg::AnimCurve>(_curveId);
    _nextIn.reset();
    if (!_isIn && hasKey(curve, _index + 1))
    {
        const osg::CCPnt& next = curve->getControlPoints(_index + 1);
        _nextIn = NextIn{next.intangent(), next.inType};
    }
    change(_difference, _newType);
    if (_flattensNext && hasKey(curve, _index + 1))
    {
        curve->computeIntangent(_index + 1, osg::TangentType::Constant);
        osg::markChanged(curve, osg::AnimCurveBase::ControlPointsFieldMask);
    }
    _flattensNext = _flattensNext || (!_isIn && _newType == osg::TangentType::Constant);
}

void kxAnimTangentUndoCommand::setOld()
{
    change(-_difference, _oldType);
    const osg::AnimCurvePtr curve = osg::living<osg::AnimCurve>(_curveId);
    if (!hasKey(curve, _index))
        return;
    // Not by the difference, whose rounding would stay.
    setTangent(curve->getControlPoints(_index), _isIn, _oldVector);
    restoreNextIn(curve);
    osg::markChanged(curve, osg::AnimCurveBase::ControlPointsFieldMask);
}

bool kxAnimTangentUndoCommand::isBackAtStart(const osg::AnimCurvePtr& curve) const
{
    if (!hasKey(curve, _index))
        return false;
    const osg::CCPnt& key = curve->getControlPoints(_index);
    if (tangent(key, _isIn) != _oldVector || tangentType(key, _isIn) != _oldType)
        return false;
    if (!_nextIn || !hasKey(curve, _index + 1))
        return true;
    const osg::CCPnt& next = curve->getControlPoints(_index + 1);
    return next.intangent() == _nextIn->vector && next.inType == _nextIn->type;
}

void kxAnimTangentUndoCommand::restoreNextIn(const osg::AnimCurvePtr& curve) const
{
    const bool touched = _flattensNext || _oldType == osg::TangentType::Constant;
    if (!_nextIn || !touched || !hasKey(curve, _index + 1))
        return;
    osg::CCPnt& next = curve->getControlPoints(_index + 1);
    next.setIntangent(_nextIn->vector);
    next.inType = _nextIn->type;
}

void kxAnimTangentUndoCommand::change(const osg::Vector<float, 2>& difference, unsigned int type)
{
    const osg::AnimCurvePtr curve = osg::living<osg::AnimCurve>(_curveId);
    if (!hasKey(curve, _index))
        return;
    if (type == osg::TangentType::Free)
    {
        osg::CCPnt key = curve->getControlPoints(_index);
        const osg::Vec2f moved = tangent(key, _isIn) + difference;
        if (!osg::isFinite(moved))
            return;
        setTangent(key, _isIn, moved);
        curve->getControlPoints(_index) = key;
    }
    computeTangent(curve, _index, _isIn, type);
    if (!_isIn && type == osg::TangentType::Constant)
        curve->computeIntangent(_index + 1, osg::TangentType::Constant);
    osg::markChanged(curve, osg::AnimCurveBase::ControlPointsFieldMask);
}

bool kxAnimTangentUndoCommand::canMergeWith(const QUndoCommand* other) const
{
    if (!kxUndoCommand::canMergeWith(other))
        return false;
    const auto& next = static_cast<const kxAnimTangentUndoCommand&>(*other);
    return next._curveId == _curveId && next._isIn == _isIn && next._index == _index &&
           osg::isFinite(_difference + next._difference);
}

bool kxAnimTangentUndoCommand::mergeWith(const QUndoCommand* other)
{
    if (!canMergeWith(other))
        return false;
    const auto& next = static_cast<const kxAnimTangentUndoCommand&>(*other);
    setMergeValue(next.mergeValue());
    _difference += next._difference;
    _newType = next._newType;
    _flattensNext = _flattensNext || next._flattensNext;
    setObsolete(isBackAtStart(osg::living<osg::AnimCurve>(_curveId)));
    return true;
}
