#include <journal/kxRecovery.h>

#include <files/scene/kxCborInput.h>
#include <files/scene/kxContainerWriter.h>
#include <files/scene/kxEnvelope.h>
#include <files/scene/kxFieldCodec.h>
#include <files/scene/kxSceneContent.h>
#include <files/scene/kxSceneFile.h>
#include <journal/kxContainerRecord.h>
#include <journal/kxJournalSalvage.h>
#include <journal/kxJournalStore.h>
#include <journal/kxVersionStore.h>
#include <osg/AnimNode.h>

#include <QDataStream>
#include <QFileInfo>

#include <algorithm>
#include <optional>
#include <unordered_map>

using namespace osg;

namespace
{
constexpr std::size_t Tops = 5;

/// The class of a container as a payload lists it.
struct Class
{
    std::string name;
    const FieldContainerType* type = nullptr;
    std::vector<std::pair<std::string, std::size_t>> fields; // with their kinds
};

/// One container, whichever way it was stored; numbers are ids of the session.
struct Container
{
    std::size_t kind = 0;           ///< index of its class
    std::vector<QByteArray> values; ///< as stored; those of references are in `references`
    std::vector<std::vector<UInt32>> references;
    kxContainerForm::Numbers structure;
};

bool isOwnedByField(const FieldContainerType* type)
{
    return type != nullptr && (!type->isDerivedFrom(Node::_type) || type->isDerivedFrom(AnimNodeBase::_type));
}

/// Where the file that is meant lies, or a version that was kept of it; empty where it is nowhere any more.
QString fileOf(const kxSceneOrigin& origin)
{
    QFile file(origin.path);
    if (origin.isEmpty() || (file.open(QIODevice::ReadOnly) && file.read(kxEnvelope::HeadSize) == origin.head))
        return origin.path;
    kxVersionStore versions(kxVersionStore::folderOf(origin.path));
    for (const kxVersion& version : versions.list())
        if (version.head == origin.head)
            return versions.file(version.number);
    return QString();
}
} // namespace

QByteArray kxJournalNote::toBytes(const kxSceneOrigin& origin)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << origin.path << origin.head << quint32(origin.containers.size());
    for (const kxSceneOrigin::Place& place : origin.containers)
        out << quint32(place.id);
    return bytes;
}

kxSceneOrigin kxJournalNote::toOrigin(const QByteArray& bytes)
{
    kxSceneOrigin origin;
    QDataStream in(bytes);
    quint32 count = 0;
    in >> origin.path >> origin.head >> count;
    for (; count > 0 && in.status() == QDataStream::Ok; --count)
    {
        quint32 id = 0;
        in >> id;
        origin.containers.push_back({id, 0});
    }
    return in.status() == QDataStream::Ok ? origin : kxSceneOrigin();
}

/// Gathers what the scene consisted of, from the records and from the file below them, and writes it as a file's
/// payload, which kxSceneFile then reads with all its checks.
class kxRecovery::Payload
{
public:
    /// `isDamaged`: what is missing is left out.
    Payload(kxJournalStore& store, kxFileReport& report, bool isDamaged)
        : _store(store), _report(report), _isDamaged(isDamaged)
    {
    }

    // False where the report says why.
    bool readBase();
    bool gather();
    QByteArray write();

private:
    bool readBaseFile(const QString& path, const kxSceneOrigin& origin);
    bool readBaseContainers(kxCborInput& in, const kxSceneOrigin& origin);
    void readClasses(kxCborInput& in);
    Container readBaseContainer(kxCborInput& in, const std::vector<UInt32>& ids);
    std::optional<Container> fromRecord(const QByteArray& record);
    void follow(const Container& container);
    void want(UInt32 id);
    const FieldContainerType* typeOf(UInt32 id);
    std::size_t classOf(const FieldContainerType& type);
    void writeClasses(QCborStreamWriter& out) const;
    void writeContainer(QCborStreamWriter& out, const Container& container) const;
    void writeValue(QCborStreamWriter& out, const QByteArray& slice, std::size_t kind) const;
    kxContainerForm::Numbers numbersOf(kxContainerForm::Numbers structure) const;
    quint32 number(UInt32 id) const
    {
        const auto found = _numbers.find(id);
        return found == _numbers.end() ? 0 : found->second;
    }

    kxJournalStore& _store;
    kxFileReport& _report;
    bool _isDamaged;
    kxEnvelopeReader _file;
    std::vector<Class> _classes;
    std::unordered_map<const FieldContainerType*, std::size_t> _classByType;
    std::unordered_map<UInt32, Container> _base; // values lie in the mapped file
    std::vector<UInt32> _tops;
    kxSceneRecord::Content _scene;
    std::vector<UInt32> _order;                   // of what the scene owns
    std::unordered_map<UInt32, quint32> _numbers; // place in _containers, from 1; 0 for what is left out
    std::vector<Container> _containers;           // in that order
    std::vector<QByteArray> _records;             // the values lie in them
};

