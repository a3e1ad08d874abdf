#include <clipmaker/kxAnimClipView.h>

#include <clipmaker/edits/kxClipGeometry.h>
#include <clipmaker/kxAnimAbstractClipItem.h>
#include <clipmaker/kxAnimClipScene.h>
#include <clipmaker/kxClipColor.h>
#include <clipmaker/kxClipLayout.h>
#include <frame/kxPaneHint.h>

#include <kxAnimManager.h>
#include <kxPlatform.h>

#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace
{
constexpr double WheelZoom = 1.15;
constexpr double DragZoom = 1.05;
constexpr int EmptyClipFrames = 25; // at least, of a clip that has no length of its own

enum class Command
{
    None,
    Frame,
    Copy,
    Paste,
    Delete,
    SelectAll,
    Duplicate
};

Command commandOf(const QKeyEvent* event)
{
    const bool control = (event->modifiers() & ~Qt::KeypadModifier) == Qt::ControlModifier;
    const bool isOthers = event->modifiers() & (Qt::AltModifier | Qt::MetaModifier); // menus open by these
    switch (event->key())
    {
    case Qt::Key_F:
        return isOthers ? Command::None : Command::Frame;
    case Qt::Key_Delete:
        return isOthers ? Command::None : Command::Delete;
    case Qt::Key_C:
        return control ? Command::Copy : Command::None;
    case Qt::Key_V:
        return control ? Command::Paste : Command::None;
    case Qt::Key_A:
        return control ? Command::SelectAll : Command::None;
    case Qt::Key_D:
        return control ? Command::Duplicate : Command::None;
    default:
        return Command::None;
    }
}

bool isPan(const QMouseEvent* event)
{
    return event->buttons() == Qt::MiddleButton ||
           (event->buttons() == Qt::LeftButton && event->modifiers() == Qt::ControlModifier);
}
} // namespace

kxAnimClipView::kxAnimClipView(QWidget* parent) : QGraphicsView(parent)
{
    setDragMode(RubberBandDrag);
    setViewportUpdateMode(FullViewportUpdate);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    setFrameShape(NoFrame);
    _scene = new kxAnimClipScene(this);
    setScene(_scene);
    connect(_scene, &kxAnimClipScene::dropEventOccured, this, [this] { _awaitsBars = false; });
    const double dpi = double(kxPlatform::getDpiScaleX());
    setSceneRect(-kxClipGeometry::TimelineFrames / 2, -kxClipLayout::StripHeight * dpi, kxClipGeometry::TimelineFrames,
                 10000);
    translate(0, kxClipLayout::StripHeight * dpi);
    centerOn(0, sceneRect().top()); // the first track is below the ruler, whatever height the view gets
}

kxAnimClipView::~kxAnimClipView() = default;

// Zoom

void kxAnimClipView::zoomAbout(const QPoint& at, double factor)
{
    // As long as one point is zoomed about, roundings to whole pixels don't add up.
    if (std::abs(viewportTransform().map(QPointF(_keptX, 0)).x() - at.x()) > 1)
        _keptX = mapToScene(at).x();
    scale(kxClipLayout::boundedZoom(transform().m11(), factor), 1);
    _scene->updateAllTexts();
    const double off = viewportTransform().map(QPointF(_keptX, 0)).x() - at.x();
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() + qRound(off));
}

void kxAnimClipView::pan(const QPoint& to)
{
    const QPoint by = _panPosition - to;
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() + by.x());
    verticalScrollBar()->setValue(verticalScrollBar()->value() + by.y());
    _panPosition = to;
}

