#include <kxAnimManager.h>

#include <animation/kxAnimManagerPrivate.h>
#include <animation/kxChannelColors.h>
#include <animation/kxChannelTarget.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>

#include <algorithm>

using namespace osg;

namespace
{
void setActive(const NodePtr& node, bool active)
{
    if (node == NullFC || node->isActive() == active)
        return;
    node->setTravMask(active ? Node::Active : 0);
    markChanged(node, Node::TravMaskFieldMask);
}

/// The attachment of an object, made where it has none; null for what can't have one.
AnimAttachmentPtr ensureAttachment(const FieldContainerPtr& container)
{
    const AttachmentContainerPtr object = AttachmentContainerPtr::dcast(container);
    if (object == NullFC)
        return AnimAttachmentPtr();
    AnimAttachmentPtr attachment = object->findAttachment<AnimAttachment>();
    if (attachment == NullFC)
    {
        attachment = AnimAttachmentBase::create();
        object->addAttachment(attachment);
        markChanged(object, AttachmentContainer::AttachmentsFieldMask);
    }
    return attachment;
}

/// Puts `child` under `parent`, out of where it was. False where the tree refuses it.
bool moveBelow(const NodePtr& parent, const NodePtr& child)
{
    const NodePtr before = child->getParent();
    if (!parent->addChild(child))
        return false;
    if (before != NullFC && before != parent)
        markChanged(before, Node::ChildrenFieldMask);
    markChanged(parent, Node::ChildrenFieldMask);
    return true;
}

bool moveBlock(const AnimNodePtr& block, const FieldContainerPtr& source, const FieldContainerPtr& target,
               bool activate)
{
    const AnimAttachmentPtr from = kxAnimManager::the()->getAnimAttachment(source);
    if (block == NullFC || from == NullFC || target == NullFC || source == target ||
        block->getParent() != NodePtr(from->getAnimationRoot()))
        return false;
    const AnimAttachmentPtr to = ensureAttachment(target);
    if (to == NullFC || to == from)
        return false;
    if (activate)
        kxAnimManager::the()->setAllBlocksInactive(target);
    if (!moveBelow(to->getAnimationRoot(), block))
        return false;
    if (activate)
        setActive(block, true);
    kxAnimManager::the()->updateSceneAnimCurveData(); // both objects show it at once
    return true;
}

AnimNodePtr makeCurveNode(const std::string& channel, const std::string& suffix, const AnimAttachmentPtr& attachment)
{
    const AnimCurvePtr curve = AnimCurveBase::create();
    curve->setName(channel);
    curve->setChannelName(channel);
    curve->setSuffix(suffix);
    curve->setColor(kxChannelColors::of(channel, suffix));
    const AnimNodePtr node = AnimNodeBase::create();
    node->setCore(curve);
    node->setNodeName(suffix.empty() ? channel : channel + "." + suffix);
    if (attachment != NullFC)
        moveBelow(attachment->getAnimationRoot(), node);
    return node;
}

bool hasName(const std::string& name, const AnimNodePtr& except)
{
    for (FieldContainer* container : FieldContainerFactory::the()->getFieldContainerStore())
    {
        const AnimNodePtr node = AnimNodePtr::dcast(FieldContainerPtr(container));
        if (node != NullFC && node != except && node->getNodeName() == name)
            return true;
    }
    return false;
}
} // namespace

AnimNodePtr kxAnimManager::createBlock(const AnimAttachmentPtr& attachment, const std::string& name)
{
    if (attachment == NullFC)
        return AnimNodePtr();
    std::vector<AnimNodePtr> curves;
    attachment->getTopLevelCurveNodes(curves);
    curves.erase(std::remove_if(curves.begin(), curves.end(),
                                [](const AnimNodePtr& node)
                                { return AnimCurvePtr::dcast(node->getCore())->isEmpty(); }),
                 curves.end());
    if (curves.empty())
        return AnimNodePtr();
    std::vector<AnimNodePtr> others;
    attachment->getTopLevelAnimations(others, true);
    for (const AnimNodePtr& other : others)
        if (AnimBlockPtr::dcast(other->getCore()) != NullFC)
            setActive(other, false);

    const AnimNodePtr block = AnimNodeBase::create();
    block->setCore(AnimBlockBase::create());
    kxNodeUtils::setName(block, name.empty() ? "Block" : name, true, NodePtr());
    AnimObjectPtr::dcast(block->getCore())->setName(block->getNodeName());
    for (const AnimNodePtr& curve : curves)
        block->addChild(curve);
    markChanged(block, Node::CoreFieldMask | Node::ChildrenFieldMask);
    moveBelow(attachment->getAnimationRoot(), block);
    return block;
}

