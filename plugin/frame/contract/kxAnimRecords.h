#pragma once

#include <osg/AnimNode.h>
#include <osg/SceneCores.h>

#include <string>
#include <vector>

/// Parameters of a playback. Frames may lie between whole ones.
struct kxFramePlaybackParams
{
    bool reverse = false;
    bool loop = true;
    bool subframes = true;
    double start = 0;   ///< first frame
    double end = 0;     ///< last frame
    double current = 0; ///< frame to start at
    double fps = -1.0;  ///< frames per second, -1.0 for every frame
};
