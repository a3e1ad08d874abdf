#include "kxSoftwareSurface.h"

#include <QElapsedTimer>
#include <QPainter>

kxSoftwareSurface::kxSoftwareSurface(const kxViewContent& content, QWidget* parent) : QWidget(parent), _content(content)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

QImage kxSoftwareSurface::picture(kxFrameGovernor::Level level)
{
    const double scale = level == kxFrameGovernor::Full ? 1.0 : level == kxFrameGovernor::Quick ? 0.6 : 0.35;
    const QSize pixels = (QSizeF(size()) * devicePixelRatioF() * scale).toSize().expandedTo(QSize(1, 1));
    return _renderer.render(*_content.scene, _content.frame(pixels));
}

void kxSoftwareSurface::paintEvent(QPaintEvent*)
{
    QElapsedTimer time;
    time.start();
    const kxFrameGovernor::Level level = _content.level();
    const QImage image = picture(level);
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, level != kxFrameGovernor::Full);
        painter.drawImage(rect(), image);
        _content.overlay(painter);
    }
    _content.drawn(level, double(time.nsecsElapsed()) * 1e-6);
}

QImage kxSoftwareSurface::grab()
{
    QImage image = picture(kxFrameGovernor::Full);
    image.setDevicePixelRatio(devicePixelRatioF());
    QPainter painter(&image);
    _content.overlay(painter);
    return image;
}
