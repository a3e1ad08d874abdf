#include <trees/kxAnimLibraryMoves.h>

#include <trees/kxAnimLibraryPayload.h>

#include <kxAnimManager.h>
#include <osg/SceneCores.h>

using namespace osg;

namespace
{
TagAttachmentPtr ensureTags(const AttachmentContainerPtr& object)
{
    TagAttachmentPtr tags = object->findAttachment<TagAttachment>();
    if (tags == NullFC)
    {
        tags = TagAttachmentBase::create();
        object->addAttachment(tags);
        markChanged(object, AttachmentContainer::AttachmentsFieldMask);
    }
    return tags;
}

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
                      const TagAttachmentPtr tags = ensureTags(object);
                      tags->editAnimations().clear();
                      tags->addAnimationTag(group.empty() ? "Group" : group); // the name of a group without one
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
