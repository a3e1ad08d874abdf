#include <curveeditor/edits/kxChannelCurvesUndoCommand.h>

#include <kxAnimManager.h>
#include <kxServices.h>
#include <osg/FieldContainerFactory.h>

namespace
{
/// The root that the curves of an object's channels are under; null where the object has none.
osg::NodePtr curveRoot(unsigned int containerId)
{
    const auto attachment = kxAnimManager::the()->getAnimAttachment(osg::living<osg::FieldContainer>(containerId));
    return attachment != osg::NullFC ? osg::NodePtr(attachment->getAnimationRoot()) : osg::NodePtr();
}
} // namespace

kxChannelCurvesUndoCommand::kxChannelCurvesUndoCommand()
    : kxMergingCommand(kxUndoString("Add Animation Keys", "Animation"))
{
}

void kxChannelCurvesUndoCommand::noteAttachment(const osg::AttachmentContainerPtr& container,
                                                const osg::AnimAttachmentPtr& attachment)
{
    _attachments.push_back({container->getId(), attachment->getId(), {}, 0});
}

void kxChannelCurvesUndoCommand::noteCurve(const osg::AttachmentContainerPtr& container, const osg::AnimNodePtr& node)
{
    _curves.push_back({container->getId(), node->getId(), {}, 0});
}

void kxChannelCurvesUndoCommand::noteSwitchedOff(const osg::AnimNodePtr& block, osg::UInt32 mask)
{
    _blocks.push_back({block->getId(), mask});
}

void kxChannelCurvesUndoCommand::apply(bool forward)
{
    if (forward)
    {
        putBackAttachments();
        putBackCurves();
        if (_wasUndone)
            swapMasks();
    }
    else
    {
        swapMasks();
        takeOutCurves();
        takeOutAttachments();
        _wasUndone = true;
    }
    kxAnimationService::the().animationsChanged();
}

void kxChannelCurvesUndoCommand::swapMasks()
{
    // Blocks are switched by other ways too, which are no steps: redo() gives back what undo() found.
    for (Block& block : _blocks)
    {
        const osg::AnimNodePtr node = osg::living<osg::AnimNode>(block.id);
        if (node == osg::NullFC || node->getTravMask() == block.mask)
            continue;
        const osg::UInt32 mask = node->getTravMask();
        node->setTravMask(block.mask);
        block.mask = mask;
        osg::markChanged(node, osg::Node::TravMaskFieldMask);
    }
}

void kxChannelCurvesUndoCommand::takeOutCurves()
{
    for (Made& curve : _curves)
    {
        const osg::AnimNodePtr node = osg::living<osg::AnimNode>(curve.id);
        const osg::NodePtr parent = node != osg::NullFC ? node->getParent() : osg::NodePtr();
        if (parent == osg::NullFC || parent != curveRoot(curve.containerId))
            continue; // gathered into a block, moved or deleted since: no longer ours to take
        curve.out = osg::FieldContainerPtr(node);
        curve.position = unsigned(parent->findChild(node));
        parent->subChild(node);
        osg::markChanged(parent, osg::Node::ChildrenFieldMask);
    }
}

void kxChannelCurvesUndoCommand::takeOutAttachments()
{
    for (Made& made : _attachments)
    {
        const auto container = osg::living<osg::AttachmentContainer>(made.containerId);
        const auto attachment = osg::living<osg::AnimAttachment>(made.id);
        // What came into it by other ways stays.
        if (container == osg::NullFC || attachment == osg::NullFC ||
            kxAnimManager::the()->getAnimAttachment(container) != attachment ||
            attachment->getAnimationRoot()->getNChildren() > 0)
            continue;
        made.out = osg::FieldContainerPtr(attachment);
        container->subAttachment(attachment);
        osg::markChanged(container, osg::AttachmentContainer::AttachmentsFieldMask);
    }
}

void kxChannelCurvesUndoCommand::putBackAttachments()
{
    for (Made& made : _attachments)
    {
        const auto container = osg::living<osg::AttachmentContainer>(made.containerId);
        const auto attachment = osg::living<osg::AnimAttachment>(made.id);
        // One that was made by other ways meanwhile is kept, and takes the curves.
        if (!made.out || container == osg::NullFC || attachment == osg::NullFC ||
            kxAnimManager::the()->getAnimAttachment(container) != osg::NullFC)
            continue;
        container->addAttachment(attachment);
        osg::markChanged(container, osg::AttachmentContainer::AttachmentsFieldMask);
        made.out.release();
    }
}

void kxChannelCurvesUndoCommand::putBackCurves()
{
    // Against the order of takeOutCurves(), so that each position means what it meant there. Of two animations of one
    // channel the later wins.
    for (auto curve = _curves.rbegin(); curve != _curves.rend(); ++curve)
    {
        const osg::AnimNodePtr node = osg::living<osg::AnimNode>(curve->id);
        const osg::NodePtr root = curveRoot(curve->containerId);
        if (!curve->out || node == osg::NullFC || root == osg::NullFC || !root->insertChild(curve->position, node))
            continue;
        osg::markChanged(root, osg::Node::ChildrenFieldMask);
        curve->out.release();
    }
}
