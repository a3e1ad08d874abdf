#include "kxOffscreenGl.h"

#include "kxEglContext.h"
#include "kxGlRenderer.h"

#include <QCoreApplication>
#include <QOpenGLContext>

namespace
{
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

kxOffscreenGl::kxOffscreenGl() = default;

kxOffscreenGl::~kxOffscreenGl()
{
    const ContextPause pause;
    if (_renderer && _context->makeCurrent())
    {
        _renderer->release();
        _context->doneCurrent();
    }
}

void kxOffscreenGl::prepare()
{
    if (_prepared)
        return;
    _prepared = true;
    const ContextPause pause;
    _context = std::make_unique<kxEglContext>();
    if (!_context->makeCurrent())
        return;
    auto renderer = std::make_unique<kxGlRenderer>();
    if (renderer->init(&kxEglContext::entryPoint))
        _renderer = std::move(renderer);
    _context->doneCurrent();
}

QString kxOffscreenGl::problem()
{
    prepare();
    if (_renderer)
        return QString();
    return QCoreApplication::translate("kxOffscreenGl",
                                       "No driver offers OpenGL 3.3, which drawing needs. Please install the package "
                                       "\"libgl1-mesa-dri\": it draws without a graphics card too.");
}

QImage kxOffscreenGl::render(kxRenderScene& scene, const kxFrame& frame)
{
    prepare();
    const ContextPause pause;
    if (!_renderer || !_context->makeCurrent())
        return QImage();
    const QImage image = _renderer->renderToImage(scene, frame);
    _context->doneCurrent();
    return image;
}

kxLightImage kxOffscreenGl::renderLight(kxRenderScene& scene, const kxFrame& frame)
{
    prepare();
    const ContextPause pause;
    if (!_renderer || !_context->makeCurrent())
        return kxLightImage();
    kxLightImage image = _renderer->renderToLight(scene, frame);
    _context->doneCurrent();
    return image;
}
