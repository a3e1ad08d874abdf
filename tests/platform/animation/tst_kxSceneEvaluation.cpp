#include <animation/kxCurveEvaluation.h>
#include <animation/kxFrameTime.h>
#include <animation/kxNodeTime.h>
#include <kxAnimEvaluator.h>
#include <kxAnimFixture.h>
#include <kxMarks.h>
#include <kxTable.h>
#include <kxUndo.h>
#include <osg/Share.h>
#include <scene/CameraLight.h>
#include <scene/UberMaterial.h>

#include <QUndoStack>

#include <random>

using namespace osg;

namespace
{
constexpr auto manager = &kxAnimManager::the;
} // namespace

class tst_kxSceneEvaluation : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        f.clear();
        object = f.object();
    }

    /// More curves than one thread takes, in blocks with offsets, scales, cycles and flips, against a walk through the
    /// tree.
    void aLargeSceneEqualsANaiveEvaluation()
    {
        std::mt19937 random(2);
        const auto unit = [&] { return float(random() % 1000) / 1000; };
        std::vector<std::pair<NodePtr, AnimNodePtr>> blocks;
        for (int i = 0; i < 1600; ++i)
        {
            const NodePtr driven = f.object();
            std::vector<AnimNodePtr> curves;
            for (const char* const axis : {"X", "Y", "Z"})
                curves.push_back(
                    f.curve("translation", axis, {{0, unit()}, {0.5f + unit(), 9 * unit()}, {3, -unit()}}));
            curves[1]->setOffset(Vec2f(unit(), 0));
            f.curveOf(curves[2])->setPostInfinityMode(UInt32(i % 7));
            f.curveOf(curves[2])->computeOuttangent(1, 3);
            const AnimNodePtr block = f.added(driven, f.block("block", curves));
            block->setOffset(Vec2f(i % 3 == 0 ? unit() : 0, 0));
            block->setScale(i % 4 == 0 ? 0.5f + unit() : 1);
            block->setPostCycles(i % 5 - 1);
            block->setFlipped(i % 2 == 0);
            blocks.push_back({driven, block});
        }
        for (const double frame : {0.0, 17.0, 3.25, -40.0, 500.0, 60.0, 61.0, 59.0, 300.0})
        {
            manager()->setCurrentFrame(frame, false, false);
            const double seconds = kxFrameTime::seconds(frame, 24);
            const double tolerance = kxNodeTime::tolerance(seconds);
            for (const auto& [driven, block] : blocks)
                for (UInt32 axis = 0; axis < 3; ++axis)
                {
                    const AnimNodePtr node = AnimNodePtr::dcast(block->getChild(axis));
                    const double inBlock = kxNodeTime::contentTime(*block, seconds, tolerance);
                    const double inCurve = kxNodeTime::contentTime(*node, inBlock, tolerance);
                    UInt32 cursor = 0; // whatever came before makes no difference
                    const float value = kxCurveEvaluation::value(*f.curveOf(node), inCurve, cursor, tolerance);
                    QCOMPARE(f.transform(driven)->getTranslation()[axis], value);
                }
        }
    }

    void onlyActiveAnimationsCount()
    {
        const AnimNodePtr x = f.curve("translation", "X", {{0, 5}}), y = f.curve("translation", "Y", {{0, 5}});
        const AnimNodePtr z = f.curve("translation", "Z", {{0, 5}}), empty = f.curve("scale", "X", {});
        const AnimNodePtr clipped = f.curve("scale", "Y", {{0, 5}});
        const AnimNodePtr on = f.block("on", {x}), off = f.block("off", {y});
        off->setTravMask(0);
        z->setTravMask(0x7fffffff);
        for (const AnimNodePtr& node : {on, off, z, empty, f.clip("clip", {f.block("inside", {clipped})})})
            manager()->addAnimation(object, node);
        QCOMPARE(placeAt(3), Vec3f(5, 0, 0));
        QCOMPARE(f.transform(object)->getScale(), Vec3f(1, 1, 1));
        QCOMPARE(f.engine().plan.curveCount(), std::size_t(1));
        {
            kxAnimEngine another; // knows nothing of the manager's, and is notified no more when it has gone
            manager()->setTreeActive(off, true);
            another.plan.update();
            QCOMPARE(another.plan.curveCount(), std::size_t(2));
            QCOMPARE(f.engine().plan.curveCount(), std::size_t(1));
        }
        manager()->reevaluateAnimations(false);
        QCOMPARE(f.transform(object)->getTranslation(), Vec3f(5, 5, 0));
        // Out of the scene, out of the plan.
        const osg::Share<Node> held(object);
        kxScene::the()->root()->subChild(object);
        markChanged(kxScene::the()->root(), Node::ChildrenFieldMask);
        manager()->updateSceneAnimCurveData();
        QCOMPARE(f.engine().plan.curveCount(), std::size_t(0));
    }

    void laterChildrenWin()
    {
        const AnimNodePtr empty = f.curve("translation", "X", {});
        for (const AnimNodePtr& node : {f.block("one", {f.curve("translation", "X", {{0, 1}})}),
                                        f.block("two", {f.curve("translation", "X", {{0, 2}})}), empty})
            manager()->addAnimation(object, node);
        QCOMPARE(placeAt(1).x(), 2.0f); // an empty curve doesn't drive
        f.curveOf(empty)->addPoint(Pnt2f(0, 3), Vec2f(), Vec2f(), 1, 1, true, true);
        f.keysChanged(empty);
        manager()->reevaluateAnimations(false);
        QCOMPARE(f.transform(object)->getTranslation().x(), 3.0f);
        // An attachment that objects share drives all of them.
        const NodePtr second = f.object();
        second->addAttachment(manager()->getAnimAttachment(object));
        markChanged(second, AttachmentContainer::AttachmentsFieldMask);
        manager()->updateSceneAnimCurveData();
        QCOMPARE(f.transform(second)->getTranslation().x(), 3.0f);
    }

    void whatIsStaleIsEvaluatedAndNothingElse()
    {
        const AnimNodePtr node = f.curve("translation", "X", {{0, 0}, {1, 24}});
        const AnimNodePtr block = f.added(object, f.block("block", {node}));
        manager()->setCurrentFrame(12, false, false);
        const auto x = [&] { return f.transform(object)->getTranslation().x(); };
        QCOMPARE(x(), 12.0f);
        f.curveOf(node)->getControlPoints(1).setY(48);
        f.curveOf(node)->computeIntangent(1, -1);
        f.curveOf(node)->computeOuttangent(0, -1);
        f.keysChanged(node);
        QCOMPARE(x(), 12.0f); // not before somebody asks
        manager()->reevaluateAnimations(false);
        QCOMPARE(x(), 24.0f);
        block->moveBy(0.25f, 0);
        f.changed(block, AnimNodeBase::OffsetFieldMask);
        QCOMPARE(placeAt(12).x(), 12.0f);
        f.curveOf(node)->setSuffix("Y");
        markChanged(f.curveOf(node), AnimCurveBase::SuffixFieldMask);
        manager()->updateSceneAnimCurveData();
        QCOMPARE(f.transform(object)->getTranslation(), Vec3f(0, 12, 0));
    }

    void aUsersValueStandsUntilTheFrameMoves()
    {
        const AnimNodePtr node = f.added(object, f.curve("translation", "X", {{0, 1}, {1, 2}}));
        const AnimNodePtr other = f.added(object, f.curve("translation", "Y", {{0, 1}}));
        manager()->setCurrentFrame(24, false, false);
        f.transform(object)->setTranslation(Vec3f(77, 1, 0));
        markChanged(object->getCore(), Transform::TranslationFieldMask);
        manager()->reevaluateAnimations(false);
        f.curveOf(other)->getControlPoints(0).setY(6);
        f.keysChanged(other);
        manager()->reevaluateAnimations(false);
        manager()->addAnimation(object, f.curve("translation", "Z", {{0, 9}}));
        manager()->updateSceneAnimCurveData();
        QCOMPARE(f.transform(object)->getTranslation(), Vec3f(77, 6, 9));
        QVERIFY(placeAt(23).x() < 2);

        // Taken back at another frame it leaves what that one has.
        const kxMarks written;
        kxAnimEvaluator::the()->setOSGFieldValue(f.curveOf(node), 55, true);
        QVERIFY(written.has(object->getCore()));
        manager()->setCurrentFrame(12, false, false);
        QUndoStack& stack = *kxUndoStack::get(0).stack();
        stack.undo();
        QCOMPARE(f.transform(object)->getTranslation().x(), 1.5f);
        stack.redo();
        QCOMPARE(f.transform(object)->getTranslation().x(), 55.0f);
        stack.clear();
    }

    void restValuesComeBack()
    {
        f.transform(object)->setTranslation(Vec3f(3, 4, 5));
        const AnimNodePtr node = f.added(object, f.curve("translation", "Y", {{0, 0}, {1, 24}}));
        manager()->setCurrentFrame(12, false, false);
        const UInt32 id = object->getCore()->getId();
        float rest = 0;
        QVERIFY(f.engine().rest.get(id, "translation", 1, rest));
        QCOMPARE(rest, 4.0f);
        QVERIFY(!f.engine().rest.get(id, "translation", 0, rest));
        manager()->setCurrentFrame(24, false, false);
        const kxMarks still;
        manager()->setCurrentFrame(36, false, false); // after the curve nothing moves
        QVERIFY(!still.has(object->getCore()));
        QCOMPARE(placeAt(12), Vec3f(3, 12, 5));
        // Out and in again, as the undo of a delete does it.
        const osg::Share<AnimNode> held(node);
        for (int i = 0; i < 2; ++i)
        {
            manager()->subAnimation(object, node);
            const kxMarks marks;
            manager()->updateSceneAnimCurveData();
            QVERIFY(marks.has(object->getCore()));
            QCOMPARE(f.transform(object)->getTranslation(), Vec3f(3, 4, 5));
            manager()->addAnimation(object, node);
            manager()->updateSceneAnimCurveData();
            QCOMPARE(f.transform(object)->getTranslation(), Vec3f(3, 12, 5));
        }
        QCOMPARE(f.engine().rest.size(), std::size_t(1));
    }

    void restValuesOfFiles()
    {
        const AnimNodePtr node = f.added(object, f.curve("translation", "Y", {{0, 7}}));
        manager()->updateSceneAnimCurveData();
        const UInt32 id = object->getCore()->getId();
        QVERIFY(f.engine().rest.set(id, "translation", 1, 40)); // driven: kept for later
        QVERIFY(f.engine().rest.set(id, "translation", 2, 50)); // its own: at once
        QVERIFY(!f.engine().rest.set(id, "translation", 3, 1));
        QVERIFY(!f.engine().rest.set(id, "nothing", 0, 1));
        QVERIFY(!f.engine().rest.set(id, "translation", 1, NAN));
        QVERIFY(!f.engine().rest.set(0xfffffff, "translation", 1, 1));
        QCOMPARE(f.transform(object)->getTranslation(), Vec3f(0, 7, 50));
        manager()->subAnimation(object, node);
        manager()->updateSceneAnimCurveData();
        QCOMPARE(f.transform(object)->getTranslation(), Vec3f(0, 40, 50));
    }

    /// A camera's angle of view and its focal length are one number: what one drives is no rest value of the other.
    void restValuesOfOneNumber()
    {
        const CameraPtr camera = Camera::create();
        object->setCore(camera);
        camera->setFieldOfView(40);
        const float rest = camera->getFocalLength();
        const AnimNodePtr angle = f.added(object, f.curve("fieldOfView", "", {{0, 90}}));
        manager()->updateSceneAnimCurveData();
        QCOMPARE(camera->getFieldOfView(), 90.0f);
        const AnimNodePtr length = f.added(object, f.curve("focalLength", "", {{0, 77}}));
        manager()->updateSceneAnimCurveData();
        float value = 0;
        QVERIFY(f.engine().rest.get(camera->getId(), "focalLength", 0, value));
        QCOMPARE(value, rest);
        QVERIFY(f.engine().rest.set(camera->getId(), "fieldOfView", 0, 60));
        for (const AnimNodePtr& node : {angle, length})
            manager()->subAnimation(object, node);
        manager()->updateSceneAnimCurveData();
        QCOMPARE(camera->getFieldOfView(), 60.0f);
    }

    void fieldsWithoutAnAddress()
    {
        const FCPtr<UberMaterial> material = UberMaterial::create();
        kxScene::the()->addMaterial(material);
        manager()->addAnimation(object, f.curve("visible", "", {{0, 1}, {1, 0}}));
        manager()->addAnimation(material, f.curve("roughness", "", {{0, 0}, {1, 5}}));
        const kxMarks marks;
        manager()->setCurrentFrame(3, false, false);
        QVERIFY(object->isActive() && marks.has(material));
        QVERIFY(std::abs(material->getRoughness() - 0.625f) < 1.0e-6f);
        manager()->setCurrentFrame(20, false, false);
        QVERIFY(object->isActive());
        QCOMPARE(material->getRoughness(), 1.0f); // kept in its range
        manager()->setCurrentFrame(24, false, false);
        QVERIFY(!object->isActive());
    }

    /// What jumps has no value between two keys, whatever their tangents; neither by the timeline nor in a clip.
    void steppedFieldsJump_data()
    {
        kxColumns<double, int, int>("frame", "infinity", "choice");
        kxRow("before the keys", 5.0, 0, 2);
        kxRow("at the first", 12.0, 0, 2);
        kxRow("between", 35.0, 0, 2);
        kxRow("at the last", 36.0, 0, 6);
        kxRow("no slope behind the keys", 48.0, int(InfinityMode::Linear), 6);
        kxRow("the next round", 59.0, int(InfinityMode::Loop), 2);
        kxRow("the next round, above", 59.0, int(InfinityMode::LoopWithOffset), 6);
    }

    void steppedFieldsJump()
    {
        QFETCH(double, frame);
        QFETCH(int, infinity);
        const SwitchPtr choice = Switch::create();
        object->setCore(choice);
        const AnimNodePtr node = f.curve("choice", "", {{0.5f, 2}, {1.5f, 6}});
        f.curveOf(node)->setPostInfinityMode(UInt32(infinity));
        const AnimNodePtr block = f.added(object, f.block("block", {node}));
        const AnimNodePtr clip = f.added(f.clip("clip", {f.clone(block, 0)}));
        manager()->setCurrentFrame(frame, false, false);
        QTEST(int(choice->getChoice()), "choice");
        choice->setChoice(0);
        manager()->evaluateByFrame(clip, frame, false, false, false);
        if (infinity == 0) // a clip ends with its last key
            QTEST(int(choice->getChoice()), "choice");
    }

    void shownCurvesAlone()
    {
        const AnimNodePtr shown = f.curve("translation", "X", {{0, 0}, {1, 24}});
        const AnimNodePtr block = f.added(object, f.block("block", {shown}));
        block->setOffset(Vec2f(0.5f, 0));
        manager()->addAnimation(object, f.curve("translation", "Y", {{0, 0}, {1, 24}}));
        manager()->setCurrentFrame(0, true, false);
        manager()->setGetCurveEditorDataCB(
            [&](std::vector<kxAnimManager::kxCurveData>& out)
            {
                std::vector<AnimNodePtr> nodes;
                manager()->getAnimCurveData(block, out, nodes, true, true, false, false);
            });
        manager()->setCurrentFrame(15, false, false);
        f.transform(object)->setTranslation(Vec3f(-1, -1, 0));
        manager()->setPlaybackContextHint(1); // shown at once
        QCOMPARE(f.transform(object)->getTranslation(), Vec3f(3, -1, 0));
        QCOMPARE(placeAt(18), Vec3f(6, -1, 0));
        manager()->setPlaybackContextHint(0);
        QCOMPARE(f.transform(object)->getTranslation(), Vec3f(6, 18, 0));
        manager()->setGetCurveEditorDataCB(nullptr);
        QCOMPARE(placeAt(21), Vec3f(9, 21, 0));
    }

    void framesSurviveSeconds()
    {
        for (const double fps : {23.976, 24.0, 25.0, 29.97, 59.94, 24000.0 / 1001, 60000.0 / 1001})
            for (int frame = -2000; frame < 400000; frame += 13)
            {
                const float seconds = kxFrameTime::seconds(frame, fps);
                QCOMPARE(kxFrameTime::frame(seconds, fps), double(frame));
                QCOMPARE(kxFrameTime::wholeFrame(seconds * fps < frame ? frame - 1.0e-10 * std::abs(frame) : frame),
                         frame);
            }
        QCOMPARE(kxFrameTime::frame(1.0e-12, 24), 0.0);
        QCOMPARE(kxFrameTime::wholeFrame(6.99), 6);
        QCOMPARE(kxFrameTime::wholeFrame(-0.5), 0);
        QCOMPARE(kxFrameTime::wholeFrame(1.0e300), std::numeric_limits<int>::max());
        QCOMPARE(kxFrameTime::frame(0.5 / 24, 24), 0.5);
    }

private:
    /// Where the object is at the frame.
    Vec3f placeAt(double frame) const
    {
        manager()->setCurrentFrame(frame, false, false);
        return f.transform(object)->getTranslation();
    }

    kxAnimFixture f;
    NodePtr object; // in the scene, with nothing that moves it
};

QTEST_GUILESS_MAIN(tst_kxSceneEvaluation)
#include "tst_kxSceneEvaluation.moc"
