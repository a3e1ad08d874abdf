#include <clipmaker/kxAnimClipScene.h>

#include <clipmaker/kxAnimClipColors.h>
#include <clipmaker/kxAnimClipCyclesItem.h>
#include <clipmaker/kxAnimClipItem.h>
#include <clipmaker/kxAnimClipRows.h>
#include <clipmaker/kxAnimClipSequenceItem.h>
#include <curveeditor/kxTrashAnimationUndoCommand.h>

#include <kxAnimManager.h>
#include <kxPlatform.h>
#include <kxUndo.h>

#include <QGraphicsView>
#include <QPainter>

#include <cmath>

namespace
{
/// The extension of a bar that has one and shows it; else null.
kxAnimClipCyclesItem* shownCycles(QGraphicsItem* item)
{
    const auto* const bar = dynamic_cast<const kxAnimClipItem*>(item);
    kxAnimClipCyclesItem* const cycles = bar == nullptr ? nullptr : bar->cyclesItem();
    return cycles != nullptr && cycles->isVisible() ? cycles : nullptr;
}

bool isCut(const osg::AnimShot& shot)
{
    return shot.getTransitionType() == 0 && shot.getShotType() == 0;
}
} // namespace

kxAnimClipScene::kxAnimClipScene(QObject* parent) : QGraphicsScene(parent)
{
    setBackgroundBrush(kxClipColor::Background);
    // Labels ignore the view's scale, and an index looks through all of those, squared, at each paint.
    setItemIndexMethod(NoIndex);
}

kxAnimClipScene::~kxAnimClipScene()
{
    for (kxAnimAbstractClipItem* bar : qAsConst(_bars))
        bar->disconnect(this);
}

double kxAnimClipScene::viewScale(const QGraphicsScene* scene)
{
    const QList<QGraphicsView*> views = scene == nullptr ? QList<QGraphicsView*>() : scene->views();
    const double scale = views.isEmpty() ? 1.0 : views.first()->transform().m11();
    return std::isfinite(scale) && scale > 0 ? scale : 1.0;
}

