#include <animation/kxFramePlayerStatistics.h>
#include <animation/kxPlaybackClock.h>
#include <kxAnimEvaluator.h>
#include <kxAnimFixture.h>
#include <kxController.h>
#include <kxFramePlayer.h>
#include <kxMessageNames.h>
#include <kxTable.h>

using namespace osg;

namespace
{
double clockSeconds = 0;
QStringList messages;

/// A message as a text: its first letters and its value.
void note(const char* name, kxMessage& message)
{
    QString text = QLatin1String(name);
    const boost::any frame = message.get("frame"), user = message.get("user"), id = message.get("animNodeId");
    if (const double* const number = boost::any_cast<double>(&frame))
        text += QString(" %1").arg(*number);
    if (const int* const number = boost::any_cast<int>(&frame))
        text += QString(" %1").arg(*number);
    if (void* const* const pointer = boost::any_cast<void*>(&user))
        text += *pointer == nullptr ? QString(" none") : *pointer == &clockSeconds ? QString(" me") : QString(" other");
    if (!id.empty())
        text += boost::any_cast<unsigned int>(id) != 0 ? "" : " 0";
    messages << text;
}

const std::pair<const char*, kxController::Callback> Listeners[] = {
    {kxMessageName::CurrentFrameChanged, [](kxMessage& m) { note("frame", m); }},
    {kxMessageName::CurrentFullFrameChanged, [](kxMessage& m) { note("full", m); }},
    {kxMessageName::FinishedPlayingGlobal, [](kxMessage& m) { note("finished", m); }},
    {kxMessageName::FramePlayerFrameChanged, [](kxMessage& m) { note("own", m); }},
    {kxMessageName::FramePlayerLoopChanged, [](kxMessage& m) { note("loop", m); }},
    {kxMessageName::FramePlayerUserChanged, [](kxMessage& m) { note("user", m); }},
    {kxMessageName::DequeuedAnimation, [](kxMessage& m) { note("dequeued", m); }}};

void* const Me = &clockSeconds;

QString take()
{
    const QString text = messages.join(", ");
    messages.clear();
    return text;
}

void tickAt(double seconds)
{
    clockSeconds = seconds;
    kxPlaybackClock::the().tick();
}

/// Where the object is then.
float xAt(const NodePtr& object, double seconds)
{
    tickAt(seconds);
    return kxAnimFixture::transform(object)->getTranslation().x();
}

kxFramePlaybackParams params(double start, double end, double fps)
{
    kxFramePlaybackParams p;
    p.start = p.current = start;
    p.end = end;
    p.fps = fps;
    p.loop = false;
    p.subframes = false;
    return p;
}

constexpr auto manager = &kxAnimManager::the;
constexpr auto player = &kxFramePlayer::the;
} // namespace

