#include <animation/kxNodeTime.h>
#include <kxAnimFixture.h>
#include <kxTable.h>
#include <osg/Share.h>

#include <cmath>
#include <random>

using namespace osg;

namespace
{
QPointF bounds(const AnimNodePtr& node)
{
    float start = 0, end = 0;
    node->getBounds(start, end);
    return QPointF(start, end);
}

/// Its extent in the time of the root.
QPointF worldBounds(const AnimNodePtr& node)
{
    BoxVolume volume;
    node->getWorldVolume(volume);
    Pnt3f minimum, maximum;
    volume.getBounds(minimum, maximum);
    return QPointF(minimum.x(), maximum.x());
}

AnimNodePtr oneToThree()
{
    return kxAnimFixture::block("block", {kxAnimFixture::curve("translation", "X", {{1, 0}, {3, 1}})});
}
} // namespace

class tst_AnimNode : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    /// A curve from 1 to 3 in a node at 10, scale 2: content [1, 3] lies at [12, 16].
    void contentTime_data()
    {
        kxColumns<int, bool, QPointF, double, double>("cycles", "flipped", "range", "time", "expected");
        const QPointF none;
        QTest::newRow("inside") << 0 << false << none << 13.0 << 1.5;
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
        const osg::Share<AnimNode> node(oneToThree());
        node->setOffset(Vec2f(10, 0));
        node->setScale(2);
        node->setPostCycles(cycles);
        node->setFlipped(flipped);
        node->setUsePlayRange(!range.isNull());
        node->setPlayRange(Pnt2f(float(range.x()), float(range.y())));
        QTEST(kxNodeTime::contentTime(*node.get(), time, 4.0e-6), "expected");
    }

    void extents()
    {
        kxAnimFixture f;
        const AnimNodePtr empty = f.curve("scale", "X", {});
        const AnimNodePtr block = oneToThree();
        block->addChild(empty);
        const osg::Share<AnimNode> clip(f.clip("clip", {block, f.trigger("trigger", 40), f.clip("empty", {})}));
        block->setOffset(Vec2f(10, 0));
        block->setScale(2);
        block->setPostCycles(3);
        clip->setOffset(Vec2f(100, 0));
        clip->setScale(0.5f);
        QCOMPARE(bounds(block), QPointF(12, 28));
        QCOMPARE(bounds(clip), QPointF(106, 120));
        block->setPostCycles(-1);
        QCOMPARE(bounds(block), QPointF(12, 16)); // endless counts as one pass
        double low = 0, high = 0;
        QVERIFY(kxNodeTime::extent(*block, low, high));
        QVERIFY(std::isinf(high));
        QCOMPARE(worldBounds(block), QPointF(106, 108));
        empty->setOffset(Vec2f(-7, 0));
        QCOMPARE(bounds(empty), QPointF(-7, -7));
        float start = 0, end = 0;
        QVERIFY(!empty->getContentExtent(start, end));
    }

    void extentsFollowChangesBelow()
    {
        kxAnimFixture f;
        const AnimNodePtr curve = f.curve("translation", "X", {{0, 0}, {1, 1}});
        const osg::Share<AnimNode> block(f.block("block", {curve}));
        const AnimNodePtr clone = f.clone(block, 5), inner = f.clip("inner", {clone});
        const osg::Share<AnimNode> clip(f.clip("clip", {inner}));
        QCOMPARE(bounds(clip).y(), 6.0);
        f.curveOf(curve)->addPoint(Pnt2f(4, 0), Vec2f(), Vec2f(), 1, 1, true, true);
        f.keysChanged(curve); // under the object; the clone shares the core
        QCOMPARE(bounds(block).y(), 4.0);
        QCOMPARE(bounds(clip).y(), 9.0);
        clone->setScale(2);
        f.changed(clone, AnimNodeBase::ScaleFieldMask);
        QCOMPARE(bounds(clip).y(), 13.0);
        const AnimNodePtr late = f.clone(block, 50);
        inner->addChild(late);
        f.changed(inner, Node::ChildrenFieldMask);
        QCOMPARE(bounds(clip).y(), 54.0);
        inner->subChild(late);
        f.changed(inner, Node::ChildrenFieldMask);
        QCOMPARE(bounds(clip).y(), 13.0);
        // Changes that nobody is notified of count as well.
        FieldContainerPtr::_ignore_change = true;
        f.curveOf(curve)->subPoint(0);
        f.keysChanged(curve);
        curve->setOffset(Vec2f(3, 0));
        f.changed(curve, AnimNodeBase::OffsetFieldMask);
        FieldContainerPtr::_ignore_change = false;
        QCOMPARE(bounds(block), QPointF(4, 7));
    }

    /// What a bar shows and what a drag writes agree at any nesting.
    void movingAndScalingAgreeWithWhatIsShown()
    {
        kxAnimFixture f;
        std::mt19937 random(4);
        const auto number = [&](float low, float high) { return low + (high - low) * float(random() % 1000) / 1000; };
        for (int i = 0; i < 200; ++i)
        {
            const AnimNodePtr inner = oneToThree();
            const osg::Share<AnimNode> outer(f.clip("outer", {f.clip("middle", {inner})}));
            for (NodePtr node = inner; node != NullFC; node = node->getParent())
            {
                AnimNodePtr::dcast(node)->setOffset(Vec2f(number(-5, 5), 0));
                AnimNodePtr::dcast(node)->setScale(number(0.25f, 4));
            }
            const QPointF before = worldBounds(inner);
            const float move = number(-9, 9), factor = number(0.1f, 5);
            inner->moveBy(move, 50);
            const QPointF moved = worldBounds(inner);
            QVERIFY(std::abs(moved.x() - before.x() - move) < 1.0e-3);
            QVERIFY(std::abs(moved.y() - before.y() - move) < 1.0e-3);
            QCOMPARE(inner->getOffset().y(), 50.0f);
            inner->scaleBy(factor, float(moved.x()));
            const QPointF scaled = worldBounds(inner);
            QVERIFY(std::abs(scaled.x() - moved.x()) < 1.0e-3);
            QVERIFY(std::abs((scaled.y() - scaled.x()) / (moved.y() - moved.x()) - factor) < 1.0e-3 * factor);
        }
    }

    void badNumbersAreRefused()
    {
        const osg::Share<AnimNode> node(AnimNodeBase::create());
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
    }
};

QTEST_GUILESS_MAIN(tst_AnimNode)
#include "tst_AnimNode.moc"
