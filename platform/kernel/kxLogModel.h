#pragma once

#include <kxExport.h>

#include <QDateTime>
#include <QObject>
#include <QString>

#include <deque>

/// One line of the log.
struct kxLogEntry
{
    enum Level
    {
        Info,
        Warning,
        Error
    };

    QDateTime time;
    Level level;
    QString text;
    bool startsScene = false; ///< what is above it is about other scenes
};

/// The log's newest entries, and a signal for whoever shows them. Main thread only.
class KX_API kxLogModel : public QObject
{
    Q_OBJECT
public:
    /// The oldest entry goes when another comes in.
    static constexpr std::size_t Capacity = 5000;

    static kxLogModel& the();

    const std::deque<kxLogEntry>& entries() const { return _entries; }
    /// Keeps the entry and prints it on the standard error stream.
    void add(kxLogEntry::Level level, const QString& text);
    /// The same for the line with which another scene begins.
    void startScene(const QString& text);
    void clear();
    /// From here on lines of information aren't printed.
    void setQuiet() { _isQuiet = true; }

    /// "info", "warning" or "error".
    static const char* levelName(kxLogEntry::Level level);

Q_SIGNALS:
    void added(const kxLogEntry& entry);
    void cleared();

private:
    kxLogModel() = default;
    void append(const kxLogEntry& entry);
    std::deque<kxLogEntry> _entries;
    bool _isQuiet = false;
};
