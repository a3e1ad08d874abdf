#include "kxOwned.h"

#include <curveeditor/kxAddAnimKeyUndoCommand.h>
#include <curveeditor/kxAnimCurveUndoCommand.h>
#include <curveeditor/kxAnimTangentUndoCommand.h>
#include <curveeditor/kxTrashAnimationUndoCommand.h>
#include <kxSendMouse.h>
#include <trees/kxAnimTreeWidget.h>

#include <kxAnimManager.h>
#include <kxUndo.h>
#include <osg/FieldContainerFactory.h>

#include <QUndoStack>
#include <kxTable.h>

#include <limits>
#include <memory>
#include <random>

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

float roundingOf(float value)
{
    return 1e-5f * std::max(1.0f, std::abs(value));
}

void compareKeys(const Keys& actual, const Keys& expected)
{
    QCOMPARE(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i)
    {
        const osg::CCPnt &a = actual[i], &e = expected[i];
        QCOMPARE(a.inType, e.inType);
        QCOMPARE(a.outType, e.outType);
        const float values[][2] = {{a.x(), e.x()},     {a.y(), e.y()},       {a.inX(), e.inX()},
                                   {a.inY(), e.inY()}, {a.outX(), e.outX()}, {a.outY(), e.outY()}};
        for (const auto& value : values)
            QVERIFY2(
                std::abs(value[0] - value[1]) <= roundingOf(value[1]),
                qPrintable(QString("key %1: %2 is not %3").arg(i).arg(value[0], 0, 'g', 9).arg(value[1], 0, 'g', 9)));
    }
}

/// Counts how often a list of animations is built anew.
class CountingTree : public kxAnimTreeWidget
{
public:
    int rebuilds = 0;
    using kxAnimTreeWidget::rebuild;
    void rebuild(bool) override { ++rebuilds; }

protected:
    bool listsAnimations() const override { return true; }
    void changedItem(QTreeWidgetItem*, int) override {}
};
} // namespace

class tst_kxAnimUndoCommands : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void typeChangesComeBack();
    void constantOutFlattensNextIn();
    void tangentMovesMerge();
    void moveIsRefused_data();
    void moveIsRefused();
    void dragIsOneStep();
    void deletes_data();
    void deletes();
    void adds_data();
    void adds();
    void addDropsNonFinite();
    void curveDiesUnderItsCommands();
    void trashComesBackInPlace();
    void trashFreesOnce();
    void walk_data();
    void walk();
};

void tst_kxAnimUndoCommands::typeChangesComeBack()
{
    for (const bool isIn : {false, true})
        for (unsigned int from = 0; from <= 5; ++from)
            for (unsigned int to = 0; to <= 5; ++to)
            {
                const kxOwned<osg::AnimCurve> curve(makeCurve(4, {3, from, 4, 2}));
                const QString start = textOf(curve);
                kxAnimTangentUndoCommand command(curve, 1, isIn, to);
                command.redo();
                const osg::CCPnt& key = curve->getControlPoints(1);
                QCOMPARE(isIn ? key.inType : key.outType, to);
                QCOMPARE(isIn ? key.outType : key.inType, from);
                verifyThereAndBack(command, curve, start);
            }
}

void tst_kxAnimUndoCommands::constantOutFlattensNextIn()
{
    const kxOwned<osg::AnimCurve> curve(makeCurve(3, {3}));
    const QString start = textOf(curve);
    kxAnimTangentUndoCommand out(curve, 0, false, 0u);
    out.redo();
    QCOMPARE(curve->getControlPoints(0).outtangent(), osg::Vec2f());
    QCOMPARE(curve->getControlPoints(1).intangent(), osg::Vec2f());
    QVERIFY(curve->getControlPoints(1).outtangent() != osg::Vec2f());
    out.undo();
    QVERIFY(curve->getControlPoints(1).intangent() != osg::Vec2f());
    kxAnimTangentUndoCommand last(curve, 2, false, 0u); // there is no next key
    last.redo();
    last.undo();
    QCOMPARE(textOf(curve), start);
}

void tst_kxAnimUndoCommands::tangentMovesMerge()
{
    const kxOwned<osg::AnimCurve> curve(makeCurve(3, {1}));
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
    verifyThereAndBack(first, curve, start);
}

void tst_kxAnimUndoCommands::moveIsRefused_data()
{
    kxColumns<int, float, float>("index", "x", "y");
    kxRow("value is no number", 1, 1.0f, NaN);
    kxRow("time is no number", 1, NaN, 0.0f);
    kxRow("time is infinite", 2, std::numeric_limits<float>::infinity(), 0.0f);
    kxRow("keys not sorted", 0, 1.5f, 0.0f);
    kxRow("difference overflows", 0, 0.0f, -std::numeric_limits<float>::max());
}

