#include <curveeditor/kxGraphSelectionOverlay.h>

#include <curveeditor/kxAnimGraphColors.h>

#include <QPainter>

kxGraphSelectionOverlay::kxGraphSelectionOverlay(QWidget* parent) : QWidget(parent, Qt::FramelessWindowHint)
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void kxGraphSelectionOverlay::setRectangle(const QRect& rectangle)
{
    if (rectangle == _rectangle)
        return;
    update((_rectangle | rectangle).adjusted(-1, -1, 2, 2)); // with the line around it
    _rectangle = rectangle;
}

void kxGraphSelectionOverlay::paintEvent(QPaintEvent*)
{
    if (!_rectangle.isValid())
        return;
    QPainter painter(this);
    painter.setPen(QPen(kxAnimGraphColors::RubberBand, 1, Qt::DashLine));
    painter.setBrush(Qt::NoBrush);
    painter.drawRects(&_rectangle, 1);
}
