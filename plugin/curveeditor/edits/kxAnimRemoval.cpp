#include <curveeditor/edits/kxAnimRemoval.h>

#include <curveeditor/edits/kxTrashAnimationUndoCommand.h>

#include <kxAnimManager.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>

#include <algorithm>

namespace
{
bool isUsedElsewhere(const osg::AnimNodePtr& animation)
{
    const osg::NodeCorePtr core = animation->getCore();
    if (osg::AnimObjectPtr::dcast(core) == osg::NullFC || core->getRefCount() < 2 ||
        kxAnimManager::the()->blockSceneRefCount(animation) != 1)
        return false;
    const std::vector<osg::NodePtr>& users = core->getParents();
    return std::count_if(users.begin(), users.end(), kxIsPlaced) >= 2;
}

void addAnimationsOf(const osg::FieldContainerPtr& container, kxRemoval& removal)
{
    const osg::AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(container);
    if (attachment == osg::NullFC)
        return;
    std::vector<osg::AnimNodePtr> animations;
    attachment->getTopLevelAnimations(animations, false); // channels that were keyed have no rows of their own
    for (const osg::AnimNodePtr& animation : animations)
        removal.nodes.emplace_back(animation);
}
} // namespace

bool kxIsPlaced(osg::NodePtr node)
{
    while (node->getParent() != osg::NullFC)
        node = node->getParent();
    return osg::AnimObjectPtr::dcast(node->getCore()) == osg::NullFC;
}

kxRemoval kxCollectRemoval(const std::vector<kxRemovalRow>& rows, bool checkReferences,
                           const std::function<kxRemovalAnswer(const QString& name)>& ask)
{
    kxRemoval removal;
    bool asks = true;
    for (const kxRemovalRow& row : rows)
    {
        const osg::AnimNodePtr animation = osg::living<osg::AnimNode>(row.nodeId);
        if (animation == osg::NullFC)
        {
            if (row.nodeId != 0)
                addAnimationsOf(osg::living<osg::Node>(row.nodeId), removal);
            else
                addAnimationsOf(osg::living<osg::Material>(row.materialId), removal);
            continue;
        }
        if (animation->getCore() == osg::NullFC)
            continue;
        if (!checkReferences || !isUsedElsewhere(animation))
        {
            removal.nodes.emplace_back(animation);
            continue;
        }
        if (asks)
        {
            const kxRemovalAnswer answer = ask(QString::fromStdString(kxNodeUtils::getName(animation)));
            if (answer == kxRemovalAnswer::NoToAll)
                break;
            if (answer == kxRemovalAnswer::No)
                continue;
            asks = answer != kxRemovalAnswer::YesToAll;
        }
        // The host may have deleted it while the question was open.
        const osg::AnimNodePtr accepted = osg::living<osg::AnimNode>(row.nodeId);
        if (accepted == osg::NullFC || accepted->getCore() == osg::NullFC)
            continue;
        for (const osg::NodePtr& user : accepted->getCore()->getParents())
            if (kxIsPlaced(user))
                removal.nodes.emplace_back(user);
        removal.sharedDeleted = true;
    }
    return removal;
}

void kxRemoveAnimations(const std::vector<kxNodePtr>& nodes)
{
    const kxScopedUndo scope(true);
    kxUndoStack::get(0).add(new kxTrashAnimationUndoCommand(nodes));
}
