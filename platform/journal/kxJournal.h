#pragma once

#include <files/scene/kxSceneOrigin.h>
#include <journal/kxJournalStore.h>
#include <osg/ChangeList.h>
#include <scene/kxIdTable.h>

#include <QDateTime>
#include <QObject>

#include <functional>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class kxJournalBase;

/// Knows what the open scene was before, entry by entry, and brings each entry's other side back.
///
/// It hears of every marked field; what evaluation writes is no change. commit() compares what was marked with the
/// records that it has of it, and keeps the state before as an entry. exchange() puts an entry's other side in place of
/// what is there, whichever it is: the way back and the way there are one. Containers keep their ids.
///
/// A container plays a part while the scene owns it, directly or through others. A write that isn't marked is a defect
/// of who writes; unmarked() finds it. Main thread only.
///
/// What the scene's file holds isn't held twice: records of containers that didn't change since come from the file.
///
/// Where the database can't be written any more, or another program writes into that file, the entries are lost and it
/// begins anew with the scene as it is.
class KX_API kxJournal : public QObject, private osg::ChangeListener, private kxSceneObserver
{
    Q_OBJECT
public:
    static kxJournal& the();

    /// Begins with the open scene as it is, and goes along where kxSceneIO puts another in its place. `file` is the
    /// database's path; empty: one that goes with the process.
    void start(const QString& file);
    void stop();
    bool isRunning() const { return _store != nullptr; }
    /// Its database couldn't be written: what comes is known as long as the process lives.
    bool hasFailed() const { return _hasFailed; }

    /// True where something was marked since the last commit.
    bool isPending() const { return _isPending; }
    /// The number of the entry that holds what was before; 0 where nothing differs, or after failed(). `into`: the
    /// newest entry, which takes this over and keeps its number.
    quint64 commit(quint64 into = 0);
    /// The number of an entry that changes nothing, for steps whose writes cancel out with others: exchange() holds all
    /// as it is. What is pending has to be committed before.
    quint64 commitNothing();
    bool has(quint64 number) const;
    /// Makes two entries that follow each other one, and gives its number; 0 for none.
    quint64 join(quint64 first, quint64 second);
    /// Puts the other side of an entry into the scene, after `walkSteps` did what it knows of it. False where the entry
    /// is lost, and nothing was done. What is pending has to be committed before, else it becomes a part of this entry.
    bool exchange(quint64 number, const std::function<void()>& walkSteps);
    /// Drops an entry that isn't walked any more.
    void forget(quint64 number);
    /// Drops the newest entry, which did nothing to the scene: what was in it only meanwhile is known again as before.
    void withdraw(quint64 number);
    /// The database stays under twice the scene and this many bytes, beside a log of 32 MB at most; entries that make
    /// it larger are dropped.
    void setSpare(qint64 bytes) { _spare = bytes; }

    struct Change
    {
        osg::UInt32 id;           ///< 0: what belongs to the scene itself, see kxSceneRecord
        QByteArray before, after; ///< see kxContainerRecord; empty where the container wasn't in the scene
    };
    /// The newest entry did something; it took something out of the scene. Quicker than changes().
    bool differs(quint64 number) const;
    bool takesOut(quint64 number) const;
    /// What an entry did, or will do where it was taken back.
    std::vector<Change> changes(quint64 number) const;
    /// The record of a container as of the last commit, whether it is in the scene or was; empty for none.
    QByteArray record(osg::UInt32 id) const;

    /// What a recovery is to know beside the scene.
    struct Description
    {
        QString path; ///< of the file that the scene came from
        QString text; ///< of the last change
        QDateTime time;
        bool isSaved;     ///< there is nothing to recover, where nothing is committed after this
        QString versions; ///< see kxVersions::neverSavedFolder()
    };
    void describe(const Description& description);
    /// A recovery is to know through which camera the scene is looked at. Free where it is the same as before.
    void noteCamera();

    /// Compares all of the scene with the records, whatever was marked: what differs was written without a mark. Empty
    /// right after a commit, or something is wrong.
    std::vector<osg::UInt32> unmarked() const;

Q_SIGNALS:
    /// The first mark after a commit.
    void pending();
    /// Another scene is open; there are no entries any more.
    void replaced();
    /// The scene is about to be written. Where something is pending after this, the file's records aren't taken.
    void toBeSaved();
    /// An entry was dropped to keep the database small: the oldest, or the one taken back first. From within commit().
    void dropped(quint64 number);
    /// All entries are lost, and why. The scene is as it is; `isChanged`: in a way that no entry says. From within
    /// whatever was called.
    void failed(const QString& why, bool isChanged);

private:
    /// One container's two states in a commit.
    struct State
    {
        bool wasPresent = false, isPresent = false;
        QByteArray before, after;
    };
    typedef std::unordered_map<osg::UInt32, State> States;
    class Comparison;

    kxJournal();
    ~kxJournal() override;
    void containerChanged(const osg::FieldContainerPtr& container, const osg::BitVector& whichField) override;
    void containerDestroyed(osg::UInt32 id) override;
    void mark(osg::UInt32 id);
    void notePending();
    void sceneReplaced(const kxSceneOrigin& origin) override;
    void sceneToBeSaved() override { Q_EMIT toBeSaved(); }
    void sceneToReplaceFile(const kxSceneOrigin& origin) override;
    void sceneSaved(const kxSceneOrigin& origin) override;
    void takeScene(const kxSceneOrigin& origin, bool isSaved = true);
    std::vector<osg::UInt32> takeOwners();
    void keepBaseRecords(const kxJournalBase& next);
    bool isPresent(osg::UInt32 id) const { return _owners.get(id) > 0; }
    bool isInScene(osg::UInt32 id) const { return id == 0 || isPresent(id); } // 0: what belongs to the scene itself
    std::vector<kxJournalStore::Row> rowsOf(quint64 number) const;
    States compare(const std::vector<osg::UInt32>& also);
    void write(quint64 entry, const States& states);
    /// The state of a container on this side of an entry.
    State beside(quint64 number, osg::UInt32 id) const;
    void noteSerial();
    void compact();
    qint64 sceneSize() const;
    void dropUnused();
    /// False where something that was known can't be read any more.
    bool isSound() const;
    /// Warns, and begins anew where that is possible.
    void fail(bool isChanged);
    void begin(const QString& file);
    void end();

    std::unique_ptr<kxJournalStore> _store;
    std::unique_ptr<kxJournalBase> _base; // null where no file holds the scene
    kxIdTable<osg::UInt32> _owners;       // how often the scene's containers own each, of the last commit
    std::vector<osg::UInt32> _marked;
    std::vector<osg::UInt32> _died; // while the scene owned them
    kxIdTable<bool> _isMarked;
    QByteArray _sceneRecord;
    std::vector<quint64> _entries; // in order
    std::unordered_set<quint64> _takenBack;
    quint64 _lastNumber = 0;
    quint64 _lastLost = 0; // entries up to this one
    quint64 _serial = 0;   // of the last transaction
    osg::UInt32 _cameraId = 0;
    qint64 _spare = 32 << 20;
    qint64 _sceneSize = 0; ///< in bytes, as of the last look
    bool _isPending = false;
    bool _hasFailed = false;
    bool _isFailureSaid = false; ///< and no database was written since
};
