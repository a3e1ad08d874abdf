#include <files/scene/kxFileReport.h>

#include <kernel/kxLogModel.h>
#include <kxLog.h>

#include <QFile>
#include <QFileInfo>

namespace
{
/// Without a file it is a scene that was never saved.
QString quoted(const QString& file)
{
    return file.isEmpty() ? QStringLiteral("an unsaved scene") : QStringLiteral("'%1'").arg(file);
}
} // namespace

QString kxFileReport::message() const
{
    return QStringLiteral("'%1': %2").arg(_file, _error);
}

bool kxFileReport::fail(const QString& reason)
{
    if (_error.isEmpty())
        _error = reason.trimmed().isEmpty() ? QStringLiteral("the file can't be read") : reason.trimmed();
    return false;
}

bool kxFileReport::fail(const QFileDevice& file)
{
    // Where only a part of the bytes was taken Qt has no reason to tell, or an unknown one.
    if (file.error() != QFileDevice::NoError && file.errorString() != QFile().errorString())
        return fail(file.errorString());
    return fail(QStringLiteral("not all of it could be written; the disk may be full"));
}

bool kxFileReport::cancel()
{
    _cancelled = true;
    return fail(QStringLiteral("it was cancelled"));
}

void kxFileReport::note(const QString& line)
{
    if (_notes.contains(line))
        return;
    if (_notes.size() < MostNotes)
        _notes.append(line);
    else
        ++_unlisted;
}

void kxFileReport::setSummary(const QString& line, bool opened)
{
    _summary = line;
    _opened = opened;
}

void kxFileReport::log() const
{
    if (!_summary.isEmpty() && !failed())
    {
        const QString name = quoted(QFileInfo(_file).fileName());
        if (_opened)
            kxLogModel::the().startScene(QStringLiteral("Opened %1: %2").arg(name, _summary));
        else
            kxLog::info(QStringLiteral("Imported %1: %2").arg(name, _summary));
    }
    for (const QString& line : _told)
        kxLog::info(QStringLiteral("%1: %2").arg(quoted(_file), line));
    for (const QString& line : _notes)
        kxLog::warning(QStringLiteral("%1: %2").arg(quoted(_file), line));
    if (_unlisted > 0)
        kxLog::warning(QStringLiteral("%1: and %2 more").arg(quoted(_file)).arg(_unlisted));
    if (isCancelled())
        kxLog::info(message());
    else if (failed())
        kxLog::error(message());
}