AnimNodePtr kxAnimManager::createChannelCurveNode(const kxOSGChannelData& channel, const AnimAttachmentPtr& attachment)
{
    if (channel.name.empty())
        return AnimNodePtr();
    return makeCurveNode(channel.name, channel.suffix, attachment);
}

AnimNodePtr kxAnimManager::createChannelCurveNode(const AnimAttachmentPtr& attachment, const std::string& field,
                                                  unsigned int, const std::string& axis, const std::string& alias)
{
    const std::string channel = alias.empty() ? field : alias;
    return channel.empty() ? AnimNodePtr() : makeCurveNode(channel, axis, attachment);
}

AnimNodePtr kxAnimManager::findChannelCurveNode(const kxOSGChannelData& channel,
                                                const AnimAttachmentPtr& attachment) const
{
    return findChannelCurveNode(attachment, channel.name, channel.suffix);
}

AnimNodePtr kxAnimManager::findChannelCurveNode(const AnimAttachmentPtr& attachment, const std::string& channel,
                                                const std::string& axis) const
{
    std::vector<AnimNodePtr> nodes;
    getChannelCurveNodes(attachment, nodes);
    for (const AnimNodePtr& node : nodes)
    {
        const AnimCurvePtr curve = AnimCurvePtr::dcast(node->getCore());
        if (curve->getChannelName() == channel && curve->getSuffix() == axis)
            return node;
    }
    return AnimNodePtr();
}

void kxAnimManager::addAnimation(const FieldContainerPtr& container, const AnimNodePtr& animation)
{
    if (animation == NullFC || AnimNodePtr::dcast(container) != NullFC)
        return;
    if (const AnimAttachmentPtr attachment = ensureAttachment(container))
        moveBelow(attachment->getAnimationRoot(), animation);
}

void kxAnimManager::subAnimation(const FieldContainerPtr& container, const AnimNodePtr& animation)
{
    const AnimAttachmentPtr attachment = getAnimAttachment(container);
    if (attachment != NullFC && attachment->getAnimationRoot()->subChild(animation))
        markChanged(attachment->getAnimationRoot(), Node::ChildrenFieldMask);
}

void kxAnimManager::addToClipStructure(const AnimNodePtr& node)
{
    if (node != NullFC)
        moveBelow(clipStructureRoot(), node);
}

void kxAnimManager::addToSceneStructure(const AnimNodePtr& node)
{
    if (node != NullFC)
        moveBelow(sceneStructureRoot(), node);
}

AnimNodePtr kxAnimManager::clipStructureRoot() const
{
    return _p->clipRoot;
}

AnimNodePtr kxAnimManager::sceneStructureRoot() const
{
    return _p->sceneRoot;
}

bool kxAnimManager::moveBlockToNode(const AnimNodePtr& block, const NodePtr& source, const NodePtr& target,
                                    bool activate)
{
    return AnimNodePtr::dcast(target) == NullFC && moveBlock(block, source, target, activate);
}

bool kxAnimManager::moveBlockToMaterial(const AnimNodePtr& block, const MaterialPtr& source, const MaterialPtr& target,
                                        bool activate)
{
    return moveBlock(block, source, target, activate);
}

bool kxAnimManager::rename(const AnimNodePtr& node, const std::string& name)
{
    if (node == NullFC || name.empty() || hasName(name, node))
        return false;
    kxNodeUtils::setName(node, name, false, NodePtr());
    return true;
}

void kxAnimManager::setAllBlocksInactive(const FieldContainerPtr& container)
{
    const AnimAttachmentPtr attachment = getAnimAttachment(container);
    if (attachment == NullFC)
        return;
    std::vector<AnimNodePtr> animations;
    attachment->getTopLevelAnimations(animations, true);
    for (const AnimNodePtr& animation : animations)
        if (AnimBlockPtr::dcast(animation->getCore()) != NullFC)
            setActive(animation, false);
}

void kxAnimManager::setTreeActive(const AnimNodePtr& node, bool active)
{
    traverse(node,
             [active](const NodePtr& below)
             {
                 setActive(below, active);
                 return Action::Continue;
             });
}
