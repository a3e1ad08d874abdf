#include "kxViewActions.h"

#include "kxView3D.h"

#include <QKXTimeLine.h>
#include <QKXTimeLineRange.h>
#include <kxIconManager.h>
#include <kxScenegraph.h>
#include <kxShortcut.h>
#include <osg/FieldContainerFactory.h>

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QMenu>
#include <QToolBar>
#include <QToolButton>

kxViewActions::kxViewActions(kxView3D* view)
    : QObject(view), _view(view), _tools(new QActionGroup(this)), _cameraMenu(new QMenu(tr("Camera"), view))
{
    addTool(tr("Select"), QStringLiteral("Select"), Qt::Key_Q, kxGizmo::SelectTool);
    addTool(tr("Move"), QStringLiteral("Move"), Qt::Key_W, kxGizmo::MoveTool);
    addTool(tr("Rotate"), QStringLiteral("Rotate"), Qt::Key_E, kxGizmo::RotateTool);
    addTool(tr("Scale"), QStringLiteral("Scale"), Qt::Key_R, kxGizmo::ScaleTool);
    _actions << nullptr;
    _frameAll = add(tr("Frame All"), QStringLiteral("FrameAll"), Qt::Key_A, QStringLiteral("frameAll"));
    connect(_frameAll, &QAction::triggered, view, &kxView3D::frameAll);
    _frameSelection = add(tr("Frame Selection"), QString(), Qt::Key_F, QStringLiteral("frameSelection"));
    connect(_frameSelection, &QAction::triggered, view, &kxView3D::frameSelection);
    _actions.removeOne(_frameSelection); // a key and a menu entry are enough
    _actions << nullptr;
    addDisplay();
    _cameraMenu->setObjectName(QStringLiteral("cameraMenu"));
    connect(_cameraMenu, &QMenu::aboutToShow, this, &kxViewActions::fillCameraMenu);
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* focused)
            {
                // A user who has just set the frame goes on to pose the object; a ruler has no use for letters.
                if (qobject_cast<QKXTimeLine*>(focused) != nullptr ||
                    qobject_cast<QKXTimeLineRange*>(focused) != nullptr)
                    addToolsTo(focused);
            });
    kxShortcut::addKey(tr("3D view"), Qt::Key_Escape, Qt::NoModifier, tr("Cancel the drag, leave the camera"));
}

QAction* kxViewActions::add(const QString& text, const QString& icon, int key, const QString& objectName)
{
    QAction* const action = new QAction(text, this);
    if (!icon.isEmpty())
        action->setIcon(kxIconManager::getIcon(icon, QString()));
    action->setObjectName(objectName);
    if (key != 0)
    {
        action->setShortcut(QKeySequence(key));
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        action->setToolTip(QStringLiteral("%1 (%2)").arg(text, action->shortcut().toString(QKeySequence::NativeText)));
        kxShortcut::addKey(tr("3D view"), key, Qt::NoModifier, text);
    }
    _view->addAction(action);
    _actions << action;
    return action;
}

QAction* kxViewActions::addTool(const QString& text, const QString& icon, int key, kxGizmo::Tool tool)
{
    QAction* const action = add(text, icon, key, icon.toLower() + QLatin1String("Tool"));
    action->setCheckable(true);
    action->setChecked(tool == kxGizmo::SelectTool);
    action->setData(int(tool));
    _tools->addAction(action);
    connect(action, &QAction::triggered, _view, [this, tool] { _view->setTool(tool); });
    return action;
}

void kxViewActions::addToolsTo(QWidget* widget)
{
    for (QAction* const tool : _tools->actions())
        if (!widget->actions().contains(tool))
            widget->addAction(tool);
}

