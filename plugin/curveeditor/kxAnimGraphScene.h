#pragma once

#include <curveeditor/edits/kxKeyEdits.h>
#include <curveeditor/kxAnimGraphPicture.h>
#include <curveeditor/kxAnimKeyDrag.h>
#include <curveeditor/kxGraphKeySelection.h>
#include <frame/kxCallbacks.h>

#include <osg/AnimCurve.h>

#include <QGraphicsScene>
#include <QList>
#include <QPointer>

#include <vector>

class kxAnimGraphCurve;
class kxAnimGraphPoint;
class kxAnimTimeItem;

/// What the graph holds: a curve item for each curve that is shown and the time item, over grid, axes and labels.
///
/// Scene units: x in frames, y in channel values. The view mirrors y, so that values grow upwards on the screen and the
/// scene's top is the bottom edge of the screen.
class kxAnimGraphScene : public QGraphicsScene
{
    Q_OBJECT
public:
    /// A stretch in which key items die or are made anew: selectionChanged() is held back, so that nobody meets an item
    /// that is half gone, and goes out once after it where a key was or is selected: the same may stand elsewhere.
    /// Within another one, and with null, it does nothing.
    class Rebuild
    {
    public:
        explicit Rebuild(kxAnimGraphScene* scene);
        ~Rebuild();
        Rebuild(const Rebuild&) = delete;
        Rebuild& operator=(const Rebuild&) = delete;

    private:
        QPointer<kxAnimGraphScene> _scene;
        bool _wasBlocked = false;
        int _selected = 0; // before
    };

    explicit kxAnimGraphScene(QObject* parent = nullptr);
    ~kxAnimGraphScene() override;

    /// Keys stop at whole frames, or at whole values, while they are dragged.
    bool snapToGridX() const { return _snapToGridX; }
    bool snapToGridY() const { return _snapToGridY; }
    /// The handles of a key move on their own; else as mirror images.
    bool breakTangents() const { return _breakTangents; }
    /// No key may change its frame, or its value. Set by the view.
    bool lockX() const { return _lockX; }
    void setLockX(bool value) { _lockX = value; }
    bool lockY() const { return _lockY; }
    void setLockY(bool value) { _lockY = value; }
    /// While the view pans, draws its rubber band or zooms, no event reaches the items. Set by the view.
    void setEventsBlocked(bool value) { _eventsBlocked = value; }

    /// Takes a curve item over.
    void addCurve(kxAnimGraphCurve* curve);
    /// No curve has a key, and nothing else is shown.
    bool isEmpty() const;
    /// The curve items, in the order in which they were made.
    QList<kxAnimGraphCurve*> curves() const;
    /// The items are those of `curves`, in any order, and have as many keys.
    bool shows(const std::vector<osg::AnimCurvePtr>& curves) const;
    /// Appends the selected keys, no handles, by curve and index.
    void selectedPoints(QList<kxAnimGraphPoint*>& out) const;
    /// The last of them, null without any, and their number, without a walk over them all.
    const kxAnimGraphPoint* lastSelectedPoint() const;
    int selectedCount() const;
    /// Selects the keys that this rectangle touches, and no others.
    void selectPointsIn(const QRectF& rect);
    /// Selects every key, no handles.
    void selectAllPoints();

    /// Writes the present places of the selected keys into their curves, as a step that merges with the one before it
    /// in the same drag. For key items that were moved already.
    void moveSelectedPoints();
    void copySelectedPoints();
    /// The copied keys, with their spacing, from the current frame on, into the curves that they were copied from and
    /// that are shown; where there are none, that is noticed(). The items of all curves are made anew.
    void pasteKeys();
    /// Takes the selected keys out. The items of their curves are made anew.
    void deleteSelectedPoints();

    /// The extent of all items but the time item, hidden handles too; empty where there is none. Items whose numbers
    /// aren't finite are left out with a warning.
    QRectF curvesBoundingRect() const;

    /// Moves the time item, which notifies the host.
    void setFrame(double frame);
    bool timeItemMoving() const;
    kxAnimTimeItem* timeItem() const { return _timeItem; }

    /// In a press of the mouse on a selected key: this key, which takes it before handles and keys that lie over it.
    const kxAnimGraphPoint* pressedKey() const { return _pressedKey; }

    kxAnimKeyDrag& keyDrag() { return _keyDrag; }

    /// The keys that were selected when they went, until a key is selected.
    const kxGraphKeySelection::Curves& goneSelection() const { return _gone; }
    void setGoneSelection(const kxGraphKeySelection::Curves& keys) { _gone = keys; }

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// Why a command did nothing; the log has it too.
    void noticed(QString text);

public Q_SLOTS:
    /// Takes out everything but the time item.
    virtual void clear();
    void setSnapToGridX(bool value) { _snapToGridX = value; }
    void setSnapToGridY(bool value) { _snapToGridY = value; }
    void setBreakTangents(bool value) { _breakTangents = value; }
    /// Locked keys and handles can't be moved or selected.
    void lockItems() { lockItems(true); }
    void unlockItems() { lockItems(false); }
    void lockItems(bool value);

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent* event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent* event) override;
    void drawBackground(QPainter* painter, const QRectF& rect) override;
    void drawForeground(QPainter* painter, const QRectF& rect) override;

private Q_SLOTS:
    void changedSelection();
    void timeItemChanged(double value);

private:
    QList<kxAnimGraphCurve*> curvesById() const;
    /// The key nearest to `place` if that is selected; null where no key's square holds it.
    const kxAnimGraphPoint* selectedKeyAt(const QPointF& place) const;
    void makeHandlesAt(const QPointF& place);
    void polishItems();
    void notice(const QString& text);
    static void timeLineChangedPlay(kxMessage& message);

    kxKeyEdits::Copied _copiedKeys;
    bool _snapToGridX = false;
    bool _snapToGridY = false;
    bool _lockX = false;
    bool _lockY = false;
    bool _breakTangents = false;
    bool _eventsBlocked = false;
    const kxAnimGraphPoint* _pressedKey = nullptr;
    int _rebuilds = 0;         // that are open
    kxAnimTimeItem* _timeItem; // owned through the scene

    std::vector<QPointer<kxAnimGraphCurve>> _curves; // in the order in which they were made
    kxGraphKeySelection::Curves _gone;
    std::vector<QPointer<kxAnimGraphPoint>> _withTangents; // the keys that were selected, and so show their handles
    kxAnimGraphPicture _picture;
    kxAnimKeyDrag _keyDrag{*this};
    kxCallbacks _callbacks;
};
