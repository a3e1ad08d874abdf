#include <clipmaker/kxAnimClipItem.h>

#include <clipmaker/edits/kxClipNodes.h>
#include <clipmaker/kxAnimClipCyclesItem.h>
#include <clipmaker/kxAnimClipScene.h>
#include <clipmaker/kxClipColor.h>

#include <QKXDockWindowManager.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <kxPlatform.h>

#include <QAction>
#include <QGraphicsSceneHoverEvent>
#include <QGraphicsSceneMouseEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyleOptionGraphicsItem>

#include <cmath>

namespace
{
/// Keeps the cycles from touching their own bar, in frames.
constexpr double CyclesGap = 0.001;

/// The states of the menu, in its order.
typedef bool (*StateOf)(const osg::AnimNode& node);
const StateOf States[] = {
    [](const osg::AnimNode& node) { return node.isActive(); },
    [](const osg::AnimNode& node) { return node.getLocked(); },
    [](const osg::AnimNode& node) { return node.getFlipped(); },
    [](const osg::AnimNode& node) { return node.getMotionBlur(); },
};
} // namespace

kxAnimClipItem::kxAnimClipItem(osg::AnimNodePtr node, QGraphicsItem* parent) : kxAnimAbstractClipItem(node, parent)
{
    setPen(Qt::NoPen);
    if (node == osg::NullFC)
        return;
    _cyclesItem = new kxAnimClipCyclesItem(this);
    _cyclesItem->setCycles(node->getPostCycles());
    _cyclesItem->setPos(rect().right() + CyclesGap, 0);
}

void kxAnimClipItem::setHandlesShown(bool shown)
{
    _handlesShown = shown;
    update();
}

// Menu

void kxAnimClipItem::buildMenu()
{
    const char* const triggered = SIGNAL(triggered(bool));
    addMenuEntry(tr("Play"), triggered, SLOT(playSelected()));
    addMenuEntry(tr("Reset"), triggered, SLOT(resetSelected()));
    addMenuSeparator();
    _activeAction = addMenuEntry(tr("Active"), triggered, SLOT(setActiveSelected(bool)), true);
    _lockedAction = addMenuEntry(tr("Locked"), triggered, SLOT(setLockedSelected(bool)), true);
    _flippedAction = addMenuEntry(tr("Flipped"), triggered, SLOT(setFlippedSelected(bool)), true);
    _motionBlurAction = addMenuEntry(tr("Motion Blur"), SIGNAL(toggled(bool)), SLOT(setMotionBlurSelected(bool)), true);
    _stateActions = {_activeAction, _lockedAction, _flippedAction, _motionBlurAction};
    addMenuSeparator();
    addMenuEntry(tr("Duplicate"), triggered, SLOT(duplicateSelected()));
    addMenuEntry(tr("Duplicate Flipped"), triggered, SLOT(duplicateFlippedSelected()));
    addMenuEntry(tr("Delete"), triggered, SLOT(remove()));
    addMenuSeparator();
    _showSourceAction = addMenuEntry(tr("Show Source"), triggered, SLOT(showSource()));
    addMenuSeparator();
    _infoAction = addMenuEntry(tr("Info"), triggered, SLOT(info()));
}

void kxAnimClipItem::updateMenu()
{
    if (_menu == nullptr)
        buildMenu(); // thousands of bars are there without one
    const QList<QGraphicsItem*> selected = scene() == nullptr ? QList<QGraphicsItem*>() : scene()->selectedItems();
    if (const osg::AnimNodePtr own = node())
        for (int state = 0; state < _stateActions.size(); ++state)
            updateStateAction(state, selected, *own);
    for (QAction* action : {_showSourceAction, _infoAction})
    {
        const QSignalBlocker blocker(action);
        action->setEnabled(selected.size() < 2);
    }
}

void kxAnimClipItem::updateStateAction(int state, const QList<QGraphicsItem*>& selected, const osg::AnimNode& own)
{
    const bool value = States[state](own);
    const bool mixed = std::any_of(selected.begin(), selected.end(),
                                   [state, value](QGraphicsItem* item)
                                   {
                                       const kxAnimAbstractClipItem* const bar = fromItem(item);
                                       const osg::AnimNodePtr node = bar == nullptr ? osg::AnimNodePtr() : bar->node();
                                       return node != osg::NullFC && States[state](*node) != value;
                                   });
    QAction* const action = _stateActions[state];
    const QSignalBlocker blocker(action);
    action->setIcon(mixed ? QIcon(QStringLiteral(":/style/intermediate.png")) : QIcon());
    action->setChecked(!mixed && value);
}

void kxAnimClipItem::play()
{
    kxController::updateBehavior(false);
    if (const osg::AnimNodePtr own = node())
        kxAnimManager::the()->enqueue(own, false);
}

void kxAnimClipItem::reset()
{
    if (const osg::AnimNodePtr own = node())
        kxAnimManager::the()->reset(own, false);
}

void kxAnimClipItem::playSelected()
{
    kxAnimClipScene* const clips = clipScene();
    if (clips != nullptr && !clips->playSelected())
        play();
}

void kxAnimClipItem::resetSelected()
{
    kxAnimClipScene* const clips = clipScene();
    if (clips != nullptr && !clips->resetSelected())
        reset();
}

void kxAnimClipItem::showSource()
{
    const osg::AnimNodePtr own = node();
    if (own == osg::NullFC)
        return;
    // First, since it looks at the scene anew when it is shown; a call without its window would show nothing.
    QKXDockWindowManager* const docks = kxController::getDockWindowManager();
    if (QKXDockWidget* const dock = docks != nullptr ? docks->getDockWidget("Curve Editor") : nullptr)
    {
        dock->setMinimized(false);
        docks->show("Curve Editor");
    }
    kxMessage message;
    message.set("node", own, true);
    kxController::call(kxMessageName::ShowCurves, message, 0);
}