void tst_kxAnimUndoCommands::moveIsRefused()
{
    QFETCH(int, index);
    QFETCH(float, x);
    QFETCH(float, y);
    const kxOwned<osg::AnimCurve> curve(makeCurve(3));
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
    for (QUndoCommand* command : std::initializer_list<QUndoCommand*>{&move, &wrongCount, &tangent, &noKey, &noType})
    {
        command->redo();
        QCOMPARE(textOf(curve), start);
        command->undo();
        QCOMPARE(textOf(curve), start);
    }
}

void tst_kxAnimUndoCommands::dragIsOneStep()
{
    const kxOwned<osg::AnimCurve> curve(makeCurve(4));
    const Keys start = keysOf(curve);
    QUndoStack* const stack = kxUndoStack::get(0).stack();
    const int steps = stack->count();
    QWidget canvas;
    for (int drag = 0; drag < 2; ++drag)
    {
        kxPress(&canvas, {1, 1});
        for (int i = 0; i < 10; ++i)
        {
            Keys keys = keysOf(curve);
            keys[1].setX(keys[1].x() + 0.37f); // passes the keys behind it
            keys[1].setY(keys[1].y() * 1.5f + 1);
            std::stable_sort(keys.begin(), keys.end(),
                             [](const osg::CCPnt& a, const osg::CCPnt& b) { return a.x() < b.x(); });
            kxUndoStack::get(0).add(new kxAnimCurveUndoCommand(curve, keys));
        }
        kxRelease(&canvas, {1, 1});
    }
    QCOMPARE(stack->count(), steps + 2);
    const Keys end = keysOf(curve);
    stack->undo();
    stack->undo();
    compareKeys(keysOf(curve), start);
    stack->redo();
    stack->redo();
    compareKeys(keysOf(curve), end);
}

void tst_kxAnimUndoCommands::deletes_data()
{
    kxColumns<QVector<unsigned int>, QVector<float>>("indices", "left");
    typedef QVector<unsigned int> I;
    typedef QVector<float> L;
    kxRow("2, 3, 5 in any order", I{5, 2, 3}, L{0, 1, 4, 6});
    kxRow("first", I{0}, L{1, 2, 3, 4, 5, 6});
    kxRow("first two", I{0, 1}, L{2, 3, 4, 5, 6});
    kxRow("last", I{6}, L{0, 1, 2, 3, 4, 5});
    kxRow("all", I{0, 1, 2, 3, 4, 5, 6}, L{});
    kxRow("twice the same, and one beyond", I{1, 1, 7}, L{0, 2, 3, 4, 5, 6});
}

void tst_kxAnimUndoCommands::deletes()
{
    QFETCH(QVector<unsigned int>, indices);
    QFETCH(QVector<float>, left);
    const kxOwned<osg::AnimCurve> curve(makeCurve(7, {3, 5, 4, 2, 1}));
    const QString start = textOf(curve);
    std::vector<unsigned int> handedOver(indices.begin(), indices.end());
    kxAddAnimKeyUndoCommand command(curve, std::move(handedOver));
    command.redo();
    QVector<float> times;
    for (const osg::CCPnt& key : curve->getControlPoints())
        times.append(key.x());
    QCOMPARE(times, left);
    verifyThereAndBack(command, curve, start);
}

void tst_kxAnimUndoCommands::adds_data()
{
    kxColumns<QVector<float>, int>("times", "count");
    typedef QVector<float> T;
    kxRow("between", T{1.5f}, 6);
    kxRow("two in one gap", T{1.25f, 1.5f}, 7);
    kxRow("before and behind all", T{-1, 9}, 7);
    kxRow("replaces a key", T{2}, 5);
    kxRow("replaces, adds, replaces", T{1, 1.5f, 2}, 6);
    kxRow("not in order", T{3.5f, 0.5f}, 7);
}

void tst_kxAnimUndoCommands::adds()
{
    QFETCH(QVector<float>, times);
    QFETCH(int, count);
    const kxOwned<osg::AnimCurve> curve(makeCurve(5, {3, 4, 5}));
    const QString start = textOf(curve);
    Keys keys;
    for (const float time : times)
        keys.push_back(osg::CCPnt({time, 50}, {}, {}, 3, 3));
    kxAddAnimKeyUndoCommand command(curve, std::move(keys));
    command.redo();
    QCOMPARE(int(curve->getControlPoints().size()), count);
    verifyThereAndBack(command, curve, start);
}

