#include "kxView3D.h"

#include "kxClipQuad.h"
#include "kxTransformEdit.h"
#include "kxViewActions.h"
#include "kxViewOverlay.h"

#include <animation/kxAnimEngine.h>
#include <journal/kxHistory.h>
#include <kernel/kxSelection.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxLog.h>
#include <kxScenegraph.h>
#include <kxUndo.h>
#include <osg/FieldContainerFactory.h>
#include <scene/CameraLight.h>
#include <scene/kxChosenCamera.h>
#include <scene/kxScene.h>

#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>
#include <QUndoStack>

#include <algorithm>

namespace
{
constexpr int WayTime = 260;       // milliseconds from one pose to another
constexpr int WayStep = 12;        // milliseconds
constexpr int MovingTime = 150;    // milliseconds after a change of the view or the last frame
constexpr int SharpAfter = 190;    // milliseconds without a quick frame
constexpr double ClickReach = 4;   // pixels that a click may move
constexpr double DollyPixels = 12; // pixels of a drag for one step
constexpr double SameMoment = 0.4; // seconds: frames further apart don't count for the rate
} // namespace

kxView3D::kxView3D(QWidget* parent)
    : QWidget(parent), _scene(std::make_unique<kxRenderScene>()), _way(new QTimer(this)), _sharpen(new QTimer(this))
{
    setObjectName(QStringLiteral("kxView3D"));
    setAccessibleName(tr("3D view"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setMinimumSize(160, 120);
    _surface = kxViewSurface::create(content(), this);
    _actions = new kxViewActions(this);
    _sharpen->setSingleShot(true);
    _sharpen->setInterval(SharpAfter);
    connect(_sharpen, &QTimer::timeout, this, [this] { redraw(false); });
    _way->setInterval(WayStep);
    connect(_way, &QTimer::timeout, this, &kxView3D::walk);
    const auto changed = [this] { redraw(false); };
    connect(kxScene::the(), &kxScene::appearanceChanged, this,
            [this]
            {
                if (!showsScene()) // else a forced frame has come before
                    redraw(false);
            });
    connect(kxScene::the(), &kxScene::structureChanged, this, changed);
    connect(kxScene::the(), &kxScene::structureChanged, this, &kxView3D::checkDrag);
    connect(kxUndoStack::get(0).stack(), &QUndoStack::indexChanged, this, &kxView3D::checkDrag);
    connect(&kxSelection::the(), &kxSelection::nodesChanged, this, changed);
    kxOSGWidget::setMGLW(this);
}

kxView3D::~kxView3D()
{
    if (kxOSGWidget::getMGLW(-1) == this)
        kxOSGWidget::setMGLW(nullptr);
    // It asks this view for its content until it is gone.
    delete _surface;
}

kxViewContent kxView3D::content()
{
    kxViewContent content;
    content.scene = _scene.get();
    content.frame = [this](const QSize& pixels) { return makeFrame(pixels); };
    content.overlay = [this](QPainter& painter) { paintOverlay(painter); };
    content.drawn = [this](kxFrameGovernor::Level level, double time) { noteDrawn(level, time); };
    content.level = [this] { return _governor.level(isMoving()); };
    return content;
}

kxFrame kxView3D::makeFrame(const QSize& pixels)
{
    _scene->setSelection(kxSelection::the().ids(kxSelection::Nodes));
    _scene->update();
    kxRenderOptions options = _options;
    if (_isClean)
        options.grid = options.outline = options.wire = false;
    kxFrame frame = kxFrame::make(*_scene, shownCamera(), pixels, options);
    frame.outlineWidth = 2.2f * float(devicePixelRatioF());
    return frame;
}

kxViewCamera kxView3D::viewCamera(float aspect)
{
    _scene->update();
    if (const osg::UInt32 id = cameraNodeId())
        return kxViewCamera::fromNode(osg::living<osg::Node>(id), aspect);
    return _rig.camera(aspect, _scene->bounds());
}

kxViewCamera kxView3D::shownCamera()
{
    const float aspect = float(width()) / float(std::max(1, height()));
    kxViewCamera camera = viewCamera(aspect);
    if (!pictureFrame().isEmpty())
        camera.widenFor(float(_pictureAspect));
    return camera;
}

void kxView3D::setPictureSize(const QSize& pictures)
{
    _pictureAspect = double(pictures.width()) / double(std::max(1, pictures.height()));
    redraw(false);
}

void kxView3D::setPictureFrameShown(bool shown)
{
    _isFrameShown = shown;
    redraw(false);
    Q_EMIT viewChanged();
}

QRectF kxView3D::pictureFrame() const
{
    const bool isFramed = _isFrameShown && !_isClean && _pictureAspect > 0 && cameraNodeId() != 0;
    return isFramed ? kxViewOverlay::pictureRect(_pictureAspect, QSizeF(size())) : QRectF();
}

osg::NodePtr kxView3D::filmCamera() const
{
    return isFilm() ? kxAnimEngine::of(*kxAnimManager::the()).film.camera() : osg::NodePtr();
}

void kxView3D::releaseFilmCamera()
{
    kxAnimEngine::of(*kxAnimManager::the()).film.releaseCamera();
}

void kxView3D::setFilm(bool on)
{
    _film = on;
    _isFilmLeft = false;
    redraw(false);
    Q_EMIT viewChanged();
}

void kxView3D::resumeFilm()
{
    setFilm(_film);
}

osg::UInt32 kxView3D::cameraNodeId() const
{
    if (const osg::NodePtr camera = filmCamera())
        return camera.getFieldContainerId();
    return kxChosenCamera::get().getFieldContainerId();
}

bool kxView3D::isMoving() const
{
    return _rig.isAnimating() || (_moveTime.isValid() && _moveTime.elapsed() < MovingTime) ||
           (_frameTime.isValid() && _frameTime.elapsed() < MovingTime);
}

void kxView3D::noteDrawn(kxFrameGovernor::Level level, double milliseconds)
{
    _drawnRevision = _scene->revision();
    _drawnMoment = kxViewOverlay::moment(cameraNodeId());
    _isDrawn = true;
    const osg::UInt32 camera = cameraNodeId();
    const bool isCut = camera != _drawnCameraId;
    _drawnCameraId = camera;
    _governor.note(level, milliseconds);
    if (level != kxFrameGovernor::Full)
        _sharpen->start();

    if (_frameTime.isValid())
    {
        const double seconds = double(_frameTime.nsecsElapsed()) * 1e-9;
        if (seconds > SameMoment)
            _frameSeconds = 0;
        else
            _frameSeconds = _frameSeconds > 0 ? _frameSeconds * 0.85 + seconds * 0.15 : seconds;
    }
    _frameTime.start();
    Q_EMIT frameDrawn();
    if (isCut)
        Q_EMIT viewChanged();
}

bool kxView3D::placeGizmo()
{
    const QSizeF shape(size());
    _gizmo.setView(shownCamera(), shape);
    if (_gizmo.tool() == kxGizmo::SelectTool)
        return false;
    const kxTransformEdit now(kxScenegraph::getSelectedNodes());
    if (!now.isEmpty())
        _gizmo.setPlace(now.pivot(), now.axes(_local || _gizmo.tool() == kxGizmo::ScaleTool));
    return !now.isEmpty();
}

void kxView3D::paintOverlay(QPainter& painter)
{
    if (_isClean)
        return;
    const QSizeF shape(size());
    const kxViewCamera camera = shownCamera();
    kxClipQuad::paint(painter, *_scene, camera, shape);
    kxViewOverlay::paintFrame(painter, pictureFrame(), shape);
    kxViewOverlay::paintSigns(painter, *_scene, camera, shape);
    if (placeGizmo())
        _gizmo.paint(painter);
    kxViewOverlay::paintTriad(painter, camera, shape);
    if (_scene->items().empty() && _scene->lights().empty() && _scene->cameras().empty() && _scene->planes().empty())
        kxViewOverlay::paintHint(painter, tr("Nothing to see yet"),
                                 tr("Open a model: File > Open, or drop a file here"), shape);
    kxViewOverlay::paintStatus(painter, statusText(), shape);
    if (_gizmo.isDragging() && !_gizmo.dragText().isEmpty())
        kxViewOverlay::paintLabel(painter, _gizmo.dragText(), _lastAt + QPointF(18, -8));
}

QString kxView3D::statusText() const
{
    if (_scene->items().empty())
        return QString();
    osg::UInt64 triangles = 0;
    for (const kxRenderScene::Item& item : _scene->items())
        if (const osg::Mesh* const mesh = kxRenderScene::mesh(item.meshId))
            triangles += mesh->triangleCount();
    const QLocale locale;
    const int count = int(_scene->items().size());
    QString text = (count == 1 ? tr("1 surface") : tr("%1 surfaces").arg(count)) + QStringLiteral("  \u00b7  ") +
                   tr("%1 triangles").arg(locale.toString(triangles));
    if (_frameSeconds > 0)
        text += QStringLiteral("  \u00b7  ") + tr("drawn %1 times a second").arg(qRound(1 / _frameSeconds));
    if (const QString moment = kxViewOverlay::moment(cameraNodeId()); !moment.isEmpty())
        text.prepend(moment + QStringLiteral("  \u00b7  "));
    return text;
}

void kxView3D::redraw(bool now)
{
    if (now && isVisible())
    {
        if (!_isDrawn || !showsScene())
            _surface->widget()->repaint();
        return;
    }
    _isDrawn = false;
    _surface->widget()->update();
}

bool kxView3D::showsScene() const
{
    return !_scene->isStale() && _scene->revision() == _drawnRevision && cameraNodeId() == _drawnCameraId &&
           kxViewOverlay::moment(cameraNodeId()) == _drawnMoment;
}

QImage kxView3D::grabFrameBuffer(bool withAlpha)
{
    const QImage image = _surface->grab().convertToFormat(withAlpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    _isDrawn = false; // what was drawn is not on the screen
    return image;
}

QImage kxView3D::picture(const QSize& pixels)
{
    const float aspect = float(pixels.width()) / float(std::max(1, pixels.height()));
    kxRenderOptions options;
    options.grid = options.outline = false;
    return _surface->draw(kxFrame::make(*_scene, viewCamera(aspect), pixels, options));
}

void kxView3D::resizeEvent(QResizeEvent*)
{
    _isDrawn = false;
    _surface->widget()->setGeometry(rect());
}

void kxView3D::setClean(bool clean)
{
    endDrag();
    _isClean = clean;
    redraw(false);
}

void kxView3D::setTool(kxGizmo::Tool tool)
{
    if (_gizmo.isDragging() || tool == _gizmo.tool())
        return;
    _gizmo.setTool(tool);
    _gizmo.setHover(kxGizmo::NoHandle);
    _actions->showTool(tool);
    redraw(false);
    Q_EMIT toolChanged(int(tool));
}

void kxView3D::setLocalAxes(bool local)
{
    _local = local;
    redraw(false);
}

void kxView3D::setGridShown(bool shown)
{
    _options.grid = shown;
    redraw(false);
}

void kxView3D::setEdgesShown(bool shown)
{
    _options.wire = shown;
    redraw(false);
}

void kxView3D::frameAll()
{
    _scene->update();
    leaveCamera();
    // An empty scene gets the first view back, so that what is added next is seen.
    startWay(_scene->bounds().isEmpty() ? kxCameraRig::Pose()
                                        : _rig.framed(_scene->bounds(), float(width()) / float(std::max(1, height()))));
}

void kxView3D::showOpened()
{
    const osg::NodePtr camera = kxChosenCamera::get();
    if (camera == osg::NullFC)
        frameAll();
    else
    {
        _scene->update();
        _rig.setPose(_rig.framed(_scene->bounds(), 1)); // who leaves the camera turns around what is there
        lookThrough(camera.getFieldContainerId());
    }
    _isTurned = false;
}

void kxView3D::frameSelection()
{
    _scene->setSelection(kxSelection::the().ids(kxSelection::Nodes));
    _scene->update();
    const osg::BoxVolume box = _scene->selectionBounds();
    leaveCamera();
    startWay(_rig.framed(box.isEmpty() ? _scene->bounds() : box, float(width()) / float(std::max(1, height()))));
}

void kxView3D::setPose(const kxCameraRig::Pose& pose)
{
    _way->stop();
    kxChosenCamera::set(osg::NodePtr());
    _isTurned = true;
    _rig.setPose(pose);
    redraw(false);
    Q_EMIT viewChanged();
}

void kxView3D::lookFrom(float yaw, float pitch)
{
    leaveCamera();
    kxCameraRig::Pose pose = _rig.pose();
    pose.yaw = yaw;
    pose.pitch = pitch;
    startWay(pose);
}

void kxView3D::lookThrough(osg::UInt32 nodeId)
{
    if (nodeId == 0)
        leaveCamera();
    else
    {
        _way->stop();
        releaseFilmCamera();
        kxChosenCamera::set(osg::living<osg::Node>(nodeId));
    }
    redraw(false);
    Q_EMIT viewChanged();
}

void kxView3D::goTo(osg::UInt32 nodeId, float distance)
{
    const osg::NodePtr node = osg::living<osg::Node>(nodeId);
    if (node == osg::NullFC || osg::CameraPtr::dcast(node->getCore()) == osg::NullFC)
        return;
    const kxViewCamera camera = kxViewCamera::fromNode(node, 1);
    if (!kxCameraRig::isUpright(camera))
    {
        lookThrough(nodeId);
        return;
    }
    releaseFilmCamera();
    leaveCamera();
    startWay(_rig.poseOf(camera, distance));
}

void kxView3D::leaveCamera()
{
    if (cameraNodeId() != 0)
        _rig.setPose(_rig.poseOf(viewCamera(1)));
    kxChosenCamera::set(osg::NodePtr());
    _isTurned = true;
    if (filmCamera() == osg::NullFC)
        return;
    _isFilmLeft = true;
    kxLog::info(tr("The view has left the film's camera, until something is played or Camera > Film is switched on."));
}

void kxView3D::startWay(const kxCameraRig::Pose& pose)
{
    // Before the first frame there is nothing that the eye could follow; pictures of a film are no moments of a way.
    if (!isVisible() || !_frameTime.isValid() || kxController::isSnapshotRendering())
    {
        setPose(pose);
        return;
    }
    _rig.animateTo(pose);
    _wayTime.start();
    _way->start();
}

void kxView3D::walk()
{
    _rig.advance(float(_wayTime.elapsed()) / WayTime);
    const bool arrived = !_rig.isAnimating();
    if (arrived)
        _way->stop();
    redraw(false);
    Q_EMIT viewChanged();
    if (arrived)
        Q_EMIT viewWentIdle();
}

void kxView3D::moveView(Drag drag, const QPointF& by)
{
    _way->stop();
    leaveCamera();
    const float dx = float(by.x()), dy = float(by.y());
    if (drag == Drag::Orbit)
        _rig.orbit(dx, dy, float(height()));
    else if (drag == Drag::Pan)
        _rig.pan(dx, dy, float(height()));
    else
        _rig.dolly(float((by.x() - by.y()) / DollyPixels));
    _moveTime.start();
    redraw(false);
    Q_EMIT viewChanged();
}

void kxView3D::mousePressEvent(QMouseEvent* event)
{
    if (_drag != Drag::None) // a second button
        return;
    _pressedAt = _lastAt = event->localPos();
    const bool alt = event->modifiers() & Qt::AltModifier;
    if (event->button() == Qt::MiddleButton)
        _drag = Drag::Pan;
    else if (event->button() == Qt::RightButton)
        _drag = Drag::Dolly;
    else if (event->button() == Qt::LeftButton)
    {
        const kxGizmo::Handle handle = !alt && placeGizmo() ? _gizmo.handleAt(_pressedAt) : kxGizmo::NoHandle;
        if (handle != kxGizmo::NoHandle)
            beginGizmoDrag(handle, _pressedAt);
        else
            _drag = alt ? Drag::Orbit : Drag::Click;
    }
    event->accept();
}

void kxView3D::beginGizmoDrag(kxGizmo::Handle handle, const QPointF& point)
{
    auto edit = std::make_unique<kxTransformEdit>(kxScenegraph::getSelectedNodes());
    if (edit->isEmpty())
        return;
    _edit = std::move(edit);
    _edited = false;
    _editIndex = kxUndoStack::get(0).stack()->index();
    _drag = Drag::Gizmo;
    _gizmo.setPlace(_edit->pivot(), _edit->axes(_local || _gizmo.tool() == kxGizmo::ScaleTool));
    _gizmo.beginDrag(handle, point);
    redraw(false);
}

void kxView3D::mouseMoveEvent(QMouseEvent* event)
{
    const QPointF at = event->localPos(), by = at - _lastAt;
    if (event->buttons() == Qt::NoButton) // the release went elsewhere
        endDrag();
    checkDrag(); // the scene reports what is gone a turn of the event loop later
    if (_drag == Drag::Click && QLineF(_pressedAt, at).length() > ClickReach)
        _drag = Drag::Orbit;
    if (_drag == Drag::None)
    {
        const kxGizmo::Handle hover = placeGizmo() ? _gizmo.handleAt(at) : kxGizmo::NoHandle;
        if (hover != _gizmo.hover())
        {
            _gizmo.setHover(hover);
            redraw(false);
        }
        return;
    }
    _lastAt = at;
    if (_drag == Drag::Gizmo)
    {
        _edited = _edit->apply(_gizmo.drag(at, event->modifiers() & Qt::ControlModifier)) || _edited;
        _editIndex = kxUndoStack::get(0).stack()->index();
        redraw(false);
    }
    else if (_drag != Drag::Click)
        moveView(_drag, by);
}

void kxView3D::mouseReleaseEvent(QMouseEvent* event)
{
    const Drag drag = _drag;
    if (event->buttons() != Qt::NoButton) // another one is still held
        return;
    endDrag();
    if (drag == Drag::Click && event->button() == Qt::LeftButton)
        click(event->localPos(), event->modifiers());
    redraw(false);
}

void kxView3D::endDrag()
{
    const Drag drag = _drag;
    _drag = Drag::None;
    _gizmo.endDrag();
    _edit.reset();
    if (drag == Drag::Orbit || drag == Drag::Pan || drag == Drag::Dolly)
        Q_EMIT viewWentIdle();
    if (drag != Drag::None)
        redraw(false);
}

void kxView3D::checkDrag()
{
    if (_drag == Drag::Gizmo && (!_edit->isInScene() || kxUndoStack::get(0).stack()->index() < _editIndex))
        endDrag();
}

void kxView3D::cancelDrag()
{
    endDrag();
    if (_edited)
        kxHistory::the().undo();
    _edited = false;
}

osg::NodePtr kxView3D::nodeAt(const QPointF& point)
{
    const QSizeF shape(size());
    const kxViewCamera camera = shownCamera();
    osg::UInt32 id = kxViewOverlay::signAt(point, *_scene, camera, shape);
    if (id == 0)
        id = kxClipQuad::at(point, *_scene, camera, shape);
    if (id == 0)
        id = _picking.pick(*_scene, camera.ray(point, shape)).nodeId;
    return kxPicking::selectableNode(osg::living<osg::Node>(id));
}

void kxView3D::click(const QPointF& point, Qt::KeyboardModifiers modifiers)
{
    const osg::NodePtr node = nodeAt(point);
    std::vector<osg::NodePtr> nodes;
    if (modifiers & (Qt::ControlModifier | Qt::ShiftModifier))
    {
        if (node == osg::NullFC)
            return;
        nodes = kxScenegraph::getSelectedNodes();
        const auto found = std::find(nodes.begin(), nodes.end(), node);
        if (found == nodes.end())
            nodes.push_back(node);
        else
            nodes.erase(found);
    }
    else if (node != osg::NullFC)
        nodes.push_back(node);
    kxSelectionManager::selectNodes(nodes);
}

void kxView3D::wheelEvent(QWheelEvent* event)
{
    const double notches = event->angleDelta().y() / 120.0;
    if (notches != 0 && _drag == Drag::None)
        moveView(Drag::Dolly, QPointF(0, -notches * DollyPixels * 1.2));
    event->accept();
}

void kxView3D::keyPressEvent(QKeyEvent* event)
{
    if (event->key() != Qt::Key_Escape)
    {
        QWidget::keyPressEvent(event);
        return;
    }
    if (_drag == Drag::Gizmo)
        cancelDrag();
    else if (cameraNodeId() != 0)
        lookThrough(0);
    else
        setTool(kxGizmo::SelectTool);
}

void kxView3D::focusOutEvent(QFocusEvent* event)
{
    endDrag(); // a dialog or another window gets the release
    QWidget::focusOutEvent(event);
}

void kxView3D::hideEvent(QHideEvent* event)
{
    endDrag();
    QWidget::hideEvent(event);
}

void kxView3D::leaveEvent(QEvent*)
{
    if (_gizmo.hover() == kxGizmo::NoHandle || _gizmo.isDragging())
        return;
    _gizmo.setHover(kxGizmo::NoHandle);
    redraw(false);
}
