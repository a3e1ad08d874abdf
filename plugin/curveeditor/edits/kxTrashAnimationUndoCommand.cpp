#include <curveeditor/edits/kxTrashAnimationUndoCommand.h>

#include <kxAnimManager.h>
#include <kxScenegraph.h>
#include <kxServices.h>
#include <osg/FieldContainerFactory.h>

#include <algorithm>

kxTrashAnimationUndoCommand::kxTrashAnimationUndoCommand(const std::vector<kxNodePtr>& nodes)
    : kxMergingCommand(kxUndoString("Delete Animation", "Animation"))
{
    for (const kxNodePtr& handle : nodes)
    {
        const osg::NodePtr node = handle.node();
        if (node == osg::NullFC)
            continue;
        if (osg::AnimNodePtr::dcast(node) != osg::NullFC)
        {
            addId(node->getId());
            continue;
        }
        const osg::AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(node);
        if (attachment != osg::NullFC)
            for (const osg::NodePtr& child : attachment->getAnimationRoot()->getChildren())
                addId(child->getId());
    }
}

void kxTrashAnimationUndoCommand::addId(unsigned int id)
{
    if (std::find(_ids.begin(), _ids.end(), id) == _ids.end())
        _ids.push_back(id);
}

void kxTrashAnimationUndoCommand::apply(bool forward)
{
    if (forward)
        takeOut();
    else
        putBack();
    kxAnimationService::the().animationsChanged();
}

void kxTrashAnimationUndoCommand::takeOut()
{
    for (const unsigned int id : _ids)
    {
        const osg::NodePtr node = kxNodePtr::toNode(id);
        const osg::NodePtr parent = node == osg::NullFC ? osg::NodePtr() : node->getParent();
        if (parent == osg::NullFC)
            continue;
        _out.push_back({node, parent->getId(), unsigned(parent->findChild(node))});
        parent->subChild(node);
        osg::markChanged(parent, osg::Node::ChildrenFieldMask);
    }
    kxAnimManager::the()->verifyClipStructure();
}

void kxTrashAnimationUndoCommand::putBack()
{
    // Against the order in which they went, so that each position means what it meant there.
    std::vector<Out> left;
    for (auto entry = _out.rbegin(); entry != _out.rend(); ++entry)
    {
        const osg::NodePtr parent = kxNodePtr::toNode(entry->parentId);
        if (parent != osg::NullFC && parent->insertChild(entry->position, entry->node))
            osg::markChanged(parent, osg::Node::ChildrenFieldMask);
        else
            left.insert(left.begin(), *entry); // it lives on, for as long as the step does
    }
    _out = std::move(left);
}
