#pragma once

#include <clipmaker/edits/kxClipGeometry.h>

#include <osg/AnimNode.h>

#include <QGraphicsRectItem>
#include <QObject>

class kxAnimClipLabel;
class kxAnimClipScene;

class QAction;
class QGraphicsItemAnimation;
class QMenu;
class QTimeLine;

/// A bar of the clip timeline: binds a scene item to one child of the shown clip and keeps both in step.
///
/// Scene units: x in frames, y as kxClipGeometry has them; the item is at its node's first frame and track. The
/// node is the truth and is looked up by id at each use: a bar whose node has died does nothing. Every edit is written
/// into the node at once. The scene owns the bars; a bar owns its menu, its return animation and its labels.
class kxAnimAbstractClipItem : public QObject, public QGraphicsRectItem
{
    Q_OBJECT
public:
    enum
    {
        Type = UserType + 1 ///< of every bar, so this value tells a bar from other items
    };

    /// `node` null: a bar that stands for no node, without labels.
    kxAnimAbstractClipItem(osg::AnimNodePtr node, QGraphicsItem* parent);
    ~kxAnimAbstractClipItem() override;

    /// `item` as a bar; null where it is none.
    static kxAnimAbstractClipItem* fromItem(QGraphicsItem* item);

    int type() const override { return Type; }

    /// Null where the node has died and in a bar without one.
    osg::AnimNodePtr node() const;
    /// Field container id, 0 in a bar without a node.
    unsigned int nodeId() const { return _nodeId; }
    /// The bar stands for no node from here on, and writes to none; it looks active.
    void invalidateNode();
    /// It slides back after a collision.
    bool isReturning() const;
    /// A bar that slides back after a collision is there at once.
    void endReturn();
    /// Whether flags and name are those of `node`.
    bool showsStateOf(const osg::AnimNode& node) const;

    /// Rises with each bar that is selected, so that the last selected one has the highest.
    quint64 selectionNumber() const { return _selectionNumber; }
    /// Selects a bar in the place of one that was selected before: as if it had been selected then.
    void selectAs(quint64 selectionNumber);

    bool isActive() const { return _active; }
    bool isLocked() const { return _locked; }
    QColor color() const { return _color; }
    void setColor(const QColor& color);
    /// What the body is filled with.
    QColor fillColor(bool selected) const;

    void updateAllTexts(bool refresh);
    void setTextsVisible(bool visible);
    /// Reads active, locked and flipped from the node.
    void syncFromNode();

    /// Brings the context menu up to date; called before it opens, and makes it at the first time.
    virtual void updateMenu();
    /// Texts are placed for the present scales; `refresh` reads them from the node as well.
    virtual void updateNameText(bool refresh);
    virtual void updateTimeText();
    virtual void updateInfoText(bool refresh);
    virtual void updateLockIcon(bool refresh);

public Q_SLOTS:
    void setActive(bool value);
    void setLocked(bool value);
    void setFlipped(bool value);
    /// Of a block, for all nodes below it as well.
    void setMotionBlur(bool value);
    // For all selected bars; for this one where none is selected.
    void setActiveSelected(bool value);
    void setLockedSelected(bool value);
    void setFlippedSelected(bool value);
    void setMotionBlurSelected(bool value);

    /// Deletes the selected bars with their nodes.
    void remove();
    /// Puts a clone of the node on a free track beside it.
    void duplicate();
    void duplicateFlipped();
    void duplicateSelected();
    void duplicateFlippedSelected();
    void info();
    void finishedAnimation();

Q_SIGNALS:
    void activeChanged(bool value);
    void lockChanged(bool value);
    void flipChanged(bool value);
    void motionBlurChanged(bool value);
    /// `node` is the clone, which has no bar yet.
    void duplicated(osg::AnimNodePtr node);

protected:
    QVariant itemChange(GraphicsItemChange change, const QVariant& value) override;
    bool sceneEvent(QEvent* event) override;
    /// The mouse has gone to another, by its release or without one: nothing of the drag is left.
    virtual void endDrag();
    void contextMenuEvent(QGraphicsSceneContextMenuEvent* event) override;
    void hoverEnterEvent(QGraphicsSceneHoverEvent* event) override;
    void hoverLeaveEvent(QGraphicsSceneHoverEvent* event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent* event) override;
    /// Opens the dialog of a clip that the animation wizard made.
    void mouseDoubleClickEvent(QGraphicsSceneMouseEvent* event) override;

    /// Null outside a clip scene.
    kxAnimClipScene* clipScene() const;
    /// Pixels a frame of the first view, 1 without a view.
    double viewScale() const;
    /// viewScale() times the bar's own stretch; 1 without a view.
    double paintScale() const;
    /// Appends to the context menu, which is made where there is none. `slot` as SLOT() gives it; a checkable entry's
    /// `signal` carries its state.
    QAction* addMenuEntry(const QString& text, const char* signal, const char* slot, bool checkable = false);
    void addMenuSeparator();
    /// `position` on the grid of the scene, with `tracks` on a track as well; as it is while the bar slides back.
    QPointF snapped(const QPointF& position, bool tracks) const;
    /// Whether the bar may go there at all: it is on a timeline, and the place is finite.
    bool canGoTo(const QPointF& position) const;
    /// Takes the node along to where the bar goes; gives that place, or the present one where the node can't go.
    QPointF takeNodeTo(const QPointF& position);
    void setTextColor(const QColor& color);

    QMenu* _menu = nullptr;
    QAction* _activeAction = nullptr;
    QAction* _lockedAction = nullptr;
    QAction* _flippedAction = nullptr;
    QAction* _motionBlurAction = nullptr;
    QAction* _showSourceAction = nullptr;
    QAction* _infoAction = nullptr;
    QPointF _pressPosition;  // where a pressed handle was taken from
    QPointF _dragStart;      // where the bar slides back to after a collision
    double _dragStretch = 1; // and the stretch that it has there
    QTimeLine* _returnTimeLine = nullptr;
    QColor _color;
    kxAnimClipLabel* _nameText = nullptr;
    kxAnimClipLabel* _timeText = nullptr;
    kxAnimClipLabel* _infoText = nullptr;
    QGraphicsPixmapItem* _lockIcon = nullptr;
    bool _active = true;
    bool _locked = false;
    bool _flipped = false;
    bool _motionBlur = true;
    bool _savedMovable = false; // the flags to give back when the bar has slid back
    bool _savedSelectable = false;
    bool _savedSelected = false; // until the next press
    unsigned int _nodeId = 0;
    quint64 _selectionNumber = 0;
    QGraphicsItemAnimation* _returnAnimation = nullptr;

private:
    void takeOver(const osg::AnimNodePtr& node);
    void makeLabels();
    void placeText(kxAnimClipLabel* text, int line);
    QString infoOf(const osg::AnimNode& node) const;
    void duplicateNode(bool flip);
    void slideBack();
    void stretchTo(double stretch);
    QVector<kxAnimAbstractClipItem*> selectedBars() const;
};
