#include <clipmaker/kxAnimClipScene.h>

#include <clipmaker/kxAnimClipCyclesItem.h>
#include <clipmaker/kxAnimClipItem.h>
#include <clipmaker/kxAnimClipRuler.h>
#include <clipmaker/kxAnimClipSequenceItem.h>
#include <clipmaker/kxClipBars.h>
#include <clipmaker/kxClipColor.h>
#include <clipmaker/kxClipTracks.h>
#include <curveeditor/kxAnimTimeItem.h>
#include <frame/kxAnimationWatch.h>

#include <kxAnimManager.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <kxPlatform.h>
#include <osg/FieldContainerFactory.h>

#include <QCoreApplication>
#include <QGraphicsSceneHelpEvent>
#include <QGraphicsView>
#include <QPainter>
#include <QSet>
#include <QSignalBlocker>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace
{
kxAnimClipScene* theScene = nullptr; // the one that was built last; serves the host's callbacks

constexpr double TimeItemHeight = 1e30; // z value, in front of all bars
/// How far a bar may be from the top of its track, in pixels times dpi.
constexpr double TrackReach = 5;

/// The extension of a bar that has one and shows it; else null.
kxAnimClipCyclesItem* shownCycles(QGraphicsItem* item)
{
    const auto* const bar = dynamic_cast<const kxAnimClipItem*>(item);
    kxAnimClipCyclesItem* const cycles = bar == nullptr ? nullptr : bar->cyclesItem();
    return cycles != nullptr && cycles->isVisible() ? cycles : nullptr;
}
} // namespace

kxAnimClipScene::Rebuild::Rebuild(kxAnimClipScene* scene) : _scene(scene), _selection(scene->selection())
{
    for (kxAnimAbstractClipItem* bar : scene->selectedBars())
        _selected.append(bar);
    // A scene looks each item that dies up among its new ones until a posted call has seen those. What it tells its
    // views there has to arrive.
    QCoreApplication::sendPostedEvents(scene, QEvent::MetaCall);
    _wasBlocked = scene->blockSignals(true);
}

kxAnimClipScene::Rebuild::~Rebuild()
{
    _scene->blockSignals(_wasBlocked);
    if (_selection != _scene->selection())
    {
        Q_EMIT _scene->selectionChanged();
        return;
    }
    // Who is notified of a selection shows its curves, and may be editing those.
    for (kxAnimAbstractClipItem* bar : _scene->selectedBars())
        if (!_selected.contains(bar))
            Q_EMIT _scene->itemChanged(bar);
}

kxAnimClipScene::StateChanges::StateChanges(kxAnimClipScene* scene) : _scene(scene)
{
    ++_scene->_batches;
}

kxAnimClipScene::StateChanges::~StateChanges()
{
    if (--_scene->_batches > 0 || !_scene->_stateChanged)
        return;
    _scene->_stateChanged = false;
    Q_EMIT _scene->itemsChangedState();
}

kxAnimClipScene::kxAnimClipScene(QObject* parent)
    : QGraphicsScene(parent), _timeItem(new kxAnimTimeItem), _watch(new kxAnimationWatch(this))
{
    setBackgroundBrush(kxClipColor::Background);
    // Labels ignore the view's scale, and an index looks through all of those, squared, at each paint.
    setItemIndexMethod(NoIndex);
    _timeItem->setZValue(TimeItemHeight);
    connect(_timeItem, &kxAnimTimeItem::timePressed, this, &kxAnimClipScene::timeItemPressed);
    connect(_timeItem, &kxAnimTimeItem::timeChanged, this, &kxAnimClipScene::timeItemChanged);
    connect(_watch, &kxAnimationWatch::animationsChanged, this, &kxAnimClipScene::followChanges);
    addItem(_timeItem);
    theScene = this;
    for (const char* const message : {kxMessageName::Undo, kxMessageName::Redo, kxMessageName::ChangedFPS})
        _callbacks.add(message, followAtOnce);
    _callbacks.add(kxMessageName::EndGlides, endReturns);
}

