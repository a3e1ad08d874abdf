#pragma once

#include <QByteArray>
#include <QFile>

#include <cstdint>
#include <functional>
#include <map>
#include <unordered_map>
#include <vector>

class kxJournalStore;

/// What can still be read of a journal's database and its log where SQLite refuses them, or takes only a part of them.
///
/// Goes through all pages, also those that no table knows any more, for rows that are as they were written: each has a
/// sum of its own. Of several with the same key the newest counts. Changes nothing.
class kxJournalSalvage
{
public:
    explicit kxJournalSalvage(const QString& file);

    /// The stamp of the last transaction that was ended in the log; 0 for none.
    std::uint64_t newestLogged() const;
    /// Puts all that was found into an empty database.
    void run(kxJournalStore& store);

private:
    /// A file's bytes, for as long as this lives.
    struct Image
    {
        explicit Image(const QString& path);
        const uchar* page(qint64 offset) const;

        QFile file;
        const uchar* data = nullptr;
        qint64 size = 0;
    };
    /// A row as it lies in a page.
    struct Row
    {
        std::int64_t id = 0; ///< of a record
        QByteArray name;     ///< of a note; empty for a record
        std::uint64_t sum = 0, stamp = 0;
        QByteArray bytes;
    };
    struct Found
    {
        std::uint64_t stamp = 0;
        QByteArray bytes;
    };
    typedef std::function<void(const Row&)> Visitor;

    void readLog();
    void forEachRow(const uchar* page, const Visitor& visit) const;
    bool readRow(const uchar* page, int at, Row& row) const;
    bool readPayload(const uchar* page, int at, std::uint64_t length, QByteArray& payload) const;
    void take(const Row& row);

    Image _database, _log;
    std::unordered_map<std::uint32_t, const uchar*> _logged; // by number: the newest page in the log
    std::vector<const uchar*> _frames;                       // pages of the log, in order
    std::size_t _lastBegin = 0, _lastEnd = 0;                // of those, the last transaction that was ended
    std::unordered_map<std::uint32_t, Found> _records;
    std::map<QByteArray, Found> _notes;
};
