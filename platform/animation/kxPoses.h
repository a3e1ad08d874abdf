#pragma once

#include <animation/kxScenePlan.h>

#include <QString>
#include <QStringList>

/// What was given to channels that the scene's time, or the animation that is shown instead, drives, and no key holds:
/// it lasts until time moves.
namespace kxPoses
{
/// None while something plays beside the timeline. Of switches none: what they show is their own.
KX_API std::vector<kxScenePlan::Pose> all();
/// What the curves below a node drive in the scene, with the values of the moment.
KX_API std::vector<kxScenePlan::Pose> drivenBy(const osg::AnimNodePtr& root);
/// Of the object or material that `id` belongs to, in quotes.
KX_API QString nameOf(osg::UInt32 id);
/// The names of those whose poses no file would hold, joined; empty for none.
KX_API QString unsaved();
} // namespace kxPoses
