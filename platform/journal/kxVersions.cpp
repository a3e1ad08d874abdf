#include <journal/kxVersions.h>

#include <animation/kxPoses.h>
#include <files/scene/kxSceneFile.h>
#include <files/text/kxSceneDifference.h>
#include <journal/kxHistory.h>
#include <journal/kxHistoryNotice.h>
#include <journal/kxJournal.h>
#include <journal/kxSceneReplacement.h>
#include <kxController.h>
#include <kxFramePlayer.h>
#include <kxLog.h>
#include <kxMessageNames.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <algorithm>

namespace
{
constexpr int TickMs = 5000;
constexpr double LongestWriteMs = 300; ///< that nobody minds
constexpr int SlowMinutes = 30;        ///< between versions that take longer
constexpr double FirstBytesPerMs = 40000;
constexpr int MostLines = 300;
constexpr qint64 MinuteMs = 60000;

QByteArray toJson(const kxVersions::Changes& changes)
{
    QJsonArray lines;
    for (const kxVersions::Change& line : changes.lines)
        lines.append(QJsonArray{line.group, line.words});
    return QJsonDocument(QJsonObject{{QStringLiteral("lines"), lines}, {QStringLiteral("unlisted"), changes.unlisted}})
        .toJson(QJsonDocument::Compact);
}

kxVersions::Changes fromJson(const QByteArray& json)
{
    kxVersions::Changes changes;
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    changes.isKnown = object.contains(QStringLiteral("lines"));
    changes.unlisted = object.value(QStringLiteral("unlisted")).toInt();
    for (const QJsonValue& line : object.value(QStringLiteral("lines")).toArray())
        changes.lines.push_back({line.toArray().at(0).toString(), line.toArray().at(1).toString()});
    return changes;
}
} // namespace

kxVersions& kxVersions::the()
{
    static kxVersions* const versions = new kxVersions; // never freed, as the log it writes to at the end
    return *versions;
}

kxVersions::kxVersions() : _bytesPerMs(FirstBytesPerMs)
{
    connect(&_timer, &QTimer::timeout, this, &kxVersions::tick);
    setStore(QString(), QString());
}

void kxVersions::setSettings(const Settings& settings)
{
    _settings = settings;
    _total = -1;
    if (_settings.isOn)
        _timer.start(TickMs);
    else
        _timer.stop();
}

void kxVersions::setStore(const QString& path, const QString& source)
{
    const bool isNeverSaved = path.isEmpty();
    setStore(path, std::make_unique<kxVersionStore>(isNeverSaved ? kxVersionStore::makeNeverSavedFolder()
                                                                 : kxVersionStore::folderOf(path),
                                                    isNeverSaved ? source : path));
}

void kxVersions::setStore(const QString& path, std::unique_ptr<kxVersionStore> store)
{
    _path = path;
    _store = std::move(store);
    _sinceKept.start();
    _contentKept = content();
    _withoutPicture = _newest = 0;
    _lastSize = 0;
}

void kxVersions::opened(const QString& path, const QString& source)
{
    setStore(path, source);
    if (_settings.isOn && !path.isEmpty())
    {
        kxVersion version;
        version.reason = kxVersion::Opened;
        kept(_store->copy(version, path), false); // the view hasn't drawn it yet
    }
    Q_EMIT changed();
}

void kxVersions::recovered(const QString& path, const QString& neverSavedFolder)
{
    const QString folder = kxVersionStore::rootFolder() + QLatin1Char('/') + neverSavedFolder;
    if (kxVersionStore::isNeverSaved(folder))
        setStore(QString(), std::make_unique<kxVersionStore>(folder, path));
    else
        setStore(path, path);
    _contentKept = 0; // no version holds it
    Q_EMIT changed();
}

QString kxVersions::neverSavedFolder() const
{
    return _path.isEmpty() ? QFileInfo(_store->folder()).fileName() : QString();
}

void kxVersions::toBeSaved(const QString& path)
{
    if (!_settings.isOn || !QFile::exists(path))
        return;
    // Mostly it is what was kept when it was opened or saved last.
    kxVersionStore target(kxVersionStore::folderOf(path), path);
    if (target.holds(path))
        return;
    kxVersion version;
    version.reason = kxVersion::Overwritten;
    version.time = QFileInfo(path).lastModified();
    target.copy(version, path); // a failure is told when the scene that was saved is kept
}

