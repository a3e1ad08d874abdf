#include <animation/kxFrameTime.h>
#include <animation/kxPlaybackClock.h>
#include <kxAnimEvaluator.h>
#include <osg/SceneCores.h>
#include <osg/Share.h>
#include <scene/CameraLight.h>
#include <scene/Scenery.h>
#include <scene/kxScenery.h>

#include <QtTest>

#include <kxAnimFixture.h>
#include <kxTable.h>

using namespace osg;

/// What is seen at a frame of a clip besides values, whatever was shown before.
class tst_kxFilm : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        f.clear();
        _sets.clear();
        _cameras.clear();
        for (const char* const name : {"Near", "Far", "Rig"})
        {
            const NodePtr camera = f.object(name);
            camera->setCore(Camera::create());
            _cameras[name] = f.added(camera, f.block(name, {f.curve("translation", "X", {{0, 1}, {2, 9}})}));
        }
        for (const char* const name : {"Wide", "Low"})
        {
            const NodePtr viewpoint = Node::create();
            viewpoint->setNodeName(name);
            viewpoint->setCore(Viewpoint::create());
            kxScene::the()->sceneryRoot()->addChild(viewpoint);
        }
        for (const char* const name : {"Door", "Lamp"})
        {
            const NodePtr set = f.object(name);
            const SwitchPtr core = Switch::create();
            set->setCore(core);
            core->setChoice(1);
            _sets.push_back(core);
            for (const char* const choice : {"a", "b", "c"})
            {
                const NodePtr child = Node::create();
                child->setNodeName(choice);
                set->addChild(child);
            }
        }
    }

    void whatIsSeenAtAFrame_data()
    {
        kxColumns<QString>("frames");
        // Frames of the film and what is seen there, as camera and the sets' choices. The bars: Near from 24 to 72, Far
        // above it from 48 to 96, Rig from 96 to 144 and switched off again by its end; triggers as below.
        kxRow(
            "played",
            "0 - 11 | 12 - 21 | 24 Near 21 | 36 Near 20 | 48 Far 20 | 95 Far 20 | 96 Rig 20 | 100 Rig 22 | 144 Rig 22 "
            "| 145 Low 22 | 170 Wide 22 | 240 Wide 22");
        kxRow("backwards", "240 Wide 22 | 145 Low 22 | 96 Rig 20 | 72 Far 20 | 47 Near 20 | 30 Near 21 | 3 - 11");
        kxRow("twice", "240 Wide 22 | 0 - 11 | 36 Near 20 | 240 Wide 22 | 0 - 11 | 36 Near 20");
        kxRow("at once", "145 Low 22");
        kxRow("beyond the end", "999 Wide 22");
    }

    void whatIsSeenAtAFrame()
    {
        QFETCH(QString, frames);
        const AnimNodePtr film = f.added(clip());
        for (const QString& frame : frames.split(" | "))
        {
            const double at = frame.section(' ', 0, 0).toDouble();
            QCOMPARE(QString::number(at) + ' ' + seenAt(film, at), frame);
        }
        kxAnimManager::the()->setCurrentFrame(7, false, true);
        QCOMPARE(seen(), QString("- 11"));
    }

    /// Moved, stretched, repeated and turned around inside of another clip.
    void nestedClips()
    {
        const AnimNodePtr inner = clip();
        inner->setOffset(Vec2f(5, 50));
        inner->setScale(0.5f);
        inner->setPostCycles(1);
        inner->setFlipped(true);
        const AnimNodePtr off = clip();
        off->setOffset(Vec2f(0, 400));
        off->setTravMask(0);
        const AnimNodePtr film = f.added(f.clip("outer", {inner, off}));
        const double length = 240 / 2.0; // frames of a pass
        const auto at = [&](double frame) { return seenAt(film, frame); };
        QCOMPARE(at(119), QString("- 11"));
        // Turned around, the end's triggers come first, and "Door" goes on from what it showed.
        QCOMPARE(at(120 + (240 - 160) / 2.0), QString("Wide 11"));
        QCOMPARE(at(120 + (240 - 90) / 2.0), QString("Far 22"));
        QCOMPARE(at(120 + (240 - 30) / 2.0), QString("Near 20"));
        QCOMPARE(at(120 + length - 1), QString("Low 00"));
        QCOMPARE(at(120 + length + (240 - 90) / 2.0), QString("Far 22"));
        QCOMPARE(at(119), QString("- 11"));
    }

    void anotherNameIsAnotherSet()
    {
        const AnimNodePtr film = f.added(clip());
        QCOMPARE(seenAt(film, 12), QString("- 21"));
        const NodePtr door = _sets[0]->getParents().front();
        door->setNodeName("Gate");
        QCOMPARE(seenAt(film, 12), QString("- 11"));
        door->setNodeName("Door");
        QCOMPARE(seenAt(film, 12), QString("- 21"));
    }

    /// Passes inside of passes are more than anybody can wait for.
    void cyclesMultiply()
    {
        AnimNodePtr film = clip();
        for (int i = 0; i < 5; ++i)
        {
            film->setPostCycles(100);
            film = f.clip("outer", {film});
        }
        QVERIFY(seenAt(f.added(film), 1e12) != "- 11");
    }

    /// What sequences choose and other clips show is gone at the next frame.
    void nothingIsLeftOfOthers()
    {
        const NodePtr box = f.object("Box");
        const AnimNodePtr slide = f.added(box, f.block("Slide", {f.curve("translation", "X", {{0, 3}, {2, 9}})}));
        const AnimNodePtr film = f.added(clip()), other = f.added(f.clip("other", {f.clone(slide, 1)}));
        slide->setTravMask(0);
        kxAnimManager::the()->setCurrentFrame(7, false, true);
        const auto choose = [this](std::size_t set, int choice)
        { kxAnimFixture::engine().film.choose(_sets[set], choice); };
        choose(1, 2);
        QCOMPARE(seen(), QString("- 12"));
        QCOMPARE(seenAt(film, 20), QString("- 21"));
        choose(0, 0);
        choose(1, 2);
        QCOMPARE(seenAt(film, 20), QString("- 21"));
        choose(1, 2);
        QCOMPARE(seenAt(other, 72), QString("- 11"));
        QCOMPARE(f.transform(box)->getTranslation().x(), 9.0f);
        QCOMPARE(seenAt(film, 20), QString("- 21"));
        QCOMPARE(f.transform(box)->getTranslation().x(), 0.0f);
    }

    /// The one that was started last has the say, whichever has just come to its next frame.
    void clipsAtOnce()
    {
        double now = 100;
        kxPlaybackClock::the().setSource([&now] { return now; });
        const auto at = [](double frame) { return float(kxFrameTime::seconds(frame, 24)); };
        const auto passes = [&](double frames)
        {
            now += at(frames);
            kxPlaybackClock::the().tick();
            return seen();
        };
        const NodePtr box = f.object("Box");
        const AnimNodePtr slide = f.added(box, f.block("Slide", {f.curve("translation", "X", {{0, 3}, {9, 9}})}));
        slide->setTravMask(0);
        const AnimNodePtr film = f.added(clip()),
                          over = f.added(
                              f.clip("over", {f.trigger("begin", 0), f.trigger("Door/a", at(24), true),
                                              f.trigger("Wide", at(36), false, true), f.trigger("end", at(48))})),
                          plain = f.added(f.clip("plain", {f.clone(slide, 0)}));
        kxAnimEvaluator* const evaluator = kxAnimEvaluator::the();
        kxAnimManager* const manager = kxAnimManager::the();
        for (const AnimNodePtr& played : {film, over, plain})
            evaluator->enqueue(played, true);
        QCOMPARE(passes(0), QString("- 11"));
        QCOMPARE(passes(20), QString("- 21")); // of the film
        QCOMPARE(passes(10), QString("Near 01"));
        QCOMPARE(passes(8), QString("Wide 00"));
        manager->evaluateByFrame(plain, 5, false, false, false); // shown beside
        QCOMPARE(seen(), QString("Wide 00"));
        evaluator->enqueue(film, true); // started last now
        QCOMPARE(passes(0), QString("Wide 01"));
        QCOMPARE(passes(12), QString("Wide 11")); // the other one has ended, and stays
        QCOMPARE(passes(14), QString("Near 11"));
        evaluator->dequeueAll();
        manager->setCurrentFrame(8, false, true);
        QCOMPARE(seen(), QString("- 11"));
        kxPlaybackClock::the().setSource(nullptr);
    }

    void whatSomebodyElseChoosesIsTheScenes()
    {
        const AnimNodePtr film = f.added(clip());
        const auto at = [&](double frame) { return seenAt(film, frame); };
        QCOMPARE(at(36), QString("Near 20"));
        _sets[1]->setChoice(2); // over what the film shows
        markChanged(_sets[1], Switch::ChoiceFieldMask);
        QCOMPARE(at(40), QString("Near 20")); // the film has it
        QCOMPARE(at(20), QString("- 22"));
        kxAnimEngine::of(*kxAnimManager::the()).film.releaseCamera();
        const osg::Share<Node> held(kxScenery::find(kxScenery::Kind::VariantSet, "Lamp"));
        kxScene::the()->root()->subChild(held.get());
        QCOMPARE(at(144).left(5), QString("Rig 2"));
        kxAnimManager::the()->clipStructureRoot()->subChild(film);
        QCOMPARE(seen().left(1), QString("-"));
    }

