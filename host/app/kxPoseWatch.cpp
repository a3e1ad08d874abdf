#include "kxPoseWatch.h"

#include <kernel/kxSelection.h>
#include <kxAnimManager.h>
#include <kxLog.h>
#include <scene/kxScene.h>

#include <algorithm>
#include <utility>

kxPoseWatch::kxPoseWatch(QObject* parent) : QObject(parent)
{
    connect(&kxSelection::the(), &kxSelection::nodesChanged, this, [this] { _said.clear(); });
    // At the end of a turn, whoever wrote: what was keyed along with it is no pose any more.
    connect(kxScene::the(), &kxScene::appearanceChanged, this, &kxPoseWatch::look);
}

void kxPoseWatch::look()
{
    if (std::exchange(_time, kxAnimManager::the()->currentTime()) != kxAnimManager::the()->currentTime())
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
                tr("%1 is animated: this pose is lost at the next frame unless it is keyed (Ctrl+K).").arg(name));
    }
}

void kxPoseWatch::warnOfFile()
{
    if (const QString names = kxPoses::unsaved(); !names.isEmpty())
        kxLog::warning(tr("Saved without poses that aren't keyed: %1. The file has what the keys say.").arg(names));
}
