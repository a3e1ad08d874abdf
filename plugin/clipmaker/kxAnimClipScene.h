#pragma once

#include <clipmaker/kxClipLayout.h>
#include <frame/kxCallbacks.h>

#include <osg/AnimNode.h>

#include <QColor>
#include <QGraphicsScene>
#include <QHash>
#include <QMap>
#include <QPointer>
#include <QVector>

class kxAnimAbstractClipItem;
class kxAnimClipItem;
class kxClipTracks;
class kxAnimationWatch;
class kxAnimTimeItem;

class QTreeWidgetItem;

/// The timeline of the clip maker: the bars of one clip's children on tracks, with ruler, track column and time line.
///
/// x in frames, tracks of pitch 50 * dpi downward from y = 0. Owns the bars and the time line. The clip is looked up by
/// id at each use, and without one every operation on it does nothing. Follows every change of the clip's nodes,
/// whoever makes it: that of a step on the undo stack and of the frame rate at once, any other in the next turn of the
/// event loop. There is one scene, which serves the host's callbacks.
class kxAnimClipScene : public QGraphicsScene
{
    Q_OBJECT
public:
    explicit kxAnimClipScene(QObject* parent = nullptr);
    ~kxAnimClipScene() override;

    /// Pixels a frame of the scene's first view; 1 without a scene, a view or a usable scale.
    static double viewScale(const QGraphicsScene* scene);

    /// The clip that is shown; null for none and for one that has died.
    osg::AnimNodePtr clip() const;
    /// Shows a clip; `force`: also the one that is shown, whose selected bars stay selected. Null leaves the bars as
    /// they are, without a clip: clear() takes them away.
    void setClip(const osg::AnimNodePtr& node, bool force);
    /// Takes all bars away; the time line stays.
    void clear();

    /// Frames.
    double time() const;
    /// Evaluates the clip as well.
    void setTime(double frame);
    /// While playing, the time line can't be grabbed.
    void setTimePlaying(bool value);
    /// Takes the time line out of the scene and back, to measure the bars alone.
    void hideTimeItem();
    void showTimeItem();

    /// Makes the bar or marker that shows `node`, a child of the clip. Null where the node's core has none.
    kxAnimAbstractClipItem* addBar(const osg::AnimNodePtr& node);
    /// All bars and markers, in the order in which they came.
    const QVector<kxAnimAbstractClipItem*>& bars() const { return _bars; }
    /// In the order in which they were selected; bars that are made anew keep their places in it.
    QVector<kxAnimAbstractClipItem*> selectedBars() const;

    bool snapToGridX() const { return _snapToGridX; }

    /// The other bars and extensions that `item` lies over; what only touches it doesn't count.
    virtual QList<QGraphicsItem*> collidingItems(const QGraphicsItem* item, Qt::ItemSelectionMode mode) const;
    /// Marks the tracks of `items` as free or taken while they are dragged; true where any is taken.
    bool checkCollisions(const QList<QGraphicsItem*>& items);
    /// Takes the marks away at the end of a drag; true where any of `items` lies over another bar.
    bool resolveCollisions(const QList<QGraphicsItem*>& items);

    /// Scrolls the views to the start of the last of these bars where none of them is in sight.
    void bringIntoSight(const QVector<kxAnimAbstractClipItem*>& bars);
    void selectAll();
    /// The bar of this node and no other, in sight; none where it has none or is locked.
    void selectAlone(unsigned int nodeId);
    /// To the clipboard; false where no bar is selected.
    bool copySelectedItems();
    /// Pastes into the clip at the time line; what comes is selected. False where nothing came.
    bool paste();
    /// No track button is under the mouse.
    void clearHover();

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
    // For all bars.
    void lockItems();
    void unlockItems();
    void lockItems(bool value);
    /// Reads the state of a clip tree's row into its bar; null does nothing.
    void updateFromItem(QTreeWidgetItem* item, int column);
    /// Takes the selected bars away and hands their nodes to the trash, as one step on the undo stack.
    void deleteSelectedItems();
    void timeItemPressed(double value);
    void timeItemChanged(double value);
    void itemStateChanged(bool value);
    void createdItemDuplicate(osg::AnimNodePtr node);

Q_SIGNALS:
    /// Another clip than before, or one after none.
    void clipShown();
    void itemChanged(kxAnimAbstractClipItem* item);
    void itemDuplicated();
    /// The bar of a clip that the wizard made was double-clicked.
    void wizardClipOpened(osg::AnimNodePtr clip);
    /// Once for an operation on many bars.
    void itemsChangedState();
    void dropEventOccured();
    /// Animations have changed, those of the clip or others, and the bars show it.
    void followed();

protected:
    void dragEnterEvent(QGraphicsSceneDragDropEvent* event) override;
    void dragMoveEvent(QGraphicsSceneDragDropEvent* event) override;
    void dragLeaveEvent(QGraphicsSceneDragDropEvent* event) override;
    void dropEvent(QGraphicsSceneDragDropEvent* event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent* event) override;
    void helpEvent(QGraphicsSceneHelpEvent* event) override;
    void drawBackground(QPainter* painter, const QRectF& rect) override;
    /// `rect`: what the view shows.
    void drawForeground(QPainter* painter, const QRectF& rect) override;

private:
    typedef QHash<unsigned int, quint64> Selection; // node id to the bar's number

