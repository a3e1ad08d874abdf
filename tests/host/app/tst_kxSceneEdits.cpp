#include "kxSceneFixture.h"

#include <edits/kxSceneObjects.h>
#include <edits/kxSceneryEdits.h>
#include <kernel/kxHostHooks.h>
#include <kernel/kxLogModel.h>
#include <kxAnimFixture.h>
#include <kxHeard.h>
#include <kxMessageNames.h>
#include <kxScenegraph.h>
#include <kxSendMouse.h>
#include <kxServices.h>
#include <osg/AnimAttachments.h>
#include <osg/AnimCores.h>
#include <osg/Share.h>
#include <scene/CameraLight.h>
#include <scene/UberMaterial.h>

#include <cmath>

using namespace kxSceneFixture;

class tst_kxSceneEdits : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { clear(); }

    void everyEditComesBack()
    {
        const osg::NodePtr surface = addSurface("Surface", addMaterial("Steel"));
        animate(surface);
        osg::NodePtr above;
        for (const char* const name : {"A", "B", "C", "D"})
            above = addObject(name, above);
        above->setTravMask(0x5); // hidden in a way of its own
        const QByteArray before = bytes();
        for (const auto& edit : edits())
        {
            const int steps = stack()->count();
            edit();
            QCOMPARE(stack()->count(), steps + 1);
        }
        QVERIFY(goesBackAndForth(before));
    }

    void movedNodeKeepsItsPlaceInTheWorld()
    {
        const osg::NodePtr parent = addObject("Parent"), node = addObject("Node");
        const auto place = osg::TransformPtr::dcast(parent->getCore()), own = osg::TransformPtr::dcast(node->getCore());
        place->setTranslation(osg::Vec3f(3, -1, 2));
        place->setEulerRotation(osg::Vec3f(20, 130, -40));
        place->setScale(osg::Vec3f(2, 2, 2));
        own->setTranslation(osg::Vec3f(1, 5, 0));
        own->setEulerRotation(osg::Vec3f(0, 370, 15)); // a turn and a bit stays a turn and a bit
        const QMatrix4x4 world = kxSceneMath::worldMatrix(node);
        QVERIFY(kxSceneEdits::moveNodes({node}, parent, -1));
        QCOMPARE(node->getParent(), parent);
        const QMatrix4x4 moved = kxSceneMath::worldMatrix(node);
        for (int i = 0; i < 16; ++i)
            QVERIFY(std::abs(moved.constData()[i] - world.constData()[i]) < 1e-4f);
        QCOMPARE(stack()->count(), 1);
        stack()->undo();
        QVERIFY(own->getEulerRotation() == osg::Vec3f(0, 370, 15));
    }

    void animatedNodesKeepTheirMotion_data()
    {
        kxColumns<QString, bool>("edit", "isOn");
        kxRow("variant set", "set", true);
        kxRow("variant set, the animation is off", "set", false);
        kxRow("group", "group", true);
        kxRow("dragged", "drag", true);
    }

    void animatedNodesKeepTheirMotion()
    {
        QFETCH(QString, edit);
        QFETCH(bool, isOn);
        const osg::NodePtr target = addObject("Target"), still = addObject("Still", target),
                           parent = addObject("Parent"), door = addObject("Door", parent);
        const auto place = osg::TransformPtr::dcast(parent->getCore());
        place->setTranslation(osg::Vec3f(3, -1, 2));
        place->setEulerRotation(osg::Vec3f(20, 130, -40));
        osg::TransformPtr::dcast(target->getCore())->setTranslation(osg::Vec3f(0, 7, -4));
        osg::TransformPtr::dcast(door->getCore())->setTranslation(osg::Vec3f(8, 5, 6));
        animate(door);
        std::vector<osg::AnimNodePtr> curves;
        kxAnimManager::the()->getChannelCurveNodes(door, curves);
        const auto switchTo = [&](bool on)
        {
            curves.at(0)->setTravMask(on ? osg::Node::Active : 0);
            osg::markChanged(curves[0], osg::Node::TravMaskFieldMask);
        };
        const auto worldAt = [&](double frame)
        {
            kxAnimManager::the()->setCurrentFrame(frame, true, true);
            return kxSceneMath::worldMatrix(door);
        };
        const QMatrix4x4 before = worldAt(18);
        worldAt(6);
        switchTo(isOn);
        const int steps = stack()->count();
        const kxSceneEdits::Nodes nodes = {still, door};
        QVERIFY(edit == "set"     ? kxSceneryEdits::addVariantSet(nodes, "Look") != osg::NullFC
                : edit == "group" ? kxSceneEdits::groupNodes(nodes)
                                  : kxSceneEdits::moveNodes(nodes, target, 1));
        QCOMPARE(stack()->count(), steps + 1);
        switchTo(true);
        const QMatrix4x4 after = worldAt(18);
        for (int i = 0; i < 16; ++i)
            QVERIFY(std::abs(after.constData()[i] - before.constData()[i]) < 1e-4f);
        const osg::NodePtr carrier = door->getParent();
        QCOMPARE(carrier->getNodeName(), std::string("Door")); // and the choice's
        QCOMPARE(carrier->getParent(), still->getParent());
        stack()->undo();
        QCOMPARE(door->getParent(), parent);
        QVERIFY(kxSceneEdits::moveNodes({door}, addObject("Level", parent), -1)); // which stands as its parent does
        QCOMPARE(door->getParent()->getNodeName(), std::string("Level"));
    }

    void moveAmongSiblings_data()
    {
        kxColumns<QString, int, QString>("moved", "before", "order");
        kxRow("down", "a", 3, "bcade");
        kxRow("up", "d", 1, "adbce");
        kxRow("to the end", "b", -1, "acdeb");
        kxRow("two that stand apart", "bd", 0, "bdace");
        kxRow("before itself", "c", 2, "abcde");
        kxRow("two before one of them", "bc", 2, "abcde");
        kxRow("all", "abcde", 3, "abcde");
    }

    void moveAmongSiblings()
    {
        QFETCH(QString, moved);
        QFETCH(int, before);
        QFETCH(QString, order);
        const osg::NodePtr parent = addObject("Parent");
        std::vector<osg::NodePtr> nodes;
        for (const char* const name : {"a", "b", "c", "d", "e"})
        {
            const osg::NodePtr node = addObject(name, parent);
            if (moved.contains(QLatin1String(name)))
                nodes.push_back(node);
        }
        QVERIFY(kxSceneEdits::moveNodes(nodes, parent, before));
        QString result;
        for (const osg::NodePtr& child : parent->getChildren())
            result += QString::fromStdString(child->getNodeName());
        QCOMPARE(result, order);
    }

    void refusedEditsChangeNothing()
    {
        const osg::NodePtr parent = addObject("Parent"), child = addObject("Child", parent);
        const QByteArray before = bytes();
        QVERIFY(!kxSceneEdits::moveNodes({parent}, child, -1));
        QVERIFY(!kxSceneEdits::moveNodes({parent}, parent, 0));
        QVERIFY(!kxSceneEdits::moveNodes({child}, osg::NodePtr(), 0));
        QVERIFY(!kxSceneEdits::moveNodes({}, parent, 0));
        QCOMPARE(kxSceneEdits::deleteNodes({kxScene::the()->root(), kxScene::the()->superRoot(), osg::NodePtr()}), 0);
        QVERIFY(!kxSceneEdits::addNode(osg::NodePtr(), parent, "Add"));
        QVERIFY(!kxSceneEdits::rename(parent, QStringLiteral("  ")));
        QVERIFY(!kxSceneEdits::groupNodes({}));
        QVERIFY(!kxSceneEdits::groupNodes({kxScene::the()->root()}));
        const osg::FieldContainerPtr core = child->getCore();
        kxSceneEdits::setComponent({core}, "translation", 0, RelativeDivide, 0);
        kxSceneEdits::setComponent({core}, "translation", 7, RelativeSet, 1);
        kxSceneEdits::setComponent({core}, "translation", 0, RelativeSet, std::nan(""));
        kxSceneEdits::setField({core}, "translation", osg::FieldValue(std::string("far away")));
        kxSceneEdits::setField({core, osg::FieldContainerPtr()}, "no such field", osg::FieldValue(1.0f));
        QCOMPARE(stack()->count(), 0);
        QCOMPARE(bytes(), before);
    }

    void copiesAreIndependent()
    {
        const osg::NodePtr original = addSurface("Wheel_3", addMaterial("Steel"));
        animate(original);
        original->getCore()->addAttachment(osg::TagAttachment::create());
        QVERIFY(kxSceneEdits::duplicateNodes({original}));
        const osg::NodePtr copy = kxSelection::the().nodes().at(0);
        QCOMPARE(QString::fromStdString(copy->getNodeName()), QString("Wheel"));
        QVERIFY(copy->getCore()->findAttachment<osg::TagAttachment>() != osg::NullFC);
        const auto first = osg::GeometryPtr::dcast(original->getCore()),
                   second = osg::GeometryPtr::dcast(copy->getCore());
        QVERIFY(first != second && first->getMesh() == second->getMesh() &&
                first->getMaterial() == second->getMaterial());
        std::vector<osg::AnimNodePtr> ofFirst, ofSecond;
        kxAnimManager::the()->getChannelCurveNodes(original, ofFirst);
        kxAnimManager::the()->getChannelCurveNodes(copy, ofSecond);
        QVERIFY(ofFirst.size() == 1 && ofSecond.size() == 1);
        QVERIFY(ofFirst[0]->getCore() != ofSecond[0]->getCore());
    }

    void verifiedClipsGoWithTheirObject()
    {
        const osg::NodePtr node = addObject("Door");
        animate(node);
        kxAnimManager* const manager = kxAnimManager::the();
        const osg::AnimNodePtr block = manager->createBlock(manager->getAnimAttachment(node), "Open");
        const osg::AnimNodePtr clip = osg::AnimNodeBase::create();
        clip->setCore(osg::AnimClipBase::create());
        clip->addChild(osg::cloneAnimTree(block, true));
        manager->addToClipStructure(clip);
        manager->setVerifyClipStructure(true);
        const QByteArray before = bytes();
        QCOMPARE(kxSceneEdits::deleteNodes({node}), 1);
        QCOMPARE(manager->clipStructureRoot()->getNChildren(), 0u);
        QCOMPARE(stack()->count(), 1);
        stack()->undo();
        QCOMPARE(bytes(), before);
        manager->setVerifyClipStructure(false);
        manager->clipStructureRoot()->subChild(clip);
    }

    void deletedObjectsKeepTheirPose()
    {
        const osg::NodePtr node = addObject("Door");
        animate(node);
        kxAnimManager::the()->setCurrentFrame(6, true, false);
        const auto place = osg::TransformPtr::dcast(node->getCore());
        place->setTranslation(osg::Vec3f(0.9f, 0, 0));
        osg::markChanged(place, osg::Transform::TranslationFieldMask);
        QCOMPARE(kxSceneEdits::deleteNodes({node}), 1);
        kxAnimManager::the()->updateSceneAnimCurveData();
        stack()->undo();
        kxAnimManager::the()->updateSceneAnimCurveData();
        QCOMPARE(place->getTranslation().x(), 0.9f); // 0.25 by its curve
    }

    void groupsStandWhereTheFirstStood()
    {
        std::vector<osg::NodePtr> nodes;
        for (const char* const name : {"A", "B", "C", "D", "E"})
            nodes.push_back(addObject(name));
        const int before = stack()->count();
        QVERIFY(kxSceneEdits::groupNodes({nodes[1], nodes[3]}));
        QCOMPARE(stack()->count(), before + 1);
        const auto& top = kxScene::the()->root()->getChildren();
        QVERIFY(top.size() == 4 && top[1]->getNodeName() == "Group" && top[1]->getNChildren() == 2);
        QVERIFY(kxSelection::the().nodes() == kxSceneEdits::Nodes{top[1]});
        QCOMPARE(kxSceneEdits::deleteNodes({top[1]}), 1);
        QVERIFY(kxSelection::the().nodes().empty());
        kxSceneEdits::setField({nodes[0]->getCore(), nodes[2]->getCore()}, "scale",
                               osg::FieldValue(osg::Vec3f(2, 3, 4)));
        QVERIFY(stack()->undoText().endsWith("of 2 Objects"));
    }

    void copiesGetNumbersAndRestValues()
    {
        const osg::NodePtr node = addObject("Wheel_");
        osg::TransformPtr::dcast(node->getCore())->setTranslation(osg::Vec3f(7, 8, 9));
        animate(node);
        kxAnimManager::the()->setCurrentFrame(12, true, true); // x is driven to 0
        kxSceneEdits::duplicateNodes({node});
        const osg::NodePtr copy = kxSelection::the().nodes().at(0);
        QCOMPARE(copy->getNodeName(), std::string("Wheel__1"));
        kxSceneEdits::duplicateNodes({copy});
        QCOMPARE(kxSelection::the().nodes().at(0)->getNodeName(), std::string("Wheel__2"));
        QCOMPARE(osg::TransformPtr::dcast(node->getCore())->getTranslation().x(), 0.0f);
        copy->subAttachment(copy->findAttachment<osg::AnimAttachment>()); // nothing drives it any more
        osg::markChanged(copy, osg::Node::AttachmentsFieldMask);
        kxAnimManager::the()->reevaluateAnimations(true);
        QVERIFY(osg::TransformPtr::dcast(copy->getCore())->getTranslation() == osg::Vec3f(7, 8, 9));
    }

    void oneGestureOnTwoFields()
    {
        const osg::NodePtr node = addObject("A");
        const osg::TransformPtr core = osg::TransformPtr::dcast(node->getCore());
        QWidget dialog;
        kxSendMouse(&dialog, QEvent::MouseButtonPress, QPoint(), Qt::LeftButton, Qt::LeftButton);
        for (const float value : {2.0f, 3.0f})
            kxSceneEdits::setField({core}, "translation", osg::FieldValue(osg::Vec3f(value, 0, 0)));
        kxSceneEdits::setField({core}, "scale", osg::FieldValue(osg::Vec3f(5, 5, 5)));
        kxSendMouse(&dialog, QEvent::MouseButtonRelease, QPoint(), Qt::LeftButton, Qt::NoButton);
        QCOMPARE(stack()->count(), 2);
        stack()->undo();
        QVERIFY(core->getScale() == osg::Vec3f(1, 1, 1) && core->getTranslation().x() == 3);
        stack()->undo();
        QVERIFY(core->getTranslation().x() == 0);
    }

    void aDeletedObjectLeavesItsBars()
    {
        const osg::NodePtr door = addObject("Door");
        const osg::AnimNodePtr swing = kxAnimFixture::added(
            door, kxAnimFixture::block("Swing", {kxAnimFixture::curve("translation", "X", {{0, 1}, {2, 4}})}));
        for (const char* const clip : {"Show", "Trailer"})
            kxAnimFixture::added(kxAnimFixture::clip(
                clip, {kxAnimFixture::clone(swing, 1), kxAnimFixture::clip("In", {kxAnimFixture::clone(swing, 3)})}));
        kxSceneEdits::deleteNodes({door});
        QCOMPARE(kxLogModel::the().entries().back().text,
                 QString("\"Door\" was deleted. The bar \"Swing\" in \"Show\", \"Trailer\" now moves nothing."));
    }

    void toolsHear()
    {
        const osg::MaterialPtr paint = addMaterial("Paint"), keyed = addMaterial("Keyed");
        keyed->addAttachment(osg::AnimAttachment::create());
        const osg::NodePtr plain = addObject("Plain"), moving = addObject("Moving");
        animate(moving);
        kxScene::the()->flush();
        QSignalSpy animations(&kxAnimationService::the(), &kxAnimationService::changed);
        QSignalSpy structure(kxScene::the(), &kxScene::structureChanged);
        kxSceneEdits::deleteNodes({plain});
        kxSceneEdits::deleteMaterials({paint});
        QCOMPARE(animations.size(), 0);
        kxSceneEdits::deleteNodes({moving});
        QCOMPARE(animations.size(), 1);
        kxSceneEdits::deleteMaterials({keyed});
        QCOMPARE(animations.size(), 2);
        stack()->undo();
        QCOMPARE(animations.size(), 3);
        kxScene::the()->flush();
        QCOMPARE(structure.size(), 1);
        kxSceneObjects::add(kxSceneObjects::lights().at(1));
        const kxHeard<> lights(kxMessageName::UpdateLight);
        const kxHeard<1> materials(kxMessageName::UberMaterialChanged);
        int drawn = 0;
        kxHostHooks::the().render = [&drawn](bool) { ++drawn; };
        kxSceneEdits::setField({kxSelection::the().nodes().at(0)->getCore()}, "intensity", osg::FieldValue(3.0f));
        kxHostHooks::the().render = nullptr;
        kxSceneEdits::rename(keyed, "Other");
        QVERIFY(lights.count == 1 && materials.count == 1 && drawn == 1);
    }

    void newObjectsAreSeenAtOnce()
    {
        // Bodies are on the floor, lights shine from above, the camera looks down at the origin.
        for (const kxSceneObjects::Entry& entry : kxSceneObjects::primitives())
        {
            kxSceneObjects::add(entry);
            const osg::BoxVolume box = kxSceneMath::worldBounds(kxSelection::the().nodes().at(0));
            osg::Pnt3f low, high;
            box.getBounds(low, high);
            QVERIFY2(std::abs(low.y()) < 0.01f, qPrintable(entry.name));
        }
        float brightest = 0;
        for (const kxSceneObjects::Entry& entry : kxSceneObjects::lights())
        {
            const osg::Share<osg::Node> node(entry.make());
            const auto light = osg::LightPtr::dcast(node->getCore());
            QVERIFY2(light->getTranslation().y() >= 2.5f, qPrintable(entry.name));
            QVERIFY2(light->getIntensity() > brightest, qPrintable(entry.name));
            brightest = light->getIntensity();
        }
        kxSceneObjects::add(kxSceneObjects::camera());
        const QMatrix4x4 world = kxSceneMath::worldMatrix(kxSelection::the().nodes().at(0));
        const QVector3D eye = world.map(QVector3D()), ahead = world.mapVector(QVector3D(0, 0, -1));
        const QVector3D toOrigin = (QVector3D(0, 0.4f, 0) - eye).normalized();
        QVERIFY(eye.length() > 4 && QVector3D::dotProduct(ahead, toOrigin) > 0.999f);
        QVERIFY(std::abs(world.mapVector(QVector3D(1, 0, 0)).y()) < 1e-4f); // level
    }
};

QTEST_MAIN(tst_kxSceneEdits)
#include "tst_kxSceneEdits.moc"