// Looks

void kxAnimClipItem::paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget*)
{
    const double scale = paintScale();
    const QColor fill = fillColor(option->state.testFlag(QStyle::State_Selected));
    setTextColor(kxClipColor::textOn(fill));
    painter->setRenderHint(QPainter::Antialiasing, false); // ends are sharp, on their frames
    painter->setPen(Qt::NoPen);
    painter->setBrush(fill);
    painter->drawRect(rect());
    if (_handlesShown && kxClipGeometry::handlesFit(rect().width(), scale))
        paintHandles(painter, scale);
}

void kxAnimClipItem::paintHandles(QPainter* painter, double scale) const
{
    const double width = kxClipGeometry::handleWidth(scale, kxPlatform::getDpiScaleX());
    const QColor plain = isActive() ? kxClipColor::Handle : kxClipColor::Inactive;
    const QRectF bar = rect();
    painter->setBrush(_leftPressed ? kxClipColor::Selected : plain);
    painter->drawRect(QRectF(bar.x(), bar.y(), width, bar.height()));
    painter->setBrush(_rightPressed ? kxClipColor::Selected : plain);
    painter->drawRect(QRectF(bar.right() - width, bar.y(), width, bar.height()));
}

// Mouse

void kxAnimClipItem::hoverMoveEvent(QGraphicsSceneHoverEvent* event)
{
    const double scale = paintScale();
    const float dpi = kxPlatform::getDpiScaleX();
    if (!isLocked() && rect().width() * scale > double(dpi) * kxClipGeometry::GrabWidth)
    {
        const bool onHandle =
            kxClipGeometry::handleAt(event->pos(), rect(), scale, dpi) != kxClipGeometry::Handle::None;
        const Qt::CursorShape shape = onHandle ? Qt::SizeHorCursor : Qt::SizeAllCursor;
        if (cursor().shape() != shape)
            setCursor(shape);
    }
    kxAnimAbstractClipItem::hoverMoveEvent(event);
}

kxClipGeometry::Handle kxAnimClipItem::handleAt(const QPointF& scenePlace) const
{
    // A bar that can't be moved gets no release either, so that a handle would stay pressed.
    return flags().testFlag(ItemIsMovable)
               ? kxClipGeometry::handleAt(mapFromScene(scenePlace), rect(), paintScale(), kxPlatform::getDpiScaleX())
               : kxClipGeometry::Handle::None;
}

void kxAnimClipItem::mousePressEvent(QGraphicsSceneMouseEvent* event)
{
    kxAnimAbstractClipItem::mousePressEvent(event);
    const kxClipGeometry::Handle handle = handleAt(event->scenePos());
    _leftPressed = handle == kxClipGeometry::Handle::Left;
    _rightPressed = handle == kxClipGeometry::Handle::Right;
    update();
}

void kxAnimClipItem::mouseReleaseEvent(QGraphicsSceneMouseEvent* event)
{
    releaseHandles();
    kxAnimAbstractClipItem::mouseReleaseEvent(event);
}

void kxAnimClipItem::endDrag()
{
    releaseHandles();
    kxAnimAbstractClipItem::endDrag();
}

void kxAnimClipItem::releaseHandles()
{
    _leftPressed = _rightPressed = false;
    update();
}

// Bar and node

QVariant kxAnimClipItem::itemChange(GraphicsItemChange change, const QVariant& value)
{
    switch (change)
    {
    case ItemPositionChange:
        return acceptedPosition(value.toPointF());
    case ItemTransformChange:
        return acceptedTransform(value.value<QTransform>());
    case ItemPositionHasChanged:
        updateTimeText();
        break;
    case ItemTransformHasChanged:
        updateAllTexts(false);
        if (_cyclesItem != nullptr)
            _cyclesItem->setCycles(_cyclesItem->cycles());
        break;
    default:
        return kxAnimAbstractClipItem::itemChange(change, value);
    }
    if (kxAnimClipScene* const clips = clipScene())
        Q_EMIT clips->itemChanged(this);
    return kxAnimAbstractClipItem::itemChange(change, value);
}

QPointF kxAnimClipItem::acceptedPosition(const QPointF& proposed)
{
    const QPointF old = pos();
    if (!canGoTo(proposed))
        return old;
    QPointF place = snapped(proposed, !_leftPressed && !_rightPressed);
    if (_rightPressed)
    {
        // The bar keeps its place and grows.
        if (place.x() != _pressPosition.x() && stretch(place.x() - _pressPosition.x()))
            _pressPosition = place;
        return old;
    }
    if (_leftPressed)
    {
        if (place.x() != _pressPosition.x())
        {
            if (!stretch(_pressPosition.x() - place.x()))
                return old;
            _pressPosition = place;
        }
        place.setY(old.y());
    }
    return takeNodeTo(place);
}

bool kxAnimClipItem::stretch(double frames)
{
    const float width = float(sceneBoundingRect().width());
    const float factor = (float(frames) + width) / width;
    if (!std::isnormal(factor) || factor < 0)
        return false;
    const QTransform before = transform();
    setTransform(QTransform().scale(double(factor), 1), true);
    return transform() != before;
}

QTransform kxAnimClipItem::acceptedTransform(const QTransform& proposed)
{
    const double from = rect().width() * transform().m11(), to = rect().width() * proposed.m11();
    const osg::AnimNodePtr own = node();
    const bool accepted = own == osg::NullFC ? kxClipGeometry::stretchFactor(from, to, from) > 0
                                             : kxClipNodes::stretch(own, from, to, mapToScene(rect().topLeft()).x());
    return accepted ? proposed : transform();
}
