#include "kxLeftover.h"

#include <journal/kxRecovery.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace
{
constexpr std::size_t Most = 20;
constexpr int OldestDays = 30;
constexpr int StartTime = 60; ///< seconds in which a run has made its journal
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

std::vector<kxLeftover> kxLeftover::find(const QString& folder)
{
    std::vector<kxLeftover> found;
    for (const QFileInfo& entry :
         QDir(folder).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::Reversed))
    {
        kxLeftover leftover(entry.absoluteFilePath());
        if (!leftover._lock->tryLock(0))
            continue; // of a run that goes on, or out of reach
        if (found.size() < Most && leftover.isWanted())
        {
            if (QFileInfo::exists(leftover.journal()))
                found.push_back(std::move(leftover));
        }
        else
            leftover.remove();
    }
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
