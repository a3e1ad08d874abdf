#include <files/scene/kxContainerForm.h>

#include <files/scene/kxFieldCodec.h>
#include <osg/AnimNode.h>
#include <osg/Share.h>

#include <algorithm>
#include <iterator>
#include <memory>

using namespace osg;

namespace
{
template <class T>
std::vector<quint32> numbersOf(const std::vector<FCPtr<T>>& containers, const kxContainerForm::Names& names)
{
    std::vector<quint32> numbers;
    numbers.reserve(containers.size());
    for (const FCPtr<T>& container : containers)
        numbers.push_back(quint32(names.number(container)));
    return numbers;
}
} // namespace

namespace
{
/// By the type's id; main thread only, as containers are.
std::vector<std::unique_ptr<std::vector<kxContainerForm::Field>>>& fieldsByType()
{
    static auto* const fields = new std::vector<std::unique_ptr<std::vector<kxContainerForm::Field>>>;
    return *fields;
}
} // namespace

const std::vector<kxContainerForm::Field>& kxContainerForm::fields(const FieldContainerType& type)
{
    if (type.getId() < fieldsByType().size() && fieldsByType()[type.getId()] != nullptr)
        return *fieldsByType()[type.getId()];
    const osg::Share<FieldContainer> sample{FCPtr<FieldContainer>(type.create())};
    return fields(*sample);
}

const std::vector<kxContainerForm::Field>& kxContainerForm::fields(const FieldContainer& container)
{
    const FieldContainerType& type = container.getType();
    if (type.getId() >= fieldsByType().size())
        fieldsByType().resize(type.getId() + 1);
    std::unique_ptr<std::vector<Field>>& stored = fieldsByType()[type.getId()];
    if (stored == nullptr)
    {
        stored = std::make_unique<std::vector<Field>>();
        for (const FieldDescription& field : type.fields())
            if (!field.isTransient())
                stored->push_back(Field{&field, field.value(container).index()});
    }
    return *stored;
}

bool kxContainerForm::isOwnedByField(const FieldContainerPtr& container)
{
    const FieldContainerType& type = container->getType();
    return !type.isDerivedFrom(Node::_type) || type.isDerivedFrom(AnimNodeBase::_type);
}

void kxContainerForm::ownedByFields(const FieldContainerPtr& container, std::vector<FieldContainerPtr>& owned)
{
    const auto own = [&owned](const FieldContainerPtr& reference)
    {
        if (reference != NullFC && isOwnedByField(reference))
            owned.push_back(reference);
    };
    for (const Field& field : fields(*container))
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

void kxContainerForm::ownedBy(const FieldContainerPtr& container, std::vector<FieldContainerPtr>& owned)
{
    if (const AttachmentContainerPtr carrier = AttachmentContainerPtr::dcast(container); carrier != NullFC)
        owned.insert(owned.end(), carrier->getAttachments().begin(), carrier->getAttachments().end());
    if (const NodePtr node = NodePtr::dcast(container); node != NullFC)
    {
        owned.push_back(node->getCore());
        owned.insert(owned.end(), node->getChildren().begin(), node->getChildren().end());
    }
    ownedByFields(container, owned);
}

void kxContainerForm::Names::appendNumbers(const FieldDescription& field, const FieldContainer& container,
                                           std::vector<quint64>& numbers) const
{
    const FieldValue value = field.value(container);
    for (const FieldContainerPtr& reference : std::get<std::vector<FieldContainerPtr>>(value))
        numbers.push_back(number(reference));
}

void kxContainerForm::writeValues(QCborStreamWriter& out, const FieldContainerPtr& container, const Names& names,
                                  bool isPacked)
{
    const std::vector<Field>& stored = fields(*container);
    out.startArray(quint64(stored.size()));
    for (const Field& field : stored)
        if (field.kind == kxFieldCodec::ReferenceListKind)
        {
            std::vector<quint64> numbers;
            names.appendNumbers(*field.description, *container, numbers);
            writeNumbers(out, numbers);
        }
        else if (const FieldValue value = field.description->value(*container);
                 field.kind == kxFieldCodec::ReferenceKind)
            out.append(names.number(std::get<FieldContainerPtr>(value)));
        else
            kxFieldCodec::write(out, value, isPacked);
    out.endArray();
}

kxContainerForm::Numbers kxContainerForm::structure(const FieldContainerPtr& container, const Names& names)
{
    Numbers numbers;
    if (const AttachmentContainerPtr carrier = AttachmentContainerPtr::dcast(container); carrier != NullFC)
        numbers.attachments = numbersOf(carrier->getAttachments(), names);
    if (const NodePtr node = NodePtr::dcast(container); node != NullFC)
    {
        numbers.core = quint32(names.number(node->getCore()));
        numbers.children = numbersOf(node->getChildren(), names);
    }
    if (const NodeCorePtr core = NodeCorePtr::dcast(container); core != NullFC && core->getParents().size() > 1)
    {
        std::vector<NodePtr> parents;
        std::copy_if(core->getParents().begin(), core->getParents().end(), std::back_inserter(parents),
                     [&names](const NodePtr& parent) { return names.isWritten(parent); });
        if (parents.size() > 1)
            numbers.coreParents = numbersOf(parents, names);
    }
    return numbers;
}

void kxContainerForm::writeStructure(QCborStreamWriter& out, const Numbers& structure)
{
    const auto writeList = [&out](Structure key, const std::vector<quint32>& numbers)
    {
        if (numbers.empty())
            return;
        out.append(quint64(key));
        writeNumbers(out, numbers);
    };
    out.startMap(quint64(!structure.attachments.empty()) + quint64(structure.core != 0) +
                 quint64(!structure.children.empty()) + quint64(!structure.coreParents.empty()));
    writeList(Attachments, structure.attachments);
    if (structure.core != 0)
    {
        out.append(quint64(Core));
        out.append(quint64(structure.core));
    }
    writeList(Children, structure.children);
    writeList(CoreParents, structure.coreParents);
    out.endMap();
}
