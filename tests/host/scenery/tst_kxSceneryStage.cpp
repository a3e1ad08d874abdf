#include <edits/kxSceneryEdits.h>
#include <files/kxSceneIO.h>
#include <kernel/kxModuleRegistry.h>
#include <kxAnimEvaluator.h>
#include <kxAnimFixture.h>
#include <kxFramePlayer.h>
#include <kxMessageIds.h>
#include <kxScenegraph.h>
#include <kxServices.h>
#include <kxTexts.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxScenery.h>
#include <scenery/kxSceneryStage.h>
#include <view/kxView3D.h>
#include <view/kxViewOverlay.h>

#include <host/app/kxSceneFixture.h>

#include <QMenu>

#include <set>

using namespace kxSceneFixture;
using kxScenery::Kind;

class tst_kxSceneryStage : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        _view = std::make_unique<kxView3D>();
        _stage = std::make_unique<kxSceneryStage>(_view.get());
    }

    void init()
    {
        clear();
        _view->setPose(kxCameraRig::Pose());
        kxLogModel::the().clear();
    }

    void cleanup() { clear(); }

    void everyEditIsAStep()
    {
        const osg::NodePtr a = addObject("A"), b = addObject("B");
        const QByteArray before = bytes();
        const osg::NodePtr front = kxSceneryEdits::addViewpoint(camera(0), 5, "Front");
        const osg::NodePtr side = kxSceneryEdits::addViewpoint(camera(90), 5, "Front");
        QCOMPARE(side->getNodeName(), std::string("Front_1"));
        kxSceneryEdits::updateViewpoint(side, camera(45, 60), 7);
        kxSceneryEdits::addCameraTrack({front, side}, 2);
        kxSceneryEdits::addTurntable(kxCameraRig::Pose(), 8);
        const osg::NodePtr set = kxSceneryEdits::addVariantSet({a, b}, "Look");
        QVERIFY(kxSceneryEdits::setChoice(set, 1) && !kxSceneryEdits::setChoice(set, 2));
        const int steps = stack()->count();
        QVERIFY(kxSceneryEdits::setChoice(set, 1) && stack()->count() == steps); // it is shown already
        const osg::NodePtr sequence = kxSceneryEdits::addSequence({{kxSequenceStep::Kind::SetVariant, "Look", "A", 0}});
        kxSceneryEdits::setSteps(sequence, {{kxSequenceStep::Kind::ShowViewpoint, "Front", "", 0}, kxSequenceStep()});
        kxSceneryEdits::duplicate({front, sequence, set});
        QVERIFY(kxScenery::all(Kind::VariantSet).size() == 2 && kxScenery::all(Kind::Sequence).size() == 2);
        const osg::NodePtr copy = kxScenery::all(Kind::VariantSet).back();
        QVERIFY(copy->getParent() == set->getParent() && !kxSceneEdits::rename(sequence, "Sequence_1"));
        QVERIFY(!kxSceneEdits::rename(front, "  ") && !kxSceneEdits::rename(front, "Front_1"));
        QVERIFY(kxSceneEdits::rename(front, "Start"));
        kxSceneryEdits::remove({front, set});
        QVERIFY(kxScenery::all(Kind::VariantSet) == std::vector<osg::NodePtr>{copy});
        const int edits = stack()->count();
        kxSceneryEdits::remove({a}); // belongs to the scene
        QCOMPARE(stack()->count(), edits);
        QVERIFY(goesBackAndForth(before));
    }

    void renamesFollow()
    {
        const osg::NodePtr front = kxSceneryEdits::addViewpoint(camera(0), 5, "Front");
        const osg::NodePtr set = kxSceneryEdits::addVariantSet({addObject("A"), addObject("B")}, "Look");
        const osg::NodePtr tour = kxSceneryEdits::addSequence({{kxSequenceStep::Kind::ShowViewpoint, "Front", "", 0},
                                                               {kxSequenceStep::Kind::SetVariant, "Look", "B", 0}});
        const osg::AnimNodePtr first = trigger("Front", 1, Kind::Viewpoint),
                               second = trigger("Look/B", 2, Kind::VariantSet);
        kxAnimManager::the()->addToClipStructure(kxAnimFixture::clip("clip", {first, second}));
        const QByteArray before = bytes();
        const int steps = stack()->index();
        kxSceneEdits::rename(front, "Start");
        QCOMPARE(stack()->index(), steps + 1);
        kxSceneEdits::rename(set, "Paint");
        kxSceneEdits::rename(set->getChild(1), "Red");
        QCOMPARE(osg::AnimSequencePtr::dcast(first->getCore())->getName(), std::string("Start"));
        QCOMPARE(first->getNodeName(), std::string("Start"));
        QCOMPARE(osg::AnimSequencePtr::dcast(second->getCore())->getName(), std::string("Paint/Red"));
        QCOMPARE(kxScenery::steps(tour)[1].choice, std::string("Red"));
        stack()->setIndex(steps);
        QCOMPARE(bytes(), before);
        kxSceneryEdits::remove({front});
        QVERIFY(kxLogged().join(QString()).contains("2 triggers and steps"));
    }

    void renamedAndImportedClipsFollow()
    {
        typedef kxSequenceStep::Kind Step;
        const osg::NodePtr object = addObject("A");
        const osg::AnimNodePtr block = kxAnimFixture::block("Jump", {});
        kxAnimManager::the()->addAnimation(object, block);
        const osg::AnimNodePtr clone = kxAnimFixture::clone(block, 1);
        kxSceneryEdits::addVariantSet({addObject("B"), addObject("C")}, "Look");
        const osg::AnimNodePtr clip = kxAnimFixture::clip(
            "Show", {clone, trigger("Show", 1, Kind::Viewpoint), trigger("Look/C", 2, Kind::VariantSet)});
        kxAnimManager::the()->addToClipStructure(clip);
        const osg::NodePtr tour = kxSceneryEdits::addSequence(
            {{Step::PlayClip, "Show", "", 0}, {Step::StartClip, "Jump", "", 0}, {Step::ShowViewpoint, "Show", "", 0}});
        const auto names = [&tour]
        {
            QStringList all;
            for (const kxSequenceStep& step : kxScenery::steps(tour))
                all << QString::fromStdString(step.name);
            return all.join(',');
        };
        kxNodeUtils::setName(clone, "Hop", true, osg::NodePtr()); // the step plays the object's block
        QCOMPARE(names(), "Show,Jump,Show");
        kxNodeUtils::setName(clip, "Opening", true, osg::NodePtr());
        kxNodeUtils::setName(block, "Leap", true, osg::NodePtr());
        QCOMPARE(names(), "Opening,Leap,Show");

        // The same scene brought in a second time: its steps play what came with them.
        for (const char* const name : {"Show", "Show_1"})
            kxSceneryEdits::addViewpoint(camera(0), 5, name);
        const QByteArray before = bytes();
        const QTemporaryDir folder;
        kxFileReport report(folder.filePath("s.kxs"));
        QVERIFY(kxSceneIO::save(report.file(), report));
        QVERIFY(kxSceneIO::importFile(report.file(), report));
        QCOMPARE(names(), "Opening,Leap,Show");
        const auto imported = kxScenery::steps(kxScenery::all(Kind::Sequence).back());
        QCOMPARE(imported[0].name, std::string("Opening_1"));
        QCOMPARE(imported[1].name, std::string("Leap_1"));
        const std::vector<std::string> viewpoints = kxScenery::names(Kind::Viewpoint);
        QCOMPARE(std::set<std::string>(viewpoints.begin(), viewpoints.end()).size(), std::size_t(4));
        QCOMPARE(imported[2].name, viewpoints[2]);
        QStringList targets;
        kxScenery::forTriggers(kxAnimManager::the()->clipStructureRoot(),
                               [&targets](const osg::AnimNodePtr&, const osg::AnimSequencePtr& core, Kind)
                               { targets << QString::fromStdString(core->getName()); });
        QCOMPARE(targets.join(','), "Show,Look/C," + QString::fromStdString(viewpoints[2]) + ",Look_1/C");
        QVERIFY(kxScenery::find(Kind::VariantSet, "Look_1") != osg::NullFC);
        stack()->undo();
        QCOMPARE(bytes(), before);
    }

    void triggersFireOnceForward()
    {
        const osg::NodePtr set =
            kxSceneryEdits::addVariantSet({addObject("A"), addObject("B"), addObject("C")}, "Look");
        const osg::NodePtr side = kxSceneryEdits::addViewpoint(camera(120), 5, "Side");
        const QSignalSpy activated(kxKernelServiceFactory::the().getService<kxCameraService>(),
                                   &kxCameraService::viewpointActivated);
        kxSceneryEdits::addSequence({{kxSequenceStep::Kind::SetVariant, "Look", "A", 0}}, "Back");
        const osg::AnimNodePtr clip =
            kxAnimFixture::clip("clip", {trigger("Look", 1, Kind::VariantSet), trigger("Side", 1, Kind::Viewpoint),
                                         trigger("Back", 3, Kind::Sequence)});
        kxAnimManager::the()->addToClipStructure(clip);
        const auto show = [&clip](double seconds)
        { kxAnimManager::the()->evaluateByFrame(clip, seconds * kxAnimManager::the()->fps(), false, true, true); };
        show(0);
        QCOMPARE(kxScenery::shownChoice(set), std::string("A"));
        show(1.5);
        show(2);
        QCOMPARE(kxScenery::shownChoice(set), std::string("B")); // the next one, once
        QVERIFY(_view->cameraNodeId() == side.getFieldContainerId() && activated.size() == 1);
        show(3.5);
        QVERIFY(_stage->runner().running().empty()); // moved by hand
        show(2);
        const kxTriggers::Playing playing(kxAnimFixture::engine().triggers);
        show(3.5);
        QCOMPARE(kxScenery::shownChoice(set), std::string("B")); // a sequence never runs inside of a frame
        _stage->runner().update();
        QCOMPARE(kxScenery::shownChoice(set), std::string("A"));
        QVERIFY(kxLogged().isEmpty());
    }

    void triggersOfMissingThings()
    {
        kxSceneryEdits::addVariantSet({addObject("A")}, "Look");
        const osg::AnimNodePtr clip =
            kxAnimFixture::clip("clip", {trigger("V", 1, Kind::Viewpoint), trigger("S", 2, Kind::Sequence),
                                         trigger("W", 3, Kind::VariantSet), trigger("Look/Z", 4, Kind::VariantSet)});
        kxAnimManager::the()->addToClipStructure(clip);
        const kxTriggers::Playing playing(kxAnimFixture::engine().triggers);
        for (const double seconds : {0.0, 5.0})
            kxAnimManager::the()->evaluateByFrame(clip, seconds * kxAnimManager::the()->fps(), false, true, true);
        const QStringList lines = kxLogged();
        QCOMPARE(lines.size(), 4);
        for (int i = 0; i < 4; ++i)
            QVERIFY2(lines[i].contains(QStringList({"\"V\"", "\"S\"", "\"W\"", "\"Z\""})[i]), qPrintable(lines[i]));
    }

    void variantsOfTriggersPass()
    {
        const osg::NodePtr set =
            kxSceneryEdits::addVariantSet({addObject("A"), addObject("B"), addObject("C")}, "Look");
        const QByteArray before = bytes();
        const int steps = stack()->index();
        QVERIFY(_stage->setVariant("Look", "B").isEmpty());
        QCOMPARE(kxScenery::shownChoice(set), std::string("B"));
        QCOMPARE(bytes(), before);
        QCOMPARE(stack()->index(), steps);
        kxAnimManager::the()->setCurrentFrame(7, true, false);
        QCOMPARE(kxScenery::shownChoice(set), std::string("A"));
        const osg::AnimNodePtr film = kxAnimFixture::added(kxAnimFixture::clip("film", {}));
        kxAnimManager::the()->evaluateByFrame(film, 3, false, false, false);
        _stage->setVariant("Look", "B");
        kxAnimManager::the()->evaluateByFrame(film, 3, false, false, false);
        QCOMPARE(kxScenery::shownChoice(set), std::string("A"));
        kxAnimManager::the()->setCurrentFrame(7, true, false);
        // What the user chooses in between stays.
        _stage->setVariant("Look", "B");
        QVERIFY(kxSceneryEdits::setChoice(set, 2));
        kxAnimManager::the()->setCurrentFrame(8, true, false);
        QCOMPARE(kxScenery::shownChoice(set), std::string("C"));
        stack()->undo();
        QCOMPARE(kxScenery::shownChoice(set), std::string("A"));
    }

    void viewGoesToViewpoints()
    {
        for (const float fieldOfView : {kxCameraRig::FieldOfView, 60.0f})
        {
            clear();
            const kxViewCamera wanted = camera(70, fieldOfView);
            kxSceneryEdits::addViewpoint(wanted, 5, "V");
            auto* const service = kxKernelServiceFactory::the().getService<kxCameraService>();
            QCOMPARE(service->getViewpoints().value(0).getObjectId(),
                     kxScenery::all(Kind::Viewpoint)[0].getFieldContainerId());
            QSignalSpy spy(service, &kxCameraService::viewpointActivated);
            QVERIFY(_stage->showViewpoint("V").isEmpty());
            QCOMPARE(spy.count(), 1);
            const kxViewCamera shown = _view->viewCamera(1);
            QVERIFY((shown.eye() - wanted.eye()).length() < 1e-3f);
            QVERIFY(QVector3D::dotProduct(shown.forward(), wanted.forward()) > 0.99999f);
            QVERIFY(std::fabs(shown.fieldOfView - fieldOfView) < 0.01f);
            if (fieldOfView == kxCameraRig::FieldOfView)
                QVERIFY((_view->rig().pose().target - QVector3D(1, 2, 3)).length() < 1e-3f);
        }
    }

    void aClipIsSeenThroughItsOwnCameras()
    {
        const osg::NodePtr wide = kxSceneryEdits::addViewpoint(camera(30), 5, "Wide"),
                           other = kxSceneryEdits::addViewpoint(camera(80), 5, "Other"),
                           track = kxSceneryEdits::addCameraTrack({wide, other}, 2);
        kxAnimManager* const manager = kxAnimManager::the();
        const osg::AnimNodePtr clip =
            kxAnimFixture::clip("clip", {trigger("Wide", 3, Kind::Viewpoint),
                                         kxAnimFixture::clone(manager->getCameraTrackBlock(track), 5)});
        manager->addToClipStructure(clip);
        const auto seenAt = [&](double frame)
        {
            manager->evaluateByFrame(clip, frame, true, true, true);
            return osg::living<osg::Node>(_view->cameraNodeId());
        };
        QVERIFY(seenAt(125) == track && seenAt(80) == wide && seenAt(2) == osg::NullFC);
        const auto moment = [this] { return kxViewOverlay::moment(_view->cameraNodeId()); };
        QCOMPARE(moment(), QString("clip, frame 2"));
        seenAt(81);
        QCOMPARE(moment(), QString("clip, frame 81, through Wide"));
        // A camera that is chosen counts where the film has none, and while the film stands.
        _view->lookThrough(other.getFieldContainerId());
        QVERIFY(seenAt(2) == other && seenAt(125) == track);
        _view->lookThrough(other.getFieldContainerId());
        QVERIFY(_view->cameraNodeId() == other.getFieldContainerId() && seenAt(130) == track);
        manager->setCurrentFrame(12, true, false);
        QCOMPARE(_view->cameraNodeId(), other.getFieldContainerId());
        QCOMPARE(moment(), QString("Through Other"));
        // Who turns the view stands where the film was, and looks for themselves from then on.
        seenAt(125);
        const QVector3D eye = _view->viewCamera(1).eye();
        const kxCameraRig::Pose pose = _view->rig().poseOf(_view->viewCamera(1));
        kxLogModel::the().clear();
        _view->lookFrom(pose.yaw, pose.pitch);
        QVERIFY(!_view->isFilm() && kxLogged().join(' ').contains("left the film") && seenAt(80) == osg::NullFC);
        QVERIFY((_view->viewCamera(1).eye() - eye).length() < 1e-2f);
        QMenu* const menu = _view->findChild<QMenu*>("cameraMenu");
        Q_EMIT menu->aboutToShow();
        QAction* const film = menu->findChild<QAction*>("film");
        QVERIFY(film != nullptr && !film->isChecked());
        film->trigger();
        QVERIFY(_view->isFilm() && osg::living<osg::Node>(_view->cameraNodeId()) == wide);
        // So does whatever is played, but where it was switched off by hand.
        kxFramePlaybackParams params;
        params.end = 9;
        for (const bool isWanted : {true, false})
        {
            film->setChecked(!isWanted);
            film->trigger();
            QCOMPARE(_view->isFilm(), isWanted);
            _view->lookFrom(15, 0);
            QVERIFY(!_view->isFilm());
            kxFramePlayer::the()->start(params, true, this);
            kxFramePlayer::the()->stop(this);
            QCOMPARE(_view->isFilm(), isWanted);
        }
        clear();
        kxModuleRegistry::the().deliver(kxMessageId::NewScene);
        QVERIFY(_view->isFilm());
    }

    void cameraTracksPassTheirViewpoints()
    {
        kxSceneryEdits::Nodes viewpoints;
        for (const float yaw : {10.0f, 170.0f, -100.0f})
            viewpoints.push_back(kxSceneryEdits::addViewpoint(camera(yaw), 5));
        QVERIFY(kxSceneryEdits::addCameraTrack({viewpoints.front()}, 2) == osg::NullFC);
        QVERIFY(kxSceneryEdits::addCameraTrack(viewpoints, -1) == osg::NullFC);
        const osg::NodePtr track = kxSceneryEdits::addCameraTrack(viewpoints, 2);
        for (std::size_t i = 0; i < viewpoints.size(); ++i)
        {
            kxAnimManager::the()->setCurrentFrame(double(i) * 2 * kxAnimManager::the()->fps(), true, false);
            const kxViewCamera at = kxViewCamera::fromNode(track, 1), wanted = kxViewCamera::fromNode(viewpoints[i], 1);
            QVERIFY((at.eye() - wanted.eye()).length() < 1e-3f);
            QVERIFY(QVector3D::dotProduct(at.forward(), wanted.forward()) > 0.9999f);
        }
        const auto eyeAt = [](const osg::NodePtr& shown, double seconds)
        {
            kxAnimManager::the()->setCurrentFrame(seconds * kxAnimManager::the()->fps(), true, false);
            return kxViewCamera::fromNode(shown, 1).eye();
        };
        const QVector3D first = eyeAt(track, 0), second = eyeAt(track, 2);
        QVERIFY((eyeAt(track, 0.1) - first).length() < (second - first).length() / 60); // it eases in
        const QVector3D before = second - eyeAt(track, 1.95), after = eyeAt(track, 2.05) - second;
        QVERIFY((after - before).length() < after.length() / 10); // and goes on smoothly

        QVERIFY(_stage->playCameraTrack(track).isEmpty() && _stage->isPlaying());
        QCOMPARE(_view->cameraNodeId(), track.getFieldContainerId());
        const QVector3D eye = kxViewCamera::fromNode(track, 1).eye();
        _stage->stopAll();
        QVERIFY(!_stage->isPlaying() && kxViewCamera::fromNode(track, 1).eye() == eye); // stays where it is
        QVERIFY(_stage->playCameraTrack(track).isEmpty());
        const QSignalSpy changed(_stage.get(), &kxSceneryStage::changed);
        kxAnimEvaluator::the()->dequeue(kxAnimManager::the()->getCameraTrackBlock(track), false); // as at its end
        QVERIFY(!_stage->isPlaying() && changed.size() == 1);
        QVERIFY(!_stage->playCameraTrack(viewpoints.front()).isEmpty());
    }

    void theSceneReachesWhatRuns()
    {
        const osg::NodePtr tour = kxSceneryEdits::addSequence({{kxSequenceStep::Kind::Wait, "", "", 60}}, "Tour");
        QVERIFY(_stage->runner().start("Tour"));
        _stage->runner().update();
        kxSceneEdits::rename(tour, "Walk");
        kxScene::the()->flush();
        QCOMPARE(_stage->runner().running(), std::vector<std::string>{"Walk"});
        kxSceneryEdits::remove({tour}); // the undo stack keeps it
        kxScene::the()->flush();
        QVERIFY(_stage->runner().running().empty());

        const osg::AnimNodePtr spin =
            kxAnimFixture::block("Spin", {kxAnimFixture::curve("rotation", "Y", {{0, 0}, {2, 90}})});
        kxAnimManager::the()->addAnimation(addObject("Wheel"), spin);
        kxSceneryEdits::addSequence({{kxSequenceStep::Kind::PlayClip, "Spin", "", 0}}, "Tour");
        spin->setPostCycles(-1); // without end: nobody waits for it
        QVERIFY(_stage->runner().start("Tour"));
        _stage->runner().update();
        QVERIFY(_stage->runner().running().empty() && kxAnimEvaluator::the()->isPlaying(spin));
        spin->setPostCycles(2);
        QVERIFY(_stage->runner().start("Tour"));
        _stage->runner().update();
        QVERIFY(_stage->isPlaying());
        clear();
        QVERIFY(_stage->runner().running().empty() && kxScenery::all(Kind::Sequence).empty());
    }

private:
    static kxViewCamera camera(float yaw, float fieldOfView = kxCameraRig::FieldOfView)
    {
        kxCameraRig rig;
        rig.setPose({QVector3D(1, 2, 3), 5, yaw, 10});
        kxViewCamera camera = rig.camera(1, osg::BoxVolume());
        camera.fieldOfView = fieldOfView;
        return camera;
    }

    static osg::AnimNodePtr trigger(const char* name, float seconds, Kind kind)
    {
        return kxAnimFixture::trigger(name, seconds, kind == Kind::VariantSet, kind == Kind::Viewpoint);
    }

    std::unique_ptr<kxView3D> _view;
    std::unique_ptr<kxSceneryStage> _stage;
};

QTEST_MAIN(tst_kxSceneryStage)
#include "tst_kxSceneryStage.moc"
