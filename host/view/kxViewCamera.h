#pragma once

#include <osg/FCPtr.h>

#include <QMatrix4x4>
#include <QPointF>
#include <QSizeF>
#include <QVector3D>

/// A half line in the root's coordinates; `direction` has unit length.
struct kxRay
{
    QVector3D origin;
    QVector3D direction;
    QVector3D at(float distance) const { return origin + direction * distance; }
};

/// A perspective view of the scene: where from, how wide, between which planes.
struct kxViewCamera
{
    QMatrix4x4 view;           ///< root's coordinates to the eye's: x right, y up, looking down -z; no scale
    float fieldOfView = 35.0f; ///< vertical, degrees
    float aspect = 1.0f;       ///< width / height
    float nearPlane = 0.1f;
    float farPlane = 1000.0f;

    QMatrix4x4 projection() const;
    QMatrix4x4 viewProjection() const { return projection() * view; }
    QVector3D eye() const;
    QVector3D right() const { return view.row(0).toVector3D(); }
    QVector3D up() const { return view.row(1).toVector3D(); }
    QVector3D forward() const { return -view.row(2).toVector3D(); }

    /// The ray from the eye through a point of a picture of `size`, y down.
    kxRay ray(const QPointF& point, const QSizeF& size) const;
    /// Where `point` is seen in a picture of `size`, y down. False, and no result, for a point behind the eye.
    bool project(const QVector3D& point, const QSizeF& size, QPointF& result) const;
    /// The length, at the depth of `point`, that one row of a picture of this height covers.
    float pixelLength(const QVector3D& point, double pictureHeight) const;

    /// A picture of this shape, width by height, has room in what is seen.
    void widenFor(float pictureAspect);

    /// What the camera of the scene sees that is the core of `node`; a default view where there is none.
    static kxViewCamera fromNode(const osg::NodePtr& node, float aspect);
};
