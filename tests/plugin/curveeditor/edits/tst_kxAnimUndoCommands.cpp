#include <curveeditor/edits/kxAddAnimKeyUndoCommand.h>
#include <curveeditor/edits/kxAnimCurveUndoCommand.h>
#include <curveeditor/edits/kxAnimTangentUndoCommand.h>
#include <curveeditor/edits/kxKeyEdits.h>
#include <curveeditor/edits/kxTrashAnimationUndoCommand.h>

#include <kxAnimFixture.h>
#include <kxMessageIds.h>
#include <kxModuleBase.h>
#include <kxTable.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Share.h>

#include <limits>
#include <memory>

namespace
{
constexpr float NaN = std::numeric_limits<float>::quiet_NaN();

typedef std::vector<osg::CCPnt> Keys;

Keys keysOf(const osg::AnimCurvePtr& curve)
{
    return Keys(curve->getControlPoints().begin(), curve->getControlPoints().end());
}

QString textOf(const osg::AnimCurvePtr& curve)
{
    std::string text;
    curve->getControlPoints().getValuesByStr(text);
    return QString::fromStdString(text);
}

/// Keys at 0, 1, 2 ... seconds with the given types in turn, vectors as the kernel computes them; a free side points
/// anywhere.
osg::AnimCurvePtr makeCurve(unsigned int count, const std::vector<unsigned int>& types = {1, 2, 3, 4, 5})
{
    const osg::AnimCurvePtr curve = osg::AnimCurveBase::create();
    for (unsigned int i = 0; i < count; ++i)
    {
        const unsigned int type = types[i % types.size()];
        const float length = type == 5 ? 0.25f : 0.0f;
        curve->addPoint({float(i), float((i * 7) % 5)}, {-length, length}, {length, 2 * length}, type, type, true,
                        true);
    }
    return curve;
}

/// Undoes and redoes `command`, which has run once on `curve`; both ends must be reached exactly.
void verifyThereAndBack(QUndoCommand& command, const osg::AnimCurvePtr& curve, const QString& start)
{
    const QString end = textOf(curve);
    for (int round = 0; round < 2; ++round)
    {
        command.undo();
        QCOMPARE(textOf(curve), start);
        command.redo();
        QCOMPARE(textOf(curve), end);
    }
}

/// Counts how often those who list animations are asked to begin anew.
class CountingModule : public kxModuleBase
{
public:
    CountingModule() : kxModuleBase("Counter", "Test", kxMessageId::AnimationsChanged, nullptr) {}
    int receivedMessage(kxMessage&) override { return ++count; }
    int count = 0;
};

/// A scene node with three animations under its attachment.
osg::NodePtr makeAnimated()
{
    const osg::NodePtr node = osg::Node::create();
    node->setCore(osg::Group::create());
    for (int i = 0; i < 3; ++i)
        kxAnimManager::the()->addAnimation(node, kxAnimFixture::block("", {}));
    return node;
}

std::vector<unsigned int> animationIds(const osg::NodePtr& node)
{
    std::vector<unsigned int> ids;
    for (const osg::NodePtr& child : kxAnimManager::the()->getAnimAttachment(node)->getAnimationRoot()->getChildren())
        ids.push_back(child->getId());
    return ids;
}
} // namespace

