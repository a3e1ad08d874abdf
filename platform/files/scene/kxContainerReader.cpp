#include <files/scene/kxContainerReader.h>

#include <files/scene/kxCborInput.h>
#include <files/scene/kxFieldCodec.h>
#include <files/scene/kxFileReport.h>
#include <files/scene/kxProgress.h>
#include <osg/AnimNode.h>
#include <osg/Image.h>
#include <scene/CameraLight.h>

#include <algorithm>

using namespace osg;

namespace
{
/// Deeper trees than this would exhaust the stack of those who walk them.
constexpr quint32 DeepestOwnership = 2000;

bool isAnimNode(const FieldContainerPtr& container)
{
    return container->getType().isDerivedFrom(AnimNodeBase::_type);
}
} // namespace

bool kxContainerReader::readEntry(const std::string& key)
{
    if (key == "classes" && _classes.empty() && _containers.empty())
        readClasses();
    else if (key == "containers" && _containers.empty())
        readContainers();
    else
        return false;
    return true;
}

void kxContainerReader::readClasses()
{
    const quint64 count = _in.enterArray();
    for (quint64 i = 0; i < count && !_in.failed(); ++i)
    {
        if (_in.enterArray() != 2)
            _in.fail(QStringLiteral("a class was expected"));
        Class entry{_in.readText(), nullptr, {}};
        const FieldContainerType* const type = FieldContainerType::find(entry.name);
        if (type != nullptr && type->isCreatable())
            entry.type = type;
        else if (!_in.failed())
            _in.report().note(QStringLiteral("objects of the unknown class '%1' are left out")
                                  .arg(QString::fromStdString(entry.name)));
        const quint64 fields = _in.enterArray();
        for (quint64 f = 0; f < fields && !_in.failed(); ++f)
        {
            if (_in.enterArray() != 2)
                _in.fail(QStringLiteral("a field was expected"));
            const std::string name = _in.readText();
            Field field{entry.type == nullptr ? nullptr : entry.type->field(name), std::size_t(_in.readUInt(0xffff))};
            _in.leave();
            if (field.description != nullptr && field.description->isTransient())
                field.description = nullptr;
            if (entry.type != nullptr && field.description == nullptr && !_in.failed())
                _in.report().note(QStringLiteral("the unknown field '%1' of the class '%2' is left out")
                                      .arg(QString::fromStdString(name), QString::fromStdString(entry.name)));
            entry.fields.push_back(field);
        }
        _in.leave();
        _in.leave();
        _classes.push_back(std::move(entry));
    }
    _in.leave();
}

void kxContainerReader::readContainers()
{
    const quint64 count = _in.enterArray();
    for (quint64 i = 0; i < count && !_in.failed(); ++i)
    {
        if (!kxProgress::goesOn(_in.share()))
            _in.report().cancel();
        _offsets.push_back(quint64(_in.offset()));
        readContainer(quint32(i + 1));
    }
    _offsets.push_back(quint64(_in.offset()));
    _in.leave();
}

std::vector<FieldContainerPtr> kxContainerReader::containers() const
{
    std::vector<FieldContainerPtr> containers;
    containers.reserve(_containers.size());
    for (const osg::Share<FieldContainer>& container : _containers)
        if (container)
            containers.push_back(container.get());
    return containers;
}

kxSceneOrigin kxContainerReader::origin() const
{
    kxSceneOrigin origin;
    for (std::size_t i = 0; i < _containers.size(); ++i)
        origin.containers.push_back({_containers[i].id(), _offsets[i]});
    origin.end = _offsets.empty() ? 0 : _offsets.back();
    return origin;
}

void kxContainerReader::readContainer(quint32 number)
{
    if (_in.enterArray() != 3)
        _in.fail(QStringLiteral("an object was expected"));
    const quint64 index = _in.readUInt(_classes.empty() ? 0 : _classes.size() - 1);
    if (!_in.failed() && _classes.empty())
        _in.fail(QStringLiteral("an object of a class that isn't listed"));
    if (_in.failed())
        return;
    Class& entry = _classes[std::size_t(index)];
    _containers.emplace_back(FCPtr<FieldContainer>(entry.type == nullptr ? FieldContainerPtr() : entry.type->create()));
    if (entry.type != nullptr && !entry.checked)
        checkKinds(entry, *_containers.back().get());
    if (_in.enterArray() != entry.fields.size())
        _in.fail(QStringLiteral("an object of the class '%1' lacks values").arg(QString::fromStdString(entry.name)));
    for (const Field& field : entry.fields)
        if (!_in.failed())
            readValue(entry, field, number);
    _in.leave();
    readStructure(number);
    _in.leave();
}

void kxContainerReader::checkKinds(Class& entry, const FieldContainer& container)
{
    entry.checked = true;
    for (Field& field : entry.fields)
    {
        if (field.description == nullptr || field.description->value(container).index() == field.kind)
            continue;
        _in.report().note(
            QStringLiteral("the field '%1' of the class '%2' is of another kind and left out")
                .arg(QString::fromStdString(field.description->name()), QString::fromStdString(entry.name)));
        field.description = nullptr;
    }
}

