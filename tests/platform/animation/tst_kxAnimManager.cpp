#include <animation/kxTimeRescale.h>
#include <kxAnimEvaluator.h>
#include <kxAnimFixture.h>
#include <kxScenegraph.h>
#include <kxTable.h>
#include <kxUndo.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Share.h>
#include <scene/CameraLight.h>
#include <scene/UberMaterial.h>

#include <QUndoStack>

#include <cmath>

using namespace osg;

namespace
{
constexpr auto manager = &kxAnimManager::the;

template <class Nodes>
QStringList names(const Nodes& nodes)
{
    QStringList result;
    for (const auto& node : nodes)
        result << QString::fromStdString(node->getNodeName());
    return result;
}

QStringList childNames(const AnimNodePtr& node)
{
    return node == NullFC ? QStringList() : names(node->getChildren());
}

AnimCurvePtr firstCurve(const AnimNodePtr& block)
{
    return AnimCurvePtr::dcast(block->getChild(0)->getCore());
}

/// Gives the name as an edit of the user does.
void rename(const NodePtr& node, const char* name)
{
    kxNodeUtils::setName(node, name, false, NodePtr());
}

AnimNodePtr rootOf(const FieldContainerPtr& object)
{
    return manager()->getAnimAttachment(object)->getAnimationRoot();
}
} // namespace

