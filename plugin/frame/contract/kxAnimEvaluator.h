#pragma once

#include <kxAnimManager.h>

/// Computes values, writes them into the scene, and plays animations beside the timeline.
class KX_API kxAnimEvaluator
{
public:
    static kxAnimEvaluator* the();

    /// As in kxAnimManager. "dequeuedAnimation" goes out for each node that leaves the queue.
    void enqueue(const osg::AnimNodePtr& node, bool restart);
    void dequeue(const osg::AnimNodePtr& node, bool reset);
    void dequeueAll();
    bool isPlaying(const osg::AnimNodePtr& node) const;

    /// While blocked, triggers don't fire. Calls don't nest.
    void blockSequenceEvaluation(bool block);

    /// Writes a value into the channel that `curve` drives, or into a channel of an object. A value that isn't finite
    /// is refused. `mark`: the field is marked, and the change is a step of the undo stack.
    void setOSGFieldValue(const osg::AnimCurvePtr& curve, float value, bool mark);
    void setOSGFieldValue(const kxAnimManager::kxOSGChannelData& channel, float value, bool mark);

    /// Finds what `curve` drives on `container`: `target` is the container that holds the field, `aims` all that it
    /// drives. False where it drives nothing there.
    bool computeAim(const osg::AnimCurvePtr& curve, const osg::FieldContainerPtr& container,
                    osg::FieldContainerPtr& target, std::vector<osg::FieldContainerPtr>& aims) const;
    /// The first object of the scene under whose attachment the curve is, null where there is none.
    osg::FieldContainerPtr getFirstAim(const osg::AnimCurvePtr& curve) const;

private:
    kxAnimEvaluator();
    ~kxAnimEvaluator() = delete;

    struct Private;
    std::unique_ptr<Private> _p;
    friend class kxAnimManager;
};
