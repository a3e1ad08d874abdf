#include <animation/kxBlockNames.h>

#include <animation/kxAttachmentRegistry.h>
#include <osg/AnimAttachments.h>
#include <osg/AnimCores.h>
#include <scene/kxNodeNames.h>

#include <algorithm>

using namespace osg;

namespace
{
bool isBlock(const NodePtr& node)
{
    return AnimBlockPtr::dcast(node->getCore()) != NullFC && AnimNodePtr::dcast(node) != NullFC;
}

bool isUnder(const NodePtr& root, NodePtr node)
{
    while (node != NullFC && node != root)
        node = node->getParent();
    return node != NullFC;
}

/// Of an object of the scene, at any depth of its animations.
bool isInScene(const NodePtr& root, const NodePtr& block)
{
    const AnimAttachmentPtr attachment = kxAttachmentRegistry::above(block);
    if (attachment == NullFC)
        return false;
    const auto& owners = attachment->getParents();
    return std::any_of(owners.begin(), owners.end(),
                       [&root](const AttachmentContainerPtr& owner) { return isUnder(root, NodePtr::dcast(owner)); });
}

/// The first in the order of the scene.
AnimNodePtr walk(const NodePtr& root, const std::string& name)
{
    AnimNodePtr found;
    const auto visit = [&](const NodePtr& node)
    {
        if (node->getNodeName() != name || !isBlock(node))
            return Action::Continue;
        found = AnimNodePtr::dcast(node);
        return Action::Quit;
    };
    traverse(root,
             [&visit](const NodePtr& node)
             {
                 const AnimAttachmentPtr attachment = node->findAttachment<AnimAttachment>();
                 return attachment == NullFC ? Action::Continue : traverse(attachment->getAnimationRoot(), visit);
             });
    return found;
}
} // namespace

AnimNodePtr kxBlockNames::find(const NodePtr& root, const std::string& name)
{
    if (root == NullFC)
        return AnimNodePtr();
    kxNodeNames* const names = name.empty() ? nullptr : kxNodeNames::the();
    if (names == nullptr)
        return walk(root, name);
    AnimNodePtr found;
    for (const AttachmentContainerPtr& bearer : names->called(name))
    {
        const NodePtr node = NodePtr::dcast(bearer);
        if (node == NullFC || !isBlock(node) || !isInScene(root, node))
            continue;
        if (found != NullFC)
            return walk(root, name);
        found = AnimNodePtr::dcast(node);
    }
    return found;
}
