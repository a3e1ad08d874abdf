#include <clipmaker/kxAnimAbstractClipItem.h>

#include <clipmaker/edits/kxClipNodes.h>
#include <clipmaker/kxAnimClipLabel.h>
#include <clipmaker/kxAnimClipScene.h>
#include <clipmaker/kxClipColor.h>
#include <clipmaker/kxClipIcons.h>
#include <clipmaker/kxClipInfo.h>

#include <kxPlatform.h>
#include <kxScenegraph.h>
#include <osg/AnimCores.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Finite.h>

#include <QEasingCurve>
#include <QGraphicsItemAnimation>
#include <QGraphicsSceneContextMenuEvent>
#include <QGraphicsView>
#include <QMenu>
#include <QPen>
#include <QTimeLine>

namespace
{
constexpr int ReturnMilliseconds = 500;
// z values
constexpr double BarDepth = -10;
constexpr double DraggedDepth = -9; // what is dragged isn't hidden by what it is dragged over

// Places of the labels, in pixels times dpi.
constexpr double TextLeft = 12;
constexpr double TextTop = 2;
constexpr double LineHeight = 15;
constexpr double LockRight = 30;

quint64 selections = 0; // of bars, since the start
} // namespace

kxAnimAbstractClipItem::kxAnimAbstractClipItem(osg::AnimNodePtr node, QGraphicsItem* parent)
    : QGraphicsRectItem(parent), _color(kxClipColor::Bar)
{
    if (node != osg::NullFC)
        takeOver(node);
}

kxAnimAbstractClipItem::~kxAnimAbstractClipItem()
{
    delete _menu;
    delete _returnAnimation; // before the time line that steps it
    delete _returnTimeLine;
    delete _nameText;
    delete _timeText;
    delete _infoText;
    delete _lockIcon;
}

void kxAnimAbstractClipItem::takeOver(const osg::AnimNodePtr& node)
{
    _nodeId = node->getId();
    const float dpi = kxPlatform::getDpiScaleX();
    const kxClipGeometry::Span span = kxClipNodes::spanOf(node);
    setRect(0, 0, span.width, double(kxClipGeometry::barHeight(dpi)));
    setPos(span.x, double(dpi * node->getOffset().y()));
    setActive(node->isActive());
    setLocked(node->getLocked());
    setFlipped(node->getFlipped());
    setMotionBlur(node->getMotionBlur());
    makeLabels();
    setBrush(_color);
    setAcceptHoverEvents(true);
    setZValue(BarDepth);
    setFlag(ItemSendsGeometryChanges);
}

void kxAnimAbstractClipItem::makeLabels()
{
    // Each is placed as soon as it is made; a class that places them otherwise does so in its own constructor.
    _nameText = new kxAnimClipLabel(this);
    kxAnimAbstractClipItem::updateNameText(true);
    _timeText = new kxAnimClipLabel(this);
    kxAnimAbstractClipItem::updateTimeText();
    _infoText = new kxAnimClipLabel(this);
    kxAnimAbstractClipItem::updateInfoText(true);
    _lockIcon = new QGraphicsPixmapItem(kxClipIcons::get("scenegraph/lockTrackOff.svg"), this);
    _lockIcon->setFlag(ItemIgnoresTransformations);
    kxAnimAbstractClipItem::updateLockIcon(true);
}

kxAnimAbstractClipItem* kxAnimAbstractClipItem::fromItem(QGraphicsItem* item)
{
    return item != nullptr && item->type() == Type ? static_cast<kxAnimAbstractClipItem*>(item) : nullptr;
}

osg::AnimNodePtr kxAnimAbstractClipItem::node() const
{
    return osg::living<osg::AnimNode>(_nodeId);
}

void kxAnimAbstractClipItem::invalidateNode()
{
    _nodeId = 0;
    _active = true;
}

kxAnimClipScene* kxAnimAbstractClipItem::clipScene() const
{
    return qobject_cast<kxAnimClipScene*>(scene());
}

double kxAnimAbstractClipItem::viewScale() const
{
    return kxAnimClipScene::viewScale(scene());
}

