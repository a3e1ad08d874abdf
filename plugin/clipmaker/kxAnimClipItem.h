#pragma once

#include <clipmaker/edits/kxClipGeometry.h>
#include <clipmaker/kxAnimAbstractClipItem.h>

#include <QVector>

class kxAnimClipCyclesItem;

/// The bar of a block or clip: can be stretched at its ends and shows its cycles after it.
///
/// The rectangle is one pass of the node as it was when the bar was built; drags at the ends scale the item about its
/// left edge, and the node with it.
class kxAnimClipItem : public kxAnimAbstractClipItem
{
    Q_OBJECT
public:
    kxAnimClipItem(osg::AnimNodePtr node, QGraphicsItem* parent);

    /// Null where the bar was built without a node.
    kxAnimClipCyclesItem* cyclesItem() const { return _cyclesItem; }
    void setHandlesShown(bool shown);

    void updateMenu() override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

    /// The end of the bar that a press at this place would stretch.
    kxClipGeometry::Handle handleAt(const QPointF& scenePlace) const;

public Q_SLOTS:
    void play();
    void reset();
    // For all selected bars; for this one where none is selected.
    void playSelected();
    void resetSelected();
    /// Shows the node's curves in the curve editor.
    void showSource();

protected:
    void hoverMoveEvent(QGraphicsSceneHoverEvent* event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent* event) override;
    void endDrag() override;
    QVariant itemChange(GraphicsItemChange change, const QVariant& value) override;

private:
    void buildMenu();
    void updateStateAction(int state, const QList<QGraphicsItem*>& selected, const osg::AnimNode& own);
    void paintHandles(QPainter* painter, double scale) const;
    void releaseHandles();
    QPointF acceptedPosition(const QPointF& proposed);
    QTransform acceptedTransform(const QTransform& proposed);
    /// Makes the bar longer by `frames`; false where nothing changed.
    bool stretch(double frames);

    bool _leftPressed = false;
    bool _rightPressed = false;
    bool _handlesShown = true;
    kxAnimClipCyclesItem* _cyclesItem = nullptr; // a graphics child
    QVector<QAction*> _stateActions;             // active, locked, flipped, motion blur
};