class tst_kxAnimUndoCommands : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void typeChangesComeBack()
    {
        for (const bool isIn : {false, true})
            for (unsigned int from = 0; from <= 5; ++from)
                for (unsigned int to = 0; to <= 5; ++to)
                    for (const unsigned int count : {3, 4}) // the next key is the last, or not
                    {
                        const osg::Share<osg::AnimCurve> curve(makeCurve(count, {3, from, 4, 2}));
                        const QString start = textOf(curve);
                        kxAnimTangentUndoCommand command(curve, 1, isIn, to);
                        command.redo();
                        const osg::CCPnt& key = curve->getControlPoints(1);
                        QCOMPARE(isIn ? key.inType : key.outType, to);
                        QCOMPARE(isIn ? key.outType : key.inType, from);
                        QVERIFY(kxAnimTangentUndoCommand(curve, 1, isIn, to).isObsolete()); // it is of that type
                        verifyThereAndBack(command, curve, start);
                    }
    }

    void constantOutFlattensNextIn()
    {
        const osg::Share<osg::AnimCurve> curve(makeCurve(3, {3}));
        const QString start = textOf(curve);
        kxAnimTangentUndoCommand out(curve, 0, false, 0u);
        out.redo();
        QCOMPARE(curve->getControlPoints(0).outtangent(), osg::Vec2f());
        QCOMPARE(curve->getControlPoints(1).intangent(), osg::Vec2f());
        QVERIFY(curve->getControlPoints(1).outtangent() != osg::Vec2f());
        verifyThereAndBack(out, curve, start);
        out.undo();
        kxAnimTangentUndoCommand last(curve, 2, false, 0u); // there is no next key
        last.redo();
        last.undo();
        QCOMPARE(textOf(curve), start);

        // A step there and back is none, unless it took the type of the next key along.
        curve->getControlPoints(1) = osg::CCPnt({1, 2}, {}, {}, 5, 5);
        const QString before = textOf(curve);
        kxAnimTangentUndoCommand there(curve, 0, false, 0u);
        there.redo();
        kxAnimTangentUndoCommand back(curve, 0, false, 3u);
        back.redo();
        QVERIFY(there.mergeWith(&back));
        QVERIFY(!there.isObsolete());
        verifyThereAndBack(there, curve, before);
    }

    void changesAreSeenAtOnce()
    {
        const kxAnimFixture scope;
        const osg::NodePtr box = kxAnimFixture::object("Box");
        const osg::AnimNodePtr node = kxAnimFixture::curve("translation", "X", {{0, 1}, {2, 5}});
        kxAnimManager::the()->addAnimation(box, node);
        kxAnimManager::the()->setCurrentFrame(24, true, true);
        const auto x = [&box] { return kxAnimFixture::transform(box)->getTranslation().x(); };
        QCOMPARE(x(), 3.0f);
        const osg::AnimCurvePtr curve = kxAnimFixture::curveOf(node);
        Keys keys = keysOf(curve);
        keys[1].setY(9);
        kxKeyEdits::move({{curve->getId(), keys}});
        QCOMPARE(x(), 5.0f);
        kxKeyEdits::moveTangent({curve->getId(), 1}, true, {-1, -6}, false);
        QVERIFY(x() < 5);
    }

    void tangentMovesMerge()
    {
        const osg::Share<osg::AnimCurve> curve(makeCurve(3, {1}));
        const QString start = textOf(curve);
        kxAnimTangentUndoCommand first(curve, 1, false, osg::Vec2f(0.5f, 1));
        first.redo();
        kxAnimTangentUndoCommand second(curve, 1, false, osg::Vec2f(0.25f, -2));
        second.redo();
        kxAnimTangentUndoCommand otherSide(curve, 1, true, osg::Vec2f(-0.5f, 1));
        kxAnimTangentUndoCommand otherKey(curve, 2, false, osg::Vec2f(0.5f, 1));
        QVERIFY(!first.mergeWith(&otherSide));
        QVERIFY(!first.mergeWith(&otherKey));
        QVERIFY(first.mergeWith(&second));
        QCOMPARE(curve->getControlPoints(1).outtangent(), osg::Vec2f(0.25f, -2));
        QCOMPARE(curve->getControlPoints(1).outType, 5u);
        QVERIFY(!first.isObsolete());
        verifyThereAndBack(first, curve, start);

        // A free tangent comes back exactly, though 1 + (1e-9 - 1) isn't 1e-9; a drag that does so itself is no step.
        curve->getControlPoints(1).setOuttangent(osg::Vec2f(0.5f, 1e-9f));
        const QString small = textOf(curve);
        kxAnimTangentUndoCommand away(curve, 1, false, osg::Vec2f(0.5f, 1));
        away.redo();
        verifyThereAndBack(away, curve, small);
        kxAnimTangentUndoCommand back(curve, 1, false, osg::Vec2f(0.5f, 0));
        back.redo();
        QVERIFY(away.mergeWith(&back));
        QVERIFY(!away.isObsolete());
        kxAnimTangentUndoCommand home(curve, 1, false, osg::Vec2f(0.5f, 1e-9f));
        home.redo();
        QVERIFY(away.mergeWith(&home));
        QVERIFY(away.isObsolete());
    }

    void movesOfOneCurveMerge()
    {
        const osg::Share<osg::AnimCurve> curve(makeCurve(3, {1})), other(makeCurve(3, {1})), longer(makeCurve(4, {1}));
        const auto moved = [](const osg::AnimCurvePtr& of, float y)
        {
            Keys keys = keysOf(of);
            keys[1].setY(y);
            auto move = std::make_unique<kxAnimCurveUndoCommand>(of, keys);
            move->redo();
            return move;
        };
        QVERIFY(moved(curve, 2)->isObsolete()); // it was there
        const QString start = textOf(curve);
        const auto raised = moved(curve, 4);
        QVERIFY(!raised->mergeWith(moved(other, 4).get()) && !raised->mergeWith(moved(longer, 4).get()));
        QVERIFY(raised->mergeWith(moved(curve, 6).get()) && !raised->isObsolete());
        QCOMPARE(curve->getControlPoints(1).y(), 6.0f);
        raised->undo();
        QCOMPARE(textOf(curve), start);

        curve->getControlPoints(1).setY(0.1f);
        const auto drag = moved(curve, 0.3f);
        QVERIFY(drag->mergeWith(moved(curve, 0.2f).get()) && drag->mergeWith(moved(curve, 0.1f).get()));
        QVERIFY(drag->isObsolete()); // though rounding leaves a difference
    }

    void keysOfOneTimeStaySorted()
    {
        const osg::Share<osg::AnimCurve> curve(makeCurve(3));
        curve->getControlPoints(1).setX(0.3f);
        Keys keys = keysOf(curve);
        for (const std::size_t i : {0, 1})
            keys[i].setX(0.1f); // 0.3 + (0.1 - 0.3) is less
        kxAnimCurveUndoCommand(curve, keys).redo();
        QVERIFY(keysOf(curve) == keys);
    }

    void moveIsRefused_data()
    {
        kxColumns<int, float, float>("index", "x", "y");
        kxRow("value is no number", 1, 1.0f, NaN);
        kxRow("time is no number", 1, NaN, 0.0f);
        kxRow("keys not sorted", 0, 1.5f, 0.0f);
        kxRow("difference overflows", 0, 0.0f, -std::numeric_limits<float>::max());
    }

    void moveIsRefused()
    {
        QFETCH(int, index);
        QFETCH(float, x);
        QFETCH(float, y);
        const osg::Share<osg::AnimCurve> curve(makeCurve(3));
        curve->getControlPoints(0).setY(std::numeric_limits<float>::max());
        const QString start = textOf(curve);
        Keys keys = keysOf(curve);
        keys[std::size_t(index)].setPoint({x, y});
        kxAnimCurveUndoCommand move(curve, keys);
        keys.pop_back();
        kxAnimCurveUndoCommand wrongCount(curve, keys);
        kxAnimTangentUndoCommand tangent(curve, 1, true, osg::Vec2f(NaN, 0));
        kxAnimTangentUndoCommand noKey(curve, 3, true, 0u);
        kxAnimTangentUndoCommand noType(curve, 1, true, 6u);
        for (QUndoCommand* command :
             std::initializer_list<QUndoCommand*>{&move, &wrongCount, &tangent, &noKey, &noType})
        {
            QVERIFY(command->isObsolete());
            command->redo();
            QCOMPARE(textOf(curve), start);
            command->undo();
            QCOMPARE(textOf(curve), start);
        }
    }

    void deletes_data()
    {
        kxColumns<QVector<unsigned int>, QVector<float>>("indices", "left");
        typedef QVector<unsigned int> I;
        typedef QVector<float> L;
        kxRow("2, 3, 5 in any order", I{5, 2, 3}, L{0, 1, 4, 6});
        kxRow("first two", I{0, 1}, L{2, 3, 4, 5, 6});
        kxRow("all", I{0, 1, 2, 3, 4, 5, 6}, L{});
        kxRow("twice the same, and one beyond", I{1, 1, 7}, L{0, 2, 3, 4, 5, 6});
    }

    void deletes()
    {
        QFETCH(QVector<unsigned int>, indices);
        QFETCH(QVector<float>, left);
        const osg::Share<osg::AnimCurve> curve(makeCurve(7, {3, 5, 4, 2, 1}));
        const QString start = textOf(curve);
        std::vector<unsigned int> handedOver(indices.begin(), indices.end());
        kxAddAnimKeyUndoCommand command(curve, std::move(handedOver));
        command.redo();
        QVector<float> times;
        for (const osg::CCPnt& key : curve->getControlPoints())
            times.append(key.x());
        QCOMPARE(times, left);
        verifyThereAndBack(command, curve, start);

        const osg::Share<osg::AnimCurve> lines(makeCurve(7, {1}));
        kxAddAnimKeyUndoCommand(lines, std::vector<unsigned int>(indices.begin(), indices.end())).redo();
        const Keys keys = keysOf(lines);
        for (std::size_t i = 1; i < keys.size(); ++i) // over a gap too they aim at each other
        {
            const osg::Vec2f way(keys[i].x() - keys[i - 1].x(), keys[i].y() - keys[i - 1].y());
            QCOMPARE(keys[i - 1].outtangent(), way * 0.5f);
            QCOMPARE(keys[i].intangent(), way * -0.5f);
        }
    }

    void adds_data()
    {
        kxColumns<QVector<float>, int>("times", "count");
        typedef QVector<float> T;
        kxRow("between", T{1.5f}, 6);
        kxRow("two in one gap", T{1.25f, 1.5f}, 7);
        kxRow("before and behind all", T{-1, 9}, 7);
        kxRow("replaces, adds, replaces", T{1, 1.5f, 2}, 6);
        kxRow("not in order", T{3.5f, 0.5f}, 7);
        kxRow("what is no number is left out", T{NaN, 3.5f}, 6);
    }

    void adds()
    {
        QFETCH(QVector<float>, times);
        QFETCH(int, count);
        const osg::Share<osg::AnimCurve> curve(makeCurve(5, {3, 4, 5}));
        const QString start = textOf(curve);
        Keys keys;
        for (const float time : times)
            keys.push_back(osg::CCPnt({time, 50}, {}, {}, 3, 3));
        kxAddAnimKeyUndoCommand command(curve, std::move(keys));
        command.redo();
        QCOMPARE(int(curve->getControlPoints().size()), count);
        verifyThereAndBack(command, curve, start);

        // A move that was undone leaves a little of itself, which doesn't keep the neighbours' tangents from coming
        // back.
        const Keys added = keysOf(curve);
        for (osg::UInt32 i = 0; i < added.size(); ++i)
            curve->getControlPoints(i).setX(added[i].x() * 1.0005f);
        command.undo();
        const osg::Share<osg::AnimCurve> untouched(makeCurve(5, {3, 4, 5}));
        for (osg::UInt32 i = 0; i < 5; ++i)
            QCOMPARE(curve->getControlPoints(i).outtangent(), untouched->getControlPoints(i).outtangent());
    }

    void trashComesBackInPlaceOrIsFreedOnce()
    {
        const osg::Share<osg::Node> node(makeAnimated());
        const std::vector<unsigned int> start = animationIds(node);
        const kxNodePtr middle(kxNodePtr::toNode(start[1]));
        CountingModule lists;
        {
            kxTrashAnimationUndoCommand one({middle, middle, kxNodePtr()});
            kxTrashAnimationUndoCommand rest({kxNodePtr(node.get())});
            for (int round = 0; round < 2; ++round)
            {
                one.redo();
                QCOMPARE(animationIds(node), (std::vector<unsigned int>{start[0], start[2]}));
                rest.redo();
                QVERIFY(animationIds(node).empty());
                rest.undo();
                one.undo();
                QCOMPARE(animationIds(node), start);
            }
        }
        QCOMPARE(lists.count, 0);
        for (int turn = 0; turn < 2; ++turn)
            QCoreApplication::processEvents();
        QCOMPARE(lists.count, 1); // of all that, in the next turn

        for (const unsigned int id : start)
            QCOMPARE(kxNodePtr::toNode(id)->getRefCount(), 1u);
        {
            kxTrashAnimationUndoCommand done({kxNodePtr(node.get())});
            done.redo();
            QVERIFY(!kxNodePtr(kxNodePtr::toNode(start[0])).isNull());
        }
        for (const unsigned int id : start)
            QVERIFY(kxNodePtr::toNode(id) == osg::NullFC);
    }
};

QTEST_MAIN(tst_kxAnimUndoCommands)
#include "tst_kxAnimUndoCommands.moc"
