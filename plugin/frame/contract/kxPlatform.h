#pragma once

#include <kxExport.h>

/// Metrics of the screen. Sizes in device-independent pixels.
class KX_API kxPlatform
{
public:
    /// Logical dots per inch over 96.
    static float getDpiScaleX();
    static float getDpiScaleY();
    static int getSmallIconSize();
    static int getMediumIconSize();
};
