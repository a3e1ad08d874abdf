#pragma once

#include "kxRenderScene.h"
#include "kxViewCamera.h"

#include <QString>

class QPainter;

/// What lies over the picture of the 3D view: signs of lights and cameras, directions, hints, numbers. Painted flat, so
/// that it is sharp at any pixel ratio. Points and sizes are device-independent pixels of the view.
namespace kxViewOverlay
{
/// A small picture at each light and camera of the scene.
void paintSigns(QPainter& painter, const kxRenderScene& scene, const kxViewCamera& camera, const QSizeF& size);
/// The id of the node whose sign lies at `point`, the nearest to the eye; 0 for none.
osg::UInt32 signAt(const QPointF& point, const kxRenderScene& scene, const kxViewCamera& camera, const QSizeF& size);
/// The three directions of the scene, in the lower right corner.
void paintTriad(QPainter& painter, const kxViewCamera& camera, const QSizeF& size);
/// The largest place of this shape, width by height, in the middle of a view.
QRectF pictureRect(double aspect, const QSizeF& size);
/// Darkens what lies outside of a picture; nothing for an empty one.
void paintFrame(QPainter& painter, const QRectF& frame, const QSizeF& size);
/// In the middle of an empty view.
void paintHint(QPainter& painter, const QString& title, const QString& text, const QSizeF& size);
/// A line on a plate, its lower left corner at `corner`.
void paintLabel(QPainter& painter, const QString& text, const QPointF& corner);
/// What is on the screen, for the status: which animation is shown instead of the timeline, at which frame of its
/// ruler, through which camera. Empty for the timeline with no camera.
QString moment(osg::UInt32 cameraId);
/// Quiet text in the lower left corner.
void paintStatus(QPainter& painter, const QString& text, const QSizeF& size);
} // namespace kxViewOverlay
