#include "kxGizmo.h"

#include "kxGizmoMath.h"
#include "kxViewColors.h"

#include <QCoreApplication>
#include <QLineF>
#include <QPainter>
#include <QPainterPath>
#include <QtMath>

#include <algorithm>
#include <cmath>

namespace
{
constexpr int RingSteps = 72;
constexpr float SmallestFactor = 0.001f;

const QColor& axisColor(int axis)
{
    return axis == 0 ? kxViewColor::AxisX : axis == 1 ? kxViewColor::AxisY : kxViewColor::AxisZ;
}

double distanceTo(const QPointF& p, const QPointF& a, const QPointF& b)
{
    const QPointF along = b - a;
    const double length2 = QPointF::dotProduct(along, along);
    const double t = length2 > 0 ? std::clamp(QPointF::dotProduct(p - a, along) / length2, 0.0, 1.0) : 0.0;
    return QLineF(p, a + along * t).length();
}
} // namespace

void kxGizmo::setPlace(const QVector3D& origin, const std::array<QVector3D, 3>& axes)
{
    _origin = origin;
    _axes = axes;
}

void kxGizmo::setView(const kxViewCamera& camera, const QSizeF& size)
{
    _camera = camera;
    _size = size;
}

float kxGizmo::unit() const
{
    return _camera.pixelLength(_origin, _size.height()) * float(Size);
}

QPointF kxGizmo::seen(const QVector3D& point) const
{
    QPointF result;
    return _camera.project(point, _size, result) ? result : QPointF(-1e5, -1e5);
}

QVector3D kxGizmo::axisOf(Handle handle) const
{
    const auto& axes = isDragging() ? _startAxes : _axes;
    switch (handle)
    {
    case AxisX:
    case PlaneX:
    case RingX:
        return axes[0];
    case AxisY:
    case PlaneY:
    case RingY:
        return axes[1];
    case AxisZ:
    case PlaneZ:
    case RingZ:
        return axes[2];
    case Screen:
    case NoHandle:
        break;
    }
    return -_camera.forward();
}

std::vector<kxGizmo::Shape> kxGizmo::shapes() const
{
    std::vector<Shape> result;
    QPointF middle;
    if (_tool == SelectTool || !_camera.project(_origin, _size, middle))
        return result;
    if (_tool == RotateTool)
        addRings(result);
    else
    {
        addAxes(result);
        if (_tool == MoveTool)
            addPlanes(result);
        addCentre(result);
    }
    return result;
}

void kxGizmo::addAxes(std::vector<Shape>& shapes) const
{
    const float length = unit();
    const QPointF middle = seen(_origin);
    for (int i = 0; i < 3; ++i)
    {
        const QPointF end = seen(_origin + _axes[std::size_t(i)] * length);
        const QLineF line(middle, end);
        if (line.length() < Size * 0.14) // it points at the eye
            continue;
        const Handle handle = Handle(AxisX + i);
        const QPointF along = (end - middle) / line.length(), across(-along.y(), along.x());
        shapes.push_back({handle, QPolygonF(QVector<QPointF>{middle + along * 11, end}), axisColor(i), 2.6});
        const QPolygonF tip =
            _tool == MoveTool ? QPolygonF(QVector<QPointF>{end + across * 5.5, end + along * 15, end - across * 5.5})
                              : QPolygonF(QVector<QPointF>{end + across * 5 - along * 5, end + across * 5 + along * 5,
                                                           end - across * 5 + along * 5, end - across * 5 - along * 5});
        shapes.push_back({handle, tip, axisColor(i), 1, true});
    }
}

void kxGizmo::addPlanes(std::vector<Shape>& shapes) const
{
    const float length = unit();
    const QVector3D toEye = (_camera.eye() - _origin).normalized();
    for (int i = 0; i < 3; ++i)
    {
        const QVector3D &u = _axes[std::size_t((i + 1) % 3)], &v = _axes[std::size_t((i + 2) % 3)];
        if (std::fabs(QVector3D::dotProduct(_axes[std::size_t(i)], toEye)) < 0.16f) // seen from its edge
            continue;
        const float a = length * 0.26f, b = length * 0.46f;
        QPolygonF square;
        for (const auto& [x, y] : {std::pair(a, a), std::pair(b, a), std::pair(b, b), std::pair(a, b)})
            square << seen(_origin + u * x + v * y);
        QColor color = axisColor(i);
        color.setAlpha(120);
        shapes.push_back({Handle(PlaneX + i), square, color, 1.2, true});
    }
}

void kxGizmo::addCentre(std::vector<Shape>& shapes) const
{
    const QPointF middle = seen(_origin);
    QPolygonF shape;
    if (_tool == ScaleTool)
        shape << middle + QPointF(-6, -6) << middle + QPointF(6, -6) << middle + QPointF(6, 6)
              << middle + QPointF(-6, 6);
    else
        for (int i = 0; i < 24; ++i)
            shape << middle + QPointF(std::cos(i * M_PI / 12), std::sin(i * M_PI / 12)) * 6.5;
    QColor color = kxViewColor::Neutral;
    color.setAlpha(170);
    shapes.push_back({Screen, shape, color, 1.2, true});
}

