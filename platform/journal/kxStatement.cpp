#include <journal/kxStatement.h>

#include <sqlite3.h>

kxStatement::~kxStatement()
{
    _ending == Reset ? sqlite3_reset(_statement) : sqlite3_finalize(_statement);
}

kxStatement& kxStatement::bind(qint64 value)
{
    sqlite3_bind_int64(_statement, ++_place, value);
    return *this;
}

kxStatement& kxStatement::bind(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        sqlite3_bind_null(_statement, ++_place);
    else
        sqlite3_bind_blob(_statement, ++_place, bytes.constData(), bytes.size(), SQLITE_STATIC);
    return *this;
}

kxStatement& kxStatement::bind(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    sqlite3_bind_text(_statement, ++_place, bytes.constData(), bytes.size(), SQLITE_TRANSIENT);
    return *this;
}

bool kxStatement::step()
{
    const int result = _statement == nullptr ? SQLITE_DONE : sqlite3_step(_statement);
    if (result != SQLITE_ROW && result != SQLITE_DONE)
        _failure(result);
    return result == SQLITE_ROW;
}

qint64 kxStatement::number(int column) const
{
    return sqlite3_column_int64(_statement, column);
}

QByteArray kxStatement::bytes(int column) const
{
    const void* const data = sqlite3_column_blob(_statement, column);
    return data == nullptr ? QByteArray()
                           : QByteArray(static_cast<const char*>(data), sqlite3_column_bytes(_statement, column));
}