class tst_kxAnimManager : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        f.clear();
        object = f.object();
    }

    void keyableChannels()
    {
        const NodePtr camera = f.object("cam");
        camera->setCore(Camera::create());
        const auto channelsOf = [](const FieldContainerPtr& container)
        {
            std::vector<kxAnimManager::kxOSGChannelData> channels;
            manager()->getKeyableChannels(container, channels);
            return channels;
        };
        const auto channels = channelsOf(camera);
        QStringList texts;
        for (const auto& channel : channels)
            texts << QString::fromStdString(channel.name + "." + channel.suffix);
        QCOMPARE(texts.mid(0, 6).join(" "),
                 QString("translation.X translation.Y translation.Z rotation.X rotation.Y rotation.Z"));
        QVERIFY(texts.contains("focalLength.") && texts.contains("visible."));
        const auto color = [](const char* channel, const char* suffix)
        {
            const osg::Share<AnimNode> node(kxAnimFixture::curve(channel, suffix, {}));
            const Color3f c = kxAnimFixture::curveOf(node)->getColor();
            return QColor::fromRgbF(double(c.red()), double(c.green()), double(c.blue())).name();
        };
        QCOMPARE(color("translation", "X") + color("rotation", "Y") + color("scale", "Z") + color("focalLength", "") +
                     color("near", "") + color("far", ""),
                 QString("#e06129#74ca95#91b1d8#f0e352#9ecce5#f0e352"));
        QCOMPARE(channels[4].objectName, std::string("cam"));
        QCOMPARE(channels[4].fieldName, std::string("eulerRotation"));
        QCOMPARE(channels[4].component, UInt64(1));
        const MaterialPtr material = UberMaterial::create();
        kxScene::the()->addMaterial(material);
        QVERIFY(!channelsOf(material).empty());
        manager()->addToSceneStructure(f.curve("scale", "X", {}));
        QVERIFY(channelsOf(manager()->sceneStructureRoot()->getChild(0)).empty());
        QVERIFY(channelsOf(FieldContainerPtr()).empty());
        // Every channel leads to a curve and back.
        const osg::Share<AnimAttachment> attachment(AnimAttachmentBase::create());
        for (const auto& channel : channels)
        {
            const AnimNodePtr node = manager()->createChannelCurveNode(channel, attachment);
            QVERIFY(manager()->findChannelCurveNode(channel, attachment) == node);
            FieldContainerPtr target;
            std::vector<FieldContainerPtr> aims;
            QVERIFY(kxAnimEvaluator::the()->computeAim(f.curveOf(node), camera, target, aims));
            QCOMPARE(manager()->getOSGFieldValue(f.curveOf(node), target), manager()->getOSGFieldValue(channel));
        }
        const AnimNodePtr byField = manager()->createChannelCurveNode(attachment, "eulerRotation", 1, "W", "rotation");
        QVERIFY(manager()->findChannelCurveNode(attachment, "rotation", "W") == byField);
        QVERIFY(manager()->findChannelCurveNode(attachment, "rotation", "Q") == NullFC);
    }

    void lookUps()
    {
        const NodePtr child = f.object();
        object->addChild(child);
        manager()->addAnimation(child, f.block("same", {}));
        const AnimNodePtr hidden = f.block("hidden", {});
        hidden->setHidden(true);
        manager()->addToClipStructure(f.clip("outer", {f.clip("same", {hidden})}));
        QVERIFY(manager()->find("same") == manager()->findClip("same"));
        QVERIFY(manager()->findBlockR(object, "same") != NullFC);
        QVERIFY(manager()->find("hidden") == NullFC); // a block in a clip has its object elsewhere
        QVERIFY(manager()->find("nobody") == NullFC);
        QCOMPARE(kxAnimManager::pyGetClips(), (std::vector<std::string>{"outer"}));
        QCOMPARE(kxAnimManager::pyGetBlocks(false), (std::vector<std::string>{"same"}));
        const MaterialPtr material = UberMaterial::create();
        kxScene::the()->addMaterial(material);
        manager()->addAnimation(material, f.block("glow", {}));
        QCOMPARE(kxAnimManager::pyGetBlocks(true), (std::vector<std::string>{"same", "glow", "hidden"}));
        kxAnimManager::NodeTopLevelAnimations found;
        manager()->getNodesWithAnimation(kxScenegraph::getSuperRoot(), found);
        QCOMPARE(found.size(), std::size_t(1));
        QVERIFY(found[0].node == child && found[0].animations.size() == 1);
        QVERIFY(!manager()->rename(hidden, ""));
        QVERIFY(!manager()->rename(hidden, "outer"));
        QVERIFY(manager()->rename(hidden, "hidden"));
        QVERIFY(manager()->rename(hidden, "free"));
        QCOMPARE(hidden->getNodeName(), std::string("free"));
    }

    void blocksAreFoundAfterEdits()
    {
        const NodePtr earlier = f.object(), shelf = f.object();
        const AnimNodePtr first = f.added(object, f.block("same", {})), second = f.block("same", {});
        const auto find = [](const char* name) { return manager()->findBlockR(kxScenegraph::getSuperRoot(), name); };
        QVERIFY(find("same") == first && find("other") == NullFC);
        manager()->addAnimation(object, second);
        QVERIFY(find("same") == first);
        manager()->addToClipStructure(f.clip("clip", {f.clone(second, 0)})); // a copy is no block of the scene
        QVERIFY(find("same") == first);

        rename(first, "other");
        QVERIFY(find("same") == second && find("other") == first);
        rename(first, "same");
        QVERIFY(find("same") == first && find("other") == NullFC);
        first->setCore(AnimClipBase::create());
        QVERIFY(find("same") == second);
        first->setCore(AnimBlockBase::create());
        object->getParent()->insertChild(0, earlier);
        const AnimNodePtr third = f.added(earlier, f.block("same", {}));
        QVERIFY(find("same") == third); // the order of the scene, not of making
        rename(earlier, "same");        // an object of the same name
        QVERIFY(find("same") == third);
        shelf->addRef();
        shelf->getParent()->subChild(shelf);
        shelf->addChild(earlier); // out of the scene
        QVERIFY(find("same") == first);
        QVERIFY(manager()->findBlockR(earlier, "same") == third);
        rename(third, "alone");
        QVERIFY(find("alone") == NullFC);
        shelf->subRef(); // dies
        manager()->subAnimation(object, first);
        QVERIFY(find("same") == second);
        manager()->subAnimation(object, second);
        QVERIFY(find("same") == NullFC);

        // Many changes of names leave nothing behind.
        const AnimNodePtr block = f.added(object, f.block("block", {}));
        for (int i = 0; i < 5000; ++i)
            rename(block, i % 2 == 0 ? "turn" : ("name " + std::to_string(i)).c_str());
        QVERIFY(find("turn") == NullFC && find("name 4999") == block && find("name 4997") == NullFC);
        rename(block, "turn");
        QVERIFY(find("turn") == block);
    }

    /// Tracks 0 and 1 are taken from 1 to 2 and from 1.5 to 3; a trigger is at 5 on track 0.
    void tracks_data()
    {
        kxColumns<double, double, double>("start", "end", "expected");
        QTest::newRow("over both") << 1.6 << 1.8 << 100.0;
        QTest::newRow("over the first") << 0.0 << 1.2 << 50.0;
        QTest::newRow("over the second") << 2.5 << 4.0 << 0.0;
        QTest::newRow("meeting the first") << 0.0 << 1.0 << 0.0;
        QTest::newRow("behind the first") << 2.0 << 2.2 << 0.0;
        QTest::newRow("point on an edge") << 1.0 << 1.0 << 50.0;
        QTest::newRow("end before start counts as start") << 1.7 << 0.0 << 100.0;
        QTest::newRow("over the trigger") << 4.5 << 5.5 << 50.0;
        QTest::newRow("point on the trigger") << 5.0 << 0.0 << 50.0;
    }

    void tracks()
    {
        QFETCH(double, start);
        QFETCH(double, end);
        const AnimNodePtr one = f.block("1", {f.curve("scale", "X", {{0, 0}, {1, 0}})});
        const AnimNodePtr two = f.block("2", {f.curve("scale", "X", {{0, 0}, {1.5f, 0}})});
        one->setOffset(Vec2f(1, 0));
        two->setOffset(Vec2f(1.5f, 50));
        const AnimNodePtr clip = f.added(f.clip("clip", {one, two, f.trigger("3", 5), f.clip("empty", {})}));
        clip->setOffset(Vec2f(100, 0)); // times are those of the root
        QTEST(double(manager()->calculateFreeOffsetYFor(float(100 + start), end > 0 ? float(100 + end) : 0, clip,
                                                        AnimNodePtr())),
              "expected");
        QCOMPARE(manager()->calculateFreeOffsetYFor(one, clip, AnimNodePtr()), 100.0f);
        QCOMPARE(manager()->calculateFreeOffsetYFor(one, clip, one), 0.0f);
    }

    void blocksTakeTheKeysOfAnObject()
    {
        const AnimNodePtr before = f.added(object, f.block("taken", {}));
        const AnimNodePtr x = f.added(object, f.curve("scale", "X", {{0, 1}}));
        f.added(object, f.curve("scale", "Y", {}));
        const AnimNodePtr block = manager()->createBlock(manager()->getAnimAttachment(object), "taken");
        QCOMPARE(childNames(rootOf(object)).join(' '), QString("taken scale.Y taken_1"));
        QVERIFY(block->getChild(0) == x && !before->isActive() && block->isActive());
        // Whom curves move is said where it is asked for.
        std::vector<kxAnimManager::kxCurveData> data;
        std::vector<AnimNodePtr> nodes;
        manager()->getAnimCurveData(block, data, nodes, true, true, false, true);
        QVERIFY(data.size() == 1 && nodes[0] == x);
        QCOMPARE(data[0].targetId, object->getId());
        std::vector<AnimCurvePtr> curves;
        manager()->getAnimCurves(block, curves, false, false, true);
        QCOMPARE(curves.size(), std::size_t(1));
        manager()->getAnimCurves(rootOf(object), curves, false, false, true); // nothing deeper than children
        QCOMPARE(curves.size(), std::size_t(2));
        FieldContainerPtr target;
        std::vector<FieldContainerPtr> aims;
        QVERIFY(!kxAnimEvaluator::the()->computeAim(AnimCurvePtr(), object, target, aims));
        f.curveOf(x)->setChannelName("nothing of it");
        QVERIFY(!kxAnimEvaluator::the()->computeAim(f.curveOf(x), object, target, aims));
    }

    void animationFiles()
    {
        QTemporaryDir folder;
        const std::string path = folder.filePath("x.kxa").toStdString();
        const NodePtr from = object, to = f.object();
        QVERIFY(!manager()->saveAnimations(path, from) && !QFile::exists(folder.filePath("x.kxa")));
        manager()->addAnimation(from, f.block("one", {f.curve("scale", "Y", {{0, 2}, {1, 5}})}));
        manager()->addAnimation(from, f.curve("translation", "X", {{0, 7}}));
        QVERIFY(manager()->saveAnimations(path, from));
        QCOMPARE(manager()->loadAnimations(path, rootOf(from)), -1); // an animation takes none
        QCOMPARE(manager()->loadAnimations(path + "x", to), -1);
        QCOMPARE(manager()->loadAnimations(path, to), 2);
        manager()->setCurrentFrame(12, true, false);
        QCOMPARE(f.transform(to)->getScale().y(), 3.5f);
        QCOMPARE(f.transform(to)->getTranslation().x(), 7.0f);
    }

    void clipboardHoldsWhatDied()
    {
        const AnimNodePtr block = f.added(object, f.block("block", {f.curve("scale", "X", {{0, 1}, {1, 5}})}));
        manager()->copy(block, object);
        firstCurve(block)->clear();
        manager()->subAnimation(object, block);              // dies
        manager()->copy(AnimNodePtr(), FieldContainerPtr()); // nothing: what was copied stays
        const NodePtr target = f.object(), third = f.object();
        manager()->setCurrentFrame(6, false, false);
        const std::vector<AnimNodePtr> pasted = manager()->pasteTo(target, true, false);
        QCOMPARE(pasted.size(), std::size_t(1));
        QCOMPARE(f.transform(target)->getScale().x(), 4.0f); // shown at once
        QVERIFY(manager()->moveBlockToNode(pasted[0], target, third, true));
        QCOMPARE(f.transform(third)->getScale().x(), 4.0f);
        QCOMPARE(f.transform(target)->getScale().x(), 1.0f);
        QVERIFY(manager()->moveBlockToNode(pasted[0], third, target, true));
        QVERIFY(pasted[0]->getFlipped() && pasted[0]->getParent() == NodePtr(rootOf(target)));
        QCOMPARE(firstCurve(pasted[0])->getControlPoints().size(), std::size_t(2));
        const std::vector<AnimNodePtr> again = manager()->pasteTo(target, false, false);
        // Copies in the clipboard hold no name.
        QCOMPARE(names(pasted) + names(again), QStringList({"block", "block_1"}));
        QVERIFY(again[0]->getCore() != pasted[0]->getCore());
        QVERIFY(manager()->pasteTo(FieldContainerPtr(), false, false).empty());
        // What is copied next takes its place.
        const UInt32 id = again[0]->getCore()->getId();
        manager()->copy(again[0], target);
        manager()->subAnimation(target, again[0]);
        QVERIFY(FieldContainerFactory::the()->getContainer(id) != NullFC);
        manager()->copy(pasted[0], target);
        QVERIFY(FieldContainerFactory::the()->getContainer(id) == NullFC);
    }

    void clonesShareAndUnshare()
    {
        const NodePtr one = object, two = f.object();
        const AnimNodePtr block = f.added(one, f.block("block", {f.curve("scale", "X", {{0, 1}})}));
        manager()->copy(block, one);
        const NodeCorePtr core = block->getCore();
        manager()->unshareFrom(block, one); // a copy in the clipboard is no second user
        QVERIFY(block->getCore() == core && core->getParents().size() == 1);
        const AnimNodePtr clone = manager()->clonePasteTo(two, false, true)[0];
        manager()->setCurrentFrame(0, true, false);
        QVERIFY(clone->getCore() == block->getCore());
        QCOMPARE(clone->getNodeName(), std::string("block"));
        QVERIFY(clone->getChild(0)->getCore() == block->getChild(0)->getCore());
        manager()->unshareFrom(clone, one); // is elsewhere
        QVERIFY(clone->getCore() == block->getCore());
        manager()->unshareFrom(clone, two);
        QVERIFY(clone->getCore() != block->getCore());
        const AnimCurvePtr own = firstCurve(clone);
        QVERIFY(own != firstCurve(block));
        QCOMPARE(own->getControlPoints().size(), std::size_t(1));
        QCOMPARE(own->getSuffix(), std::string("X"));
        firstCurve(block)->editControlPoints()[0].setPoint(Pnt2f(0, 7));
        f.keysChanged(AnimNodePtr::dcast(block->getChild(0)));
        manager()->setCurrentFrame(3, true, false);
        QCOMPARE(f.transform(one)->getScale().x(), 7.0f);
        QCOMPARE(f.transform(two)->getScale().x(), 1.0f);
        // Clips get their own cores, the blocks in them stay shared.
        const AnimNodePtr clip = f.added(f.clip("clip", {f.clip("inner", {f.clone(block, 0)})}));
        const AnimNodePtr copy = f.added(cloneAnimTree(clip, true));
        manager()->unshareClipsR(copy);
        QVERIFY(copy->getCore() != clip->getCore());
        QVERIFY(copy->getChild(0)->getCore() != clip->getChild(0)->getCore());
        QVERIFY(copy->getChild(0)->getChild(0)->getCore() == block->getCore());
        // What is in a clip beside the objects finds its object through the core that it shares.
        const AnimNodePtr beside = AnimNodePtr::dcast(copy->getChild(0)->getChild(0));
        manager()->unshareFrom(beside, copy->getChild(0));
        QVERIFY(beside->getCore() == block->getCore());
        const AnimNodePtr below = f.added(one, cloneAnimTree(clip, true));
        const AnimNodePtr inner = AnimNodePtr::dcast(below->getChild(0)), leaf = AnimNodePtr::dcast(inner->getChild(0));
        manager()->unshareFrom(leaf, clip); // is in another clip
        QVERIFY(leaf->getCore() == block->getCore());
        manager()->unshareFrom(leaf, inner);
        QVERIFY(leaf->getCore() != block->getCore() && inner->getCore() == clip->getChild(0)->getCore());
        QVERIFY(kxAnimEvaluator::the()->getFirstAim(firstCurve(leaf)) == one);
    }

    void unusedClonesAreTakenOut()
    {
        const AnimNodePtr kept = f.added(object, f.block("kept", {})), gone = f.added(object, f.block("gone", {}));
        for (const AnimNodePtr& clip : {f.clip("mixed", {f.clone(kept, 0), f.clone(gone, 0)}),
                                        f.clip("nothing left", {f.clip("inner", {f.clone(gone, 0)})}),
                                        f.clip("only a trigger", {f.trigger("trigger", 0)})})
            manager()->addToClipStructure(clip);
        manager()->subAnimation(object, gone);
        manager()->verifyClipStructure(); // off by default
        QCOMPARE(manager()->clipStructureRoot()->getNChildren(), 3u);
        manager()->setVerifyClipStructure(true);
        manager()->verifyClipStructure();
        manager()->setVerifyClipStructure(false);
        const auto structure = []
        {
            return childNames(manager()->clipStructureRoot()) + childNames(manager()->findClip("mixed")) +
                   childNames(manager()->findClip("inner"));
        };
        const QStringList verified = {"mixed", "only a trigger", "kept"};
        QCOMPARE(structure(), verified);
        QUndoStack& stack = *kxUndoStack::get(0).stack();
        stack.undo();
        QCOMPARE(structure(), QStringList({"mixed", "nothing left", "only a trigger", "kept", "gone", "gone"}));
        stack.redo();
        QCOMPARE(structure(), verified);
        stack.clear();
    }

    void keysKeepTheirFrames()
    {
        std::vector<std::pair<float, float>> keys;
        for (int frame = 0; frame < 500; ++frame)
            keys.push_back({float(frame / 24.0), float(frame % 9)});
        const AnimNodePtr node = f.curve("translation", "X", keys);
        f.curveOf(node)->editControlPoints()[9].setOuttangent(Vec2f(0.01f, 3));
        f.added(object, f.block("block", {node}))->setOffset(Vec2f(10 / 24.0f, 0));
        const AnimNodePtr shot = f.group<AnimShotBase>("shot", {});
        const AnimShotPtr times = AnimShotPtr::dcast(shot->getCore());
        times->setShotDuration(2);
        times->setTransitionDuration(0.5f);
        manager()->addToClipStructure(f.clip("clip", {shot}));
        manager()->setCurrentFrame(113, false, false);
        const float value = f.transform(object)->getTranslation().x();
        manager()->setKeepKeysAtFrame(true);
        for (const double fps : {29.97, 59.94, 23.976, 25.0})
        {
            manager()->setFPS(fps);
            for (UInt32 i = 0; i < 500; ++i)
                QVERIFY(std::abs(f.curveOf(node)->getControlPoints(i).x() * fps - i) < 1.0e-4);
            QVERIFY(std::abs(f.transform(object)->getTranslation().x() - value) < 1.0e-3);
            QVERIFY(std::abs(f.curveOf(node)->getControlPoints(9).outtangent().x() * fps - 0.24) < 1.0e-4);
            QVERIFY(std::abs(times->getShotDuration() * fps - 48) < 1.0e-4);
            QVERIFY(std::abs(times->getTransitionDuration() * fps - 12) < 1.0e-4);
        }
        manager()->setKeepKeysAtFrame(false);
        const float before = f.curveOf(node)->getControlPoints(7).x();
        manager()->setFPS(24);
        QCOMPARE(f.curveOf(node)->getControlPoints(7).x(), before);

        // Times that are being read belong to the rate that is read with them.
        manager()->setKeepKeysAtFrame(true);
        {
            const kxTimeRescale::Pause pause;
            manager()->setFPS(30);
        }
        manager()->setKeepKeysAtFrame(false);
        QCOMPARE(f.curveOf(node)->getControlPoints(7).x(), before);
    }

    /// Steps hold the seconds of their rate: undo all gives the start, redo all the end, whatever rates lie between.
    void aRateThatTakesKeysAlongIsAStep()
    {
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        stack->clear();
        manager()->setKeepKeysAtFrame(true);
        const AnimNodePtr node = f.added(f.object(), f.curve("translation", "X", {{0, 0}, {1, 5}, {2.5f, 7}}));
        const auto last = [&] { return f.curveOf(node)->getControlPoints(2).x(); };
        manager()->setFPS(30);
        manager()->setFPS(29.97);
        QCOMPARE(stack->count(), 2);
        manager()->setKeepKeysAtFrame(false);
        manager()->setFPS(60); // seconds stay
        QCOMPARE(stack->count(), 2);
        const float end = last();
        stack->setIndex(0);
        QCOMPARE(manager()->fps(), 24.0);
        QCOMPARE(last(), 2.5f);
        stack->setIndex(2);
        QCOMPARE(manager()->fps(), 29.97);
        QCOMPARE(last(), end);
        // Rates of one gesture are one step, and none where the first comes back.
        manager()->setKeepKeysAtFrame(true);
        QWidget field;
        QTest::mousePress(&field, Qt::LeftButton);
        manager()->setFPS(40);
        manager()->setFPS(50);
        QCOMPARE(stack->count(), 3);
        manager()->setFPS(29.97);
        QCOMPARE(stack->count(), 2);
        QTest::mouseRelease(&field, Qt::LeftButton);
        stack->clear();
    }

    /// From (0, 0, 10) with the look at the origin to (10, 0, 0): a quarter turn about y.
    void cameraShots()
    {
        const AnimNodePtr x = f.curve("translation", "X", {}), turn = f.curve("rotation", "Y", {}),
                          other = f.curve("focalLength", "", {{0, 35}});
        const osg::Share<AnimNode> shot(f.group<AnimShotBase>("shot", {x, turn, other}));
        manager()->updateCameraShotCurves(shot);
        QVERIFY(f.curveOf(x)->isEmpty()); // no duration yet
        const AnimShotPtr core = AnimShotPtr::dcast(shot->getCore());
        core->setShotDuration(2);
        core->setStartFrom(Pnt3f(0, 0, 10));
        core->setEndFrom(Pnt3f(10, 0, 0));
        core->setInterpolation(3);
        manager()->updateCameraShotCurves(shot);
        QCOMPARE(f.curveOf(x)->getControlPoints(1).point(), Pnt2f(2, 10));
        QCOMPARE(f.curveOf(x)->getControlPoints(0).outtangent().y(), 0.0f);
        QVERIFY(std::abs(f.curveOf(turn)->getControlPoints(0).y()) < 1.0e-3f);
        QVERIFY(std::abs(f.curveOf(turn)->getControlPoints(1).y() - 90) < 1.0e-3f);
        QCOMPARE(f.curveOf(other)->getControlPoints().size(), std::size_t(1));
    }

    void nullAndDeadHandles()
    {
        kxAnimManager* const m = manager();
        const AnimNodePtr none;
        m->evaluateByFrame(none, 3, true, true, true);
        m->enqueue(none, true);
        m->dequeue(none);
        m->reset(none, true);
        m->pause(none, true);
        m->addAnimation(FieldContainerPtr(), none);
        m->subAnimation(FieldContainerPtr(), none);
        m->addToClipStructure(none);
        m->setAllBlocksInactive(FieldContainerPtr());
        m->setTreeActive(none, true);
        m->unshareFrom(none, FieldContainerPtr());
        m->unshareClipsR(none);
        m->updateCameraShotCurves(none);
        QVERIFY(m->getAnimAttachment(FieldContainerPtr()) == NullFC);
        QVERIFY(m->findFirstParent(NodeCorePtr()) == NullFC);
        QVERIFY(m->getCameraTrackBlock(NodePtr()) == NullFC);
        QVERIFY(!m->rename(none, "x") && !m->moveBlockToNode(none, NodePtr(), NodePtr(), true));
        QCOMPARE(m->calculateFreeOffsetYFor(none, none, none), 0.0f);
        QCOMPARE(m->getInfo(none).curves, UInt64(0));
        QCOMPARE(m->getOSGFieldValue(AnimCurvePtr(), NodePtr()), 0.0f);
        QVERIFY(cloneAnimTree(none, true) == NullFC);
        QVERIFY(m->clonePasteToWithOffset(none, 1, false, false).empty());
        QVERIFY(m->createBlock(AnimAttachmentPtr(), "b") == NullFC);
        QVERIFY(m->createChannelCurveNode(AnimAttachmentPtr(), "", 0, "X", "") == NullFC);
    }

private:
    kxAnimFixture f;
    NodePtr object; // in the scene, with nothing that moves it
};

QTEST_MAIN(tst_kxAnimManager)
#include "tst_kxAnimManager.moc"
