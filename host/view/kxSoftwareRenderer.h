#pragma once

#include "kxFrame.h"

#include <memory>

/// Draws a frame on the processor, for machines without OpenGL: the same look, from the same source of shading.
///
/// Four samples a pixel, tiles in parallel, each pixel shaded once for each surface that it shows.
class kxSoftwareRenderer
{
public:
    kxSoftwareRenderer();
    ~kxSoftwareRenderer();

    /// Format_RGBX8888, or Format_RGBA8888_Premultiplied where the frame is transparent.
    QImage render(kxRenderScene& scene, const kxFrame& frame);

private:
    struct Data;
    std::unique_ptr<Data> _data;
};
