#include <curveeditor/kxAnimGraphView.h>

#include <curveeditor/edits/kxAnimRemoval.h>
#include <curveeditor/edits/kxKeyEdits.h>
#include <curveeditor/kxAnimGraphColors.h>
#include <curveeditor/kxAnimGraphCurve.h>
#include <curveeditor/kxAnimGraphLayout.h>
#include <curveeditor/kxAnimGraphPoint.h>
#include <curveeditor/kxAnimGraphScene.h>
#include <curveeditor/kxGraphKeySelection.h>
#include <curveeditor/kxGraphSelectionOverlay.h>
#include <frame/kxPaneHint.h>

#include <kxMessageNames.h>
#include <kxUndo.h>
#include <osg/AnimCores.h>
#include <osg/FieldContainerFactory.h>

#include <QGraphicsRectItem>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <set>

namespace
{
kxAnimGraphView* theView = nullptr; // serves the host's callbacks

/// What can be reached by panning until something lies outside it.
const QRectF SceneRect(-100000, -1000000, 200000, 2000000);

/// Whether `inner`, which has an extent, is a small part of `outer` along an axis.
bool isLostIn(const QRectF& inner, const QRectF& outer)
{
    constexpr double Small = 0.5;
    return (inner.width() > 0 && inner.width() < Small * outer.width()) ||
           (inner.height() > 0 && inner.height() < Small * outer.height());
}

/// Pixels that QGraphicsView::fitInView() leaves free on each side.
constexpr int FitMargin = 2;

bool isShapeCache(const osg::AnimNodePtr& node)
{
    return osg::FCPtr<osg::TimeShapeCacheBase>::dcast(node->getCore()) != osg::NullFC;
}

std::vector<osg::AnimCurvePtr> curvesOf(const std::vector<osg::AnimNodePtr>& nodes)
{
    std::vector<osg::AnimCurvePtr> curves;
    for (const osg::AnimNodePtr& node : nodes)
        if (node != osg::NullFC && !isShapeCache(node))
            kxAnimManager::the()->getAnimCurves(node, curves, true, false, true);
    return curves;
}

/// The bar of an animation that has no curves, over its extent.
QGraphicsRectItem* newBar(const osg::AnimNodePtr& node)
{
    const double fps = kxAnimManager::the()->fps();
    osg::BoxVolume volume;
    node->getWorldVolume(volume);
    osg::Pnt3f start, end;
    volume.getBounds(start, end);
    auto* const bar = new QGraphicsRectItem(double(start.x()) * fps, -5, double(end.x() - start.x()) * fps, 10);
    bar->setBrush(kxAnimGraphColors::Bar);
    bar->setPen(Qt::NoPen);
    return bar;
}
} // namespace

kxAnimGraphView::kxAnimGraphView(QWidget* parent)
    : QGraphicsView(parent), _instance(theView, this), _scene(new kxAnimGraphScene(this)),
      _overlay(new kxGraphSelectionOverlay(this))
{
    setObjectName(QStringLiteral("_graph"));
    setAccessibleName(tr("Animation curves"));
    setFrameShape(QFrame::NoFrame);
    scale(1.0, -1.0);
    setViewportUpdateMode(FullViewportUpdate);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    setAttribute(Qt::WA_TranslucentBackground, false);
    setOptimizationFlag(DontSavePainterState, true);
    setScene(_scene);
    _scene->setSceneRect(SceneRect); // else the scene would measure all items again and again
    setSceneRect(SceneRect);
    centerOn(0, 0);
    connect(_scene, &QGraphicsScene::changed, this, qOverload<const QList<QRectF>&>(&kxAnimGraphView::sceneChanged));

    kxAnimManager::the()->setGetCurveEditorDataCB(
        [](std::vector<kxAnimManager::kxCurveData>& out)
        {
            if (theView != nullptr)
                theView->collectCurveData(out);
        });
    _callbacks.add(kxMessageName::ChangedFPS, changedFPS);
    _callbacks.add(kxMessageName::PasteKeys, pasteKeys);
    _callbacks.add(kxMessageName::UpdateGraphView, updateGraphView);
}

