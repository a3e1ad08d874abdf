#include "kxTrustStore.h"

#include <kernel/kxPreferencesStore.h>
#include <kxLog.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QSaveFile>

#include <algorithm>
#include <utility>

namespace
{
constexpr qint64 LargestFile = 64 << 20;
constexpr std::size_t MostUnsaved = 2000; ///< pieces written here that are in no file
constexpr int DigestSize = 32;
constexpr int LockTime = 2000; // milliseconds

// Either of the last two, so that who knows of no refusals allows nothing.
const QLatin1String FilesKey("files"), NameKey("name"), TimeKey("time"), CodeKey("code"), RefusedKey("refused");

QString path()
{
    return kxPreferencesStore::settingsFolder() + QStringLiteral("/trusted.json");
}

QString stampOf(const QString& file)
{
    const QFileInfo info(file);
    return info.exists() ? QStringLiteral("%1 %2").arg(info.lastModified().toMSecsSinceEpoch()).arg(info.size())
                         : QString();
}

void drop(std::vector<QByteArray>& from, const std::vector<QByteArray>& code)
{
    from.erase(std::remove_if(from.begin(), from.end(),
                              [&code](const QByteArray& digest)
                              { return std::find(code.begin(), code.end(), digest) != code.end(); }),
               from.end());
}
} // namespace

void kxTrustStore::refresh()
{
    if (_path != path() || _stamp != stampOf(path()))
        read();
}

void kxTrustStore::read()
{
    _path = path();
    _stamp = stampOf(_path);
    _files.clear();
    _code.clear();
    _refused.clear();
    QFile file(_path);
    if (_stamp.isEmpty() || file.size() > LargestFile || !file.open(QIODevice::ReadOnly))
        return;
    const QJsonArray files = QJsonDocument::fromJson(file.readAll()).object()[FilesKey].toArray();
    for (const QJsonValue& value : files)
    {
        const QJsonObject object = value.toObject();
        File read{object[NameKey].toString(),
                  QDateTime::fromString(object[TimeKey].toString(), Qt::ISODate),
                  {},
                  object.contains(RefusedKey)};
        for (const QJsonValue& code : object[read.isRefused ? RefusedKey : CodeKey].toArray())
            if (const QByteArray digest = QByteArray::fromHex(code.toString().toLatin1()); digest.size() == DigestSize)
            {
                read.code.push_back(digest);
                (read.isRefused ? _refused : _code).insert(digest);
            }
        if (!read.code.empty())
            _files.push_back(read);
    }
}

bool kxTrustStore::write()
{
    QJsonArray files;
    _code.clear();
    _refused.clear();
    for (const File& file : _files)
    {
        QJsonArray code;
        for (const QByteArray& digest : file.code)
        {
            code.append(QString::fromLatin1(digest.toHex()));
            (file.isRefused ? _refused : _code).insert(digest);
        }
        files.append(QJsonObject{{NameKey, file.name},
                                 {TimeKey, file.time.toString(Qt::ISODate)},
                                 {file.isRefused ? RefusedKey : CodeKey, code}});
    }
    QSaveFile file(_path);
    const bool isWritten = file.open(QIODevice::WriteOnly) &&
                           file.write(QJsonDocument(QJsonObject{{FilesKey, files}}).toJson()) > 0 && file.commit();
    _stamp = stampOf(_path);
    return isWritten;
}

void kxTrustStore::change(const std::function<void()>& edit)
{
    QDir().mkpath(kxPreferencesStore::settingsFolder());
    QLockFile lock(path() + QStringLiteral(".lock"));
    const bool isMine = lock.tryLock(LockTime);
    refresh();
    edit();
    _files.erase(std::remove_if(_files.begin(), _files.end(), [](const File& file) { return file.code.empty(); }),
                 _files.end());
    if ((!write() || !isMine) && !std::exchange(_isWarned, true))
        kxLog::warning(QCoreApplication::translate("kxTrustStore",
                                                   "Which code may run can't be remembered: '%1' can't be written.")
                           .arg(_path));
}

kxTrustStore::File& kxTrustStore::fileOf(const QString& name, bool isRefused)
{
    File file{name, {}, {}, isRefused};
    const auto found =
        std::find_if(_files.begin(), _files.end(), [&file](const File& other) { return other.is(file); });
    if (found != _files.end())
    {
        file = *found;
        _files.erase(found);
    }
    file.time = QDateTime::currentDateTime();
    _files.push_back(file);
    return _files.back();
}

bool kxTrustStore::contains(const QByteArray& code)
{
    refresh();
    return _code.contains(code);
}

bool kxTrustStore::isRefused(const QByteArray& code)
{
    refresh();
    return _refused.contains(code);
}

bool kxTrustStore::holds(const QString& name, const std::vector<QByteArray>& code)
{
    const auto has = [&](const QString& file, const QByteArray& digest)
    {
        return std::any_of(files().begin(), files().end(),
                           [&](const File& other)
                           {
                               return other.name == file && !other.isRefused &&
                                      std::find(other.code.begin(), other.code.end(), digest) != other.code.end();
                           });
    };
    return std::all_of(code.begin(), code.end(),
                       [&](const QByteArray& digest) { return has(name, digest) && !has(QString(), digest); });
}

const std::vector<kxTrustStore::File>& kxTrustStore::files()
{
    refresh();
    return _files;
}

void kxTrustStore::put(const QString& name, bool isRefused, const std::vector<QByteArray>& code)
{
    change(
        [&]
        {
            for (File& file : _files) // what was written here is in a file from now on
                if (file.name.isEmpty() || file.isRefused != isRefused)
                    drop(file.code, code);
            std::vector<QByteArray>& all = fileOf(name, isRefused).code;
            drop(all, code);
            all.insert(all.end(), code.begin(), code.end());
            if (name.isEmpty() && all.size() > MostUnsaved)
                all.erase(all.begin(), all.end() - MostUnsaved);
        });
}

void kxTrustStore::add(const QString& name, const std::vector<QByteArray>& code)
{
    put(name, false, code);
}

void kxTrustStore::refuse(const QString& name, const std::vector<QByteArray>& code)
{
    put(name, true, code);
}

void kxTrustStore::remove(const std::vector<File>& files)
{
    const auto goes = [&files](const File& file)
    { return std::any_of(files.begin(), files.end(), [&file](const File& other) { return other.is(file); }); };
    change([&] { _files.erase(std::remove_if(_files.begin(), _files.end(), goes), _files.end()); });
}