void kxContainerReader::readValue(const Class& entry, const Field& field, quint32 number)
{
    if (field.description == nullptr)
        return _in.skip();
    if (field.kind == kxFieldCodec::ReferenceKind)
    {
        if (const quint32 reference = readNumber(); reference != 0)
            _references.push_back(Reference{number, field.description, false, {reference}});
        return;
    }
    if (field.kind == kxFieldCodec::ReferenceListKind)
    {
        _references.push_back(Reference{number, field.description, true, readNumbers()});
        return;
    }
    const FieldValue value = kxFieldCodec::read(_in, field.kind);
    if (!_in.failed() && !field.description->setValue(*_containers[number - 1].get(), value))
        _in.report().note(
            QStringLiteral("the field '%1' of the class '%2' has a value that it can't take, and keeps its own")
                .arg(QString::fromStdString(field.description->name()), QString::fromStdString(entry.name)));
}

void kxContainerReader::readStructure(quint32 number)
{
    const quint64 entries = _in.enterMap();
    if (entries > 0 && !_in.failed())
    {
        Structure& structure = _structure[number];
        for (quint64 i = 0; i < entries && !_in.failed(); ++i)
        {
            switch (_in.readUInt(0xffff))
            {
            case kxContainerForm::Attachments:
                structure.attachments = readNumbers();
                break;
            case kxContainerForm::Core:
                structure.core = readNumber();
                break;
            case kxContainerForm::Children:
                structure.children = readNumbers();
                break;
            case kxContainerForm::CoreParents:
                structure.coreParents = readNumbers();
                break;
            default:
                _in.report().note(QStringLiteral("a relation of an unknown kind is left out"));
                _in.skip();
            }
        }
    }
    _in.leave();
}

quint32 kxContainerReader::readNumber()
{
    return quint32(_in.readUInt(0xffffffffu));
}

std::vector<quint32> kxContainerReader::readNumbers()
{
    std::vector<quint32> numbers;
    const quint64 count = _in.enterArray();
    numbers.reserve(std::size_t(count));
    for (quint64 i = 0; i < count && !_in.failed(); ++i)
        numbers.push_back(readNumber());
    _in.leave();
    return numbers;
}

QString kxContainerReader::nameOf(quint32 number) const
{
    const AttachmentContainerPtr object = AttachmentContainerPtr::dcast(at(number));
    return object == NullFC || object->getNodeName().empty()
               ? QStringLiteral("object %1").arg(number)
               : QStringLiteral("'%1'").arg(QString::fromStdString(object->getNodeName()));
}

void kxContainerReader::refuse(quint32 number, const FieldContainerType& wanted) const
{
    _in.report().note(QStringLiteral("%1 isn't of the class '%2' or stands where it can't, and is left out there")
                          .arg(nameOf(number), QLatin1String(wanted.getName())));
}

bool kxContainerReader::link()
{
    if (_in.failed())
        return false;
    checkNumbers();
    if (!checkOwnership())
        return false;
    linkAttachments();
    linkCores();
    linkChildren();
    linkReferences();
    for (const osg::Share<FieldContainer>& container : _containers)
        repair(container.get());
    return !_in.failed();
}

void kxContainerReader::repair(const FieldContainerPtr& container)
{
    if (const ImagePtr image = ImagePtr::dcast(container); image != NullFC)
    {
        const UInt64 size = UInt64(image->getWidth()) * image->getHeight() * 4;
        if (image->getPixels().empty() || image->getPixels().size() == size)
            return;
        _in.report().note(QStringLiteral("a picture whose pixels don't fit its size is left out"));
        image->set(0, 0, {});
    }
    else if (const CameraPtr camera = CameraPtr::dcast(container); camera != NullFC)
        camera->setFocalLength(camera->getFocalLength());
    else if (const AnimNodePtr node = AnimNodePtr::dcast(container); node != NullFC && node->getScale() == 0.0f)
        node->setScale(1.0f);
}

void kxContainerReader::checkNumbers()
{
    const auto check = [this](quint32& number)
    {
        if (number <= _containers.size())
            return;
        _in.report().note(QStringLiteral("an object that isn't there is named"));
        number = 0;
    };
    std::vector<bool> placed(_containers.size() + 1, false);
    const auto place = [&](quint32& number)
    {
        check(number);
        if (placed[number])
        {
            _in.report().note(QStringLiteral("%1 stands in two places; it keeps the first").arg(nameOf(number)));
            number = 0;
        }
        placed[number] = number != 0;
    };
    for (auto& [number, structure] : _structure)
    {
        check(structure.core);
        std::for_each(structure.attachments.begin(), structure.attachments.end(), check);
        std::for_each(structure.coreParents.begin(), structure.coreParents.end(), check);
        std::for_each(structure.children.begin(), structure.children.end(), place);
    }
    for (Reference& reference : _references)
        for (quint32& number : reference.numbers)
        {
            check(number);
            // A tree of animations that a field names is there and nowhere else.
            if (const FieldContainerPtr container = at(number); container != NullFC && isAnimNode(container))
                place(number);
        }
}