kxAnimGraphView::~kxAnimGraphView()
{
    kxAnimManager::the()->setGetCurveEditorDataCB({});
    disconnect(_scene, nullptr, this, nullptr);
}

// What is shown

std::vector<osg::AnimNodePtr> kxAnimGraphView::nodes() const
{
    std::vector<osg::AnimNodePtr> nodes;
    for (const unsigned int id : _nodeIds)
        if (const osg::AnimNodePtr node = osg::living<osg::AnimNode>(id);
            node != osg::NullFC && kxIsPlaced(node)) // one that was deleted lives on the undo stack
            nodes.push_back(node);
    return nodes;
}

void kxAnimGraphView::setAnimation(const osg::AnimNodePtr& node)
{
    if (node == osg::NullFC || node->getCore() == osg::NullFC)
        return;
    showAnimations({node}, false);
}

void kxAnimGraphView::setAnimations(const std::vector<osg::AnimNodePtr>& nodes)
{
    showAnimations(nodes, true);
}

void kxAnimGraphView::showAnimations(const std::vector<osg::AnimNodePtr>& nodes, bool report)
{
    _scene->clear();
    _nodeIds.clear();
    for (const osg::AnimNodePtr& node : nodes)
    {
        if (node == osg::NullFC)
            continue;
        _nodeIds.push_back(node.getFieldContainerId());
        if (isShapeCache(node))
            _scene->addItem(newBar(node));
    }
    std::set<unsigned int> seen; // a curve that several nodes share is drawn once
    for (const osg::AnimCurvePtr& curve : curvesOf(nodes))
    {
        if (!seen.insert(curve.getFieldContainerId()).second)
            continue;
        auto* const item = new kxAnimGraphCurve(curve, _scene);
        if (report)
            connect(item, &kxAnimGraphCurve::curveChanged, this, &kxAnimGraphView::changedCurve);
    }
    updatePointScale();
}

void kxAnimGraphView::refresh()
{
    const kxGraphKeySelection selected(*_scene);
    std::vector<unsigned int> ids = _nodeIds;
    {
        const kxAnimGraphScene::Rebuild once(_scene); // nobody's field goes for a moment, and the focus with it
        setAnimations(nodes());
        selected.restore(*_scene);
    }
    _nodeIds = std::move(ids); // what was deleted is shown again where that is undone
    Q_EMIT sceneChanged();
}

void kxAnimGraphView::followCurves()
{
    if (_scene->shows(curvesOf(nodes())))
        return;
    refresh();
    announceNodes();
}

void kxAnimGraphView::changedCurve()
{
    Q_EMIT sceneChanged();
}

void kxAnimGraphView::sceneChanged(const QList<QRectF>&)
{
    _sceneChanged = true;
}

void kxAnimGraphView::collectCurveData(std::vector<kxAnimManager::kxCurveData>& out) const
{
    std::set<unsigned int> seen;
    for (const osg::AnimNodePtr& node : nodes())
    {
        std::vector<kxAnimManager::kxCurveData> records;
        std::vector<osg::AnimNodePtr> curveNodes;
        kxAnimManager::the()->getAnimCurveData(node, records, curveNodes, true, true, false, false);
        for (const kxAnimManager::kxCurveData& record : records)
            if (seen.insert(record.curveId).second)
                out.push_back(record);
    }
}

void kxAnimGraphView::changedFPS(kxMessage&)
{
    if (theView == nullptr)
        return;
    {
        const kxGraphKeySelection selected(*theView->_scene);
        const kxAnimGraphScene::Rebuild rebuild(theView->_scene);
        for (kxAnimGraphCurve* const curve : theView->_scene->curves())
            curve->rebuildFromCurve();
        selected.restore(*theView->_scene);
    }
    theView->updatePointScale();
    Q_EMIT theView->sceneChanged();
}

