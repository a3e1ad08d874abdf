#include "kxGlSurface.h"

#include "kxGlRenderer.h"
#include "kxOffscreenGl.h"

#include <QElapsedTimer>
#include <QOpenGLContext>
#include <QPainter>
#include <QScopedValueRollback>

kxGlSurface::kxGlSurface(const kxViewContent& content, QWidget* parent)
    : QOpenGLWidget(parent), _content(content), _renderer(std::make_unique<kxGlRenderer>())
{
    setFormat(wantedFormat());
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

kxGlSurface::~kxGlSurface()
{
    releaseGl();
}

QSurfaceFormat kxGlSurface::wantedFormat()
{
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setVersion(3, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    // The renderer has samples and depth of its own.
    format.setSamples(0);
    format.setDepthBufferSize(0);
    return format;
}

void kxGlSurface::initializeGL()
{
    _contextGoes = connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, [this] { releaseGl(); });
    QOpenGLContext* const current = context();
    const bool good =
        _renderer->init([current](const char* name) { return reinterpret_cast<void*>(current->getProcAddress(name)); });
    _offscreen = good ? nullptr : std::make_unique<kxOffscreenGl>();
}

void kxGlSurface::releaseGl()
{
    disconnect(_contextGoes);
    if (context() == nullptr || !_renderer->isReady())
        return;
    makeCurrent();
    _renderer->release();
    doneCurrent();
}

QImage kxGlSurface::grab()
{
    const QScopedValueRollback<bool> full(_grabbing, true);
    return grabFramebuffer();
}

QImage kxGlSurface::draw(const kxFrame& frame)
{
    if (_offscreen)
        return _offscreen->render(*_content.scene, frame);
    if (!_renderer->isReady())
        return QImage();
    makeCurrent();
    const QImage image = _renderer->renderToImage(*_content.scene, frame);
    doneCurrent();
    return image;
}

void kxGlSurface::paintGL()
{
    QElapsedTimer time;
    time.start();
    const kxFrameGovernor::Level level = _grabbing ? kxFrameGovernor::Full : _content.level();
    const QSize pixels = size() * devicePixelRatioF();
    const kxFrame frame = _content.frameAt(level, pixels);
    QImage below;
    if (_offscreen || !_renderer->render(*_content.scene, frame, defaultFramebufferObject(), pixels))
    {
        if (!_offscreen)
            _offscreen = std::make_unique<kxOffscreenGl>();
        below = _offscreen->render(*_content.scene, frame);
    }
    paintOverlay(below);
    // The time counts when the work is done, not when it is handed over.
    _renderer->finish();
    _content.drawn(level, double(time.nsecsElapsed()) * 1e-6);
}

void kxGlSurface::paintOverlay(const QImage& below)
{
    // Painted on the processor: text and thin lines are smoother than by triangles.
    const QSize pixels = size() * devicePixelRatioF();
    if (_overlay.size() != pixels)
        _overlay = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
    if (_overlay.isNull())
        return;
    _overlay.setDevicePixelRatio(devicePixelRatioF());
    _overlay.fill(Qt::transparent);
    {
        QPainter painter(&_overlay);
        painter.setFont(font());
        _content.overlay(painter);
    }
    if (below.isNull())
    {
        _renderer->drawOver(_overlay, defaultFramebufferObject());
        return;
    }
    QPainter painter(this);
    painter.drawImage(rect(), below);
    painter.drawImage(QPointF(0, 0), _overlay);
}
