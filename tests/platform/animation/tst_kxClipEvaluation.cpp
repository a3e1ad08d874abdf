#include <kxAnimEvaluator.h>
#include <kxAnimFixture.h>
#include <kxMarks.h>
#include <kxTable.h>
#include <osg/Share.h>

#include <optional>

using namespace osg;

namespace
{
constexpr auto manager = &kxAnimManager::the;

/// An object with an inactive block whose X goes from `low` to `low` + 24 in a second: what a clip holds clones of.
struct Source
{
    explicit Source(float low) : block(another(low)) {}
    /// One more block on the object.
    AnimNodePtr another(float low, float length = 1) const
    {
        const AnimNodePtr curve = kxAnimFixture::curve("translation", "X", {{0, low}, {length, low + 24 * length}});
        return kxAnimFixture::added(object, kxAnimFixture::block("block", {curve}));
    }
    float x() const { return kxAnimFixture::transform(object)->getTranslation().x(); }

    const NodePtr object = kxAnimFixture::object();
    const AnimNodePtr block;
};

float shown(const Source& source, const AnimNodePtr& clip, double frame)
{
    manager()->evaluateByFrame(clip, frame, false, false, false);
    return source.x();
}

/// What fired, as a text: "s:name v:name".
struct Fired
{
    explicit Fired(kxTriggers& of = kxAnimFixture::engine().triggers) : triggers(of)
    {
        triggers.setHandler([this](const std::string& name, kxTriggers::Kind kind)
                            { text += QString("%1%2 ").arg("spv"[int(kind)]).arg(QString::fromStdString(name)); });
    }
    ~Fired() { triggers.setHandler(nullptr); }
    QString take() { return std::exchange(text, QString()).trimmed(); }
    QString pass(const AnimNodePtr& clip, double frame)
    {
        manager()->evaluateByFrame(clip, frame, false, true, false);
        return take();
    }
    kxTriggers& triggers;
    std::optional<kxTriggers::Playing> playing{std::in_place, triggers};
    QString text;
};

} // namespace

