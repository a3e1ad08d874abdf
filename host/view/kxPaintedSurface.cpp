#include "kxPaintedSurface.h"

#include <QElapsedTimer>
#include <QPainter>

kxPaintedSurface::kxPaintedSurface(const kxViewContent& content, QWidget* parent) : QWidget(parent), _content(content)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

QImage kxPaintedSurface::picture(kxFrameGovernor::Level level)
{
    const QSize pixels = (size() * devicePixelRatioF()).expandedTo(QSize(1, 1));
    const QImage drawn = _gl.render(*_content.scene, _content.frameAt(level, pixels));
    if (!drawn.isNull())
        return drawn;
    QImage reason(pixels, QImage::Format_RGB32);
    reason.setDevicePixelRatio(devicePixelRatioF());
    reason.fill(palette().color(QPalette::Base));
    QPainter painter(&reason);
    painter.setFont(font());
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(rect().adjusted(20, 20, -20, -20), Qt::AlignCenter | Qt::TextWordWrap, _gl.problem());
    return reason;
}

void kxPaintedSurface::paintEvent(QPaintEvent*)
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

QImage kxPaintedSurface::grab()
{
    QImage image = picture(kxFrameGovernor::Full);
    image.setDevicePixelRatio(devicePixelRatioF());
    QPainter painter(&image);
    _content.overlay(painter);
    return image;
}

QImage kxPaintedSurface::draw(const kxFrame& frame)
{
    return _gl.render(*_content.scene, frame);
}
