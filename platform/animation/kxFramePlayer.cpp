#include <kxFramePlayer.h>

#include <animation/kxAnimEngine.h>
#include <animation/kxFramePlayerStatistics.h>
#include <animation/kxPlaybackClock.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxLog.h>
#include <kxMessageNames.h>
#include <osg/Finite.h>

#include <algorithm>
#include <cmath>

namespace
{
/// Subframes come no more often than this, in seconds: as often as a screen shows them.
constexpr double SubframeInterval = 1.0 / 60;

kxTriggers& triggers()
{
    return kxAnimEngine::of(*kxAnimManager::the()).triggers;
}
} // namespace

struct kxFramePlayer::Private
{
    kxFramePlaybackParams params;
    void* owner = nullptr;
    bool isPlaying = false;
    bool ownEvaluation = false;
    int ticks = 0;            // number of the clock's ticker
    double startClock = 0;    // when the position was startPosition
    double startPosition = 0; // frames from the beginning, in playing direction
    double shown = -1;        // position of the last frame shown, below 0 before the first
    double shownClock = 0;
    std::uint64_t framesShown = 0;
    std::uint64_t framesDropped = 0;

    double length() const { return params.end - params.start; }
    /// Positions of one pass: a whole frame stands for its length, so that the last one gets its time too.
    double period() const { return params.subframes && params.fps > 0 ? length() : std::floor(length() + 1.0e-9) + 1; }
    double frameAt(double position) const { return params.reverse ? params.end - position : params.start + position; }

    void tick();
    void tickEveryFrame(double now);
    void tickByClock(double now);
    void loop();
    void show(double position);
    void finish();
};

kxFramePlayer::kxFramePlayer() : _p(new Private) {}

kxFramePlayer* kxFramePlayer::the()
{
    static kxFramePlayer* const player = new kxFramePlayer;
    return player;
}

void kxFramePlayer::start(const kxFramePlaybackParams& params, bool ownEvaluation, void* owner)
{
    const bool isRate = params.fps == -1.0 || (std::isfinite(params.fps) && params.fps > 0);
    if (!isRate || !osg::isFinite(params.start, params.end, params.current))
    {
        kxLog::warning("Can't play: the range or the frame rate is no usable number.");
        return;
    }
    const void* const ownerBefore = _p->isPlaying ? _p->owner : nullptr;
    _p->params = params;
    if (params.end < params.start)
        std::swap(_p->params.start, _p->params.end);
    _p->ownEvaluation = ownEvaluation;
    _p->owner = owner;
    const double position = params.reverse ? _p->params.end - params.current : params.current - _p->params.start;
    // From outside the range or from its far end the pass begins anew.
    _p->startPosition = position >= 0 && position < _p->length() ? position : 0;
    _p->startClock = _p->shownClock = kxPlaybackClock::the().seconds();
    _p->shown = -1;
    _p->framesShown = _p->framesDropped = 0;
    _p->isPlaying = true;
    if (_p->ticks == 0)
        _p->ticks = kxPlaybackClock::the().start([this] { _p->tick(); });
    if (owner != ownerBefore)
    {
        kxMessage message;
        message.set("user", owner);
        kxController::call(kxMessageName::FramePlayerUserChanged, message, 0);
    }
}

void kxFramePlayer::stop(void* owner)
{
    if (_p->isPlaying && (owner == nullptr || owner == _p->owner))
        _p->finish();
}

bool kxFramePlayer::isPlaying() const
{
    return _p->isPlaying;
}

void* kxFramePlayer::owner() const
{
    return _p->isPlaying ? _p->owner : nullptr;
}

const kxFramePlaybackParams& kxFramePlayer::getPlaybackParams() const
{
    return _p->params;
}

/// Ends the playback and says so, to all and to those who only follow the owner.
void kxFramePlayer::Private::finish()
{
    isPlaying = false;
    owner = nullptr;
    kxPlaybackClock::the().stop(ticks);
    ticks = 0;
    kxFramePlayerStatistics::last() = {framesShown, framesDropped};
    kxMessage finished;
    finished.set("finished", true);
    kxController::call(kxMessageName::FinishedPlayingGlobal, finished, 0);
    if (isPlaying)
        return; // a handler has started another playback
    kxMessage user;
    user.set("user", static_cast<void*>(nullptr));
    kxController::call(kxMessageName::FramePlayerUserChanged, user, 0);
}

void kxFramePlayer::Private::show(double position)
{
    shown = position;
    shownClock = kxPlaybackClock::the().seconds();
    ++framesShown;
    kxFramePlayerStatistics::last() = {framesShown, framesDropped};
    const double frame = std::clamp(frameAt(position), params.start, params.end);
    if (ownEvaluation)
    {
        const kxTriggers::Playing playing(triggers());
        kxMessage message;
        message.set("frame", frame);
        kxController::call(kxMessageName::FramePlayerFrameChanged, message, 0);
        return;
    }
    kxAnimManager::the()->setCurrentFrame(frame, false, true);
    kxController::updateRender(true);
}

void kxFramePlayer::Private::loop()
{
    const kxTriggers::Playing playing(triggers());
    kxSend(kxMessageName::FramePlayerLoopChanged);
}

void kxFramePlayer::Private::tick()
{
    if (!isPlaying)
        return;
    const double now = kxPlaybackClock::the().seconds();
    if (params.fps == -1.0)
        tickEveryFrame(now);
    else
        tickByClock(now);
}

/// One frame after the other, none left out, but no faster than the scene's own rate.
void kxFramePlayer::Private::tickEveryFrame(double now)
{
    if (shown < 0)
    {
        show(startPosition);
        return;
    }
    if (now - shownClock < 1.0 / kxAnimManager::the()->fps() - 0.5e-3)
        return;
    double next = shown + 1;
    if (next > length() + 1.0e-9)
    {
        if (!params.loop)
        {
            finish();
            return;
        }
        next = 0;
        loop();
        if (!isPlaying)
            return;
    }
    show(next);
}

/// The frame that the wall clock asks for; frames that it has passed are left out.
void kxFramePlayer::Private::tickByClock(double now)
{
    double position = startPosition + (now - startClock) * params.fps;
    const double pass = period();
    if (shown < 0)
        position = startPosition;
    else if (params.subframes && now - shownClock < SubframeInterval - 0.5e-3 && position < pass)
        return;
    bool hasLooped = false;
    if (position >= pass)
    {
        if (!params.loop)
        {
            if (shown < length())
                show(length()); // the last frame is always seen
            if (isPlaying)
                finish();
            return;
        }
        hasLooped = pass > 0;
        const double passes = pass > 0 ? std::floor(position / pass) : 0;
        startClock += passes * pass / params.fps;
        position = pass > 0 ? position - passes * pass : 0;
    }
    if (!params.subframes)
    {
        // Whole frames, counted from where the playback began.
        const double fraction = startPosition - std::floor(startPosition);
        position = std::max(0.0, std::floor(position - fraction + 1.0e-9) + fraction);
        position = std::min(position, length());
        if (position == shown && !hasLooped)
            return;
        const double steps = position - shown;
        if (shown >= 0 && !hasLooped && steps > 1.5)
            framesDropped += std::uint64_t(std::llround(steps)) - 1;
    }
    else if (position == shown && !hasLooped)
        return;
    if (hasLooped)
    {
        loop();
        if (!isPlaying)
            return;
    }
    show(position);
}

kxFramePlayerStatistics& kxFramePlayerStatistics::last()
{
    static kxFramePlayerStatistics statistics;
    return statistics;
}