kxAnimClipScene::~kxAnimClipScene()
{
    if (theScene == this)
        theScene = nullptr;
    blockSignals(true); // items die after this part of the scene
    for (kxAnimAbstractClipItem* bar : qAsConst(_bars))
        bar->disconnect(this);
    if (_timeItem != nullptr && _timeItem->scene() == nullptr)
        delete _timeItem;
}

// The clip

osg::AnimNodePtr kxAnimClipScene::clip() const
{
    return osg::living<osg::AnimNode>(_clipId);
}

void kxAnimClipScene::setClip(const osg::AnimNodePtr& node, bool force)
{
    if (node == osg::NullFC)
    {
        _clipId = 0;
        return;
    }
    const bool same = node->getId() == _clipId;
    if (same && !force)
        return;
    replaceBars(node, same ? selection() : Selection());
    if (!same)
        Q_EMIT clipShown();
}

void kxAnimClipScene::replaceBars(const osg::AnimNodePtr& node, const Selection& selected)
{
    const Rebuild rebuild(this);
    clear();
    buildBars(node);
    for (kxAnimAbstractClipItem* bar : qAsConst(_bars))
        if (const auto before = selected.constFind(bar->nodeId()); before != selected.constEnd())
            bar->selectAs(*before);
    _clipId = node->getId();
    update();
}

void kxAnimClipScene::buildBars(const osg::AnimNodePtr& node)
{
    for (const osg::NodePtr& child : node->getChildren())
        if (const osg::AnimNodePtr animation = osg::AnimNodePtr::dcast(child))
            addBar(animation);
}

void kxAnimClipScene::clear()
{
    const Rebuild rebuild(this);
    deleteBars(QVector<kxAnimAbstractClipItem*>(std::move(_bars)));
    endDrag();
    _clipId = 0;
    kxAnimManager::the()->resetMotionBlurObjectID();
}

void kxAnimClipScene::deleteBars(const QVector<kxAnimAbstractClipItem*>& bars)
{
    if (!bars.isEmpty())
        endBarDrag();
    for (kxAnimAbstractClipItem* bar : bars)
    {
        bar->endReturn(); // its node isn't left halfway
        bar->disconnect(this);
        forget(bar);
        removeItem(bar);
        delete bar;
    }
}

void kxAnimClipScene::endBarDrag()
{
    if (kxAnimAbstractClipItem* const held = kxAnimAbstractClipItem::fromItem(mouseGrabberItem()))
        held->ungrabMouse();
}

void kxAnimClipScene::followAtOnce(kxMessage&)
{
    if (theScene != nullptr)
        theScene->followClip();
}

void kxAnimClipScene::endReturns(kxMessage&)
{
    if (theScene != nullptr)
        for (kxAnimAbstractClipItem* bar : qAsConst(theScene->_bars))
            bar->endReturn();
}

void kxAnimClipScene::followChanges()
{
    _isBehind = mouseGrabberItem() != nullptr; // a bar isn't taken from under the mouse
    if (!_isBehind)
        followClip();
}

void kxAnimClipScene::followClip()
{
    if (const osg::AnimNodePtr shown = clip())
        followNodesOf(shown);
    else if (_clipId != 0)
        clear();
    Q_EMIT followed();
}

void kxAnimClipScene::followNodesOf(const osg::AnimNodePtr& shown)
{
    QSet<unsigned int> missing;
    for (const osg::NodePtr& child : shown->getChildren())
        if (kxClipBars::isShown(osg::AnimNodePtr::dcast(child)))
            missing.insert(child->getId());
    QVector<kxAnimAbstractClipItem*> outdated;
    for (kxAnimAbstractClipItem* bar : qAsConst(_bars))
    {
        if (missing.contains(bar->nodeId()) && (bar->isReturning() || kxClipBars::isCurrent(*bar)))
            missing.remove(bar->nodeId());
        else
            outdated.append(bar);
    }
    if (outdated.isEmpty() && missing.isEmpty())
        return;
    const Rebuild rebuild(this);
    const Selection selected = selection();
    QSet<unsigned int> known;
    for (const kxAnimAbstractClipItem* bar : qAsConst(outdated))
        known.insert(bar->nodeId());
    deleteBars(outdated);
    QVector<kxAnimAbstractClipItem*> added;
    for (const osg::NodePtr& child : shown->getChildren())
    {
        if (!missing.contains(child->getId()))
            continue;
        kxAnimAbstractClipItem* const bar = addBar(osg::AnimNodePtr::dcast(child));
        if (!known.contains(child->getId()))
            added.append(bar);
        if (const auto before = selected.constFind(child->getId()); before != selected.constEnd())
            bar->selectAs(*before);
    }
    bringIntoSight(added);
}