bool kxRecovery::Payload::readBase()
{
    const kxSceneOrigin candidate = kxJournalNote::toOrigin(_store.note(kxJournalNote::Candidate));
    const kxSceneOrigin base = kxJournalNote::toOrigin(_store.note(kxJournalNote::Base));
    for (const kxSceneOrigin* const origin : {&candidate, &base})
        if (const QString path = fileOf(*origin); !path.isEmpty())
            return readBaseFile(path, *origin);
    if (base.isEmpty())
        return true;
    _report.note(QFileInfo::exists(base.path)
                     ? QStringLiteral("'%1' is another file now than the one that was open").arg(base.path)
                     : QStringLiteral("'%1' isn't there any more").arg(base.path));
    return true;
}

bool kxRecovery::Payload::readBaseFile(const QString& path, const kxSceneOrigin& origin)
{
    if (!_file.open(path, kxEnvelope::SceneMagic, _report))
        return false;
    kxCborInput in(_file.data(), _file.size(), _report);
    bool isRead = false;
    for (quint64 i = in.enterMap(); i > 0 && !in.failed() && !isRead; --i)
    {
        const std::string key = in.readText();
        if (key == "classes")
            readClasses(in);
        else if (key == "containers")
            isRead = readBaseContainers(in, origin);
        else
            in.skip();
    }
    return isRead && !in.failed();
}

void kxRecovery::Payload::readClasses(kxCborInput& in)
{
    for (quint64 i = in.enterArray(); i > 0 && !in.failed(); --i)
    {
        in.enterArray();
        Class entry{in.readText(), nullptr, {}};
        entry.type = FieldContainerType::find(entry.name);
        for (quint64 f = in.enterArray(); f > 0 && !in.failed(); --f)
        {
            in.enterArray();
            std::string name = in.readText();
            entry.fields.emplace_back(std::move(name), std::size_t(in.readUInt(0xffffu)));
            in.leave();
        }
        in.leave();
        in.leave();
        _classes.push_back(std::move(entry));
    }
    in.leave();
}

bool kxRecovery::Payload::readBaseContainers(kxCborInput& in, const kxSceneOrigin& origin)
{
    std::vector<UInt32> ids{0};
    for (const kxSceneOrigin::Place& place : origin.containers)
        ids.push_back(place.id);
    const quint64 count = in.enterArray();
    if (count != origin.containers.size())
        return in.fail(QStringLiteral("the journal speaks of another number of objects than the file holds"));
    for (quint64 i = 1; i <= count && !in.failed(); ++i)
    {
        Container container = readBaseContainer(in, ids);
        if (ids[i] != 0)
            _base[ids[i]] = std::move(container);
    }
    in.leave();
    return !in.failed();
}

Container kxRecovery::Payload::readBaseContainer(kxCborInput& in, const std::vector<UInt32>& ids)
{
    const auto toId = [&ids](quint32& number) { number = number < ids.size() ? ids[number] : 0; };
    Container container;
    in.enterArray();
    container.kind = std::size_t(in.readUInt(_classes.empty() ? 0 : _classes.size() - 1));
    const quint64 count = in.enterArray();
    if (_classes.empty() || count != _classes[container.kind].fields.size())
        in.fail(QStringLiteral("an object lacks values"));
    container.references.resize(in.failed() ? 0 : std::size_t(count));
    for (std::size_t i = 0; i < container.references.size() && !in.failed(); ++i)
    {
        const qint64 start = in.offset();
        if (kxFieldCodec::isReference(_classes[container.kind].fields[i].second))
        {
            container.references[i] = kxContainerRecord::readIds(in);
            std::for_each(container.references[i].begin(), container.references[i].end(), toId);
        }
        else
            in.skip();
        container.values.push_back(QByteArray::fromRawData(_file.data() + start, int(in.offset() - start)));
    }
    in.leave();
    container.structure = kxContainerRecord::readStructure(in);
    toId(container.structure.core);
    for (auto* const list :
         {&container.structure.attachments, &container.structure.children, &container.structure.coreParents})
        std::for_each(list->begin(), list->end(), toId);
    in.leave();
    return container;
}

std::size_t kxRecovery::Payload::classOf(const FieldContainerType& type)
{
    const auto [entry, isNew] = _classByType.try_emplace(&type, _classes.size());
    if (isNew)
    {
        Class made{type.getName(), &type, {}};
        for (const kxContainerForm::Field& field : kxContainerForm::fields(type))
            made.fields.emplace_back(field.description->name(), field.kind);
        _classes.push_back(std::move(made));
    }
    return entry->second;
}

