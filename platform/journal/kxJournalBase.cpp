#include <journal/kxJournalBase.h>

#include <files/scene/kxCborInput.h>
#include <files/scene/kxEnvelope.h>
#include <files/scene/kxFieldCodec.h>
#include <journal/kxContainerRecord.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Share.h>

#include <algorithm>
#include <optional>

#include <sys/stat.h>

using namespace osg;

kxJournalBase::kxJournalBase(kxSceneOrigin origin) : _origin(std::move(origin)), _file(_origin.path)
{
    if (_origin.isEmpty() || !_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ||
        _file.read(kxEnvelope::HeadSize) != _origin.head)
        return;
    _stamp = stamp();
    const QByteArray start = read(0, _origin.containers.front().offset);
    kxCborBytes in(start);
    readClasses(in);
    const auto byId = [](const kxSceneOrigin::Place& a, const kxSceneOrigin::Place& b) { return a.id < b.id; };
    const auto [first, last] = std::minmax_element(_origin.containers.begin(), _origin.containers.end(), byId);
    _firstId = first->id;
    _numbers.resize(last->id - first->id + 1);
    _isOwned.resize(_origin.containers.size() + 1);
    for (std::size_t i = 0; i < _origin.containers.size(); ++i)
    {
        const FieldContainerPtr container = FieldContainerFactory::the()->getContainer(_origin.containers[i].id);
        if (container == NullFC)
            continue;
        _numbers[container->getId() - _firstId] = quint32(i + 1);
        _isOwned[i + 1] = kxContainerForm::isOwnedByField(container);
    }
    _isValid = !_classes.empty();
}

kxJournalBase::Stamp kxJournalBase::stamp() const
{
    struct stat now = {};
    ::fstat(_file.handle(), &now); // QFile keeps what it has read once
    return {qint64(now.st_size), qint64(now.st_mtim.tv_sec), qint64(now.st_mtim.tv_nsec)};
}

bool kxJournalBase::isWritten() const
{
    const Stamp now = stamp();
    return now.size != _stamp.size || now.seconds != _stamp.seconds || now.nanoseconds != _stamp.nanoseconds;
}

QByteArray kxJournalBase::read(quint64 start, quint64 end)
{
    // Not mapped: a file that someone cuts off fails to be read, and no more.
    return _file.seek(kxEnvelope::HeadSize + qint64(start)) ? _file.read(qint64(end - start)) : QByteArray();
}

void kxJournalBase::readClasses(kxCborInput& in)
{
    in.enterMap();
    if (in.readText() != "classes")
        return;
    std::vector<Class> classes;
    for (quint64 i = in.enterArray(); i > 0 && !in.failed(); --i)
    {
        in.enterArray();
        Class entry{FieldContainerType::find(in.readText()), {}};
        for (quint64 f = in.enterArray(); f > 0 && !in.failed(); --f)
        {
            in.enterArray();
            const std::string name = in.readText();
            entry.fields.push_back(Field{name, std::size_t(in.readUInt(0xffffu))});
            in.leave();
        }
        in.leave();
        in.leave();
        classes.push_back(std::move(entry));
    }
    in.leave();
    if (!in.failed())
        _classes = std::move(classes);
}

QByteArray kxJournalBase::record(UInt32 id)
{
    const quint32 number = numberOf(id);
    if (number == 0)
        return QByteArray();
    const quint64 start = _origin.containers[number - 1].offset;
    const QByteArray bytes =
        read(start, number < _origin.containers.size() ? _origin.containers[number].offset : _origin.end);
    kxCborBytes in(bytes);
    const QByteArray record = transcoded(in);
    _isBroken = _isBroken || in.failed() || record.isEmpty();
    return _isBroken ? QByteArray() : record;
}

kxContainerForm::Numbers kxJournalBase::structure(kxCborInput& in) const
{
    kxContainerForm::Numbers numbers = kxContainerRecord::readStructure(in);
    for (std::vector<quint32>* list : {&numbers.attachments, &numbers.children, &numbers.coreParents})
        for (quint32& number : *list)
            number = idOf(number);
    numbers.core = idOf(numbers.core);
    return numbers;
}

QByteArray kxJournalBase::transcoded(kxCborInput& in) const
{
    in.enterArray();
    const quint64 index = in.readUInt(_classes.size() - 1);
    if (in.failed() || _classes[std::size_t(index)].type == nullptr)
        return QByteArray();
    const Class& entry = _classes[std::size_t(index)];
    const std::vector<kxContainerForm::Field>& fields = kxContainerForm::fields(*entry.type);
    std::vector<std::optional<FieldValue>> values(fields.size());
    std::vector<std::vector<UInt32>> references(fields.size());
    std::vector<UInt32> owned;
    const quint64 count = in.enterArray();
    for (std::size_t i = 0; i < count && i < entry.fields.size() && !in.failed(); ++i)
    {
        const auto field = std::find_if(fields.begin(), fields.end(),
                                        [&](const kxContainerForm::Field& each)
                                        { return each.description->name() == entry.fields[i].name; });
        const std::size_t place = std::size_t(field - fields.begin());
        if (field == fields.end() || field->kind != entry.fields[i].kind)
            in.skip();
        else if (!kxFieldCodec::isReference(field->kind))
            values[place] = kxFieldCodec::read(in, field->kind);
        else
            references[place] = kxContainerRecord::readIds(in);
    }
    in.leave();
    for (std::vector<UInt32>& numbers : references)
        for (UInt32& number : numbers)
        {
            const bool isOwned = idOf(number) != 0 && _isOwned[number];
            number = idOf(number);
            if (isOwned)
                owned.push_back(number);
        }

    QByteArray record;
    QCborStreamWriter out(&record);
    kxContainerRecord::writeHead(out, *entry.type, structure(in), owned);
    osg::Share<FieldContainer> blank; // for what an older file lacks
    out.startArray(quint64(fields.size()));
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (fields[i].kind == kxFieldCodec::ReferenceListKind)
            kxContainerForm::writeNumbers(out, references[i]);
        else if (fields[i].kind == kxFieldCodec::ReferenceKind)
            out.append(quint64(references[i].empty() ? 0 : references[i].front()));
        else
        {
            if (!values[i] && !blank)
                blank = FCPtr<FieldContainer>(entry.type->create());
            kxFieldCodec::write(out, values[i] ? *values[i] : fields[i].description->value(*blank), false);
        }
    out.endArray();
    out.endArray();
    return record;
}
