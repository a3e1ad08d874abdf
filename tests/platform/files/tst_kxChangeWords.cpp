#include <kxAnimFixture.h>

#include <files/text/kxChangeWords.h>
#include <osg/FieldContainerFactory.h>
#include <scene/FieldDescription.h>
#include <scene/UberMaterial.h>

#include <QtTest>

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
class tst_kxChangeWords : public QObject
{
    Q_OBJECT
    typedef std::function<void()> Edit;

private Q_SLOTS:
    void init()
    {
        _fixture = std::make_unique<kxAnimFixture>();
        _fan = kxAnimFixture::object("Fan");
        _car = kxAnimFixture::object("Car");
        _fan->addChild(kxAnimFixture::object("Pin"));
        const AnimNodePtr curve = kxAnimFixture::curve("rotation", "Y", {{0, 5}, {1, 90}, {2, 40}, {3, 70}});
        _curve = kxAnimFixture::curveOf(curve);
        const AnimNodePtr block = kxAnimFixture::added(_fan, kxAnimFixture::block("Spin", {curve}));
        _bars = {kxAnimFixture::clone(block, 0.5f), kxAnimFixture::clone(block, 4, 2)};
        _clip = kxAnimFixture::added(kxAnimFixture::clip("Show", _bars));
        _paint = UberMaterial::create();
        _paint->setNodeName("Paint");
        kxScene::the()->addMaterial(_paint);
    }

    void edits_data()
    {
        kxColumns<Edit, QString>("edit", "words");
        const auto row = [](const char* words, const Edit& edit) { QTest::newRow(words) << edit << QString(words); };
        row("", [] {});
        row("Move 'Spin' by 12 frames in 'Show'", [this] { _bars[0]->moveBy(0.5f, 0); });
        row("Move 'Spin' by -6 frames to track 2 in 'Show'", [this] { _bars[1]->moveBy(-0.25f, -50); });
        row("Move 2 blocks by 24 frames in 'Show'", [this] { forBars([](auto bar) { bar->moveBy(1, 0); }); });
        row("Move 2 blocks in 'Show'", [this] { forBars([](auto bar) { bar->setOffset(Vec2f(7, 0)); }); });
        row("Stretch 'Spin' by 1.5 in 'Show'", [this] { _bars[0]->scaleBy(1.5f, 2); });
        row("Flip 'Spin' in 'Show'", [this] { _bars[1]->setFlipped(true); });
        row("Lock 2 blocks in 'Show'", [this] { forBars([](auto bar) { bar->setLocked(true); }); });
        row("Repeat 'Spin' 3 times in 'Show'", [this] { _bars[0]->setPostCycles(3); });
        row("Repeat 'Spin' without end in 'Show'", [this] { _bars[0]->setPostCycles(-1); });
        row("Play 'Spin' from frame 6 to 12 in 'Show'",
            [this]
            {
                _bars[0]->setUsePlayRange(true);
                _bars[0]->setPlayRange(Pnt2f(0.25f, 0.5f));
            });
        row("Switch off 'Spin' in 'Show'", [this] { _bars[1]->setTravMask(0); });
        row("Hide 'Car'", [this] { _car->setTravMask(0); });
        row("Rename 'Car' to 'Truck'", [this] { _car->setNodeName("Truck"); });
        row("Rename 'Show' to 'Film'",
            [this]
            {
                _clip->setNodeName("Film");
                AnimObjectPtr::dcast(_clip->getCore())->setName("Film");
            });
        row("Move 'Car' to 'Fan'", [this] { _fan->addChild(_car); });
        row("Move 'Pin' from 'Fan' to the top", [this] { kxScene::the()->root()->addChild(_fan->getChild(0)); });
        row("Reorder what stands in 'Show'", [this] { _clip->addChild(_bars[0]); });
        row("Rotate 'Car'", [this] { kxAnimFixture::transform(_car)->setEulerRotation(Vec3f(0, 9, 0)); });
        row("Change roughness of 'Paint' to 0.75", [this] { _paint->setRoughness(0.75f); });
        row("Move 2 keys of 'rotation.Y' by 6 frames in 'Spin'",
            [this] { forKeys(1, 3, [](CCPnt& key) { key.setX(key.x() + 0.25f); }); });
        row("Move 2 keys of 'rotation.Y' in 'Spin'",
            [this] { forKeys(1, 3, [](CCPnt& key) { key.setPoint(Pnt2f(key.x() + 0.25f, key.y() + 3)); }); });
        row("Change 1 key of 'rotation.Y' in 'Spin'", [this] { forKeys(2, 3, [](CCPnt& key) { key.setY(8); }); });
        row("Change tangents of 3 keys of 'rotation.Y' in 'Spin'",
            [this] { forKeys(0, 3, [](CCPnt& key) { key.outType = 4; }); });
        row("Add 1 key to 'rotation.Y' in 'Spin'",
            [this] { _curve->addPoint(Pnt2f(1.5f, 4), Vec2f(), Vec2f(), 3, 3, true, true); });
        row("Delete 1 key of 'rotation.Y' in 'Spin'", [this] { _curve->subPoint(1); });
        row("Change post infinity mode of 'rotation.Y' to Loop in 'Spin'",
            [this] { _curve->setPostInfinityMode(UInt32(InfinityMode::Loop)); });
        row("Make clip 'Two' in 'Show'",
            [this] { _clip->addChild(kxAnimFixture::clip("Two", {kxAnimFixture::clone(_bars[0], 1)})); });
        row("Make block 'Drive' in 'Car'",
            [this] {
                kxAnimFixture::added(_car,
                                     kxAnimFixture::block("Drive", {kxAnimFixture::curve("scale", "X", {{0, 1}})}));
            });
        row("Delete block 'Spin' in 'Show'", [this] { _clip->subChild(_bars[1]); });
        row("Delete clip 'Show' and more",
            [this]
            {
                _paint->setMetallic(1);
                _clip->getParent()->subChild(_clip);
            });
        row("Make material 'New'", [] { addMaterial("New"); });
    }

    void edits()
    {
        QFETCH(Edit, edit);
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
        QTEST(kxChangeWords::of(list, 24, finder), "words");
    }

    void settings()
    {
        QCOMPARE(kxChangeWords::of({{"fps", 24}, {"fullRangeEnd", 10}}, {{"fps", 29.97}, {"fullRangeEnd", 10}}),
                 QString("Set frame rate to 29.97"));
        QCOMPARE(
            kxChangeWords::of({{"fullRangeEnd", 10}, {"loopTimeline", 0}}, {{"fullRangeEnd", 7}, {"loopTimeline", 1}}),
            QString("Set end of the full range to 7 and more"));
    }

private:
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
        for (UInt32 i = from; i < to; ++i)
            use(_curve->getControlPoints(i));
    }

    std::unique_ptr<kxAnimFixture> _fixture;
    NodePtr _fan, _car;
    AnimCurvePtr _curve;
    std::vector<AnimNodePtr> _bars;
    AnimNodePtr _clip;
    UberMaterialPtr _paint;
};

QTEST_GUILESS_MAIN(tst_kxChangeWords)
#include "tst_kxChangeWords.moc"