double kxAnimAbstractClipItem::paintScale() const
{
    return scene() == nullptr || scene()->views().isEmpty() ? 1.0 : viewScale() * transform().m11();
}

bool kxAnimAbstractClipItem::isReturning() const
{
    return _returnTimeLine != nullptr && _returnTimeLine->state() == QTimeLine::Running;
}

QVariant kxAnimAbstractClipItem::itemChange(GraphicsItemChange change, const QVariant& value)
{
    if (change == ItemSelectedChange && value.toBool()) // the scene announces a selection before it has changed
        _selectionNumber = ++selections;
    return QGraphicsRectItem::itemChange(change, value);
}

void kxAnimAbstractClipItem::selectAs(quint64 selectionNumber)
{
    setSelected(true);
    _selectionNumber = selectionNumber;
}

// Looks

void kxAnimAbstractClipItem::setColor(const QColor& color)
{
    _color = color;
    update();
}

QColor kxAnimAbstractClipItem::fillColor(bool selected) const
{
    if (selected)
        return kxClipColor::Selected;
    return _active ? _color : kxClipColor::Inactive;
}

void kxAnimAbstractClipItem::setTextColor(const QColor& color)
{
    for (kxAnimClipLabel* text : {_nameText, _timeText, _infoText})
        if (text != nullptr)
            text->setBrush(color);
}

void kxAnimAbstractClipItem::updateAllTexts(bool refresh)
{
    updateNameText(refresh);
    updateTimeText();
    updateInfoText(refresh);
    updateLockIcon(refresh);
}

void kxAnimAbstractClipItem::setTextsVisible(bool visible)
{
    for (QGraphicsItem* label : {static_cast<QGraphicsItem*>(_nameText), static_cast<QGraphicsItem*>(_timeText),
                                 static_cast<QGraphicsItem*>(_infoText), static_cast<QGraphicsItem*>(_lockIcon)})
        if (label != nullptr)
            label->setVisible(visible);
}

void kxAnimAbstractClipItem::updateMenu() {}

void kxAnimAbstractClipItem::placeText(kxAnimClipLabel* text, int line)
{
    const double dpi = double(kxPlatform::getDpiScaleX());
    const double itemScale = transform().m11(), view = viewScale();
    text->setPos(TextLeft * dpi / itemScale / view, (TextTop + LineHeight * line) * dpi);
    const float offset = float(TextLeft * dpi / view);
    text->setVisible(kxClipGeometry::labelFits(text->boundingRect().width(), view, offset, rect().width() * itemScale));
}

void kxAnimAbstractClipItem::updateNameText(bool refresh)
{
    if (_nameText == nullptr)
        return;
    const osg::AnimNodePtr own = refresh ? node() : osg::AnimNodePtr();
    if (own != osg::NullFC)
    {
        const QString name = QString::fromStdString(kxNodeUtils::getName(own));
        _nameText->setLine(name);
        setToolTip(name); // a narrow bar shows no label
    }
    placeText(_nameText, 0);
}

void kxAnimAbstractClipItem::updateTimeText()
{
    if (_timeText == nullptr)
        return;
    _timeText->setLine(kxClipGeometry::timeText(x(), rect().width() * transform().m11()));
    placeText(_timeText, 1);
}

void kxAnimAbstractClipItem::updateInfoText(bool refresh)
{
    if (_infoText == nullptr)
        return;
    if (refresh)
    {
        const osg::AnimNodePtr own = node();
        _infoText->setLine(own == osg::NullFC ? QString() : infoOf(*own));
    }
    placeText(_infoText, 2);
}

QString kxAnimAbstractClipItem::infoOf(const osg::AnimNode& node) const
{
    QStringList words;
    if (node.getFlipped())
        words.append(tr("Flipped"));
    if (node.getPostCycles() >= 1)
        words.append(tr("Cycles (") + QString::number(node.getPostCycles()) + QLatin1Char(')'));
    if (node.getMotionBlur())
        words.append(tr("MotionBlur"));
    return words.join(QStringLiteral(" - "));
}

