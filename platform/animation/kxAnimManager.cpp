#include <kxAnimManager.h>

#include <animation/kxAnimManagerPrivate.h>
#include <animation/kxAnimScene.h>
#include <animation/kxAttachmentRegistry.h>
#include <animation/kxFrameTime.h>
#include <animation/kxNodeTime.h>
#include <animation/kxRateCommand.h>
#include <animation/kxTimeRescale.h>
#include <kxController.h>
#include <kxFrameRate.h>
#include <kxLog.h>
#include <kxMessageNames.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxScene.h>
#include <undo/kxUndoRecorder.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
AnimNodePtr makeRoot(const char* name)
{
    const AnimNodePtr root = AnimNodeBase::create();
    root->setCore(Group::create());
    root->setNodeName(name);
    return root;
}

/// Of the settings that a scene's file holds.
template <class T>
void setOfScene(T& setting, T value)
{
    if (setting == value)
        return;
    setting = value;
    kxScene::the()->markSettingsChanged();
}

/// What is edited may cost a moved object its pose, which undo gives back as long as the time is the same.
std::function<void()> keepPoses(const kxAnimEngine& engine)
{
    const auto isSceneShown = [&engine] { return engine.plan.isShown() && engine.queue.isEmpty(); };
    std::vector<kxScenePlan::Pose> poses = isSceneShown() ? engine.plan.poses() : std::vector<kxScenePlan::Pose>();
    if (poses.empty())
        return nullptr;
    return [poses = std::move(poses), time = kxAnimManager::the()->currentTime(), isSceneShown]
    {
        if (!isSceneShown() || kxAnimManager::the()->currentTime() != time)
            return;
        kxAnimManager::the()->updateSceneAnimCurveData(); // else what the undone step left stale would come later
        for (const kxScenePlan::Pose& pose : poses)
        {
            const FieldContainerPtr container = FieldContainerFactory::the()->getContainer(pose.id);
            if (container != NullFC &&
                kxChannelTarget{container.getCPtr(), pose.field, pose.component}.write(pose.value))
                markChanged(container, pose.field->mask());
        }
    };
}
} // namespace

kxAnimManager* kxAnimManager::the()
{
    static kxAnimManager* const manager = new kxAnimManager;
    return manager;
}

kxAnimManager::kxAnimManager() : _p(new Private)
{
    kxUndoRecorder::the().setKeeper([this] { return keepPoses(_p->engine); });
    _p->clipRoot = makeRoot("Clips");
    _p->sceneRoot = makeRoot("Structure");
}

double kxAnimManager::fps() const
{
    return _p->fps;
}

void kxAnimManager::setFPS(double fps)
{
    if (!kxIsFrameRate(fps))
    {
        kxLog::warning("A frame rate has to be above 0, and at most a million.");
        return;
    }
    if (fps == _p->fps)
        return;
    const double old = _p->fps;
    // The steps on the undo stack hold seconds of the rate they were made at, so the way back to them leads over this.
    if (_p->changeRate(old, fps, _p->keepKeysAtFrame))
        kxUndoStack::get(0).add(
            new kxRateCommand(old, fps, [this](double from, double to) { _p->changeRate(from, to, true); }));
}

bool kxAnimManager::Private::changeRate(double from, double to, bool keepFrames)
{
    setOfScene(fps, to);
    const bool hasMoved = keepFrames && kxTimeRescale::keepFrames(from, to);
    evaluate(true); // another time at the same frame
    kxSend(kxMessageName::ChangedFPS);
    return hasMoved;
}

double kxAnimManager::playbackFPS() const
{
    return _p->playbackFps;
}

void kxAnimManager::setPlaybackFPS(double fps)
{
    if (fps != -1.0 && !kxIsFrameRate(fps))
    {
        kxLog::warning("A playback rate has to be above 0 and at most a million, or -1 for every frame.");
        return;
    }
    if (fps == _p->playbackFps)
        return;
    setOfScene(_p->playbackFps, fps);
    kxSend(kxMessageName::ChangedFPS);
}

double kxAnimManager::currentFrame() const
{
    return _p->frame;
}

double kxAnimManager::currentTime() const
{
    return _p->frame / _p->fps;
}

void kxAnimManager::Private::evaluate(bool all)
{
    // The time as records hold it, so that a frame meets the key that was made at it.
    const double seconds = kxFrameTime::seconds(frame, fps);
    if (playbackContextHint == 0 || !curveEditorData)
    {
        engine.plan.evaluate(seconds, all);
        return;
    }
    std::vector<kxCurveData> shown;
    curveEditorData(shown);
    std::vector<AnimNodePtr> nodes;
    for (const kxCurveData& data : shown)
        if (const AnimNodePtr node = living<AnimNode>(data.nodeId))
            nodes.push_back(node);
    engine.plan.update(); // rest values are known before anything is written
    if (all || engine.plan.isStale())
        engine.programs.ofCurves(nodes).evaluate(seconds);
    engine.plan.settle();
}

