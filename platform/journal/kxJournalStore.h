#pragma once

#include <journal/kxStatement.h>

#include <QByteArray>
#include <QString>

#include <atomic>
#include <cstdint>
#include <map>
#include <optional>
#include <thread>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

/// The journal's database: records by container and by entry. Knows nothing of what is in them.
///
/// After the first error nothing is read or written any more, and failure() tells it.
class kxJournalStore
{
public:
    /// Of one container in an entry: its state on the other side of the entry.
    struct Row
    {
        std::uint32_t id = 0;
        bool isPresent = false; ///< it is in the scene there
        QByteArray record;      ///< empty: the same as on this side
        bool isDelta = false;   ///< against the record of this side, see kxRecordDelta
    };

    enum Mode
    {
        Writing,
        LeftBehind ///< of a process that is gone: read as it is, or as far as a crash let it come
    };
    /// `file` empty: a database that goes with the process.
    explicit kxJournalStore(const QString& file, Mode mode = Writing);
    ~kxJournalStore();
    kxJournalStore(const kxJournalStore&) = delete;
    kxJournalStore& operator=(const kxJournalStore&) = delete;

    const QString& failure() const { return _failure; }
    /// Bytes in use, without what is free for later writes.
    qint64 size();
    /// Gives back what is free.
    void shrink();
    /// Of a database that was left behind: false where something of latest and notes isn't what was set.
    bool isWhole();
    /// Nothing was ever committed to it.
    bool isBlank();
    /// Rows are stamped with the number of their transaction; this is the newest.
    quint64 stamp();

    static constexpr int PageSize = 16384; ///< a record may be long
    /// Of what stands in a row of a record, and of a note: SQLite has none of its own for its pages. Never 0.
    static quint64 sum(quint64 id, quint64 stamp, const QByteArray& record);
    static quint64 sum(const QByteArray& name, quint64 stamp, const QByteArray& value);

    /// What is written between these is there as a whole or not at all, also after a crash.
    void begin();
    bool commit();

    QByteArray latest(std::uint32_t id);
    void setLatest(std::uint32_t id, const QByteArray& record);
    void dropLatest(std::uint32_t id);
    std::vector<std::uint32_t> latestIds();
    /// Bytes of all latest records.
    qint64 latestSize();
    /// What any entry has a row of.
    std::vector<std::uint32_t> changedIds();
    /// Forgets all records and entries.
    void clear();

    std::vector<Row> rows(std::uint32_t entry);
    std::optional<Row> row(std::uint32_t entry, std::uint32_t id);
    void setRow(std::uint32_t entry, const Row& row);
    void dropRow(std::uint32_t entry, std::uint32_t id);
    void dropRows(std::uint32_t entry);

    /// What else a recovery has to know, by names of the writers' choice; empty for none.
    QByteArray note(const QByteArray& name);
    void setNote(const QByteArray& name, const QByteArray& value);

private:
    kxStatement prepared(const char* sql);
    std::vector<std::uint32_t> ids(const char* sql);
    qint64 number(const char* sql);
    quint64 sumOfLatest(std::uint32_t id);
    void execute(const char* sql);
    void fail();
    void hold();
    void hearOfLog();
    void moveLog();

    QString _file;
    sqlite3* _database = nullptr;
    int _logPages = 0;     ///< of the write-ahead log
    int _logMoves = 0;     ///< begun since it was short
    std::thread _logMover; ///< brings the log into the database
    std::atomic<bool> _isMovingLog = false;
    quint64 _stamp = 0;                             // of the present transaction
    quint64 _total = 0, _writtenTotal = 0;          // over the sums of latest
    std::map<const char*, sqlite3_stmt*> _prepared; // by the literal
    QString _failure;
};
