#pragma once

#include <kxCurveMath.h>

#include <QGraphicsRectItem>
#include <QObject>

#include <memory>

class kxAnimGraphCurve;
class kxAnimGraphScene;

/// A key of a curve in the graph, or one of the two tangent handles of a key: a square of 6 by 6 pixels at any zoom.
///
/// A key is a child of its curve item, which is at the scene's origin, so that a key's pos() is its place in frames
/// and value. A handle is a child of its key; its pos() is the tangent vector, in frames and value.
///
/// A key makes its handles and their lines when the mouse first meets them or they are asked for, since most keys never
/// need theirs, not even among those that show them. Until then it holds their places and types itself, and every
/// operation answers as if they were there. So childItems() says nothing: isKey() and isTangent() tell keys from
/// handles, inTangentType() and outTangentType() read types without making handles.
///
/// Keys and handles have no contents of their own for the scene: their curve paints them in one go. With 100,000 keys
/// under a curve, an item that paints itself costs 256 bytes a view and twice the time where it isn't even seen.
///
/// The size in scene units is one for all points (setScale), so that a zoom touches none of them. A scene index that
/// remembers bounding rectangles would have to be notified of each: use QGraphicsScene::NoIndex.
class kxAnimGraphPoint : public QObject, public QGraphicsRectItem
{
    Q_OBJECT
public:
    enum
    {
        Type = UserType + 231
    };

    /// `withTangents`: a key, which has two handles; else a bare point.
    kxAnimGraphPoint(QGraphicsItem* parent, bool withTangents);
    kxAnimGraphPoint(const QPointF& pos, QGraphicsItem* parent, bool withTangents);
    ~kxAnimGraphPoint() override;

    bool isKey() const { return _isKey; }
    bool isTangent() const { return _isTangent; }
    /// The key of a handle, a key itself.
    kxAnimGraphPoint* key();
    /// The curve of a key or a handle, null without one.
    kxAnimGraphCurve* curve() const;

    /// The key's place in its curve, -1 at the start; a handle has that of its key.
    int index() const { return _index; }
    void setIndex(int index);

    /// Moves a key and emits graphPointMoved().
    void setKeyPos(double x, double y);

    /// While true, keys that move with this one don't refuse it the frame that they are on. See kxAnimJointMove.
    void setMovingJointly(bool value) { _isMovingJointly = value; }
    bool isMovingJointly() const { return _isMovingJointly; }
    /// `proposed`, on the grid along the axes that snap.
    QPointF snapped(const QPointF& proposed) const;
    /// Moves a key past snapping, locks and ties to where it was.
    void putBack(const QPointF& pos);

    /// Places a handle relative to its key; nothing without handles.
    void setInTangentPos(const QPointF& pos);
    void setInTangentPos(double x, double y) { setInTangentPos(QPointF(x, y)); }
    void setOutTangentPos(const QPointF& pos);
    void setOutTangentPos(double x, double y) { setOutTangentPos(QPointF(x, y)); }
    /// (0, 0) without handles.
    QPointF inTangentPos() const;
    QPointF outTangentPos() const;
    QPointF inTangentScenePos() const;
    QPointF outTangentScenePos() const;

    /// The handles' places after the last edit, from which free handles start in each step of a drag. In a key.
    QPointF cachedInTangentPos() const { return _cachedIn; }
    QPointF cachedOutTangentPos() const { return _cachedOut; }
    /// Remembers the present places; of a handle: those of its key.
    void cacheTangents();

    /// Whether place, vectors or types changed since the curve last computed its tangents.
    bool isTouched() const { return _isTouched; }
    void setTouched(bool value) { _isTouched = value; }

    /// The type of a handle.
    int tangentType() const { return _isInTangent ? _inType : _outType; }
    void setTangentType(int type);
    /// The types of a key's sides.
    int inTangentType() const { return _inType; }
    int outTangentType() const { return _outType; }
    void setTangentTypes(int inType, int outType);

    /// Whether the handles of a key have been made.
    bool hasHandles() const { return _handles != nullptr; }
    /// The handles of a key, made here where they weren't yet; null in a handle. Owned by the key.
    kxAnimGraphPoint* inTangentItem() const;
    kxAnimGraphPoint* outTangentItem() const;

    /// Shows or hides the handles of a key; a constant side never shows its handle. Nothing while one is selected.
    void setTangentsVisible(bool visible);
    /// What was last asked of setTangentsVisible().
    bool tangentsShown() const { return _tangentsShown; }
    /// Whether the handle of this side is to be seen.
    bool showsInTangent() const;
    bool showsOutTangent() const;

    /// Recomputes a handle's place by its type and the keys around, as the kernel does with keys. Null for a key that
    /// isn't there; nothing where both are missing.
    void computeInTangent(kxAnimGraphPoint* previous, kxAnimGraphPoint* next);
    void computeOutTangent(kxAnimGraphPoint* previous, kxAnimGraphPoint* next);

    /// The extent of one pixel in scene units, x and y, for all points; negative where the view mirrors.
    static void setScale(double sx, double sy);
    /// The square of every point, in scene units around its place.
    static QRectF square();
    /// square() of this point; the base's own rectangle isn't used.
    QRectF rect() const { return square(); }

    int type() const override { return Type; }
    QRectF boundingRect() const override;
    QPainterPath shape() const override;
    bool contains(const QPointF& point) const override;
    bool collidesWithPath(const QPainterPath& path, Qt::ItemSelectionMode mode) const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

Q_SIGNALS:
    void graphPointMoved(kxAnimGraphPoint* point);
    void inTangentMoved(kxAnimGraphPoint* inTangent);
    void outTangentMoved(kxAnimGraphPoint* outTangent);

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent* event) override;
    void hoverEnterEvent(QGraphicsSceneHoverEvent* event) override;
    void hoverLeaveEvent(QGraphicsSceneHoverEvent* event) override;
    QVariant itemChange(GraphicsItemChange change, const QVariant& value) override;

private Q_SLOTS:
    void movedInTangent(kxAnimGraphPoint* inTangent);
    void movedOutTangent(kxAnimGraphPoint* outTangent);

private:
    struct Handle
    {
        kxAnimGraphPoint* point;
        QGraphicsLineItem* line;
    };
    struct Handles
    {
        Handle in;
        Handle out;
    };

    void makeHandles() const;
    Handle makeHandle(bool isIn);
    void showHandles() const;
    void placeHandle(bool isIn, const QPointF& pos);
    QPointF filteredPos(const QPointF& proposed) const;
    QPointF computedTangent(kxCurveMath::Side side, const kxAnimGraphPoint* previous,
                            const kxAnimGraphPoint* next) const;
    void moveTangent(const QPointF& mouse);
    void followHandle(kxAnimGraphPoint* handle, bool isIn);
    void dragHandle(QGraphicsSceneMouseEvent* event);
    kxAnimGraphScene* graphScene() const;

    mutable std::unique_ptr<Handles> _handles; // the items are children, deleted in the destructor
    QPointF _in;                               // the handles' places, also while there are no items
    QPointF _out;
    QPointF _cachedIn;
    QPointF _cachedOut;
    int _index = -1;
    int _inType = 1; // of a handle: its own, in the one of its side
    int _outType = 1;
    bool _isKey : 1;
    bool _isTangent : 1;
    bool _isInTangent : 1;
    bool _tangentsShown : 1;
    bool _isDragging : 1; // from the first move of the mouse to the next press or release
    bool _isTouched : 1;  // since the curve last computed its tangents
    bool _isMovingJointly : 1;
    bool _isGoingBack : 1;
};
