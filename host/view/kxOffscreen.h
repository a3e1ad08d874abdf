#pragma once

#include "kxFrame.h"
#include "kxOffscreenGl.h"

/// Draws the open scene into pictures, without any window. Main thread only.
class kxOffscreen
{
public:
    /// A picture of the open scene; the aspect of `camera` is replaced by the picture's. Null for a size below 1 or
    /// above 16384, or where problem() or the driver forbids it.
    QImage render(int width, int height, const kxViewCamera& camera, const kxRenderOptions& options);
    /// The same as linear light.
    kxLightImage renderLight(int width, int height, const kxViewCamera& camera, kxRenderOptions options);
    /// Why no picture can be drawn, for the user; empty where they can.
    QString problem() { return _gl.problem(); }
    /// A view from the front, a little from above, that shows the whole scene.
    kxViewCamera framingCamera(float aspect);

    kxRenderScene& scene() { return _scene; }

private:
    kxFrame frame(int width, int height, kxViewCamera camera, const kxRenderOptions& options);

    kxRenderScene _scene;
    kxOffscreenGl _gl;
};
