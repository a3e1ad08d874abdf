#pragma once

#include "kxViewCamera.h"

#include <QColor>
#include <QPolygonF>

#include <array>
#include <vector>

class QPainter;

/// What a drag of the gizmo asks for, counted from the start of the drag, in the root's coordinates.
struct kxGizmoChange
{
    enum Kind
    {
        None,
        Translate,
        Rotate,
        Scale
    };
    Kind kind = None;
    QVector3D translation;
    QVector3D axis;                         ///< of the rotation, unit length
    float degrees = 0;                      ///< against the clock, seen against the axis; any number of turns
    QVector3D factors = QVector3D(1, 1, 1); ///< along the axes of each object
    bool isUniform = false;                 ///< the places of several objects scale too
};

/// The handles with which objects are moved, turned and scaled: the same size on the screen at any distance.
///
/// Knows where it is and how it is seen; the objects are not its business. Sizes in device-independent pixels.
class kxGizmo
{
public:
    enum Tool
    {
        SelectTool,
        MoveTool,
        RotateTool,
        ScaleTool
    };
    enum Handle
    {
        NoHandle,
        AxisX,
        AxisY,
        AxisZ,
        PlaneX, ///< at a right angle to x
        PlaneY,
        PlaneZ,
        RingX,
        RingY,
        RingZ,
        Screen ///< the plane of the view; around its direction; all axes alike
    };

    static constexpr double Size = 92;     ///< length of an axis
    static constexpr double Reach = 7;     ///< how near to a line counts as on it
    static constexpr float AngleStep = 15; ///< with snapping, degrees
    static constexpr float FactorStep = 0.1f;

    void setTool(Tool tool) { _tool = tool; }
    Tool tool() const { return _tool; }
    /// Axes have unit length and are at right angles to each other.
    void setPlace(const QVector3D& origin, const std::array<QVector3D, 3>& axes);
    void setView(const kxViewCamera& camera, const QSizeF& size);
    const QVector3D& origin() const { return _origin; }

    Handle handleAt(const QPointF& point) const;
    void setHover(Handle handle) { _hover = handle; }
    Handle hover() const { return _hover; }
    void paint(QPainter& painter) const;

    void beginDrag(Handle handle, const QPointF& point);
    kxGizmoChange drag(const QPointF& point, bool snap);
    void endDrag() { _active = NoHandle; }
    bool isDragging() const { return _active != NoHandle; }
    /// What the drag has done so far, for the user to read; empty where nothing is dragged.
    QString dragText() const;

private:
    struct Shape
    {
        Handle handle;
        QPolygonF line;
        QColor color;
        qreal width = 2;
        bool filled = false;
        bool pickable = true;
    };
    std::vector<Shape> shapes() const;
    void addAxes(std::vector<Shape>& shapes) const;
    void addPlanes(std::vector<Shape>& shapes) const;
    void addRings(std::vector<Shape>& shapes) const;
    void addCentre(std::vector<Shape>& shapes) const;
    QPointF seen(const QVector3D& point) const;
    float unit() const; ///< scene units of `Size`
    QVector3D axisOf(Handle handle) const;

    kxGizmoChange dragMove(const QPointF& point, bool snap) const;
    kxGizmoChange dragRotate(const QPointF& point, bool snap);
    kxGizmoChange dragScale(const QPointF& point, bool snap) const;
    bool angleAt(const QPointF& point, float& degrees) const;

    Tool _tool = SelectTool;
    Handle _hover = NoHandle, _active = NoHandle;
    QVector3D _origin;
    std::array<QVector3D, 3> _axes = {QVector3D(1, 0, 0), QVector3D(0, 1, 0), QVector3D(0, 0, 1)};
    kxViewCamera _camera;
    QSizeF _size;

    // The drag, from its start
    QPointF _startPoint;
    QVector3D _startOrigin, _startHit;
    std::array<QVector3D, 3> _startAxes;
    float _startLength = 0, _startUnit = 1;
    float _startAngle = 0, _angle = 0;
    kxGizmoChange _change;
};
