#include <kxAnimManager.h>

#include <animation/kxAnimManagerPrivate.h>
#include <animation/kxAnimTree.h>
#include <animation/kxAttachmentRegistry.h>
#include <animation/kxNodeTime.h>
#include <kxLog.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Share.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
/// One thing that was copied: as it was, for copies, and the cores it had, for clones. A share of each.
struct Copied
{
    Share<AnimNode> own;
    // Of the nodes in the order of a walk. No node of the clipboard has one of them: what was only copied is not
    // shared.
    std::vector<Share<NodeCore>> cores;
    UInt32 sourceId = 0; // of what was copied, which may be gone
    // Of the nodes in the order of a walk. The copies themselves have none: a name in the clipboard is nobody's.
    std::vector<std::string> names;
};

void setNames(const AnimNodePtr& root, const std::vector<std::string>& names)
{
    std::size_t next = 0;
    traverse(root,
             [&](const NodePtr& node)
             {
                 node->setNodeName(next < names.size() ? names[next++] : std::string());
                 return osg::Action::Continue;
             });
}

std::vector<std::string> namesOf(const AnimNodePtr& root)
{
    std::vector<std::string> names;
    traverse(root,
             [&names](const NodePtr& node)
             {
                 names.push_back(node->getNodeName());
                 return osg::Action::Continue;
             });
    return names;
}

std::vector<Share<NodeCore>> coresOf(const AnimNodePtr& root)
{
    std::vector<Share<NodeCore>> cores;
    traverse(root,
             [&cores](const NodePtr& node)
             {
                 cores.push_back(node->getCore());
                 return Action::Continue;
             });
    return cores;
}

AnimNodePtr copyOf(const Copied& entry, bool shareCores)
{
    const AnimNodePtr copy = cloneAnimTree(entry.own, shareCores);
    std::size_t next = 0;
    if (shareCores)
        traverse(copy,
                 [&](const NodePtr& node)
                 {
                     node->setCore(entry.cores[next++]);
                     return Action::Continue;
                 });
    return copy;
}

std::vector<Copied>& clipboard()
{
    static std::vector<Copied>* const entries = new std::vector<Copied>; // for the life of the process
    return *entries;
}

void addToClipboard(const AnimNodePtr& node)
{
    const Share<AnimNode> shared(cloneAnimTree(node, true)); // in the order of the copy
    clipboard().push_back({cloneAnimTree(node, false), coresOf(shared), node->getId(), namesOf(node)});
    setNames(clipboard().back().own, {});
}

/// Where pasted animations go: a node of the animation tree itself, or the root of an object's attachment.
AnimNodePtr pasteParent(const FieldContainerPtr& target)
{
    if (const AnimNodePtr node = AnimNodePtr::dcast(target))
        return AnimCurvePtr::dcast(node->getCore()) == NullFC ? node : AnimNodePtr();
    const AttachmentContainerPtr object = AttachmentContainerPtr::dcast(target);
    if (object == NullFC)
        return AnimNodePtr();
    AnimAttachmentPtr attachment = object->findAttachment<AnimAttachment>();
    if (attachment == NullFC)
    {
        attachment = AnimAttachmentBase::create();
        object->addAttachment(attachment);
        markChanged(object, AttachmentContainer::AttachmentsFieldMask);
    }
    return attachment->getAnimationRoot();
}

/// A clip takes no copy of itself, nor of a clip that it is in.
bool takes(const AnimNodePtr& parent, const Copied& entry)
{
    const AnimNodePtr source = living<AnimNode>(entry.sourceId);
    if (source == NullFC || AnimClipPtr::dcast(source->getCore()) == NullFC || !kxNodeUtils::hasParent(parent, source))
        return true;
    kxLog::warning("\"%s\" can't be pasted into itself.", kxNodeUtils::getName(source).c_str());
    return false;
}

std::vector<AnimNodePtr> paste(const FieldContainerPtr& target, bool shareCores, bool flipped, bool keepNames)
{
    std::vector<AnimNodePtr> pasted;
    const AnimNodePtr parent = clipboard().empty() ? AnimNodePtr() : pasteParent(target);
    if (parent == NullFC)
        return pasted;
    for (const Copied& entry : clipboard())
    {
        if (!takes(parent, entry))
            continue;
        const AnimNodePtr clone = copyOf(entry, shareCores);
        setNames(clone, entry.names);
        if (flipped)
            clone->setFlipped(true);
        parent->addChild(clone);
        // A bare channel curve is known by its channel's name.
        if (!keepNames && AnimCurvePtr::dcast(clone->getCore()) == NullFC)
            kxNodeUtils::setName(clone, entry.names.front(), true, NodePtr());
        pasted.push_back(clone);
    }
    markChanged(parent, Node::ChildrenFieldMask);
    if (AnimNodePtr::dcast(target) == NullFC)
        kxAnimManager::the()->updateSceneAnimCurveData(); // the object shows it at once
    return pasted;
}

