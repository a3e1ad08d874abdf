#include <animation/kxShownMoment.h>

#include <animation/kxAnimEngine.h>
#include <animation/kxPoses.h>
#include <kxAnimManager.h>
#include <osg/FieldContainerFactory.h>

using namespace osg;

namespace
{
kxAnimEngine& engine()
{
    return kxAnimEngine::of(*kxAnimManager::the());
}
} // namespace

kxShownMoment::kxShownMoment()
    : _sceneFrame(engine().sceneFrame), _frame(kxAnimManager::the()->currentFrame()),
      _hasCamera(engine().film.hasCamera()), _poses(kxPoses::all())
{
    _rootId = engine().plan.shownRoot(_seconds).getFieldContainerId();
    for (const UInt32 id : engine().film.chosen())
        if (const SwitchPtr set = living<Switch>(id))
            _choices.emplace_back(id, set->getChoice());
}

void kxShownMoment::show() const
{
    kxAnimManager::the()->setCurrentFrame(_sceneFrame, false, true);
    if (_frame != _sceneFrame)
        kxAnimManager::the()->setCurrentFrameNoEvaluation(_frame, true);
    if (const AnimNodePtr root = living<AnimNode>(_rootId))
        engine().programs.show(root, _seconds);
    if (!_hasCamera)
        engine().film.releaseCamera();
    for (const auto& [id, choice] : _choices)
        if (const SwitchPtr set = living<Switch>(id))
            engine().film.choose(set, choice);
    for (const kxScenePlan::Pose& pose : _poses)
    {
        const FieldContainerPtr container = FieldContainerFactory::the()->getContainer(pose.id);
        if (container != NullFC && kxChannelTarget{container.getCPtr(), pose.field, pose.component}.write(pose.value))
            markChanged(container, pose.field->mask());
    }
}