void tst_kxAnimUndoCommands::addDropsNonFinite()
{
    const kxOwned<osg::AnimCurve> curve(makeCurve(2));
    const QString start = textOf(curve);
    kxAddAnimKeyUndoCommand command(curve, Keys{osg::CCPnt({NaN, 0}, {}, {}, 1, 1), osg::CCPnt({5, 1}, {}, {}, 1, 1),
                                                osg::CCPnt({6, 0}, {NaN, 0}, {}, 5, 5)});
    command.redo();
    QCOMPARE(curve->getControlPoints().size(), std::size_t(3));
    command.undo();
    QCOMPARE(textOf(curve), start);
}

void tst_kxAnimUndoCommands::curveDiesUnderItsCommands()
{
    kxOwned<osg::AnimCurve> curve(makeCurve(4));
    Keys keys = keysOf(curve);
    keys[3].setX(9);
    std::vector<std::unique_ptr<QUndoCommand>> commands;
    commands.push_back(std::make_unique<kxAnimCurveUndoCommand>(curve, keys));
    commands.push_back(std::make_unique<kxAnimTangentUndoCommand>(curve, 1, false, 0u));
    commands.push_back(std::make_unique<kxAddAnimKeyUndoCommand>(curve, std::vector<unsigned int>{1}));
    commands.push_back(std::make_unique<kxAddAnimKeyUndoCommand>(curve, osg::CCPnt({7, 7}, {}, {}, 1, 1)));
    for (const auto& command : commands)
        command->redo();
    const unsigned int id = curve->getId();
    curve.release();
    QVERIFY(osg::FieldContainerFactory::the()->getContainer(id) == osg::NullFC);
    for (const auto& command : commands)
    {
        command->undo();
        command->redo();
    }
    kxAnimCurveUndoCommand onNull(osg::AnimCurvePtr(), Keys(1));
    onNull.redo();
}

