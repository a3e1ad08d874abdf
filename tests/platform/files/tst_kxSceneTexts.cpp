#include "kxFilesFixture.h"
#include "kxRichScene.h"

#include <files/scene/kxSceneContent.h>
#include <files/text/kxChangeWords.h>
#include <files/text/kxKeyChange.h>
#include <files/text/kxSceneDifference.h>
#include <files/text/kxSceneText.h>
#include <osg/AnimAttachments.h>
#include <osg/FieldContainerFactory.h>
#include <scene/FieldDescription.h>
#include <scene/Mesh.h>
#include <scene/Scenery.h>
#include <scene/UberMaterial.h>

#include <QJsonArray>
#include <QtTest>

#include <random>

#include <kxAnimFixture.h>
#include <kxSeed.h>
#include <kxTable.h>

using namespace osg;
typedef kxChangeWords::State State;

Q_DECLARE_METATYPE(std::function<void()>)

namespace
{
State stateOf(const FieldContainerPtr& container)
{
    State state;
    state.type = &container->getType();
    for (const FieldDescription& field : state.type->fields())
    {
        if (field.isTransient())
            continue;
        const FieldValue value = field.value(*container);
        const auto* const reference = std::get_if<FieldContainerPtr>(&value);
        state.fields[field.name()] =
            reference == nullptr ? value : FieldValue(std::vector<UInt32>(1, reference->getFieldContainerId()));
    }
    const auto addIds = [](std::vector<UInt32>& ids, const auto& containers)
    {
        for (const auto& each : containers)
            ids.push_back(each.getFieldContainerId());
    };
    if (const AttachmentContainerPtr carrier = AttachmentContainerPtr::dcast(container); carrier != NullFC)
        addIds(state.attachments, carrier->getAttachments());
    if (const NodePtr node = NodePtr::dcast(container); node != NullFC)
    {
        state.core = node->getCore().getFieldContainerId();
        addIds(state.children, node->getChildren());
    }
    return state;
}

std::map<UInt32, State> states()
{
    std::map<UInt32, State> all;
    for (FieldContainer* container : FieldContainerFactory::the()->getFieldContainerStore())
        if (container != nullptr)
            all[container->getId()] = stateOf(FieldContainerPtr(container));
    return all;
}
} // namespace

/// A fan with a block "Spin" of one channel, twice in the clip "Show"; a car beside it.
class tst_kxSceneTexts : public QObject
{
    Q_OBJECT
    typedef std::function<void()> Edit;

private Q_SLOTS:
    void init()
    {
        _fixture = std::make_unique<kxAnimFixture>();
        _fan = kxAnimFixture::object("Fan");
        kxAnimFixture::transform(_fan)->setEulerRotation(Vec3f(8, 0, 0));
        _car = kxAnimFixture::object("Car");
        _pin = addNode(_fan, "Pin", Geometry::create());
        GeometryPtr::dcast(_pin->getCore())->setMesh(mesh(2));
        _car->addAttachment(TagAttachmentBase::create());
        const SceneSequencePtr steps = SceneSequence::create();
        steps->setSteps({"[\"clip\",\"Show\"]"});
        _tour = addNode(kxScene::the()->sceneryRoot(), "Tour", steps);
        const AnimNodePtr curve = kxAnimFixture::curve("rotation", "Y", {{0, 5}, {1, 90}, {2, 40}, {3, 70}});
        _curve = kxAnimFixture::curveOf(curve);
        _block = kxAnimFixture::added(_fan, kxAnimFixture::block("Spin", {curve}));
        _bars = {kxAnimFixture::clone(_block, 0.5f), kxAnimFixture::clone(_block, 4, 2)};
        _clip = kxAnimFixture::added(kxAnimFixture::clip("Show", _bars));
        _paint = UberMaterial::create();
        _paint->setNodeName("Paint");
        kxScene::the()->addMaterial(_paint);
    }

    void cleanup() { _held.clear(); }

