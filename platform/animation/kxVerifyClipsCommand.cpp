#include <animation/kxVerifyClipsCommand.h>

#include <kernel/kxModuleRegistry.h>
#include <kxAnimManager.h>
#include <kxLog.h>
#include <kxMessageIds.h>
#include <osg/AnimCores.h>
#include <osg/ChangeList.h>
#include <osg/FieldContainerFactory.h>

#include <algorithm>
#include <utility>

using namespace osg;

namespace
{
bool isClip(const NodePtr& node)
{
    return AnimClipPtr::dcast(node->getCore()) != NullFC;
}
} // namespace

kxVerifyClipsCommand::kxVerifyClipsCommand()
    : kxCommand(kxUndoString(QStringLiteral("Verify Clip Structure"), QStringLiteral("Animation")))
{
}

void kxVerifyClipsCommand::apply(bool forward)
{
    if (forward)
        isUnused(kxAnimManager::the()->clipStructureRoot()); // the root itself stays, whatever it holds
    else
        putBack();
    setObsolete(forward && _lost.empty());
    if (isObsolete())
        return;
    if (forward)
        tell();
    kxModuleRegistry::the().deliverLater(kxMessageId::ClipsChanged);
}

void kxVerifyClipsCommand::putBack()
{
    // Against the order in which they went, so that each position means what it meant then.
    const std::vector<Lost> lost = std::exchange(_lost, {});
    for (auto entry = lost.rbegin(); entry != lost.rend(); ++entry)
    {
        const NodePtr parent = living<Node>(entry->parentId);
        if (parent != NullFC && parent->insertChild(entry->position, entry->node))
            markChanged(parent, Node::ChildrenFieldMask);
    }
}

bool kxVerifyClipsCommand::isUnused(const AnimNodePtr& node)
{
    const NodeCorePtr core = node->getCore();
    const bool isGroup = core == NullFC || GroupPtr::dcast(core) != NullFC;
    if (!isClip(node) && !isGroup)
        return AnimSequencePtr::dcast(core) == NullFC && AnimShotPtr::dcast(core) == NullFC &&
               kxAnimManager::the()->blockSceneRefCount(node) == 0;
    const std::vector<NodePtr> children = node->getChildren();
    for (const NodePtr& child : children)
        if (const AnimNodePtr animation = AnimNodePtr::dcast(child); animation != NullFC && isUnused(animation))
            takeOut(child);
    return isClip(node) && node->getNChildren() == 0;
}

void kxVerifyClipsCommand::takeOut(const NodePtr& child)
{
    const NodePtr parent = child->getParent();
    _lost.push_back({child, parent->getId(), unsigned(parent->findChild(child))});
    parent->subChild(child);
    markChanged(parent, Node::ChildrenFieldMask);
}

void kxVerifyClipsCommand::tell() const
{
    const int clips =
        int(std::count_if(_lost.begin(), _lost.end(), [](const Lost& lost) { return isClip(lost.node); }));
    kxLog::info(
        QStringLiteral("Clip structure verified: %1 animations that no object has any more and %2 clips without "
                       "content are taken out")
            .arg(int(_lost.size()) - clips)
            .arg(clips));
}