double kxAnimClipScene::viewScale(const QGraphicsScene* scene)
{
    const QList<QGraphicsView*> views = scene == nullptr ? QList<QGraphicsView*>() : scene->views();
    const double scale = views.isEmpty() ? 1.0 : views.first()->transform().m11();
    return std::isfinite(scale) && scale > 0 ? scale : 1.0;
}

kxAnimAbstractClipItem* kxAnimClipScene::addBar(const osg::AnimNodePtr& node)
{
    kxAnimAbstractClipItem* const bar = kxClipBars::make(node);
    if (bar == nullptr)
        return nullptr;
    connect(bar, SIGNAL(duplicated(osg::AnimNodePtr)), this, SLOT(createdItemDuplicate(osg::AnimNodePtr)));
    connect(bar, SIGNAL(activeChanged(bool)), this, SLOT(itemStateChanged(bool)));
    connect(bar, SIGNAL(lockChanged(bool)), this, SLOT(itemStateChanged(bool)));
    connect(bar, &QObject::destroyed, this, &kxAnimClipScene::forget);
    _bars.append(bar);
    addItem(bar);
    fitToView(bar);
    return bar;
}

void kxAnimClipScene::fitToView(kxAnimAbstractClipItem* bar)
{
    if (auto* const marker = dynamic_cast<kxAnimClipSequenceItem*>(bar))
        marker->updateMarker(); // the labels measure it
    bar->updateAllTexts(false);
}

void kxAnimClipScene::forget(QObject* bar)
{
    // The pointer is compared alone: the bar has lost its own class by the time it says so.
    _bars.erase(std::remove_if(_bars.begin(), _bars.end(), [bar](QObject* other) { return other == bar; }),
                _bars.end());
}

QVector<kxAnimAbstractClipItem*> kxAnimClipScene::selectedBars() const
{
    QVector<kxAnimAbstractClipItem*> bars;
    for (QGraphicsItem* item : selectedItems())
        if (kxAnimAbstractClipItem* const bar = kxAnimAbstractClipItem::fromItem(item))
            bars.append(bar);
    std::sort(bars.begin(), bars.end(),
              [](const kxAnimAbstractClipItem* a, const kxAnimAbstractClipItem* b)
              { return a->selectionNumber() < b->selectionNumber(); });
    return bars;
}

kxAnimClipScene::Selection kxAnimClipScene::selection() const
{
    Selection bars;
    for (const kxAnimAbstractClipItem* bar : selectedBars())
        bars.insert(bar->nodeId(), bar->selectionNumber());
    return bars;
}

void kxAnimClipScene::setSnapToGridX(bool value)
{
    _snapToGridX = value;
}

void kxAnimClipScene::updateAllTexts()
{
    for (kxAnimAbstractClipItem* bar : qAsConst(_bars))
        fitToView(bar);
}

// Collisions

kxClipTracks kxAnimClipScene::tracks() const
{
    kxClipTracks tracks(kxPlatform::getDpiScaleX());
    for (kxAnimAbstractClipItem* bar : _bars)
    {
        tracks.add(bar, bar->sceneBoundingRect());
        if (kxAnimClipCyclesItem* const cycles = shownCycles(bar))
            tracks.add(cycles, cycles->sceneBoundingRect());
    }
    return tracks;
}

bool kxAnimClipScene::isHit(const kxClipTracks& tracks, QGraphicsItem* item)
{
    if (!tracks.hits(item->sceneBoundingRect(), item).isEmpty())
        return true;
    const kxAnimClipCyclesItem* const cycles = shownCycles(item);
    return cycles != nullptr && !tracks.hits(cycles->sceneBoundingRect(), cycles).isEmpty();
}

