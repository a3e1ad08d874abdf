#pragma once

#include <QDateTime>
#include <QLockFile>
#include <QStringList>

#include <memory>
#include <vector>

/// The folder of a run of the application that didn't end as it should, with changes that are in no file.
///
/// Held by a lock as long as this lives, so that no other run takes the same.
class kxLeftover
{
public:
    /// Those in `folder` that no living run holds, the newest first. What has no changes, is older than a month or
    /// beyond the newest twenty goes. `waiting` is given a text for the user about those that nobody may hold and that
    /// can't be offered yet.
    static std::vector<kxLeftover> find(const QString& folder, QStringList* waiting = nullptr);

    QString journal() const;
    /// Of the scene's file or of the model it came from; empty for none.
    const QString& path() const { return _path; }
    /// "engine, last change 12:03:05, 'Move key'".
    QString description() const;
    /// False where its journal is damaged so that nothing can be made of it.
    bool isReadable() const { return _isReadable; }
    void remove();

private:
    friend class kxSession;
    static constexpr char LockName[] = "lock", JournalName[] = "journal.db";

    explicit kxLeftover(const QString& folder);
    /// All but the lock.
    void clear() const;
    bool isWanted();
    /// Takes the lock, also that of a machine that is gone.
    bool hold();

    QString _folder;
    std::unique_ptr<QLockFile> _lock;
    QString _path, _text;
    QDateTime _time;
    bool _isReadable = true;
};
