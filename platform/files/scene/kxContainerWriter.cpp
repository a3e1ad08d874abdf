#include <files/scene/kxContainerWriter.h>

#include <files/scene/kxFieldCodec.h>
#include <osg/AnimNode.h>

#include <algorithm>
#include <iterator>

using namespace osg;

namespace
{
/// Nodes of the scene tree belong to their parent alone: a field that names one doesn't keep it.
bool isOwnedByField(const FieldContainerPtr& container)
{
    const FieldContainerType& type = container->getType();
    return !type.isDerivedFrom(Node::_type) || type.isDerivedFrom(AnimNodeBase::_type);
}
} // namespace

void kxContainerWriter::appendKey(QCborStreamWriter& out, const char* key)
{
    out.appendTextString(key, qsizetype(std::char_traits<char>::length(key)));
}

quint32 kxContainerWriter::number(const FieldContainerPtr& container) const
{
    const auto found = _numbers.find(container.getFieldContainerId());
    return found == _numbers.end() ? 0 : found->second;
}

std::size_t kxContainerWriter::classOf(const FieldContainerPtr& container)
{
    const FieldContainerType& type = container->getType();
    const auto found = _classByType.find(type.getId());
    if (found != _classByType.end())
        return found->second;
    Class entry{&type, {}};
    for (const FieldDescription& field : type.fields())
        if (!field.isTransient())
            entry.fields.push_back(Field{&field, field.value(*container).index()});
    _classes.push_back(entry);
    return _classByType[type.getId()] = _classes.size() - 1;
}

bool kxContainerWriter::collect(const FieldContainerPtr& container)
{
    std::vector<std::pair<FieldContainerPtr, unsigned>> open = {{container, 1u}};
    std::vector<FieldContainerPtr> owned;
    bool flat = true;
    while (!open.empty())
    {
        const auto [next, depth] = open.back();
        open.pop_back();
        if (next == NullFC || !_numbers.emplace(next->getId(), quint32(_containers.size() + 1)).second)
            continue;
        flat = flat && depth <= DeepestNesting;
        const std::size_t classIndex = classOf(next);
        _containers.push_back(next);
        _classOfContainer.push_back(classIndex);
        owned.clear();
        ownedBy(next, classIndex, owned);
        for (auto below = owned.rbegin(); below != owned.rend(); ++below)
            open.emplace_back(*below, depth + 1);
    }
    return flat;
}

void kxContainerWriter::ownedBy(const FieldContainerPtr& container, std::size_t classIndex,
                                std::vector<FieldContainerPtr>& owned) const
{
    if (const AttachmentContainerPtr carrier = AttachmentContainerPtr::dcast(container); carrier != NullFC)
        owned.insert(owned.end(), carrier->getAttachments().begin(), carrier->getAttachments().end());
    if (const NodePtr node = NodePtr::dcast(container); node != NullFC)
    {
        owned.push_back(node->getCore());
        owned.insert(owned.end(), node->getChildren().begin(), node->getChildren().end());
    }
    const auto own = [&owned](const FieldContainerPtr& reference)
    {
        if (reference != NullFC && isOwnedByField(reference))
            owned.push_back(reference);
    };
    for (const Field& field : _classes[classIndex].fields)
    {
        if (!kxFieldCodec::isReference(field.kind))
            continue;
        const FieldValue value = field.description->value(*container);
        if (field.kind == kxFieldCodec::ReferenceKind)
            own(std::get<FieldContainerPtr>(value));
        else
            for (const FieldContainerPtr& reference : std::get<std::vector<FieldContainerPtr>>(value))
                own(reference);
    }
}

void kxContainerWriter::write(QCborStreamWriter& out) const
{
    appendKey(out, "classes");
    out.startArray(quint64(_classes.size()));
    for (const Class& entry : _classes)
    {
        out.startArray(2);
        appendKey(out, entry.type->getName());
        out.startArray(quint64(entry.fields.size()));
        for (const Field& field : entry.fields)
        {
            out.startArray(2);
            appendKey(out, field.description->name().c_str());
            out.append(quint64(field.kind));
            out.endArray();
        }
        out.endArray();
        out.endArray();
    }
    out.endArray();

    appendKey(out, "containers");
    out.startArray(quint64(_containers.size()));
    for (std::size_t i = 0; i < _containers.size(); ++i)
        writeContainer(out, i);
    out.endArray();
}

void kxContainerWriter::writeContainer(QCborStreamWriter& out, std::size_t index) const
{
    const FieldContainerPtr& container = _containers[index];
    const Class& entry = _classes[_classOfContainer[index]];
    out.startArray(3);
    out.append(quint64(_classOfContainer[index]));
    out.startArray(quint64(entry.fields.size()));
    for (const Field& field : entry.fields)
        writeValue(out, field, container);
    out.endArray();
    writeStructure(out, container);
    out.endArray();
}

void kxContainerWriter::writeValue(QCborStreamWriter& out, const Field& field, const FieldContainerPtr& container) const
{
    const FieldValue value = field.description->value(*container);
    if (field.kind == kxFieldCodec::ReferenceKind)
        out.append(quint64(number(std::get<FieldContainerPtr>(value))));
    else if (field.kind == kxFieldCodec::ReferenceListKind)
    {
        const auto& references = std::get<std::vector<FieldContainerPtr>>(value);
        out.startArray(quint64(references.size()));
        for (const FieldContainerPtr& reference : references)
            out.append(quint64(number(reference)));
        out.endArray();
    }
    else
        kxFieldCodec::write(out, value);
}

template <class T>
void kxContainerWriter::writeNumbers(QCborStreamWriter& out, const std::vector<FCPtr<T>>& containers) const
{
    out.startArray(quint64(containers.size()));
    for (const FCPtr<T>& container : containers)
        out.append(quint64(number(container)));
    out.endArray();
}

void kxContainerWriter::writeStructure(QCborStreamWriter& out, const FieldContainerPtr& container) const
{
    const AttachmentContainerPtr carrier = AttachmentContainerPtr::dcast(container);
    const NodePtr node = NodePtr::dcast(container);
    const NodeCorePtr core = NodeCorePtr::dcast(container);
    const bool attachments = carrier != NullFC && !carrier->getAttachments().empty();
    const bool hasCore = node != NullFC && node->getCore() != NullFC;
    const bool children = node != NullFC && node->getNChildren() > 0;
    // Nodes that have the core and aren't written (copies in a clipboard, say) play no part.
    std::vector<NodePtr> parents;
    if (core != NullFC && core->getParents().size() > 1)
        std::copy_if(core->getParents().begin(), core->getParents().end(), std::back_inserter(parents),
                     [this](const NodePtr& parent) { return number(parent) != 0; });
    const bool shared = parents.size() > 1;
    out.startMap(quint64(attachments) + quint64(hasCore) + quint64(children) + quint64(shared));
    if (attachments)
    {
        out.append(quint64(Attachments));
        writeNumbers(out, carrier->getAttachments());
    }
    if (hasCore)
    {
        out.append(quint64(Core));
        out.append(quint64(number(node->getCore())));
    }
    if (children)
    {
        out.append(quint64(Children));
        writeNumbers(out, node->getChildren());
    }
    if (shared)
    {
        out.append(quint64(CoreParents));
        writeNumbers(out, parents);
    }
    out.endMap();
}
