#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

struct sqlite3_stmt;

/// One use of an SQLite statement. Without one, as after a failure, it does nothing and gives no row.
class kxStatement
{
public:
    enum Ending
    {
        Finalize,
        Reset ///< its owner uses it again
    };
    /// Hears SQLite's code of an error.
    typedef std::function<void(int)> Failure;

    kxStatement(sqlite3_stmt* statement, Ending ending, Failure failure)
        : _statement(statement), _ending(ending), _failure(std::move(failure))
    {
    }
    ~kxStatement();
    kxStatement(const kxStatement&) = delete;
    kxStatement& operator=(const kxStatement&) = delete;

    /// The values in their order.
    kxStatement& bind(qint64 value);
    /// `bytes` outlive this; empty ones are NULL.
    kxStatement& bind(const QByteArray& bytes);
    kxStatement& bind(const QString& text);
    /// True where a row came.
    bool step();
    qint64 number(int column) const;
    QByteArray bytes(int column) const;
    QString text(int column) const { return QString::fromUtf8(bytes(column)); }

private:
    sqlite3_stmt* _statement;
    Ending _ending;
    Failure _failure;
    int _place = 0;
};
