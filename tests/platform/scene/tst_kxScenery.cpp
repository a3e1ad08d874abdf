#include <kxAnimFixture.h>
#include <kxTable.h>
#include <osg/AnimCores.h>
#include <scene/kxScenery.h>

#include <QtTest>

using namespace osg;
using kxScenery::Kind;

Q_DECLARE_METATYPE(kxSequenceStep)

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
    void init() { kxAnimFixture::clear(); }
    void cleanup() { kxAnimFixture::clear(); }

    void stepsComeBack_data()
    {
        typedef kxSequenceStep::Kind Step;
        QTest::addColumn<kxSequenceStep>("step");
        QTest::newRow("clip") << kxSequenceStep{Step::PlayClip, "Walk", "", 1};
        QTest::newRow("start") << kxSequenceStep{Step::StartClip, "a \"b\" \\ c", "", 1};
        QTest::newRow("viewpoint") << kxSequenceStep{Step::ShowViewpoint,
                                                     "\xc3\x9c"
                                                     "bersicht",
                                                     "", 1};
        QTest::newRow("variant") << kxSequenceStep{Step::SetVariant, "Door/Left", "Open/Wide", 1};
        QTest::newRow("next variant") << kxSequenceStep{Step::SetVariant, "Door", "", 1};
        QTest::newRow("wait") << kxSequenceStep{Step::Wait, "", "", 0.04};
        QTest::newRow("sequence") << kxSequenceStep{Step::PlaySequence, "Tour", "", 1};
        QTest::newRow("python") << kxSequenceStep{Step::RunPython, "if x:\n\tprint('y')\n", "", 1};
    }

    void stepsComeBack()
    {
        QFETCH(kxSequenceStep, step);
        kxSequenceStep read;
        QVERIFY(kxSequenceStep::fromText(step.toText(), read));
        QCOMPARE(read.kind, step.kind);
        QCOMPARE(read.name, step.name);
        QCOMPARE(read.choice, step.choice);
        QCOMPARE(read.seconds, step.seconds);
    }

    void damagedSteps_data()
    {
        QTest::addColumn<QByteArray>("text");
        for (const char* const text : {"", "[]", "[\"wait\"]", "[\"wait\",-1]", "[\"wait\",1e99]", "[\"wait\",\"1\"]",
                                       "[\"clip\",1]", "[\"clip\",\"a\",\"b\"]", "[\"variant\",\"a\",1]",
                                       "[\"jump\",\"a\"]", "{\"wait\":1}", "[\"clip\",\"a\"", "\xff\xfe"})
            QTest::newRow(text) << QByteArray(text);
    }

    void damagedSteps()
    {
        QFETCH(QByteArray, text);
        kxSequenceStep step{kxSequenceStep::Kind::PlayClip, "stays", "", 3};
        QVERIFY(!kxSequenceStep::fromText(text.toStdString(), step));
        QCOMPARE(step.name, std::string("stays"));
        // In a sequence the others go on being read, and nothing of it is lost.
        const SceneSequencePtr core = SceneSequence::create();
        const NodePtr node = add(core, "S", kxScene::the()->sceneryRoot());
        core->setSteps({text.toStdString(), kxSequenceStep().toText()});
        int unread = 0;
        QCOMPARE(kxScenery::steps(node, &unread).size(), std::size_t(1));
        QCOMPARE(unread, 1);
    }

    void variantNames_data()
    {
        kxColumns<QString, QString, QString>("text", "set", "choice");
        const auto row = [](const char* name, const char* text, const char* set, const char* choice)
        { QTest::newRow(name) << QString(text) << QString(set) << QString(choice); };
        row("set", "Door", "Door", "");
        row("choice", "Door/Open", "Door", "Open");
        row("separator in the set", "Door/Left/Open", "Door/Left", "Open");
        row("separator in the choice", "Door/a/b", "Door", "a/b");
        row("unknown choice", "Door/None", "Door", "None");
        row("unknown set", "Gate/Open", "", "");
        row("empty", "", "", "");
    }

    void variantNames()
    {
        QFETCH(QString, text);
        QFETCH(QString, set);
        QFETCH(QString, choice);
        addSet("Door", {"Open", "a/b"});
        addSet("Door/Left", {"Open"});
        const auto found = kxScenery::findVariant(text.toStdString());
        QCOMPARE(found.first == NullFC ? QString() : QString::fromStdString(found.first->getNodeName()), set);
        QCOMPARE(QString::fromStdString(found.second), choice);
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
