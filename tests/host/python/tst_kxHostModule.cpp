#include <app/kxDocument.h>
#include <edits/kxSceneryEdits.h>
#include <journal/kxHistory.h>
#include <kernel/kxSelection.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxHeard.h>
#include <kxMessageNames.h>
#include <kxScenegraph.h>
#include <kxUndo.h>
#include <osg/AnimCores.h>
#include <osg/AnimNode.h>
#include <python/kxHostModule.h>
#include <python/kxInterpreter.h>
#include <python/kxPythonPrompt.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>
#include <scenery/kxSceneryStage.h>
#include <view/kxView3D.h>

#include <QTabBar>
#include <QTreeWidget>
#include <QUndoStack>
#include <QtTest>

#include <set>

namespace
{
kxMessage received; // what the last message of a test carried

void receive(kxMessage& message)
{
    received = message;
    message.set("answer", 7u);
    message.set("names", std::set<QString>{QString::fromUtf8("gr\xc3\xbcn"), "red"});
    message.set("owner", static_cast<void*>(nullptr));
}

/// True where the message carried exactly this type, and this value.
template <class T>
bool carried(const char* key, const T& value)
{
    const boost::any found = received.get(key);
    return boost::any_cast<T>(&found) != nullptr && boost::any_cast<T>(found) == value;
}
} // namespace

/// Each row of scripts() is a script that asserts; `refused(error, part, function, *arguments)` wants an exception of
/// this type whose text has this part.
class tst_kxHostModule : public QObject
{
    Q_OBJECT
public:
    static void initMain() { qputenv("QT_SCALE_FACTOR", "2"); } // places are pixels of the screen

private Q_SLOTS:
    void initTestCase()
    {
        kxHostModule::install();
        QVERIFY(kxInterpreter::start());
        run("import os\n"
            "def refused(error, part, function, *arguments):\n"
            "    try:\n"
            "        function(*arguments)\n"
            "    except error as raised:\n"
            "        assert part in str(raised), str(raised)\n"
            "    else:\n"
            "        assert False, 'taken'\n");
        kxController::addCB("probe", receive);
    }

    void init()
    {
        _door = osg::Node::create();
        _door->setCore(osg::Transform::create());
        _door->setNodeName("Door");
        const osg::NodePtr knob = osg::Node::create();
        knob->setCore(osg::Transform::create());
        knob->setNodeName("Knob");
        _door->addChild(knob);
        kxScene::the()->root()->addChild(_door);
        const osg::UberMaterialPtr paint = osg::UberMaterial::create();
        paint->setNodeName("Paint");
        kxScene::the()->addMaterial(paint);
        for (const char* const name : {"Front", "Back"})
            kxSceneryEdits::addViewpoint(kxViewCamera(), 5, name);
        kxUndoStack::get(0).stack()->clear();
        _document.reset(new kxDocument);
        kxHostModule::hooks() = {};
        kxHostModule::hooks().document = _document.data();
        kxHostModule::hooks().stage = &_stage;
        received = kxMessage();
    }

    void cleanup()
    {
        kxSelection::the().clear();
        kxUndoStack::get(0).stack()->clear();
        kxScene::the()->clear();
    }

