#include <files/kxImportCommand.h>

#include <animation/kxTimeRescale.h>
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
/// Takes what is below `group` out of the selection, without a step of its own: it is part of one.
void deselectBelow(const NodePtr& group)
{
    std::vector<unsigned int> ids;
    for (const unsigned int id : kxSelection::the().ids(kxSelection::Nodes))
        if (!kxNodeUtils::hasParent(living<Node>(id), group))
            ids.push_back(id);
    if (ids != kxSelection::the().ids(kxSelection::Nodes))
        kxSelection::the().setIds(kxSelection::Nodes, ids);
}
} // namespace

kxImportCommand::kxImportCommand(const QString& text, const NodePtr& group, const kxSceneContent& content, double rate)
    : kxCommand(text), _group(group), _materials(content.materials), _rate(rate)
{
    for (UInt32 i = 0; content.clips && i < content.clips->getNChildren(); ++i)
        _clips.emplace_back(AnimNodePtr::dcast(content.clips->getChild(i)));
    for (UInt32 i = 0; content.scenery && i < content.scenery->getNChildren(); ++i)
        _scenery.emplace_back(content.scenery->getChild(i));
}

void kxImportCommand::apply(bool forward)
{
    const auto put = [forward](const NodePtr& parent, const NodePtr& child)
    { forward ? parent->addChild(child) : parent->subChild(child); };
    if (!forward)
        deselectBelow(_group);
    if (_rate > 0)
    {
        const kxTimeRescale::Pause pause; // what comes has its times at its own rate, and there is nothing else
        const double before = kxAnimManager::the()->fps();
        kxAnimManager::the()->setFPS(_rate);
        _rate = before;
    }
    const NodePtr root = kxScene::the()->root(), clips = kxAnimManager::the()->clipStructureRoot(),
                  scenery = kxScene::the()->sceneryRoot();
    put(root, _group);
    for (const osg::Share<Material>& material : _materials)
        forward ? kxScene::the()->addMaterial(material) : kxScene::the()->subMaterial(material);
    for (const osg::Share<AnimNode>& clip : _clips)
        put(clips, clip.get());
    for (const osg::Share<Node>& node : _scenery)
        put(scenery, node);
    for (const NodePtr& parent : {root, clips, scenery})
        markChanged(parent, Node::ChildrenFieldMask);
    kxScene::the()->markStructureChanged();
    if (forward)
        kxAnimManager::the()->verifyClipStructure();
    kxAnimManager::the()->reevaluateAnimations(true);
    kxSceneMessages::contentChanged();
}