void kxAnimAbstractClipItem::updateLockIcon(bool refresh)
{
    if (_lockIcon == nullptr)
        return;
    const double dpi = double(kxPlatform::getDpiScaleX());
    _lockIcon->setPos(rect().width() - LockRight * dpi / transform().m11() / viewScale(), TextTop * dpi);
    const osg::AnimNodePtr own = refresh ? node() : osg::AnimNodePtr();
    if (own != osg::NullFC)
        _lockIcon->setVisible(own->getLocked());
}

// State

void kxAnimAbstractClipItem::syncFromNode()
{
    const osg::AnimNodePtr own = node();
    if (own == osg::NullFC)
        return;
    setActive(own->isActive());
    setLocked(own->getLocked());
    setFlipped(own->getFlipped());
}

bool kxAnimAbstractClipItem::showsStateOf(const osg::AnimNode& node) const
{
    return _active == node.isActive() && _locked == node.getLocked() && _flipped == node.getFlipped() &&
           _motionBlur == node.getMotionBlur() && _nameText != nullptr &&
           _nameText->text() == QString::fromStdString(kxNodeUtils::getName(this->node()));
}

void kxAnimAbstractClipItem::setActive(bool value)
{
    const osg::AnimNodePtr own = node();
    if (own == osg::NullFC)
        return;
    kxClipNodes::setActive(own, value);
    _active = value;
    update();
    Q_EMIT activeChanged(value);
}

void kxAnimAbstractClipItem::setLocked(bool value)
{
    if (const osg::AnimNodePtr own = node())
    {
        kxClipNodes::setLocked(own, value);
        const bool free = !own->getLocked();
        if (!free)
            unsetCursor(); // the mouse may be over the bar
        if (_returnTimeLine != nullptr)
            _savedMovable = _savedSelectable = free; // in force once the bar is made
        else
        {
            setFlag(ItemIsMovable, free);
            setFlag(ItemIsSelectable, free);
        }
    }
    _locked = value;
    updateLockIcon(true);
    Q_EMIT lockChanged(value);
}

void kxAnimAbstractClipItem::setFlipped(bool value)
{
    const osg::AnimNodePtr own = node();
    if (own == osg::NullFC)
        return;
    kxClipNodes::setFlipped(own, value);
    _flipped = value;
    updateInfoText(true);
    Q_EMIT flipChanged(value);
}

void kxAnimAbstractClipItem::setMotionBlur(bool value)
{
    if (const osg::AnimNodePtr own = node())
        kxClipNodes::setMotionBlur(own, value);
    _motionBlur = value;
    updateInfoText(true);
    Q_EMIT motionBlurChanged(value);
}

void kxAnimAbstractClipItem::setActiveSelected(bool value)
{
    kxAnimClipScene* const clips = clipScene();
    if (clips != nullptr && !clips->activeSelectedItems(value))
        setActive(value);
}

void kxAnimAbstractClipItem::setLockedSelected(bool value)
{
    kxAnimClipScene* const clips = clipScene();
    if (clips != nullptr && !clips->lockSelectedItems(value))
        setLocked(value);
}

void kxAnimAbstractClipItem::setFlippedSelected(bool value)
{
    kxAnimClipScene* const clips = clipScene();
    if (clips != nullptr && !clips->flipSelectedItems(value))
        setFlipped(value);
}

void kxAnimAbstractClipItem::setMotionBlurSelected(bool value)
{
    kxAnimClipScene* const clips = clipScene();
    if (clips != nullptr && !clips->motionBlurSelectedItems(value))
        setMotionBlur(value);
}

// Edits

void kxAnimAbstractClipItem::remove()
{
    if (kxAnimClipScene* const clips = clipScene())
        clips->deleteSelectedItems();
}

void kxAnimAbstractClipItem::duplicate()
{
    duplicateNode(false);
}

void kxAnimAbstractClipItem::duplicateFlipped()
{
    duplicateNode(true);
}

void kxAnimAbstractClipItem::duplicateSelected()
{
    kxAnimClipScene* const clips = clipScene();
    if (clips != nullptr && !clips->duplicateSelectedItems(false))
        duplicate();
}

void kxAnimAbstractClipItem::duplicateFlippedSelected()
{
    kxAnimClipScene* const clips = clipScene();
    if (clips != nullptr && !clips->duplicateSelectedItems(true))
        duplicateFlipped();
}