    void scripts_data()
    {
        QTest::addColumn<QString>("script");
        QTest::newRow("find")
            << "assert findNode('Knob').parent == findNode('Door') and findMaterial('Paint').name == 'Paint'\n"
               "assert not findNode('knob') and not findNode('') and not findMaterial('Door')\n"
               "refused(TypeError, '', findNode, None)";
        QTest::newRow("variants")
            << "door = findNode('Door')\nlook = addVariantSet(list(door.children) + [], 'Look')\n"
               "assert variantChoices('Look') == ['Knob'] and variant(look) == 'Knob' and undoCount() == 1\n"
               "refused(LookupError, 'Open', setVariant, look, 'Open')\n"
               "refused(LookupError, 'Lock', variant, 'Lock'); refused(TypeError, '', variant, 3)\n"
               "renameScenery(look, 'Lock'); assert variantSets() == [look] and variant('Lock') == 'Knob'\n"
               "refused(ValueError, 'empty', renameScenery, look, ' '); refused(ValueError, '', deleteScenery, door)\n"
               "deleteScenery(look); assert not variantSets() and undo() and variantSets() == [look]";
        QTest::newRow("camera tracks")
            << "assert len(viewpoints()) == 2\n"
               "track = addCameraTrack(viewpoints(), 1, 'Way'); assert cameraTracks() == [track]\n"
               "refused(ValueError, 'two', addCameraTrack, viewpoints()[:1])";

        QTest::newRow("sequences")
            << "steps = [('clip', 'a'), ('variant', 'D'), ('variant', 'D', 'x'), ('wait', 0.5), ('python', 'x\\ny')]\n"
               "tour = addSequence(steps, 'Tour'); addSequence([('wait', 9)], 'Wait')\n"
               "assert sequenceSteps(tour) == steps and addSequence([], 'Tour').name != 'Tour'\n"
               "for error, part, step in [(ValueError, 'jump', ('jump', 'a')), (ValueError, 'step 1', ('wait',)),\n"
               "        (ValueError, '86400', ('wait', -1)), (ValueError, '', ('wait', float('nan'))),\n"
               "        (TypeError, 'seconds', ('wait', 'a')), (TypeError, '', ('clip', 3)), (TypeError, '', "
               "'clip')]:\n"
               "    refused(error, part, setSequenceSteps, tour, [step])\n"
               "assert sequenceSteps('Tour') == steps and undoCount() == 3\n"
               "refused(LookupError, 'Gone', setSequenceSteps, 'Gone', [])\n"
               "assert runSequence('Wait') and runningSequences() == ['Wait']\n"
               "stopSequences(); assert runningSequences() == []";
        QTest::newRow("versions") << "first = keepVersion('first'); x = 'translation.X'\n"
                                     "door = findNode('Door'); setChannelValue(door, x, 4); second = keepVersion()\n"
                                     "kept = versions()\n"
                                     "assert [v[:2] for v in kept] == [(first, 'first'), (second, 'Kept by hand')]\n"
                                     "assert all(v[3] > 100 for v in kept) and kept[0][2] <= kept[1][2]\n"
                                     "goToVersion(first); assert channelValue(door, x) == 0\n"
                                     "refused(LookupError, 'version 77', goToVersion, 77)";
        QTest::newRow("select nodes")
            << "assert not undo() and not redo() and undoCount() == 0 and undoText() == ''\n"
               "door, knob = findNode('Door'), findNode('Knob')\n"
               "selectNodes([knob, NodePtr(), kxNodePtr(door), knob])\n"
               "assert selectedNodes() == [knob, door] and undoCount() == 1\n"
               "assert undo() and selectedNodes() == [] and redo() and len(selectedNodes()) == 2\n"
               "selectNodes([]); assert selectedNodes() == []\n"
               "refused(TypeError, '', selectNodes, [findMaterial('Paint')])";
        QTest::newRow("select materials") << "selectMaterials([findMaterial('Paint')])\n"
                                             "assert undoCount() == 1\n"
                                             "refused(TypeError, '', selectMaterials, [findNode('Door')])";
        QTest::newRow("values")
            << "door, paint = findNode('Door'), findMaterial('Paint')\n"
               "names = channelNames(door)\n"
               "assert 'visible' in names and 'translation.X' in names and 'rotation.Z' in names\n"
               "for owner in (door, kxNodePtr(door), paint):\n"
               "    for name in channelNames(owner):\n"
               "        setChannelValue(owner, name, channelValue(owner, name))\n"
               "assert undoCount() == 0, 'nothing has changed'\n"
               "assert setChannelValue(door, 'scale.Y', 2) == channelValue(door, 'scale.Y') == 2\n"
               "assert setChannelValue(paint, 'roughness', 7) == channelValue(paint, 'roughness') == 1";
        QTest::newRow("a value is a step")
            << "door, x = findNode('Door'), 'translation.X'\n"
               "for value in (1.5, 2.5): setChannelValue(door, x, value)\n"
               "setChannelValue(door, 'translation.Y', -1)\n"
               "assert undoCount() == 3 and undoText() == 'Set translation.Y of Door'\n"
               "undo(); undo(); assert channelValue(door, x) == 1.5 and channelValue(door, 'translation.Y') == 0\n"
               "undo(); assert channelValue(door, x) == 0\n"
               "while redo(): pass\n"
               "assert channelValue(door, x) == 2.5 and channelValue(door, 'translation.Y') == -1";
        QTest::newRow("values refused")
            << "door, knob = findNode('Door'), findNode('Knob')\n"
               "for bad in (float('nan'), float('inf'), -float('inf'), 1e300):\n"
               "    refused(ValueError, 'finite', setChannelValue, door, 'translation.X', bad)\n"
               "refused(TypeError, '', setChannelValue, door, 'translation.X', '1')\n"
               "refused(TypeError, '', channelNames, 'Door')\n"
               "refused(KeyError, 'translation.X', channelValue, door, 'translation.W')\n"
               "refused(KeyError, 'visible', setChannelValue, door, '', 1)\n"
               "for f in (channelNames, lambda n: channelValue(n, 'visible'), lambda n: setChannelValue(n, 'visible', "
               "1)):\n"
               "    refused(ValueError, 'null', f, NodePtr()); refused(ValueError, 'null', f, None)\n"
               "assert undoCount() == 0";
        QTest::newRow("objects that are gone") << "door = findNode('Door')\n"
                                                  "newScene()\n"
                                                  "assert not door and not findNode('Door')\n"
                                                  "refused(ValueError, 'gone', channelValue, door, 'visible')";
        QTest::newRow("objects whose adding was undone")
            << "def refusals(h, m, move='translation.X'):\n"
               "    any = kxNodePtr(h)\n"
               "    assert undo() and not h and not any and not m and h.name == m.name == '' and not h.children\n"
               "    for part, function, *values in (('gone', setChannelValue, h, move, 3), ('gone', channelNames, "
               "any),\n"
               "            ('gone', setChannelValue, m, 'roughness', 1), ('gone', setKey, h, move, 0, 1),\n"
               "            ('gone', setInfinity, h, move, 'loop', 'loop'), ('parent', addObject, 'box', 'B', any),\n"
               "            ('material', addObject, 'box', 'B', None, m), ('gone', addVariantSet, [h])):\n"
               "        refused(ValueError, part, function, *values)\n"
               "    assert redo() and h and any and m and setChannelValue(h, move, 3) == 3\n"
               "ball = addObject('sphere', 'S', findNode('Door')); refusals(ball, findMaterial('S'))\n"
               "way = addCameraTrack(viewpoints(), 1, 'Way'); undo()\n"
               "refused(LookupError, '', playCameraTrack, way); refused(ValueError, 'null', deleteScenery, way)";
        QTest::newRow("places that are none")
            << "view, count = viewpoints()[0], undoCount()\n"
               "for parent, part in ((view, 'Front'), (view.parent, 'Scenery'), (view.parent.parent, 'SuperRoot')):\n"
               "    refused(ValueError, \"'%s' is no object\" % part, addObject, 'box', 'B', parent)\n"
               "for choice in (view, None, findNode('Door').parent):\n"
               "    refused(ValueError, 'choice', addVariantSet, [findNode('Knob'), choice])\n"
               "assert undoCount() == count and not variantSets() and not view.children\n"
               "assert addObject('box', 'B', findNode('Door').parent).parent == findNode('Door').parent";
        QTest::newRow("files that can't be read")
            << "for function, path in ((openScene, '/nowhere/a.kxs'), (importScene, '/nowhere/a.glb'), (openScene, "
               "''),\n"
               "        (openScene, '/'), (saveScene, '/nowhere/a.kxs'), (exportScene, '/nowhere/a.glb')):\n"
               "    refused(OSError, path, function, path)\n"
               "assert findNode('Door'), 'the scene stays'";
        QTest::newRow("messages refused")
            << "for bad in (None, object(), 1j, [1], [findNode('Door'), findMaterial('Paint')], {'a': 1}):\n"
               "    refused(TypeError, \"'key'\", sendMessage, 'probe', {'key': bad})\n"
               "refused(OverflowError, \"'key'\", sendMessage, 'probe', {'key': 2**31})\n"
               "refused(TypeError, 'str', sendMessage, 'probe', {1: 2})\n"
               "assert sendMessage('nobody listens', {'a': 1}) == {'a': 1} and sendMessage('nobody') == {}";
        QTest::newRow("building")
            << "paint = addMaterial('Paint', (0.1, 2, 0.3), 7)\n"
               "assert paint.name != 'Paint' and channelValue(paint, 'roughness') == 1\n"
               "ball = addObject('Sphere', 'Knob', findNode('Door'), paint)\n"
               "assert ball.parent == findNode('Door') and ball.name != 'Knob'\n"
               "assert addObject('spot light').typeName == 'Light' and addObject('group').name == 'Group'\n"
               "count = undoCount()\n"
               "refused(ValueError, 'rounded box', addObject, 'ball'); refused(ValueError, 'material', addObject, "
               "'camera', '', None, paint)\n"
               "refused(ValueError, 'finite', addMaterial, 'x', (float('nan'), 0, 0)); refused(TypeError, '', "
               "addObject, "
               "3)\n"
               "assert undoCount() == count and not clippingPlane(False)\n"
               "plane = clippingPlane(True); assert plane == clippingPlane(True) and undoCount() == count + 1\n"
               "assert clippingPlane(False) == plane and channelValue(plane, 'visible') == 0\n"
               "while undo(): pass\n"
               "assert len(findNode('Door').children) == 1 and not findNode('Clipping Plane')";
        QTest::newRow("animations refused")
            << "door, turn = findNode('Door'), 'rotation.Y'\n"
               "for part, function, *arguments in (('no keys', setInfinity, door, turn, 'loop', 'loop'),\n"
               "        ('oscillate', setInfinity, door, turn, 'loop', 'for ever'),\n"
               "        ('null', setInfinity, None, turn, 'loop', 'loop'), ('null', setCycles, None, 1),\n"
               "        ('0 to', setTrack, None, -1), ('null', showAnimation, None, 1),\n"
               "        ('null', addTrigger, None, 'sequence', 'a', 1), ('finite', showAnimation, None, "
               "float('nan')),\n"
               "        ('finite', showAnimation, None, float('inf')), ('behind', setFrameRange, 0, 0),\n"
               "        ('behind', setFrameRange, 5, 4), ('behind', setFrameRange, -2**31, 2**31 - 1)):\n"
               "    refused(ValueError, part, function, *arguments)\n"
               "assert undoCount() == 0";
    }

