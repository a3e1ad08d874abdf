#include <journal/kxContainerRestore.h>

#include <animation/kxAnimEngine.h>
#include <files/scene/kxFieldCodec.h>
#include <journal/kxContainerRecord.h>
#include <kxAnimManager.h>
#include <osg/FieldContainerFactory.h>
#include <scene/Mesh.h>
#include <scene/kxRebirth.h>

#include <algorithm>
#include <unordered_set>

using namespace osg;

namespace
{
using osg::living;

template <class T>
std::vector<FCPtr<T>> living(const std::vector<UInt32>& ids)
{
    std::vector<FCPtr<T>> containers;
    for (const UInt32 id : ids)
        if (const FCPtr<T> container = living<T>(id); container != NullFC)
            containers.push_back(container);
    return containers;
}

kxRestValues& restValues()
{
    return kxAnimEngine::of(*kxAnimManager::the()).rest;
}

/// What an animation shows in a component now, and is to show again after the value below it was written.
struct Shown
{
    const FieldDescription* field;
    unsigned component;
    float value;
};

std::vector<Shown> shownIn(const FieldContainer& container, const BitVector& mask)
{
    std::vector<Shown> shown;
    float value = 0;
    const kxRestValues& rest = restValues();
    if (rest.size() == 0)
        return shown;
    for (const FieldDescription& field : container.getType().fields())
        if (field.isAnimatable() && field.mask().intersects(mask))
            for (unsigned i = 0; i < field.components(); ++i)
                if (rest.get(container.getId(), field.name(), i, value))
                    shown.push_back(Shown{&field, i, field.component(container, i)});
    return shown;
}

void writeValue(FieldContainer& container, const kxContainerForm::Field& field, const QByteArray& slice)
{
    if (field.kind == kxFieldCodec::ReferenceKind)
        field.description->setValue(container, living<FieldContainer>(kxContainerRecord::ids(slice).front()));
    else if (container.getType().isDerivedFrom(Skin::_type) && kxFieldCodec::isReference(field.kind))
        static_cast<Skin&>(container).setJointIds(kxContainerRecord::ids(slice)); // the dead ones too
    else if (kxFieldCodec::isReference(field.kind))
    {
        const auto containers = living<FieldContainer>(kxContainerRecord::ids(slice));
        field.description->setValue(container, std::vector<FieldContainerPtr>(containers.begin(), containers.end()));
    }
    else
        field.description->setValue(container, kxContainerRecord::value(slice, field.kind));
}
} // namespace

void kxContainerRestore::add(UInt32 id, const QByteArray& record)
{
    const auto [entry, isNew] = _targets.try_emplace(id);
    entry->second.record = record;
    if (isNew)
        _open.push_back(id);
}

void kxContainerRestore::addScene(const QByteArray& record)
{
    _sceneRecord = record;
    for (const UInt32 id : kxSceneRecord::read(record).materials)
        if (const QByteArray known = _source(id); !known.isEmpty())
            add(id, known);
}

void kxContainerRestore::hold(UInt32 id)
{
    if (const FieldContainerPtr container = FieldContainerFactory::the()->getContainer(id); container != NullFC)
        _held.emplace_back(container);
}

void kxContainerRestore::gather()
{
    while (!_open.empty())
    {
        std::vector<UInt32> wanted;
        for (const UInt32 id : std::exchange(_open, {}))
        {
            Target& target = _targets[id];
            const FieldContainerType* const type = kxContainerRecord::type(target.record);
            FieldContainerPtr container = FieldContainerFactory::the()->getContainer(id);
            if (container == NullFC && type != nullptr)
                container = kxRebirth::create(*type, id);
            if (container == NullFC || type == nullptr || &container->getType() != type)
            {
                _targets.erase(id);
                continue;
            }
            target.container = container;
            target.present = kxContainerRecord::of(container);
            for (const UInt32 each : kxContainerRecord::owned(target.present))
                hold(each);
            const std::vector<UInt32> named = kxContainerRecord::owned(target.record);
            wanted.insert(wanted.end(), named.begin(), named.end());
        }
        for (const UInt32 id : wanted)
            if (_targets.count(id) == 0)
                if (const QByteArray record = _source(id); !record.isEmpty())
                    add(id, record);
    }
}

void kxContainerRestore::run()
{
    gather();
    for (const auto& entry : _targets)
        takeOut(entry.second);
    for (const auto& entry : _targets)
        restoreValues(entry.second);
    for (const auto& entry : _targets)
        putIn(entry.second);
    for (const auto& entry : _targets)
        orderCoreParents(entry.second);
    for (const auto& [id, mask] : std::exchange(_marks, {}))
        markChanged(FieldContainerFactory::the()->getContainer(id), mask);
    if (!_sceneRecord.isEmpty())
        kxSceneRecord::apply(_sceneRecord);
    _targets.clear();
    _held.clear();
}

