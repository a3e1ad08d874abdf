#include "kxNodeCopy.h"

#include <animation/kxAnimEngine.h>
#include <kxAnimManager.h>
#include <osg/AnimAttachments.h>
#include <scene/FieldDescription.h>

namespace
{
/// A channel that an animation drives at this moment gives the copy the value that it has of itself.
void copyFields(osg::FieldContainer& target, const osg::FieldContainer& source)
{
    for (const osg::FieldDescription& field : source.getType().fields())
        if (!field.isTransient())
            field.setValue(target, field.value(source));
    for (const osg::FieldDescription& field : source.getType().fields())
        for (unsigned i = 0; field.isAnimatable() && i < field.components(); ++i)
        {
            float rest = 0;
            if (kxAnimEngine::of(*kxAnimManager::the()).rest.get(source.getId(), field.name(), i, rest))
                field.setComponent(target, i, rest);
        }
}

void copyAttachments(const osg::AttachmentContainerPtr& target, const osg::AttachmentContainerPtr& source)
{
    const osg::AnimAttachmentPtr animations = source->findAttachment<osg::AnimAttachment>();
    if (animations != osg::NullFC)
    {
        const osg::AnimAttachmentPtr copy = osg::AnimAttachment::create();
        copy->setAnimationRoot(osg::cloneAnimTree(animations->getAnimationRoot(), false));
        target->addAttachment(copy);
    }
    const osg::TagAttachmentPtr tags = source->findAttachment<osg::TagAttachment>();
    if (tags != osg::NullFC)
    {
        const osg::TagAttachmentPtr copy = osg::TagAttachment::create();
        copy->editAnimations() = tags->getAnimations();
        target->addAttachment(copy);
    }
}
} // namespace

osg::NodePtr kxNodeCopy::copyTree(const osg::NodePtr& node)
{
    if (node == osg::NullFC)
        return osg::NodePtr();
    const osg::NodePtr copy = osg::Node::create();
    const osg::NodeCorePtr core = node->getCore();
    if (core != osg::NullFC && core->getType().isCreatable())
    {
        const osg::NodeCorePtr coreCopy = osg::NodeCorePtr::dcast(core->getType().create());
        copyFields(*coreCopy, *core);
        copyAttachments(coreCopy, core);
        copy->setCore(coreCopy);
    }
    copyFields(*copy, *node);
    copy->setNodeName(node->getNodeName());
    copyAttachments(copy, node);
    for (const osg::NodePtr& child : node->getChildren())
        copy->addChild(copyTree(child));
    return copy;
}

osg::MaterialPtr kxNodeCopy::copyMaterial(const osg::MaterialPtr& material)
{
    if (material == osg::NullFC || !material->getType().isCreatable())
        return osg::MaterialPtr();
    const osg::MaterialPtr copy = osg::MaterialPtr::dcast(material->getType().create());
    copyFields(*copy, *material);
    copy->setNodeName(material->getNodeName());
    copyAttachments(copy, material);
    return copy;
}
