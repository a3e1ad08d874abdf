#include <osg/AnimNode.h>

#include <animation/kxAnimTree.h>
#include <animation/kxNodeTime.h>
#include <osg/AnimCores.h>
#include <osg/AnimCurve.h>
#include <osg/Finite.h>
#include <scene/FieldDescription.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace osg
{

namespace
{
/// The extent that a core has of itself, in its node's own time.
bool coreExtent(const NodeCorePtr& core, float& start, float& end)
{
    if (const AnimCurvePtr curve = AnimCurvePtr::dcast(core))
    {
        if (curve->isEmpty())
            return false;
        start = curve->getControlPoints().front().x();
        end = curve->getControlPoints().back().x();
        return true;
    }
    start = end = 0;
    if (const AnimShotPtr shot = AnimShotPtr::dcast(core))
        end = std::max(0.0f, shot->getShotDuration()) + std::max(0.0f, shot->getTransitionDuration());
    else if (const TimeShapeCachePtr cache = TimeShapeCachePtr::dcast(core))
    {
        start = cache->getRange().x();
        end = std::max(start, cache->getRange().y());
    }
    else
        return AnimSequencePtr::dcast(core) != NullFC; // a trigger is a point in time
    return true;
}

/// A time as a record holds it.
float narrowed(double seconds)
{
    const double limit = std::numeric_limits<float>::max();
    return float(std::clamp(seconds, -limit, limit));
}
} // namespace

FieldContainerType AnimNodeBase::_type("AnimNodeBase", &Node::_type, "AnimNode", nullptr,
                                       &AnimNodeBase::describeFields);
FieldContainerType AnimNode::_type(
    "AnimNode", &AnimNodeBase::_type, nullptr, [] { return FieldContainerPtr(AnimNodeBase::create()); }, nullptr);

AnimNodePtr AnimNodeBase::create()
{
    return AnimNodePtr(new AnimNode);
}

void AnimNodeBase::describeFields(FieldList& fields)
{
    fields.push_back(FieldDescription::member("offset", OffsetFieldMask, &AnimNodeBase::_offset));
    fields.push_back(FieldDescription(
        "scale", ScaleFieldMask,
        [](const FieldContainer& container) { return FieldValue(static_cast<const AnimNodeBase&>(container)._scale); },
        [](FieldContainer& container, const FieldValue& value)
        {
            const float* const scale = std::get_if<float>(&value);
            if (scale == nullptr || !std::isfinite(*scale) || *scale <= 0)
                return false;
            static_cast<AnimNodeBase&>(container).setScale(*scale);
            return true;
        }));
    fields.push_back(FieldDescription::member("postCycles", PostCyclesFieldMask, &AnimNodeBase::_postCycles));
    fields.push_back(FieldDescription::member("locked", LockedFieldMask, &AnimNodeBase::_locked));
    fields.push_back(FieldDescription::member("flipped", FlippedFieldMask, &AnimNodeBase::_flipped));
    fields.push_back(FieldDescription::member("motionBlur", MotionBlurFieldMask, &AnimNodeBase::_motionBlur));
    fields.push_back(FieldDescription::member("hidden", HiddenFieldMask, &AnimNodeBase::_hidden));
    fields.push_back(FieldDescription::member("playing", PlayingFieldMask, &AnimNodeBase::_playing).transient());
    fields.push_back(FieldDescription::member("usePlayRange", UsePlayRangeFieldMask, &AnimNodeBase::_usePlayRange));
    fields.push_back(FieldDescription::member("playRange", UsePlayRangeFieldMask, &AnimNodeBase::_playRange));
    fields.push_back(
        FieldDescription::member("lastEvaluationTime", LastEvaluationTimeFieldMask, &AnimNodeBase::_lastEvaluationTime)
            .transient());
}

void AnimNodeBase::setOffset(const Vec2f& offset)
{
    if (isFinite(offset))
        _offset = offset;
}

void AnimNodeBase::setPlayRange(const Pnt2f& range)
{
    if (isFinite(range))
        _playRange = range;
}

void AnimNodeBase::setLastEvaluationTime(float seconds)
{
    if (std::isfinite(seconds))
        _lastEvaluationTime = seconds;
}

void AnimNodeBase::setScale(float scale)
{
    if (std::isfinite(scale) && scale > 0)
        _scale = scale;
}

void AnimNode::moveBy(float seconds, float tracks)
{
    const double own = double(seconds) / kxNodeTime::toRoot(getParent()).scale;
    const Vec2f offset(narrowed(getOffset().x() + own), getOffset().y() + tracks);
    if (isFinite(offset))
        setOffset(offset);
}

void AnimNode::scaleBy(float factor, float pivotSeconds)
{
    if (!isFinite(factor, pivotSeconds) || factor <= 0)
        return;
    const double pivot = kxNodeTime::toRoot(getParent()).from(pivotSeconds);
    const float scale = float(double(getScale()) * factor);
    const float offset = float(pivot + (getOffset().x() - pivot) * factor);
    if (!std::isnormal(scale) || !std::isfinite(offset))
        return;
    setScale(scale);
    setOffset(Vec2f(offset, getOffset().y()));
}

bool AnimNode::getContentExtent(float& start, float& end) const
{
    if (!_extentValid)
    {
        float first = 0, last = 0;
        _extentEmpty = !coreExtent(getCore(), first, last);
        for (const NodePtr& child : getChildren())
        {
            const AnimNodePtr node = AnimNodePtr::dcast(child);
            float a = 0, b = 0;
            if (node == NullFC || !node->getContentExtent(a, b))
                continue;
            node->getBounds(a, b);
            first = _extentEmpty ? a : std::min(first, a);
            last = _extentEmpty ? b : std::max(last, b);
            _extentEmpty = false;
        }
        if (getUsePlayRange() && !_extentEmpty)
        {
            const float low = std::min(getPlayRange().x(), getPlayRange().y());
            const float high = std::max(getPlayRange().x(), getPlayRange().y());
            const float whole = last;
            last = std::clamp(high, first, whole);
            first = std::clamp(low, first, whole);
        }
        _extentStart = first;
        _extentEnd = last;
        _extentValid = true;
    }
    if (_extentEmpty)
        return false;
    start = _extentStart;
    end = _extentEnd;
    return true;
}

void AnimNode::getBounds(float& start, float& end) const
{
    double first = 0, last = 0;
    if (!kxNodeTime::extent(*this, first, last))
    {
        start = end = getOffset().x();
        return;
    }
    if (std::isinf(last))
        last = first + double(getScale()) * (double(_extentEnd) - _extentStart);
    start = narrowed(first);
    end = narrowed(last);
}

void AnimNode::getWorldVolume(BoxVolume& volume) const
{
    float start = 0, end = 0;
    getBounds(start, end);
    const kxNodeTime::Map map = kxNodeTime::toRoot(getParent());
    volume.setBounds(Pnt3f(narrowed(map.to(start)), 0, 0), Pnt3f(narrowed(map.to(end)), 0, 0));
}

void AnimNode::changed(const BitVector& whichField, UInt32 origin)
{
    AnimNodeBase::changed(whichField, origin);
    if (whichField.intersects(kxAnimTree::TimeFieldMask))
        invalidateExtent();
}

void AnimNode::invalidateExtent() const
{
    const Node* above = this;
    for (; above != nullptr; above = above->getParent().getCPtr())
        if (above->getType().isDerivedFrom(AnimNode::_type))
            static_cast<const AnimNode*>(above)->_extentValid = false;
}

} // namespace osg
