#pragma once

#include <osg/AnimNode.h>

#include <QColor>
#include <QGraphicsScene>
#include <QMap>
#include <QVector>

class kxAnimAbstractClipItem;
class kxAnimClipRows;

/// The timeline of the clip maker: the bars of one clip's children on tracks.
///
/// x in frames, tracks of pitch 50 * dpi downward from y = 0. Owns the bars.
class kxAnimClipScene : public QGraphicsScene
{
    Q_OBJECT
public:
    explicit kxAnimClipScene(QObject* parent = nullptr);
    ~kxAnimClipScene() override;

    /// Pixels a frame of the scene's first view; 1 without a scene, a view or a usable scale.
    static double viewScale(const QGraphicsScene* scene);

    /// Makes the bar or marker that shows `node`, a child of the clip. Null where the node's core has none.
    kxAnimAbstractClipItem* addBar(const osg::AnimNodePtr& node);
    /// All bars and markers, in the order in which they came.
    const QVector<kxAnimAbstractClipItem*>& bars() const { return _bars; }
    QVector<kxAnimAbstractClipItem*> selectedBars() const;

    bool snapToGridX() const { return _snapToGridX; }

    /// The other bars and extensions that `item` lies over; what only touches it doesn't count.
    virtual QList<QGraphicsItem*> collidingItems(const QGraphicsItem* item, Qt::ItemSelectionMode mode) const;
    /// Marks the tracks of `items` as free or taken while they are dragged; true where any is taken.
    bool checkCollisions(const QList<QGraphicsItem*>& items);
    /// Takes the marks away at the end of a drag; true where any of `items` lies over another bar.
    bool resolveCollisions(const QList<QGraphicsItem*>& items);

    /// Both for all selected bars; false where none is selected.
    bool playSelected();
    bool resetSelected();
    /// Places the labels of all bars for the view's scale.
    void updateAllTexts();

public Q_SLOTS:
    // For all selected bars; false where none is selected.
    bool activeSelectedItems(bool value);
    bool flipSelectedItems(bool value);
    bool lockSelectedItems(bool value);
    bool motionBlurSelectedItems(bool value);
    bool duplicateSelectedItems(bool flipped);
    bool duplicateSelectedItems();

    void setSnapToGridX(bool value);
    /// Takes the selected bars away and hands their nodes to the trash, as one step on the undo stack.
    void deleteSelectedItems();
    void itemStateChanged(bool value);
    void createdItemDuplicate(osg::AnimNodePtr node);

Q_SIGNALS:
    void itemChanged(kxAnimAbstractClipItem* item);
    void itemDuplicated();
    void itemsChangedState();

protected:
    void drawBackground(QPainter* painter, const QRectF& rect) override;

private:
    kxAnimClipRows rows() const;
    /// Whether `item` or its extension lies over anything.
    static bool isHit(const kxAnimClipRows& rows, QGraphicsItem* item);
    static void fitToView(kxAnimAbstractClipItem* bar);
    void forget(QObject* bar);

    bool _snapToGridX = false;
    QMap<int, QColor> _rowMarks; // track to colour
    QVector<kxAnimAbstractClipItem*> _bars;
};
