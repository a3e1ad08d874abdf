#include <files/kxLoadAnimationsCommand.h>

#include <files/scene/kxSceneMessages.h>
#include <kxAnimManager.h>

using namespace osg;

kxLoadAnimationsCommand::kxLoadAnimationsCommand(const QString& text, const AttachmentContainerPtr& object,
                                                 const std::vector<AnimNodePtr>& animations)
    : kxCommand(text), _object(object), _attachment(object->findAttachment<AnimAttachment>()),
      _bringsAttachment(!_attachment), _animations(animations.begin(), animations.end())
{
    if (_bringsAttachment)
        _attachment = AnimAttachmentBase::create();
}

void kxLoadAnimationsCommand::takeOut(const AnimNodePtr& curve)
{
    const AnimNodePtr root = _attachment->getAnimationRoot();
    const int position = curve == NullFC ? -1 : root->findChild(curve);
    if (position < 0)
        return;
    _replaced.push_back({curve, position});
    root->subChild(curve);
}

void kxLoadAnimationsCommand::apply(bool forward)
{
    forward ? place() : takeBack();
    markChanged(_attachment->getAnimationRoot(), Node::ChildrenFieldMask);
    kxAnimManager::the()->reevaluateAnimations(true);
    kxSceneMessages::contentChanged();
}

void kxLoadAnimationsCommand::place()
{
    if (_bringsAttachment)
    {
        _object->addAttachment(_attachment.get());
        markChanged(_object.get(), AttachmentContainer::AttachmentsFieldMask);
    }
    _replaced.clear();
    for (const osg::Share<AnimNode>& animation : _animations)
    {
        if (const AnimCurvePtr curve = AnimCurvePtr::dcast(animation->getCore()))
            takeOut(kxAnimManager::the()->findChannelCurveNode(_attachment.get(), curve->getChannelName(),
                                                               curve->getSuffix()));
    }
    for (const osg::Share<AnimNode>& animation : _animations)
        _attachment->getAnimationRoot()->addChild(animation.get());
}

void kxLoadAnimationsCommand::takeBack()
{
    const AnimNodePtr root = _attachment->getAnimationRoot();
    for (const osg::Share<AnimNode>& animation : _animations)
        root->subChild(animation.get());
    for (auto entry = _replaced.rbegin(); entry != _replaced.rend(); ++entry)
        root->insertChild(UInt32(entry->position), entry->curve.get());
    if (_bringsAttachment)
    {
        _object->subAttachment(_attachment.get());
        markChanged(_object.get(), AttachmentContainer::AttachmentsFieldMask);
    }
}