QList<QGraphicsItem*> kxAnimClipScene::collidingItems(const QGraphicsItem* item, Qt::ItemSelectionMode mode) const
{
    if (item == nullptr)
        return {};
    QList<QGraphicsItem*> hits = tracks().hits(item->sceneBoundingRect(), item);
    if (mode == Qt::IntersectsItemBoundingRect)
        return hits;
    hits.erase(std::remove_if(hits.begin(), hits.end(),
                              [item, mode](QGraphicsItem* other) { return !item->collidesWithItem(other, mode); }),
               hits.end());
    return hits;
}

bool kxAnimClipScene::checkCollisions(const QList<QGraphicsItem*>& items)
{
    _rowMarks.clear();
    bool any = false;
    const kxClipTracks covered = tracks();
    for (QGraphicsItem* item : items)
    {
        const bool hit = isHit(covered, item);
        any = any || hit;
        _rowMarks[kxClipGeometry::trackOf(item->scenePos().y(), kxPlatform::getDpiScaleX())] =
            hit ? kxClipColor::TrackTaken : kxClipColor::TrackFree;
    }
    update();
    return any;
}

bool kxAnimClipScene::resolveCollisions(const QList<QGraphicsItem*>& items)
{
    const kxClipTracks covered = tracks();
    const bool any =
        std::any_of(items.begin(), items.end(), [&covered](QGraphicsItem* item) { return isHit(covered, item); });
    _rowMarks.clear();
    update();
    return any;
}

// Time

double kxAnimClipScene::time() const
{
    return _timeItem->time();
}

void kxAnimClipScene::setTime(double frame)
{
    if (std::isfinite(frame))
        _timeItem->setTime(frame);
}

void kxAnimClipScene::setTimePlaying(bool value)
{
    _timeItem->setPlaying(value);
}

void kxAnimClipScene::hideTimeItem()
{
    if (_timeItem->scene() == nullptr)
        return;
    if (_timeItem->isMoving())
    {
        // It loses the mouse here, and wouldn't get the release.
        QGraphicsSceneMouseEvent release(QEvent::GraphicsSceneMouseRelease);
        sendEvent(_timeItem, &release);
    }
    removeItem(_timeItem);
}

void kxAnimClipScene::showTimeItem()
{
    if (_timeItem->scene() == nullptr)
        addItem(_timeItem);
}

void kxAnimClipScene::timeItemPressed(double)
{
    if (const osg::AnimNodePtr shown = clip())
        kxAnimManager::the()->updateCameraShotCurves(shown);
}

void kxAnimClipScene::timeItemChanged(double value)
{
    const osg::AnimNodePtr shown = clip();
    if (shown == osg::NullFC)
        return;
    kxAnimManager::the()->setCurrentFrameNoEvaluation(value, false);
    kxAnimManager::the()->evaluateByFrame(shown, value, false, true, false);
    kxSend(kxMessageName::FrameChangedClipMaker);
    kxController::updateRender(true);
}

// Track buttons

kxClipLayout::TrackButton kxAnimClipScene::trackButtonAt(const QPointF& place) const
{
    return kxClipLayout::trackButtonAt(place, _visible.left(), viewScale(this), kxPlatform::getDpiScaleX());
}

void kxAnimClipScene::pressTrackButton(const kxClipLayout::TrackButton& pressed)
{
    const StateChanges changes(this);
    const Rebuild rebuild(this);
    const double dpi = double(kxPlatform::getDpiScaleX());
    const double top = pressed.track * double(kxClipGeometry::trackPitch(float(dpi)));
    const QVector<kxAnimAbstractClipItem*> bars = _bars;
    for (kxAnimAbstractClipItem* bar : bars)
    {
        if (std::abs(bar->scenePos().y() - top) >= TrackReach * dpi)
            continue;
        _stateChanged = true;
        if (pressed.button == kxClipLayout::Button::Show || pressed.button == kxClipLayout::Button::Hide)
        {
            bar->setActive(pressed.button == kxClipLayout::Button::Show);
            continue;
        }
        const QSignalBlocker blocker(bar);
        bar->setLocked(pressed.button == kxClipLayout::Button::Lock);
    }
}

