#include <osg/AnimAttachments.h>

#include <animation/kxAttachmentRegistry.h>
#include <osg/AnimCurve.h>
#include <osg/FieldContainerFactory.h>
#include <scene/FieldDescription.h>

#include <algorithm>
#include <map>
#include <unordered_map>

using namespace osg;

namespace
{
struct Registry
{
    std::map<UInt32, UInt32> rootOfAttachment;           // ids grow with each creation, so this order is theirs
    std::unordered_map<UInt32, UInt32> attachmentOfRoot; // by ids
};

Registry& registry()
{
    static Registry* const instance = new Registry; // never freed: attachments may die with other statics
    return *instance;
}

void enroll(UInt32 attachment, UInt32 root)
{
    UInt32& slot = registry().rootOfAttachment[attachment];
    registry().attachmentOfRoot.erase(slot);
    slot = root;
    registry().attachmentOfRoot[root] = attachment;
}

void withdraw(UInt32 attachment)
{
    const auto found = registry().rootOfAttachment.find(attachment);
    if (found == registry().rootOfAttachment.end())
        return;
    registry().attachmentOfRoot.erase(found->second);
    registry().rootOfAttachment.erase(found);
}
} // namespace

std::vector<AnimAttachmentPtr> kxAttachmentRegistry::all()
{
    std::vector<AnimAttachmentPtr> attachments;
    attachments.reserve(registry().rootOfAttachment.size());
    for (const auto& entry : registry().rootOfAttachment)
        if (const AnimAttachmentPtr attachment = living<AnimAttachment>(entry.first))
            attachments.push_back(attachment);
    return attachments;
}

AnimAttachmentPtr kxAttachmentRegistry::ofRoot(const NodePtr& root)
{
    const auto found = registry().attachmentOfRoot.find(root.getFieldContainerId());
    if (root == NullFC || found == registry().attachmentOfRoot.end())
        return AnimAttachmentPtr();
    return living<AnimAttachment>(found->second);
}

AnimAttachmentPtr kxAttachmentRegistry::above(const NodePtr& node)
{
    NodePtr top = node;
    while (top != NullFC && top->getParent() != NullFC)
        top = top->getParent();
    return ofRoot(top);
}

namespace osg
{

FieldContainerType AnimAttachmentBase::_type("AnimAttachmentBase", &Attachment::_type, nullptr, nullptr,
                                             &AnimAttachmentBase::describeFields);
FieldContainerType AnimAttachment::_type(
    "AnimAttachment", &AnimAttachmentBase::_type, nullptr,
    [] { return FieldContainerPtr(AnimAttachmentBase::create()); }, nullptr);
FieldContainerType TagAttachmentBase::_type("TagAttachmentBase", &Attachment::_type, nullptr, nullptr,
                                            &TagAttachmentBase::describeFields);
FieldContainerType TagAttachment::_type(
    "TagAttachment", &TagAttachmentBase::_type, nullptr, [] { return FieldContainerPtr(TagAttachmentBase::create()); },
    nullptr);

AnimAttachmentPtr AnimAttachmentBase::create()
{
    const AnimAttachmentPtr attachment(new AnimAttachment);
    const AnimNodePtr root = AnimNodeBase::create();
    root->setCore(Group::create());
    attachment->setAnimationRoot(root);
    return attachment;
}

AnimAttachmentBase::~AnimAttachmentBase()
{
    withdraw(getId());
}

void AnimAttachmentBase::describeFields(FieldList& fields)
{
    fields.push_back(referenceField("animationRoot", AnimationRootFieldMask, &AnimAttachmentBase::getAnimationRoot,
                                    &AnimAttachmentBase::setAnimationRoot));
}

void AnimAttachmentBase::setAnimationRoot(const AnimNodePtr& root)
{
    if (root == NullFC || root == _animationRoot.get())
        return;
    enroll(getId(), root->getId());
    _animationRoot = root;
}

void AnimAttachment::getTopLevelAnimations(std::vector<AnimNodePtr>& out, bool withoutCurves) const
{
    for (const NodePtr& child : getAnimationRoot()->getChildren())
    {
        const AnimNodePtr node = AnimNodePtr::dcast(child);
        if (node != NullFC && !(withoutCurves && AnimCurvePtr::dcast(node->getCore()) != NullFC))
            out.push_back(node);
    }
}

void AnimAttachment::getTopLevelCurveNodes(std::vector<AnimNodePtr>& out) const
{
    for (const NodePtr& child : getAnimationRoot()->getChildren())
    {
        const AnimNodePtr node = AnimNodePtr::dcast(child);
        if (node != NullFC && AnimCurvePtr::dcast(node->getCore()) != NullFC)
            out.push_back(node);
    }
}

TagAttachmentPtr TagAttachmentBase::create()
{
    return TagAttachmentPtr(new TagAttachment);
}

void TagAttachmentBase::describeFields(FieldList& fields)
{
    fields.push_back(FieldDescription::member("animations", AnimationsFieldMask, &TagAttachmentBase::_animations));
}

bool TagAttachment::addAnimationTag(const std::string& name)
{
    if (std::find(_animations.begin(), _animations.end(), name) != _animations.end())
        return false;
    _animations.push_back(name);
    return true;
}

bool TagAttachment::replaceAnimationTag(const std::string& oldName, const std::string& newName)
{
    const auto found = std::find(_animations.begin(), _animations.end(), oldName);
    if (found == _animations.end() || oldName == newName)
        return false;
    if (std::find(_animations.begin(), _animations.end(), newName) == _animations.end())
        *found = newName;
    else
        _animations.erase(found);
    return true;
}

} // namespace osg
