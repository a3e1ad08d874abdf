#include <files/kxFileReport.h>

#include <kxLog.h>

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

void kxFileReport::note(const QString& line)
{
    if (_notes.contains(line))
        return;
    if (_notes.size() < MostNotes)
        _notes.append(line);
    else
        ++_unlisted;
}

void kxFileReport::log() const
{
    for (const QString& line : _notes)
        kxLog::warning(QStringLiteral("'%1': %2").arg(_file, line));
    if (_unlisted > 0)
        kxLog::warning(QStringLiteral("'%1': and %2 more").arg(_file).arg(_unlisted));
    if (failed())
        kxLog::error(message());
}
