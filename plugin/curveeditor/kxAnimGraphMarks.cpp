#include <curveeditor/kxAnimGraphMarks.h>

#include <QPaintDevice>

#include <cmath>

kxAnimGraphMarks::InPixels::InPixels(QPainter& painter)
    : _painter(painter), _transform(painter.worldTransform()), _isSmooth(painter.testRenderHint(QPainter::Antialiasing))
{
    // Not save() and restore(): of 20,000 handles they would take longer than the squares.
    painter.setWorldTransform(QTransform());
    painter.setRenderHint(QPainter::Antialiasing, false);
}

kxAnimGraphMarks::InPixels::~InPixels()
{
    _painter.setWorldTransform(_transform);
    _painter.setRenderHint(QPainter::Antialiasing, _isSmooth);
}

const QPen& kxAnimGraphMarks::handlePen()
{
    static const QPen pen = []
    {
        QPen line((QColor(Qt::yellow)));
        line.setCosmetic(true);
        return line;
    }();
    return pen;
}

void kxAnimGraphMarks::drawSquare(QPainter& painter, const QPointF& place, const QColor& color)
{
    painter.fillRect(QRectF(place.x() - Size / 2, place.y() - Size / 2, Size, Size), color);
}

void kxAnimGraphMarks::drawOutline(QPainter& painter, const QPointF& place, const QPalette& palette)
{
    const QColor front = palette.color(QPalette::WindowText);
    const auto contrast = [](int component) { return component > 127 ? 0 : 255; };
    const QColor back(contrast(front.red()), contrast(front.green()), contrast(front.blue()));
    const QRectF outline(place.x() - Size / 2 - 0.5, place.y() - Size / 2 - 0.5, Size, Size);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(back, 0));
    painter.drawRect(outline);
    painter.setPen(QPen(front, 0, Qt::DashLine));
    painter.drawRect(outline);
}

kxAnimGraphMarks::Columns::Columns(QPainter& painter, const QColor& color)
    : _painter(painter), _color(color), _ratio(painter.device()->devicePixelRatioF())
{
}

void kxAnimGraphMarks::Columns::add(const QPointF& place)
{
    const double column = std::floor(place.x() * _ratio);
    const double y = place.y();
    if (!_isEmpty && column == _column)
    {
        _low = std::min(_low, y);
        _high = std::max(_high, y);
        return;
    }
    // The bars of neighbouring columns meet, so that the line has no gaps.
    const double lastLow = _low, lastHigh = _high;
    const bool wasEmpty = _isEmpty;
    flush();
    _column = column;
    _low = wasEmpty ? y : std::min(y, lastHigh);
    _high = wasEmpty ? y : std::max(y, lastLow);
    _isEmpty = false;
}

void kxAnimGraphMarks::Columns::flush()
{
    if (_isEmpty)
        return;
    const double pixel = 1 / _ratio;
    _painter.fillRect(QRectF(_column * pixel, _low - pixel / 2, pixel, _high - _low + pixel), _color);
}
