#include "kxFilmPlayer.h"

#include <animation/kxAnimEngine.h>
#include <animation/kxFrameTime.h>
#include <animation/kxPlaybackClock.h>
#include <edits/kxSettingCommand.h>
#include <kxAnimEvaluator.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxFramePlayer.h>
#include <kxScenegraph.h>
#include <kxUndo.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxScene.h>
#include <scene/kxScenery.h>
#include <view/kxView3D.h>

#include <algorithm>
#include <cmath>

namespace
{
kxTriggers& triggers()
{
    return kxAnimEngine::of(*kxAnimManager::the()).triggers;
}

void evaluate(const osg::AnimNodePtr& clip, double frame)
{
    kxAnimManager::the()->evaluateByFrame(clip, frame, false, true, false);
}

/// No time passes from where `clip` was to this frame.
void beginAnew(const osg::AnimNodePtr& clip, double frame)
{
    clip->setLastEvaluationTime(float(kxFrameTime::seconds(frame, kxAnimManager::the()->fps())));
}
} // namespace

kxFilmPlayer::kxFilmPlayer(kxSceneryStage* stage, QObject* parent) : QObject(parent), _stage(stage)
{
    setClip(osg::AnimNodePtr());
}

kxFilmPlayer::~kxFilmPlayer()
{
    kxPlaybackClock::the().stop(_ticks);
}

osg::AnimNodePtr kxFilmPlayer::clip() const
{
    const auto clip = osg::living<osg::AnimNode>(_clipId);
    return clip != osg::NullFC && kxNodeUtils::hasParent(clip, kxAnimManager::the()->clipStructureRoot())
               ? clip
               : osg::AnimNodePtr();
}

void kxFilmPlayer::setClip(const osg::AnimNodePtr& clip)
{
    halt();
    _clipId = clip.getFieldContainerId();
    _range = present();
    _frame = clip == osg::NullFC ? kxAnimManager::the()->currentFrame() : _range.first;
    Q_EMIT changed();
}

std::string kxFilmPlayer::rangeKey() const
{
    const osg::AnimNodePtr played = clip();
    return kxScenery::filmRangeKey(played == osg::NullFC ? std::string() : played->getNodeName());
}

kxRenderSource::Range kxFilmPlayer::present() const
{
    const QStringList kept = QString::fromStdString(kxSettingCommand::stored(rangeKey())).split(QLatin1Char(' '));
    bool isFirst = false, isLast = false;
    const int first = kept.value(0).toInt(&isFirst), last = kept.value(1).toInt(&isLast);
    const bool isRange = isFirst && isLast && first <= last && first >= -kxRenderSource::LargestFrame &&
                         last <= kxRenderSource::LargestFrame; // a file may hold anything
    return isRange ? kxRenderSource::Range{first, last} : kxRenderSource(clip()).range();
}

void kxFilmPlayer::setRange(int first, int last)
{
    const kxRenderSource::Range whole = kxRenderSource(clip()).range();
    const auto [low, high] = std::minmax(first, last);
    const bool isWhole = low == whole.first && high == whole.last;
    kxSettingCommand::add(
        rangeKey(), isWhole ? std::string() : std::to_string(low) + ' ' + std::to_string(high),
        kxUndoString(QStringLiteral("Film from %1 to %2"), QStringLiteral("Scenery")).arg(low).arg(high));
    _range = {low, high};
    Q_EMIT changed();
}

void kxFilmPlayer::refresh()
{
    if (_clipId != 0 && clip() == osg::NullFC)
        setClip(osg::AnimNodePtr());
    const kxRenderSource::Range range = present();
    if (range.first == _range.first && range.last == _range.last)
        return;
    _range = range;
    Q_EMIT changed();
}

void kxFilmPlayer::setLooping(bool loops)
{
    _isLooping = loops;
    Q_EMIT changed();
}

void kxFilmPlayer::goTo(double frame)
{
    const bool wasPlaying = isPlaying();
    halt();
    show(std::clamp(frame, double(_range.first), double(_range.last)), true);
    if (wasPlaying && (_frame < _range.last || _isLooping)) // else it has come to its end
        play();
}

void kxFilmPlayer::play()
{
    stop();
    _stage->view()->resumeFilm();
    const bool isAtEnd = _frame >= _range.last || _frame < _range.first;
    _startFrame = isAtEnd ? _range.first : _frame;
    _startClock = kxPlaybackClock::the().seconds();
    if (const osg::AnimNodePtr shown = clip())
        kxAnimManager::the()->updateCameraShotCurves(shown);
    {
        const kxTriggers::Playing playing(triggers());
        show(_startFrame, true);
    }
    _ticks = kxPlaybackClock::the().start([this] { tick(); });
    Q_EMIT changed();
}

void kxFilmPlayer::stop()
{
    kxFramePlayer::the()->stop(nullptr);
    kxAnimEvaluator::the()->dequeueAll();
    _stage->stopAll();
    halt();
}

void kxFilmPlayer::halt()
{
    if (_ticks == 0)
        return;
    kxPlaybackClock::the().stop(_ticks);
    _ticks = 0;
    Q_EMIT changed();
}

void kxFilmPlayer::tick()
{
    const double length = double(_range.last) - _range.first + 1; // each frame has its time, the last one too
    double frame = std::floor(_startFrame +
                              (kxPlaybackClock::the().seconds() - _startClock) * kxAnimManager::the()->fps() + 1.0e-6);
    const bool isAnew = frame > _range.last;
    const kxTriggers::Playing playing(triggers());
    if (isAnew && !_isLooping)
    {
        if (_frame < _range.last)
            show(_range.last, false); // is always seen
        halt();
        return;
    }
    if (isAnew)
    {
        const double passes = std::floor((frame - _range.first) / length);
        frame -= passes * length;
        _startFrame -= passes * length;
        wrap();
    }
    if (frame != _frame || isAnew)
        show(frame, false);
}

/// The pass goes to its end and begins anew, also where the first frames come too late to be shown.
void kxFilmPlayer::wrap()
{
    const osg::AnimNodePtr shown = clip();
    if (shown == osg::NullFC)
        return;
    evaluate(shown, _range.last);
    beginAnew(shown, _range.first);
    evaluate(shown, _range.first);
}

/// `isAnew`: no time passed from the frame that was shown before to this one.
void kxFilmPlayer::show(double frame, bool isAnew)
{
    _frame = frame;
    const osg::AnimNodePtr shown = clip();
    if (shown == osg::NullFC)
        kxAnimManager::the()->setCurrentFrame(frame, false, true);
    else
    {
        if (isAnew)
            beginAnew(shown, frame);
        evaluate(shown, frame);
    }
    kxController::updateRender(true);
    Q_EMIT frameChanged(frame);
}