    /// Many changes of bars and selection that nobody is notified of. At the end selectionChanged() goes out where
    /// other nodes are selected, else itemChanged() for each selected bar that was made anew.
    class Rebuild
    {
    public:
        explicit Rebuild(kxAnimClipScene* scene);
        ~Rebuild();
        Rebuild(const Rebuild&) = delete;
        Rebuild& operator=(const Rebuild&) = delete;

    private:
        kxAnimClipScene* _scene;
        QVector<QPointer<kxAnimAbstractClipItem>> _selected; // a new bar may be where a dead one was
        Selection _selection;
        bool _wasBlocked = false;
    };
    /// An operation on the states of many bars: itemsChangedState() goes out once, at its end.
    class StateChanges
    {
    public:
        explicit StateChanges(kxAnimClipScene* scene);
        ~StateChanges();
        StateChanges(const StateChanges&) = delete;
        StateChanges& operator=(const StateChanges&) = delete;

    private:
        kxAnimClipScene* _scene;
    };

    Selection selection() const;
    static void followAtOnce(kxMessage& message);
    static void endReturns(kxMessage& message);
    /// The bars of a clip that has died go.
    void followClip();
    /// Makes the bars anew that don't show what their nodes are; adds and removes those whose nodes came and went.
    void followNodesOf(const osg::AnimNodePtr& shown);
    /// As soon as nothing is dragged.
    void followChanges();
    /// All bars make way for those of `node`.
    void replaceBars(const osg::AnimNodePtr& node, const Selection& selected);
    void buildBars(const osg::AnimNodePtr& node);
    void deleteBars(const QVector<kxAnimAbstractClipItem*>& bars);
    /// A drag of bars doesn't outlive any of them: Qt places all by where they were at its start.
    void endBarDrag();

    kxClipTracks tracks() const;
    /// Whether `item` or its extension lies over anything.
    static bool isHit(const kxClipTracks& tracks, QGraphicsItem* item);
    static void fitToView(kxAnimAbstractClipItem* bar);
    void forget(QObject* bar);

    /// What lies under a place of the scene, in the view's scale.
    bool isOnHandle(const QPointF& place) const;
    kxClipLayout::TrackButton trackButtonAt(const QPointF& place) const;
    void pressTrackButton(const kxClipLayout::TrackButton& pressed);

    /// Where a library item that is held over `place` would start.
    QPointF dropPlace(const QPointF& place) const;
    /// Takes ghost and marks away.
    void endDrag();

    unsigned int _clipId = 0;
    QPointer<kxAnimTimeItem> _timeItem; // owned, in the scene or not
    bool _snapToGridX = false;
    QRectF _visible;                 // what the view showed when it was last drawn
    QMap<int, QColor> _rowMarks;     // track to colour
    QPointer<kxAnimClipItem> _ghost; // while a library item is dragged over the tracks
    kxClipLayout::TrackButton _hovered;

    QVector<kxAnimAbstractClipItem*> _bars;
    int _batches = 0;
    bool _stateChanged = false; // in a batch, which reports it at its end
    kxCallbacks _callbacks;
    kxAnimationWatch* const _watch; // a child
    bool _isBehind = false;         // changes that came during a drag are still to be followed
};