namespace
{
osg::AnimNodePtr makeAnimation()
{
    const osg::AnimNodePtr node = osg::AnimNodeBase::create();
    node->setCore(osg::AnimBlockBase::create());
    return node;
}

/// A scene node with three animations under its attachment.
osg::NodePtr makeAnimated()
{
    const osg::NodePtr node = osg::Node::create();
    node->setCore(osg::Group::create());
    for (int i = 0; i < 3; ++i)
        kxAnimManager::the()->addAnimation(node, makeAnimation());
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

void tst_kxAnimUndoCommands::trashComesBackInPlace()
{
    const kxOwned<osg::Node> node(makeAnimated());
    const std::vector<unsigned int> start = animationIds(node);
    const kxNodePtr middle(kxNodePtr::toNode(start[1]));
    CountingTree tree;

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
    QCOMPARE(tree.rebuilds, 6); // each undo, and each redo after one
}

void tst_kxAnimUndoCommands::trashFreesOnce()
{
    const kxOwned<osg::Node> node(makeAnimated());
    const std::vector<unsigned int> ids = animationIds(node);
    {
        kxTrashAnimationUndoCommand undone({kxNodePtr(node.get())});
        undone.redo();
        undone.undo();
    }
    QCOMPARE(animationIds(node), ids);
    for (const unsigned int id : ids)
        QCOMPARE(kxNodePtr::toNode(id)->getRefCount(), 1u);
    {
        kxTrashAnimationUndoCommand done({kxNodePtr(node.get())});
        done.redo();
        QVERIFY(!kxNodePtr(kxNodePtr::toNode(ids[0])).isNull());
    }
    for (const unsigned int id : ids)
        QVERIFY(kxNodePtr::toNode(id) == osg::NullFC);
}

void tst_kxAnimUndoCommands::walk_data()
{
    QTest::addColumn<unsigned int>("seed");
    for (unsigned int seed = 1; seed <= 20; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

namespace
{
/// Random edits of some curves and of the tree that they stand in.
class Walk
{
public:
    explicit Walk(unsigned int seed) : _random(seed), _object(osg::Node::create())
    {
        _object->setCore(osg::Group::create());
        for (unsigned int i = 0; i < 3; ++i)
        {
            const osg::AnimNodePtr node = osg::AnimNodeBase::create();
            node->setCore(makeCurve(4 + 3 * i));
            kxAnimManager::the()->addAnimation(_object.get(), node);
            _curves.push_back(node->getCore().getFieldContainerId());
        }
    }

    osg::AnimCurvePtr curve(std::size_t index) const
    {
        return osg::FieldContainerFactory::the()->get<osg::AnimCurve>(_curves[index]);
    }
    std::vector<Keys> keys() const
    {
        std::vector<Keys> all;
        for (std::size_t i = 0; i < _curves.size(); ++i)
            all.push_back(keysOf(curve(i)));
        return all;
    }
    std::vector<unsigned int> animations() const { return animationIds(_object); }

    void step()
    {
        const osg::AnimCurvePtr target = curve(below(3));
        const unsigned int size = target->getControlPoints().getSize();
        switch (size == 0 ? 2 : below(20))
        {
        case 0:
        case 1:
            if (!animations().empty())
                add(new kxTrashAnimationUndoCommand(
                    {kxNodePtr::toNode(animations()[below(unsigned(animations().size()))])}));
            break;
        case 2:
        case 3:
        case 4:
        case 5:
            add(new kxAddAnimKeyUndoCommand(target, newKeys(target)));
            break;
        case 6:
        case 7:
        case 8:
            add(new kxAddAnimKeyUndoCommand(target, std::vector<unsigned int>{below(size), below(size), below(size)}));
            break;
        case 9:
        case 10:
        case 11:
            add(new kxAnimTangentUndoCommand(target, below(size), below(2) == 0,
                                             osg::Vec2f(number(0, 1), number(-2, 2))));
            break;
        case 12:
        case 13:
        case 14:
        case 15:
            add(new kxAnimTangentUndoCommand(target, below(size), below(2) == 0, below(6)));
            break;
        default:
            add(new kxAnimCurveUndoCommand(target, movedKeys(target)));
        }
    }

private:
    unsigned int below(unsigned int limit) { return unsigned(_random() % limit); }
    float number(float low, float high) { return low + (high - low) * float(_random() % 10000) / 10000.0f; }
    void add(kxUndoCommand* command) { kxUndoStack::get(0).add(command); }

    Keys newKeys(const osg::AnimCurvePtr& curve)
    {
        Keys added;
        for (unsigned int i = below(3) + 1; i > 0; --i)
            added.push_back(osg::CCPnt({number(-5, 20), number(-10, 10)}, {}, {}, below(6), below(6)));
        if (!curve->isEmpty() && below(2) == 0) // at the time of a key that is there
            added.front().setX(curve->getControlPoints(below(curve->getControlPoints().getSize())).x());
        return added;
    }

    /// Some keys moved, in order, with the tangents that the editor would compute.
    Keys movedKeys(const osg::AnimCurvePtr& curve)
    {
        const kxOwned<osg::AnimCurve> scratch(osg::AnimCurveBase::create());
        Keys keys = keysOf(curve);
        for (osg::CCPnt& key : keys)
            if (below(3) == 0)
                key.setPoint({key.x() + number(-3, 3), key.y() + number(-5, 5)});
        std::stable_sort(keys.begin(), keys.end(),
                         [](const osg::CCPnt& a, const osg::CCPnt& b) { return a.x() < b.x(); });
        for (const osg::CCPnt& key : keys)
            scratch->addControlPoint(key, false, true);
        return keysOf(scratch);
    }

    std::mt19937 _random;
    kxOwned<osg::Node> _object;
    std::vector<unsigned int> _curves;
};
} // namespace

void tst_kxAnimUndoCommands::walk()
{
    QFETCH(unsigned int, seed);
    Walk walk(seed);
    QUndoStack* const stack = kxUndoStack::get(0).stack();
    stack->clear();
    const std::vector<Keys> start = walk.keys();
    const std::vector<unsigned int> startAnimations = walk.animations();
    for (int i = 0; i < 60; ++i)
        walk.step();
    const std::vector<Keys> end = walk.keys();
    const std::vector<unsigned int> endAnimations = walk.animations();
    for (int round = 0; round < 2; ++round)
    {
        stack->setIndex(0);
        QCOMPARE(walk.animations(), startAnimations);
        for (std::size_t i = 0; i < start.size(); ++i)
            compareKeys(walk.keys()[i], start[i]);
        stack->setIndex(stack->count());
        QCOMPARE(walk.animations(), endAnimations);
        for (std::size_t i = 0; i < end.size(); ++i)
            compareKeys(walk.keys()[i], end[i]);
    }
    for (const Keys& keys : end)
        QVERIFY(std::is_sorted(keys.begin(), keys.end(),
                               [](const osg::CCPnt& a, const osg::CCPnt& b) { return a.x() < b.x(); }));
    stack->clear();
}

QTEST_MAIN(tst_kxAnimUndoCommands)
#include "tst_kxAnimUndoCommands.moc"