    void edits_data()
    {
        kxColumns<Edit, QString, QString>("edit", "act", "difference");
        for (const Row& row : rows())
            kxRow(*row.act == 0 ? "nothing" : row.act, row.edit, row.act, row.difference);
    }

    void edits()
    {
        QFETCH(Edit, edit);
        const kxSceneContent base = saved();
        const auto before = states();
        std::map<UInt32, kxChangeWords::Thing> known;
        for (const auto& entry : before)
            known[entry.first] = kxChangeWords::find(entry.first);
        edit();
        const auto after = states();
        std::map<UInt32, kxChangeWords::Change> changes;
        for (const auto& [id, state] : before)
            changes[id].before = state;
        for (const auto& [id, state] : after)
            changes[id].after = state;
        std::vector<kxChangeWords::Change> list;
        for (auto& [id, change] : changes)
        {
            change.id = id;
            list.push_back(change);
        }
        const auto finder = [&](UInt32 id) { return after.count(id) != 0 ? kxChangeWords::find(id) : known[id]; };
        QTEST(kxChangeWords::of(list, 24, finder), "act");
        const kxSceneDifference found = kxSceneDifference::between(base, kxSceneContent::ofScene());
        QTEST(found.toText().trimmed(), "difference");
        const kxSceneContent now = kxSceneContent::ofScene();
        QCOMPARE(kxSceneText::of(now) == kxSceneText::of(base), found.isEmpty());
        QCOMPARE(kxSceneDifference::between(now, base).entries.size(), found.entries.size());
        QVERIFY(kxSceneDifference::between(now, now).isEmpty());
    }

    void aWalkThroughTheEdits()
    {
        const unsigned seed = kxSeed();
        qDebug("seed %u", seed);
        std::mt19937 random(seed);
        for (const FieldContainerPtr& used :
             {FieldContainerPtr(_car), FieldContainerPtr(_clip), FieldContainerPtr(_curve), FieldContainerPtr(_bars[0]),
              FieldContainerPtr(_bars[1]), FieldContainerPtr(_block)})
            _held.emplace_back(FCPtr<FieldContainer>(used));
        const std::vector<Row> all = rows();
        kxSceneContent last = saved();
        const kxSceneContent first = last;
        for (int step = 0; step < 60; ++step)
        {
            const Row& row = all[random() % all.size()];
            row.edit();
            const kxSceneContent now = saved();
            QVERIFY2(kxSceneText::of(now) == kxSceneText::of(kxSceneContent::ofScene()), row.act);
            for (const kxSceneContent* const then : {&first, static_cast<const kxSceneContent*>(&last)})
            {
                const kxSceneDifference found = kxSceneDifference::between(*then, now);
                QVERIFY2((kxSceneText::of(*then) == kxSceneText::of(now)) == found.isEmpty(), row.act);
                QVERIFY2(kxSceneDifference::between(now, *then).isEmpty() == found.isEmpty(), row.act);
            }
            last = now;
        }
    }

    void theTextOfARichScene()
    {
        kxAnimFixture::clear();
        kxRichScene::make();
        kxAnimManager::the()->setCurrentFrame(20, true, false); // values of the moment play no part
        const QByteArray text = kxSceneText::of(kxSceneContent::ofScene());
        for (const char* const part :
             {"\n[objects/Body : Spin/rotation.Y]\n",
              "\nkey 0.1 (frame 2.997) = 400, in free -0.01 5, out free 0.2 -50\n", ", out 77 ",
              "\n[clips/Show/Spin/rotation.Y]\nclass = AnimCurve\nshared with = objects/Body : Spin/rotation.Y\n",
              "\nbaseColorImage = image 32 x 32, digest ", "\nmaterial = materials/used\n",
              "\nskin.joints = objects/Twin/Joint\n", "\nTagAttachment.animations 0001 = \"wheels\"\n",
              "\neulerRotation = 1 2 3\n", "\n[settings]\nview = \"top\"\n", "[animation]\ndetailedRangeEnd = 77\n"})
            QVERIFY2(text.contains(part), qPrintable(QString(part) + "\nisn't in\n" + QString::fromUtf8(text)));
        QVERIFY(!text.contains("currentFrame"));
        // The same things, made and hung in another order: another file, the same text.
        const kxSceneContent before = saved();
        const QByteArray bytes = bytesOfScene();
        const NodePtr body = nodeNamed("Body");
        const osg::Share<Attachment> tags(body->findAttachment(TagAttachment::_type));
        body->subAttachment(tags);
        body->addAttachment(tags);
        const osg::Share<NodeCore> core(body->getCore());
        body->setCore(NodeCorePtr());
        body->setCore(core);
        const osg::Share<Attachment> first(body->getAttachments().front());
        QVERIFY(bytesOfScene() != bytes);
        QCOMPARE(kxSceneText::of(saved()), text);
        QVERIFY(kxSceneDifference::between(before, kxSceneContent::ofScene()).isEmpty());
    }