void kxAnimClipView::frame()
{
    const osg::AnimNodePtr clip = _scene->clip();
    if (clip == osg::NullFC)
        return;
    _scene->hideTimeItem();
    const QRectF bars = _scene->itemsBoundingRect();
    _scene->showTimeItem();
    setSceneRect(sceneRect() | bars);

    osg::BoxVolume volume;
    clip->getWorldVolume(volume);
    osg::Pnt3f start, end;
    volume.getBounds(start, end);
    const kxAnimManager& kernel = *kxAnimManager::the();
    const bool isEmpty = _scene->bars().isEmpty();
    const double last = isEmpty ? std::max(kernel.detailedRangeEnd(), EmptyClipFrames) : double(end.x()) * kernel.fps();
    const double first = isEmpty ? -last / 25 : double(start.x()) * kernel.fps(); // the column leaves frame 0 free
    const QRectF part = kxClipLayout::framed(first, last - first, bars.y(), bars.height(), viewport()->width(),
                                             kxPlatform::getDpiScaleX());
    if (part.width() > 0)
        fitInView(QRectF(part.x(), part.y(), part.width(), std::max(1.0, part.height())), Qt::IgnoreAspectRatio);
    else
        centerOn(part.topLeft()); // a point in time has no width to zoom to
    scale(kxClipLayout::boundedZoom(transform().m11(), 1), 1 / transform().m22());
    // Of more tracks than there is room for, the first ones are seen, and not those in the middle.
    const double strip = kxClipLayout::StripHeight * double(kxPlatform::getDpiScaleX());
    const double hidden = strip - viewportTransform().map(QPointF(0, std::max(0.0, bars.top()))).y();
    if (hidden > 0)
        verticalScrollBar()->setValue(verticalScrollBar()->value() - qRound(hidden));
    _scene->updateAllTexts();
}

void kxAnimClipView::frameNewClip()
{
    _isClipNew = true;
    viewport()->update();
}

void kxAnimClipView::frameUnseenClip()
{
    _isClipNew = false;
    const osg::AnimNodePtr clip = _scene->clip();
    const QVector<kxAnimAbstractClipItem*>& bars = _scene->bars();
    _awaitsBars = clip != osg::NullFC && bars.isEmpty();
    if (clip == osg::NullFC)
        return;
    const QRectF seen = visibleRect();
    if (bars.isEmpty())
    {
        if (seen.left() > 0 || seen.right() < 0)
            frame(); // else nothing of it would be where the first bar is put
        return;
    }
    const bool isSeen =
        std::any_of(bars.begin(), bars.end(),
                    [&seen](const kxAnimAbstractClipItem* bar) { return seen.intersects(bar->sceneBoundingRect()); });
    if (!_framed.contains(clip->getId()) || !isSeen)
        frame();
    _framed.insert(clip->getId());
    _scene->bringIntoSight(_scene->selectedBars());
}

// Mouse

void kxAnimClipView::mousePressEvent(QMouseEvent* event)
{
    _awaitsBars = false;
    _lastY = event->y();
    _panPosition = _zoomAnchor = event->pos();
    if (event->button() != Qt::LeftButton || event->modifiers().testFlag(Qt::ControlModifier))
        return;
    _isPressed = true;
    QGraphicsView::mousePressEvent(event);
}

void kxAnimClipView::mouseReleaseEvent(QMouseEvent* event)
{
    // A double click reaches the scene with any button.
    const bool isAwaited = _isPressed ? event->button() == Qt::LeftButton : _scene->mouseGrabberItem() != nullptr;
    if (!isAwaited)
        return;
    _isPressed = false;
    QGraphicsView::mouseReleaseEvent(event);
}

void kxAnimClipView::mouseMoveEvent(QMouseEvent* event)
{
    if (isPan(event))
        pan(event->pos());
    else if (event->buttons() == Qt::RightButton)
    {
        zoomAbout(_zoomAnchor, event->y() > _lastY ? DragZoom : 1 / DragZoom);
        _lastY = event->y();
    }
    else
        QGraphicsView::mouseMoveEvent(event);
}

void kxAnimClipView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (_scene->selectedItems().isEmpty() && event->buttons() == Qt::LeftButton)
        frame();
    else if (_scene->selectedItems().isEmpty() && event->buttons() == Qt::RightButton)
        centerOn(mapToScene(event->pos()).x(), visibleRect().top());
    _isPressed = _isPressed || event->button() == Qt::LeftButton;
    QGraphicsView::mouseDoubleClickEvent(event);
}

