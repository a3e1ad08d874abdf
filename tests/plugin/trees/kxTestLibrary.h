#pragma once

#include <trees/kxAnimLibraryPayload.h>
#include <trees/kxAnimLibraryWidget.h>

#include <kxAnimFixture.h>
#include <kxTreeProbe.h>
#include <scene/UberMaterial.h>
#include <scene/kxScene.h>

/// A library to look into, and short words for scenes with animations.
namespace kxTestLibrary
{
struct Library : kxTreeProbe<kxAnimLibraryWidget>
{
    kxAnimLibraryPayload payload()
    {
        const std::unique_ptr<QMimeData> mime(mimeData(selectedItems()));
        return kxAnimLibraryPayload::of(mime.get());
    }
};

inline kxAnimManager* kernel()
{
    return kxAnimManager::the();
}

inline osg::AnimNodePtr block(const char* name)
{
    return kxAnimFixture::block(name, {kxAnimFixture::curve("translation", "X", {{0.0f, 0.0f}, {1.0f, 1.0f}})});
}

inline osg::NodePtr object(const char* name, const std::vector<osg::AnimNodePtr>& animations)
{
    const osg::NodePtr node = kxAnimFixture::object(name);
    for (const osg::AnimNodePtr& animation : animations)
        kernel()->addAnimation(node, animation);
    return node;
}

inline osg::MaterialPtr material(const char* name, const std::vector<osg::AnimNodePtr>& animations)
{
    const osg::UberMaterialPtr made = osg::UberMaterial::create();
    made->setNodeName(name);
    kxScene::the()->addMaterial(made);
    for (const osg::AnimNodePtr& animation : animations)
        kernel()->addAnimation(made, animation);
    return made;
}

inline void tag(const osg::AttachmentContainerPtr& object, const std::vector<std::string>& names)
{
    const osg::TagAttachmentPtr tags = osg::TagAttachmentBase::create();
    tags->editAnimations() = names;
    object->addAttachment(tags);
}

inline std::vector<std::string> tagsOf(const osg::AttachmentContainerPtr& object)
{
    const osg::TagAttachmentPtr tags = object->findAttachment<osg::TagAttachment>();
    return tags == osg::NullFC ? std::vector<std::string>() : tags->getAnimations();
}
} // namespace kxTestLibrary