class tst_kxPlayback : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        kxPlaybackClock::the().setSource([] { return clockSeconds; });
        for (const auto& [name, function] : Listeners)
            kxController::addCB(name, function);
    }

    void cleanupTestCase()
    {
        for (const auto& [name, function] : Listeners)
            kxController::subCB(name, function);
    }

    void init()
    {
        player()->stop(nullptr);
        f.clear();
        manager()->setCurrentFrame(0, true, true);
        messages.clear();
        clockSeconds = 100;
    }

    void announcedAndUnannouncedFrames()
    {
        const auto told = [](double frame, bool force)
        {
            manager()->setCurrentFrame(frame, force, true);
            return take();
        };
        QCOMPARE(told(3, false), QString("frame 3, full 3"));
        QCOMPARE(told(3.5, false), QString("frame 3.5"));
        QCOMPARE(told(3.5, false), QString());
        QCOMPARE(told(3.5, true), QString("frame 3.5, full 3"));
        manager()->setCurrentFrame(8, false, false);
        manager()->setCurrentFrameNoEvaluation(9, false);
        QCOMPARE(take(), QString());
        // The listeners still believe in 3.5.
        QCOMPARE(told(9, false), QString("frame 9, full 9"));
        QCOMPARE(told(NAN, true), QString());
        QCOMPARE(manager()->currentFrame(), 9.0);
        QCOMPARE(told(-0.5, false), QString("frame -0.5, full 0"));
    }

    void realTimeIsHeldBySkipping()
    {
        player()->start(params(0, 30, 10), false, Me);
        QCOMPARE(take(), QString("user me"));
        tickAt(100.001);
        tickAt(100.05);
        tickAt(100.1);
        tickAt(100.15);
        tickAt(100.3); // a slow frame: 2 is left out
        tickAt(101.05);
        // Frame 0 is current already.
        QCOMPARE(take(), QString("frame 1, full 1, frame 3, full 3, frame 10, full 10"));
        QCOMPARE(kxFramePlayerStatistics::last().framesShown, std::uint64_t(4));
        QCOMPARE(kxFramePlayerStatistics::last().framesDropped, std::uint64_t(7));
        tickAt(200);
        QCOMPARE(take(), QString("frame 30, full 30, finished, user none"));
        QVERIFY(!player()->isPlaying());
        tickAt(201);
        QCOMPARE(take(), QString());
    }

    void framesShown_data()
    {
        kxColumns<QPointF, double, QString, double, double, int, QString>("range", "current", "way", "fps", "interval",
                                                                          "ticks", "expected");
        const auto row = [](const char* name, QPointF range, double current, const char* way, double fps,
                            double interval, int ticks, const char* expected)
        { QTest::newRow(name) << range << current << QString(way) << fps << interval << ticks << QString(expected); };
        // A rate of -1 shows every frame at the scene's rate, however slow; ticks may come too early.
        row("every frame", {0, 3}, 0, "", -1, 0.02, 20, "own 0, own 1, own 2, own 3, finished, user none");
        row("every frame again", {0, 2}, 0, "loop", -1, 5, 5, "own 0, own 1, own 2, loop, own 0, own 1");
        row("reverse", {2, 5}, 5, "reverse", 10, 0.05, 10, "own 5, own 4, own 3, own 2, finished, user none");
        row("loop", {4, 6}, 4, "loop", 10, 0.1, 7, "own 4, own 5, own 6, loop, own 4, own 5, own 6, loop, own 4");
        row("many passes at once are one", {4, 5}, 4, "loop", 10, 99, 2, "own 4, loop, own 4");
        row("one frame goes on", {3, 3}, 3, "loop", 10, 1, 3, "own 3, loop, own 3, loop, own 3");
        // It begins inside the range, whose ends may come in the wrong order.
        row("inside", {20, 10}, 12, "", 24, 1, 1, "own 12");
        row("between frames", {20, 10}, 12.5, "", 24, 1, 1, "own 12.5");
        row("at the end", {20, 10}, 20, "", 24, 1, 1, "own 10");
        row("before", {20, 10}, 3, "", 24, 1, 1, "own 10");
        row("behind", {20, 10}, 99, "", 24, 1, 1, "own 10");
        row("reverse at the start", {20, 10}, 10, "reverse", 24, 1, 1, "own 20");
        row("reverse inside", {20, 10}, 12, "reverse", 24, 1, 1, "own 12");
    }

    void framesShown()
    {
        QFETCH(QPointF, range);
        QFETCH(double, current);
        QFETCH(QString, way);
        QFETCH(double, fps);
        QFETCH(double, interval);
        QFETCH(int, ticks);
        kxFramePlaybackParams p = params(range.x(), range.y(), fps);
        p.current = current;
        p.loop = way == "loop";
        p.reverse = way == "reverse";
        player()->start(p, true, Me);
        take();
        for (int i = 0; i < ticks; ++i)
            tickAt(100.001 + i * interval);
        QTEST(take(), "expected");
    }

    void badParamsAreRefused()
    {
        for (const double fps : {0.0, -2.0, double(NAN), double(INFINITY)})
            player()->start(params(0, 10, fps), false, Me);
        player()->start(params(NAN, 10, 24), false, Me);
        player()->start(params(0, INFINITY, 24), false, Me);
        QVERIFY(!player()->isPlaying());
        for (const double fps : {0.0, -1.0, -2.0, double(NAN), double(INFINITY)})
            manager()->setFPS(fps);
        for (const double fps : {0.0, -2.0, double(NAN)})
            manager()->setPlaybackFPS(fps);
        QCOMPARE(manager()->fps(), 24.0);
        QVERIFY(manager()->playbackFPS() == 24.0);
    }

    void ownersTakeOver()
    {
        int other = 0;
        player()->start(params(0, 10, 24), false, Me);
        player()->start(params(0, 10, 24), false, Me);
        QCOMPARE(take(), QString("user me"));
        player()->start(params(0, 10, 24), true, &other);
        QCOMPARE(take(), QString("user other"));
        player()->stop(Me); // not its playback any more
        QVERIFY(player()->isPlaying());
        QCOMPARE(player()->owner(), static_cast<void*>(&other));
        player()->stop(&other);
        QCOMPARE(take(), QString("finished, user none"));
        player()->stop(nullptr);
        QCOMPARE(take(), QString());
    }

    void aHandlerMayStop()
    {
        const kxController::Callback stopper = [](kxMessage&) { kxFramePlayer::the()->stop(nullptr); };
        kxFramePlaybackParams p = params(0, 2, 10);
        p.loop = true;
        for (const char* name : {kxMessageName::FramePlayerFrameChanged, kxMessageName::FramePlayerLoopChanged})
        {
            kxController::addCB(name, stopper);
            player()->start(p, true, Me);
            for (int i = 0; i < 10; ++i)
                tickAt(clockSeconds + 0.1);
            kxController::subCB(name, stopper);
            QVERIFY(!player()->isPlaying());
            QCOMPARE(messages.count("finished"), 1);
            take();
        }
    }

    void queuePlaysInItsOwnTime()
    {
        QStringList fired;
        kxAnimFixture::engine().triggers.setHandler([&](const std::string& name, kxTriggers::Kind)
                                                    { fired << QString::fromStdString(name); });
        const NodePtr object = f.object();
        const AnimNodePtr block = f.added(object, f.block("door", {f.curve("translation", "X", {{0, 0}, {2, 20}})}));
        block->setTravMask(0);
        const AnimNodePtr clone = f.clone(block, 5);
        clone->setTravMask(Node::Active);
        const AnimNodePtr clip = f.added(f.clip("opening", {f.trigger("start", 5), clone}));
        manager()->enqueue(manager()->find("opening"), true);
        QVERIFY(manager()->isPlaying("opening"));
        QVERIFY(clip->getPlaying());
        QCOMPARE(xAt(object, 100.5), 5.0f);
        QCOMPARE(fired, QStringList("start"));
        QCOMPARE(xAt(object, 101.5), 15.0f);
        manager()->enqueue(clip, false); // plays already
        QCOMPARE(xAt(object, 101.75), 17.5f);
        manager()->enqueue(clip, true);
        QCOMPARE(xAt(object, 102), 2.5f);
        QCOMPARE(take(), QString());
        QCOMPARE(xAt(object, 105), 20.0f); // the end stays
        QCOMPARE(take(), QString("dequeued"));
        QVERIFY(!manager()->isPlaying("opening"));
        QVERIFY(!clip->getPlaying());
        QCOMPARE(fired.size(), 2);
        kxAnimFixture::engine().triggers.setHandler(nullptr);
    }

    void queueIsStoppedPausedAndReset()
    {
        const NodePtr object = f.object();
        const AnimNodePtr block = f.added(object, f.block("block", {f.curve("translation", "X", {{0, 3}, {10, 103}})}));
        block->setTravMask(0);
        manager()->enqueue(block, true);
        tickAt(101);
        manager()->pause(block, true);
        QCOMPARE(xAt(object, 104), 13.0f);
        manager()->pause(block, false);
        AnimNodePtr::dcast(block->getChild(0))->setPlaying(true); // said, but not so
        QVERIFY(!kxAnimEvaluator::the()->isPlaying(AnimNodePtr::dcast(block->getChild(0))));
        QCOMPARE(xAt(object, 105), 23.0f);
        manager()->pause(block, true);
        tickAt(108);
        manager()->enqueue(block, false); // plays on where it was
        QCOMPARE(xAt(object, 109), 33.0f);
        manager()->reset(block, false);
        QCOMPARE(f.transform(object)->getTranslation().x(), 3.0f);
        QVERIFY(kxAnimEvaluator::the()->isPlaying(block));
        manager()->reset(block, true);
        QVERIFY(!kxAnimEvaluator::the()->isPlaying(block));
        QCOMPARE(take(), QString("dequeued"));
        block->setPostCycles(-1);
        f.changed(block, AnimNodeBase::PostCyclesFieldMask);
        manager()->enqueue(block, true);
        tickAt(1006.5);
        QVERIFY(manager()->isPlaying("block")); // endless
        manager()->dequeueAll();
        QCOMPARE(take(), QString("dequeued"));
        manager()->addToClipStructure(f.clip("empty", {}));
        manager()->enqueue(manager()->findClip("empty"), true); // nothing to play
        QVERIFY(!manager()->isPlaying("empty"));
        // What dies is taken out, once.
        manager()->enqueue(block, true);
        tickAt(1007);
        kxScene::the()->root()->subChild(object);
        tickAt(1008);
        QCOMPARE(take(), QString("dequeued"));
        tickAt(1009);
        QCOMPARE(take(), QString());
    }

    void theClockTicksByItself()
    {
        kxPlaybackClock::the().setSource(nullptr);
        const double begin = kxPlaybackClock::the().seconds();
        player()->start(params(0, 3600, 24), true, Me);
        QTRY_VERIFY(messages.contains("own 1"));
        QVERIFY(kxPlaybackClock::the().seconds() - begin < 60);
        kxPlaybackClock::the().setSource([] { return clockSeconds; });
    }

private:
    kxAnimFixture f;
};

QTEST_GUILESS_MAIN(tst_kxPlayback)
#include "tst_kxPlayback.moc"
