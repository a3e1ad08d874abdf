#include <trees/kxAnimLibraryMoves.h>

#include <trees/kxAnimLibraryPayload.h>
#include <trees/kxAnimTags.h>

#include <kxAnimManager.h>
#include <osg/SceneCores.h>

using namespace osg;

namespace
{
/// Calls `move` for each row that stands for an object.
template <class Move>
void forEachObject(const kxAnimLibraryPayload& payload, const Move& move)
{
    for (const kxAnimLibraryPayload::Row& row : payload.rows)
        if (row.animation() == NullFC)
            if (const AttachmentContainerPtr object = row.container())
                move(object);
}
} // namespace

void kxAnimLibraryMoves::leaveGroups(const kxAnimLibraryPayload& payload)
{
    forEachObject(payload,
                  [](const AttachmentContainerPtr& object)
                  {
                      const TagAttachmentPtr tags = object->findAttachment<TagAttachment>();
                      if (tags == NullFC)
                          return;
                      tags->editAnimations().clear();
                      markChanged(tags, TagAttachmentBase::AnimationsFieldMask);
                  });
}

void kxAnimLibraryMoves::moveToGroup(const kxAnimLibraryPayload& payload, const std::string& group)
{
    forEachObject(payload,
                  [&group](const AttachmentContainerPtr& object)
                  {
                      const TagAttachmentPtr tags = kxAnimTags::require(object);
                      tags->editAnimations().clear();
                      tags->addAnimationTag(group.empty() ? kxAnimTags::DefaultName : group);
                      markChanged(tags, TagAttachmentBase::AnimationsFieldMask);
                  });
}

void kxAnimLibraryMoves::moveToNode(const kxAnimLibraryPayload& payload, const NodePtr& target)
{
    for (const kxAnimLibraryPayload::Row& row : payload.rows)
    {
        const AnimNodePtr animation = row.animation();
        const NodePtr source = NodePtr::dcast(row.container());
        if (animation != NullFC && source != NullFC)
            kxAnimManager::the()->moveBlockToNode(animation, source, target, true);
    }
}

void kxAnimLibraryMoves::moveToMaterial(const kxAnimLibraryPayload& payload, const MaterialPtr& target)
{
    for (const kxAnimLibraryPayload::Row& row : payload.rows)
    {
        const AnimNodePtr animation = row.animation();
        const MaterialPtr source = MaterialPtr::dcast(row.container());
        if (animation != NullFC && source != NullFC)
            kxAnimManager::the()->moveBlockToMaterial(animation, source, target, true);
    }
}
