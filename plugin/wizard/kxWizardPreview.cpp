#include <wizard/kxWizardPreview.h>

#include <kxAnimEvaluator.h>
#include <osg/FieldContainerFactory.h>

using namespace osg;

namespace
{
/// The channel where its object lives, else an empty one.
kxAnimManager::kxOSGChannelData channelOf(const std::tuple<unsigned int, std::string, std::string>& key)
{
    kxAnimManager::kxOSGChannelData data;
    data.container = FieldContainerFactory::the()->getContainer(std::get<0>(key));
    data.name = data.channelName = std::get<1>(key);
    data.suffix = std::get<2>(key);
    return data;
}

/// All fields of a container that channels are components of.
BitVector valueFields(const FieldContainerPtr& container)
{
    const BitVector shape = AttachmentContainer::AttachmentsFieldMask | AttachmentContainer::NodeNameFieldMask;
    return FieldBits & ~(NodePtr::dcast(container) != NullFC
                             ? shape | Node::CoreFieldMask | Node::ChildrenFieldMask | Node::ParentFieldMask
                             : shape);
}
} // namespace

bool kxWizardPreview::start(const kxCaptureTable& table)
{
    bool isPlaying = false;
    for (const kxCaptureTable::Entry& entry : table.present())
    {
        noteBefore(entry);
        attach(entry);
        kxAnimEvaluator::the()->enqueue(entry.block, false);
        isPlaying = isPlaying || kxAnimEvaluator::the()->isPlaying(entry.block);
    }
    return isPlaying;
}

void kxWizardPreview::stop(const kxCaptureTable& table)
{
    noteLeft();
    for (const auto& entry : table.entries()) // of dead objects too
        kxAnimEvaluator::the()->dequeue(entry.second.block, false);
    for (const kxCaptureTable::Entry& entry : table.living())
        detach(entry);
    leaveValues();
}

void kxWizardPreview::showStart(const kxCaptureTable& table)
{
    for (const kxCaptureTable::Entry& entry : table.present())
    {
        noteBefore(entry);
        attach(entry);
        kxAnimManager::the()->reset(entry.block, false);
    }
    noteLeft();
    for (const kxCaptureTable::Entry& entry : table.present())
        detach(entry);
    leaveValues();
}

void kxWizardPreview::takeBack()
{
    for (const auto& value : _values)
    {
        const auto channel = channelOf(value.first);
        if (!channel.isEmpty() && kxAnimManager::the()->getOSGFieldValue(channel) == value.second.left)
            write(value.first, value.second.holderId, value.second.before);
    }
    _values.clear();
}

void kxWizardPreview::write(const Channel& channel, UInt32 holderId, float value)
{
    kxAnimEvaluator::the()->setOSGFieldValue(channelOf(channel), value, false);
    if (const FieldContainerPtr holder = FieldContainerFactory::the()->getContainer(holderId))
        markChanged(holder, valueFields(holder));
}

void kxWizardPreview::attach(const kxCaptureTable::Entry& entry)
{
    if (kxAnimManager::the()->getAnimAttachment(entry.container()) == NullFC)
        _madeAttachments.insert(entry.containerId);
    kxAnimManager::the()->addAnimation(entry.container(), entry.block);
}

void kxWizardPreview::detach(const kxCaptureTable::Entry& entry)
{
    kxAnimManager::the()->subAnimation(entry.container(), entry.block);
    const AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(entry.container());
    if (_madeAttachments.erase(entry.containerId) == 0 || attachment == NullFC ||
        attachment->getAnimationRoot()->getNChildren() != 0) // keyed by the user meanwhile
        return;
    const AttachmentContainerPtr object = AttachmentContainerPtr::dcast(entry.container());
    object->subAttachment(attachment);
    markChanged(object, AttachmentContainer::AttachmentsFieldMask);
}

void kxWizardPreview::noteBefore(const kxCaptureTable::Entry& entry)
{
    for (const AnimCurvePtr& curve : kxCaptureTable::curvesOf(entry.block))
    {
        const FieldContainerPtr holder = kxCaptureTable::aimOf(curve, entry.container());
        const float present = kxAnimManager::the()->getOSGFieldValue(curve, holder);
        const auto known = _values.emplace(Channel(entry.containerId, curve->getChannelName(), curve->getSuffix()),
                                           Value{present, 0, holder != NullFC ? holder.getFieldContainerId() : 0});
        if (!known.second && known.first->second.left != present)
            known.first->second.before = present; // changed by somebody else
    }
}

void kxWizardPreview::noteLeft()
{
    for (auto& value : _values)
    {
        const auto channel = channelOf(value.first);
        if (!channel.isEmpty())
            value.second.left = kxAnimManager::the()->getOSGFieldValue(channel);
    }
}

void kxWizardPreview::leaveValues()
{
    // Channels that aren't driven any more get back what they had before; what is shown becomes their own value, so
    // that the user's next change starts from it and lasts.
    kxAnimManager::the()->updateSceneAnimCurveData();
    for (const auto& value : _values)
    {
        const auto channel = channelOf(value.first);
        if (!channel.isEmpty() && kxAnimManager::the()->getOSGFieldValue(channel) != value.second.left)
            write(value.first, value.second.holderId, value.second.left);
    }
}
