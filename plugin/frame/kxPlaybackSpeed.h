#pragma once

/// Entries of the playback speed setting, as the preferences list them.
enum class kxPlaybackSpeed : int
{
    EveryFrame = 0,
    Film = 1,
    Pal = 2,
    Ntsc = 3,
    Custom = 4
};

/// The frames per second of a playback speed, -1.0 for every frame; 24.0 for a speed that isn't listed.
inline double kxPlaybackRate(int speed, double customSpeed)
{
    switch (kxPlaybackSpeed(speed))
    {
    case kxPlaybackSpeed::EveryFrame:
        return -1.0;
    case kxPlaybackSpeed::Film:
        return 24.0;
    case kxPlaybackSpeed::Pal:
        return 25.0;
    case kxPlaybackSpeed::Ntsc:
        return 30.0;
    case kxPlaybackSpeed::Custom:
        return customSpeed;
    }
    return 24.0;
}

/// The playback speed that lists exactly this rate; Custom for all that aren't listed.
inline kxPlaybackSpeed kxPlaybackSpeedOf(double rate)
{
    for (const kxPlaybackSpeed speed :
         {kxPlaybackSpeed::EveryFrame, kxPlaybackSpeed::Film, kxPlaybackSpeed::Pal, kxPlaybackSpeed::Ntsc})
        if (kxPlaybackRate(int(speed), 0) == rate)
            return speed;
    return kxPlaybackSpeed::Custom;
}
