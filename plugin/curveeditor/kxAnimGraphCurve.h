#pragma once

#include <curveeditor/kxAnimGraphLine.h>

#include <osg/AnimCurve.h>

#include <QGraphicsPathItem>
#include <QList>
#include <QObject>
#include <QSet>

#include <unordered_map>
#include <vector>

class kxAnimGraphPoint;
class kxAnimGraphScene;

/// One curve in the graph: a path with a key item on each key.
///
/// Scene units: x in frames, y in channel values; the item stays at (0, 0). Its only children are the key items, which
/// it owns. The kernel's curve is the truth and is looked up by its id at each use, so that a curve that has gone turns
/// every operation into one that does nothing. Edits of the items become commands that write the kernel's curve.
class kxAnimGraphCurve : public QObject, public QGraphicsPathItem
{
    Q_OBJECT
public:
    enum
    {
        Type = UserType + 230
    };

    /// Adds itself to `scene`, which owns it then; null for none.
    kxAnimGraphCurve(const osg::AnimCurvePtr& curve, kxAnimGraphScene* scene);
    ~kxAnimGraphCurve() override;

    /// Null once the curve has gone.
    osg::AnimCurvePtr animCurve() const;
    unsigned int curveId() const { return _curveId; }
    /// Null past the end.
    kxAnimGraphPoint* point(unsigned int index) const;
    /// The keys that are in `area`.
    QList<kxAnimGraphPoint*> keysIn(const QRectF& area) const;
    /// The key items, in time order between edits.
    const QList<kxAnimGraphPoint*>& points() const { return _points; }
    /// Those that are selected, in any order.
    const QSet<kxAnimGraphPoint*>& selectedKeys() const { return _selected; }

    /// Makes all key items anew from the keys of `curve`; pointers to the old ones dangle. Null does nothing.
    void buildPoints(const osg::AnimCurvePtr& curve);
    /// buildPoints() with the curve of this item.
    void rebuildFromCurve();
    /// Takes places, tangents and types over from the kernel's keys; makes the items anew where their number differs.
    void updateFromCurve();
    /// Lays the path through the items as they are.
    void rebuildPath();

    /// The keys as the items are: sorts the items by time, recomputes all tangents by their types, appends the keys
    /// to `out`, rebuilds the path and emits curveChanged(). Keys that nothing near has touched cost a copy.
    void collectControlPoints(std::vector<osg::CCPnt>& out);

    /// True where another key than `key` and those that move jointly with it is at exactly `x`. Finds it without a
    /// walk over the keys, also while they are being moved past one another.
    bool isTimeTaken(double x, const kxAnimGraphPoint* key) const;

    int type() const override { return Type; }
    /// Path and key squares; empty without keys.
    QRectF boundingRect() const override;
    /// Empty: the mouse meets keys and handles, never the line.
    QPainterPath shape() const override;
    bool contains(const QPointF& point) const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

    /// Draws line and keys, or the handles that are shown, in the scene's units. The scene does so for all its curves:
    /// for it the item has no contents of its own.
    void draw(QPainter& painter, const QRectF& visible, const QPalette& palette) const;
    void drawHandles(QPainter& painter) const;
    /// A number that is another one after each change of what draw() draws, and that no other curve has.
    quint64 look() const { return _look; }
    /// Makes the items of the handles that are shown at `place`, so that the mouse meets them.
    void makeHandlesAt(const QPointF& place);

    /// Told by the keys: one moved, was selected or not, shows its handles or not.
    void keyMoved(kxAnimGraphPoint* key);
    void keySelected(kxAnimGraphPoint* key, bool isSelected);
    void keyShowsHandles(kxAnimGraphPoint* key, bool shows);
    /// Told to all curves before the size of the squares changes.
    static void aboutToScale();
    /// True while places come from the kernel, which no snapping, lock or tie holds back.
    bool isFollowingKernel() const { return _isFollowingKernel; }
    /// Takes the vectors of a key over from the kernel, which shortens a free one that reaches a neighbour.
    void takeTangents(kxAnimGraphPoint* key);

public Q_SLOTS:
    /// A handle was dragged: writes its key's tangents.
    void movedInTangent(kxAnimGraphPoint* point);
    void movedOutTangent(kxAnimGraphPoint* point);

Q_SIGNALS:
    void curveChanged();

private:
    void movedTangent(const kxAnimGraphPoint* point, bool isIn);
    void deletePoints();
    /// Puts the items in order of time; gives their places.
    std::vector<QPointF> sortPoints();
    std::vector<QPointF> presentPlaces() const;
    void layLine(const std::vector<QPointF>& places);
    void redraw();
    void computeTangents();
    static void computeTangents(kxAnimGraphPoint* key, kxAnimGraphPoint* previous, kxAnimGraphPoint* next);
    void paintSquares(QPainter& painter, const QRectF& area, const QPalette& palette) const;

    kxAnimGraphLine _line; // through the keys as they were at the last rebuildPath()
    QList<kxAnimGraphPoint*> _points;
    QRectF _bounds; // of line and keys, without the squares
    QSet<kxAnimGraphPoint*> _selected;
    QSet<kxAnimGraphPoint*> _withHandles;
    quint64 _look = 0;
    std::unordered_multimap<double, kxAnimGraphPoint*> _moved; // by x, since the line was laid; old places may linger
    unsigned int _curveId;                                     // field container id, 0 for none
    bool _isFollowingKernel = false;
};
