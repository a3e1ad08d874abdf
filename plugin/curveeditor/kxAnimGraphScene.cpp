#include <curveeditor/kxAnimGraphScene.h>

#include <curveeditor/kxAnimGraphColors.h>
#include <curveeditor/kxAnimGraphCurve.h>
#include <curveeditor/kxAnimGraphGrid.h>
#include <curveeditor/kxAnimGraphPoint.h>
#include <curveeditor/kxAnimTimeItem.h>
#include <frame/kxMessageRead.h>

#include <kxAnimManager.h>
#include <kxLog.h>
#include <kxMessageNames.h>
#include <kxUndo.h>
#include <osg/Finite.h>

#include <QCoreApplication>
#include <QGraphicsSceneMouseEvent>
#include <QGraphicsView>

#include <algorithm>
#include <cmath>
#include <set>

namespace
{
kxAnimGraphScene* theScene = nullptr; // the one that was built last; serves the host's callback

const QRectF TimeItemRect(-15, -1000000, 30, 2000000);

/// The curves of these keys that are still there, each with its item, in the order of their ids: the same keys always
/// give a group of the same commands, so that the steps of a drag merge.
std::map<unsigned int, kxAnimGraphCurve*> curveItemsOf(const QList<kxAnimGraphPoint*>& points)
{
    std::map<unsigned int, kxAnimGraphCurve*> items;
    const kxAnimGraphCurve* last = nullptr; // neighbours in the list are mostly of one curve
    for (const kxAnimGraphPoint* const point : points)
    {
        kxAnimGraphCurve* const curve = point->curve();
        if (curve == nullptr || curve == last)
            continue;
        last = curve;
        if (curve->animCurve() != osg::NullFC)
            items.emplace(curve->animCurve().getFieldContainerId(), curve);
    }
    return items;
}

/// Of the keys of one curve.
bool isBefore(const kxAnimGraphPoint* a, const kxAnimGraphPoint* b)
{
    return a->index() < b->index();
}

} // namespace

kxAnimGraphScene::Rebuild::Rebuild(kxAnimGraphScene* scene) : _scene(scene)
{
    if (_scene.isNull() || _scene->_rebuilds++ > 0)
        return;
    _scene->polishItems();
    _selected = _scene->selectedCount();
    _wasBlocked = _scene->blockSignals(true);
}

kxAnimGraphScene::Rebuild::~Rebuild()
{
    if (_scene.isNull() || --_scene->_rebuilds > 0)
        return;
    _scene->blockSignals(_wasBlocked);
    if (_selected > 0 || _scene->selectedCount() > 0)
        Q_EMIT _scene->selectionChanged();
}

kxAnimGraphScene::kxAnimGraphScene(QObject* parent) : QGraphicsScene(parent), _timeItem(new kxAnimTimeItem)
{
    // Keys lie below their curves and move in crowds: an index would be built anew at each step, and never asked.
    setItemIndexMethod(NoIndex);
    setBackgroundBrush(kxAnimGraphColors::Background);
    connect(this, &QGraphicsScene::selectionChanged, this, &kxAnimGraphScene::changedSelection);
    _timeItem->setRect(TimeItemRect);
    connect(_timeItem, &kxAnimTimeItem::timeChanged, this, &kxAnimGraphScene::timeItemChanged);
    addItem(_timeItem);
    installEventFilter(this);
    theScene = this;
    _callbacks.add(kxMessageName::TimeLineChangedPlay, timeLineChangedPlay);
}

kxAnimGraphScene::~kxAnimGraphScene()
{
    blockSignals(true); // items die after this part of the scene, and nobody is to look at it meanwhile
    polishItems();
    if (theScene == this)
        theScene = nullptr;
}

void kxAnimGraphScene::polishItems()
{
    // A scene looks every dying item up in its list of new ones, until it has polished those in an event of its own: of
    // 100,000 keys that takes seconds.
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
}

bool kxAnimGraphScene::eventFilter(QObject* watched, QEvent* event)
{
    // Calls that the scene queues to itself have to arrive: it never draws or reports a change again otherwise.
    if (_eventsBlocked && event->type() != QEvent::MetaCall)
        return true;
    return QGraphicsScene::eventFilter(watched, event);
}