    void factsAsJson()
    {
        const kxSceneContent base = saved();
        kxAnimFixture::transform(_car)->setTranslation(Vec3f(0.1f, 0, -2));
        forKeys(1, 2, [](CCPnt& key) { key.setY(91); });
        kxAnimManager::the()->setFPS(30);
        const QJsonObject json = kxSceneDifference::between(base, kxSceneContent::ofScene()).toJson();
        const QJsonArray list = json["differences"].toArray();
        QVERIFY(!json["equal"].toBool() && list.size() == 3);
        const QJsonObject move = list[1].toObject(), keys = list[2].toObject();
        QCOMPARE(list[0].toObject()["path"].toString(), QString("animation/fps"));
        QCOMPARE(list[0].toObject()["words"].toString(), QString("Scene: frame rate 30 (was 24)"));
        QCOMPARE(move["path"].toString(), QString("objects/Car"));
        QVERIFY(move["field"] == "translation" && move["what"] == "object" && move["kind"] == "changed");
        QCOMPARE(move["after"].toArray(), QJsonArray({0.1, 0.0, -2.0}));
        QVERIFY(keys["path"] == "objects/Fan : Spin/rotation.Y" && keys["field"] == "keys" && keys["before"] == 4);
        QVERIFY(keys["keys"].toObject()["changed"] == 1 && keys["keys"].toObject()["moved"] == 0);
    }

    void keys_data()
    {
        kxColumns<QVector<QPointF>, QVector<QPointF>, QString>("before", "after", "words"); // seconds, values
        typedef QVector<QPointF> Keys;
        const Keys five = {{0, 3}, {1, 5}, {2, 7}, {3, 7}, {4, 9}};
        kxRow("one behind another", five, Keys{{0, 3}, {1, 5}, {2, 7}, {3, 7}, {3.5, 8}, {4, 9}}, "1 key added");
        kxRow("the first", five, five.mid(1), "1 key removed");
        kxRow("moved past one", five, Keys{{0, 3}, {2, 7}, {2.5, 5}, {3, 7}, {4, 9}}, "1 key moved by 36 frames");
        kxRow("moved, and one less", five, Keys{{0, 3}, {2, 7}, {3, 7}, {5, 9}}, "1 key moved by 24 frames, 1 removed");
        kxRow("moved, not alike", five, Keys{{0.5, 3}, {2, 7}, {2.5, 5}, {3, 7}, {4, 9}}, "2 keys moved");
        kxRow("moved in value too", five, Keys{{0, 3}, {1.5, 6}, {2, 7}, {3, 7}, {4, 9}}, "1 key moved");
        kxRow("changed, and one more", five, Keys{{0, 3}, {1, 6}, {2, 7}, {2, 8}, {3, 7}, {4, 9}},
              "1 key changed, 1 added");
        kxRow("none left", five, Keys(), "5 keys removed");
    }

    void keys()
    {
        const auto keysOf = [](const QVector<QPointF>& points)
        {
            MField<CCPnt, 0> keys;
            for (const QPointF& point : points)
                keys.emplace_back(Pnt2f(float(point.x()), float(point.y())), Vec2f(), Vec2f(), 1, 1);
            return keys;
        };
        QFETCH(QVector<QPointF>, before);
        QFETCH(QVector<QPointF>, after);
        QTEST(kxKeyChange::between(keysOf(before), keysOf(after)).words(24), "words");
    }

