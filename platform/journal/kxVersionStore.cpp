#include <journal/kxVersionStore.h>

#include <files/scene/kxEnvelope.h>
#include <files/scene/kxFileReport.h>
#include <files/scene/kxFileSuffixes.h>
#include <kernel/kxPreferencesStore.h>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QUuid>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include <sys/stat.h>

namespace
{
constexpr const char IndexName[] = "index.db";
constexpr const char PartSuffix[] = ".part"; ///< of a file that is on its way
constexpr qint64 DaySeconds = qint64(24) * 60 * 60;

QString tr(const char* text)
{
    return QCoreApplication::translate("kxVersions", text);
}

QByteArray headOf(const QString& file)
{
    QFile in(file);
    return in.open(QIODevice::ReadOnly) ? in.read(kxEnvelope::HeadSize) : QByteArray();
}

bool isSameFile(const QString& a, const QString& b)
{
    struct stat first = {}, second = {};
    if (stat(QFile::encodeName(a).constData(), &first) != 0 || stat(QFile::encodeName(b).constData(), &second) != 0)
        return false;
    if (first.st_dev == second.st_dev && first.st_ino == second.st_ino)
        return true;
    QFile one(a), other(b);
    if (first.st_size != second.st_size || headOf(a) != headOf(b) || !one.open(QIODevice::ReadOnly) ||
        !other.open(QIODevice::ReadOnly))
        return false;
    const uchar* const left = one.map(0, one.size());
    const uchar* const right = other.map(0, other.size());
    return left != nullptr && right != nullptr && std::memcmp(left, right, std::size_t(one.size())) == 0;
}

/// The files of a folder by their numbers.
std::vector<qint64> filesIn(const QString& folder)
{
    std::vector<qint64> numbers;
    const QStringList names =
        QDir(folder).entryList({QStringLiteral("*.") + QLatin1String(kxFileSuffix::Scene)}, QDir::Files, QDir::Name);
    for (const QString& name : names)
        if (const qint64 number = QFileInfo(name).completeBaseName().toLongLong(); number > 0)
            numbers.push_back(number);
    return numbers;
}

/// Of all scenes that have versions.
QStringList folders()
{
    QStringList folders;
    const QString root = kxVersionStore::rootFolder() + QLatin1Char('/');
    for (const QString& name : QDir(root).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        folders << root + name;
    return folders;
}

/// What a crash left half written.
void removeParts(const QString& folder, const QDateTime& now)
{
    const QFileInfoList parts =
        QDir(folder).entryInfoList({QLatin1Char('*') + QString::fromLatin1(PartSuffix)}, QDir::Files);
    for (const QFileInfo& part : parts)
        if (part.lastModified().secsTo(now) > DaySeconds)
            QFile::remove(part.filePath());
}

QString canonical(const QString& path)
{
    const QFileInfo file(path);
    const QString whole = file.canonicalFilePath();
    if (!whole.isEmpty())
        return whole;
    const QString folder = QFileInfo(file.absolutePath()).canonicalFilePath();
    return folder.isEmpty() ? QDir::cleanPath(file.absoluteFilePath()) : folder + QLatin1Char('/') + file.fileName();
}
} // namespace

kxVersionStore::kxVersionStore(const QString& folder, const QString& document)
    : _folder(folder), _document(document.isEmpty() ? QString() : canonical(document))
{
}

kxVersionStore::~kxVersionStore() = default;

QString kxVersionStore::rootFolder()
{
    return kxPreferencesStore::settingsFolder() + QStringLiteral("/versions");
}

QString kxVersionStore::folderOf(const QString& path)
{
    const QString whole = canonical(path);
    // For people who look into the folder; the digest tells scenes apart.
    QString name = QFileInfo(whole).completeBaseName().left(40);
    name.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9_-]")), QStringLiteral("_"));
    const QByteArray digest = QCryptographicHash::hash(whole.toUtf8(), QCryptographicHash::Sha1).toHex().left(16);
    return rootFolder() + QLatin1Char('/') + name + QLatin1Char('-') + QString::fromLatin1(digest);
}

