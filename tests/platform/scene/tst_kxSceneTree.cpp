#include <kxScenegraph.h>
#include <osg/AnimAttachments.h>
#include <osg/ChangeList.h>
#include <osg/FieldContainerFactory.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>

#include <QSignalSpy>
#include <QtTest>

#include <random>

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
    void lifeFollowsShares();
    void anIdIsNeverUsedAgain();
    void handlesCheckTheClass();
    void aNodeCantStandBelowItself();
    void randomMovesKeepTheTree();
    void attachmentsOfOneClassReplaceEachOther();
    void changesReachListenersUnlessMuted();
    void signalsComeOnceATurn();
    void clearTakesEverythingOut();
    void namesOfAnimationsAreMadeUnique();
};

void tst_kxSceneTree::lifeFollowsShares()
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

void tst_kxSceneTree::anIdIsNeverUsedAgain()
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

void tst_kxSceneTree::handlesCheckTheClass()
{
    const NodePtr plain = makeNode();
    plain->addRef();
    const AnimNodePtr animation = AnimNodeBase::create();
    animation->addRef();
    FieldContainerFactory* const factory = FieldContainerFactory::the();
    QVERIFY(factory->get<AnimNode>(plain->getId()) == NullFC);
    QVERIFY(factory->get<AnimNode>(animation->getId()) == animation);
    QVERIFY(factory->get<Node>(animation->getId()) == animation);
    QVERIFY(factory->get<Node>(plain->getCore()->getId()) == NullFC);
    QVERIFY(plain->getType().getGroupId() != animation->getType().getGroupId());
    animation->subRef();
    plain->subRef();
}

void tst_kxSceneTree::aNodeCantStandBelowItself()
{
    const NodePtr top = makeNode(), middle = makeNode(), bottom = makeNode();
    top->addRef();
    top->addChild(middle);
    middle->addChild(bottom);
    QVERIFY(!bottom->addChild(top));
    QVERIFY(!bottom->addChild(bottom));
    QVERIFY(!bottom->addChild(NodePtr()));
    QVERIFY(!bottom->subChild(top));
    QVERIFY(top->getParent() == NullFC);
    QVERIFY(isSound(top));
    top->subRef();
}

void tst_kxSceneTree::randomMovesKeepTheTree()
{
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
    root->subRef();
    for (const UInt32 id : ids)
        QVERIFY(!isAlive(id));
}

void tst_kxSceneTree::attachmentsOfOneClassReplaceEachOther()
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
    const UInt32 secondId = second->getId(), rootId = second->getAnimationRoot()->getId();
    node->subRef();
    QVERIFY(!isAlive(secondId));
    QVERIFY(!isAlive(rootId));
}

void tst_kxSceneTree::changesReachListenersUnlessMuted()
{
    struct Listener : ChangeListener
    {
        void containerChanged(const FieldContainerPtr& container, const BitVector& mask) override
        {
            lastId = container->getId();
            last = mask;
        }
        void containerDestroyed(UInt32 id) override { destroyedId = id; }
        UInt32 lastId = 0, destroyedId = 0;
        BitVector last;
    } listener;
    kxScene::the(); // puts the list of the main thread up
    ChangeList* const list = WinThreadBase::getCurrentChangeList();
    QVERIFY(list != nullptr);
    list->addListener(&listener);

    const NodePtr node = makeNode();
    node->addRef();
    markChanged(node, Node::TravMaskFieldMask | Node::CoreFieldMask);
    QCOMPARE(listener.lastId, node->getId());
    QVERIFY(listener.last == (Node::CoreFieldMask | Node::TravMaskFieldMask));
    const UInt32 id = node->getId();
    node->subRef();
    QVERIFY(listener.destroyedId != 0);
    QVERIFY(id != 0);
    list->subListener(&listener);
    listener.lastId = 0;
    markChanged(kxScene::the()->root(), FieldBits);
    QCOMPARE(listener.lastId, 0u);
    markChanged(FieldContainerPtr(), FieldBits);
}

void tst_kxSceneTree::signalsComeOnceATurn()
{
    kxScene* const scene = kxScene::the();
    scene->flush();
    QSignalSpy structure(scene, &kxScene::structureChanged), appearance(scene, &kxScene::appearanceChanged);
    const NodePtr node = makeNode();
    scene->root()->addChild(node);
    markChanged(scene->root(), Node::ChildrenFieldMask);
    markChanged(scene->root(), Node::ChildrenFieldMask);
    markChanged(node->getCore(), Transform::TranslationFieldMask);
    QCOMPARE(structure.count(), 0);
    scene->flush();
    QCOMPARE(structure.count(), 1);
    QCOMPARE(appearance.count(), 1);
    markChanged(node->getCore(), Transform::TranslationFieldMask);
    scene->flush();
    QCOMPARE(structure.count(), 1);
    QCOMPARE(appearance.count(), 2);
    scene->clear();
}

void tst_kxSceneTree::clearTakesEverythingOut()
{
    kxScene* const scene = kxScene::the();
    const NodePtr node = makeNode();
    const UInt32 id = node->getId();
    scene->root()->addChild(node);
    scene->root()->addAttachment(AnimAttachmentBase::create());
    const UberMaterialPtr material = UberMaterial::create();
    scene->addMaterial(material);
    scene->addMaterial(material);
    scene->addMaterial(MaterialPtr());
    QCOMPARE(int(scene->materials().size()), 1);
    scene->setSetting("key", "value");
    const NodePtr root = scene->root();
    scene->clear();
    QVERIFY(!isAlive(id));
    QVERIFY(scene->materials().empty());
    QVERIFY(scene->settings().empty());
    QVERIFY(scene->root() == root);
    QVERIFY(scene->root()->getAttachments().empty());
}

void tst_kxSceneTree::namesOfAnimationsAreMadeUnique()
{
    const AnimNodePtr first = AnimNodeBase::create(), second = AnimNodeBase::create();
    first->addRef();
    second->addRef();
    kxNodeUtils::setName(first, "Door", true, NodePtr());
    kxNodeUtils::setName(second, "Door", true, NodePtr());
    QCOMPARE(kxNodeUtils::getName(first), std::string("Door"));
    QCOMPARE(kxNodeUtils::getName(second), std::string("Door_1"));
    kxNodeUtils::setName(second, "Door_1", true, NodePtr()); // its own name is no obstacle
    QCOMPARE(kxNodeUtils::getName(second), std::string("Door_1"));
    const NodePtr node = makeNode();
    node->addRef();
    kxNodeUtils::setName(node, "Door", true, NodePtr());
    QCOMPARE(kxNodeUtils::getName(node), std::string("Door"));
    QCOMPARE(kxNodeUtils::getUniqueName("A", {"A", "A_1", "B"}), std::string("A_2"));
    node->subRef();
    second->subRef();
    first->subRef();
}

QTEST_GUILESS_MAIN(tst_kxSceneTree)
#include "tst_kxSceneTree.moc"
