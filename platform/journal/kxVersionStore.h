#pragma once

#include <journal/kxVersionIndex.h>

#include <QStringList>

#include <memory>
#include <utility>
#include <vector>

/// The versions of one scene: a folder with a whole scene file for each, and an index of what they are.
///
/// Several processes may have the same one. A damaged index is made again from the files; what was lost or is left out
/// stands in notes().
class KX_API kxVersionStore
{
public:
    /// Makes nothing until the first version comes.
    explicit kxVersionStore(const QString& folder, const QString& document = QString());
    ~kxVersionStore();

    /// Beside the settings: of all scenes.
    static QString rootFolder();
    /// Of the file at `path`, which need not be there any more.
    static QString folderOf(const QString& path);
    /// Another one at each call, for a scene that was never saved.
    static QString makeNeverSavedFolder();
    static bool isNeverSaved(const QString& folder);
    /// A scene that has versions.
    struct Document
    {
        QString folder;
        QString path; ///< of its file, or where it was never saved of what it came from; may be empty
        bool isNeverSaved = false;
        QDateTime last;
        int count = 0;
    };
    /// The one with the latest version first.
    static std::vector<Document> documents();

    const QString& folder() const { return _folder; }
    /// Why nothing is kept or read any more; empty while all is well.
    QString failure() const;
    QStringList takeNotes() { return std::exchange(_notes, {}); }

    /// The oldest first.
    std::vector<kxVersion> list();
    std::optional<kxVersion> last();
    std::optional<kxVersion> find(qint64 number);
    QString file(qint64 number) const;
    /// A version has the content of this file.
    bool holds(const QString& file);
    /// False, with the reason, where the version's file isn't the one that was kept. It goes by size and head.
    bool isSound(const kxVersion& version, QString& reason) const;

    /// The same, and that nothing within it was damaged, for which all of it is read.
    bool isWhole(const kxVersion& version, QString& reason) const;

    /// A place for a file that move() then takes, empty where there is none.
    QString temporary();
    /// Keeps the file that lies there, which goes from its place. Number, size, head and, where there is none, time are
    /// filled in. Gives the number: that of the last version where it has the same content, and 0 on a failure. A name
    /// is given to the last one then, or where that bears another, it is kept twice.
    qint64 move(kxVersion version, const QString& file);
    /// The same with a scene file that stays where it is.
    qint64 copy(const kxVersion& version, const QString& file);
    /// Takes all versions of another store, which goes.
    void adopt(kxVersionStore& other);
    void rename(qint64 number, const QString& name);
    void setPicture(qint64 number, const QByteArray& picture);
    void remove(qint64 number);
    /// Nothing more is kept, and why; the first reason counts.
    void fail(const QString& why);

    QByteArray changes(qint64 number, qint64 since);
    void setChanges(qint64 number, qint64 since, const QByteArray& changes);

private:
    bool open(bool makes);
    void mend();
    void reconcile();

    QString _folder, _document;
    std::unique_ptr<kxVersionIndex> _index;
    QString _failure;
    QStringList _notes;
};

/// How much is kept of all scenes together.
struct KX_API kxVersionBounds
{
    int days = 90; ///< of versions without a name
    qint64 bytes = 2LL << 30;

    /// Removes what is beyond: what is too old, then of what is too much the oldest, and those with a name last.
    /// `newest` stays: the version that was just kept in this folder. Gives the bytes that are left.
    qint64 apply(const QString& folder, qint64 newest, const QDateTime& now) const;
};