private:
    /// "Lamp" comes to "a" at 36; "Door" goes on by one at 12 and to "c" after 100, where "Lamp" does too.
    AnimNodePtr clip()
    {
        const AnimNodePtr near = f.clone(_cameras["Near"], 1, 0), far = f.clone(_cameras["Far"], 2, 1),
                          rig = f.clone(_cameras["Rig"], 4, 0), over = f.clone(_cameras["Rig"], 1, 9);
        over->setTravMask(0);
        const auto at = [](double frame) { return float(kxFrameTime::seconds(frame, 24)); };
        return f.clip("film", {near, far, rig, over, f.trigger("Door", at(12), true), f.trigger("Lamp/a", at(36), true),
                               f.trigger("Lamp/c", at(100), true), f.trigger("Door/c", at(100), true),
                               f.trigger("Low", at(110), false, true), f.trigger("Wide", at(170), false, true),
                               f.trigger("Nobody", at(180), false, true), f.trigger("Nothing/x", at(190), true),
                               f.trigger("begin", 0), f.trigger("end", at(240))});
    }
    QString seenAt(const AnimNodePtr& film, double frame) const
    {
        kxAnimManager::the()->evaluateByFrame(film, frame, false, false, false);
        return seen();
    }
    /// The camera's name, "-" for none, and the choices of the sets.
    QString seen() const
    {
        const NodePtr camera = kxAnimFixture::engine().film.camera();
        QString text = (camera == NullFC ? QString("-") : QString::fromStdString(camera->getNodeName())) + ' ';
        for (const SwitchPtr& set : _sets)
            text += QString::number(set->getChoice());
        return text;
    }

    kxAnimFixture f;
    std::vector<SwitchPtr> _sets;
    std::map<std::string, AnimNodePtr> _cameras;
};

QTEST_GUILESS_MAIN(tst_kxFilm)
#include "tst_kxFilm.moc"