void kxAnimGraphView::pasteKeys(kxMessage&)
{
    if (theView != nullptr)
        theView->paste();
}

void kxAnimGraphView::paste()
{
    _scene->pasteKeys();
    updatePointScale();
    announceNodes();
}

void kxAnimGraphView::updateGraphView(kxMessage&)
{
    if (theView != nullptr)
    {
        theView->refresh();
        theView->announceNodes();
    }
}

void kxAnimGraphView::setTangentType(unsigned int type)
{
    std::vector<kxKeyEdits::Key> keys;
    std::set<kxAnimGraphCurve*> items;
    QList<kxAnimGraphPoint*> selected;
    _scene->selectedPoints(selected);
    for (const kxAnimGraphPoint* const point : selected)
    {
        kxAnimGraphCurve* const item = point->curve();
        if (item == nullptr || point->index() < 0)
            continue;
        keys.push_back({item->curveId(), unsigned(point->index())});
        items.insert(item);
    }
    const kxScopedUndo scope(true); // the step is reported when the items show it
    kxKeyEdits::setType(keys, type);
    for (kxAnimGraphCurve* const item : items)
        item->updateFromCurve();
}

// Zoom

void kxAnimGraphView::updatePointScale()
{
    setUpdatesEnabled(false);
    kxAnimGraphPoint::setScale(1 / transform().m11(), 1 / transform().m22());
    setUpdatesEnabled(true);
}

void kxAnimGraphView::frameAll()
{
    QRectF extent = _scene->curvesBoundingRect();
    if (const QRectF keys = keysExtent(); isLostIn(keys, extent))
    {
        // Far out, the squares of the keys are larger than the curves: without this the view would stay there.
        fitInView(withExtent(keys), Qt::IgnoreAspectRatio);
        updatePointScale();
        extent = _scene->curvesBoundingRect();
    }
    _scene->setSceneRect(SceneRect.contains(extent) ? SceneRect : SceneRect | extent);
    setSceneRect(_scene->sceneRect());
    fitInView(withExtent(extent), Qt::IgnoreAspectRatio);
    updatePointScale();
}

QRectF kxAnimGraphView::keysExtent() const
{
    QPolygonF places;
    for (const kxAnimGraphCurve* const curve : _scene->curves())
        for (const kxAnimGraphPoint* const key : curve->points())
            places << key->pos() << key->inTangentScenePos() << key->outTangentScenePos();
    return places.boundingRect();
}

QRectF kxAnimGraphView::withExtent(const QRectF& rect) const
{
    if (rect.isNull())
        return rect;
    // Keys that all have one value, or one frame: what is left is the size of their squares, and to zoom to that makes
    // them larger still the next time. The axis keeps its zoom.
    const QRectF square = kxAnimGraphPoint::square().normalized();
    const QRectF seen =
        mapToScene(viewport()->rect().adjusted(FitMargin, FitMargin, -FitMargin, -FitMargin)).boundingRect();
    const bool isWide = rect.width() > 1.01 * square.width();
    const bool isHigh = rect.height() > 1.01 * square.height();
    const QSizeF size(isWide ? rect.width() : seen.width(), isHigh ? rect.height() : seen.height());
    return QRectF(rect.center() - QPointF(size.width(), size.height()) / 2, size);
}

bool kxAnimGraphView::zoomAbout(const QPoint& at, bool in, double factor)
{
    if (!in && kxAnimGraphLayout::isSmallest(transform().m11(), transform().m22()))
        return false;
    const QPointF kept = mapToScene(at);
    const kxAnimGraphLayout::Scale step = kxAnimGraphLayout::zoomStep(factor, in, _onlyX, _onlyY);
    scale(step.x, step.y);
    updatePointScale();
    // Not by centerOn(), which cuts fractions of pixels off: over the steps of a drag they add up.
    const QPointF off = viewportTransform().map(kept) - at;
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() + qRound(off.x()));
    verticalScrollBar()->setValue(verticalScrollBar()->value() + qRound(off.y()));
    return true;
}

