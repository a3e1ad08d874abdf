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
    case Replacing:
        return tr("Before another scene took its place");
    case Unknown:
        break;
    }
    return tr("Found without an entry");
}

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
    kxStatement check = statement("PRAGMA quick_check(1)");
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

kxStatement kxVersionIndex::statement(const char* sql)
{
    sqlite3_stmt* statement = nullptr;
    if (_failure.isEmpty())
        if (const int result = sqlite3_prepare_v2(_database, sql, -1, &statement, nullptr); result != SQLITE_OK)
            fail(result);
    return kxStatement(statement, kxStatement::Finalize, [this](int result) { fail(result); });
}

void kxVersionIndex::execute(const char* sql)
{
    statement(sql).step();
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
    kxStatement row = statement("SELECT path FROM document");
    return row.step() ? row.text(0) : QString();
}

void kxVersionIndex::setDocument(const QString& path)
{
    execute("DELETE FROM document");
    statement("INSERT INTO document VALUES (?)").bind(path).step();
}

kxVersion kxVersionIndex::read(const kxStatement& row)
{
    kxVersion version;
    version.number = row.number(0);
    version.time = QDateTime::fromMSecsSinceEpoch(row.number(1));
    const qint64 reason = row.number(2);
    version.reason = reason < 0 || reason > kxVersion::Replacing ? kxVersion::Unknown : kxVersion::Reason(reason);
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
    kxStatement row =
        statement("SELECT number, time, reason, name, detail, size, picture, head FROM version ORDER BY number");
    while (row.step())
        versions.push_back(read(row));
    return versions;
}

std::optional<kxVersion> kxVersionIndex::last()
{
    kxStatement row = statement("SELECT number, time, reason, name, detail, size, picture, head FROM version "
                                "ORDER BY number DESC LIMIT 1");
    return row.step() ? std::make_optional(read(row)) : std::nullopt;
}

qint64 kxVersionIndex::nextNumber()
{
    kxStatement row = statement("SELECT seq FROM sqlite_sequence WHERE name = 'version'");
    return row.step() ? row.number(0) + 1 : 1;
}

void kxVersionIndex::insert(const kxVersion& version)
{
    statement("INSERT INTO version VALUES (?, ?, ?, ?, ?, ?, ?, ?, NULL, NULL)")
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
    statement("DELETE FROM version WHERE number = ?").bind(number).step();
}

void kxVersionIndex::rename(qint64 number, const QString& name)
{
    statement("UPDATE version SET name = ? WHERE number = ?").bind(name).bind(number).step();
}

void kxVersionIndex::setPicture(qint64 number, const QByteArray& picture)
{
    statement("UPDATE version SET picture = ? WHERE number = ?").bind(picture).bind(number).step();
}

QByteArray kxVersionIndex::changes(qint64 number, qint64 since)
{
    kxStatement row = statement("SELECT changes FROM version WHERE number = ? AND since = ?");
    return row.bind(number).bind(since).step() ? row.bytes(0) : QByteArray();
}

void kxVersionIndex::setChanges(qint64 number, qint64 since, const QByteArray& changes)
{
    statement("UPDATE version SET since = ?, changes = ? WHERE number = ?")
        .bind(since)
        .bind(changes)
        .bind(number)
        .step();
}