class tst_kxClipEvaluation : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { f.clear(); }

    ///        0    1    2    3    4    5    6
    ///   a         |===|
    ///   b                   |==========|
    void whoHoldsTheTimeWins()
    {
        const Source s(100);
        const AnimNodePtr other = s.another(500, 2);
        // The order of children changes nothing while there is no tie.
        const AnimNodePtr turned = f.clip("turned", {f.clone(other, 3), f.clone(s.block, 1)});
        for (const AnimNodePtr& clip : {f.clip("clip", {f.clone(s.block, 1), f.clone(other, 3)}), turned})
        {
            manager()->addToClipStructure(clip);
            QCOMPARE(shown(s, clip, 0), 100.0f);  // the first gives its start
            QCOMPARE(shown(s, clip, 36), 112.0f); // inside the first
            QCOMPARE(shown(s, clip, 60), 124.0f); // the first has ended and holds
            QCOMPARE(shown(s, clip, 72), 500.0f); // the second begins
            QCOMPARE(shown(s, clip, 96), 524.0f);
            QCOMPARE(shown(s, clip, 1000), 548.0f);
        }
    }

    void tiesGoToTheHigherTrackThenTheLaterChild()
    {
        const Source s(100);
        const AnimNodePtr other = s.another(500);
        const AnimNodePtr later = f.clip("later", {f.clone(s.block, 0), f.clone(other, 0)});
        const AnimNodePtr higher = f.clip("higher", {f.clone(s.block, 0, 2), f.clone(other, 0, 1)});
        // Where one ends as the other begins both hold the time.
        const AnimNodePtr meeting = f.clip("meeting", {f.clone(s.block, 0, 2), f.clone(other, 1, 1)});
        for (const AnimNodePtr& clip : {later, higher, meeting})
            manager()->addToClipStructure(clip);
        for (const double frame : {-5.0, 0.0, 24.0, 99.0})
        {
            QVERIFY(shown(s, later, frame) >= 500);
            QVERIFY(shown(s, higher, frame) < 500);
        }
        QCOMPARE(shown(s, meeting, 24), 124.0f);
    }

    void inactiveChildrenDontCount()
    {
        const Source s(100);
        const AnimNodePtr on = f.clone(s.block, 0), off = f.clone(s.another(500), 0, 1);
        off->setTravMask(0);
        const AnimNodePtr clip = f.added(f.clip("clip", {on, off}));
        clip->setTravMask(0); // asked for by name, it plays all the same
        QCOMPARE(shown(s, clip, 12), 112.0f);
        manager()->setTreeActive(off, true);
        QCOMPARE(shown(s, clip, 12), 512.0f);
        manager()->setTreeActive(off, false);
        manager()->setTreeActive(on, false);
        QCOMPARE(shown(s, clip, 3), 512.0f); // nobody drives the channel: it stays
    }

    /// An inner clip of half speed, twice, flipped, inside a clip that begins at 10 seconds.
    void nestedCyclesAndFlips()
    {
        const Source s(100);
        const AnimNodePtr inner = f.clip("inner", {f.clone(s.block, 0)});
        inner->setScale(2);
        inner->setPostCycles(1);
        inner->setFlipped(true);
        const AnimNodePtr outer = f.added(f.clip("outer", {inner}));
        outer->setOffset(Vec2f(10, 0));
        const auto at = [&](double seconds) { return shown(s, outer, seconds * 24); };
        QCOMPARE(at(0), 124.0f);
        QCOMPARE(at(10.5), 118.0f);
        QCOMPARE(at(12), 124.0f); // the second pass begins
        QCOMPARE(at(13), 112.0f);
        QCOMPARE(at(14), 100.0f);
        QCOMPARE(at(50), 100.0f);
        // The inner clip by itself: a frame is one of the root's time.
        QCOMPARE(shown(s, inner, 10.5 * 24), 118.0f);
        inner->setPostCycles(-1);
        f.changed(inner, AnimNodeBase::PostCyclesFieldMask);
        QCOMPARE(at(1000.5), 118.0f);
        inner->setPostCycles(0);
        inner->setFlipped(false);
        inner->setUsePlayRange(true);
        inner->setPlayRange(Pnt2f(0.25f, 0.75f));
        f.changed(inner, AnimNodeBase::UsePlayRangeFieldMask | AnimNodeBase::PostCyclesFieldMask);
        QCOMPARE(at(0), 106.0f);
        QCOMPARE(at(11), 112.0f);
        QCOMPARE(at(50), 118.0f);
    }

    void sharedBlocksDriveEveryObject()
    {
        const Source s(100);
        const NodePtr second = f.object();
        manager()->addAnimation(second, cloneAnimTree(s.block, true));
        const AnimNodePtr clip = f.added(f.clip("clip", {f.clone(s.block, 0)}));
        QCOMPARE(shown(s, clip, 6), 106.0f);
        QCOMPARE(f.transform(second)->getTranslation().x(), 106.0f);
        // Under an object a block moves that object alone.
        QCOMPARE(shown(s, s.block, 12), 112.0f);
        QCOMPARE(f.transform(second)->getTranslation().x(), 106.0f);
        const AnimCurvePtr curve = AnimCurvePtr::dcast(s.block->getChild(0)->getCore());
        FieldContainerPtr target;
        std::vector<FieldContainerPtr> aims;
        QVERIFY(kxAnimEvaluator::the()->computeAim(curve, second, target, aims));
        QVERIFY(target == second->getCore());
        QCOMPARE(aims.size(), std::size_t(2));
        QVERIFY(kxAnimEvaluator::the()->getFirstAim(curve) == s.object);
        QCOMPARE(manager()->blockSceneRefCount(s.block), 2u);

        // An object that only the undo stack holds is no aim and counts for nothing, until it comes back.
        const NodePtr root = kxScene::the()->root();
        const osg::Share<Node> held(s.object);
        root->subChild(s.object);
        QCOMPARE(manager()->blockSceneRefCount(s.block), 1u);
        QVERIFY(kxAnimEvaluator::the()->getFirstAim(curve) == second);
        kxAnimEvaluator::the()->computeAim(curve, second, target, aims);
        QCOMPARE(aims, std::vector<FieldContainerPtr>({second}));
        root->subChild(second);
        root->addChild(s.object);
        QVERIFY(manager()->findFirstParent(curve) == s.object);
    }

    void structureChangesAreSeen()
    {
        const Source s(100);
        const AnimNodePtr clone = f.clone(s.block, 0), clip = f.added(f.clip("clip", {clone}));
        QCOMPARE(shown(s, clip, 6), 106.0f);
        clone->moveBy(0.25f, 0);
        f.changed(clone, AnimNodeBase::OffsetFieldMask);
        QCOMPARE(shown(s, clip, 12), 106.0f);
        const AnimCurvePtr curve = AnimCurvePtr::dcast(s.block->getChild(0)->getCore());
        curve->clear();
        markChanged(curve, AnimCurveBase::ControlPointsFieldMask);
        QCOMPARE(shown(s, clip, 6), 0.0f); // no key: the channel has its own value
        curve->addPoint(Pnt2f(0, 7), Vec2f(), Vec2f(), 1, 1, true, true);
        markChanged(curve, AnimCurveBase::ControlPointsFieldMask);
        QCOMPARE(shown(s, clip, 6), 7.0f);
        clip->subChild(clone); // it dies
        f.changed(clip, Node::ChildrenFieldMask);
        kxAnimFixture::transform(s.object)->setTranslation(Vec3f(1, 2, 3));
        QCOMPARE(shown(s, clip, 6), 1.0f);
        // The object goes, and with it the block: the clip evaluates what is left.
        kxScene::the()->root()->subChild(s.object); // and nobody says so
        manager()->evaluateByFrame(clip, 3, false, true, true);
    }

    void theSceneTakesOverAgain()
    {
        const Source driven(0), idle(50);
        idle.block->setTravMask(0);
        kxAnimFixture::transform(idle.object)->setTranslation(Vec3f(3, 0, 0));
        const AnimNodePtr clip = f.added(f.clip("clip", {f.clone(driven.block, 2), f.clone(idle.block, 2)}));
        clip->getChild(1)->setTravMask(Node::Active);
        manager()->setCurrentFrame(5, false, false);
        QCOMPARE(driven.x(), 5.0f);
        QCOMPARE(shown(driven, clip, 60), 12.0f);
        QCOMPARE(idle.x(), 62.0f);
        float rest = 0;
        QVERIFY(f.engine().rest.get(idle.object->getCore()->getId(), "translation", 0, rest));
        QCOMPARE(rest, 3.0f);
        manager()->setCurrentFrame(5, false, false); // the current frame, but not what is shown
        QCOMPARE(driven.x(), 5.0f);
        QCOMPARE(idle.x(), 3.0f);
        manager()->setCurrentFrameNoEvaluation(9, false);
        manager()->setCurrentFrame(9, false, false);
        QCOMPARE(driven.x(), 9.0f);

        // A clip that leaves the scene takes along what it shows; the frame is the timeline's again.
        manager()->setCurrentFrameNoEvaluation(60, false);
        QCOMPARE(shown(driven, clip, 60), 12.0f);
        manager()->reevaluateAnimations(false);
        QCOMPARE(driven.x(), 12.0f);
        // After an edit it goes on being shown, and what it doesn't drive stays at the timeline's frame.
        const Source other(0);
        for (const bool force : {false, true})
        {
            manager()->reevaluateAnimations(force);
            QVERIFY(driven.x() == 12 && idle.x() == 62 && other.x() == 9);
        }
        const Share<AnimNode> held(clip);
        manager()->clipStructureRoot()->subChild(clip);
        manager()->reevaluateAnimations(false);
        QCOMPARE(driven.x(), 9.0f);
        QCOMPARE(manager()->currentFrame(), 9.0);
    }

    void triggersFireOnceInPlayingDirection()
    {
        Fired fired;
        const AnimNodePtr off = f.trigger("off", 1.5f);
        off->setTravMask(0);
        const AnimNodePtr clip = f.added(f.clip("clip", {f.trigger("c", 2), f.trigger("a", 0), f.trigger("b", 1, true),
                                                         f.trigger("e", 3, false, true), off}));
        clip->setTravMask(0);                         // asked for by name, it fires all the same
        QCOMPARE(fired.pass(clip, 0), QString("sa")); // the evaluation begins on it
        QCOMPARE(fired.pass(clip, 0), QString());     // once
        fired.pass(clip, 12);
        QCOMPARE(fired.pass(clip, 24), QString("vb"));
        QCOMPARE(fired.pass(clip, 24), QString());
        QCOMPARE(fired.pass(clip, 24.5), QString());
        QCOMPARE(fired.pass(clip, 72), QString("sc pe"));
        QCOMPARE(fired.pass(clip, 12), QString("sc vb")); // backwards; where it was is not passed again
        QCOMPARE(fired.pass(clip, 0), QString("sa"));
        // A loop: on to the end, then anew at the start.
        fired.pass(clip, 71);
        QCOMPARE(fired.pass(clip, 72), QString("pe"));
        clip->setLastEvaluationTime(0);
        QCOMPARE(fired.pass(clip, 0), QString("sa"));
    }

    void triggersInNestedCycles_data()
    {
        kxColumns<int, bool, double, double, QString, float>("cycles", "flipped", "from", "to", "expected", "lead");
        // Inner time 0 to 2 with a trigger at each end and one at 0.5, all later by the lead, in an outer clip from
        // second 10 on.
        QTest::newRow("three passes") << 2 << false << 9.0 << 99.0 << "s0 sh s2 s0 sh s2 s0 sh s2" << 0.0f;
        QTest::newRow("parts of two passes") << 2 << false << 11.0 << 13.0 << "s2 s0 sh" << 0.0f;
        QTest::newRow("backwards") << 2 << false << 13.0 << 11.0 << "sh s0 s2" << 0.0f;
        QTest::newRow("flipped") << 1 << true << 9.0 << 13.0 << "s2 sh s0 s2" << 0.0f;
        QTest::newRow("endless") << -1 << false << 1010.2 << 1012.2 << "sh s2 s0" << 0.0f;
        QTest::newRow("nothing on the way") << 2 << false << 10.6 << 11.9 << "" << 0.0f;
        QTest::newRow("that begin later") << 1 << false << 12.0 << 16.0 << "s0 sh s2 s0 sh" << 3.0f;
        QTest::newRow("flipped, that begin later") << 1 << true << 12.0 << 16.0 << "s2 sh s0 s2" << 3.0f;
        QTest::newRow("flipped and backwards, that begin later") << 0 << true << 16.0 << 14.0 << "s0 sh" << 3.0f;
    }

    void triggersInNestedCycles()
    {
        QFETCH(int, cycles);
        QFETCH(bool, flipped);
        QFETCH(double, from);
        QFETCH(double, to);
        QFETCH(float, lead);
        kxTriggers triggers;
        Fired fired(triggers);
        const AnimNodePtr inner =
            f.clip("inner", {f.trigger("0", lead), f.trigger("h", lead + 0.5f), f.trigger("2", lead + 2)});
        inner->setPostCycles(cycles);
        inner->setFlipped(flipped);
        const AnimNodePtr outer = f.added(f.clip("outer", {inner}));
        inner->setOffset(Vec2f(10, 0));
        triggers.pass(outer, from, to);
        QTEST(fired.take(), "expected");
    }

    void blockedTriggersStaySilent()
    {
        Fired fired;
        const AnimNodePtr clip = f.added(f.clip("clip", {f.trigger("a", 0), f.trigger("b", 1), f.trigger("c", 2)}));
        fired.pass(clip, 48);
        // As "go to the start" does it, and play after that.
        kxAnimEvaluator::the()->blockSequenceEvaluation(true);
        fired.pass(clip, 0);
        kxAnimEvaluator::the()->blockSequenceEvaluation(false);
        QCOMPARE(fired.take(), QString());
        QCOMPARE(fired.pass(clip, 0), QString("sa"));
        QCOMPARE(fired.pass(clip, 30), QString("sb"));
        // Without triggers asked for, the way isn't remembered either.
        manager()->evaluateByFrame(clip, 60, false, false, false);
        QCOMPARE(fired.pass(clip, 40), QString());
        const kxMarks marks;
        manager()->evaluateByFrame(clip, 42, false, false, true);
        QVERIFY(marks.has(clip)); // its place is shown elsewhere too
    }

    void sequencesFireWhereSomethingPlays()
    {
        Fired fired;
        const AnimNodePtr clip =
            f.added(f.clip("clip", {f.trigger("a", 1), f.trigger("b", 1, false, true), f.trigger("c", 2, true)}));
        for (const auto& [plays, frame, expected] :
             {std::make_tuple(false, 30, "pb"), {false, 60, "vc"}, {false, 24, "vc pb"}, {true, 24, "sa"}})
        {
            fired.playing.reset();
            if (plays)
                fired.playing.emplace(fired.triggers);
            QCOMPARE(fired.pass(clip, frame), QString(expected));
        }
    }

private:
    kxAnimFixture f;
};

QTEST_GUILESS_MAIN(tst_kxClipEvaluation)
#include "tst_kxClipEvaluation.moc"
