#include <osg/AttachmentContainer.h>

#include <scene/FieldDescription.h>

#include <algorithm>

namespace osg
{

FieldContainerType Attachment::_type("Attachment", &FieldContainer::_type, nullptr, nullptr, nullptr);
FieldContainerType AttachmentContainer::_type("AttachmentContainer", &FieldContainer::_type, nullptr, nullptr,
                                              &AttachmentContainer::describeFields);

void AttachmentContainer::describeFields(FieldList& fields)
{
    fields.push_back(FieldDescription::member("nodeName", NodeNameFieldMask, &AttachmentContainer::_nodeName));
}

AttachmentContainer::~AttachmentContainer()
{
    while (!_attachments.empty())
        subAttachment(_attachments.back());
}

void AttachmentContainer::addAttachment(const AttachmentPtr& attachment)
{
    if (attachment == NullFC)
        return;
    attachment->addRef();
    for (const AttachmentPtr& present : std::vector<AttachmentPtr>(_attachments))
        if (present->getType().getId() == attachment->getType().getId())
            subAttachment(present);
    _attachments.push_back(attachment);
    attachment->_parents.push_back(AttachmentContainerPtr(this));
}

void AttachmentContainer::subAttachment(const AttachmentPtr& attachment)
{
    const auto found = std::find(_attachments.begin(), _attachments.end(), attachment);
    if (attachment == NullFC || found == _attachments.end())
        return;
    const AttachmentPtr held = attachment; // may be the very entry that goes
    _attachments.erase(found);
    std::vector<AttachmentContainerPtr>& parents = held->_parents;
    parents.erase(std::find(parents.begin(), parents.end(), AttachmentContainerPtr(this)));
    held->subRef();
}

AttachmentPtr AttachmentContainer::findAttachment(const FieldContainerType& type) const
{
    for (const AttachmentPtr& attachment : _attachments)
        if (attachment->getType().isDerivedFrom(type))
            return attachment;
    return AttachmentPtr();
}

} // namespace osg
