#pragma once

#include <journal/kxStatement.h>
#include <kxExport.h>

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>
#include <vector>

struct sqlite3;

/// A state of a scene that was kept as a file of its own.
struct KX_API kxVersion
{
    enum Reason
    {
        ByHand,
        Opened,
        Saved,
        Overwritten, ///< a file of another scene, by saving
        Script,      ///< this and the next: before it
        Import,
        Wizard,
        Leaving, ///< before going to another version
        Working,
        Unknown,
        Replacing ///< before another scene takes its place; the numbers are stored, so this comes last
    };

    qint64 number = 0; ///< from 1; never given twice in one scene
    QDateTime time;
    Reason reason = Unknown;
    QString name;       ///< given by hand; may be empty
    QString detail;     ///< of the script or the imported file
    qint64 size = 0;    ///< bytes of the file
    QByteArray picture; ///< PNG, may be empty
    QByteArray head;    ///< the file's first bytes, with its length and checksum, see kxEnvelope

    /// The name, or why it was kept, in the user's words.
    QString title() const { return name.isEmpty() ? why() : name; }
    QString why() const;
};

/// The table of one scene's versions, an SQLite database. Several processes may use it at the same time.
///
/// After the first error nothing is read or written any more, and failure() tells it.
class kxVersionIndex
{
public:
    explicit kxVersionIndex(const QString& file);
    ~kxVersionIndex();
    kxVersionIndex(const kxVersionIndex&) = delete;
    kxVersionIndex& operator=(const kxVersionIndex&) = delete;

    const QString& failure() const { return _failure; }
    bool isDamaged() const { return _isDamaged; }

    /// Nobody else writes until commit().
    void begin();
    bool commit();

    /// The path of the scene's file, or of what a scene came from that was never saved; may be empty.
    QString document();
    void setDocument(const QString& path);

    /// The oldest first.
    std::vector<kxVersion> versions();
    std::optional<kxVersion> last();
    qint64 nextNumber();
    void insert(const kxVersion& version);
    void remove(qint64 number);
    void rename(qint64 number, const QString& name);
    void setPicture(qint64 number, const QByteArray& picture);

    /// What changed since the version `since`; empty where that wasn't stored.
    QByteArray changes(qint64 number, qint64 since);
    void setChanges(qint64 number, qint64 since, const QByteArray& changes);

private:
    kxStatement statement(const char* sql);
    void execute(const char* sql);
    void fail(int result);
    static kxVersion read(const kxStatement& row);

    sqlite3* _database = nullptr;
    QString _failure;
    bool _isDamaged = false;
};
