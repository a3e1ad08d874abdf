#include "kxSceneFixture.h"

#include <app/kxDocument.h>
#include <app/kxRecoveryDialog.h>
#include <app/kxSession.h>
#include <journal/kxHistory.h>
#include <journal/kxJournal.h>
#include <journal/kxRecovery.h>
#include <kernel/kxLogModel.h>

#include <QListWidget>
#include <QPushButton>
#include <QRegularExpression>

#include <csignal>
#include <sys/resource.h>

using namespace kxSceneFixture;

/// No file grows beyond this many bytes: a disk that is full.
class Tight
{
public:
    explicit Tight(qint64 bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &_before);
        const rlimit tight = {rlim_t(bytes), _before.rlim_max};
        std::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &tight);
    }
    ~Tight() { ::setrlimit(RLIMIT_FSIZE, &_before); }

private:
    rlimit _before = {};
};

/// What a run that died leaves to the next one. A run dies here by a copy of its folder, without the lock.
class tst_kxSession : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        _folder.reset(new QTemporaryDir);
        qputenv("KX_SETTINGS_DIR", QFile::encodeName(_folder->path()));
        _session.reset(new kxSession(true));
        _document.reset(new kxDocument);
        _document->newScene();
        _session->follow(*_document);
        addObject("Rotor");
        kxScene::the()->markStructureChanged();
        QVERIFY(_document->saveTo(_folder->filePath("engine.kxs")));
        turn();
    }
    void cleanup()
    {
        _document.reset();
        _session.reset();
        QVERIFY(sessions().size() <= 2); // what a test left there on purpose
    }

    void changesAreOfferedUntilTheyAreTaken()
    {
        kxSceneEdits::rename(objects().front(), "Stator");
        kxSelection::the().selectNodes({objects().front()});
        turn();
        const QByteArray state = bytes();
        die();
        QVERIFY(kxHistory::the().undo() && kxHistory::the().undo()); // the selection, and what is to be lost
        turn();
        QVERIFY(!_document->isUnsaved());
        const QByteArray file = fileBytes();
        std::vector<kxLeftover> found = offered();
        QVERIFY(found.size() == 1 && texts().isEmpty()); // not this run's own, and by one at a time
        QVERIFY2(QRegularExpression("^engine, last change \\d\\d:\\d\\d:\\d\\d, 'Rename.*'$")
                     .match(found[0].description())
                     .hasMatch(),
                 qPrintable(found[0].description()));
        kxRecoveryDialog dialog(
            std::move(found), [this](kxLeftover& leftover) { return open(leftover); }, nullptr);
        QString proposed;
        _document->dialogs().askForPath = [&proposed](const QString& proposal)
        { return proposed = proposal, QString(); };
        dialog.findChild<QPushButton*>("_recoveryOpen")->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(bytes(), state);
        QVERIFY(_document->isUnsaved() && !_document->save() && proposed == _folder->filePath("engine"));
        QCOMPARE(fileBytes(), file);
        QCOMPARE(sessions().size(), 1); // this run's own, which would be offered now
        die();
        QCOMPARE(texts().filter("'Rename").size(), 1);
        QVERIFY(_document->saveTo(_folder->filePath("other.kxs")) && !_document->isUnsaved());
        die();
        QCOMPARE(texts().size(), 1); // of the first death; there was nothing to lose in the second
    }

    /// What can be read of a damaged one is offered; one of which nothing can be read stays until it is deleted.
    void damagedOnesAreSaid()
    {
        kxSceneEdits::rename(objects().front(), "Stator");
        turn();
        const QByteArray state = bytes();
        die();
        die();
        kxHistory::the().undo();
        turn();
        const auto damage = [this](int death, qint64 length)
        {
            for (const char* const name : {"journal.db", "journal.db-wal"})
            {
                QFile file(_folder->filePath(QString("sessions/dead%1/").arg(death) + name));
                QVERIFY(file.open(QIODevice::ReadWrite) &&
                        file.write(QByteArray(int(std::min(length, file.size())), 'x')) > 0);
            }
        };
        damage(_deaths - 1, 1 << 30);
        damage(_deaths, 32); // the heads
        bool isOpened = false;
        kxRecoveryDialog dialog(
            offered(), [&](kxLeftover& leftover) { return isOpened = open(leftover); }, nullptr);
        auto* const list = dialog.findChild<QListWidget*>("_recoveryList");
        auto* const button = dialog.findChild<QPushButton*>("_recoveryOpen");
        QVERIFY(list->count() == 2 && list->item(0)->text().contains("engine") &&
                list->item(0)->text().contains("'Rename"));
        QVERIFY(list->item(1)->text().startsWith("Damaged, nothing can be read") && button->isEnabled());
        list->setCurrentRow(1);
        Q_EMIT list->itemActivated(list->item(1));
        QVERIFY(!button->isEnabled() && !isOpened);
        list->setCurrentRow(0);
        button->click();
        QVERIFY(isOpened && bytes() == state && sessions().size() == 2);
    }

    void whatHasNoChangesGoes()
    {
        const auto rename = [] { kxSceneEdits::rename(objects().front(), "Other"), turn(); };
        const std::function<void()> ways[] = {
            [] {}, // nothing done
            [&] { rename(), kxHistory::the().undo(); },
            [&]
            {
                QDir().mkpath(_folder->filePath("sessions/dead")); // before it had taken a scene
                QVERIFY(QFile(_folder->filePath("sessions/dead/journal.db")).open(QIODevice::WriteOnly));
            },
            [&]
            {
                rename();
                die();
                QFile journal(_folder->filePath(QString("sessions/dead%1/journal.db").arg(_deaths)));
                QVERIFY(journal.open(QIODevice::ReadWrite));
                journal.setFileTime(QDateTime::currentDateTime().addDays(-40), QFileDevice::FileModificationTime);
                kxHistory::the().undo();
            },
            [&] { rename(), _document->newScene(); }};
        for (const std::function<void()>& way : ways)
        {
            way();
            turn();
            die();
            QVERIFY2(texts().isEmpty() && sessions().size() == 1, qPrintable(QString::number(&way - ways)));
        }
    }

    void aFolderThatCantBeWrittenIsSaid()
    {
        _session.reset();
        QFile file(_folder->filePath("sessions")); // in the folder's place
        QVERIFY(QDir().rmdir(file.fileName()) && file.open(QIODevice::WriteOnly));
        const std::size_t said = kxLogModel::the().entries().size();
        kxSession session(true);
        QCOMPARE(kxLogModel::the().entries().size(), said + 1);
        QVERIFY(kxLogModel::the().entries().back().text.contains(file.fileName()));
        QVERIFY(kxJournal::the().isRunning()); // all comes back as long as the run lasts
    }

    /// The journal can't grow: what it had is there until a save makes it old, and another scene has one again. What
    /// its entries held can't be walked; steps can, and so can what comes.
    void aFullDiskEndsTheFileUntilAnotherSceneIsOpen()
    {
        kxHistory& history = kxHistory::the();
        const auto write = [](const char* name) // beside the stack
        {
            objects().front()->setNodeName(name);
            osg::markChanged(objects().front(), osg::AttachmentContainer::NodeNameFieldMask);
            turn();
        };
        const auto name = [] { return objects().front()->getNodeName(); };
        write("Beside");
        kxSceneEdits::rename(objects().front(), "Step");
        turn();
        QVERIFY(_document->saveTo(_folder->filePath("step.kxs")) && !_document->isUnsaved());
        const QString journal = _folder->filePath("sessions/" + sessions().front() + "/journal.db");
        {
            const Tight tight(QFileInfo(journal + "-wal").size());
            write("Lost");
        }
        QVERIFY(kxJournal::the().hasFailed() && _document->isUnsaved() && QFile::exists(journal));
        turn();
        write("Kept");
        QVERIFY(history.undo() && name() == "Lost" && _document->isUnsaved());
        QVERIFY(history.undo() && name() == "Beside" && !history.undo() && _document->isUnsaved());
        QVERIFY(history.redo() && history.redo() && name() == "Kept" && !history.redo());
        QVERIFY(_document->saveTo(_folder->filePath("full.kxs")) && !QFile::exists(journal));
        QVERIFY(!_document->isUnsaved() && history.undo() && name() == "Lost" && _document->isUnsaved());
        _document->newScene();
        QVERIFY(!kxJournal::the().hasFailed() && QFile::exists(journal));
    }

    /// What a run left stays until it is safe elsewhere: in this run's journal, or in a file. It is said once.
    void aFullDiskTakesNothingOfWhatWasLeft()
    {
        die(); // without changes
        kxSceneEdits::rename(objects().front(), "Stator");
        turn();
        const QByteArray state = bytes();
        die();
        kxHistory::the().undo();
        turn();
        QFile lock(_folder->filePath(QString("sessions/dead%1/lock").arg(_deaths)));
        QVERIFY(lock.open(QIODevice::WriteOnly) &&
                lock.write("999999999\nkxhost\n" + QSysInfo::machineHostName().toLocal8Bit() + '\n' +
                           QSysInfo::machineUniqueId() + '\n' + QSysInfo::bootUniqueId() + '\n') > 0);
        lock.close();
        QStringList waiting;
        {
            const Tight tight(0);
            QVERIFY(kxLeftover::find(kxSession::folder(), &waiting).empty());
        }
        QVERIFY(waiting.size() == 1 && waiting.front().startsWith("1 scene waits"));
        const auto warnings = []
        {
            const auto& entries = kxLogModel::the().entries();
            return std::count_if(entries.begin(), entries.end(),
                                 [](const auto& entry) { return entry.text.contains("can't be recovered"); });
        };
        const auto before = warnings();
        for (const bool isSaved : {false, true})
        {
            {
                const Tight tight(20000); // room for locks only
                std::vector<kxLeftover> found = kxLeftover::find(kxSession::folder(), &waiting);
                QVERIFY(found.size() == 1 && found[0].isReadable() && waiting.isEmpty() && open(found[0]));
            }
            QVERIFY(bytes() == state && _document->isUnsaved() && texts().isEmpty()); // held
            QCOMPARE(warnings(), before + 1 + int(isSaved));
            if (isSaved)
                QVERIFY(_document->saveTo(_folder->filePath("safe.kxs")));
            else
                _document->newScene();
            QCOMPARE(texts().filter("'Rename").size(), isSaved ? 0 : 1);
        }
    }

    /// A lock of another machine holds as long as somebody may live there.
    void locksOfOtherMachines()
    {
        kxSceneEdits::rename(objects().front(), "Stator");
        turn();
        die();
        const QString folder = _folder->filePath(QString("sessions/dead%1/").arg(_deaths));
        QFile lock(folder + "lock");
        QVERIFY(lock.open(QIODevice::WriteOnly) && lock.write("77\nkxhost\nattic\nab12\ncd34\n") > 0);
        lock.close();
        QStringList waiting;
        QVERIFY(kxLeftover::find(kxSession::folder(), &waiting).empty());
        QVERIFY(waiting.size() == 1 && waiting.front().contains("'attic'"));
        for (const char* const name : {"journal.db", "journal.db-wal"})
        {
            QVERIFY(texts().isEmpty()); // either was written just now
            QFile file(folder + name);
            QVERIFY(file.open(QIODevice::ReadWrite) &&
                    file.setFileTime(QDateTime::currentDateTime().addDays(-2), QFileDevice::FileModificationTime));
        }
        std::vector<kxLeftover> found = kxLeftover::find(kxSession::folder(), &waiting);
        QVERIFY(found.size() == 1 && waiting.isEmpty());
        found[0].remove();
    }