void kxAnimManager::Private::evaluateAnew(bool all)
{
    double clipSeconds = 0;
    const AnimNodePtr clip = engine.plan.shownClip(clipSeconds);
    if (clip == NullFC || (playbackContextHint != 0 && curveEditorData))
        return evaluate(all);
    // The present frame is the clip's, which goes on being shown; what it doesn't drive is as at the timeline's.
    engine.plan.evaluate(kxFrameTime::seconds(engine.sceneFrame, fps), all);
    engine.programs.show(clip, clipSeconds);
}

/// A clip's frame shows nothing of what other animations and sequences have left, unless something goes on playing.
void kxAnimManager::Private::takeBackOthers(const AnimNodePtr& node)
{
    const bool hasOthers = engine.plan.holdsOthersThan(node) || !engine.film.chosen().empty();
    if (hasOthers && engine.queue.isEmpty() && AnimClipPtr::dcast(node->getCore()) != NullFC)
        engine.plan.evaluate(kxFrameTime::seconds(engine.sceneFrame, fps), true);
}

void kxAnimManager::Private::forgetAnnounced()
{
    announcedFrame.reset();
    announcedFullFrame.reset();
}

void kxAnimManager::Private::announce(bool force)
{
    const double now = frame;
    const int full = kxFrameTime::wholeFrame(now);
    const bool hasFullChanged = force || full != announcedFullFrame;
    announcedFrame = now;
    announcedFullFrame = full;
    kxMessage message;
    message.set("frame", now);
    kxController::call(kxMessageName::CurrentFrameChanged, message, 0);
    if (!hasFullChanged)
        return;
    kxMessage fullMessage;
    fullMessage.set("frame", full);
    kxController::call(kxMessageName::CurrentFullFrameChanged, fullMessage, 0);
}

void kxAnimManager::setCurrentFrame(double frame, bool force, bool announce)
{
    if (!std::isfinite(frame))
        return;
    const bool moves = frame != _p->frame;
    _p->frame = _p->engine.sceneFrame = frame;
    const bool all = moves || force || !_p->engine.plan.isShown();
    if (all || _p->engine.plan.isStale())
        _p->evaluate(all);
    if (announce && (moves || force || frame != _p->announcedFrame))
        _p->announce(force);
    else if (moves)
        _p->forgetAnnounced();
}

void kxAnimManager::setCurrentFrameNoEvaluation(double frame, bool announce)
{
    if (!std::isfinite(frame))
        return;
    const bool moves = frame != _p->frame;
    _p->frame = frame;
    if (moves)
        _p->engine.plan.setOverwritten();
    if (announce && (moves || frame != _p->announcedFrame))
        _p->announce(false);
    else if (moves)
        _p->forgetAnnounced();
}

void kxAnimManager::evaluateByFrame(const AnimNodePtr& node, double frame, bool update, bool triggers, bool recordTime)
{
    if (node == NullFC || !std::isfinite(frame))
        return;
    const UInt32 id = node->getId();
    const float seconds = kxFrameTime::seconds(frame, _p->fps);
    const float before = node->getLastEvaluationTime();
    const kxNodeTime::Map toRoot = kxNodeTime::toRoot(node->getParent());
    _p->takeBackOthers(node);
    _p->engine.programs.show(node, toRoot.from(seconds));
    if (triggers || recordTime)
        node->setLastEvaluationTime(seconds);
    if (recordTime)
        markChanged(node, AnimNodeBase::LastEvaluationTimeFieldMask);
    if (triggers)
        _p->engine.triggers.pass(living<AnimNode>(id), toRoot.from(before), toRoot.from(seconds));
    if (update)
        kxController::updateRender(true);
}

int kxAnimManager::fullRangeStart() const
{
    return _p->fullRangeStart;
}

void kxAnimManager::setFullRangeStart(int frame)
{
    setOfScene(_p->fullRangeStart, frame);
}

int kxAnimManager::fullRangeEnd() const
{
    return _p->fullRangeEnd;
}

void kxAnimManager::setFullRangeEnd(int frame)
{
    setOfScene(_p->fullRangeEnd, frame);
}

int kxAnimManager::detailedRangeStart() const
{
    return _p->detailedRangeStart;
}

