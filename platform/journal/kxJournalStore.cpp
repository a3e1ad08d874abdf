#include <journal/kxJournalStore.h>

#include <QFile>
#include <QtEndian>

#include <sqlite3.h>

namespace
{
constexpr int LogPages = 512;      ///< that are gathered before the log is brought into the database
constexpr int MostLogPages = 2048; ///< 32 MB, at which commits wait for that

/// Waits for the disk, which the thread of commits doesn't.
void checkpoint(const QByteArray& file)
{
    sqlite3* database = nullptr;
    // A connection knows of the log once it has read.
    if (sqlite3_open_v2(file.constData(), &database, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK &&
        sqlite3_exec(database, "SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr) == SQLITE_OK)
        sqlite3_wal_checkpoint_v2(database, nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr); // else later
    sqlite3_close(database);
}

/// Entry and id in one key, so that an entry's rows lie beside each other.
qint64 keyOf(std::uint32_t entry, std::uint32_t id)
{
    return qint64(entry) << 32 | id;
}

// Of the column "present".
constexpr qint64 PresentFlag = 1, DeltaFlag = 2;

kxJournalStore::Row rowOf(std::uint32_t id, qint64 flags, const QByteArray& record)
{
    return {id, (flags & PresentFlag) != 0, record, (flags & DeltaFlag) != 0};
}

constexpr char TotalNote[] = "total";

quint64 mixed(quint64 sum, quint64 word)
{
    sum = (sum ^ word) * 0x9e3779b97f4a7c15u;
    return sum ^ sum >> 29;
}

/// A multiplication for 8 bytes: curves are large. Never 0.
quint64 checksum(quint64 key, const QByteArray& bytes)
{
    quint64 sum = mixed(key, quint64(bytes.size()));
    int at = 0;
    for (; at + 8 <= bytes.size(); at += 8)
        sum = mixed(sum, qFromUnaligned<quint64>(bytes.constData() + at));
    for (; at < bytes.size(); ++at)
        sum = mixed(sum, quint8(bytes[at]));
    return sum | 1;
}
} // namespace

quint64 kxJournalStore::sum(quint64 id, quint64 stamp, const QByteArray& record)
{
    return checksum(mixed(id, stamp), record);
}

quint64 kxJournalStore::sum(const QByteArray& name, quint64 stamp, const QByteArray& value)
{
    return sum(checksum(0, name), stamp, value);
}

kxJournalStore::kxJournalStore(const QString& file, Mode mode) : _file(file)
{
    const int flags = mode == Writing ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READWRITE;
    if (sqlite3_open_v2(QFile::encodeName(file).constData(), &_database, flags, nullptr) != SQLITE_OK)
        fail();
    if (mode == LeftBehind)
    {
        sqlite3_db_config(_database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr); // it may be wanted once more
        sqlite3_db_config(_database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
        execute("PRAGMA cell_size_check=ON");
        hold();
        return;
    }
    execute(
        "PRAGMA synchronous=OFF"); // an empty one needn't outlive a power cut, and the start doesn't wait for the disk
    execute(("PRAGMA page_size=" + QByteArray::number(PageSize)).constData());
    execute("PRAGMA auto_vacuum=INCREMENTAL");
    execute("PRAGMA journal_mode=WAL");
    execute("PRAGMA journal_size_limit=33554432"); // of the log when it starts anew; cutting it off waits for the disk
    execute("CREATE TABLE IF NOT EXISTS latest (id INTEGER PRIMARY KEY, sum INTEGER NOT NULL, stamp INTEGER NOT NULL, "
            "record BLOB)");
    execute("CREATE TABLE IF NOT EXISTS change (key INTEGER PRIMARY KEY, present INTEGER NOT NULL, record BLOB)");
    execute("CREATE TABLE IF NOT EXISTS note (name BLOB PRIMARY KEY, sum INTEGER NOT NULL, stamp INTEGER NOT NULL, "
            "value BLOB)");
    execute("PRAGMA synchronous=NORMAL"); // what was committed outlives the process, though not a power cut
    _stamp = stamp();
    hearOfLog();
}

/// Alone with it, SQLite needs no file beside it to find its way in the log: there may be no room for one.
void kxJournalStore::hold()
{
    constexpr char Held[] = "PRAGMA locking_mode=EXCLUSIVE; SELECT count(*) FROM sqlite_master";
    if (sqlite3_exec(_database, Held, nullptr, nullptr, nullptr) != SQLITE_OK)
        execute("PRAGMA locking_mode=NORMAL"); // it is open elsewhere, or can't be written
}

/// In place of a checkpoint within some commit.
void kxJournalStore::hearOfLog()
{
    sqlite3_busy_timeout(_database, 2000);
    sqlite3_wal_hook(
        _database,
        [](void* store, sqlite3*, const char*, int pages)
        {
            static_cast<kxJournalStore*>(store)->_logPages = pages;
            return SQLITE_OK;
        },
        this);
}

kxJournalStore::~kxJournalStore()
{
    if (_logMover.joinable())
        _logMover.join();
    for (const auto& entry : _prepared)
        sqlite3_finalize(entry.second);
    sqlite3_close(_database);
}

void kxJournalStore::fail()
{
    if (_failure.isEmpty())
        _failure =
            _database == nullptr ? QStringLiteral("out of memory") : QString::fromUtf8(sqlite3_errmsg(_database));
}

void kxJournalStore::execute(const char* sql)
{
    if (_failure.isEmpty() && sqlite3_exec(_database, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        fail();
}

kxStatement kxJournalStore::prepared(const char* sql)
{
    sqlite3_stmt* statement = nullptr;
    if (_failure.isEmpty())
    {
        sqlite3_stmt*& kept = _prepared[sql];
        if (kept == nullptr && sqlite3_prepare_v2(_database, sql, -1, &kept, nullptr) != SQLITE_OK)
            fail();
        statement = kept;
    }
    return kxStatement(statement, kxStatement::Reset, [this](int) { fail(); });
}

bool kxJournalStore::isWhole()
{
    {
        kxStatement pages = prepared("PRAGMA integrity_check(1)");
        if (!pages.step() || pages.bytes(0) != "ok")
            return false;
    }
    bool isWhole = true;
    quint64 total = 0;
    kxStatement records = prepared("SELECT id, sum, stamp, record FROM latest");
    while (records.step())
    {
        const quint64 sum = quint64(records.number(1));
        isWhole = isWhole && sum == this->sum(quint64(records.number(0)), quint64(records.number(2)), records.bytes(3));
        total ^= sum;
    }
    kxStatement notes = prepared("SELECT name, sum, stamp, value FROM note");
    while (notes.step())
        isWhole = isWhole && quint64(notes.number(1)) == sum(notes.bytes(0), quint64(notes.number(2)), notes.bytes(3));
    return _failure.isEmpty() && isWhole && note(TotalNote) == QByteArray::number(total);
}

bool kxJournalStore::isBlank()
{
    {
        kxStatement tables = prepared("SELECT count(*) FROM sqlite_master WHERE name IN ('latest', 'change', 'note')");
        if (!tables.step() || tables.number(0) < 3)
            return _failure.isEmpty();
    }
    kxStatement records = prepared("SELECT 1 FROM latest LIMIT 1");
    return !records.step() && _failure.isEmpty();
}

quint64 kxJournalStore::stamp()
{
    return quint64(number("SELECT max(stamp) FROM note"));
}

void kxJournalStore::begin()
{
    ++_stamp;
    prepared("BEGIN IMMEDIATE").step();
}

bool kxJournalStore::commit()
{
    if (_total != _writtenTotal)
        setNote(TotalNote, QByteArray::number(_total));
    _writtenTotal = _total;
    prepared("COMMIT").step();
    if (!_failure.isEmpty())
        sqlite3_exec(_database, "ROLLBACK", nullptr, nullptr, nullptr); // fails where nothing is open
    if (_logPages < LogPages)
        _logMoves = 0;
    else if (!_isMovingLog)
        moveLog();
    // It starts anew where nothing is written while it is moved; a large scene that was just taken has its time.
    if (_logPages >= MostLogPages && _logMoves > 1)
    {
        _logMover.join();
        moveLog();
        _logMover.join();
        _logPages = _logMoves = 0;
    }
    return _failure.isEmpty();
}

void kxJournalStore::moveLog()
{
    if (_logMover.joinable())
        _logMover.join();
    _isMovingLog = true;
    ++_logMoves;
    _logMover = std::thread(
        [this, file = QFile::encodeName(_file)]
        {
            checkpoint(file);
            _isMovingLog = false;
        });
}

qint64 kxJournalStore::number(const char* sql)
{
    kxStatement statement = prepared(sql);
    return statement.step() ? statement.number(0) : 0;
}

qint64 kxJournalStore::latestSize()
{
    return number("SELECT sum(length(record)) FROM latest");
}

qint64 kxJournalStore::size()
{
    return (number("PRAGMA page_count") - number("PRAGMA freelist_count")) * number("PRAGMA page_size");
}

void kxJournalStore::shrink()
{
    execute("PRAGMA incremental_vacuum");
}

QByteArray kxJournalStore::latest(std::uint32_t id)
{
    kxStatement statement = prepared("SELECT record FROM latest WHERE id = ?1");
    return statement.bind(qint64(id)).step() ? statement.bytes(0) : QByteArray();
}

void kxJournalStore::setLatest(std::uint32_t id, const QByteArray& record)
{
    const quint64 sum = this->sum(id, _stamp, record);
    _total ^= sumOfLatest(id) ^ sum;
    prepared("INSERT OR REPLACE INTO latest VALUES (?1, ?2, ?3, ?4)")
        .bind(qint64(id))
        .bind(qint64(sum))
        .bind(qint64(_stamp))
        .bind(record)
        .step();
}

quint64 kxJournalStore::sumOfLatest(std::uint32_t id)
{
    kxStatement statement = prepared("SELECT sum FROM latest WHERE id = ?1");
    return statement.bind(qint64(id)).step() ? quint64(statement.number(0)) : 0;
}

void kxJournalStore::dropLatest(std::uint32_t id)
{
    _total ^= sumOfLatest(id);
    prepared("DELETE FROM latest WHERE id = ?1").bind(qint64(id)).step();
}

std::vector<std::uint32_t> kxJournalStore::latestIds()
{
    return ids("SELECT id FROM latest");
}

std::vector<std::uint32_t> kxJournalStore::changedIds()
{
    return ids("SELECT DISTINCT key & 4294967295 FROM change");
}

std::vector<std::uint32_t> kxJournalStore::ids(const char* sql)
{
    std::vector<std::uint32_t> ids;
    kxStatement statement = prepared(sql);
    while (statement.step())
        ids.push_back(std::uint32_t(statement.number(0)));
    return ids;
}

void kxJournalStore::clear()
{
    _total = 0;
    prepared("DELETE FROM latest").step();
    prepared("DELETE FROM change").step();
}

std::vector<kxJournalStore::Row> kxJournalStore::rows(std::uint32_t entry)
{
    std::vector<Row> rows;
    kxStatement statement =
        prepared("SELECT key, present, record FROM change WHERE key BETWEEN ?1 AND ?2 ORDER BY key");
    statement.bind(keyOf(entry, 0)).bind(keyOf(entry, ~std::uint32_t(0)));
    while (statement.step())
        rows.push_back(rowOf(std::uint32_t(statement.number(0)), statement.number(1), statement.bytes(2)));
    return rows;
}

std::optional<kxJournalStore::Row> kxJournalStore::row(std::uint32_t entry, std::uint32_t id)
{
    kxStatement statement = prepared("SELECT present, record FROM change WHERE key = ?1");
    if (!statement.bind(keyOf(entry, id)).step())
        return std::nullopt;
    return rowOf(id, statement.number(0), statement.bytes(1));
}

void kxJournalStore::setRow(std::uint32_t entry, const Row& row)
{
    prepared("INSERT OR REPLACE INTO change VALUES (?1, ?2, ?3)")
        .bind(keyOf(entry, row.id))
        .bind(qint64(row.isPresent ? PresentFlag : 0) | (row.isDelta ? DeltaFlag : 0))
        .bind(row.record)
        .step();
}

void kxJournalStore::dropRow(std::uint32_t entry, std::uint32_t id)
{
    prepared("DELETE FROM change WHERE key = ?1").bind(keyOf(entry, id)).step();
}

void kxJournalStore::dropRows(std::uint32_t entry)
{
    prepared("DELETE FROM change WHERE key BETWEEN ?1 AND ?2")
        .bind(keyOf(entry, 0))
        .bind(keyOf(entry, ~std::uint32_t(0)))
        .step();
}

QByteArray kxJournalStore::note(const QByteArray& name)
{
    kxStatement statement = prepared("SELECT value FROM note WHERE name = ?1");
    return statement.bind(name).step() ? statement.bytes(0) : QByteArray();
}

void kxJournalStore::setNote(const QByteArray& name, const QByteArray& value)
{
    prepared("INSERT OR REPLACE INTO note VALUES (?1, ?2, ?3, ?4)")
        .bind(name)
        .bind(qint64(sum(name, _stamp, value)))
        .bind(qint64(_stamp))
        .bind(value)
        .step();
}