private:
    static void turn() { QCoreApplication::processEvents(); }
    QStringList sessions() const
    {
        return QDir(_folder->filePath("sessions")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    }
    static std::vector<kxLeftover> offered() { return kxLeftover::find(kxSession::folder()); }
    static QStringList texts()
    {
        QStringList texts;
        for (const kxLeftover& leftover : offered())
            texts << leftover.description();
        return texts;
    }
    QByteArray fileBytes() const
    {
        QFile file(_folder->filePath("engine.kxs"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void die()
    {
        const QDir from(_folder->filePath("sessions/" + sessions().front()));
        const QString to = _folder->filePath(QString("sessions/dead%1").arg(++_deaths));
        QVERIFY(QDir().mkpath(to));
        for (const char* const name : {"journal.db", "journal.db-wal"})
            QVERIFY(QFile::copy(from.filePath(name), to + '/' + name));
    }
    bool open(kxLeftover& leftover)
    {
        kxRecovery recovery(leftover.journal());
        if (!_document->openRecovered(recovery, leftover.path()))
            return false;
        _session->takeOver(leftover);
        return true;
    }

    QScopedPointer<QTemporaryDir> _folder;
    QScopedPointer<kxSession> _session;
    QScopedPointer<kxDocument> _document;
    int _deaths = 0;
};

QTEST_MAIN(tst_kxSession)
#include "tst_kxSession.moc"