    void settings()
    {
        QCOMPARE(kxChangeWords::of({{"fps", 24}, {"fullRangeEnd", 10}}, {{"fps", 29.97}, {"fullRangeEnd", 10}}),
                 QString("Set frame rate to 29.97"));
        const kxChangeWords::Settings before = {{"detailedRangeEnd", 9},
                                                {"detailedRangeStart", 3},
                                                {"fullRangeEnd", 10},
                                                {"fullRangeStart", 2},
                                                {"loopTimeline", 0}};
        kxChangeWords::Settings after = before;
        after["fullRangeEnd"] = 70;
        QCOMPARE(kxChangeWords::of(before, after), QString("Set full range to 2 to 70"));
        after["detailedRangeEnd"] = 60;
        after["detailedRangeStart"] = 5;
        after["loopTimeline"] = 1;
        QCOMPARE(kxChangeWords::of(before, after),
                 QString("Set full range to 2 to 70, detailed range to 5 to 60 and loop of the timeline to on"));
        after["fullRangeStart"] = 5;
        after["fullRangeEnd"] = 60;
        after["loopTimeline"] = 0;
        QCOMPARE(kxChangeWords::of(before, after), QString("Set full and detailed range to 5 to 60"));
    }

private:
    struct Row
    {
        const char* act; ///< as the history names it
        const char* difference;
        Edit edit;
    };
    std::vector<Row> rows() const
    {
        std::vector<Row> rows;
        const auto row = [&rows](const char* act, const char* difference, const Edit& edit) {
            rows.push_back({act, difference, edit});
        };
        row("", "", [] {});
        row("Move 'Spin' by 12 frames in 'Show'", "'Spin' in clip 'Show': starts at frame 24 (was 12)",
            [this] { _bars[0]->moveBy(0.5f, 0); });
        row("Move 'Spin' by -6 frames to track 1 in 'Show'",
            "'Spin#2' in clip 'Show': starts at frame 90 (was 96), is on track 1 (was 2)",
            [this] { _bars[1]->moveBy(-0.25f, -50); });
        row("Move 2 blocks by 24 frames in 'Show'",
            "'Spin' in clip 'Show': starts at frame 36 (was 12)\n'Spin#2' in clip 'Show': starts at frame 120 (was 96)",
            [this] { forBars([](auto bar) { bar->moveBy(1, 0); }); });
        row("Move 2 blocks in 'Show'",
            "'Spin' in clip 'Show': starts at frame 168 (was 12)\n'Spin#2' in clip 'Show': starts at frame 168 (was "
            "96), is on track 0 (was 2)",
            [this] { forBars([](auto bar) { bar->setOffset(Vec2f(7, 0)); }); });
        row("Stretch 'Spin' to 36 frames (was 72) in 'Show'", "'Spin#2' in clip 'Show': time scale 0.5 (was 1)",
            [this] { _bars[1]->setScale(0.5f); });
        row("Stretch 'Spin' to 108 frames (was 72) from frame -6 in 'Show'",
            "'Spin' in clip 'Show': starts at frame -6 (was 12)\n'Spin' in clip 'Show': time scale 1.5 (was 1)",
            [this] { _bars[0]->scaleBy(1.5f, 2); });
        row("Flip 'Spin' in 'Show'", "'Spin#2' in clip 'Show': is flipped", [this] { _bars[1]->setFlipped(true); });
        row("Lock 2 blocks in 'Show'", "'Spin' in clip 'Show': is locked\n'Spin#2' in clip 'Show': is locked",
            [this] { forBars([](auto bar) { bar->setLocked(true); }); });
        row("Repeat 'Spin' 3 times in 'Show'", "'Spin' in clip 'Show': repeats 3 times (was 0 times)",
            [this] { _bars[0]->setPostCycles(3); });
        row("Repeat 'Spin' once in 'Show'", "'Spin' in clip 'Show': repeats once (was 0 times)",
            [this] { _bars[0]->setPostCycles(1); });
        row("Repeat 'Spin' without end in 'Show'", "'Spin' in clip 'Show': repeats without end (was 0 times)",
            [this] { _bars[0]->setPostCycles(-1); });
        row("Play 'Spin' from frame 6 to 12 in 'Show'",
            "'Spin' in clip 'Show': plays a range only\n'Spin' in clip 'Show': plays frames 6 to 12 (was 0 to 0)",
            [this]
            {
                _bars[0]->setUsePlayRange(true);
                _bars[0]->setPlayRange(Pnt2f(0.25f, 0.5f));
            });
        row("Switch off 'Spin' in 'Show'", "'Spin#2' in clip 'Show': is off", [this] { _bars[1]->setTravMask(0); });
        row("Hide 'Car'", "'Car': is hidden", [this] { _car->setTravMask(0); });
        row("Rename 'Car' to 'Truck'", "'Truck': renamed from 'Car'", [this] { _car->setNodeName("Truck"); });
        row("Rename 'Show' to 'Film'", "Clip 'Film': renamed from 'Show'",
            [this]
            {
                _clip->setNodeName("Film");
                AnimObjectPtr::dcast(_clip->getCore())->setName("Film");
            });
        row("Move 'Car' to 'Fan'", "'Car': moved from the top to 'Fan'", [this] { _fan->addChild(_car); });
        row("Move 'Pin' from 'Fan' to the top", "'Pin': moved from 'Fan' to the top",
            [this] { kxScene::the()->root()->addChild(_pin); });
        row("Reorder what stands in 'Show'", "Clip 'Show': what stands in it is in another order, from 'Spin' on",
            [this] { _clip->addChild(_bars[0]); });
        row("Rotate 'Car'", "'Car': rotation 0, 9, 0\u00b0 (was 0, 0, 0\u00b0)",
            [this] { kxAnimFixture::transform(_car)->setEulerRotation(Vec3f(0, 9, 0)); });
        row("Rotate 'Fan'", "'Fan': rotation 8.000001, 0, 0\u00b0 (was 8, 0, 0\u00b0)",
            [this] { kxAnimFixture::transform(_fan)->setEulerRotation(Vec3f(8.000001f, 0, 0)); });
        row("Change roughness of 'Paint' to 0.75", "Material 'Paint': roughness 0.75 (was 0.5)",
            [this] { _paint->setRoughness(0.75f); });
        row("Move 2 keys of 'rotation.Y' by 6 frames in 'Spin'",
            "'rotation.Y' in 'Spin' of 'Fan': 2 keys moved by 6 frames",
            [this] { forKeys(1, 3, [](CCPnt& key) { key.setX(key.x() + 0.25f); }); });
        row("Move 2 keys of 'rotation.Y' in 'Spin'", "'rotation.Y' in 'Spin' of 'Fan': 2 keys moved",
            [this] { forKeys(1, 3, [](CCPnt& key) { key.setPoint(Pnt2f(key.x() + 0.25f, key.y() + 3)); }); });
        row("Change 1 key of 'rotation.Y' in 'Spin'", "'rotation.Y' in 'Spin' of 'Fan': 1 key changed",
            [this] { forKeys(2, 3, [](CCPnt& key) { key.setY(8); }); });
        row("Change tangents of 3 keys of 'rotation.Y' in 'Spin'",
            "'rotation.Y' in 'Spin' of 'Fan': tangents of 3 keys changed",
            [this] { forKeys(0, 3, [](CCPnt& key) { key.outType = 4; }); });
        row("Change tangents of 1 key of 'rotation.Y' in 'Spin'",
            "'rotation.Y' in 'Spin' of 'Fan': tangents of 1 key changed",
            [this]
            {
                forKeys(1, 2, [](CCPnt& key) { key.outType = TangentType::Constant; });
                forKeys(2, 3, [](CCPnt& key) { key.inType = TangentType::Constant; });
            });
        row("Add 1 key to 'rotation.Y' in 'Spin'", "'rotation.Y' in 'Spin' of 'Fan': 1 key added",
            [this] { _curve->addPoint(Pnt2f(1.5f, 4), Vec2f(), Vec2f(), 3, 3, true, true); });
        row("Delete 1 key of 'rotation.Y' in 'Spin'", "'rotation.Y' in 'Spin' of 'Fan': 1 key removed",
            [this] { _curve->subPoint(1); });
        row("Change post infinity mode of 'rotation.Y' to Loop in 'Spin'",
            "'rotation.Y' in 'Spin' of 'Fan': post infinity mode Loop (was Constant)",
            [this] { _curve->setPostInfinityMode(UInt32(InfinityMode::Loop)); });
        row("Make clip 'Two' in 'Show'", "Clip 'Two' in clip 'Show': added, with 1 block, 1 channel",
            [this] { _clip->addChild(kxAnimFixture::clip("Two", {kxAnimFixture::clone(_bars[0], 1)})); });
        row("Make block 'Drive' of 'Car'", "Block 'Drive' of 'Car': added, with 1 channel",
            [this] {
                kxAnimFixture::added(_car,
                                     kxAnimFixture::block("Drive", {kxAnimFixture::curve("scale", "X", {{0, 1}})}));
            });
        row("Make clip 'Two' with object 'Pair' and 2 blocks",
            "Clip 'Two': added, with 1 block, 1 channel\nBlock 'Drive' of 'Car': added, with 1 channel\nObject 'Pair': "
            "added, with 1 block, 1 channel",
            [this]
            {
                const NodePtr pair = kxAnimFixture::object("Pair");
                for (const NodePtr& node : {pair, _car})
                    kxAnimFixture::added(node,
                                         kxAnimFixture::block("Drive", {kxAnimFixture::curve("scale", "X", {{0, 1}})}));
                kxAnimFixture::added(kxAnimFixture::clip("Two", {kxAnimFixture::clone(_block, 1)}));
            });
        row("Delete block 'Spin' in 'Show'", "Block 'Spin#2' in clip 'Show': removed, with 1 channel",
            [this] { _clip->subChild(_bars[1]); });
        row("Delete block 'Spin' of 'Fan'",
            "Block 'Spin' in clip 'Show': removed, with 1 channel\nBlock 'Spin#2' in clip 'Show': removed, with 1 "
            "channel\nBlock 'Spin' of 'Fan': removed, with 1 channel",
            [this]
            {
                for (const AnimNodePtr& node : {_bars[0], _bars[1], _block})
                    if (const NodePtr parent = node->getParent(); parent != NullFC)
                        parent->subChild(node);
            });
        row("Delete clip 'Show' and more",
            "Clip 'Show': removed, with 2 blocks, 2 channels\nMaterial 'Paint': metallic 1 (was 0)",
            [this]
            {
                _paint->setMetallic(1);
                kxAnimManager::the()->clipStructureRoot()->subChild(_clip);
            });
        row("Make material 'New'", "Material 'New': added", [] { addMaterial("New"); });
        // What a comparison knows beyond doubt to be the same.
        row("Rename 'Pin' to 'Nail' and more",
            "'Nail': renamed from 'Pin'\n'Nail': moved from 'Fan' to 'Car'\n'Nail': position 7, 0, 0 (was 0, 0, 0)",
            [this]
            {
                _pin->setNodeName("Nail");
                _car->addChild(_pin);
                kxAnimFixture::transform(_pin)->setTranslation(Vec3f(7, 0, 0));
            });
        row("Rename 'Spin' to 'Turn' and more",
            "'Turn' of 'Car': renamed from 'Spin'\n'Turn' of 'Car': moved from 'Fan' to 'Car'",
            [this]
            {
                _block->setNodeName("Turn");
                kxAnimFixture::added(_car, _block);
            });
        row("Rename 'Paint' to 'Oil'", "Material 'Oil': renamed from 'Paint'", [this] { _paint->setNodeName("Oil"); });
        row("Make object 'Pin'", "Object 'Pin' in 'Car': added", [this] { addNode(_car, "Pin", Transform::create()); });
        row("Make object 'Bus' and more", "Object 'Car': removed\nObject 'Bus': added",
            [this]
            {
                kxAnimFixture::transform(kxAnimFixture::object("Bus"))->setScale(Vec3f(1, 2, 1));
                kxScene::the()->root()->subChild(_car);
            });
        row("Make object 'Group' and more", "Object 'Group': added\n'Fan': moved from the top to 'Group'",
            [this] { kxAnimFixture::object("Group")->addChild(_fan); });
        row("Give 'Pin' the material 'Paint'", "'Pin': material 'Paint' (was none)",
            [this] { GeometryPtr::dcast(_pin->getCore())->setMaterial(_paint); });
        row("Change shape of 'Pin'", "'Pin': shape is another",
            [this] { GeometryPtr::dcast(_pin->getCore())->setMesh(mesh(3)); });
        row("Change the groups of 'Car'", "'Car': animations: 'wheels' added",
            [this]
            {
                const TagAttachmentPtr tags = _car->findAttachment<TagAttachment>();
                tags->addAnimationTag("wheels");
            });
        row("Change steps of 'Tour'", "Sequence 'Tour': steps: wait 2 added; clip 'Show' removed",
            [this] { SceneSequencePtr::dcast(_tour->getCore())->setSteps({"[\"wait\",2]"}); });
        row("Unshare 'rotation.Y' in 'Spin'",
            "'rotation.Y' in 'Spin#2' in clip 'Show': shares its content with nothing any more",
            [this]
            {
                const AnimCurvePtr own = AnimCurveBase::create();
                own->editControlPoints() = _curve->getControlPoints();
                own->setChannelName("rotation");
                own->setSuffix("Y");
                own->setName("rotation");
                own->setColor(_curve->getColor());
                _bars[1]->getChild(0)->setCore(own);
            });
        return rows;
    }