const FieldContainerType* kxRecovery::Payload::typeOf(UInt32 id)
{
    if (const QByteArray record = _store.latest(id); !record.isEmpty())
        return kxContainerRecord::type(record);
    const auto found = _base.find(id);
    return found == _base.end() ? nullptr : _classes[found->second.kind].type;
}

void kxRecovery::Payload::want(UInt32 id)
{
    if (id != 0 && _numbers.try_emplace(id, 0).second)
        _order.push_back(id);
}

void kxRecovery::Payload::follow(const Container& container)
{
    std::for_each(container.structure.attachments.begin(), container.structure.attachments.end(),
                  [this](UInt32 id) { want(id); });
    want(container.structure.core);
    std::for_each(container.structure.children.begin(), container.structure.children.end(),
                  [this](UInt32 id) { want(id); });
    for (const std::vector<UInt32>& list : container.references)
        for (const UInt32 id : list)
            if (id != 0 && isOwnedByField(typeOf(id)))
                want(id);
}

bool kxRecovery::Payload::gather()
{
    _tops = kxContainerRecord::ids(_store.note(kxJournalNote::Tops));
    _scene = kxSceneRecord::read(_store.latest(kxSceneRecord::Id));
    _tops.resize(Tops);
    std::for_each(_tops.begin(), _tops.end(), [this](UInt32 id) { want(id); });
    std::for_each(_scene.materials.begin(), _scene.materials.end(), [this](UInt32 id) { want(id); });
    std::size_t missing = 0;
    for (std::size_t i = 0; i < _order.size(); ++i) // which grows
    {
        const QByteArray record = _store.latest(_order[i]);
        const auto found = _base.find(_order[i]);
        if (std::optional<Container> container = record.isEmpty() ? std::nullopt : fromRecord(record))
            _containers.push_back(std::move(*container));
        else if (record.isEmpty() && found != _base.end())
            _containers.push_back(found->second);
        else if (_isDamaged)
        {
            ++missing;
            continue;
        }
        else
            return _report.fail(
                QStringLiteral("what the journal holds is no whole scene%1")
                    .arg(_report.notes().isEmpty() ? QString() : QStringLiteral(": ") + _report.notes().first()));
        follow(_containers.back());
        _numbers[_order[i]] = quint32(_containers.size());
    }
    if (_isDamaged)
        _report.note(missing == 0
                         ? QStringLiteral("the journal is damaged; this is the last state that can be read")
                         : QStringLiteral("the journal is damaged; this is the last state that can be read. Parts "
                                          "of it that are missing: %1")
                               .arg(missing));
    return number(_tops.front()) != 0 ||
           _report.fail(QStringLiteral("the journal is damaged: nothing of the scene can be read"));
}

std::optional<Container> kxRecovery::Payload::fromRecord(const QByteArray& record)
{
    kxContainerRecord::Content read = kxContainerRecord::read(record);
    if (read.type == nullptr || read.values.size() != kxContainerForm::fields(*read.type).size())
        return std::nullopt;
    _records.push_back(record);
    Container container{classOf(*read.type), std::move(read.values), {}, std::move(read.structure)};
    const std::vector<kxContainerForm::Field>& fields = kxContainerForm::fields(*read.type);
    container.references.resize(fields.size());
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (kxFieldCodec::isReference(fields[i].kind))
            container.references[i] = kxContainerRecord::ids(container.values[i]);
    return container;
}

kxContainerForm::Numbers kxRecovery::Payload::numbersOf(kxContainerForm::Numbers structure) const
{
    structure.core = number(structure.core);
    for (auto* const list : {&structure.attachments, &structure.children, &structure.coreParents})
    {
        for (quint32& id : *list)
            id = number(id);
        list->erase(std::remove(list->begin(), list->end(), quint32(0)), list->end());
    }
    return structure;
}

void kxRecovery::Payload::writeContainer(QCborStreamWriter& out, const Container& container) const
{
    const Class& entry = _classes[container.kind];
    out.startArray(3);
    out.append(quint64(container.kind));
    out.startArray(quint64(entry.fields.size()));
    for (std::size_t i = 0; i < entry.fields.size(); ++i)
    {
        if (!kxFieldCodec::isReference(entry.fields[i].second))
        {
            writeValue(out, container.values[i], entry.fields[i].second);
            continue;
        }
        std::vector<quint32> numbers;
        for (const UInt32 id : container.references[i])
            numbers.push_back(number(id));
        if (entry.fields[i].second == kxFieldCodec::ReferenceListKind)
            kxContainerForm::writeNumbers(out, numbers);
        else
            out.append(quint64(numbers.empty() ? 0 : numbers.front()));
    }
    out.endArray();
    kxContainerForm::writeStructure(out, numbersOf(container.structure));
    out.endArray();
}