void kxAnimClipScene::mousePressEvent(QGraphicsSceneMouseEvent* event)
{
    const kxClipLayout::TrackButton pressed = trackButtonAt(event->scenePos());
    if (pressed.button != kxClipLayout::Button::None)
        pressTrackButton(pressed);
    // The time line is broad and in front. A bar that begins where it is can be stretched all the same; the line is
    // taken beside the bars.
    const Qt::MouseButtons buttons = _timeItem != nullptr ? _timeItem->acceptedMouseButtons() : Qt::NoButton;
    if (_timeItem != nullptr && isOnHandle(event->scenePos()))
        _timeItem->setAcceptedMouseButtons(Qt::NoButton);
    QGraphicsScene::mousePressEvent(event);
    if (_timeItem != nullptr)
        _timeItem->setAcceptedMouseButtons(buttons);
}

bool kxAnimClipScene::isOnHandle(const QPointF& place) const
{
    return std::any_of(_bars.begin(), _bars.end(),
                       [&place](const kxAnimAbstractClipItem* bar)
                       {
                           const auto* const clip = dynamic_cast<const kxAnimClipItem*>(bar);
                           return clip != nullptr && clip->sceneBoundingRect().contains(place) &&
                                  clip->handleAt(place) != kxClipGeometry::Handle::None;
                       });
}

void kxAnimClipScene::mouseMoveEvent(QGraphicsSceneMouseEvent* event)
{
    const kxClipLayout::TrackButton before = _hovered;
    _hovered = trackButtonAt(event->scenePos());
    if (before.button != _hovered.button || before.track != _hovered.track)
        update();
    QGraphicsScene::mouseMoveEvent(event);
}

void kxAnimClipScene::mouseReleaseEvent(QGraphicsSceneMouseEvent* event)
{
    QGraphicsScene::mouseReleaseEvent(event);
    if (_isBehind)
        _watch->tellLater();
}

void kxAnimClipScene::helpEvent(QGraphicsSceneHelpEvent* event)
{
    const QString texts[] = {tr("Unlock the track"), tr("Lock the track"), tr("Switch the track on"),
                             tr("Switch the track off")};
    const kxClipLayout::TrackButton hovered = trackButtonAt(event->scenePos());
    if (hovered.button == kxClipLayout::Button::None)
        QGraphicsScene::helpEvent(event);
    else
        QToolTip::showText(event->screenPos(), texts[int(hovered.button)], event->widget());
}

void kxAnimClipScene::clearHover()
{
    _hovered = kxClipLayout::TrackButton();
    update();
}

// Looks

void kxAnimClipScene::drawBackground(QPainter* painter, const QRectF& rect)
{
    QGraphicsScene::drawBackground(painter, rect);
    painter->setRenderHint(QPainter::Antialiasing, false);
    painter->setPen(QPen(kxClipColor::TrackLine, 0)); // a hairline at any zoom and pixel ratio
    const float pitch = kxClipGeometry::trackPitch(kxPlatform::getDpiScaleX());
    const int last = kxClipGeometry::trackOf(rect.bottom(), kxPlatform::getDpiScaleX());
    for (int track = std::max(1, kxClipGeometry::trackOf(rect.top(), kxPlatform::getDpiScaleX())); track <= last;
         ++track)
        painter->drawLine(QLineF(rect.left(), double(pitch) * track, rect.right(), double(pitch) * track));
    painter->setPen(Qt::NoPen);
    for (auto mark = _rowMarks.constBegin(); mark != _rowMarks.constEnd(); ++mark)
    {
        painter->setBrush(mark.value());
        painter->drawRect(QRectF(rect.left(), double(pitch) * mark.key(), rect.width(), double(pitch)));
    }
}

void kxAnimClipScene::drawForeground(QPainter* painter, const QRectF& rect)
{
    kxAnimClipRuler ruler(painter, rect, viewScale(this));
    ruler.drawTracks(_hovered);
    ruler.drawTimes();
    if (_timeItem->scene() != nullptr)
        ruler.drawCurrentTime(_timeItem->time());
    _visible = rect;
}