    void scripts()
    {
        QFETCH(QString, script);
        run(script);
    }

    void settingAKeyIsOneStep()
    {
        const osg::AnimAttachmentPtr attachment = osg::AnimAttachmentBase::create();
        _door->addAttachment(attachment);
        const osg::AnimNodePtr node =
            kxAnimManager::the()->createChannelCurveNode(attachment, "translation", 0, "X", std::string());
        const osg::AnimCurvePtr curve = osg::AnimCurvePtr::dcast(node->getCore());
        QVERIFY(curve != osg::NullFC);
        const osg::UInt32 flat = osg::UInt32(osg::TangentType::Flat);
        for (const osg::Pnt2f place : {osg::Pnt2f(0, 0), osg::Pnt2f(2, 4)})
            curve->addPoint(place, osg::Vec2f(), osg::Vec2f(), flat, flat, false, true);
        run("door, x = findNode('Door'), 'translation.X'\n"
            "setKey(door, x, 1, 9)\n"
            "assert keys(door, x) == [(0, 0), (1, 9), (2, 4)] and undoCount() == 1\n"
            "setKey(door, x, 2.00001, 6)\n"
            "assert keys(door, x) == [(0, 0), (1, 9), (2, 6)] and undoCount() == 2\n"
            "for bad in ((float('nan'), 1), (1, float('inf')), (1e300, 1)):\n"
            "    refused(ValueError, 'finite', setKey, door, x, *bad)\n"
            "refused(ValueError, 'each side', setKey, door, x, -416667, 1)\n"
            "refused(ValueError, 'each side', setFrameRange, 10**7, 10**7 + 1)\n"
            "refused(KeyError, 'scale.Q', setKey, door, 'scale.Q', 1, 1)\n"
            "refused(ValueError, 'no keys', setTangents, door, 'rotation.X', 1, 'flat', 'flat')\n"
            "refused(ValueError, 'no key at', setTangents, door, x, 1.5, 'flat', 'flat')\n"
            "refused(ValueError, 'hermite', setTangents, door, x, 1, 'soft', 'flat')\n"
            "refused(ValueError, 'below', setTangents, door, x, 1, 'flat', (-0.1, 1))\n"
            "refused(ValueError, 'null', setTiming, None, 1)\n"
            "refused(ValueError, 'null', keys, None, x); refused(ValueError, 'null', setKey, None, x, 1, 1)\n"
            "assert undoCount() == 2 and keys(door, x)[2] == (2, 6)");
        QCOMPARE(curve->getControlPoints(2).inType, flat);
        QCOMPARE(curve->getControlPoints(1).inType, osg::UInt32(osg::TangentType::Linear));
        run("setTangents(door, x, 1, 'flat', (0.25, 3)); assert undoCount() == 3");
        QCOMPARE(curve->getControlPoints(1).outtangent(), osg::Vec2f(0.25f, 3));
        QCOMPARE(curve->getControlPoints(1).inType, flat);
        run("assert undo() and undo() and keys(door, x)[2] == (2, 4) and undo() and len(keys(door, x)) == 2 and "
            "redo()");
        QCOMPARE(curve->getControlPoints().size(), std::size_t(3));
    }