kxAnimAbstractClipItem* kxAnimClipScene::addBar(const osg::AnimNodePtr& node)
{
    const osg::NodeCorePtr core = node == osg::NullFC ? osg::NodeCorePtr() : node->getCore();
    kxAnimAbstractClipItem* bar = nullptr;
    const osg::AnimShotPtr shot = osg::AnimShotPtr::dcast(core);
    if (osg::AnimSequencePtr::dcast(core) != osg::NullFC || (shot != osg::NullFC && isCut(*shot)))
        bar = new kxAnimClipSequenceItem(node, nullptr);
    else if (shot != osg::NullFC || osg::AnimClipPtr::dcast(core) != osg::NullFC ||
             osg::AnimBlockPtr::dcast(core) != osg::NullFC || osg::VertexAnimCurvesPtr::dcast(core) != osg::NullFC ||
             osg::TimeShapeCachePtr::dcast(core) != osg::NullFC)
        bar = new kxAnimClipItem(node, nullptr);
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

kxAnimClipRows kxAnimClipScene::rows() const
{
    kxAnimClipRows rows(kxPlatform::getDpiScaleX());
    for (kxAnimAbstractClipItem* bar : _bars)
    {
        rows.add(bar, bar->sceneBoundingRect());
        if (kxAnimClipCyclesItem* const cycles = shownCycles(bar))
            rows.add(cycles, cycles->sceneBoundingRect());
    }
    return rows;
}

bool kxAnimClipScene::isHit(const kxAnimClipRows& rows, QGraphicsItem* item)
{
    if (!rows.hits(item->sceneBoundingRect(), item).isEmpty())
        return true;
    const kxAnimClipCyclesItem* const cycles = shownCycles(item);
    return cycles != nullptr && !rows.hits(cycles->sceneBoundingRect(), cycles).isEmpty();
}

QList<QGraphicsItem*> kxAnimClipScene::collidingItems(const QGraphicsItem* item, Qt::ItemSelectionMode mode) const
{
    if (item == nullptr)
        return {};
    QList<QGraphicsItem*> hits = rows().hits(item->sceneBoundingRect(), item);
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
    const kxAnimClipRows covered = rows();
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
    const kxAnimClipRows covered = rows();
    const bool any =
        std::any_of(items.begin(), items.end(), [&covered](QGraphicsItem* item) { return isHit(covered, item); });
    _rowMarks.clear();
    update();
    return any;
}

// The selection

bool kxAnimClipScene::activeSelectedItems(bool value)
{
    const QVector<kxAnimAbstractClipItem*> bars = selectedBars();
    for (kxAnimAbstractClipItem* bar : bars)
        bar->setActive(value);
    return !bars.isEmpty();
}

bool kxAnimClipScene::flipSelectedItems(bool value)
{
    const QVector<kxAnimAbstractClipItem*> bars = selectedBars();
    for (kxAnimAbstractClipItem* bar : bars)
        bar->setFlipped(value);
    return !bars.isEmpty();
}

bool kxAnimClipScene::lockSelectedItems(bool value)
{
    const QVector<kxAnimAbstractClipItem*> bars = selectedBars();
    for (kxAnimAbstractClipItem* bar : bars)
        bar->setLocked(value);
    return !bars.isEmpty();
}

bool kxAnimClipScene::motionBlurSelectedItems(bool value)
{
    const QVector<kxAnimAbstractClipItem*> bars = selectedBars();
    for (kxAnimAbstractClipItem* bar : bars)
        bar->setMotionBlur(value);
    return !bars.isEmpty();
}

bool kxAnimClipScene::playSelected()
{
    const QVector<kxAnimAbstractClipItem*> bars = selectedBars();
    for (kxAnimAbstractClipItem* bar : bars)
        if (auto* const clip = dynamic_cast<kxAnimClipItem*>(bar))
            clip->play();
    return !bars.isEmpty();
}

bool kxAnimClipScene::resetSelected()
{
    const QVector<kxAnimAbstractClipItem*> bars = selectedBars();
    for (kxAnimAbstractClipItem* bar : bars)
        if (auto* const clip = dynamic_cast<kxAnimClipItem*>(bar))
            clip->reset();
    return !bars.isEmpty();
}

void kxAnimClipScene::deleteSelectedItems()
{
    std::vector<kxNodePtr> nodes;
    for (kxAnimAbstractClipItem* bar : selectedBars())
    {
        if (const osg::AnimNodePtr node = bar->node())
            nodes.emplace_back(node);
        forget(bar);
        removeItem(bar);
        bar->deleteLater(); // a signal of the bar may be what calls
    }
    if (nodes.empty())
        return;
    const kxScopedUndo scope(true);
    kxUndoStack::get(0).add(new kxTrashAnimationUndoCommand(nodes));
}

bool kxAnimClipScene::duplicateSelectedItems(bool flipped)
{
    const QVector<kxAnimAbstractClipItem*> bars = selectedBars();
    for (kxAnimAbstractClipItem* bar : bars)
    {
        const osg::AnimNodePtr node = bar->node();
        const osg::NodePtr parent = node == osg::NullFC ? osg::NodePtr() : node->getParent();
        if (parent == osg::NullFC)
            continue;
        kxAnimManager::the()->copy(node, osg::FieldContainerPtr());
        for (const osg::AnimNodePtr& clone : kxAnimManager::the()->clonePasteTo(parent, false, false))
        {
            if (clone == osg::NullFC)
                continue;
            kxAnimManager::the()->unshareClipsR(clone);
            kxAnimAbstractClipItem* const copy = addBar(clone);
            if (copy != nullptr && flipped)
                copy->setFlipped(true);
        }
    }
    if (!bars.isEmpty())
        Q_EMIT itemDuplicated();
    return !bars.isEmpty();
}

bool kxAnimClipScene::duplicateSelectedItems()
{
    return duplicateSelectedItems(false);
}

void kxAnimClipScene::createdItemDuplicate(osg::AnimNodePtr node)
{
    if (node == osg::NullFC)
        return;
    addBar(node);
    Q_EMIT itemDuplicated();
}

void kxAnimClipScene::itemStateChanged(bool)
{
    Q_EMIT itemsChangedState();
}

// Looks

void kxAnimClipScene::drawBackground(QPainter* painter, const QRectF& rect)
{
    QGraphicsScene::drawBackground(painter, rect);
    painter->setRenderHint(QPainter::Antialiasing, false);
    const double vertical = views().isEmpty() ? 1.0 : views().first()->transform().m22();
    painter->setPen(QPen(kxClipColor::TrackLine, 0.1 / vertical));
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