void kxGizmo::addRings(std::vector<Shape>& shapes) const
{
    const float radius = unit() * 0.92f;
    const QVector3D toEye = (_camera.eye() - _origin).normalized();
    const QPointF middle = seen(_origin);
    QPolygonF outer;
    for (int i = 0; i <= RingSteps; ++i)
        outer << middle + QPointF(std::cos(i * 2 * M_PI / RingSteps), std::sin(i * 2 * M_PI / RingSteps)) * Size * 1.12;
    QColor neutral = kxViewColor::Neutral;
    neutral.setAlpha(130);
    shapes.push_back({Screen, outer, neutral, 1.6});
    for (int axis = 0; axis < 3; ++axis)
    {
        const QVector3D &u = _axes[std::size_t((axis + 1) % 3)], &v = _axes[std::size_t((axis + 2) % 3)];
        QColor faint = axisColor(axis);
        faint.setAlpha(50);
        Shape front{Handle(RingX + axis), QPolygonF(), axisColor(axis), 2.4};
        Shape back{Handle(RingX + axis), QPolygonF(), faint, 1.4, false, false};
        const auto flush = [&shapes](Shape& shape, const QPointF& keep)
        {
            if (shape.line.size() > 1)
                shapes.push_back(shape);
            shape.line = QPolygonF(QVector<QPointF>{keep});
        };
        bool wasFront = true;
        for (int i = 0; i <= RingSteps; ++i)
        {
            const float angle = float(i) * 2 * float(M_PI) / RingSteps;
            const QVector3D arm = u * std::cos(angle) + v * std::sin(angle);
            const QPointF point = seen(_origin + arm * radius);
            const bool isFront = QVector3D::dotProduct(arm, toEye) >= -0.02f;
            Shape& shape = isFront ? front : back;
            if (i == 0 || isFront != wasFront)
            {
                Shape& other = isFront ? back : front;
                if (i > 0)
                    other.line << point;
                flush(other, point);
                flush(shape, point);
            }
            else
                shape.line << point;
            wasFront = isFront;
        }
        flush(front, QPointF());
        flush(back, QPointF());
    }
}

kxGizmo::Handle kxGizmo::handleAt(const QPointF& point) const
{
    Handle best = NoHandle;
    double nearest = Reach;
    for (const Shape& shape : shapes())
    {
        if (!shape.pickable)
            continue;
        // A filled shape is on top of the lines that it touches.
        double distance = shape.filled && shape.line.containsPoint(point, Qt::OddEvenFill) ? -1.0 : 1e9;
        for (int i = 0; i + 1 < shape.line.size(); ++i)
            distance = std::min(distance, distanceTo(point, shape.line[i], shape.line[i + 1]));
        if (distance < nearest)
        {
            nearest = distance;
            best = shape.handle;
        }
    }
    return best;
}

void kxGizmo::paint(QPainter& painter) const
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    std::vector<Shape> all = shapes();
    // What can't be grasped lies below.
    std::stable_partition(all.begin(), all.end(), [](const Shape& s) { return !s.pickable; });
    const Handle lit = isDragging() ? _active : _hover;
    for (const Shape& shape : all)
    {
        QColor color = shape.color;
        if (shape.handle == lit)
        {
            color = kxViewColor::Hover;
            color.setAlpha(shape.pickable ? (shape.filled ? std::max(shape.color.alpha(), 190) : 255)
                                          : shape.color.alpha());
        }
        else if (isDragging())
            color.setAlpha(color.alpha() / 3);
        QPen pen(color, shape.width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
        if (shape.filled)
        {
            QColor edge = color;
            edge.setAlpha(std::min(255, color.alpha() + 70));
            pen.setColor(edge);
            pen.setWidthF(1);
            painter.setPen(pen);
            painter.setBrush(color);
            painter.drawPolygon(shape.line);
        }
        else
        {
            painter.setPen(pen);
            painter.setBrush(Qt::NoBrush);
            painter.drawPolyline(shape.line);
        }
    }
    painter.restore();
}

void kxGizmo::beginDrag(Handle handle, const QPointF& point)
{
    _startPoint = point;
    _startOrigin = _origin;
    _startAxes = _axes;
    _startUnit = unit();
    _active = handle;
    _change = kxGizmoChange();
    const kxRay ray = _camera.ray(point, _size);
    const QVector3D axis = axisOf(handle);
    if (!kxGizmoMath::onPlane(ray, _startOrigin, axis, _startHit))
        _startHit = _startOrigin;
    _startLength = 0;
    kxGizmoMath::alongAxis(ray, _startOrigin, axis, _startLength);
    _angle = 0;
    _startAngle = 0;
    angleAt(point, _startAngle);
}

