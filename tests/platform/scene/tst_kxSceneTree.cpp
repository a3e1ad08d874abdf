#include <kxMarks.h>
#include <kxScenegraph.h>
#include <osg/AnimAttachments.h>
#include <osg/AnimNode.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Share.h>
#include <scene/kxIdTable.h>
#include <scene/kxScene.h>

#include <QtTest>

#include <random>
#include <set>

using namespace osg;

namespace
{
NodePtr makeNode()
{
    const NodePtr node = Node::create();
    node->setCore(Transform::create());
    return node;
}

bool isAlive(UInt32 id)
{
    return FieldContainerFactory::the()->getContainer(id) != NullFC;
}
} // namespace

class tst_kxSceneTree : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void idsThatAreGoneTakeNoRoom()
    {
        kxIdTable<UInt8> table;
        table.set(3, 9);
        std::size_t room = 0;
        for (UInt32 scene = 1; scene <= 50; ++scene) // each with other ids, set twice
        {
            for (UInt32 id = scene * 1000; id < scene * 1000 + 900; ++id)
                table.set(id, 1), table.set(id, UInt8(scene));
            QVERIFY(table.get(scene * 1000 + 899) == scene && table.get(scene * 1000 + 900) == 0);
            QCOMPARE(table.ids().size(), std::size_t(901));
            room = std::max(room, table.room());
            for (UInt32 id = scene * 1000 + 899; id >= scene * 1000; --id)
                table.set(id, 0), table.set(id, 0);
        }
        QCOMPARE(table.ids(), std::vector<UInt32>{3});
        QVERIFY(table.get(3) == 9 && table.room() < room && room < 3000);
    }

    void lifeFollowsShares()
    {
        osg::Share parent(makeNode()), twin(Node::create());
        const NodePtr child = makeNode();
        const UInt32 parentId = parent->getId(), childId = child->getId(), coreId = child->getCore()->getId();
        parent->addChild(child);
        twin->setCore(child->getCore());
        QCOMPARE(int(child->getCore()->getParents().size()), 2);

        parent.release();
        QVERIFY(!isAlive(parentId));
        QVERIFY(!isAlive(childId));
        QVERIFY(isAlive(coreId)); // the twin still has it
        QCOMPARE(int(twin->getCore()->getParents().size()), 1);
        twin.release();
        QVERIFY(!isAlive(coreId));
        // An id is never used again, and there are some that nothing has.
        for (int i = 0; i < 100; ++i)
            QVERIFY(osg::Share(makeNode())->getId() > coreId);
        QVERIFY(!isAlive(0));
        QVERIFY(!isAlive(0xFFFFFFFFu));
    }

    void randomMovesKeepTheTree()
    {
        kxScene::the(); // has the list of changes
        std::mt19937 random(7);
        osg::Share root(makeNode());
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
        const osg::Share animation(AnimNodeBase::create());
        QVERIFY(!root->addChild(animation.get()) && !animation->addChild(nodes[1]));
        QVERIFY(nodes[1]->getParent() != NullFC);
        std::vector<UInt32> ids;
        std::size_t children = 0;
        for (const NodePtr& node : nodes)
        {
            QVERIFY(kxNodeUtils::hasParent(node, root));
            QCOMPARE(node->getCore()->getRefCount(), 1u);
            for (const NodePtr& child : node->getChildren())
            {
                QVERIFY(child->getParent() == node);
                QCOMPARE(child->getRefCount(), 1u);
            }
            children += node->getNChildren();
            ids.push_back(node->getId());
        }
        QCOMPARE(children + 1, nodes.size());
        QVERIFY(!root->subChild(root) && !root->subChild(NodePtr()));
        const kxMarks marks;
        root.release();
        for (const UInt32 id : ids)
            QVERIFY(!isAlive(id) && marks.gone.count(id) == 1);
    }

    void attachmentsOfOneClassReplaceEachOther()
    {
        osg::Share node(makeNode()), clone(Node::create());
        const AnimAttachmentPtr first = AnimAttachmentBase::create(), second = AnimAttachmentBase::create();
        const TagAttachmentPtr tags = TagAttachmentBase::create();
        const UInt32 firstId = first->getId();
        node->addAttachment(first);
        node->addAttachment(tags);
        node->addAttachment(second);
        QVERIFY(!isAlive(firstId));
        QCOMPARE(int(node->getAttachments().size()), 2);
        QVERIFY(node->findAttachment<AnimAttachment>() == second);
        node->addAttachment(second); // the same again stays
        QVERIFY(node->findAttachment<AnimAttachment>() == second);
        node->subAttachment(first); // not its own any more
        QCOMPARE(int(node->getAttachments().size()), 2);
        // Nodes that share a core come to share what the one has.
        clone->setCore(node->getCore());
        const kxMarks marks;
        kxNodeUtils::syncCloneNodesAttachment(node, AnimAttachment::_type);
        QVERIFY(clone->findAttachment<AnimAttachment>() == second && marks.has(clone.get()));
        clone.release();
        // Names of groups say whether their list changed.
        QVERIFY(tags->addAnimationTag("a") && !tags->addAnimationTag("a"));
        QVERIFY(tags->replaceAnimationTag("a", "b") && !tags->replaceAnimationTag("a", "c"));
        QVERIFY(!tags->replaceAnimationTag("b", "b"));
        const UInt32 secondId = second->getId(), rootId = second->getAnimationRoot()->getId();
        node.release();
        QVERIFY(!isAlive(secondId));
        QVERIFY(!isAlive(rootId));
    }

    void uniqueNames()
    {
        const std::pair<std::vector<std::string>, std::string> cases[] = {
            {{"Wheels", "Whee", "Wheel_1"}, "Wheel"},
            {{"Wheel_2", "Wheel_1", "Wheel", "Wheel_4"}, "Wheel_3"}, // the first gap
            {{"Wheel", "Wheel_1", "Wheel_2"}, "Wheel_3"},
            // What only looks like a number.
            {{"Wheel", "Wheel_01", "Wheel 1", "Wheel_1b", "Wheel_", "Wheel_99999999999999999999"}, "Wheel_1"}};
        for (const auto& [taken, free] : cases)
            QCOMPARE(kxNodeUtils::getUniqueName("Wheel", taken), free);
    }

    void thousandsOfOneName()
    {
        std::vector<Share<Node>> held;
        const auto add = [&held](const std::string& name)
        {
            const AnimNodePtr node = AnimNode::create();
            held.emplace_back(node);
            kxNodeUtils::setName(node, name, true, NodePtr());
            return node->getNodeName();
        };
        const Share<Node> object(Node::create());
        object->setNodeName("Spoke_2"); // no animation
        for (int i = 0; i < 3000; ++i)
            QCOMPARE(add("Spoke"), i == 0 ? std::string("Spoke") : "Spoke_" + std::to_string(i));
        held.erase(held.begin() + 7);
        QCOMPARE(add("Spoke"), std::string("Spoke_7"));
        held.erase(held.begin() + 1500, held.begin() + 1510); // no search finds each gap
        std::set<std::string> names;
        for (int i = 0; i < 20; ++i)
            QVERIFY(names.insert(add("Spoke")).second);
        for (std::size_t i = 0; i + 20 < held.size(); ++i)
            QVERIFY(names.count(held[i]->getNodeName()) == 0);
        kxNodeUtils::setName(held[3].get(), held[3]->getNodeName(), true, NodePtr());
        QCOMPARE(held[3]->getNodeName(), std::string("Spoke_3")); // its own name is free to it
    }
};

QTEST_GUILESS_MAIN(tst_kxSceneTree)
#include "tst_kxSceneTree.moc"