void kxRecovery::Payload::writeValue(QCborStreamWriter& out, const QByteArray& slice, std::size_t kind) const
{
    kxCborInput in(slice.constData(), slice.size(), _report);
    const FieldValue value = kxFieldCodec::read(in, kind);
    if (!in.failed())
        kxFieldCodec::write(out, value, false);
}

void kxRecovery::Payload::writeClasses(QCborStreamWriter& out) const
{
    kxContainerWriter::appendKey(out, "classes");
    out.startArray(quint64(_classes.size()));
    for (const Class& entry : _classes)
    {
        out.startArray(2);
        kxContainerWriter::appendText(out, entry.name);
        out.startArray(quint64(entry.fields.size()));
        for (const auto& [name, kind] : entry.fields)
        {
            out.startArray(2);
            kxContainerWriter::appendText(out, name);
            out.append(quint64(kind));
            out.endArray();
        }
        out.endArray();
        out.endArray();
    }
    out.endArray();
}

QByteArray kxRecovery::Payload::write()
{
    static constexpr const char* TopKeys[Tops] = {"root", "sceneplates", "scenery", "clips", "sceneStructure"};
    QByteArray payload;
    QCborStreamWriter out(&payload);
    const quint32 camera = number(_store.note(kxJournalNote::Camera).toUInt());
    out.startMap(quint64(Tops) + (camera == 0 ? 5 : 6));
    writeClasses(out);
    kxContainerWriter::appendKey(out, "containers");
    out.startArray(quint64(_containers.size()));
    for (const Container& container : _containers)
        writeContainer(out, container);
    out.endArray();
    for (std::size_t i = 0; i < Tops; ++i)
    {
        kxContainerWriter::appendKey(out, TopKeys[i]);
        out.append(quint64(number(_tops[i])));
    }
    if (camera != 0)
    {
        kxContainerWriter::appendKey(out, "camera");
        out.append(quint64(camera));
    }
    kxContainerWriter::appendKey(out, "materials");
    std::vector<quint32> materials;
    for (const UInt32 id : _scene.materials)
        materials.push_back(number(id));
    kxContainerForm::writeNumbers(out, materials);
    kxContainerWriter::appendKey(out, "settings");
    kxContainerWriter::writeMap(out, _scene.settings);
    kxContainerWriter::appendKey(out, "animation");
    kxContainerWriter::writeMap(out, _scene.animation);
    out.endMap();
    return payload;
}

kxRecovery::kxRecovery(const QString& file) : _file(file)
{
    const kxJournalSalvage salvage(file);
    // SQLite removes the log of an empty database, and leaves out of a log what follows on a damaged place.
    if (QFileInfo(file).size() > 0)
        _store = std::make_unique<kxJournalStore>(file, kxJournalStore::LeftBehind);
    if (_store == nullptr || salvage.newestLogged() > _store->stamp() || !isReadable())
        mend();
}

kxRecovery::~kxRecovery() = default;

void kxRecovery::mend()
{
    const bool isBlank = _store == nullptr || _store->isBlank();
    auto mended = std::make_unique<kxJournalStore>(QString());
    kxJournalSalvage(_file).run(*mended);
    _isDamaged = !isBlank || !mended->isBlank();
    _store = std::move(mended);
}

QString kxRecovery::note(const char* name) const
{
    return QString::fromUtf8(_store->note(name));
}

bool kxRecovery::hasChanges() const
{
    // Blank: its process ended before it had taken a scene.
    return _isDamaged || (!_store->isBlank() && note(kxJournalNote::Serial) != note(kxJournalNote::Saved));
}

bool kxRecovery::isReadable() const
{
    return !_store->latest(kxSceneRecord::Id).isEmpty() && !_store->note(kxJournalNote::Tops).isEmpty() &&
           !_store->note(kxJournalNote::Base).isEmpty() && _store->failure().isEmpty();
}

bool kxRecovery::read(kxSceneContent& content, kxFileReport& report)
{
    if (!_isDamaged && !_store->isWhole())
        mend();
    if (!isReadable())
        return report.fail(QStringLiteral("the journal is damaged: nothing of the scene can be read"));
    Payload payload(*_store, report, _isDamaged);
    if (!payload.readBase() || !payload.gather())
        return false;
    const QByteArray bytes = payload.write();
    if (!_store->failure().isEmpty())
        return report.fail(QStringLiteral("the journal can't be read: ") + _store->failure());
    if (report.failed() || !kxSceneFile::readPayload(bytes.constData(), bytes.size(), content, report))
        return false;
    content.origin = kxSceneOrigin(); // no file holds it
    return true;
}