void kxAnimGraphScene::timeLineChangedPlay(kxMessage& message)
{
    bool playing = false;
    if (theScene != nullptr && getFromMessage(message, "playing", playing))
        theScene->_timeItem->setPlaying(playing);
}

void kxAnimGraphScene::clear()
{
    const Rebuild rebuild(this);
    if (_timeItem->isMoving())
    {
        // It loses the mouse here, and wouldn't get the release.
        QGraphicsSceneMouseEvent release(QEvent::GraphicsSceneMouseRelease);
        sendEvent(_timeItem, &release);
    }
    removeItem(_timeItem);
    QGraphicsScene::clear();
    _curves.clear();
    addItem(_timeItem);
}

void kxAnimGraphScene::setFrame(double frame)
{
    _timeItem->setTime(frame);
}

bool kxAnimGraphScene::timeItemMoving() const
{
    return _timeItem->isMoving();
}

void kxAnimGraphScene::timeItemChanged(double value)
{
    kxMessage message;
    message.set("frame", value, true);
    kxController::call(kxMessageName::FrameChangedCurveEditor, message, 0);
}

void kxAnimGraphScene::addCurve(kxAnimGraphCurve* curve)
{
    addItem(curve);
    _curves.emplace_back(curve);
}

QList<kxAnimGraphCurve*> kxAnimGraphScene::curves() const
{
    QList<kxAnimGraphCurve*> curves;
    for (const QPointer<kxAnimGraphCurve>& curve : _curves)
        if (!curve.isNull() && curve->scene() == this)
            curves.append(curve);
    return curves;
}

bool kxAnimGraphScene::shows(const std::vector<osg::AnimCurvePtr>& curves) const
{
    std::map<unsigned int, std::size_t> wanted, shown; // counts of keys by the id of the curve
    for (const osg::AnimCurvePtr& curve : curves)
        wanted[curve->getId()] = curve->getControlPoints().size();
    for (const kxAnimGraphCurve* const curve : this->curves())
        shown[curve->curveId()] = std::size_t(curve->points().size());
    return wanted == shown;
}

bool kxAnimGraphScene::isEmpty() const
{
    for (const QGraphicsItem* const item : items())
        if (item != _timeItem && qgraphicsitem_cast<const kxAnimGraphCurve*>(item) == nullptr)
            return false; // a key or a bar
    return true;
}

QList<kxAnimGraphCurve*> kxAnimGraphScene::curvesById() const
{
    QList<kxAnimGraphCurve*> ordered = curves();
    std::sort(ordered.begin(), ordered.end(),
              [](const kxAnimGraphCurve* a, const kxAnimGraphCurve* b) { return a->curveId() < b->curveId(); });
    return ordered;
}

void kxAnimGraphScene::selectedPoints(QList<kxAnimGraphPoint*>& out) const
{
    for (const kxAnimGraphCurve* const curve : curvesById())
    {
        const int first = out.size();
        for (kxAnimGraphPoint* const point : curve->selectedKeys())
            out.append(point);
        std::sort(out.begin() + first, out.end(), isBefore);
    }
}

const kxAnimGraphPoint* kxAnimGraphScene::lastSelectedPoint() const
{
    const kxAnimGraphCurve* last = nullptr;
    for (const kxAnimGraphCurve* const curve : curves())
        if (!curve->selectedKeys().isEmpty() && (last == nullptr || last->curveId() < curve->curveId()))
            last = curve;
    if (last == nullptr)
        return nullptr;
    const QSet<kxAnimGraphPoint*>& keys = last->selectedKeys();
    return *std::max_element(keys.begin(), keys.end(), isBefore);
}

int kxAnimGraphScene::selectedCount() const
{
    int count = 0;
    for (const kxAnimGraphCurve* const curve : curves())
        count += curve->selectedKeys().size();
    return count;
}