    /// The open scene as its file gives it back.
    kxSceneContent saved() const
    {
        const QString path = _folder.filePath("base.kxs");
        kxFileReport report(path);
        kxSceneContent content;
        if (!writeFile(path, bytesOfScene()) || !kxSceneIO::readContent(path, content, report))
            QTest::qFail(qPrintable(report.message()), __FILE__, __LINE__);
        return content;
    }
    static FieldContainerPtr mesh(std::size_t triangles)
    {
        const MeshPtr mesh = Mesh::create();
        mesh->setPositions(std::vector<float>(9 * triangles, 1));
        return mesh;
    }
    static void addMaterial(const char* name)
    {
        const UberMaterialPtr material = UberMaterial::create();
        material->setNodeName(name);
        kxScene::the()->addMaterial(material);
    }
    void forBars(const std::function<void(const AnimNodePtr&)>& use) const
    {
        for (const AnimNodePtr& bar : _bars)
            use(bar);
    }
    void forKeys(UInt32 from, UInt32 to, const std::function<void(CCPnt&)>& use) const
    {
        MField<CCPnt, 0>& keys = _curve->editControlPoints();
        for (UInt32 i = from; i < to && i < keys.size(); ++i)
            use(keys[i]);
        std::stable_sort(keys.begin(), keys.end(), [](const CCPnt& a, const CCPnt& b) { return a.x() < b.x(); });
    }

    QTemporaryDir _folder;
    std::unique_ptr<kxAnimFixture> _fixture;
    NodePtr _fan, _car, _pin, _tour;
    AnimCurvePtr _curve;
    std::vector<AnimNodePtr> _bars;
    AnimNodePtr _clip, _block;
    std::vector<osg::Share<FieldContainer>> _held; // what edits take out stays for the next
    UberMaterialPtr _paint;
};

QTEST_GUILESS_MAIN(tst_kxSceneTexts)
#include "tst_kxSceneTexts.moc"
