#pragma once

#include "kxFrame.h"

#include "kxLightImage.h"

#include <functional>
#include <memory>

class kxGlTarget;

/// Draws a frame by OpenGL 3.3, in any context whose entry points it is given.
///
/// init() again in a new context begins anew. Every call needs the context to be current.
class kxGlRenderer
{
public:
    kxGlRenderer();
    ~kxGlRenderer(); // frees nothing on the graphics card: see release()

    /// False where the context can't do it.
    bool init(const std::function<void*(const char* name)>& loader);
    /// Before the context goes.
    void release();
    bool isReady() const { return _ready; }

    /// Draws `frame` into the frame buffer of this name and size, larger than the frame only where that is quick.
    /// Colours come premultiplied where the frame is transparent. False where the driver refuses the size.
    bool render(kxRenderScene& scene, const kxFrame& frame, unsigned int frameBuffer, const QSize& size);
    /// Waits until all is drawn.
    void finish();
    /// Makes a frame buffer of its own, draws there and reads it; null where the driver refuses.
    QImage renderToImage(kxRenderScene& scene, const kxFrame& frame);
    /// The same of a frame whose colours are light.
    kxLightImage renderToLight(kxRenderScene& scene, const kxFrame& frame);

    /// Lays a picture (Format_ARGB32_Premultiplied) over all of a frame buffer of the same size.
    void drawOver(const QImage& picture, unsigned int frameBuffer);

private:
    struct Data;
    bool renderTo(kxGlTarget& target, kxRenderScene& scene, const kxFrame& frame);
    void drawMaps(const kxRenderScene& scene, const kxFrame& frame);
    void drawShadow(const kxRenderScene& scene, const kxFrame& frame);
    void drawContact(const kxRenderScene& scene, const kxFrame& frame);
    void drawSurfaces(kxRenderScene& scene, const kxFrame& frame, bool transparent);
    void drawEdges(const kxRenderScene& scene, const kxFrame& frame);
    void drawFloor(const kxFrame& frame);
    void drawOutline(const kxRenderScene& scene, const kxFrame& frame, unsigned int frameBuffer, const QSize& size);

    std::unique_ptr<Data> _data;
    bool _ready = false;
};