void kxAnimGraphScene::selectPointsIn(const QRectF& rect)
{
    const auto touches = [&rect](const QRectF& square) // also where the band has no width
    {
        return square.right() >= rect.left() && square.left() <= rect.right() && square.bottom() >= rect.top() &&
               square.top() <= rect.bottom();
    };
    const QRectF square = kxAnimGraphPoint::square().normalized();
    bool changed = false;
    const bool wasBlocked = blockSignals(true); // one signal for all
    for (kxAnimGraphCurve* const curve : curves())
    {
        for (kxAnimGraphPoint* const point : curve->points())
        {
            const bool inside = touches(square.translated(point->pos()));
            if (inside == point->isSelected())
                continue;
            point->setSelected(inside);
            changed = true;
        }
    }
    blockSignals(wasBlocked);
    if (changed)
        Q_EMIT selectionChanged();
}

void kxAnimGraphScene::selectAllPoints()
{
    const Rebuild rebuild(this); // one signal for all
    for (kxAnimGraphCurve* const curve : curves())
        for (kxAnimGraphPoint* const point : curve->points())
            point->setSelected(true);
}

void kxAnimGraphScene::mousePressEvent(QGraphicsSceneMouseEvent* event)
{
    _pressedKey = selectedKeyAt(event->scenePos());
    if (_pressedKey == nullptr)
        makeHandlesAt(event->scenePos());
    QGraphicsScene::mousePressEvent(event);
    _pressedKey = nullptr;
}

const kxAnimGraphPoint* kxAnimGraphScene::selectedKeyAt(const QPointF& place) const
{
    const QRectF square = kxAnimGraphPoint::square().normalized();
    const auto distance = [&](const kxAnimGraphPoint* key) // in the size of a square
    {
        const QPointF way = key->pos() - place;
        return std::hypot(way.x() / square.width(), way.y() / square.height());
    };
    const kxAnimGraphPoint* nearest = nullptr;
    for (const kxAnimGraphCurve* const curve : curves())
        for (const kxAnimGraphPoint* const key : curve->keysIn(square.translated(place)))
            if (nearest == nullptr || distance(key) < distance(nearest) ||
                (key->isSelected() && distance(key) == distance(nearest)))
                nearest = key;
    return nearest != nullptr && nearest->isSelected() ? nearest : nullptr;
}

void kxAnimGraphScene::mouseMoveEvent(QGraphicsSceneMouseEvent* event)
{
    if (event->buttons() == Qt::NoButton)
        makeHandlesAt(event->scenePos());
    QGraphicsScene::mouseMoveEvent(event);
}

void kxAnimGraphScene::makeHandlesAt(const QPointF& place)
{
    for (kxAnimGraphCurve* const curve : curves())
        curve->makeHandlesAt(place);
}

void kxAnimGraphScene::lockItems(bool value)
{
    const Rebuild rebuild(this); // what is locked is no longer selected
    for (QGraphicsItem* const item : items())
        if (auto* const point = qgraphicsitem_cast<kxAnimGraphPoint*>(item))
        {
            point->setFlag(QGraphicsItem::ItemIsMovable, !value);
            point->setFlag(QGraphicsItem::ItemIsSelectable, !value);
        }
}

void kxAnimGraphScene::changedSelection()
{
    QList<kxAnimGraphPoint*> selected;
    selectedPoints(selected);
    for (const QPointer<kxAnimGraphPoint>& point : _withTangents)
        if (!point.isNull() && !point->isSelected())
            point->setTangentsVisible(false);
    _withTangents.assign(selected.begin(), selected.end());
    if (!selected.isEmpty())
        _gone.clear();
    for (kxAnimGraphPoint* const point : selected)
        point->setTangentsVisible(true);
}

void kxAnimGraphScene::moveSelectedPoints()
{
    QList<kxAnimGraphPoint*> selected;
    selectedPoints(selected);
    std::map<unsigned int, std::vector<osg::CCPnt>> keys;
    for (const auto& [id, item] : curveItemsOf(selected))
        item->collectControlPoints(keys[id]);
    kxKeyEdits::move(keys);
}

