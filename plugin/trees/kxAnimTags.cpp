#include <trees/kxAnimTags.h>

osg::TagAttachmentPtr kxAnimTags::require(const osg::AttachmentContainerPtr& object)
{
    osg::TagAttachmentPtr tags = object->findAttachment<osg::TagAttachment>();
    if (tags != osg::NullFC)
        return tags;
    tags = osg::TagAttachmentBase::create();
    object->addAttachment(tags);
    osg::markChanged(object, osg::AttachmentContainer::AttachmentsFieldMask);
    return tags;
}

void kxAnimTags::rename(const osg::AttachmentContainerPtr& object, const std::string& oldName,
                        const std::string& newName)
{
    const osg::TagAttachmentPtr tags = require(object);
    if (!tags->replaceAnimationTag(oldName, newName))
        tags->addAnimationTag(newName);
    osg::markChanged(tags, osg::TagAttachmentBase::AnimationsFieldMask);
}
