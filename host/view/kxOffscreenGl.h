#pragma once

#include "kxLightImage.h"

#include <QImage>
#include <QString>

#include <memory>

class kxEglContext;
class kxGlRenderer;
class kxRenderScene;
struct kxFrame;

/// Draws frames by OpenGL without a window: in a context of its own that is made without a display, at the first use.
///
/// Leaves the thread's current context as it was. Main thread only.
class kxOffscreenGl
{
public:
    kxOffscreenGl();
    ~kxOffscreenGl();

    /// Why nothing can be drawn, for the user; empty where it can.
    QString problem();
    /// Format_RGBX8888, or Format_RGBA8888_Premultiplied where the frame is transparent. Null where there is a
    /// problem(), or where the driver refuses the size.
    QImage render(kxRenderScene& scene, const kxFrame& frame);
    /// Of a frame whose colours are light; empty as render() is null.
    kxLightImage renderLight(kxRenderScene& scene, const kxFrame& frame);

private:
    void prepare();

    std::unique_ptr<kxEglContext> _context;
    std::unique_ptr<kxGlRenderer> _renderer; // null where there is a problem
    bool _prepared = false;
};
