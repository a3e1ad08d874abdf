#include <host/app/kxSceneFixture.h>

#include <edits/kxSceneryEdits.h>
#include <journal/kxHistory.h>
#include <kernel/kxLogModel.h>
#include <kernel/kxSelection.h>
#include <kxAnimFixture.h>
#include <kxAnswer.h>
#include <kxTexts.h>
#include <osg/FieldContainerFactory.h>
#include <panels/kxSceneryPanel.h>
#include <panels/kxStepModel.h>
#include <scene/kxScenery.h>
#include <scenery/kxSceneryActions.h>
#include <scenery/kxSceneryStage.h>
#include <view/kxView3D.h>
#include <widgets/kxColors.h>
#include <widgets/kxStyle.h>

#include <QtWidgets>

using kxScenery::Kind;

/// The dock as a user handles it.
class tst_kxSceneryPanel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        kxStyle::apply(*qApp);
        kxSceneFixture::clear();
        _panel = std::make_unique<kxSceneryPanel>(&_stage, &_actions);
        _panel->resize(340, 520);
        _panel->show();
        kxTestModel(list());
        kxTestModel(steps());
    }

    void cleanup() { kxSceneFixture::clear(); }

    void eachEntryMakesItsKind()
    {
        QVERIFY(isHintShown(list()) && !steps()->isVisible());
        QVERIFY(_panel->findChild<QToolButton*>("_addScenery")->isVisible());
        const Kind kinds[] = {Kind::Viewpoint, Kind::CameraTrack, Kind::CameraTrack, Kind::VariantSet, Kind::Sequence};
        QVERIFY(!_actions.all()[1]->isEnabled()); // it needs two viewpoints
        _actions.all()[0]->trigger();
        kxSelection::the().clear();
        _actions.all()[3]->trigger();
        QVERIFY(kxScenery::all(Kind::VariantSet).empty()); // of no choice
        QVERIFY(kxLogModel::the().entries().back().text.startsWith("No variant set was made"));
        kxSelection::the().selectNodes({kxSceneFixture::addObject("Door")});
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

    void tracksAreLookedThrough()
    {
        auto* const look = _panel->findChild<QAction*>("_lookThroughAction");
        _actions.all()[0]->trigger();
        QVERIFY(!look->isEnabled()); // a viewpoint is no camera that moves
        _actions.all()[2]->trigger();
        const unsigned int first = kxScenery::all(Kind::CameraTrack)[0].getFieldContainerId();
        QCOMPARE(_view.cameraNodeId(), first); // what was made is seen
        QVERIFY(look->isChecked());
        kxAnimManager::the()->setCurrentFrame(48, true, false); // on the way round
        const QVector3D eye = _view.viewCamera(1).eye();
        _actions.all()[2]->trigger();
        kxAnimManager::the()->setCurrentFrame(0, true, false);
        QVERIFY((_view.viewCamera(1).eye() - eye).length() < 0.01f); // the other begins where the view is
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
        kxUndoStack::get(0).stack()->setIndex(0); // the tracks go, the view is free
        kxScene::the()->flush();
        QCOMPARE(_view.cameraNodeId(), 0u);
        QVERIFY(!look->isEnabled());
    }

    void rowsAreNamedAndTried()
    {
        const osg::NodePtr set = kxSceneryEdits::addVariantSet(
            {kxSceneFixture::addObject("Open"), kxSceneFixture::addObject("Shut")}, "Door");
        kxScene::the()->flush();
        list()->expandAll();
        QAbstractItemModel* const model = list()->model();
        const QModelIndex section = model->index(0, 0);
        QCOMPARE(kxTexts(model), QStringList("Variant Sets"));
        QCOMPARE(kxTexts(model, section), QStringList("Door"));
        const auto choice = [model](int row) { return model->index(row, 0, model->index(0, 0, model->index(0, 0))); };
        QCOMPARE(kxTexts(model, choice(0).parent()), QStringList({"Open", "Shut"}));
        QVERIFY(model->setData(choice(1), "Closed") && !model->setData(choice(1), "x", Qt::ToolTipRole));
        QCOMPARE(set->getChild(1)->getNodeName(), std::string("Closed"));
        QVERIFY(choice(1).data(Qt::ForegroundRole).isValid() && !choice(0).data(Qt::ForegroundRole).isValid());
        list()->expandAll();
        list()->setCurrentIndex(choice(1));
        Q_EMIT list()->doubleClicked(choice(1));
        kxScene::the()->flush();
        QVERIFY(!choice(1).data(Qt::ForegroundRole).isValid() && choice(0).data(Qt::ForegroundRole).isValid());
        QVERIFY(choice(0).data(Qt::DecorationRole).value<QIcon>().cacheKey() !=
                choice(1).data(Qt::DecorationRole).value<QIcon>().cacheKey());
    }

    void clipsListTheirTriggersAndRest()
    {
        typedef kxAnimFixture F;
        const osg::NodePtr box = kxSceneFixture::addObject("Box");
        const osg::AnimNodePtr block =
            F::added(box, F::block("Slide", {F::curve("translation", "X", {{0, 3}, {2, 9}})}));
        for (const float yaw : {10.0f, 80.0f})
            kxSceneryEdits::addViewpoint(_view.viewCamera(1), yaw, yaw < 50 ? "Wide" : "Close");
        const osg::AnimNodePtr late = F::trigger("Wide", 2.5f, false, true), gone = F::trigger("Gone", 1.25f, true);
        F::added(F::clip("Show", {F::clone(block, 0), late, gone, F::clip("Inner", {F::clone(block, 1, 2)})}));
        F::added(F::clip("Empty", {}));
        kxScene::the()->flush();
        kxHistory::the().flush();
        kxAnimManager::the()->setCurrentFrame(24, true, false);
        QCOMPARE(F::transform(box)->getTranslation().x(), 6.0f);
        QAbstractItemModel* const model = list()->model();
        const auto clip = [model](int row) { return model->index(row, 0, model->index(1, 0)); };
        QCOMPARE(kxTexts(model), QStringList({"Viewpoints", "Clips"}));
        QCOMPARE(kxTexts(model, model->index(1, 0)), QStringList({"Show", "Inner", "Empty"}));
        QCOMPARE(kxTexts(model, clip(0)), QStringList({"30: Gone", "60: Wide"}));
        const auto trigger = [&](int row) { return model->index(row, 0, clip(0)); };
        QVERIFY(trigger(0).data(Qt::ForegroundRole).isValid() && !trigger(1).data(Qt::ForegroundRole).isValid());
        // A double click shows its frame.
        list()->setCurrentIndex(trigger(1));
        Q_EMIT list()->doubleClicked(trigger(1));
        QCOMPARE(osg::living<osg::Node>(_view.cameraNodeId())->getNodeName(), std::string("Wide"));
        // What it names is chosen from what there is.
        const QByteArray before = kxSceneFixture::bytes();
        list()->edit(trigger(1));
        auto* const names = list()->findChild<QComboBox*>();
        QVERIFY(names != nullptr && names->currentText() == "Wide" && names->count() == 2);
        names->setCurrentText("Close");
        QTest::keyClick(names, Qt::Key_Return);
        QCoreApplication::processEvents(); // an editor hands its value on then
        QCOMPARE(kxTexts(model, clip(0)), QStringList({"30: Gone", "60: Close"}));
        QCOMPARE(osg::living<osg::Node>(_view.cameraNodeId())->getNodeName(), std::string("Close"));
        QCOMPARE(late->getNodeName(), std::string("Close"));
        kxHistory::the().undo();
        QCOMPARE(kxSceneFixture::bytes(), before);
        // At rest the scene stands as it was made, and the clip plays as before.
        auto* const rest = _panel->findChild<QAction*>("_restClipAction");
        list()->setCurrentIndex(clip(2));
        QVERIFY(!rest->isEnabled());
        list()->setCurrentIndex(clip(0));
        QVERIFY(rest->isEnabled() && !_panel->findChild<QAction*>("_deleteSceneryAction")->isEnabled());
        rest->trigger();
        kxAnimManager::the()->setCurrentFrame(36, true, false);
        QVERIFY(!block->isActive() && F::transform(box)->getTranslation().x() == 0);
        list()->setCurrentIndex(clip(1));
        QVERIFY(!rest->isEnabled());
        kxAnimManager::the()->evaluateByFrame(osg::AnimNodePtr::dcast(late->getParent()), 36, false, false, false);
        QCOMPARE(F::transform(box)->getTranslation().x(), 4.5f); // the inner clip's
        kxHistory::the().undo();
        kxAnimManager::the()->setCurrentFrame(24, true, false);
        QVERIFY(block->isActive() && kxSceneFixture::bytes() == before);
    }

    void stepsAreEditedInPlace()
    {
        typedef kxSequenceStep::Kind Step;
        kxSceneryEdits::addVariantSet({kxSceneFixture::addObject("Open"), kxSceneFixture::addObject("Shut")}, "Door");
        _actions.all()[4]->trigger();
        auto* const menu = _panel->findChild<QMenu*>("_addStepMenu");
        for (const Step kind : {Step::Wait, Step::SetVariant, Step::RunPython}) // each below the one that is selected
            menu->actions().at(int(kind))->trigger();
        QAbstractItemModel* const model = steps()->model();
        QCOMPARE(steps()->currentIndex().row(), 2);
        QVERIFY(!model->index(0, kxStepModel::WithColumn).data(Qt::ToolTipRole).isValid()); // a pause names nothing
        const auto edit = [this, model](int row)
        {
            const QModelIndex index = model->index(row, kxStepModel::WithColumn);
            QWidget* const editor =
                steps()->itemDelegate()->createEditor(steps()->viewport(), QStyleOptionViewItem(), index);
            steps()->itemDelegate()->setEditorData(editor, index);
            return editor;
        };
        const auto give = [this, model](QWidget* editor, int row)
        {
            steps()->itemDelegate()->setModelData(editor, model, model->index(row, kxStepModel::WithColumn));
            delete editor;
            return model->index(row, kxStepModel::WithColumn).data(Qt::EditRole);
        };
        auto* const seconds = qobject_cast<QDoubleSpinBox*>(edit(0));
        seconds->setValue(-3);
        QCOMPARE(seconds->value(), 0.0);
        seconds->setValue(125.25);
        QCOMPARE(give(seconds, 0).toDouble(), 125.25);
        auto* const names = qobject_cast<QComboBox*>(edit(1));
        names->setCurrentIndex(names->findText("Door/Shut"));
        QCOMPARE(give(names, 1).toString(), QString("Door/Shut"));
        QCOMPARE(qobject_cast<QComboBox*>(edit(1))->currentText(), QString("Door/Shut"));
        QString script;
        steps()->edit(model->index(2, kxStepModel::WithColumn));
        kxAnswer<QInputDialog>(
            [&script](QInputDialog& dialog)
            {
                script = dialog.textValue();
                dialog.setTextValue("x = 1\ny = 2");
                dialog.accept();
            });
        QTRY_COMPARE(script, QString("print('Here')"));
        QTRY_COMPARE(model->index(2, kxStepModel::WithColumn).data().toString(), QString("x = 1 \u2026"));
        const auto isMarked = [model](int row)
        { return model->index(row, 0).data(Qt::ForegroundRole).value<QColor>() == kxColors::accent(); };
        QVERIFY(_stage.runner().start("Sequence"));
        _stage.runner().update();
        QVERIFY(isMarked(0) && !isMarked(1)); // that it waits there
        _stage.stopAll();
        QVERIFY(!isMarked(0));
        steps()->setCurrentIndex(model->index(1, 0));
        for (const char* const action :
             {"_raiseStepAction", "_raiseStepAction", "_deleteStepAction"}) // is the first then
            trigger(action);
        QCOMPARE(kxTexts(model), QStringList({"Wait", "Run Python"}));
        kxUndoStack::get(0).stack()->undo();
        kxScene::the()->flush();
        QCOMPARE(kxTexts(model), QStringList({"Set variant", "Wait", "Run Python"}));
        menu->actions().at(int(Step::ShowViewpoint))->trigger();
        const QModelIndex added = steps()->currentIndex().siblingAtColumn(kxStepModel::WithColumn);
        QVERIFY(!added.data(Qt::ToolTipRole).toString().isEmpty()); // there is no viewpoint
    }

private:
    void trigger(const char* name) { _panel->findChild<QAction*>(QLatin1String(name))->trigger(); }
    QTreeView* list() { return _panel->findChild<QTreeView*>("_sceneryList"); }
    QTreeView* steps() { return _panel->findChild<QTreeView*>("_stepList"); }

    static bool isHintShown(QTreeView* view) { return view->viewport()->findChild<QLabel*>()->isVisible(); }

    kxView3D _view;
    kxSceneryStage _stage{&_view};
    kxSceneryActions _actions{&_stage};
    std::unique_ptr<kxSceneryPanel> _panel;
};

QTEST_MAIN(tst_kxSceneryPanel)
#include "tst_kxSceneryPanel.moc"