void kxAnimManager::setDetailedRangeStart(int frame)
{
    setOfScene(_p->detailedRangeStart, frame);
}

int kxAnimManager::detailedRangeEnd() const
{
    return _p->detailedRangeEnd;
}

void kxAnimManager::setDetailedRangeEnd(int frame)
{
    setOfScene(_p->detailedRangeEnd, frame);
}

bool kxAnimManager::loopTimeline() const
{
    return _p->loopTimeline;
}

void kxAnimManager::setLoopTimeline(bool value)
{
    setOfScene(_p->loopTimeline, value);
}

bool kxAnimManager::evaluateSubframes() const
{
    return _p->evaluateSubframes;
}

void kxAnimManager::setEvaluateSubframes(bool value)
{
    setOfScene(_p->evaluateSubframes, value);
}

bool kxAnimManager::keepKeysAtFrame() const
{
    return _p->keepKeysAtFrame;
}

void kxAnimManager::setKeepKeysAtFrame(bool value)
{
    setOfScene(_p->keepKeysAtFrame, value);
}

int kxAnimManager::playbackRangeHint() const
{
    return _p->playbackRangeHint;
}

void kxAnimManager::setPlaybackRangeHint(int value)
{
    setOfScene(_p->playbackRangeHint, value);
}

int kxAnimManager::playbackContextHint() const
{
    return _p->playbackContextHint;
}

void kxAnimManager::setPlaybackContextHint(int value)
{
    const bool changes = (value == 0) != (_p->playbackContextHint == 0);
    _p->playbackContextHint = value;
    if (changes)
        _p->evaluate(true);
}

bool kxAnimManager::getVerifyClipStructure() const
{
    return _p->verifyClipStructure;
}

void kxAnimManager::setVerifyClipStructure(bool value)
{
    _p->verifyClipStructure = value;
}

void kxAnimManager::reevaluateAnimations(bool force)
{
    if (_p->engine.plan.isLost())
        setCurrentFrame(_p->engine.sceneFrame, true, true); // from the clip's frame back to the timeline's
    else if (force || _p->engine.plan.isStale())
        _p->evaluateAnew(force);
}

void kxAnimManager::updateSceneAnimCurveData()
{
    if (_p->engine.plan.isStale())
        _p->evaluateAnew(false);
}

void kxAnimManager::setMotionBlurObjectID(unsigned int id)
{
    _p->motionBlurObjectId = id;
}

void kxAnimManager::resetMotionBlurObjectID()
{
    _p->motionBlurObjectId = 0;
}

unsigned int kxAnimManager::motionBlurObjectID() const
{
    return _p->motionBlurObjectId;
}

void kxAnimManager::setGetCurveEditorDataCB(CurveEditorDataCB function)
{
    _p->curveEditorData = std::move(function);
}

void kxAnimManager::pySetCurrentFrame(double frame)
{
    the()->setCurrentFrame(frame, false, true);
}

double kxAnimManager::pyGetCurrentFrame()
{
    return the()->currentFrame();
}

double kxAnimScene::frame()
{
    return kxAnimEngine::of(*kxAnimManager::the()).sceneFrame;
}

bool kxAnimScene::contains(const FieldContainerPtr& object)
{
    if (kxScene::the()->contains(object))
        return true;
    NodePtr top = NodePtr::dcast(object);
    while (top != NullFC && top->getParent() != NullFC)
        top = top->getParent();
    if (top == NullFC)
        return false;
    const kxAnimManager& manager = *kxAnimManager::the();
    if (top == manager.clipStructureRoot() || top == manager.sceneStructureRoot())
        return true;
    const AnimAttachmentPtr attachment = kxAttachmentRegistry::ofRoot(top);
    if (attachment == NullFC)
        return false;
    const auto& owners = attachment->getParents();
    return std::any_of(owners.begin(), owners.end(),
                       [](const AttachmentContainerPtr& owner) { return kxScene::the()->contains(owner); });
}

void kxAnimScene::clear()
{
    kxAnimManager* const manager = kxAnimManager::the();
    kxAnimEngine& engine = kxAnimEngine::of(*manager);
    engine.clear();
    for (const AnimNodePtr& root : {manager->clipStructureRoot(), manager->sceneStructureRoot()})
    {
        while (root->getNChildren() > 0)
            root->subChild(root->getChild(root->getNChildren() - 1));
        markChanged(root, Node::ChildrenFieldMask);
    }
    manager->resetMotionBlurObjectID();
    manager->setCurrentFrameNoEvaluation(0, false);
    engine.sceneFrame = 0;
    engine.watch.clearStale();
}
