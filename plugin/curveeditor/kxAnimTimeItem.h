#pragma once

#include <QGraphicsRectItem>
#include <QObject>

/// The vertical time cursor of a graphics scene: a glowing line in the middle of a grab area 30 pixels wide.
///
/// Its x is the current frame. It knows nothing of frames or of the host: it reports a position and takes one.
class kxAnimTimeItem : public QObject, public QGraphicsRectItem
{
    Q_OBJECT
public:
    explicit kxAnimTimeItem(QGraphicsItem* parent = nullptr);

    /// Moves the line and emits timeChanged(), also where x stays.
    void setTime(double x);
    double time() const { return pos().x(); }

    /// While playing the line is orange and can't be grabbed.
    void setPlaying(bool value);
    /// From press to release.
    bool isMoving() const { return _isMoving; }

Q_SIGNALS:
    void timeChanged(double value);
    void timePressed(double value);

protected:
    void hoverEnterEvent(QGraphicsSceneHoverEvent* event) override;
    void hoverLeaveEvent(QGraphicsSceneHoverEvent* event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent* event) override;

private:
    double _startX = 0; // the item's, at the press
    double _pressX = 0; // the mouse's, in the scene
    bool _isPlaying = false;
    bool _isMoving = false;
};