void kxAnimAbstractClipItem::duplicateNode(bool flip)
{
    const osg::AnimNodePtr own = node();
    const osg::AnimNodePtr clone = own == osg::NullFC ? own : kxClipNodes::duplicate(own, flip);
    if (clone != osg::NullFC)
        Q_EMIT duplicated(clone);
}

void kxAnimAbstractClipItem::info()
{
    const osg::AnimNodePtr own = node();
    if (own != osg::NullFC)
        kxClipInfo::show(own); // the bar may be gone when it returns
}

bool kxAnimAbstractClipItem::canGoTo(const QPointF& position) const
{
    return clipScene() != nullptr && osg::isFinite(position.x(), position.y());
}

QPointF kxAnimAbstractClipItem::takeNodeTo(const QPointF& position)
{
    const osg::AnimNodePtr own = node();
    const QPointF old = pos();
    return position == old || own == osg::NullFC || kxClipNodes::move(own, old, position) ? position : old;
}

QPointF kxAnimAbstractClipItem::snapped(const QPointF& position, bool tracks) const
{
    QPointF place = position;
    const kxAnimClipScene* const clips = clipScene();
    if (isReturning() || clips == nullptr)
        return place;
    if (clips->snapToGridX())
        place.setX(kxClipGeometry::snappedFrame(place.x()));
    if (tracks)
        place.setY(kxClipGeometry::snappedTrack(place.y(), kxPlatform::getDpiScaleX()));
    return place;
}

// Mouse and menu

QVector<kxAnimAbstractClipItem*> kxAnimAbstractClipItem::selectedBars() const
{
    const kxAnimClipScene* const clips = clipScene();
    return clips == nullptr ? QVector<kxAnimAbstractClipItem*>() : clips->selectedBars();
}

void kxAnimAbstractClipItem::mousePressEvent(QGraphicsSceneMouseEvent* event)
{
    _pressPosition = pos();
    QGraphicsRectItem::mousePressEvent(event);
    for (kxAnimAbstractClipItem* bar : selectedBars())
    {
        bar->_dragStart = bar->pos();
        bar->_dragStretch = bar->transform().m11();
        bar->_savedSelected = false;
        bar->setZValue(DraggedDepth);
    }
}

void kxAnimAbstractClipItem::mouseMoveEvent(QGraphicsSceneMouseEvent* event)
{
    QGraphicsRectItem::mouseMoveEvent(event);
    if (kxAnimClipScene* const clips = clipScene())
        clips->checkCollisions(clips->selectedItems());
}

void kxAnimAbstractClipItem::mouseReleaseEvent(QGraphicsSceneMouseEvent* event)
{
    kxAnimClipScene* const clips = clipScene();
    if (clips != nullptr && clips->resolveCollisions(clips->selectedItems()))
        for (kxAnimAbstractClipItem* bar : selectedBars())
            bar->slideBack();
    QGraphicsRectItem::mouseReleaseEvent(event);
}

bool kxAnimAbstractClipItem::sceneEvent(QEvent* event)
{
    if (event->type() == QEvent::UngrabMouse)
        endDrag();
    return QGraphicsRectItem::sceneEvent(event);
}

void kxAnimAbstractClipItem::endDrag()
{
    // Qt keeps where all bars were at the start of a drag until an item gets a release.
    QGraphicsSceneMouseEvent release(QEvent::GraphicsSceneMouseRelease);
    QGraphicsRectItem::mouseReleaseEvent(&release);
    kxAnimClipScene* const clips = clipScene();
    if (clips == nullptr)
        return;
    clips->resolveCollisions({});
    for (kxAnimAbstractClipItem* bar : clips->bars())
        if (!bar->isReturning())
            bar->setZValue(BarDepth);
}

void kxAnimAbstractClipItem::mouseDoubleClickEvent(QGraphicsSceneMouseEvent* event)
{
    const osg::AnimNodePtr own = node();
    kxAnimClipScene* const clips = clipScene();
    if (clips != nullptr && own != osg::NullFC && osg::AnimWizClipPtr::dcast(own->getCore()) != osg::NullFC)
        Q_EMIT clips->wizardClipOpened(own);
    QGraphicsRectItem::mouseDoubleClickEvent(event);
}

