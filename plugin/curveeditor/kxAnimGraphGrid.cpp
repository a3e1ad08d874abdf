#include <curveeditor/kxAnimGraphGrid.h>

#include <curveeditor/kxAnimGraphColors.h>
#include <curveeditor/kxAnimGraphLayout.h>

#include <kxPlatform.h>

#include <QGraphicsView>
#include <QPainter>

#include <cmath>

namespace
{
/// The coordinate nearest to `at` in units of the painter, whose device has `scale` pixels and an `offset` along this
/// axis, at which a line as wide as `width` units covers whole pixels.
double onPixels(double at, double width, double scale, double offset)
{
    if (scale == 0)
        return at;
    const double edge = at - width / 2;
    return (std::round(edge * scale + offset) - offset) / scale + width / 2;
}
} // namespace

kxAnimGraphGrid::kxAnimGraphGrid(QPainter* painter, const QRectF& rect, const QGraphicsView* view)
    : _painter(painter), _rect(rect), _dpi(double(kxPlatform::getDpiScaleX()))
{
    float distanceX = float(kxAnimGraphLayout::GridPitch);
    float distanceY = -distanceX;
    if (view != nullptr)
    {
        const QPointF from = view->mapToScene(0, 0);
        const QPointF to = view->mapToScene(kxAnimGraphLayout::GridPitch, kxAnimGraphLayout::GridPitch);
        distanceX = float(to.x() - from.x());
        distanceY = -float(to.y() - from.y());
        _m11 = view->transform().m11();
        _m22 = view->transform().m22();
    }
    _stepX = kxAnimGraphLayout::gridStep(distanceX);
    _stepY = kxAnimGraphLayout::gridStep(distanceY);
    _axisX = QPen(kxAnimGraphColors::Grid, std::fabs(1 / _m11));
    _axisY = QPen(kxAnimGraphColors::Grid, std::fabs(1 / _m22));
    _textX = QPen(kxAnimGraphColors::Label, _axisX.widthF());
    _textY = QPen(kxAnimGraphColors::Label, _axisY.widthF());
}

void kxAnimGraphGrid::draw()
{
    _painter->setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);

    _painter->setPen(_axisX);
    if (_rect.left() < 0 && _rect.right() > 0)
        drawFrameLine(0);
    _painter->setPen(_axisY);
    if (_rect.top() < 0 && _rect.bottom() > 0)
        drawValueLine(0);

    for (const double x : kxAnimGraphLayout::gridLines(_rect.left(), _rect.right(), _stepX))
    {
        _painter->setPen(_axisX);
        drawFrameLine(x);
        drawFrameLabel(x);
    }
    for (const double y : kxAnimGraphLayout::gridLines(_rect.top(), _rect.bottom(), _stepY))
    {
        _painter->setPen(_axisY);
        drawValueLine(y);
        drawValueLabel(y);
    }
}

void kxAnimGraphGrid::drawFrameLine(double x)
{
    const QTransform device = _painter->deviceTransform();
    const double at = onPixels(x, _axisX.widthF(), device.m11(), device.dx());
    _painter->drawLine(QPointF(at, _rect.top()), QPointF(at, _rect.bottom()));
}

void kxAnimGraphGrid::drawValueLine(double y)
{
    const QTransform device = _painter->deviceTransform();
    const double at = onPixels(y, _axisY.widthF(), device.m22(), device.dy());
    _painter->drawLine(QPointF(_rect.left(), at), QPointF(_rect.right(), at));
}

void kxAnimGraphGrid::drawFrameLabel(double x)
{
    _painter->save();
    _painter->setPen(_textX);
    _painter->scale(1 / _m11, 1 / _m22);
    const double baseline = kxAnimGraphLayout::frameLabelBaseline(_rect.top(), _rect.height(), _m22);
    _painter->drawText(QPointF(x * _m11, baseline), kxAnimGraphLayout::tickLabel(x));
    _painter->restore();
}

void kxAnimGraphGrid::drawValueLabel(double y)
{
    _painter->save();
    _painter->setPen(_textY);
    _painter->resetTransform();
    _painter->translate(-_rect.left() * _m11, (_rect.top() + _rect.height()) * -_m22);
    const kxAnimGraphLayout::ValueLabel label = kxAnimGraphLayout::valueLabel(_rect.left(), _rect.width(), _m11);
    _painter->drawText(QRectF(label.x, y * _m22, 50 * _dpi, 15 * _dpi), int(label.alignment),
                       kxAnimGraphLayout::tickLabel(y));
    _painter->restore();
}
