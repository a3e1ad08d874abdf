#include <animation/kxTimeRescale.h>

#include <animation/kxFrameTime.h>
#include <osg/AnimCores.h>
#include <osg/AnimCurve.h>
#include <osg/AnimNode.h>
#include <osg/FieldContainerFactory.h>

#include <algorithm>
#include <limits>

using namespace osg;

namespace
{
int pauses = 0;

class Rescale
{
public:
    Rescale(double oldFps, double newFps) : _oldFps(oldFps), _newFps(newFps) {}

    /// For a time that says when something was shown, which is no content.
    float quietly(float seconds) const { return kxFrameTime::seconds(kxFrameTime::frame(seconds, _oldFps), _newFps); }
    float operator()(float seconds) const
    {
        const float moved = quietly(seconds);
        _hasMoved = _hasMoved || moved != seconds;
        return moved;
    }
    Vec2f vector(const Vec2f& v) const
    {
        constexpr double Largest = double(std::numeric_limits<float>::max());
        return Vec2f(float(std::clamp(v.x() * (_oldFps / _newFps), -Largest, Largest)), v.y());
    }

    bool hasMoved() const { return _hasMoved; }

private:
    double _oldFps, _newFps;
    mutable bool _hasMoved = false;
};

void rescaleCurve(AnimCurve& curve, const Rescale& rescale)
{
    for (CCPnt& key : curve.editControlPoints())
    {
        key.setX(rescale(key.x()));
        key.setIntangent(rescale.vector(key.intangent()));
        key.setOuttangent(rescale.vector(key.outtangent()));
    }
}

void rescaleNode(AnimNode& node, const Rescale& rescale)
{
    node.setOffset(Vec2f(rescale(node.getOffset().x()), node.getOffset().y()));
    node.setPlayRange(Pnt2f(rescale(node.getPlayRange().x()), rescale(node.getPlayRange().y())));
    node.setLastEvaluationTime(rescale.quietly(node.getLastEvaluationTime()));
}
} // namespace

kxTimeRescale::Pause::Pause()
{
    ++pauses;
}

kxTimeRescale::Pause::~Pause()
{
    --pauses;
}

bool kxTimeRescale::keepFrames(double oldFps, double newFps)
{
    if (pauses > 0)
        return false;
    const Rescale rescale(oldFps, newFps);
    const FieldContainerFactory& factory = *FieldContainerFactory::the();
    const std::size_t count = factory.getFieldContainerStore().size();
    for (UInt32 id = 1; id < count; ++id)
    {
        const FieldContainerPtr container = factory.getContainer(id);
        if (container == NullFC)
            continue;
        if (const AnimCurvePtr curve = AnimCurvePtr::dcast(container))
        {
            rescaleCurve(*curve, rescale);
            markChanged(curve, AnimCurveBase::ControlPointsFieldMask);
        }
        else if (const AnimNodePtr node = AnimNodePtr::dcast(container))
        {
            rescaleNode(*node, rescale);
            markChanged(node, AnimNodeBase::OffsetFieldMask | AnimNodeBase::UsePlayRangeFieldMask);
        }
        else if (const AnimShotPtr shot = AnimShotPtr::dcast(container))
        {
            shot->setShotDuration(rescale(shot->getShotDuration()));
            shot->setTransitionDuration(rescale(shot->getTransitionDuration()));
            markChanged(shot, AnimShotBase::ShotFieldMask);
        }
        else if (const AnimWizClipPtr clip = AnimWizClipPtr::dcast(container))
        {
            clip->setStart(rescale(clip->getStart()));
            clip->setDuration(rescale(clip->getDuration()));
            markChanged(clip, AnimWizClipBase::StartFieldMask | AnimWizClipBase::DurationFieldMask);
        }
        else if (const TimeShapeCachePtr cache = TimeShapeCachePtr::dcast(container))
        {
            cache->setRange(Pnt2f(rescale(cache->getRange().x()), rescale(cache->getRange().y())));
            markChanged(cache, TimeShapeCacheBase::RangeFieldMask);
        }
    }
    return rescale.hasMoved();
}
