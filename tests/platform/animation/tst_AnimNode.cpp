#include <QtTest>

#include <animation/kxNodeTime.h>
#include <kxAnimFixture.h>
#include <kxTable.h>

#include <cmath>
#include <random>

using namespace osg;

class tst_AnimNode : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    /// A curve from 1 to 3 in a node at 10, scale 2: content [1, 3] lies at [12, 16].
    void contentTime_data()
    {
        kxColumns<int, bool>("cycles", "flipped");
        QTest::addColumn<QPointF>("range"); // null: none
        kxColumns<double, double>("time", "expected");
        const QPointF none;
        QTest::newRow("inside") << 0 << false << none << 13.0 << 1.5;
        QTest::newRow("before runs on") << 0 << false << none << 8.0 << -1.0;
        QTest::newRow("behind runs on") << 0 << false << none << 20.0 << 5.0;
        QTest::newRow("flipped") << 0 << true << none << 13.0 << 2.5;
        QTest::newRow("flipped before runs on behind") << 0 << true << none << 8.0 << 5.0;
        QTest::newRow("second pass") << 2 << false << none << 17.0 << 1.5;
        QTest::newRow("border of passes is a start") << 2 << false << none << 16.0 << 1.0;
        QTest::newRow("short of a border by rounding") << 2 << false << none << 16 - 1.0e-6 << 1.0;
        QTest::newRow("end of the last pass") << 2 << false << none << 24.0 << 3.0;
        QTest::newRow("behind the last pass") << 2 << false << none << 26.0 << 4.0;
        QTest::newRow("before the first pass") << 2 << false << none << 8.0 << -1.0;
        QTest::newRow("without end") << -1 << false << none << 1001.0 << 1.5;
        QTest::newRow("flipped second pass") << 1 << true << none << 17.0 << 2.5;
        QTest::newRow("range holds its start") << 0 << false << QPointF(1.5, 2.5) << 12.0 << 1.5;
        QTest::newRow("range holds its end") << 0 << false << QPointF(1.5, 2.5) << 20.0 << 2.5;
        QTest::newRow("range is mirrored in itself") << 0 << true << QPointF(1.5, 2) << 13.5 << 1.75;
        QTest::newRow("range repeats") << 1 << false << QPointF(1, 2) << 15.0 << 1.5;
        QTest::newRow("range outside the content") << 0 << false << QPointF(5, 9) << 13.0 << 3.0;
    }

    void contentTime()
    {
        QFETCH(int, cycles);
        QFETCH(bool, flipped);
        QFETCH(QPointF, range);
        QFETCH(double, time);
        QFETCH(double, expected);
        kxAnimFixture f;
        const AnimNodePtr node = f.block("block", {f.curve("translation", "X", {{1, 0}, {3, 1}})});
        node->addRef();
        node->setOffset(Vec2f(10, 0));
        node->setScale(2);
        node->setPostCycles(cycles);
        node->setFlipped(flipped);
        node->setUsePlayRange(!range.isNull());
        node->setPlayRange(Pnt2f(float(range.x()), float(range.y())));
        QCOMPARE(kxNodeTime::contentTime(*node, time, 4.0e-6), expected);
        node->subRef();
    }

    void extents()
    {
        kxAnimFixture f;
        const AnimNodePtr empty = f.curve("scale", "X", {});
        const AnimNodePtr block = f.block("block", {f.curve("translation", "X", {{1, 0}, {3, 1}}), empty});
        const AnimNodePtr trigger = f.group<AnimSequenceBase>("trigger", {});
        const AnimNodePtr clip = f.clip("clip", {block, trigger, f.clip("empty", {})});
        clip->addRef();
        block->setOffset(Vec2f(10, 0));
        block->setScale(2);
        block->setPostCycles(3);
        trigger->setOffset(Vec2f(40, 0));
        clip->setOffset(Vec2f(100, 0));
        clip->setScale(0.5f);
        float start = 0, end = 0;
        block->getBounds(start, end);
        QCOMPARE(QPointF(start, end), QPointF(12, 28));
        clip->getBounds(start, end);
        QCOMPARE(QPointF(start, end), QPointF(106, 120));
        block->setPostCycles(-1);
        block->getBounds(start, end);
        QCOMPARE(QPointF(start, end), QPointF(12, 16)); // endless counts as one pass
        double low = 0, high = 0;
        QVERIFY(kxNodeTime::extent(*block, low, high));
        QVERIFY(std::isinf(high));
        BoxVolume volume;
        block->getWorldVolume(volume);
        Pnt3f minimum, maximum;
        volume.getBounds(minimum, maximum);
        QCOMPARE(QPointF(minimum.x(), maximum.x()), QPointF(106, 108));
        empty->setOffset(Vec2f(-7, 0));
        empty->getBounds(start, end);
        QCOMPARE(QPointF(start, end), QPointF(-7, -7));
        QVERIFY(!empty->getContentExtent(start, end));
        clip->subRef();
    }

    void extentsFollowChangesBelow()
    {
        kxAnimFixture f;
        const AnimNodePtr curve = f.curve("translation", "X", {{0, 0}, {1, 1}});
        const AnimNodePtr block = f.block("block", {curve}), clone = f.clone(block, 5);
        const AnimNodePtr clip = f.clip("clip", {f.clip("inner", {clone})});
        block->addRef();
        clip->addRef();
        const auto end = [](const AnimNodePtr& node)
        {
            float s = 0, e = 0;
            node->getBounds(s, e);
            return e;
        };
        QCOMPARE(end(clip), 6.0f);
        f.curveOf(curve)->addPoint(Pnt2f(4, 0), Vec2f(), Vec2f(), 1, 1, true, true);
        f.keysChanged(curve); // under the object; the clone shares the core
        QCOMPARE(end(block), 4.0f);
        QCOMPARE(end(clip), 9.0f);
        clone->setScale(2);
        f.changed(clone, AnimNodeBase::ScaleFieldMask);
        QCOMPARE(end(clip), 13.0f);
        const AnimNodePtr inner = AnimNodePtr::dcast(clip->getChild(0));
        const AnimNodePtr late = f.clone(block, 50);
        inner->addChild(late);
        f.changed(inner, Node::ChildrenFieldMask);
        QCOMPARE(end(clip), 54.0f);
        inner->subChild(late);
        f.changed(inner, Node::ChildrenFieldMask);
        QCOMPARE(end(clip), 13.0f);
        clip->subRef();
        block->subRef();
    }

    void extentsFollowMutedChanges()
    {
        kxAnimFixture f;
        const AnimNodePtr curve = f.curve("translation", "X", {{0, 0}, {1, 1}});
        const AnimNodePtr block = f.block("block", {curve});
        block->addRef();
        float start = 0, end = 0;
        block->getBounds(start, end);
        FieldContainerPtr::_ignore_change = true;
        f.curveOf(curve)->subPoint(0);
        f.keysChanged(curve);
        curve->setOffset(Vec2f(3, 0));
        f.changed(curve, AnimNodeBase::OffsetFieldMask);
        FieldContainerPtr::_ignore_change = false;
        block->getBounds(start, end);
        QCOMPARE(QPointF(start, end), QPointF(4, 4));
        block->subRef();
    }

    /// What a bar shows and what a drag writes agree at any nesting.
    void movingAndScalingAgreeWithWhatIsShown()
    {
        kxAnimFixture f;
        std::mt19937 random(4);
        const auto number = [&](float low, float high) { return low + (high - low) * float(random() % 1000) / 1000; };
        for (int i = 0; i < 200; ++i)
        {
            const AnimNodePtr inner = f.block("block", {f.curve("translation", "X", {{1, 0}, {3, 1}})});
            const AnimNodePtr outer = f.clip("outer", {f.clip("middle", {inner})});
            outer->addRef();
            for (NodePtr node = inner; node != NullFC; node = node->getParent())
            {
                AnimNodePtr::dcast(node)->setOffset(Vec2f(number(-5, 5), 0));
                AnimNodePtr::dcast(node)->setScale(number(0.25f, 4));
            }
            const auto shown = [&]
            {
                BoxVolume volume;
                inner->getWorldVolume(volume);
                Pnt3f minimum, maximum;
                volume.getBounds(minimum, maximum);
                return QPointF(minimum.x(), maximum.x());
            };
            const QPointF before = shown();
            const float move = number(-9, 9), factor = number(0.1f, 5);
            inner->moveBy(move, 50);
            const QPointF moved = shown();
            QVERIFY(std::abs(moved.x() - before.x() - move) < 1.0e-3);
            QVERIFY(std::abs(moved.y() - before.y() - move) < 1.0e-3);
            QCOMPARE(inner->getOffset().y(), 50.0f);
            inner->scaleBy(factor, float(moved.x()));
            QVERIFY(std::abs(shown().x() - moved.x()) < 1.0e-3);
            QVERIFY(std::abs((shown().y() - shown().x()) / (moved.y() - moved.x()) - factor) < 1.0e-3 * factor);
            outer->subRef();
        }
    }

    void badNumbersAreRefused()
    {
        kxAnimFixture f;
        const AnimNodePtr node = AnimNodeBase::create();
        node->addRef();
        for (const float bad : {0.0f, -1.0f, float(NAN), float(INFINITY)})
        {
            node->setScale(bad);
            node->scaleBy(bad, 0);
        }
        node->scaleBy(2, NAN);
        node->scaleBy(1.0e-44f, 0); // a scale that small can't be divided by
        node->moveBy(NAN, 0);
        node->moveBy(0, INFINITY);
        QCOMPARE(node->getScale(), 1.0f);
        QCOMPARE(node->getOffset(), Vec2f());
        node->subRef();
    }
};

QTEST_GUILESS_MAIN(tst_AnimNode)
#include "tst_AnimNode.moc"