    /// In a clip that is at 2 seconds, twice as slow, in another at 1.
    void triggersStandAtTheRulersFrame()
    {
        const osg::AnimNodePtr outer = osg::AnimNodeBase::create(), clip = osg::AnimNodeBase::create();
        for (const osg::AnimNodePtr& node : {outer, clip})
            node->setCore(osg::AnimClipBase::create());
        outer->setOffset(osg::Vec2f(1, 0));
        outer->addChild(clip);
        clip->setOffset(osg::Vec2f(2, 0));
        clip->setScale(2);
        kxAnimManager::the()->addToClipStructure(outer);
        kxSelection::the().setIds(kxSelection::Nodes, {clip->getId()});
        run("clip = kxNodePtr(selectedNodes()[0])\n"
            "names = [addTrigger(clip, 'viewpoint', 'Close', frame).name for frame in (96, 120)]\n"
            "assert names == ['Close', 'Close_1'], names\n"
            "refused(ValueError, 'each side', setTiming, clip, 416667)\n"
            "refused(ValueError, 'each side', lambda: setTiming(clip, range=(0, -416667.0)))\n"
            "refused(ValueError, '0.000001', lambda: setTiming(clip, stretch=2e6))\n"
            "setTiming(clip, start=2, stretch=2)");
        QCOMPARE(clip->getNChildren(), 2u);
        for (const double frame : {96.0, 120.0})
        {
            const auto trigger = osg::AnimNodePtr::dcast(clip->getChild(frame == 96 ? 0 : 1));
            osg::BoxVolume volume;
            trigger->getWorldVolume(volume);
            osg::Pnt3f start, end;
            volume.getBounds(start, end);
            QCOMPARE(start.x() * 24, float(frame));
            QCOMPARE(osg::AnimSequencePtr::dcast(trigger->getCore())->getName(), std::string("Close"));
        }
        kxAnimManager::the()->clipStructureRoot()->subChild(outer);
    }

