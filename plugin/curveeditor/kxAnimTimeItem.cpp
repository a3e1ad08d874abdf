#include <curveeditor/kxAnimTimeItem.h>

#include <QBrush>
#include <QCursor>
#include <QGraphicsSceneHoverEvent>
#include <QGraphicsSceneMouseEvent>
#include <QLinearGradient>
#include <QPen>

#include <cmath>

namespace
{
/// A sharp line in the middle of the item, with a glow to both edges.
QBrush glow(int red, int green, int blue)
{
    QLinearGradient gradient(0, 0, 1, 0);
    gradient.setCoordinateMode(QGradient::ObjectBoundingMode);
    const auto stop = [&](double place, int alpha) { gradient.setColorAt(place, QColor(red, green, blue, alpha)); };
    stop(0.0, 0);
    stop(0.45, 10);
    stop(0.5, 255);
    stop(0.55, 10);
    stop(1.0, 0);
    return gradient;
}

QBrush white()
{
    return glow(240, 240, 240);
}

QBrush orange()
{
    return glow(244, 133, 22);
}
} // namespace

kxAnimTimeItem::kxAnimTimeItem(QGraphicsItem* parent) : QGraphicsRectItem(-15, -20, 30, 10000, parent)
{
    setPen(Qt::NoPen);
    setZValue(-1e30); // behind all other items
    setBrush(white());
    setFlags(ItemIsMovable | ItemIgnoresTransformations);
    setAcceptHoverEvents(true);
    setCursor(Qt::SizeHorCursor);
}

void kxAnimTimeItem::setTime(double x)
{
    setX(x);
    Q_EMIT timeChanged(x);
}

void kxAnimTimeItem::setPlaying(bool value)
{
    _isPlaying = value;
    setFlag(ItemIsMovable, !value);
    setBrush(value ? orange() : white());
    setCursor(value ? Qt::ArrowCursor : Qt::SizeHorCursor);
    update();
}

void kxAnimTimeItem::hoverEnterEvent(QGraphicsSceneHoverEvent* event)
{
    if (_isPlaying)
        return;
    setBrush(orange());
    update();
    QGraphicsRectItem::hoverEnterEvent(event);
}

void kxAnimTimeItem::hoverLeaveEvent(QGraphicsSceneHoverEvent* event)
{
    if (_isPlaying)
        return;
    QGraphicsRectItem::hoverLeaveEvent(event);
    setBrush(white());
    update();
}

void kxAnimTimeItem::mousePressEvent(QGraphicsSceneMouseEvent* event)
{
    QGraphicsRectItem::mousePressEvent(event);
    if (!event->isAccepted()) // not to be grabbed while playing; no release would follow
        return;
    _pressX = event->scenePos().x();
    _startX = pos().x();
    _isMoving = true;
    Q_EMIT timePressed(_startX);
}

void kxAnimTimeItem::mouseMoveEvent(QGraphicsSceneMouseEvent* event)
{
    const double x = std::trunc(event->scenePos().x() - _pressX + _startX) + 0.0; // no -0
    if (pos().x() == x)
        return;
    setX(x);
    Q_EMIT timeChanged(x);
}

void kxAnimTimeItem::mouseReleaseEvent(QGraphicsSceneMouseEvent* event)
{
    QGraphicsRectItem::mouseReleaseEvent(event);
    _isMoving = false;
}