void kxVersions::saved(const QString& path)
{
    const std::unique_ptr<kxVersionStore> before = std::exchange(_store, nullptr);
    const bool wasUnsaved = _path.isEmpty();
    setStore(path, path);
    if (wasUnsaved)
        _store->adopt(*before);
    if (_settings.isOn)
        kept(_store->copy(made(kxVersion::Saved, QString()), path), true);
    Q_EMIT changed();
}

kxVersion kxVersions::made(kxVersion::Reason reason, const QString& detail) const
{
    kxVersion version;
    version.reason = reason;
    version.detail = detail;
    if (takePicture)
        version.picture = takePicture();
    return version;
}

qint64 kxVersions::keepOpenScene(kxVersion version)
{
    const QString part = _store->temporary();
    if (part.isEmpty())
        return 0;
    kxSend(kxMessageName::EndGlides);
    kxHistory::the().settle();
    QElapsedTimer time;
    time.start();
    kxFileReport report(part);
    kxSceneOrigin origin; // of the copy, which nobody works on
    if (!kxSceneFile::save(part, report, origin))
    {
        _store->fail(report.error());
        return 0;
    }
    const qint64 size = QFileInfo(part).size();
    _bytesPerMs = double(size) / std::max(1.0, double(time.elapsed()));
    return _store->move(std::move(version), part);
}

void kxVersions::kept(qint64 number, bool hasPicture)
{
    if (number != 0)
    {
        _sinceKept.start();
        _contentKept = content();
        const std::optional<kxVersion> last = _store->last();
        _lastSize = last ? last->size : 0;
        if (!hasPicture && last && last->picture.isEmpty())
            _withoutPicture = number;
        _total = _total < 0 ? _total : _total + _lastSize;
        _newest = number;
        if (!_settings.isOn)
            applyBounds();
    }
    settle();
}

/// Looks into the folders of all scenes, which takes a moment.
void kxVersions::applyBounds()
{
    if (_newest == 0 || (_total >= 0 && _total <= _settings.bounds.bytes))
        return;
    _total = _settings.bounds.apply(_store->folder(), _newest, QDateTime::currentDateTime());
    Q_EMIT changed();
}

void kxVersions::settle()
{
    const QString name = _path.isEmpty() ? tr("this scene") : QLatin1Char('\'') + QFileInfo(_path).fileName() + '\'';
    for (const QString& note : _store->takeNotes())
        kxLog::warning(tr("Versions of %1: %2.").arg(name, note));
    if (_store->failure().isEmpty())
        return;
    if (!_warned.contains(_path))
        kxLog::warning(tr("Versions of %1 can't be kept: %2. The scene is as it is.").arg(name, _store->failure()));
    _warned.insert(_path);
    _store = std::make_unique<kxVersionStore>(_store->folder(), _path); // the next time may be better
}

quint64 kxVersions::content()
{
    kxHistory::the().settle(); // a change may be newer than the last entry
    return kxHistory::the().content();
}

bool kxVersions::isNew() const
{
    return content() != _contentKept || kxJournal::the().isPending(); // within a script nothing is an entry yet
}

bool kxVersions::isQuick() const
{
    return double(_lastSize) / _bytesPerMs < LongestWriteMs;
}

bool kxVersions::keepBefore(kxVersion::Reason reason, const QString& detail)
{
    if (!_settings.isOn || !isNew())
        return _settings.isOn;
    const bool isLong = wait && !isQuick();
    if (isLong)
        wait(true);
    const qint64 number = keepOpenScene(made(reason, detail));
    if (isLong)
        wait(false);
    _warned.remove(_path); // each time: what comes can't be taken back by a version then
    kept(number, true);
    Q_EMIT changed();
    return number != 0;
}

qint64 kxVersions::keep(const QString& name, QString& reason)
{
    kxVersion version = made(kxVersion::ByHand, QString());
    version.name = name;
    const qint64 number = keepOpenScene(version);
    reason = _store->failure();
    kept(number, true);
    Q_EMIT changed();
    return number;
}