// Mouse

void kxAnimGraphView::mousePressEvent(QMouseEvent* event)
{
    _lastY = event->y();
    _pressPosition = _lastPosition = event->pos();
    if (event->buttons() != Qt::LeftButton || event->modifiers() != Qt::NoModifier)
        return;
    QGraphicsView::mousePressEvent(event);
    _selectedAtPress = _scene->selectedCount();
}

void kxAnimGraphView::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() == Qt::NoButton && (_panning || _rubberBandActive))
        endGesture(); // the release went elsewhere
    if (event->buttons() == Qt::MiddleButton ||
        (event->buttons() == Qt::LeftButton && event->modifiers() == Qt::ControlModifier))
        pan(event->pos());
    else if (event->buttons() == Qt::RightButton)
        zoomByDrag(event->y());
    else if (event->buttons() == Qt::LeftButton && _selectedAtPress == 0 && !_scene->timeItemMoving())
        drawRubberBand(event->pos());
    else
        QGraphicsView::mouseMoveEvent(event);
}

void kxAnimGraphView::pan(const QPoint& to)
{
    if (!_panning)
    {
        _panning = true;
        _scene->setEventsBlocked(true);
        viewport()->setCursor(Qt::ClosedHandCursor);
    }
    const QPoint by = _lastPosition - to;
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() + by.x());
    verticalScrollBar()->setValue(verticalScrollBar()->value() + by.y());
    _lastPosition = to;
}

void kxAnimGraphView::zoomByDrag(int y)
{
    viewport()->setCursor(Qt::SizeVerCursor);
    zoomAbout(_pressPosition, y > _lastY, kxAnimGraphLayout::DragZoom);
    _lastY = y;
}

void kxAnimGraphView::drawRubberBand(const QPoint& to)
{
    if (!_rubberBandActive)
    {
        _rubberBandActive = true;
        _scene->setEventsBlocked(true);
        _overlay->setGeometry(QRect(viewport()->pos(), size())); // its coordinates are those of the viewport
        _overlay->setRectangle(QRect());
        _overlay->show();
    }
    _overlay->setRectangle(kxAnimGraphLayout::between(_pressPosition, to));
}

void kxAnimGraphView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
    {
        if (_rubberBandActive)
            _scene->selectPointsIn(QRectF(mapToScene(_pressPosition), mapToScene(event->pos())).normalized());
        QGraphicsView::mouseReleaseEvent(event);
    }
    endGesture();
    if (nodes().empty())
        return;
    announceNodes();
    if (_sceneChanged)
        kxSend(kxMessageName::UpdateClipScene);
    _sceneChanged = false;
}

void kxAnimGraphView::endGesture()
{
    _overlay->setRectangle(QRect());
    _overlay->hide();
    _rubberBandActive = false;
    _panning = false;
    _scene->setEventsBlocked(false);
    viewport()->unsetCursor();
}

void kxAnimGraphView::announceNodes() const
{
    kxMessage message;
    message.set("nodes", nodes(), true);
    kxController::call(kxMessageName::SelectedAnimations, message, 0);
}

void kxAnimGraphView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->buttons() == Qt::LeftButton)
        frameAll();
    else if (event->buttons() == Qt::RightButton)
        centerOn(mapToScene(event->pos()));
}

void kxAnimGraphView::wheelEvent(QWheelEvent* event)
{
    const int delta = event->angleDelta().y() != 0 ? event->angleDelta().y() : event->angleDelta().x();
    const bool isTurned = delta != 0 || event->phase() == Qt::NoScrollPhase; // touch pads say where a turn begins
    if (event->buttons() != Qt::NoButton || !isTurned)
        return;
    _scene->setEventsBlocked(true);
    zoomAbout(event->position().toPoint(), delta >= 1, kxAnimGraphLayout::WheelZoom);
    _scene->setEventsBlocked(false);
}