void kxAnimAbstractClipItem::slideBack()
{
    // A bar that was only clicked has no way to go, and stays selected.
    const double stretch = transform().m11();
    if (_returnTimeLine != nullptr || _returnAnimation != nullptr || (pos() == _dragStart && stretch == _dragStretch))
        return;
    _savedSelected = isSelected();
    _savedMovable = flags().testFlag(ItemIsMovable);
    _savedSelectable = flags().testFlag(ItemIsSelectable);
    setFlag(ItemIsMovable, false);
    setFlag(ItemIsSelectable, false);
    _returnTimeLine = new QTimeLine(ReturnMilliseconds);
    _returnTimeLine->setEasingCurve(QEasingCurve::InOutQuad);
    connect(_returnTimeLine, SIGNAL(finished()), this, SLOT(finishedAnimation()));
    _returnAnimation = new QGraphicsItemAnimation;
    _returnAnimation->setItem(this);
    _returnAnimation->setTimeLine(_returnTimeLine);
    _returnAnimation->setPosAt(0.0, pos());
    _returnAnimation->setPosAt(1.0, _dragStart);
    // An end that was dragged goes back as well.
    if (stretch != _dragStretch)
        connect(_returnTimeLine, &QTimeLine::valueChanged, this,
                [this, stretch](double step) { stretchTo(stretch + (_dragStretch - stretch) * step); });
    _returnTimeLine->start();
}

void kxAnimAbstractClipItem::stretchTo(double stretch)
{
    setTransform(QTransform::fromScale(stretch, 1));
}

void kxAnimAbstractClipItem::endReturn()
{
    if (_returnAnimation == nullptr)
        return;
    _returnAnimation->setStep(1.0);
    stretchTo(_dragStretch);
    _returnTimeLine->stop();
    finishedAnimation();
}

void kxAnimAbstractClipItem::finishedAnimation()
{
    setFlag(ItemIsMovable, _savedMovable);
    setFlag(ItemIsSelectable, _savedSelectable);
    setZValue(BarDepth);
    delete _returnAnimation;
    _returnAnimation = nullptr;
    if (_returnTimeLine != nullptr)
        _returnTimeLine->deleteLater(); // it is what calls
    _returnTimeLine = nullptr;
    // A bar that can't be selected leaves the selection. It comes back unless the user has selected something else.
    const QVector<kxAnimAbstractClipItem*> selected = selectedBars();
    if (_savedSelected && std::all_of(selected.begin(), selected.end(),
                                      [](const kxAnimAbstractClipItem* bar) { return bar->_savedSelected; }))
        selectAs(_selectionNumber);
}

void kxAnimAbstractClipItem::hoverEnterEvent(QGraphicsSceneHoverEvent* event)
{
    if (!_locked)
        setCursor(Qt::SizeAllCursor);
    QGraphicsRectItem::hoverEnterEvent(event);
}

void kxAnimAbstractClipItem::hoverLeaveEvent(QGraphicsSceneHoverEvent* event)
{
    if (!_locked)
        unsetCursor();
    QGraphicsRectItem::hoverLeaveEvent(event);
}

void kxAnimAbstractClipItem::contextMenuEvent(QGraphicsSceneContextMenuEvent* event)
{
    if (!isSelected())
    {
        if (scene() != nullptr)
            scene()->clearSelection();
        setSelected(true);
    }
    updateMenu();
    if (_menu != nullptr)
        _menu->exec(event->screenPos()); // the bar may be gone when it returns
}

QAction* kxAnimAbstractClipItem::addMenuEntry(const QString& text, const char* signal, const char* slot, bool checkable)
{
    if (_menu == nullptr)
    {
        _menu = new QMenu;
        _menu->setTearOffEnabled(true);
    }
    QAction* const action = _menu->addAction(text);
    action->setCheckable(checkable);
    connect(action, signal, this, slot);
    return action;
}

void kxAnimAbstractClipItem::addMenuSeparator()
{
    if (_menu != nullptr)
        _menu->addSeparator();
}
