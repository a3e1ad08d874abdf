#include <journal/kxVersionIndex.h>

#include <QCoreApplication>
#include <QFile>

#include <sqlite3.h>

namespace
{
constexpr int LongestWait = 3000; // milliseconds, for another process that writes

QString tr(const char* text)
{
    return QCoreApplication::translate("kxVersions", text);
}
} // namespace

QString kxVersion::why() const
{
    switch (reason)
    {
    case ByHand:
        return tr("Kept by hand");
    case Opened:
        return tr("Opened");
    case Saved:
        return tr("Saved");
    case Overwritten:
        return tr("Before it was overwritten");
    case Script:
        return tr("Before the script '%1'").arg(detail);
    case Import:
        return tr("Before the import of '%1'").arg(detail);
    case Wizard:
        return tr("Before the animation wizard");
    case Leaving:
        return tr("Before going to version %1").arg(detail);
    case Working:
        return tr("While working");
    case Unknown:
        break;
    }
    return tr("Found without an entry");
}

/// One use of a statement.
class kxVersionIndex::Statement
{
public:
    Statement(kxVersionIndex& index, const char* sql) : _index(index)
    {
        if (_index._failure.isEmpty())
            check(sqlite3_prepare_v2(_index._database, sql, -1, &_statement, nullptr));
    }
    ~Statement() { sqlite3_finalize(_statement); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    Statement& bind(qint64 value)
    {
        sqlite3_bind_int64(_statement, ++_place, value);
        return *this;
    }
    Statement& bind(const QByteArray& bytes)
    {
        sqlite3_bind_blob(_statement, ++_place, bytes.constData(), bytes.size(), SQLITE_TRANSIENT);
        return *this;
    }
    Statement& bind(const QString& text)
    {
        const QByteArray bytes = text.toUtf8();
        sqlite3_bind_text(_statement, ++_place, bytes.constData(), bytes.size(), SQLITE_TRANSIENT);
        return *this;
    }
    /// True where a row came.
    bool step()
    {
        const int result = _statement == nullptr ? SQLITE_DONE : sqlite3_step(_statement);
        check(result);
        return result == SQLITE_ROW;
    }
    qint64 number(int column) const { return sqlite3_column_int64(_statement, column); }
    QByteArray bytes(int column) const
    {
        const void* const data = sqlite3_column_blob(_statement, column);
        return QByteArray(static_cast<const char*>(data), sqlite3_column_bytes(_statement, column));
    }
    QString text(int column) const { return QString::fromUtf8(bytes(column)); }

private:
    void check(int result)
    {
        if (result != SQLITE_OK && result != SQLITE_ROW && result != SQLITE_DONE)
            _index.fail(result);
    }

    kxVersionIndex& _index;
    sqlite3_stmt* _statement = nullptr;
    int _place = 0;
};

kxVersionIndex::kxVersionIndex(const QString& file)
{
    if (const int result = sqlite3_open(QFile::encodeName(file).constData(), &_database); result != SQLITE_OK)
        fail(result);
    sqlite3_busy_timeout(_database, LongestWait);
    execute("PRAGMA journal_mode=WAL");
    execute("PRAGMA synchronous=NORMAL"); // what a power cut takes is found by its file
    execute("CREATE TABLE IF NOT EXISTS document (path TEXT NOT NULL)");
    execute("CREATE TABLE IF NOT EXISTS version (number INTEGER PRIMARY KEY AUTOINCREMENT, time INTEGER NOT NULL, "
            "reason INTEGER NOT NULL, name TEXT NOT NULL, detail TEXT NOT NULL, size INTEGER NOT NULL, picture BLOB, "
            "head BLOB, since INTEGER, changes BLOB)");
    Statement check(*this, "PRAGMA quick_check(1)");
    if (check.step() && check.text(0) != QLatin1String("ok"))
        fail(SQLITE_CORRUPT);
}

kxVersionIndex::~kxVersionIndex()
{
    sqlite3_close(_database);
}

void kxVersionIndex::fail(int result)
{
    if (!_failure.isEmpty())
        return;
    _isDamaged = result == SQLITE_CORRUPT || result == SQLITE_NOTADB;
    _failure = _isDamaged             ? tr("the index of the versions is damaged")
               : _database == nullptr ? tr("out of memory")
                                      : QString::fromUtf8(sqlite3_errmsg(_database));
}

void kxVersionIndex::execute(const char* sql)
{
    Statement(*this, sql).step();
}

void kxVersionIndex::begin()
{
    execute("BEGIN IMMEDIATE");
}

bool kxVersionIndex::commit()
{
    execute("COMMIT");
    if (!_failure.isEmpty())
        sqlite3_exec(_database, "ROLLBACK", nullptr, nullptr, nullptr); // fails where nothing is open
    return _failure.isEmpty();
}

QString kxVersionIndex::document()
{
    Statement statement(*this, "SELECT path FROM document");
    return statement.step() ? statement.text(0) : QString();
}

void kxVersionIndex::setDocument(const QString& path)
{
    execute("DELETE FROM document");
    Statement(*this, "INSERT INTO document VALUES (?)").bind(path).step();
}

kxVersion kxVersionIndex::read(const Statement& row)
{
    kxVersion version;
    version.number = row.number(0);
    version.time = QDateTime::fromMSecsSinceEpoch(row.number(1));
    const qint64 reason = row.number(2);
    version.reason = reason < 0 || reason > kxVersion::Unknown ? kxVersion::Unknown : kxVersion::Reason(reason);
    version.name = row.text(3);
    version.detail = row.text(4);
    version.size = row.number(5);
    version.picture = row.bytes(6);
    version.head = row.bytes(7);
    return version;
}

std::vector<kxVersion> kxVersionIndex::versions()
{
    std::vector<kxVersion> versions;
    Statement statement(*this,
                        "SELECT number, time, reason, name, detail, size, picture, head FROM version ORDER BY number");
    while (statement.step())
        versions.push_back(read(statement));
    return versions;
}

std::optional<kxVersion> kxVersionIndex::last()
{
    Statement statement(*this, "SELECT number, time, reason, name, detail, size, picture, head FROM version "
                               "ORDER BY number DESC LIMIT 1");
    return statement.step() ? std::make_optional(read(statement)) : std::nullopt;
}

qint64 kxVersionIndex::nextNumber()
{
    Statement statement(*this, "SELECT seq FROM sqlite_sequence WHERE name = 'version'");
    return statement.step() ? statement.number(0) + 1 : 1;
}

void kxVersionIndex::insert(const kxVersion& version)
{
    Statement(*this, "INSERT INTO version VALUES (?, ?, ?, ?, ?, ?, ?, ?, NULL, NULL)")
        .bind(version.number)
        .bind(version.time.toMSecsSinceEpoch())
        .bind(qint64(version.reason))
        .bind(version.name)
        .bind(version.detail)
        .bind(version.size)
        .bind(version.picture)
        .bind(version.head)
        .step();
}

void kxVersionIndex::remove(qint64 number)
{
    Statement(*this, "DELETE FROM version WHERE number = ?").bind(number).step();
}

void kxVersionIndex::rename(qint64 number, const QString& name)
{
    Statement(*this, "UPDATE version SET name = ? WHERE number = ?").bind(name).bind(number).step();
}

void kxVersionIndex::setPicture(qint64 number, const QByteArray& picture)
{
    Statement(*this, "UPDATE version SET picture = ? WHERE number = ?").bind(picture).bind(number).step();
}

QByteArray kxVersionIndex::changes(qint64 number, qint64 since)
{
    Statement statement(*this, "SELECT changes FROM version WHERE number = ? AND since = ?");
    return statement.bind(number).bind(since).step() ? statement.bytes(0) : QByteArray();
}

void kxVersionIndex::setChanges(qint64 number, qint64 since, const QByteArray& changes)
{
    Statement(*this, "UPDATE version SET since = ?, changes = ? WHERE number = ?")
        .bind(since)
        .bind(changes)
        .bind(number)
        .step();
}