void kxVersions::rename(qint64 number, const QString& name)
{
    _store->rename(number, name);
    settle();
    Q_EMIT changed();
}

void kxVersions::tick()
{
    if (QGuiApplication::mouseButtons() != Qt::NoButton || kxFramePlayer::the()->isPlaying() || (isBusy && isBusy()))
        return;
    addPicture();
    applyBounds();
    const int minutes = isQuick() ? _settings.minutes : std::max(_settings.minutes, SlowMinutes);
    if (_sinceKept.elapsed() < minutes * MinuteMs || !isNew())
        return;
    kept(keepOpenScene(made(kxVersion::Working, QString())), true);
    Q_EMIT changed();
}

void kxVersions::addPicture()
{
    const qint64 number = std::exchange(_withoutPicture, 0);
    if (number == 0 || !takePicture || isNew())
        return;
    _store->setPicture(number, takePicture());
    Q_EMIT changed();
}

bool kxVersions::goTo(qint64 number, kxFileReport& report)
{
    kxSceneContent content;
    const std::optional<kxVersion> version = _store->find(number);
    if (!read(*_store, number, content, report))
        return false;
    keepBefore(kxVersion::Leaving, QString::number(number));
    const QString poses = kxPoses::unsaved();
    const kxHistory::Scope scope(tr("Go to version %1 (%2)").arg(number).arg(version->title()));
    kxHistoryNotice notice;
    notice.listen();
    if (!kxSceneReplacement::run(content))
        return report.fail(
            tr("it had to be mended when it was read: %1").arg(report.notes().join(QStringLiteral("; "))));
    content = kxSceneContent();
    notice.tell();
    if (!poses.isEmpty())
        kxLog::warning(tr("No version has the poses that aren't keyed: %1.").arg(poses));
    return true;
}

bool kxVersions::read(kxVersionStore& store, qint64 number, kxSceneContent& content, kxFileReport& report)
{
    const std::optional<kxVersion> version = store.find(number);
    QString reason;
    if (!version)
        return report.fail(tr("there is no version %1").arg(number));
    if (!store.isSound(*version, reason))
        return report.fail(tr("version %1 is damaged: %2").arg(number).arg(reason));
    return kxSceneFile::read(store.file(number), content, report);
}

bool kxVersions::saveAs(kxVersionStore& store, qint64 number, const QString& path, kxFileReport& report)
{
    kxSceneContent content; // what is handed out can be opened
    kxFileReport kept(store.file(number));
    if (!read(store, number, content, kept))
    {
        report = kept; // it isn't the fault of what was to be written
        return false;
    }
    QFile in(store.file(number));
    QSaveFile out(path);
    if (!in.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly))
        return report.fail(in.isOpen() ? static_cast<const QFileDevice&>(out) : in);
    while (!in.atEnd())
    {
        const QByteArray bytes = in.read(1 << 20);
        if (in.error() != QFileDevice::NoError)
            return report.fail(in);
        if (out.write(bytes) != bytes.size()) // the file that is there stays
            return report.fail(out);
    }
    // commit() doesn't see what fails when the last block goes out.
    return (out.flush() && out.commit()) || report.fail(out);
}

kxVersions::Changes kxVersions::changes(kxVersionStore& store, qint64 since, qint64 number, bool reads)
{
    Changes changes = fromJson(store.changes(number, since));
    if (changes.isKnown || !reads)
        return changes;
    kxSceneContent before, after;
    for (const bool isBefore : {true, false})
    {
        kxFileReport report;
        if (!read(store, isBefore ? since : number, isBefore ? before : after, report))
        {
            changes.failure = tr("Version %1 can't be read: %2.").arg(isBefore ? since : number).arg(report.error());
            return changes;
        }
    }
    const kxSceneDifference difference = kxSceneDifference::between(before, after);
    for (const kxSceneDifference::Entry& entry : difference.entries)
        if (int(changes.lines.size()) < MostLines)
            changes.lines.push_back({entry.group, entry.words});
        else
            ++changes.unlisted;
    changes.isKnown = true;
    store.setChanges(number, since, toJson(changes));
    return changes;
}