    void theTimelineHearsOfItsRange()
    {
        const kxHeard<> updates{kxMessageName::UpdateAnimControlGUI};
        run("setFrameRange(-7, 31)");
        QCOMPARE(updates.count, 1);
    }

    void messagesCarryExactTypes()
    {
        const osg::AnimNodePtr clip = osg::AnimNodeBase::create();
        clip->setCore(osg::AnimClipBase::create());
        kxAnimManager::the()->addToClipStructure(clip);
        run(QStringLiteral("nodes = [findNode('Door'), kxNodePtr(findNode('Knob'))]\n"
                           "sendMessage('probe', {'truth': True, 'int': -5, 'double': 2.0, 'text': 'gr\\xfcn',\n"
                           "    'node': nodes[1], 'noAnim': AnimNodePtr(), 'nodes': nodes, 'none': (),\n"
                           "    'materials': [findMaterial('Paint')], 'names': {'a', 'b'}, 'list': ['b', 'b']})"));
        const std::vector<osg::NodePtr> nodes{_door, _door->getChild(0)};
        QVERIFY(carried("truth", true));
        QVERIFY(carried("int", -5));
        QVERIFY(carried("double", 2.0));
        QVERIFY(carried("text", std::string("gr\xc3\xbcn")));
        QVERIFY(carried("node", nodes[1]));
        QVERIFY(carried("noAnim", osg::AnimNodePtr()));
        QVERIFY(carried("nodes", nodes));
        QVERIFY(carried("none", std::vector<osg::NodePtr>()));
        QVERIFY(carried("materials", kxScene::the()->materials()));
        QVERIFY(carried("names", std::set<QString>{"a", "b"}));
        QVERIFY(carried("list", std::set<QString>{"b"}));

        // A plain handle of an animation node goes out as an animation, and is no parent of objects.
        kxSelection::the().setIds(kxSelection::Nodes, {clip->getId()});
        run("clip = selectedNodes()[0]\nsendMessage('probe', {'one': clip, 'all': [kxNodePtr(clip)]})");
        QVERIFY(carried("one", clip) && carried("all", std::vector<osg::AnimNodePtr>{clip}));
        run("refused(ValueError, 'animation', addObject, 'sphere', 'Child', clip); assert not findNode('Child')\n"
            "refused(ValueError, 'choices', addVariantSet, [clip]); assert not variantSets()");
        QCOMPARE(clip->getNChildren(), 0u);
        kxAnimManager::the()->clipStructureRoot()->subChild(clip);

        // What is read as a type that the value leaves open; what is of another goes as it is, for the receiver to
        // refuse.
        const auto sent = [this](const char* name, const char* attributes)
        {
            kxController::addCB(name, receive);
            run(QString("sendMessage('%1', %2)").arg(name, attributes));
            kxController::subCB(name, receive);
        };
        sent("dequeuedAnimation", "{'animNodeId': 2**32 - 1}");
        QVERIFY(carried("animNodeId", 0xFFFFFFFFu));
        sent("frameChangedCurveEditor", "{'frame': 4}");
        QVERIFY(carried("frame", 4.0));
        sent("selectedAnimations", "{'nodes': []}");
        QVERIFY(carried("nodes", std::vector<osg::AnimNodePtr>()));
        sent("selectedAnimations", "{'nodes': 'text'}");
        QVERIFY(carried("nodes", std::string("text")));
    }