std::vector<std::vector<quint32*>> kxContainerReader::owned()
{
    std::vector<std::vector<quint32*>> owned(_containers.size() + 1);
    const auto own = [](std::vector<quint32*>& list, std::vector<quint32>& numbers)
    {
        for (quint32& number : numbers)
            list.push_back(&number);
    };
    for (auto& [number, structure] : _structure)
    {
        own(owned[number], structure.attachments);
        owned[number].push_back(&structure.core);
        own(owned[number], structure.children);
    }
    for (Reference& reference : _references)
        for (quint32& number : reference.numbers)
            if (const FieldContainerPtr container = at(number);
                container != NullFC && (NodePtr::dcast(container) == NullFC || isAnimNode(container)))
                owned[reference.owner].push_back(&number);
    return owned;
}

bool kxContainerReader::checkOwnership()
{
    const std::vector<std::vector<quint32*>> owned = this->owned();
    // Depth first with an own stack; `depth` is 0 for what wasn't met, Open while it is on the stack.
    constexpr quint32 Open = 0xffffffffu;
    std::vector<quint32> depth(owned.size(), 0);
    std::vector<std::pair<quint32, std::size_t>> stack;
    for (quint32 start = 1; start < owned.size(); ++start)
    {
        if (depth[start] == 0)
        {
            depth[start] = Open;
            stack.emplace_back(start, 0);
        }
        while (!stack.empty())
        {
            const quint32 number = stack.back().first;
            if (stack.back().second < owned[number].size())
            {
                quint32& next = *owned[number][stack.back().second++];
                if (next != 0 && depth[next] == Open)
                {
                    _in.report().note(QStringLiteral("%1 contains itself, and is left out there").arg(nameOf(next)));
                    next = 0;
                }
                if (next != 0 && depth[next] == 0)
                {
                    depth[next] = Open;
                    stack.emplace_back(next, 0);
                }
                continue;
            }
            quint32 deepest = 0;
            for (const quint32* next : owned[number])
                deepest = *next == 0 ? deepest : std::max(deepest, depth[*next]);
            depth[number] = deepest + 1;
            if (depth[number] > DeepestOwnership)
                return _in.report().fail(QStringLiteral("objects are nested more than %1 deep").arg(DeepestOwnership));
            stack.pop_back();
        }
    }
    return true;
}

void kxContainerReader::linkAttachments()
{
    for (const auto& [number, structure] : _structure)
        for (const quint32 attachment : structure.attachments)
            if (const AttachmentContainerPtr carrier = get<AttachmentContainer>(number); carrier != NullFC)
                if (const AttachmentPtr attached = get<Attachment>(attachment); attached != NullFC)
                    carrier->addAttachment(attached);
}

void kxContainerReader::linkCores()
{
    // Shared cores first, so that their nodes are in the written order.
    for (const auto& [number, structure] : _structure)
        for (const quint32 parent : structure.coreParents)
        {
            const auto found = _structure.find(parent);
            const NodePtr node = get<Node>(parent);
            if (node == NullFC)
                continue;
            if (found == _structure.end() || found->second.core != number)
                refuse(number, NodeCore::_type);
            else if (const NodeCorePtr core = get<NodeCore>(number); core != NullFC)
                node->setCore(core);
        }
    for (const auto& [number, structure] : _structure)
        if (const NodePtr node = structure.core == 0 ? NodePtr() : get<Node>(number); node != NullFC)
        {
            const NodeCorePtr core = get<NodeCore>(structure.core);
            // What a node of an unknown kind gathers stays.
            node->setCore(core == NullFC && !isAnimNode(node) ? NodeCorePtr(Group::create()) : core);
        }
}

void kxContainerReader::linkChildren()
{
    for (const auto& [number, structure] : _structure)
    {
        if (structure.children.empty())
            continue;
        const NodePtr node = get<Node>(number);
        for (const quint32 childNumber : structure.children)
        {
            const NodePtr child = get<Node>(childNumber);
            if (node == NullFC || child == NullFC)
                continue;
            if (node->addChild(child))
                continue;
            if (isAnimNode(node) && !isAnimNode(child))
                _strays.emplace_back(child);
            else
                refuse(childNumber, node->getType());
        }
    }
}

void kxContainerReader::linkReferences()
{
    for (const Reference& reference : _references)
    {
        const FieldContainerPtr owner = at(reference.owner);
        FieldValue value;
        if (reference.list)
        {
            std::vector<FieldContainerPtr> containers;
            for (const quint32 number : reference.numbers)
                containers.push_back(at(number));
            value = containers;
        }
        else if (reference.numbers.front() == 0)
            continue; // it was taken out; the field keeps its own
        else
            value = at(reference.numbers.front());
        if (!reference.field->setValue(*owner, value))
            refuse(reference.numbers.empty() ? 0 : reference.numbers.front(), owner->getType());
    }
}
