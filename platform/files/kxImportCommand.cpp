#include <files/kxImportCommand.h>

#include <files/scene/kxSceneMessages.h>
#include <kernel/kxSelection.h>
#include <kxAnimManager.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxScene.h>

#include <algorithm>

using namespace osg;

namespace
{
/// Takes what stands below `group` out of the selection, without a step of its own: it is part of one.
void deselectBelow(const NodePtr& group)
{
    std::vector<unsigned int> ids;
    for (const unsigned int id : kxSelection::the().ids(kxSelection::Nodes))
        if (!kxNodeUtils::hasParent(FieldContainerFactory::the()->get<Node>(id), group))
            ids.push_back(id);
    if (ids != kxSelection::the().ids(kxSelection::Nodes))
        kxSelection::the().setIds(kxSelection::Nodes, ids);
}
} // namespace

kxImportCommand::kxImportCommand(const QString& text, const NodePtr& group, const kxSceneContent& content)
    : kxUndoCommand(text), _group(group), _materials(content.materials)
{
    for (UInt32 i = 0; content.clips && i < content.clips->getNChildren(); ++i)
        _clips.emplace_back(AnimNodePtr::dcast(content.clips->getChild(i)));
    for (UInt32 i = 0; content.scenery && i < content.scenery->getNChildren(); ++i)
        _scenery.emplace_back(content.scenery->getChild(i));
}

void kxImportCommand::redo()
{
    const NodePtr root = kxScene::the()->root();
    root->addChild(_group.get());
    markChanged(root, Node::ChildrenFieldMask);
    for (const kxShare<Material>& material : _materials)
        kxScene::the()->addMaterial(material.get());
    for (const kxShare<AnimNode>& clip : _clips)
        kxAnimManager::the()->addToClipStructure(clip.get());
    const NodePtr scenery = kxScene::the()->sceneryRoot();
    for (const kxShare<Node>& node : _scenery)
        scenery->addChild(node.get());
    markChanged(scenery, Node::ChildrenFieldMask);
    kxScene::the()->markStructureChanged();
    kxAnimManager::the()->verifyClipStructure();
    kxAnimManager::the()->reevaluateAnimations(true);
    kxSceneMessages::contentChanged();
}

void kxImportCommand::undo()
{
    deselectBelow(_group.get());
    const AnimNodePtr clips = kxAnimManager::the()->clipStructureRoot();
    for (const kxShare<AnimNode>& clip : _clips)
        clips->subChild(clip.get());
    markChanged(clips, Node::ChildrenFieldMask);
    const NodePtr scenery = kxScene::the()->sceneryRoot();
    for (const kxShare<Node>& node : _scenery)
        scenery->subChild(node.get());
    markChanged(scenery, Node::ChildrenFieldMask);
    for (const kxShare<Material>& material : _materials)
        kxScene::the()->subMaterial(material.get());
    const NodePtr root = kxScene::the()->root();
    root->subChild(_group.get());
    markChanged(root, Node::ChildrenFieldMask);
    kxScene::the()->markStructureChanged();
    kxAnimManager::the()->reevaluateAnimations(true);
    kxSceneMessages::contentChanged();
}

int kxImportCommand::id() const
{
    return makeId(typeid(kxImportCommand));
}
