#pragma once

#include "kxFrame.h"

#include <memory>

class kxEglContext;
class kxGlRenderer;
class kxSoftwareRenderer;

/// Draws the open scene into pictures, without any window.
///
/// By OpenGL where a context can be made without a display, else on the processor; the environment variable
/// KX_SOFTWARE_RENDERER=1 asks for the latter. Main thread only.
class kxOffscreen
{
public:
    enum Path
    {
        OpenGL,
        Software
    };

    kxOffscreen();
    ~kxOffscreen();

    /// True where the user asked for the processor.
    static bool isSoftwareWanted();
    /// The way that pictures are drawn; known after the first call, which tries OpenGL.
    Path path();
    /// "OpenGL" or "software", for the log.
    QString pathName();

    /// A picture of the open scene; the aspect of `camera` is replaced by the picture's. Null for a size below 1 or
    /// above 16384.
    QImage render(int width, int height, kxViewCamera camera, const kxRenderOptions& options);
    /// A view from the front, a little from above, that shows the whole scene.
    kxViewCamera framingCamera(float aspect);

    kxRenderScene& scene() { return *_scene; }

private:
    void prepare();
    QImage renderOpenGl(const kxFrame& frame);

    std::unique_ptr<kxRenderScene> _scene;
    std::unique_ptr<kxEglContext> _context;
    std::unique_ptr<kxGlRenderer> _renderer;
    std::unique_ptr<kxSoftwareRenderer> _software;
    bool _prepared = false;
};
