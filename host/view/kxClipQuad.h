#pragma once

#include "kxRenderScene.h"
#include "kxViewCamera.h"

class QPainter;

/// The quads by which the clipping planes of the scene are seen and grasped in the view; pictures don't show them.
namespace kxClipQuad
{
/// The translucent quads with their outlines, and a line to the side that is cut away.
void paint(QPainter& painter, const kxRenderScene& scene, const kxViewCamera& camera, const QSizeF& size);
/// The node of the plane whose outline or middle lies at `point`, 0 for none: through the quad itself, clicks reach
/// what is behind.
osg::UInt32 at(const QPointF& point, const kxRenderScene& scene, const kxViewCamera& camera, const QSizeF& size);
} // namespace kxClipQuad
