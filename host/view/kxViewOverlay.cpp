#include "kxViewOverlay.h"

#include "kxViewColors.h"

#include <animation/kxAnimEngine.h>
#include <animation/kxFrameTime.h>
#include <animation/kxNodeTime.h>
#include <kxAnimManager.h>
#include <osg/FieldContainerFactory.h>
#include <scene/CameraLight.h>

#include <QCoreApplication>
#include <QPainter>
#include <QPainterPath>
#include <QtMath>

#include <algorithm>
#include <array>
#include <cmath>

namespace
{
constexpr double SignReach = 12;
constexpr double TriadArm = 26;
constexpr double TriadPlace = 46; // of its middle, from both sides

void paintLightSign(QPainter& painter, const QPointF& at, const QColor& color, bool directional)
{
    painter.setPen(QPen(color, 1.6, Qt::SolidLine, Qt::RoundCap));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(at, 4.0, 4.0);
    for (int i = 0; i < 8; ++i)
    {
        const double angle = i * M_PI / 4;
        const QPointF direction(std::cos(angle), std::sin(angle));
        painter.drawLine(at + direction * 6.5, at + direction * (directional ? 10.0 : 8.5));
    }
}

void paintCameraSign(QPainter& painter, const QPointF& at, const QColor& color)
{
    painter.setPen(QPen(color, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(at.x() - 9, at.y() - 5, 12, 10), 2, 2);
    painter.drawPolygon(
        QPolygonF({at + QPointF(4, -1), at + QPointF(9, -4.5), at + QPointF(9, 4.5), at + QPointF(4, 1)}));
}

/// Where a light of the scene shines, or what a camera sees: lines from its sign.
void paintAim(QPainter& painter, const kxViewCamera& camera, const QSizeF& size, const QVector3D& from,
              const QVector3D& to, const QColor& color)
{
    QPointF a, b;
    if (!camera.project(from, size, a) || !camera.project(to, size, b))
        return;
    painter.setPen(QPen(color, 1, Qt::DashLine));
    painter.drawLine(a, b);
}

void paintFrustum(QPainter& painter, const kxViewCamera& camera, const QSizeF& size,
                  const kxRenderScene::CameraItem& item, const QColor& color)
{
    const float depth = camera.pixelLength(item.world.column(3).toVector3D(), size.height()) * 70;
    const float tan = std::tan(qDegreesToRadians(item.fieldOfView) * 0.5f);
    const QVector3D eye = item.world.column(3).toVector3D(), back = item.world.column(2).toVector3D().normalized();
    const QVector3D right = item.world.column(0).toVector3D().normalized() * tan * 1.6f;
    const QVector3D up = item.world.column(1).toVector3D().normalized() * tan;
    QPolygonF corners;
    QPointF tip;
    bool seen = camera.project(eye, size, tip);
    for (const auto& [x, y] : {std::pair(-1, -1), std::pair(1, -1), std::pair(1, 1), std::pair(-1, 1)})
    {
        QPointF corner;
        seen = seen && camera.project(eye + (right * float(x) + up * float(y) - back) * depth, size, corner);
        corners << corner;
    }
    if (!seen)
        return;
    painter.setPen(QPen(color, 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolygon(corners);
    for (const QPointF& corner : corners)
        painter.drawLine(tip, corner);
}

QColor signColor(bool selected)
{
    return selected ? kxViewColor::Selection : kxViewColor::Hint;
}

QRectF plateFor(QPainter& painter, const QString& text, const QPointF& corner)
{
    const QFontMetricsF metrics(painter.font());
    return QRectF(corner.x(), corner.y() - metrics.height() - 8, metrics.horizontalAdvance(text) + 16,
                  metrics.height() + 8);
}
} // namespace

void kxViewOverlay::paintSigns(QPainter& painter, const kxRenderScene& scene, const kxViewCamera& camera,
                               const QSizeF& size)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    for (const kxRenderScene::LightItem& light : scene.lights())
    {
        QPointF at;
        if (!camera.project(light.place, size, at))
            continue;
        const bool aims = light.kind != osg::Light::PointLight;
        if (light.selected && aims)
            paintAim(painter, camera, size, light.place,
                     light.place + light.aim * camera.pixelLength(light.place, size.height()) * 90, signColor(true));
        paintLightSign(painter, at, signColor(light.selected), light.kind == osg::Light::Directional);
    }
    for (const kxRenderScene::CameraItem& item : scene.cameras())
    {
        QPointF at;
        const QVector3D place = item.world.column(3).toVector3D();
        // Not from within: the camera that is looked through.
        if ((place - camera.eye()).length() < camera.nearPlane || !camera.project(place, size, at))
            continue;
        if (item.selected)
            paintFrustum(painter, camera, size, item, signColor(true));
        paintCameraSign(painter, at, signColor(item.selected));
    }
    painter.restore();
}

osg::UInt32 kxViewOverlay::signAt(const QPointF& point, const kxRenderScene& scene, const kxViewCamera& camera,
                                  const QSizeF& size)
{
    osg::UInt32 best = 0;
    float nearest = std::numeric_limits<float>::max();
    const auto test = [&](osg::UInt32 id, const QVector3D& place)
    {
        QPointF at;
        const float distance = (place - camera.eye()).length();
        if (distance > camera.nearPlane && distance < nearest && camera.project(place, size, at) &&
            QLineF(at, point).length() <= SignReach)
        {
            best = id;
            nearest = distance;
        }
    };
    for (const kxRenderScene::LightItem& light : scene.lights())
        test(light.nodeId, light.place);
    for (const kxRenderScene::CameraItem& item : scene.cameras())
        test(item.nodeId, item.world.column(3).toVector3D());
    return best;
}

void kxViewOverlay::paintTriad(QPainter& painter, const kxViewCamera& camera, const QSizeF& size)
{
    struct Arm
    {
        QPointF end;
        float depth;
        QColor color;
        QString name;
    };
    const QPointF middle(size.width() - TriadPlace, size.height() - TriadPlace);
    const QVector3D right = camera.right(), up = camera.up(), back = -camera.forward();
    std::array<Arm, 3> arms;
    const QColor colors[3] = {kxViewColor::AxisX, kxViewColor::AxisY, kxViewColor::AxisZ};
    for (int i = 0; i < 3; ++i)
        arms[std::size_t(i)] = {middle + QPointF(double(right[i]), double(-up[i])) * TriadArm, back[i], colors[i],
                                QString(QChar('X' + i))};
    std::sort(arms.begin(), arms.end(), [](const Arm& a, const Arm& b) { return a.depth < b.depth; });
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font = painter.font();
    font.setPixelSize(10);
    font.setBold(true);
    painter.setFont(font);
    for (const Arm& arm : arms)
    {
        QColor color = arm.color;
        color.setAlpha(arm.depth < -0.05f ? 130 : 255);
        painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(middle, arm.end);
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawEllipse(arm.end, 7.0, 7.0);
        painter.setPen(QColor(24, 25, 28));
        painter.drawText(QRectF(arm.end.x() - 8, arm.end.y() - 8, 16, 16), Qt::AlignCenter, arm.name);
    }
    painter.restore();
}

QRectF kxViewOverlay::pictureRect(double aspect, const QSizeF& size)
{
    QRectF place(QPointF(), size.width() < aspect * size.height() ? QSizeF(size.width(), size.width() / aspect)
                                                                  : QSizeF(aspect * size.height(), size.height()));
    place.moveCenter(QRectF(QPointF(), size).center());
    return place;
}

void kxViewOverlay::paintFrame(QPainter& painter, const QRectF& frame, const QSizeF& size)
{
    if (frame.isEmpty())
        return;
    QPainterPath outside;
    outside.addRect(QRectF(QPointF(), size));
    outside.addRect(frame);
    painter.fillPath(outside, QColor(0, 0, 0, 130));
    painter.setPen(QPen(QColor(255, 255, 255, 140), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(frame.adjusted(0.5, 0.5, -0.5, -0.5));
}

void kxViewOverlay::paintHint(QPainter& painter, const QString& title, const QString& text, const QSizeF& size)
{
    painter.save();
    QFont font = painter.font();
    font.setPixelSize(17);
    painter.setFont(font);
    painter.setPen(kxViewColor::Text);
    const QRectF box(16, size.height() * 0.5 - 40, size.width() - 32, 30);
    const double width = std::min(380.0, box.width());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kxViewColor::Plate);
    painter.drawRoundedRect(QRectF(size.width() / 2 - width / 2, box.top() - 14, width, 92), 8, 8);
    painter.setPen(kxViewColor::Text);
    painter.drawText(box, Qt::AlignHCenter | Qt::AlignBottom, title);
    font.setPixelSize(13);
    painter.setFont(font);
    painter.setPen(kxViewColor::Hint);
    painter.drawText(box.translated(0, 36).adjusted(0, 0, 0, 60), Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap,
                     text);
    painter.restore();
}

void kxViewOverlay::paintLabel(QPainter& painter, const QString& text, const QPointF& corner)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF plate = plateFor(painter, text, corner);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kxViewColor::Plate);
    painter.drawRoundedRect(plate, 4, 4);
    painter.setPen(kxViewColor::Text);
    painter.drawText(plate, Qt::AlignCenter, text);
    painter.restore();
}

QString kxViewOverlay::moment(osg::UInt32 cameraId)
{
    const auto tr = [](const char* text) { return QCoreApplication::translate("kxViewOverlay", text); };
    const auto nameOf = [](const osg::NodePtr& node) { return QString::fromStdString(node->getNodeName()); };
    const auto camera = osg::living<osg::Node>(cameraId);
    double seconds = 0;
    const osg::AnimNodePtr shown = kxAnimEngine::of(*kxAnimManager::the()).plan.shownRoot(seconds);
    if (shown == osg::NullFC)
        return camera == osg::NullFC ? QString() : tr("Through %1").arg(nameOf(camera));
    const double frame =
        kxFrameTime::frame(kxNodeTime::toRoot(shown->getParent()).to(seconds), kxAnimManager::the()->fps());
    const QString number = QString::number(std::round(frame * 10) / 10);
    return camera == osg::NullFC ? tr("%1, frame %2").arg(nameOf(shown), number)
                                 : tr("%1, frame %2, through %3").arg(nameOf(shown), number, nameOf(camera));
}

void kxViewOverlay::paintStatus(QPainter& painter, const QString& text, const QSizeF& size)
{
    painter.save();
    QFont font = painter.font();
    font.setPixelSize(11);
    painter.setFont(font);
    painter.setPen(kxViewColor::Hint);
    painter.drawText(QRectF(12, size.height() - 28, size.width() - 110, 18), Qt::AlignLeft | Qt::AlignVCenter, text);
    painter.restore();
}