// Keys

namespace
{
enum class Command
{
    None,
    Frame,
    OnlyX,
    OnlyY,
    Copy,
    Paste,
    SelectAll,
    Delete
};

Command commandOf(const QKeyEvent* event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    if (modifiers == Qt::ControlModifier)
    {
        switch (event->key())
        {
        case Qt::Key_C:
            return Command::Copy;
        case Qt::Key_V:
            return Command::Paste;
        case Qt::Key_A:
            return Command::SelectAll;
        default:
            return Command::None;
        }
    }
    if (modifiers != Qt::NoModifier)
        return Command::None;
    switch (event->key())
    {
    case Qt::Key_F:
        return Command::Frame;
    case Qt::Key_X:
        return Command::OnlyX;
    case Qt::Key_Y:
        return Command::OnlyY;
    case Qt::Key_Delete:
        return Command::Delete;
    default:
        return Command::None;
    }
}
} // namespace

bool kxAnimGraphView::event(QEvent* event)
{
    // With the focus here these keys are the graph's, whatever the application's menus have on them.
    if (event->type() == QEvent::ShortcutOverride && commandOf(static_cast<QKeyEvent*>(event)) != Command::None)
    {
        event->accept();
        return true;
    }
    return QGraphicsView::event(event);
}

void kxAnimGraphView::keyPressEvent(QKeyEvent* event)
{
    switch (commandOf(event))
    {
    case Command::None:
        break;
    case Command::Frame:
        frameAll();
        break;
    case Command::OnlyX:
        holdAxes(true, false);
        break;
    case Command::OnlyY:
        holdAxes(false, true);
        break;
    case Command::Copy:
        _scene->copySelectedPoints();
        break;
    case Command::Paste:
        paste();
        break;
    case Command::SelectAll:
        _scene->selectAllPoints();
        break;
    case Command::Delete:
        _scene->deleteSelectedPoints();
        updatePointScale();
        Q_EMIT controlPointsDeleted();
        break;
    }
}

void kxAnimGraphView::keyReleaseEvent(QKeyEvent* event)
{
    if (!event->isAutoRepeat())
        holdAxes(false, false);
}

void kxAnimGraphView::holdAxes(bool onlyX, bool onlyY)
{
    _onlyX = onlyX;
    _onlyY = onlyY;
    _scene->setLockX(onlyY);
    _scene->setLockY(onlyX);
}

void kxAnimGraphView::focusOutEvent(QFocusEvent* event)
{
    holdAxes(false, false); // the release of the key will go elsewhere
    QGraphicsView::focusOutEvent(event);
}

void kxAnimGraphView::resizeEvent(QResizeEvent* event)
{
    QGraphicsView::resizeEvent(event);
}

// Drawing

void kxAnimGraphView::drawBackground(QPainter* painter, const QRectF&)
{
    // Labels are at the viewport's edges, also where only a part of it is drawn anew.
    QGraphicsView::drawBackground(painter, mapToScene(viewport()->rect()).boundingRect());
}

void kxAnimGraphView::drawForeground(QPainter* painter, const QRectF& rect)
{
    QGraphicsView::drawForeground(painter, rect);
    if (_scene->isEmpty())
        drawHint(painter);
}

void kxAnimGraphView::drawHint(QPainter* painter)
{
    namespace Color = kxAnimGraphColors;
    painter->save();
    painter->resetTransform();
    painter->setFont(font());
    kxPaneHint::paint(*painter, viewport()->rect(), {Color::HintTitle, Color::Hint, Color::Background},
                      tr("No curves to show"),
                      tr("Select an object and press Ctrl+K to key it, or select a block to see its curves."));
    painter->restore();
}