void kxAnimClipView::wheelEvent(QWheelEvent* event)
{
    _awaitsBars = false;
    // With some modifiers the turn comes on the other axis; the events around a gesture turn nothing.
    const QPoint turned = event->angleDelta();
    const int delta = turned.y() != 0 ? turned.y() : turned.x();
    if (event->buttons() == Qt::NoButton && delta != 0)
        zoomAbout(event->position().toPoint(), delta >= 1 ? WheelZoom : 1 / WheelZoom);
}

void kxAnimClipView::leaveEvent(QEvent* event)
{
    _scene->clearHover();
    QGraphicsView::leaveEvent(event);
}

// Keys

bool kxAnimClipView::event(QEvent* event)
{
    // With the focus here these keys are the timeline's, whatever the application's menus have on them.
    if (event->type() == QEvent::ShortcutOverride && commandOf(static_cast<QKeyEvent*>(event)) != Command::None)
    {
        event->accept();
        return true;
    }
    return QGraphicsView::event(event);
}

void kxAnimClipView::keyPressEvent(QKeyEvent* event)
{
    switch (commandOf(event))
    {
    case Command::None:
        break;
    case Command::Frame:
        frame();
        break;
    case Command::Copy:
        _scene->copySelectedItems();
        break;
    case Command::Paste:
        _scene->paste();
        break;
    case Command::Delete:
        _scene->deleteSelectedItems();
        Q_EMIT itemsDeleted();
        break;
    case Command::SelectAll:
        _scene->selectAll();
        break;
    case Command::Duplicate:
        _scene->duplicateSelectedItems(false);
        break;
    }
    QGraphicsView::keyPressEvent(event);
}

void kxAnimClipView::keyReleaseEvent(QKeyEvent* event)
{
    QGraphicsView::keyReleaseEvent(event);
}

void kxAnimClipView::focusInEvent(QFocusEvent* event)
{
    Q_EMIT gotFocus(this);
    QGraphicsView::focusInEvent(event);
}

void kxAnimClipView::resizeEvent(QResizeEvent* event)
{
    QGraphicsView::resizeEvent(event);
}

// Drawing

void kxAnimClipView::paintEvent(QPaintEvent* event)
{
    if (_isClipNew || (_awaitsBars && !_scene->bars().isEmpty()))
        frameUnseenClip();
    QGraphicsView::paintEvent(event);
}

QRectF kxAnimClipView::visibleRect() const
{
    return mapToScene(viewport()->rect()).boundingRect();
}

void kxAnimClipView::drawBackground(QPainter* painter, const QRectF&)
{
    QGraphicsView::drawBackground(painter, visibleRect());
}

void kxAnimClipView::drawForeground(QPainter* painter, const QRectF&)
{
    // Ruler and track column are at the viewport's edges, also where only a part of it is drawn anew.
    QGraphicsView::drawForeground(painter, visibleRect());
    if (_scene->bars().isEmpty())
        drawHint(painter);
}

void kxAnimClipView::drawHint(QPainter* painter)
{
    const bool hasClip = _scene->clip() != osg::NullFC;
    const QString title = hasClip ? tr("The clip is empty") : tr("No clip to show");
    const QString text = hasClip ? tr("Drag an animation block from the curve editor's library onto a track.")
                                 : tr("Select a clip in the tree, or create one.");
    const int column = int(kxClipLayout::ColumnWidth) * int(kxPlatform::getDpiScaleX());
    painter->save();
    painter->resetTransform();
    painter->setFont(font());
    kxPaneHint::paint(*painter, viewport()->rect().adjusted(column, 0, 0, 0),
                      {kxClipColor::HintTitle, kxClipColor::Hint, kxClipColor::Background}, title, text);
    painter->restore();
}
