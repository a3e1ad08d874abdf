#include <QIcon>
#include <kxAnimFixture.h>
#include <kxScenegraph.h>
#include <osg/Share.h>
#include <scene/UberMaterial.h>
#include <scene/kxScenery.h>

#include <QtTest>

using namespace osg;
using kxScenery::Kind;

namespace
{
NodePtr add(const NodeCorePtr& core, const char* name, const NodePtr& parent)
{
    const NodePtr node = Node::create();
    node->setCore(core);
    node->setNodeName(name);
    parent->addChild(node);
    return node;
}

NodePtr addSet(const char* name, const std::vector<const char*>& choices)
{
    const NodePtr set = add(Switch::create(), name, kxScene::the()->root());
    for (const char* const choice : choices)
        add(Transform::create(), choice, set);
    return set;
}
} // namespace

class tst_kxScenery : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { kxAnimFixture::clear(); }

    void stepsComeBack()
    {
        typedef kxSequenceStep::Kind Step;
        const kxSequenceStep steps[] = {
            {Step::PlayClip, "Walk", "", 1},           {Step::StartClip, "a \"b\" \\ c", "", 1},
            {Step::ShowViewpoint, "Übersicht", "", 1}, {Step::SetVariant, "Door/Left", "Open/Wide", 1},
            {Step::SetVariant, "Door", "", 1},         {Step::Wait, "", "", 0.04},
            {Step::PlaySequence, "Tour", "", 1},       {Step::RunPython, "if x:\n\tprint('y')\n", "", 1}};
        for (const kxSequenceStep& step : steps)
        {
            kxSequenceStep read;
            QVERIFY2(kxSequenceStep::fromText(step.toText(), read), step.toText().c_str());
            QCOMPARE(read.kind, step.kind);
            QCOMPARE(read.name, step.name);
            QCOMPARE(read.choice, step.choice);
            QCOMPARE(read.seconds, step.seconds);
        }
    }

    void damagedSteps()
    {
        const SceneSequencePtr core = SceneSequence::create();
        const NodePtr node = add(core, "S", kxScene::the()->sceneryRoot());
        for (const char* const text : {"", "[]", "[\"wait\"]", "[\"wait\",-1]", "[\"wait\",1e99]", "[\"wait\",\"1\"]",
                                       "[\"clip\",1]", "[\"clip\",\"a\",\"b\"]", "[\"variant\",\"a\",1]",
                                       "[\"jump\",\"a\"]", "{\"wait\":1}", "[\"clip\",\"a\"", "\xff\xfe"})
        {
            kxSequenceStep step{kxSequenceStep::Kind::PlayClip, "stays", "", 3};
            QVERIFY2(!kxSequenceStep::fromText(text, step), text);
            QCOMPARE(step.name, std::string("stays"));
            // In a sequence the others go on being read, and nothing of it is lost.
            core->setSteps({text, kxSequenceStep().toText()});
            int unread = 0;
            QCOMPARE(kxScenery::steps(node, &unread).size(), std::size_t(1));
            QCOMPARE(unread, 1);
        }
    }

    void variantNames()
    {
        addSet("Door", {"Open", "a/b"});
        addSet("Door/Left", {"Open"});
        const char* const names[][3] = {{"Door", "Door", ""},          {"Door/Open", "Door", "Open"},
                                        {"Door/a/b", "Door", "a/b"},   {"Door/Left/Open", "Door/Left", "Open"},
                                        {"Door/None", "Door", "None"}, // no such choice
                                        {"Gate/Open", "", ""},         {"", "", ""}};
        for (const auto& [text, set, choice] : names)
        {
            const auto found = kxScenery::findVariant(text);
            QCOMPARE(kxNodeUtils::getName(found.first), std::string(set));
            QCOMPARE(found.second, std::string(choice));
        }
    }

    void nextChoiceGoesAround()
    {
        const NodePtr set = addSet("Door", {"Open", "", "Shut"});
        const SwitchPtr core = SwitchPtr::dcast(set->getCore());
        const int next[][2] = {{0, 1}, {1, 2}, {2, 0}, {Switch::None, 0}, {Switch::All, 0}, {99, 0}};
        for (const auto& [shown, expected] : next)
        {
            core->setChoice(shown);
            QCOMPARE(kxScenery::choiceIndex(set, ""), expected);
        }
        QCOMPARE(kxScenery::choiceIndex(set, "2"), 1); // a child without a name
        QCOMPARE(kxScenery::choiceIndex(set, "open"), -1);
        QCOMPARE(kxScenery::choiceIndex(addSet("Empty", {}), ""), -1);
        core->setChoice(99);
        QVERIFY(kxScenery::shownChoice(set).empty());
        const osg::Share outside(addSet("Outside", {}));
        Kind kind;
        QVERIFY(kxScenery::kindOf(set, kind) && kind == Kind::VariantSet);
        kxScene::the()->root()->subChild(outside);
        QVERIFY(!kxScenery::kindOf(outside, kind) && !kxScenery::kindOf(NodePtr(), kind));
    }

    void whatCodeAsksOfNodes()
    {
        const NodePtr root = kxScene::the()->root(), whole = add(Geometry::create(), "", root);
        // A nameless geometry below another is a part of it.
        QVERIFY(kxNodeUtils::isGeometryComponent(add(Geometry::create(), "", whole)));
        QVERIFY(!kxNodeUtils::isGeometryComponent(add(Geometry::create(), "Named", whole)));
        QVERIFY(!kxNodeUtils::isGeometryComponent(add(Transform::create(), "", whole)));
        QVERIFY(!kxNodeUtils::isGeometryComponent(whole));
        QVERIFY(kxNodePermission::allows(whole, kxScenegraphTypes::Delete));
        QVERIFY(!kxNodePermission::allows(kxScenegraph::getSuperRoot(), kxScenegraphTypes::Delete));
        QVERIFY(!kxNodePermission::allows(NodePtr(), kxScenegraphTypes::Delete));
        // A material's picture is a ball of its colour.
        const osg::Share material(UberMaterial::create());
        material->setBaseColor(Color3f(0.5f, 0, 0));
        const QImage ball = kxScenegraph::getMaterialIcon(material.get()).pixmap(32).toImage();
        QCOMPARE(ball.pixelColor(16, 16).alpha(), 255);
        QVERIFY(ball.pixelColor(16, 16).red() > ball.pixelColor(16, 16).blue());
        QCOMPARE(ball.pixelColor(0, 0).alpha(), 0);
    }

    void renamesReachTriggersAndSteps()
    {
        typedef kxSequenceStep::Kind Step;
        const AnimNodePtr clip = kxAnimFixture::clip(
            "c", {kxAnimFixture::trigger("Door", 0, true, false), kxAnimFixture::trigger("Door/Open", 0, true, false),
                  kxAnimFixture::trigger("Doors", 0, true, false), kxAnimFixture::trigger("Door", 0, false, true)});
        kxAnimManager::the()->addToClipStructure(clip);
        const SceneSequencePtr core = SceneSequence::create();
        add(core, "S", kxScene::the()->sceneryRoot());
        core->setSteps({kxSequenceStep{Step::SetVariant, "Door", "Open", 1}.toText(), "damaged",
                        kxSequenceStep{Step::ShowViewpoint, "Door", "", 1}.toText()});
        const auto rename = [&clip](const char* before, const char* after)
        { kxScenery::rename(Kind::VariantSet, before, after, clip, kxScene::the()->sceneryRoot()); };
        rename("Door", "Gate");
        rename("Gate/Open", "Gate/Wide");
        QStringList names;
        kxScenery::forTriggers(clip, [&names](const AnimNodePtr&, const AnimSequencePtr& core2, Kind)
                               { names << QString::fromStdString(core2->getName()); });
        QCOMPARE(names, QStringList({"Gate", "Gate/Wide", "Doors", "Door"}));
        QCOMPARE(core->getSteps()[0], std::string("[\"variant\",\"Gate\",\"Wide\"]"));
        QCOMPARE(core->getSteps()[1], std::string("damaged"));
        QCOMPARE(core->getSteps()[2], std::string("[\"viewpoint\",\"Door\"]"));
    }
};

QTEST_MAIN(tst_kxScenery)
#include "tst_kxScenery.moc"
