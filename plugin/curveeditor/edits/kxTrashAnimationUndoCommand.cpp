#include <curveeditor/edits/kxTrashAnimationUndoCommand.h>

#include <kxAnimManager.h>
#include <kxScenegraph.h>
#include <kxServices.h>
#include <osg/FieldContainerFactory.h>

#include <algorithm>

kxTrashAnimationUndoCommand::kxTrashAnimationUndoCommand(const std::vector<kxNodePtr>& nodes)
    : kxUndoCommand(kxUndoString("Delete Animation", "Animation"))
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

kxTrashAnimationUndoCommand::~kxTrashAnimationUndoCommand()
{
    for (const auto& entry : _parents)
        kxNodeUtils::destroy(kxNodePtr::toNode(entry.first));
}

void kxTrashAnimationUndoCommand::addId(unsigned int id)
{
    if (std::find(_ids.begin(), _ids.end(), id) == _ids.end())
        _ids.push_back(id);
}

int kxTrashAnimationUndoCommand::commandId()
{
    static const int classId = makeId(typeid(kxTrashAnimationUndoCommand));
    return classId;
}

int kxTrashAnimationUndoCommand::id() const
{
    return commandId();
}

void kxTrashAnimationUndoCommand::redo()
{
    std::vector<std::pair<unsigned int, unsigned int>> taken;
    for (const unsigned int id : _ids)
    {
        const osg::NodePtr node = kxNodePtr::toNode(id);
        const osg::NodePtr parent = node == osg::NullFC ? osg::NodePtr() : node->getParent();
        if (parent == osg::NullFC)
            continue;
        node->addRef();
        _positions[id] = unsigned(parent->findChild(node));
        parent->subChild(node);
        osg::markChanged(parent, osg::Node::ChildrenFieldMask);
        taken.emplace_back(id, parent->getId());
    }
    for (const auto& [id, parentId] : taken)
        _parents[id] = parentId;
    kxAnimManager::the()->verifyClipStructure();
    kxAnimationService::the().animationsChanged();
}

void kxTrashAnimationUndoCommand::undo()
{
    std::vector<unsigned int> restored;
    // Against the order of redo(), so that each position means what it meant there.
    for (auto id = _ids.rbegin(); id != _ids.rend(); ++id)
    {
        const auto entry = _parents.find(*id);
        const osg::NodePtr node = kxNodePtr::toNode(*id);
        if (node == osg::NullFC || entry == _parents.end())
            continue;
        const osg::NodePtr parent = kxNodePtr::toNode(entry->second);
        if (parent == osg::NullFC || !parent->insertChild(_positions[*id], node))
            continue;
        osg::markChanged(parent, osg::Node::ChildrenFieldMask);
        node->subRef();
        restored.push_back(*id);
    }
    for (const unsigned int id : restored)
        _parents.erase(id);
    kxAnimationService::the().animationsChanged();
}
