#include "kxClipQuad.h"

#include "kxViewColors.h"

#include <QLineF>
#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <vector>

namespace
{
constexpr double OutlineReach = 6; // pixels
constexpr double MiddleReach = 12;
constexpr float ArrowPixels = 44;
constexpr int FillAlpha = 26;
constexpr int FillAlphaBehind = 14; // seen from behind, where the objects are before it

double distanceTo(const QLineF& line, const QPointF& point)
{
    const QPointF along = line.p2() - line.p1(), to = point - line.p1();
    const double length2 = QPointF::dotProduct(along, along);
    const double t = length2 > 0 ? std::clamp(QPointF::dotProduct(along, to) / length2, 0.0, 1.0) : 0.0;
    return QLineF(line.p1() + along * t, point).length();
}

/// The part of the quad before the near plane, in pixels; empty where there is none.
QPolygonF outline(const kxRenderScene::PlaneItem& plane, const kxViewCamera& camera, const QSizeF& size)
{
    std::vector<QVector3D> corners;
    for (const auto& [x, y] :
         {std::pair(-0.5f, -0.5f), std::pair(0.5f, -0.5f), std::pair(0.5f, 0.5f), std::pair(-0.5f, 0.5f)})
        corners.push_back(plane.world.map(QVector3D(x, y, 0)));
    const auto before = [&camera](const QVector3D& p) { return -camera.view.map(p).z() - camera.nearPlane; };
    QPolygonF polygon;
    const auto append = [&](const QVector3D& p)
    {
        QPointF seen;
        if (camera.project(p, size, seen))
            polygon << seen;
    };
    for (std::size_t i = 0; i < corners.size(); ++i)
    {
        const QVector3D &a = corners[i], &b = corners[(i + 1) % corners.size()];
        const float da = before(a), db = before(b);
        if (da >= 0)
            append(a);
        if ((da >= 0) != (db >= 0))
            append(a + (b - a) * (da / (da - db)) + camera.forward() * (1e-4f * camera.nearPlane));
    }
    return polygon.size() < 3 ? QPolygonF() : polygon;
}

/// To the side that is cut away.
QVector3D ahead(const kxRenderScene::PlaneItem& plane)
{
    const QVector3D normal =
        QVector3D::crossProduct(plane.world.column(0).toVector3D(), plane.world.column(1).toVector3D()).normalized();
    return QVector3D::dotProduct(normal, plane.world.column(2).toVector3D()) < 0 ? -normal : normal;
}

void paintArrow(QPainter& painter, const kxRenderScene::PlaneItem& plane, const kxViewCamera& camera,
                const QSizeF& size)
{
    const QVector3D middle = plane.world.column(3).toVector3D();
    QPointF from, to;
    if (!camera.project(middle, size, from) ||
        !camera.project(middle + ahead(plane) * camera.pixelLength(middle, size.height()) * ArrowPixels, size, to))
        return;
    painter.drawEllipse(from, 3.0, 3.0);
    const QLineF line(to, from);
    painter.drawLine(line);
    if (line.length() < 12)
        return;
    for (const double turn : {-28.0, 28.0})
    {
        QLineF barb = line;
        barb.setLength(9);
        barb.setAngle(line.angle() + turn);
        painter.drawLine(barb);
    }
}
} // namespace

void kxClipQuad::paint(QPainter& painter, const kxRenderScene& scene, const kxViewCamera& camera, const QSizeF& size)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    for (const kxRenderScene::PlaneItem& plane : scene.planes())
    {
        const QPolygonF polygon = outline(plane, camera, size);
        if (polygon.isEmpty())
            continue;
        const bool cuts = &plane == &scene.planes().front();
        const bool isBefore =
            QVector3D::dotProduct(camera.eye() - plane.world.column(3).toVector3D(), ahead(plane)) > 0;
        const QColor line = plane.selected ? kxViewColor::Selection : kxViewColor::Neutral;
        QColor fill = line;
        fill.setAlpha(isBefore ? FillAlpha : FillAlphaBehind);
        painter.setPen(
            QPen(line, plane.selected ? 1.8 : 1.2, cuts ? Qt::SolidLine : Qt::DashLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(fill);
        painter.drawPolygon(polygon);
        painter.setBrush(line);
        paintArrow(painter, plane, camera, size);
    }
    painter.restore();
}

osg::UInt32 kxClipQuad::at(const QPointF& point, const kxRenderScene& scene, const kxViewCamera& camera,
                           const QSizeF& size)
{
    for (const kxRenderScene::PlaneItem& plane : scene.planes())
    {
        const QPolygonF polygon = outline(plane, camera, size);
        for (int i = 0; i < polygon.size(); ++i)
            if (distanceTo(QLineF(polygon[i], polygon[(i + 1) % polygon.size()]), point) <= OutlineReach)
                return plane.nodeId;
        QPointF middle;
        if (camera.project(plane.world.column(3).toVector3D(), size, middle) &&
            QLineF(middle, point).length() <= MiddleReach)
            return plane.nodeId;
    }
    return 0;
}
