#include "kxSceneryActions.h"

#include "kxSceneryStage.h"
#include <edits/kxSceneryEdits.h>

#include <QAction>
#include <kernel/kxSelection.h>
#include <kxIconManager.h>
#include <kxLog.h>
#include <scene/kxScene.h>
#include <view/kxView3D.h>

#include <QRegularExpression>

namespace
{
constexpr double LegSeconds = 2;  // from one viewpoint to the next
constexpr double TurnSeconds = 8; // of a turn around the scene
} // namespace

kxSceneryActions::kxSceneryActions(kxSceneryStage* stage, QObject* parent) : QObject(parent), _stage(stage)
{
    add(tr("Add &Viewpoint"), QStringLiteral("scenegraph/Viewpoint"), tr("Keeps the place where the view stands"),
        &kxSceneryActions::addViewpoint);
    _track = add(tr("Add Camera &Track through Viewpoints"), QStringLiteral("scenegraph/CameraTrack"),
                 tr("A camera that travels from each viewpoint to the next; needs two viewpoints"),
                 &kxSceneryActions::addTrack);
    add(tr("Add Camera Track a&round the View's Target"), QStringLiteral("scenegraph/CameraTrack"),
        tr("A camera that turns once around what the view looks at"), &kxSceneryActions::addTurntable);
    add(tr("Add Variant &Set"), QStringLiteral("scenegraph/SwitchNode"),
        tr("The selected objects become choices of which one is shown"), &kxSceneryActions::addVariantSet);
    add(tr("Add Se&quence"), QStringLiteral("scenegraph/Sequence"),
        tr("Steps that follow each other: clips, viewpoints, variants, pauses, scripts"),
        &kxSceneryActions::addSequence);
    connect(kxScene::the(), &kxScene::structureChanged, this, &kxSceneryActions::update);
    update();
}

QAction* kxSceneryActions::add(const QString& text, const QString& icon, const QString& tip,
                               void (kxSceneryActions::*slot)())
{
    auto* const action = new QAction(kxIconManager::getIcon(icon, QString()), text, this);
    action->setObjectName(QStringLiteral("_action") +
                          QString(text).remove(QRegularExpression(QStringLiteral("[^A-Za-z]"))));
    action->setToolTip(tip);
    connect(action, &QAction::triggered, this, slot);
    _all.append(action);
    return action;
}

void kxSceneryActions::update()
{
    _track->setEnabled(kxScenery::all(kxScenery::Kind::Viewpoint).size() > 1);
}

void kxSceneryActions::addViewpoint()
{
    kxView3D* const view = _stage->view();
    const osg::NodePtr made = kxSceneryEdits::addViewpoint(view->viewCamera(1), view->rig().pose().distance);
    Q_EMIT added(made.getFieldContainerId());
}

void kxSceneryActions::addTrack()
{
    showTrack(kxSceneryEdits::addCameraTrack(kxScenery::all(kxScenery::Kind::Viewpoint), LegSeconds));
}

void kxSceneryActions::addTurntable()
{
    kxView3D* const view = _stage->view();
    const kxCameraRig& rig = view->rig();
    showTrack(kxSceneryEdits::addTurntable(view->cameraNodeId() == 0 ? rig.pose() : rig.poseOf(view->viewCamera(1)),
                                           TurnSeconds));
}

void kxSceneryActions::showTrack(const osg::NodePtr& track)
{
    if (track == osg::NullFC)
        return;
    // Whoever makes a way for the camera wants to see it: the time line takes the view along from here on.
    _stage->view()->lookThrough(track.getFieldContainerId());
    Q_EMIT added(track.getFieldContainerId());
}

void kxSceneryActions::addVariantSet()
{
    const auto choices = kxSelection::the().nodes();
    if (choices.empty())
        return kxLog::warning(tr("No variant set was made: select the objects that are to be its choices first."));
    Q_EMIT added(kxSceneryEdits::addVariantSet(choices).getFieldContainerId());
}

void kxSceneryActions::addSequence()
{
    Q_EMIT added(kxSceneryEdits::addSequence({}).getFieldContainerId());
}
