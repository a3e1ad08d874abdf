#include "kxPoseWatch.h"

#include <animation/kxAnimEngine.h>
#include <kernel/kxSelection.h>
#include <kxAnimManager.h>
#include <kxLog.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxScene.h>

#include <algorithm>
#include <utility>

kxPoseWatch::kxPoseWatch(QObject* parent) : QObject(parent)
{
    connect(&kxSelection::the(), &kxSelection::nodesChanged, this, [this] { _said.clear(); });
    // At the end of a turn, whoever wrote: what was keyed along with it is no pose any more.
    connect(kxScene::the(), &kxScene::appearanceChanged, this, &kxPoseWatch::look);
}

kxPoseWatch::Moment kxPoseWatch::moment()
{
    double seconds = 0;
    const auto shown = kxAnimEngine::of(*kxAnimManager::the()).plan.shownRoot(seconds);
    return {shown.getFieldContainerId(), shown == osg::NullFC ? kxAnimManager::the()->currentTime() : seconds};
}

void kxPoseWatch::look()
{
    const Moment now = moment();
    const auto shown = osg::living<osg::AnimNode>(now.first);
    if (std::exchange(_moment, now) != now)
    {
        _said.clear();
        _poses.clear();
        return; // evaluation has just written all: there is nothing to look for at each frame of a playback
    }
    const std::vector<kxScenePlan::Pose> before = std::exchange(_poses, kxPoses::all());
    for (const kxScenePlan::Pose& pose : _poses)
    {
        const bool isKnown = std::any_of(before.begin(), before.end(),
                                         [&pose](const kxScenePlan::Pose& known)
                                         {
                                             return known.id == pose.id && known.field == pose.field &&
                                                    known.component == pose.component && known.value == pose.value;
                                         });
        if (const QString name = kxPoses::nameOf(pose.id); !isKnown && _said.insert(name).second)
            kxLog::warning(
                shown == osg::NullFC
                    ? tr("%1 is animated: this pose is lost at the next frame unless it is keyed (Ctrl+K).").arg(name)
                    : tr("%1 is animated by '%2', which is shown: this edit is lost at its next frame. The keys that "
                         "it plays are edited in Curves.")
                          .arg(name, QString::fromStdString(shown->getNodeName())));
    }
}

void kxPoseWatch::warnOfFile()
{
    if (const QString names = kxPoses::unsaved(); !names.isEmpty())
        kxLog::warning(tr("Saved without poses that aren't keyed: %1. The file has what the keys say.").arg(names));
}
