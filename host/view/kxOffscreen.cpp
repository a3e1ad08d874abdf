#include "kxOffscreen.h"

#include "kxCameraRig.h"
#include "kxEglContext.h"
#include "kxGlRenderer.h"
#include "kxSoftwareRenderer.h"

#include <QOpenGLContext>

namespace
{
constexpr int LargestSide = 16384;

/// A thread has one current context: takes a window's away, and gives it back at the end.
class ContextPause
{
public:
    ContextPause() : _context(QOpenGLContext::currentContext()), _surface(_context ? _context->surface() : nullptr)
    {
        if (_context != nullptr)
            _context->doneCurrent();
    }
    ~ContextPause()
    {
        if (_context != nullptr && _surface != nullptr)
            _context->makeCurrent(_surface);
    }
    ContextPause(const ContextPause&) = delete;
    ContextPause& operator=(const ContextPause&) = delete;

private:
    QOpenGLContext* _context;
    QSurface* _surface;
};
} // namespace

kxOffscreen::kxOffscreen()
    : _scene(std::make_unique<kxRenderScene>()), _software(std::make_unique<kxSoftwareRenderer>())
{
}

kxOffscreen::~kxOffscreen()
{
    const ContextPause pause;
    if (_context && _renderer && _context->makeCurrent())
    {
        _renderer->release();
        _context->doneCurrent();
    }
}

bool kxOffscreen::isSoftwareWanted()
{
    return qEnvironmentVariableIntValue("KX_SOFTWARE_RENDERER") != 0;
}

void kxOffscreen::prepare()
{
    if (_prepared)
        return;
    _prepared = true;
    if (isSoftwareWanted())
        return;
    auto context = std::make_unique<kxEglContext>();
    if (!context->makeCurrent())
        return;
    auto renderer = std::make_unique<kxGlRenderer>();
    if (renderer->init(&kxEglContext::entryPoint))
    {
        _context = std::move(context);
        _renderer = std::move(renderer);
        _context->doneCurrent();
    }
    else
        context->doneCurrent();
}

kxOffscreen::Path kxOffscreen::path()
{
    if (!_prepared)
    {
        const ContextPause pause;
        prepare();
    }
    return _renderer ? OpenGL : Software;
}

QString kxOffscreen::pathName()
{
    return path() == OpenGL ? QStringLiteral("OpenGL") : QStringLiteral("software");
}

QImage kxOffscreen::render(int width, int height, kxViewCamera camera, const kxRenderOptions& options)
{
    if (width < 1 || height < 1 || width > LargestSide || height > LargestSide)
        return QImage();
    camera.aspect = float(width) / float(height);
    _scene->update();
    kxFrame frame = kxFrame::make(*_scene, camera, QSize(width, height), options);
    frame.outlineWidth = std::max(2.0f, float(height) / 400);
    if (path() == OpenGL)
    {
        const QImage image = renderOpenGl(frame);
        if (!image.isNull())
            return image;
    }
    return _software->render(*_scene, frame);
}

QImage kxOffscreen::renderOpenGl(const kxFrame& frame)
{
    const ContextPause pause;
    QImage image;
    if (_context->makeCurrent())
    {
        image = _renderer->renderToImage(*_scene, frame);
        _context->doneCurrent();
    }
    return image;
}

kxViewCamera kxOffscreen::framingCamera(float aspect)
{
    _scene->update();
    kxCameraRig rig;
    rig.setPose(rig.framed(_scene->bounds(), aspect));
    return rig.camera(aspect, _scene->bounds());
}