void unshareCore(const NodePtr& node)
{
    if (node->getCore() == NullFC || node->getCore()->getParents().size() < 2)
        return;
    node->setCore(kxAnimTree::copyCore(node->getCore()));
    markChanged(node, Node::CoreFieldMask);
}
} // namespace

void kxAnimManager::copy(const AnimNodePtr& node, const FieldContainerPtr&)
{
    copy(std::vector<AnimNodePtr>(1, node));
}

void kxAnimManager::copy(const std::vector<AnimNodePtr>& nodes)
{
    if (std::all_of(nodes.begin(), nodes.end(), [](const AnimNodePtr& node) { return node == NullFC; }))
        return; // what was copied before stays
    clipboard().clear();
    for (const AnimNodePtr& node : nodes)
        if (node != NullFC)
            addToClipboard(node);
}

std::vector<AnimNodePtr> kxAnimManager::pasteTo(const FieldContainerPtr& target, bool flipped, bool keepNames)
{
    return paste(target, false, flipped, keepNames);
}

std::vector<AnimNodePtr> kxAnimManager::clonePasteTo(const FieldContainerPtr& target, bool flipped, bool keepNames)
{
    return paste(target, true, flipped, keepNames);
}

std::vector<AnimNodePtr> kxAnimManager::clonePasteToWithOffset(const AnimNodePtr& clip, double seconds, bool flipped,
                                                               bool unshareClips)
{
    if (!std::isfinite(seconds))
        return {};
    const std::vector<AnimNodePtr> pasted = paste(clip, true, flipped, false);
    double earliest = INFINITY;
    for (const AnimNodePtr& node : pasted)
    {
        float start = 0, end = 0;
        node->getBounds(start, end);
        earliest = std::min(earliest, double(start));
    }
    // Nodes that still have to find their track aren't in each other's way.
    const std::vector<Share<AnimNode>> waiting(pasted.begin(), pasted.end());
    for (const AnimNodePtr& node : waiting)
        clip->subChild(node);
    const double shift = kxNodeTime::toRoot(clip).from(seconds) - earliest;
    for (const AnimNodePtr& node : waiting)
    {
        node->setOffset(Vec2f(float(node->getOffset().x() + shift), node->getOffset().y()));
        node->setTravMask(Node::Active); // of a block's siblings only one is active; what is placed plays
        node->invalidateExtent();
        node->setOffset(Vec2f(node->getOffset().x(), calculateFreeOffsetYFor(node, clip, AnimNodePtr())));
        if (AnimBlockPtr::dcast(node->getCore()) != NullFC)
            node->setHidden(true);
        clip->addChild(node);
        markChanged(node, AnimNodeBase::OffsetFieldMask | AnimNodeBase::HiddenFieldMask | Node::TravMaskFieldMask);
        if (unshareClips)
            unshareClipsR(node);
    }
    if (!pasted.empty())
        markChanged(clip, Node::ChildrenFieldMask);
    return pasted;
}

void kxAnimManager::unshareFrom(const AnimNodePtr& animation, const FieldContainerPtr& container)
{
    const AnimAttachmentPtr above = kxAttachmentRegistry::above(animation);
    const AnimNodePtr parent = AnimNodePtr::dcast(container);
    if (animation == NullFC || (parent != NullFC ? !kxNodeUtils::hasParent(animation, parent)
                                                 : above == NullFC || getAnimAttachment(container) != above))
        return;
    if (above == NullFC)
    {
        unshareClipsR(animation);
        return;
    }
    traverse(animation,
             [](const NodePtr& node)
             {
                 unshareCore(node);
                 return Action::Continue;
             });
}

void kxAnimManager::unshareClipsR(const AnimNodePtr& node)
{
    traverse(node,
             [](const NodePtr& below)
             {
                 if (AnimClipPtr::dcast(below->getCore()) != NullFC)
                     unshareCore(below);
                 return Action::Continue;
             });
}