void kxContainerRestore::restoreValues(const Target& target)
{
    if (target.record == target.present)
        return;
    FieldContainer& container = *target.container;
    const std::vector<kxContainerForm::Field>& fields = kxContainerForm::fields(container);
    const kxContainerRecord::Content wanted = kxContainerRecord::read(target.record);
    const kxContainerRecord::Content present = kxContainerRecord::read(target.present);
    if (wanted.values.size() != fields.size() || present.values.size() != fields.size())
        return;
    for (std::size_t i = 0; i < fields.size(); ++i)
    {
        if (wanted.values[i] == present.values[i])
            continue;
        const BitVector mask = fields[i].description->mask();
        const std::vector<Shown> shown = shownIn(container, mask);
        writeValue(container, fields[i], wanted.values[i]);
        for (const Shown& each : shown)
            restValues().set(container.getId(), each.field->name(), each.component,
                             each.field->component(container, each.component));
        for (const Shown& each : shown)
            each.field->setComponent(container, each.component, each.value);
        mark(target.container.get(), mask);
    }
}

void kxContainerRestore::takeOut(const Target& target)
{
    const kxContainerForm::Numbers wanted = kxContainerRecord::read(target.record).structure;
    const auto isWanted = [](const std::vector<UInt32>& ids, const FieldContainerPtr& container)
    { return std::find(ids.begin(), ids.end(), container.getFieldContainerId()) != ids.end(); };
    if (const AttachmentContainerPtr carrier = AttachmentContainerPtr::dcast(target.container.get()); carrier != NullFC)
        for (const AttachmentPtr& attachment : std::vector<AttachmentPtr>(carrier->getAttachments()))
            if (!isWanted(wanted.attachments, attachment))
            {
                carrier->subAttachment(attachment);
                mark(carrier, AttachmentContainer::AttachmentsFieldMask);
            }
    const NodePtr node = NodePtr::dcast(target.container.get());
    if (node == NullFC)
        return;
    const std::unordered_set<UInt32> children(wanted.children.begin(), wanted.children.end());
    for (const NodePtr& child : std::vector<NodePtr>(node->getChildren()))
        if (children.count(child->getId()) == 0)
        {
            node->subChild(child);
            mark(node, Node::ChildrenFieldMask);
        }
}

void kxContainerRestore::putIn(const Target& target)
{
    const kxContainerForm::Numbers wanted = kxContainerRecord::read(target.record).structure;
    if (const AttachmentContainerPtr carrier = AttachmentContainerPtr::dcast(target.container.get()); carrier != NullFC)
        if (const std::vector<AttachmentPtr> attachments = living<Attachment>(wanted.attachments);
            attachments != carrier->getAttachments())
        {
            for (const AttachmentPtr& attachment : std::vector<AttachmentPtr>(carrier->getAttachments()))
            {
                _held.emplace_back(attachment);
                carrier->subAttachment(attachment);
            }
            for (const AttachmentPtr& attachment : attachments)
                carrier->addAttachment(attachment);
            mark(carrier, AttachmentContainer::AttachmentsFieldMask);
        }
    const NodePtr node = NodePtr::dcast(target.container.get());
    if (node == NullFC)
        return;
    if (const NodeCorePtr core = living<NodeCore>(wanted.core); core != node->getCore())
    {
        node->setCore(core);
        mark(node, Node::CoreFieldMask);
    }
    const std::vector<NodePtr> children = living<Node>(wanted.children);
    for (UInt32 i = 0; i < children.size(); ++i)
    {
        const NodePtr child = children[i];
        if (node->getChild(i) == child)
            continue;
        if (const NodePtr parent = child->getParent(); parent != NullFC)
        {
            _held.emplace_back(child);
            parent->subChild(child);
            mark(parent, Node::ChildrenFieldMask);
        }
        node->insertChild(i, child);
        mark(node, Node::ChildrenFieldMask);
    }
}

void kxContainerRestore::orderCoreParents(const Target& target)
{
    const NodeCorePtr core = NodeCorePtr::dcast(target.container.get());
    if (core == NullFC)
        return;
    std::vector<NodePtr> wanted = living<Node>(kxContainerRecord::read(target.record).structure.coreParents);
    const auto isOther = [&core](const NodePtr& node) { return node->getCore() != core; };
    wanted.erase(std::remove_if(wanted.begin(), wanted.end(), isOther), wanted.end());
    std::vector<NodePtr> present;
    std::vector<NodePtr> others;
    for (const NodePtr& node : core->getParents())
        (std::find(wanted.begin(), wanted.end(), node) == wanted.end() ? others : present).push_back(node);
    if (present == wanted)
        return;
    // Each that takes the core anew is behind those that have it.
    wanted.insert(wanted.end(), others.begin(), others.end());
    for (const NodePtr& node : wanted)
    {
        node->setCore(NodeCorePtr());
        node->setCore(core);
        mark(node, Node::CoreFieldMask);
    }
}
