#include "kxLeftover.h"

#include <journal/kxRecovery.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSysInfo>

#include <algorithm>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace
{
constexpr std::size_t Most = 20;
constexpr int OldestDays = 30;
constexpr int StartTime = 60;           ///< seconds in which a run has made its journal
constexpr int OtherMachine = 24 * 3600; ///< seconds after which a run of which only another machine knows is over

QString tr(const char* text)
{
    return QCoreApplication::translate("kxLeftover", text);
}

/// The machine that the lock at `path` names; empty for this one.
QString otherMachine(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    const QList<QByteArray> lines = file.readAll().split('\n'); // process, application, machine, its id, ...
    const bool isOther = lines.value(3).isEmpty() ? lines.value(2) != QSysInfo::machineHostName().toLocal8Bit()
                                                  : lines.value(3) != QSysInfo::machineUniqueId();
    return isOther && lines.size() > 2 ? QString::fromLocal8Bit(lines[2]) : QString();
}

/// A process of this machine holds it.
bool isLive(const QString& lock)
{
    const int file = ::open(QFile::encodeName(lock).constData(), O_RDWR | O_CLOEXEC);
    const bool isHeld = file >= 0 && ::flock(file, LOCK_EX | LOCK_NB) != 0;
    if (file >= 0)
        ::close(file); // and with it the lock
    return isHeld;
}

/// For `outOfReach` whose locks can't be written, and for runs that may go on on `machines`.
QStringList textsOf(int outOfReach, const QStringList& machines)
{
    QStringList texts;
    if (outOfReach == 1)
        texts << tr("1 scene waits to be recovered; there's no room on the disk, or it can't be written.");
    else if (outOfReach > 1)
        texts << tr("%1 scenes wait to be recovered; there's no room on the disk, or it can't be written.")
                     .arg(outOfReach);
    if (!machines.isEmpty())
        texts << tr("The application seems to run on '%1' too. If it doesn't, changes from there are offered a day "
                    "after the last one.")
                     .arg(machines.join(QStringLiteral("', '")));
    return texts;
}
} // namespace

kxLeftover::kxLeftover(const QString& folder)
    : _folder(folder), _lock(std::make_unique<QLockFile>(folder + QLatin1Char('/') + QLatin1String(LockName)))
{
    _lock->setStaleLockTime(0); // only the death of its process ends it
}

QString kxLeftover::journal() const
{
    return _folder + QLatin1Char('/') + QLatin1String(JournalName);
}

bool kxLeftover::isWanted()
{
    const QFileInfo file(journal());
    if (!file.exists())
        return QFileInfo(_folder).lastModified().secsTo(QDateTime::currentDateTime()) < StartTime;
    if (file.lastModified().daysTo(QDateTime::currentDateTime()) > OldestDays)
        return false;
    const kxRecovery recovery(journal());
    if (!recovery.hasChanges())
        return false;
    _isReadable = recovery.isReadable();
    _path = recovery.note(kxJournalNote::Path);
    _text = recovery.note(kxJournalNote::Text);
    _time = QDateTime::fromString(recovery.note(kxJournalNote::Time), Qt::ISODate);
    if (!_time.isValid())
        _time = file.lastModified();
    return true;
}

bool kxLeftover::hold()
{
    if (_lock->tryLock(0))
        return true;
    // The log is what a run writes.
    const QDateTime touched =
        std::max(QFileInfo(journal()).lastModified(), QFileInfo(journal() + QStringLiteral("-wal")).lastModified());
    // It isn't removed where its file is held, as it is by whoever lives on this machine.
    return _lock->error() == QLockFile::LockFailedError &&
           touched.secsTo(QDateTime::currentDateTime()) > OtherMachine && _lock->removeStaleLockFile() &&
           _lock->tryLock(0);
}

std::vector<kxLeftover> kxLeftover::find(const QString& folder, QStringList* waiting)
{
    std::vector<kxLeftover> found;
    QStringList machines;
    int outOfReach = 0;
    for (const QFileInfo& entry :
         QDir(folder).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::Reversed))
    {
        kxLeftover leftover(entry.absoluteFilePath());
        const bool isHeld = leftover.hold();
        const QString lock = leftover._folder + QLatin1Char('/') + QLatin1String(LockName);
        const QString machine = isHeld ? QString() : otherMachine(lock);
        if (!machine.isEmpty())
            machines << machine;
        else if (!isHeld && isLive(lock))
            continue;
        else if (found.size() < Most && leftover.isWanted())
        {
            const bool isScene = QFileInfo::exists(leftover.journal());
            outOfReach += isScene && !isHeld ? 1 : 0;
            if (isScene && isHeld)
                found.push_back(std::move(leftover));
        }
        else if (isHeld)
            leftover.remove();
    }
    machines.removeDuplicates();
    if (waiting != nullptr)
        *waiting = textsOf(outOfReach, machines);
    return found;
}

QString kxLeftover::description() const
{
    const QString name =
        _path.isEmpty() ? QCoreApplication::translate("kxLeftover", "Untitled") : QFileInfo(_path).completeBaseName();
    const bool isToday = _time.date() == QDate::currentDate();
    const QString text =
        QCoreApplication::translate("kxLeftover", "%1, last change %2")
            .arg(name, _time.toString(isToday ? QStringLiteral("HH:mm:ss") : QStringLiteral("yyyy-MM-dd HH:mm:ss")));
    return _text.isEmpty() ? text : QStringLiteral("%1, '%2'").arg(text, _text);
}

void kxLeftover::clear() const
{
    for (const QString& name : QDir(_folder).entryList(QDir::Files | QDir::Hidden))
        if (name != QLatin1String(LockName))
            QFile::remove(_folder + QLatin1Char('/') + name);
}

void kxLeftover::remove()
{
    clear();
    _lock->unlock(); // takes its file along
    QDir().rmdir(_folder);
}
