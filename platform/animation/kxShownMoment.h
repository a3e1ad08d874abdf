#pragma once

#include <animation/kxScenePlan.h>

#include <utility>

/// What is shown: the timeline's frame, the animation that is shown instead and when, what was given to both and lasts
/// until time moves. For whoever shows other moments meanwhile.
class KX_API kxShownMoment
{
public:
    /// The present one.
    kxShownMoment();
    /// Shows it again; what has gone since is left out.
    void show() const;

private:
    double _sceneFrame, _frame; ///< of the timeline, and that of the kernel, which may be a clip's
    osg::UInt32 _rootId = 0;    ///< 0 for the timeline
    double _seconds = 0;
    bool _hasCamera;
    std::vector<std::pair<osg::UInt32, osg::Int32>> _choices; ///< that pass, by the switch's id
    std::vector<kxScenePlan::Pose> _poses;
};
