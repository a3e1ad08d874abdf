#include "kxSoftwareSurface.h"

#include <QPainter>
#include <QTimer>

kxSoftwareSurface::kxSoftwareSurface(const kxViewContent& content, QWidget* parent)
    : QWidget(parent), _content(content), _sharpen(new QTimer(this))
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_OpaquePaintEvent);
    _sharpen->setSingleShot(true);
    _sharpen->setInterval(SharpAfter);
    connect(_sharpen, &QTimer::timeout, this, QOverload<>::of(&QWidget::update));
}

QImage kxSoftwareSurface::picture(double scale)
{
    const QSize pixels = (QSizeF(size()) * devicePixelRatioF() * scale).toSize().expandedTo(QSize(1, 1));
    return _renderer.render(*_content.scene, _content.frame(pixels));
}

void kxSoftwareSurface::paintEvent(QPaintEvent*)
{
    const bool coarse = _content.isMoving();
    const QImage image = picture(coarse ? 0.5 : 1.0);
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, coarse);
        painter.drawImage(rect(), image);
        _content.overlay(painter);
    }
    if (coarse)
        _sharpen->start();
    _content.drawn();
}

QImage kxSoftwareSurface::grab()
{
    QImage image = picture(1.0);
    image.setDevicePixelRatio(devicePixelRatioF());
    QPainter painter(&image);
    _content.overlay(painter);
    return image;
}