void kxAnimGraphScene::copySelectedPoints()
{
    _copiedKeys.clear();
    const float fps = float(kxAnimManager::the()->fps());
    QList<kxAnimGraphPoint*> selected;
    selectedPoints(selected);
    for (const kxAnimGraphPoint* const point : selected)
    {
        const kxAnimGraphCurve* const item = point->curve();
        const osg::AnimCurvePtr curve = item == nullptr ? osg::AnimCurvePtr() : item->animCurve();
        if (curve == osg::NullFC || point->index() < 0 ||
            osg::UInt32(point->index()) >= curve->getControlPoints().size())
            continue;
        const osg::CCPnt& key = curve->getControlPoints(osg::UInt32(point->index()));
        _copiedKeys[curve.getFieldContainerId()].emplace_back(
            float(point->pos().x() / double(fps)), float(point->pos().y()), float(key.inType), float(key.outType));
    }
}

void kxAnimGraphScene::pasteKeys()
{
    const QList<kxAnimGraphCurve*> items = curves();
    std::set<unsigned int> shown;
    for (const kxAnimGraphCurve* const item : items)
        shown.insert(item->curveId());
    const kxScopedUndo scope(true); // the step is reported when the items show it
    if (!kxKeyEdits::paste(_copiedKeys, shown))
        notice(_copiedKeys.empty() ? tr("No key was pasted: none has been copied.")
                                   : tr("No key was pasted: keys go into the curves that they were copied from, and "
                                        "none of those is shown."));
    {
        const Rebuild rebuild(this);
        for (kxAnimGraphCurve* const item : items)
            item->rebuildFromCurve();
    }
    kxSend(kxMessageName::UpdateClipScene);
}

void kxAnimGraphScene::notice(const QString& text)
{
    kxLog::warning(text);
    Q_EMIT noticed(text);
}

void kxAnimGraphScene::deleteSelectedPoints()
{
    QList<kxAnimGraphPoint*> selected;
    selectedPoints(selected);
    const auto items = curveItemsOf(selected);
    std::map<unsigned int, std::vector<unsigned int>> indices;
    for (const kxAnimGraphPoint* const point : selected)
        if (point->index() >= 0)
            indices[point->curve()->curveId()].push_back(unsigned(point->index()));

    const kxGraphKeySelection selection(*this);
    const kxScopedUndo scope(true); // the step is reported when the items show it
    {
        const Rebuild rebuild(this);
        kxKeyEdits::remove(std::move(indices));
        for (const auto& [id, item] : items)
            item->rebuildFromCurve();
        selection.restore(*this);
    }
    kxSend(kxMessageName::UpdateClipScene);
}

namespace
{
/// The extent of items, without those whose numbers are bad: each of them is worth a warning.
class Extent
{
public:
    void add(const QRectF& rect)
    {
        if (osg::isFinite(rect.x(), rect.x() + rect.width(), rect.y(), rect.y() + rect.height()))
            _rect |= rect;
        else
            kxLog::warning("Detected corrupted curve or tangent value. Please check your tangents!");
    }
    /// A key with its handles and their lines, whether or not they have been made.
    void addKey(const kxAnimGraphPoint& key)
    {
        const QRectF square = kxAnimGraphPoint::square();
        add(square.translated(key.pos()));
        for (const QPointF& handle : {key.inTangentScenePos(), key.outTangentScenePos()})
        {
            add(square.translated(handle));
            add(QRectF(key.pos(), handle)); // the line
        }
    }
    const QRectF& rect() const { return _rect; }

private:
    QRectF _rect;
};
} // namespace

QRectF kxAnimGraphScene::curvesBoundingRect() const
{
    Extent extent;
    for (const QGraphicsItem* const item : items())
    {
        if (item == _timeItem || item->parentItem() != nullptr)
            continue;
        extent.add(item->sceneBoundingRect());
        if (const auto* const curve = qgraphicsitem_cast<const kxAnimGraphCurve*>(item))
            for (const kxAnimGraphPoint* const key : curve->points())
                extent.addKey(*key);
    }
    return extent.rect();
}

void kxAnimGraphScene::drawBackground(QPainter* painter, const QRectF& rect)
{
    QGraphicsScene::drawBackground(painter, rect);
    kxAnimGraphGrid(painter, rect, views().isEmpty() ? nullptr : views().first()).draw();
}

void kxAnimGraphScene::drawForeground(QPainter* painter, const QRectF& rect)
{
    QGraphicsScene::drawForeground(painter, rect);
    painter->save();
    _picture.draw(*painter, curves(), palette());
    painter->restore();
}