    void scriptsAndWindowShareTheFile()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath("door.kxs"), model = folder.filePath("door.glb");
        const auto call = [this](const char* function, const QString& path = QString())
        {
            run(path.isEmpty() ? QString("%1()").arg(function) : QString("%1(r'%2')").arg(function, path));
            QCoreApplication::processEvents();
            QVERIFY(!_document->isUnsaved());
        };
        run("addObject('box', 'Box', None, findMaterial('Paint'))\nos.chdir(r'" + folder.path() +
            "')\nexportScene('door.glb')");
        QVERIFY(_document->isUnsaved());
        run("box = findNode('Box')\nsetChannelValue(box, 'rotation.Y', 30)");
        const auto box = osg::GeometryPtr::dcast(kxScene::the()->root()->getChildren().back()->getCore());
        QVERIFY(box->getMaterial() == kxScene::the()->materials().front());
        QCOMPARE(kxScene::the()->materials().size(), std::size_t(1));
        call("saveScene", "door.kxs");
        QVERIFY(_document->name() == "door.kxs" && _document->path() == file);
        call("newScene");
        QVERIFY(_document->name() == "Untitled" && _document->path().isEmpty());
        call("openScene", "door.kxs");
        QVERIFY(_document->name() == "door.kxs" && _document->path() == file);
        run("assert channelValue(findNode('Box'), 'rotation.Y') == 30\nimportScene('door.kxs')\n"
            "assert [n.name for n in findNode('door').children] == ['Door', 'Box']");
        QCoreApplication::processEvents();
        kxUndoStack::get(0).stack()->undo();
        call("openScene", model);
        QVERIFY(_document->name() == "door.glb" && _document->path().isEmpty());
        run("refused(OSError, 'gone', openScene, 'gone.kxs')");
        QCOMPARE(_document->name(), QString("door.glb"));
        QVERIFY(_document->recentFiles().files().isEmpty());
        run("os.chdir('/')");
    }

    void picturesAndTheirRefusals()
    {
        run("refused(RuntimeError, 'no view', render, 'a.png', 1, 1)");
        QStringList drawn;
        bool succeeds = true;
        kxHostModule::hooks().render =
            [&](const QString& file, int width, int height, const QString& camera, bool isTransparent, QString& reason)
        {
            drawn << QString("%1 %2 %3%4").arg(file).arg(width).arg(height).arg(camera) + (isTransparent ? "!" : "");
            reason = succeeds ? QString() : "the disk is full";
            return succeeds;
        };
        run("for size in [(0, 9), (9, 0), (16385, 9), (9, 16385)]:\n"
            "    refused(ValueError, '1 to 16384', render, 'a.png', *size)\n"
            "render('a.png', 1, 16384)\n"
            "render('a.png', 7, 9, camera=' Caf\u00e9', transparent=True)");
        QCOMPARE(drawn, QStringList({"a.png 1 16384", "a.png 7 9 Caf\u00e9!"}));
        kxHostModule::hooks().renderMovie = [&](const kxHostModule::Hooks::Movie& movie, int& frames, QString& reason)
        {
            drawn << QString("%1 %2 %3%4 %5")
                             .arg(movie.file)
                             .arg(movie.width)
                             .arg(movie.height)
                             .arg(movie.clip, movie.camera) +
                         (movie.isTransparent ? "!" : "");
            frames = movie.last.value_or(20) - movie.first.value_or(3) + 1;
            reason = "the disk is full";
            return succeeds;
        };
        run("refused(ValueError, '1 to 16384', renderMovie, 'a.gif', 0, 9)\n"
            "assert renderMovie('a.mp4', 7, 9) == 18\n"
            "assert renderMovie('a.mp4', 7, 9, ' Walk', first=5, last=6, camera='Near', transparent=True) == 2");
        QCOMPARE(drawn.mid(2), QStringList({"a.mp4 7 9 ", "a.mp4 7 9 Walk Near!"}));
        succeeds = false;
        run("refused(RuntimeError, 'disk', render, 'b.png', 3, 2)\n"
            "refused(RuntimeError, 'disk', renderMovie, 'b.gif', 3, 2)");
    }

    void placesOnTheScreen()
    {
        QWidget window;
        window.setObjectName("probe");
        QTreeWidget tree(&window), other(&window);
        QTabBar tabs(&window);
        tree.setObjectName("rows");
        other.setObjectName("rows");
        tree.setColumnCount(2);
        for (const char* const name : {"a", "b"})
            new QTreeWidgetItem(new QTreeWidgetItem(&tree, {name, "1"}), {"in " + QString(name), "2"});
        tree.topLevelItem(1)->setExpanded(true);
        tabs.addTab("Left");
        tabs.addTab("Right");
        tree.setGeometry(20, 30, 300, 200);
        tabs.setGeometry(20, 240, 300, 30);
        window.show();
        other.hide();
        const auto rect = [](const QWidget& widget, const QRect& place)
        {
            const QRect pixels(2 * widget.mapToGlobal(place.topLeft()), 2 * place.size());
            return QString("(%1, %2, %3, %4)").arg(pixels.x()).arg(pixels.y()).arg(pixels.width()).arg(pixels.height());
        };
        run("assert widgetRows('probe/rows') == widgetRows('rows') == [['a'], ['b'], ['b', 'in b']]\n"
            "assert rowText('rows', ['b', 'in b'], 1) == '2' and rowText('rows', ['a']) == 'a'\n"
            "refused(LookupError, \"no row 'c'\", rowText, 'rows', ['b', 'c'])\n"
            "refused(LookupError, 'no visible', widgetRows, 'rows/probe'); refused(LookupError, 'Middle', tabRect, "
            "'Middle')\n"
            "refused(LookupError, '', rowRect, 'rows', ['a', 'in a'])");
        run("assert rowRect('rows', ['b', 'in b']) == " +
            rect(*tree.viewport(),
                 tree.visualItemRect(tree.topLevelItem(1)->child(0)) &
                     tree.viewport()->rect().adjusted(0, 0, tree.columnWidth(0) - tree.viewport()->width(), 0)) +
            ", rowRect('rows', ['b', 'in b'])");
        run("assert tabRect('Right') == " + rect(tabs, tabs.tabRect(1) & tabs.rect()));
        other.show();
        run("refused(LookupError, 'more than one', widgetRows, 'rows')");
    }

    void aRunIsOneChange()
    {
        {
            const kxHistory::Scope scope(QStringLiteral("Run it"));
            run("door = findNode('Door')\n"
                "for x in (1, 2, 3): setChannelValue(door, 'translation.X', x); processEvents()\n"
                "setChannelValue(door, 'translation.Y', 5); setChannelValue(door, 'scale.X', 2)\n"
                "assert undoCount() == 5 and undo() and channelValue(door, 'scale.X') == 1 and undoCount() == 4");
        }
        run("assert [(text, done) for text, _, done in history()] == [('Run it', True), ('Set scale.X of Door', "
            "False)]\n"
            "assert undoText() == 'Run it' and undo() and channelValue(door, 'translation.X') == 0 and not undo()\n"
            "assert redo() and redo() and channelValue(door, 'scale.X') == 2 and channelValue(door, 'translation.Y') "
            "== 5");
        kxPythonPrompt prompt;
        QVERIFY(prompt.run("from kxHost import *") && prompt.run("setChannelValue(findNode('Door'), 'scale.X', 7)"));
        QCOMPARE(kxHistory::the().undoText(),
                 QString("Console: setChannelValue(findNode\u2026")); // what it did follows
    }

    void everyFunctionIsDescribed()
    {
        run("import inspect\n"
            "names = [n for n in dir(kxHost) if not n.startswith('_')]\n"
            "for name in names: assert len(inspect.getdoc(getattr(kxHost, name)) or '') > 20, name");
    }

private:
    void run(const QString& script)
    {
        const kxScriptResult result = kxInterpreter::run(script.toStdString());
        QVERIFY2(result.ok, result.trace.c_str());
    }

    kxView3D _view;
    kxSceneryStage _stage{&_view};
    osg::NodePtr _door;
    QScopedPointer<kxDocument> _document;
};

QTEST_MAIN(tst_kxHostModule)
#include "tst_kxHostModule.moc"