QString kxVersionStore::makeNeverSavedFolder()
{
    static int count = 0;
    return QStringLiteral("%1/unsaved-%2-%3-%4")
        .arg(rootFolder(), QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss")))
        .arg(QCoreApplication::applicationPid())
        .arg(++count);
}

bool kxVersionStore::isNeverSaved(const QString& folder)
{
    // A digest, as folderOf() puts it behind the name, has no such parts.
    static const QRegularExpression form(QStringLiteral("^unsaved-\\d{8}-\\d{6}-\\d+-\\d+$"));
    return form.match(QFileInfo(folder).fileName()).hasMatch();
}

std::vector<kxVersionStore::Document> kxVersionStore::documents()
{
    std::vector<Document> documents;
    for (const QString& folder : folders())
    {
        kxVersionStore store(folder);
        const std::vector<kxVersion> versions = store.list();
        if (!versions.empty())
            documents.push_back({store.folder(), store._index->document(), isNeverSaved(folder), versions.back().time,
                                 int(versions.size())});
    }
    std::sort(documents.begin(), documents.end(), [](const Document& a, const Document& b) { return a.last > b.last; });
    return documents;
}

QString kxVersionStore::failure() const
{
    return _index == nullptr || !_failure.isEmpty() ? _failure : _index->failure();
}

void kxVersionStore::fail(const QString& why)
{
    if (failure().isEmpty())
        _failure = why;
}

bool kxVersionStore::open(bool makes)
{
    const QString file = _folder + QLatin1Char('/') + QLatin1String(IndexName);
    if (_index != nullptr && QFile::exists(file))
        return failure().isEmpty();
    _index.reset(); // another process has tidied up
    if (!makes && !QFile::exists(file) && filesIn(_folder).empty())
        return false;
    if (!QDir().mkpath(_folder))
        fail(tr("the folder '%1' can't be made").arg(QDir::toNativeSeparators(_folder)));
    _index = std::make_unique<kxVersionIndex>(file);
    if (_index->isDamaged())
        mend();
    _index->begin();
    if (!_document.isEmpty() && _index->document() != _document)
        _index->setDocument(_document);
    reconcile();
    return _index->commit() && failure().isEmpty();
}

void kxVersionStore::mend()
{
    const QString file = _folder + QLatin1Char('/') + QLatin1String(IndexName);
    _index.reset();
    for (const char* const suffix : {"", "-wal", "-shm"})
        QFile::remove(file + QLatin1String(suffix));
    _index = std::make_unique<kxVersionIndex>(file);
    _notes << tr("the index of the versions was damaged. It is made again from the files; names and pictures are lost");
}

/// Files and entries that stand alone come from a crash, or from somebody who tidied up.
void kxVersionStore::reconcile()
{
    const std::vector<qint64> files = filesIn(_folder);
    std::vector<qint64> known;
    for (const kxVersion& version : _index->versions())
    {
        known.push_back(version.number);
        if (std::binary_search(files.begin(), files.end(), version.number))
            continue;
        _notes << tr("the file of version %1 (%2) is gone").arg(version.number).arg(version.title());
        _index->remove(version.number);
    }
    for (const qint64 number : files)
        if (!std::binary_search(known.begin(), known.end(), number))
        {
            const QFileInfo info(file(number));
            kxVersion version;
            version.number = number;
            version.time = info.lastModified();
            version.size = info.size();
            version.head = headOf(file(number));
            _index->insert(version);
        }
}

std::vector<kxVersion> kxVersionStore::list()
{
    return open(false) ? _index->versions() : std::vector<kxVersion>();
}

std::optional<kxVersion> kxVersionStore::last()
{
    return open(false) ? _index->last() : std::nullopt;
}

std::optional<kxVersion> kxVersionStore::find(qint64 number)
{
    for (const kxVersion& version : list())
        if (version.number == number)
            return version;
    return std::nullopt;
}

bool kxVersionStore::holds(const QString& file)
{
    const QByteArray head = headOf(file);
    const std::vector<kxVersion> versions = list();
    return std::any_of(versions.rbegin(), versions.rend(),
                       [&](const kxVersion& version)
                       { return version.head == head && isSameFile(this->file(version.number), file); });
}

QString kxVersionStore::file(qint64 number) const
{
    return QStringLiteral("%1/%2.%3")
        .arg(_folder)
        .arg(number, 6, 10, QLatin1Char('0'))
        .arg(QLatin1String(kxFileSuffix::Scene));
}

bool kxVersionStore::isSound(const kxVersion& version, QString& reason) const
{
    const QString path = file(version.number);
    if (!QFile::exists(path))
        reason = tr("its file is gone");
    else if (QFileInfo(path).size() != version.size || headOf(path) != version.head)
        reason = tr("its file was changed since it was kept");
    else
        return true;
    return false;
}

bool kxVersionStore::isWhole(const kxVersion& version, QString& reason) const
{
    if (!isSound(version, reason))
        return false;
    kxEnvelopeReader in;
    kxFileReport report;
    const bool isWhole = in.open(file(version.number), kxEnvelope::SceneMagic, report);
    reason = report.error();
    return isWhole;
}

QString kxVersionStore::temporary()
{
    return open(true) ? _folder + QLatin1Char('/') + QUuid::createUuid().toString(QUuid::WithoutBraces) +
                            QLatin1String(PartSuffix)
                      : QString();
}

qint64 kxVersionStore::move(kxVersion version, const QString& part)
{
    if (!open(true))
        return 0;
    version.size = QFileInfo(part).size();
    version.head = headOf(part);
    if (!version.time.isValid())
        version.time = QDateTime::currentDateTime();
    _index->begin();
    const std::optional<kxVersion> last = _index->last();
    const bool isNameless = version.name.isEmpty() || (last && (last->name.isEmpty() || last->name == version.name));
    if (last && isNameless && isSameFile(file(last->number), part))
    {
        if (!version.name.isEmpty())
            _index->rename(last->number, version.name);
        QFile::remove(part);
        return _index->commit() ? last->number : 0;
    }
    version.number = _index->nextNumber();
    const QString place = file(version.number);
    if (std::rename(QFile::encodeName(part).constData(), QFile::encodeName(place).constData()) == 0)
        _index->insert(version);
    else
        fail(tr("'%1' can't be written").arg(QDir::toNativeSeparators(place)));
    return _index->commit() && failure().isEmpty() ? version.number : 0;
}

qint64 kxVersionStore::copy(const kxVersion& version, const QString& from)
{
    const std::optional<kxVersion> newest = version.name.isEmpty() ? last() : std::nullopt;
    if (newest && isSameFile(file(newest->number), from))
        return newest->number;
    const QString part = temporary();
    if (part.isEmpty())
        return 0;
    // Never a link, which what another program writes into the original would go into too. Where the file system can do
    // that, the copy shares the blocks on disk.
    if (QFile::copy(from, part))
        return move(version, part);
    QFile::remove(part);
    fail(tr("'%1' can't be copied to '%2'").arg(QDir::toNativeSeparators(from), QDir::toNativeSeparators(_folder)));
    return 0;
}

void kxVersionStore::adopt(kxVersionStore& other)
{
    for (const kxVersion& version : other.list())
        if (move(version, other.file(version.number)) == 0)
            return; // what is left stays where it is
    other._index.reset();
    QDir(other._folder).removeRecursively();
}

void kxVersionStore::rename(qint64 number, const QString& name)
{
    if (open(false))
        _index->rename(number, name);
}

void kxVersionStore::setPicture(qint64 number, const QByteArray& picture)
{
    if (open(false))
        _index->setPicture(number, picture);
}

void kxVersionStore::remove(qint64 number)
{
    if (!open(false))
        return;
    _index->remove(number);
    QFile::remove(file(number));
}

QByteArray kxVersionStore::changes(qint64 number, qint64 since)
{
    return open(false) ? _index->changes(number, since) : QByteArray();
}

void kxVersionStore::setChanges(qint64 number, qint64 since, const QByteArray& changes)
{
    if (open(false))
        _index->setChanges(number, since, changes);
}

qint64 kxVersionBounds::apply(const QString& folder, qint64 newest, const QDateTime& now) const
{
    struct Kept
    {
        kxVersionStore* store;
        kxVersion version;
    };
    std::vector<std::unique_ptr<kxVersionStore>> stores;
    std::vector<Kept> kept;
    qint64 total = 0;
    for (const QString& each : folders())
    {
        removeParts(each, now);
        stores.push_back(std::make_unique<kxVersionStore>(each));
        for (const kxVersion& version : stores.back()->list())
            if (each != folder || version.number != newest)
                kept.push_back({stores.back().get(), version});
            else
                total += version.size;
    }
    std::sort(kept.begin(), kept.end(),
              [](const Kept& a, const Kept& b)
              {
                  return a.version.name.isEmpty() != b.version.name.isEmpty() ? a.version.name.isEmpty()
                                                                              : a.version.time < b.version.time;
              });
    for (const Kept& each : kept)
        total += each.version.size;
    const QDateTime oldest = now.addSecs(-days * DaySeconds);
    for (const Kept& each : kept)
        if (total > bytes || (each.version.name.isEmpty() && each.version.time < oldest))
        {
            total -= each.version.size;
            each.store->remove(each.version.number);
        }
    for (const auto& store : stores)
        if (store->list().empty())
            QDir(store->folder()).removeRecursively();
    return total;
}
