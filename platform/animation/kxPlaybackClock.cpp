#include <animation/kxPlaybackClock.h>

#include <QElapsedTimer>
#include <QTimer>

#include <map>

namespace
{
/// Often enough that a frame of 60 a second is met within half its length.
constexpr int TickMilliseconds = 8;
} // namespace

struct kxPlaybackClock::Private
{
    QElapsedTimer elapsed;
    QTimer timer;
    std::function<double()> source;
    std::map<int, Ticker> tickers;
    int lastNumber = 0;
    bool isTicking = false;
};

kxPlaybackClock::kxPlaybackClock() : _p(new Private)
{
    _p->elapsed.start();
    _p->timer.setTimerType(Qt::PreciseTimer);
    _p->timer.setInterval(TickMilliseconds);
    QObject::connect(&_p->timer, &QTimer::timeout, [this] { tick(); });
}

kxPlaybackClock& kxPlaybackClock::the()
{
    static kxPlaybackClock* const clock = new kxPlaybackClock;
    return *clock;
}

double kxPlaybackClock::seconds() const
{
    return _p->source ? _p->source() : double(_p->elapsed.nsecsElapsed()) * 1.0e-9;
}

int kxPlaybackClock::start(Ticker ticker)
{
    const int number = ++_p->lastNumber;
    _p->tickers.emplace(number, std::move(ticker));
    updateTimer();
    return number;
}

void kxPlaybackClock::stop(int number)
{
    _p->tickers.erase(number);
    updateTimer();
}

void kxPlaybackClock::setSource(std::function<double()> source)
{
    _p->source = std::move(source);
    updateTimer();
}

void kxPlaybackClock::updateTimer()
{
    if (_p->tickers.empty() || _p->source)
        _p->timer.stop();
    else if (!_p->timer.isActive())
        _p->timer.start();
}

void kxPlaybackClock::tick()
{
    if (_p->isTicking)
        return;  // a ticker runs an event loop of its own
    struct Guard // also where a ticker throws
    {
        bool& flag;
        ~Guard() { flag = false; }
    } const guard{_p->isTicking};
    _p->isTicking = true;
    int number = 0;
    for (auto next = _p->tickers.upper_bound(number); next != _p->tickers.end(); next = _p->tickers.upper_bound(number))
    {
        number = next->first;
        const Ticker ticker = next->second; // it may end itself
        ticker();
    }
}
