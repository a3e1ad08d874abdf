#include "../app/kxSceneFixture.h"

#include <kxUndo.h>
#include <panels/kxSceneryPanel.h>
#include <panels/kxStepModel.h>
#include <scene/kxScene.h>
#include <scene/kxScenery.h>
#include <scenery/kxSceneryActions.h>
#include <scenery/kxSceneryEdits.h>
#include <scenery/kxSceneryStage.h>
#include <view/kxView3D.h>
#include <widgets/kxStyle.h>

#include <QAction>
#include <QLabel>
#include <QTreeView>
#include <QUndoStack>
#include <QtTest>

using kxScenery::Kind;

/// The dock as a user handles it.
class tst_kxSceneryPanel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup() { kxSceneFixture::clear(); }
    void eachEntryMakesItsKind();
    void stepsAreEditedInPlace();
    void tracksAreLookedThrough();

private:
    void trigger(const char* name) { _panel->findChild<QAction*>(QLatin1String(name))->trigger(); }
    QTreeView* list() { return _panel->findChild<QTreeView*>(QStringLiteral("_sceneryList")); }
    QTreeView* steps() { return _panel->findChild<QTreeView*>(QStringLiteral("_stepList")); }
    static bool isHintShown(QTreeView* view);

    kxView3D _view;
    kxSceneryStage _stage{&_view};
    kxSceneryActions _actions{&_stage};
    std::unique_ptr<kxSceneryPanel> _panel;
};

void tst_kxSceneryPanel::init()
{
    kxStyle::apply(*qApp);
    kxSceneFixture::clear();
    _panel = std::make_unique<kxSceneryPanel>(&_stage, &_actions);
    _panel->resize(340, 520);
    _panel->show();
}

bool tst_kxSceneryPanel::isHintShown(QTreeView* view)
{
    return view->viewport()->findChild<QLabel*>()->isVisible();
}

void tst_kxSceneryPanel::eachEntryMakesItsKind()
{
    QVERIFY(isHintShown(list()) && !steps()->isVisible());
    const Kind kinds[] = {Kind::Viewpoint, Kind::CameraTrack, Kind::CameraTrack, Kind::VariantSet, Kind::Sequence};
    QVERIFY(!_actions.all()[1]->isEnabled()); // it needs two viewpoints
    _actions.all()[0]->trigger();
    for (int i = 0; i < 5; ++i)
    {
        QVERIFY(_actions.all()[i]->isEnabled());
        const std::size_t before = kxScenery::all(kinds[i]).size();
        _actions.all()[i]->trigger();
        QCOMPARE(kxScenery::all(kinds[i]).size(), before + 1);
        QCOMPARE(list()->currentIndex().data().toString().toStdString(),
                 kxScenery::all(kinds[i]).back()->getNodeName());
    }
    QVERIFY(!isHintShown(list()) && steps()->isVisible() && isHintShown(steps()));
    trigger("_deleteSceneryAction");
    QVERIFY(kxScenery::all(Kind::Sequence).empty());
    kxScene::the()->flush();
    QVERIFY(!steps()->isVisible());
}

void tst_kxSceneryPanel::stepsAreEditedInPlace()
{
    typedef kxSequenceStep::Kind Step;
    kxSceneryEdits::addVariantSet({kxSceneFixture::addObject("Open")}, QStringLiteral("Door"));
    _actions.all()[4]->trigger();
    auto* const model = qobject_cast<kxStepModel*>(steps()->model());
    model->insertStep(-1, Step::Wait);
    model->insertStep(0, Step::SetVariant);
    model->insertStep(1, Step::ShowViewpoint);
    QVERIFY(model->setData(model->index(0, kxStepModel::WithColumn), 2.5, Qt::EditRole));
    QVERIFY(model->setData(model->index(1, kxStepModel::WithColumn), QStringLiteral("Door/Open"), Qt::EditRole));
    steps()->setCurrentIndex(model->index(1, 0));
    trigger("_raiseStepAction");
    trigger("_raiseStepAction"); // is the first
    const auto read = kxScenery::steps(kxScenery::all(Kind::Sequence).front());
    QCOMPARE(read.size(), std::size_t(3));
    QCOMPARE(read[0].choice, std::string("Open"));
    QCOMPARE(read[1].seconds, 2.5);
    QVERIFY(!model->index(2, kxStepModel::WithColumn).data(Qt::ToolTipRole).toString().isEmpty()); // names nothing
    trigger("_deleteStepAction");
    QCOMPARE(model->rowCount(), 2);
    kxUndoStack::get(0).stack()->undo();
    kxScene::the()->flush();
    QCOMPARE(model->rowCount(), 3);
}

void tst_kxSceneryPanel::tracksAreLookedThrough()
{
    auto* const look = _panel->findChild<QAction*>(QStringLiteral("_lookThroughAction"));
    _actions.all()[0]->trigger();
    QVERIFY(!look->isEnabled()); // a viewpoint is no camera that moves
    _actions.all()[2]->trigger();
    const unsigned int first = kxScenery::all(Kind::CameraTrack)[0].getFieldContainerId();
    QCOMPARE(_view.cameraNodeId(), first); // what was made is seen
    QVERIFY(look->isChecked());
    _actions.all()[2]->trigger();
    _panel->select(first);
    QVERIFY(look->isEnabled() && !look->isChecked());
    look->trigger();
    QCOMPARE(_view.cameraNodeId(), first);
    QVERIFY(list()->currentIndex().data(Qt::ForegroundRole).isValid());
    look->trigger();
    QCOMPARE(_view.cameraNodeId(), 0u);
    look->trigger();
    _view.setPose(kxCameraRig::Pose()); // as a hand that turns the view
    QVERIFY(!look->isChecked() && !list()->currentIndex().data(Qt::ForegroundRole).isValid());
    look->trigger();
    kxUndoStack::get(0).stack()->setIndex(0); // the tracks go, the view stands free
    kxScene::the()->flush();
    QCOMPARE(_view.cameraNodeId(), 0u);
    QVERIFY(!look->isEnabled());
}

QTEST_MAIN(tst_kxSceneryPanel)
#include "tst_kxSceneryPanel.moc"