kxGizmoChange kxGizmo::drag(const QPointF& point, bool snap)
{
    if (!isDragging())
        return kxGizmoChange();
    switch (_tool)
    {
    case MoveTool:
        _change = dragMove(point, snap);
        break;
    case RotateTool:
        _change = dragRotate(point, snap);
        break;
    case ScaleTool:
        _change = dragScale(point, snap);
        break;
    case SelectTool:
        break;
    }
    return _change;
}

kxGizmoChange kxGizmo::dragMove(const QPointF& point, bool snap) const
{
    kxGizmoChange change = _change; // kept where the ray gives no answer
    change.kind = kxGizmoChange::Translate;
    const kxRay ray = _camera.ray(point, _size);
    const QVector3D axis = axisOf(_active);
    const float step = snap ? kxGizmoMath::roundStep(_startUnit * 0.25f) : 0.0f;
    if (_active >= AxisX && _active <= AxisZ)
    {
        float length = 0;
        if (kxGizmoMath::alongAxis(ray, _startOrigin, axis, length))
            change.translation = axis * kxGizmoMath::snapped(length - _startLength, step);
        return change;
    }
    QVector3D hit;
    if (!kxGizmoMath::onPlane(ray, _startOrigin, axis, hit))
        return change;
    change.translation = hit - _startHit;
    if (step > 0)
    {
        QVector3D steps;
        for (const QVector3D& direction : _startAxes)
            steps += direction * kxGizmoMath::snapped(QVector3D::dotProduct(change.translation, direction), step);
        change.translation = steps;
    }
    return change;
}

bool kxGizmo::angleAt(const QPointF& point, float& degrees) const
{
    const QVector3D axis = axisOf(_active);
    const QPointF middle = seen(_startOrigin);
    const float facing = QVector3D::dotProduct(axis, (_camera.eye() - _startOrigin).normalized());
    if (_active == Screen)
    {
        degrees = float(qRadiansToDegrees(std::atan2(-(point.y() - middle.y()), point.x() - middle.x())));
        return true;
    }
    if (std::fabs(facing) > 0.2f)
        return kxGizmoMath::aroundAxis(_camera.ray(point, _size), _startOrigin, axis, kxGizmoMath::perpendicular(axis),
                                       degrees);
    // A ring seen from its edge is a line on the screen: a drag along it by the ring's radius turns by a radian.
    const QVector3D near = QVector3D::crossProduct(axis, _camera.eye() - _startOrigin).normalized();
    const QPointF along = seen(_startOrigin + near * _startUnit) - middle;
    const double length = std::hypot(along.x(), along.y());
    if (length < 1)
        return false;
    degrees = float(qRadiansToDegrees(QPointF::dotProduct(point - _startPoint, along) / length / (Size * 0.92)));
    return true;
}

kxGizmoChange kxGizmo::dragRotate(const QPointF& point, bool snap)
{
    kxGizmoChange change = _change;
    change.kind = kxGizmoChange::Rotate;
    change.axis = axisOf(_active);
    float angle = 0;
    if (!angleAt(point, angle))
        return change;
    _angle = kxGizmoMath::unrolled(angle - _startAngle, _angle);
    change.degrees = kxGizmoMath::snapped(_angle, snap ? AngleStep : 0.0f);
    return change;
}

kxGizmoChange kxGizmo::dragScale(const QPointF& point, bool snap) const
{
    kxGizmoChange change = _change;
    change.kind = kxGizmoChange::Scale;
    const float step = snap ? FactorStep : 0.0f;
    if (_active == Screen)
    {
        const double pixels = point.x() - _startPoint.x() - (point.y() - _startPoint.y());
        const float factor = kxGizmoMath::snapped(float(std::exp(pixels / 140)), step);
        change.factors = QVector3D(1, 1, 1) * std::max(factor, SmallestFactor);
        change.isUniform = true;
        return change;
    }
    float length = 0;
    if (!kxGizmoMath::alongAxis(_camera.ray(point, _size), _startOrigin, axisOf(_active), length))
        return change;
    const float start = std::max(std::fabs(_startLength), _startUnit * 0.1f);
    change.factors[_active - AxisX] = std::max(kxGizmoMath::snapped(length / start, step), SmallestFactor);
    return change;
}

QString kxGizmo::dragText() const
{
    if (!isDragging())
        return QString();
    switch (_change.kind)
    {
    case kxGizmoChange::Translate:
        return QStringLiteral("%1,  %2,  %3")
            .arg(double(_change.translation.x()), 0, 'f', 3)
            .arg(double(_change.translation.y()), 0, 'f', 3)
            .arg(double(_change.translation.z()), 0, 'f', 3);
    case kxGizmoChange::Rotate:
        return QStringLiteral("%1\u00b0").arg(double(_change.degrees), 0, 'f', 1);
    case kxGizmoChange::Scale:
        return QStringLiteral("\u00d7 %1,  %2,  %3")
            .arg(double(_change.factors.x()), 0, 'f', 2)
            .arg(double(_change.factors.y()), 0, 'f', 2)
            .arg(double(_change.factors.z()), 0, 'f', 2);
    case kxGizmoChange::None:
        break;
    }
    return QString();
}
