#include <animation/kxBlockNames.h>

#include <osg/AnimAttachments.h>
#include <osg/AnimCores.h>
#include <osg/ChangeList.h>
#include <osg/FieldContainerFactory.h>

using namespace osg;

namespace
{
bool isBlock(const NodePtr& node)
{
    return AnimBlockPtr::dcast(node->getCore()) != NullFC && AnimNodePtr::dcast(node) != NullFC;
}

/// Calls `visit` for all nodes of the animations under `root` until it gives Quit.
template <class Visit>
void visitAnimations(const NodePtr& root, const Visit& visit)
{
    traverse(root,
             [&visit](const NodePtr& node)
             {
                 const AnimAttachmentPtr attachment = node->findAttachment<AnimAttachment>();
                 return attachment == NullFC ? Action::Continue : traverse(attachment->getAnimationRoot(), visit);
             });
}

AnimNodePtr walk(const NodePtr& root, const std::string& name)
{
    AnimNodePtr found;
    visitAnimations(root,
                    [&](const NodePtr& node)
                    {
                        if (node->getNodeName() != name || !isBlock(node))
                            return Action::Continue;
                        found = AnimNodePtr::dcast(node);
                        return Action::Quit;
                    });
    return found;
}
} // namespace

kxBlockNames& kxBlockNames::the()
{
    static kxBlockNames* const names = new kxBlockNames;
    return *names;
}

AnimNodePtr kxBlockNames::find(const NodePtr& root, const std::string& name)
{
    const ChangeList* const changes = WinThreadBase::getCurrentChangeList();
    if (root == NullFC || changes == nullptr)
        return walk(root, name);
    if (_rootId != root->getId() || _changes != changes->count())
    {
        _rootId = root->getId();
        _changes = changes->count();
        _isNoted = false;
        _ids.clear();
        return walk(root, name);
    }
    if (!_isNoted)
        note(root);
    const auto entry = _ids.find(name);
    if (entry == _ids.end())
        return AnimNodePtr();
    // Nobody has marked a change, but a container that dies marks none.
    const AnimNodePtr node = FieldContainerFactory::the()->get<AnimNode>(entry->second);
    return node != NullFC && node->getNodeName() == name ? node : walk(root, name);
}

void kxBlockNames::note(const NodePtr& root)
{
    _isNoted = true;
    visitAnimations(root,
                    [this](const NodePtr& node)
                    {
                        if (isBlock(node))
                            _ids.emplace(node->getNodeName(), node->getId());
                        return Action::Continue;
                    });
}
