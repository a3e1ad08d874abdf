#pragma once

#include <kxExport.h>

#include <functional>

/// The wall clock of everything that plays, and the ticks it plays by.
///
/// Ticks come from the event loop while anybody asks for them. A test puts a clock of its own in and ticks by hand.
class KX_API kxPlaybackClock
{
public:
    static kxPlaybackClock& the();

    /// Seconds since some moment; never runs back.
    double seconds() const;

    typedef std::function<void()> Ticker;
    /// Calls `ticker` at each tick until stop() with the number that this gives, which is never 0. Both may be called
    /// by a ticker; ticks don't nest.
    int start(Ticker ticker);
    void stop(int number);

    /// A clock for tests: no ticks but those of tick(). Null gives the wall clock back.
    void setSource(std::function<double()> source);
    void tick();

private:
    kxPlaybackClock();
    void updateTimer();
    struct Private;
    Private* _p; // for the life of the process
};
