#pragma once

/// Chooses how carefully frames are drawn while things move, so that slow machines stay quick; at rest always fully.
///
/// Plain arithmetic; knows no clock.
class kxFrameGovernor
{
public:
    enum Level
    {
        Full,
        Quick,  ///< one sample a pixel
        Coarse, ///< and half the pixels each way
    };

    static constexpr double TooSlow = 45; ///< milliseconds
    /// A level costs up to five times the next one: going back must not be too slow at once.
    static constexpr double FastEnough = 8;

    /// For the next frame.
    Level level(bool moving) const { return moving ? _moving : Full; }
    /// A frame of this level took so long.
    void note(Level level, double milliseconds)
    {
        if (level == Full || level == _moving)
            _moving = adjusted(_moving, level, milliseconds);
    }

private:
    static Level adjusted(Level moving, Level drawn, double milliseconds)
    {
        if (moving == drawn && milliseconds > TooSlow && moving != Coarse)
            return Level(moving + 1);
        if (milliseconds < FastEnough && moving != Full)
            return Level(moving - 1);
        return moving;
    }
    Level _moving = Full;
};
