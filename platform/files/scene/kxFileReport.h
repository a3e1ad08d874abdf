#pragma once

#include <kxExport.h>

#include <QString>
#include <QStringList>

class QFileDevice;

/// What reading or writing one file came to: why it failed, or what had to be left out.
class KX_API kxFileReport
{
public:
    explicit kxFileReport(const QString& file = QString()) : _file(file) {}

    const QString& file() const { return _file; }
    bool failed() const { return !_error.isEmpty(); }
    /// Empty where nothing failed. Doesn't name the file.
    const QString& error() const { return _error; }
    /// "'FILE': REASON", as the log and dialogs show it.
    QString message() const;
    /// What was left out or repaired, each line once.
    const QStringList& notes() const { return _notes; }

    /// Keeps the first reason; false, so that a reader can return it.
    bool fail(const QString& reason);
    /// With the reason why the file couldn't be read or written.
    bool fail(const QFileDevice& file);
    /// The user took it back: nobody has to be told why it failed.
    bool cancel();
    bool isCancelled() const { return _cancelled; }
    void note(const QString& line);
    /// How many are noted beyond those in the list.
    int unlisted() const { return _unlisted; }
    void addUnlisted(int count) { _unlisted += count; }
    /// What was done that is no fault of the file.
    void tell(const QString& line) { _told.append(line); }
    const QStringList& told() const { return _told; }
    /// What was read, in one line; `opened` where it takes the place of the scene before.
    void setSummary(const QString& line, bool opened);
    const QString& summary() const { return _summary; }
    /// Writes the summary, what was told and noted, and the reason to the log.
    void log() const;

private:
    static constexpr int MostNotes = 100;

    QString _file;
    QString _error;
    QStringList _notes;
    QStringList _told;
    QString _summary;
    bool _opened = false;
    bool _cancelled = false;
    int _unlisted = 0; ///< notes beyond MostNotes
};
