#include <files/kxLoadAnimationsCommand.h>

#include <files/scene/kxSceneMessages.h>
#include <kxAnimManager.h>

using namespace osg;

namespace
{
void announce(const NodePtr& root)
{
    markChanged(root, Node::ChildrenFieldMask);
    kxAnimManager::the()->reevaluateAnimations(true);
    kxSceneMessages::contentChanged();
}
} // namespace

kxLoadAnimationsCommand::kxLoadAnimationsCommand(const QString& text, const AttachmentContainerPtr& object,
                                                 const std::vector<AnimNodePtr>& animations)
    : kxUndoCommand(text), _object(object), _attachment(object->findAttachment<AnimAttachment>()),
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

void kxLoadAnimationsCommand::redo()
{
    if (_bringsAttachment)
    {
        _object->addAttachment(_attachment.get());
        markChanged(_object.get(), AttachmentContainer::AttachmentsFieldMask);
    }
    const AnimNodePtr root = _attachment->getAnimationRoot();
    _replaced.clear();
    for (const kxShare<AnimNode>& animation : _animations)
    {
        if (const AnimCurvePtr curve = AnimCurvePtr::dcast(animation->getCore()))
            takeOut(kxAnimManager::the()->findChannelCurveNode(_attachment.get(), curve->getChannelName(),
                                                               curve->getSuffix()));
    }
    for (const kxShare<AnimNode>& animation : _animations)
        root->addChild(animation.get());
    announce(root);
}

void kxLoadAnimationsCommand::undo()
{
    const AnimNodePtr root = _attachment->getAnimationRoot();
    for (const kxShare<AnimNode>& animation : _animations)
        root->subChild(animation.get());
    for (auto entry = _replaced.rbegin(); entry != _replaced.rend(); ++entry)
        root->insertChild(UInt32(entry->position), entry->curve.get());
    if (_bringsAttachment)
    {
        _object->subAttachment(_attachment.get());
        markChanged(_object.get(), AttachmentContainer::AttachmentsFieldMask);
    }
    announce(root);
}

int kxLoadAnimationsCommand::id() const
{
    return makeId(typeid(kxLoadAnimationsCommand));
}
