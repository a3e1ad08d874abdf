#include <kxScenegraph.h>
#include <kxTable.h>
#include <osg/AnimAttachments.h>
#include <osg/AnimNode.h>
#include <osg/ChangeList.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxScene.h>

#include <QtTest>

#include <random>
#include <set>

using namespace osg;

namespace
{
NodePtr makeNode(const char* name = "")
{
    const NodePtr node = Node::create();
    node->setCore(Transform::create());
    node->setNodeName(name);
    return node;
}

bool isAlive(UInt32 id)
{
    return FieldContainerFactory::the()->getContainer(id) != NullFC;
}

/// Everything a tree must hold between edits.
bool isSound(const NodePtr& root)
{
    bool sound = true;
    traverse(root,
             [&sound](const NodePtr& node)
             {
                 for (const NodePtr& child : node->getChildren())
                     sound = sound && child->getParent() == node && child->getRefCount() == 1;
                 if (node->getCore() != NullFC)
                     sound = sound && node->getCore()->getRefCount() == node->getCore()->getParents().size();
                 return osg::Action::Continue;
             });
    return sound;
}
} // namespace

class tst_kxSceneTree : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void lifeFollowsShares()
    {
        const NodePtr parent = makeNode();
        const NodePtr child = makeNode();
        const UInt32 parentId = parent->getId(), childId = child->getId(), coreId = child->getCore()->getId();
        parent->addRef();
        parent->addChild(child);

        const NodePtr twin = Node::create();
        twin->addRef();
        twin->setCore(child->getCore());
        QCOMPARE(int(child->getCore()->getParents().size()), 2);

        parent->subRef();
        QVERIFY(!isAlive(parentId));
        QVERIFY(!isAlive(childId));
        QVERIFY(isAlive(coreId)); // the twin still has it
        QCOMPARE(int(twin->getCore()->getParents().size()), 1);
        twin->subRef();
        QVERIFY(!isAlive(coreId));
    }

    void anIdIsNeverUsedAgain()
    {
        const NodePtr first = makeNode();
        first->addRef();
        const UInt32 id = first->getId();
        first->subRef();
        for (int i = 0; i < 100; ++i)
        {
            const NodePtr other = makeNode();
            other->addRef();
            QVERIFY(other->getId() > id);
            other->subRef();
        }
        QVERIFY(!isAlive(id));
        QVERIFY(!isAlive(0));
        QVERIFY(!isAlive(0xFFFFFFFFu));
    }

    void randomMovesKeepTheTree()
    {
        kxScene::the(); // has the list of changes
        std::mt19937 random(7);
        const NodePtr root = makeNode();
        root->addRef();
        std::vector<NodePtr> nodes = {root};
        for (int i = 0; i < 60; ++i)
        {
            nodes.push_back(makeNode());
            nodes[random() % (nodes.size() - 1)]->addChild(nodes.back());
        }
        for (int step = 0; step < 2000; ++step)
        {
            const NodePtr moved = nodes[1 + random() % (nodes.size() - 1)];
            const NodePtr target = nodes[random() % nodes.size()];
            const bool below = kxNodeUtils::hasParent(target, moved);
            QCOMPARE(target->insertChild(UInt32(random() % 5), moved), !below);
        }
        const NodePtr animation = AnimNodeBase::create();
        animation->addRef();
        QVERIFY(!root->addChild(animation) && !animation->addChild(nodes[1]) && nodes[1]->getParent() != NullFC);
        animation->subRef();
        QVERIFY(isSound(root));
        std::size_t count = 0;
        traverse(root,
                 [&count](const NodePtr&)
                 {
                     ++count;
                     return osg::Action::Continue;
                 });
        QCOMPARE(count, nodes.size());
        std::vector<UInt32> ids;
        for (const NodePtr& node : nodes)
            ids.push_back(node->getId());
        QVERIFY(!root->subChild(root) && !root->subChild(NodePtr()));
        struct : ChangeListener
        {
            void containerChanged(const FieldContainerPtr&, const BitVector&) override {}
            void containerDestroyed(UInt32 id) override { gone.insert(id); }
            std::set<UInt32> gone;
        } listener;
        WinThreadBase::getCurrentChangeList()->addListener(&listener);
        root->subRef();
        WinThreadBase::getCurrentChangeList()->subListener(&listener);
        for (const UInt32 id : ids)
            QVERIFY(!isAlive(id) && listener.gone.count(id) == 1);
    }

    void attachmentsOfOneClassReplaceEachOther()
    {
        const NodePtr node = makeNode();
        node->addRef();
        const AnimAttachmentPtr first = AnimAttachmentBase::create(), second = AnimAttachmentBase::create();
        const UInt32 firstId = first->getId();
        node->addAttachment(first);
        node->addAttachment(TagAttachmentBase::create());
        node->addAttachment(second);
        QVERIFY(!isAlive(firstId));
        QCOMPARE(int(node->getAttachments().size()), 2);
        QVERIFY(node->findAttachment<AnimAttachment>() == second);
        node->addAttachment(second); // the same again stays
        QVERIFY(node->findAttachment<AnimAttachment>() == second);
        node->subAttachment(first); // not its own any more
        QCOMPARE(int(node->getAttachments().size()), 2);
        const UInt32 secondId = second->getId(), rootId = second->getAnimationRoot()->getId();
        node->subRef();
        QVERIFY(!isAlive(secondId));
        QVERIFY(!isAlive(rootId));
    }

    void uniqueNames_data()
    {
        kxColumns<QStringList, QString>("names", "free");
        QTest::newRow("free") << QStringList{"Wheels", "Whee", "Wheel_1"} << "Wheel";
        QTest::newRow("taken") << QStringList{"Wheel", "Wheel_2", "Wheel_x"} << "Wheel_1";
        QTest::newRow("the first gap") << QStringList{"Wheel_2", "Wheel_1", "Wheel", "Wheel_4"} << "Wheel_3";
        QTest::newRow("no gap") << QStringList{"Wheel", "Wheel_1", "Wheel_2"} << "Wheel_3";
        QTest::newRow("what looks like a number")
            << QStringList{"Wheel", "Wheel_01", "Wheel 1", "Wheel_1b", "Wheel_", "Wheel_99999999999999999999"}
            << "Wheel_1";
    }

    void uniqueNames()
    {
        QFETCH(QStringList, names);
        QFETCH(QString, free);
        std::vector<std::string> taken;
        for (const QString& name : names)
            taken.push_back(name.toStdString());
        QCOMPARE(QString::fromStdString(kxNodeUtils::getUniqueName("Wheel", taken)), free);
    }
};

QTEST_GUILESS_MAIN(tst_kxSceneTree)
#include "tst_kxSceneTree.moc"
