#pragma once

#include <kxExport.h>

#include <cstdint>

/// How the present or the last playback kept up.
struct KX_API kxFramePlayerStatistics
{
    std::uint64_t framesShown = 0;
    std::uint64_t framesDropped = 0; ///< whole frames that real time had no room for

    static kxFramePlayerStatistics& last();
};