void kxViewActions::addDisplay()
{
    QAction* const local = add(tr("Local Axes"), QString(), 0, QStringLiteral("localAxes"));
    local->setIconText(tr("Local"));
    local->setToolTip(tr("The handles follow the object's own axes"));
    local->setCheckable(true);
    connect(local, &QAction::toggled, _view, &kxView3D::setLocalAxes);
    QAction* const grid = add(tr("Grid"), QString(), 0, QStringLiteral("grid"));
    grid->setToolTip(tr("Show the lines on the floor"));
    grid->setCheckable(true);
    grid->setChecked(true);
    connect(grid, &QAction::toggled, _view, &kxView3D::setGridShown);
    QAction* const wire = add(tr("Edges"), QString(), 0, QStringLiteral("edges"));
    wire->setToolTip(tr("Show the edges of the triangles over the surfaces"));
    wire->setCheckable(true);
    connect(wire, &QAction::toggled, _view, &kxView3D::setEdgesShown);
}

void kxViewActions::addTo(QToolBar* bar) const
{
    for (QAction* const action : _actions)
        if (action != nullptr)
            bar->addAction(action);
        else
            bar->addSeparator();
    bar->addSeparator();
    QToolButton* const cameras = new QToolButton(bar);
    cameras->setObjectName(QStringLiteral("cameraButton"));
    cameras->setText(tr("Camera"));
    cameras->setToolTip(tr("Look from a side, or through a camera of the scene"));
    cameras->setIcon(kxIconManager::get(QStringLiteral("scenegraph/CameraNode.svg")));
    cameras->setPopupMode(QToolButton::InstantPopup);
    cameras->setMenu(_cameraMenu);
    bar->addWidget(cameras);
}

void kxViewActions::showTool(kxGizmo::Tool tool)
{
    for (QAction* const action : _tools->actions())
        if (action->data().toInt() == int(tool))
            action->setChecked(true);
}

void kxViewActions::fillCameraMenu()
{
    _cameraMenu->clear();
    const auto look = [this](const QString& text, float yaw, float pitch)
    { _cameraMenu->addAction(text, _view, [this, yaw, pitch] { _view->lookFrom(yaw, pitch); }); };
    look(tr("From the Front"), 0, 0);
    look(tr("From the Right"), 90, 0);
    look(tr("From the Left"), -90, 0);
    look(tr("From the Back"), 180, 0);
    look(tr("From Above"), 0, kxCameraRig::LargestPitch);
    look(tr("From a Corner"), kxCameraRig::Pose().yaw, kxCameraRig::Pose().pitch);
    _cameraMenu->addSeparator();
    QAction* const film = _cameraMenu->addAction(tr("Film"), _view, &kxView3D::setFilm);
    film->setObjectName(QStringLiteral("film"));
    film->setToolTip(tr("A clip that plays is seen through its camera tracks and viewpoints"));
    film->setCheckable(true);
    film->setChecked(_view->isFilm());
    QAction* const frame = _cameraMenu->addAction(tr("Picture Frame"), _view, &kxView3D::setPictureFrameShown);
    frame->setObjectName(QStringLiteral("pictureFrame"));
    frame->setToolTip(tr("Through a camera, show what a picture of the size that was rendered last holds"));
    frame->setCheckable(true);
    frame->setChecked(_view->isPictureFrameShown());
    _cameraMenu->addSeparator();
    const osg::UInt32 current = _view->cameraNodeId();
    QAction* const free = _cameraMenu->addAction(tr("Free View"), _view, [this] { _view->lookThrough(0); });
    free->setCheckable(true);
    free->setChecked(current == 0);
    _view->scene().update();
    for (const kxRenderScene::CameraItem& camera : _view->scene().cameras())
    {
        const osg::UInt32 id = camera.nodeId;
        const osg::NodePtr node = osg::living<osg::Node>(id);
        QString name = QString::fromUtf8(kxNodeUtils::getName(node).c_str());
        name.replace(QLatin1Char('&'), QLatin1String("&&"));
        QAction* const action =
            _cameraMenu->addAction(name.isEmpty() ? tr("Camera") : name, _view, [this, id] { _view->lookThrough(id); });
        action->setCheckable(true);
        action->setChecked(id == current);
    }
}
