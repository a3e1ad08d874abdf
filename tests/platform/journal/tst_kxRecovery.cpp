#include "kxFilesFixture.h"
#include "kxRandomEdits.h"
#include "kxRichScene.h"

#include <files/scene/kxSceneContent.h>
#include <files/scene/kxSceneFile.h>
#include <journal/kxJournal.h>
#include <journal/kxRecovery.h>
#include <journal/kxVersionStore.h>
#include <kernel/kxLogModel.h>
#include <scene/kxChosenCamera.h>

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QProcess>
#include <QtTest>

#include <csignal>
#include <kxSeed.h>
#include <kxTable.h>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
kxJournal& journal()
{
    return kxJournal::the();
}

/// Of the open scene as its file would be, without anybody hearing of it.
QByteArray digest(const QString& folder)
{
    kxAnimManager::the()->setCurrentFrame(7, true, false); // no part of the journal
    const QString path = folder + QStringLiteral("/digest.kxs");
    kxFileReport report(path);
    kxSceneOrigin origin;
    kxSceneFile::save(path, report, origin);
    return QCryptographicHash::hash(bytesOfFile(path), QCryptographicHash::Md5).toHex();
}

/// Of the scene that a database gives, or why it gives none.
QByteArray recovered(const QString& folder, QString& fault)
{
    kxRecovery recovery(folder + QStringLiteral("/journal.db"));
    kxSceneContent content;
    kxFileReport report;
    const bool isRead = recovery.read(content, report);
    fault = isRead ? report.notes().join(QLatin1Char('\n')) : report.error();
    if (!isRead)
        return QByteArray();
    kxSceneIO::open(content, report);
    return digest(folder);
}

/// A scene in a journal in this folder; of a file there, or of none. Gives the states that the journal had.
std::set<QByteArray> begin(const QString& folder, bool isOfFile)
{
    kxSceneIO::newScene();
    kxRichScene::make();
    kxAnimManager::the()->verifyClipStructure(); // as opening does
    kxFileReport report;
    const QString path = folder + QStringLiteral("/scene.kxs");
    if (isOfFile)
        kxSceneIO::save(path, report);
    journal().start(folder + QStringLiteral("/journal.db"));
    std::set<QByteArray> states{digest(folder)};
    if (isOfFile)
        kxSceneIO::open(path, report);
    states.insert(digest(folder));
    return states;
}

void edit(kxRandomEdits& random)
{
    for (std::size_t n = 1 + random.below(3); n > 0; --n)
        random.edit();
    kxAnimManager::the()->verifyClipStructure();
}

/// 0 for none.
ino_t inodeOf(const QString& path)
{
    struct stat status = {};
    ::stat(QFile::encodeName(path).constData(), &status);
    return status.st_ino;
}

void say(char what, const QByteArray& digest)
{
    const QByteArray line = what + digest + '\n';
    Q_UNUSED(::write(STDOUT_FILENO, line.constData(), std::size_t(line.size())));
}

/// Edits, walks and saves until it is killed, and says what is to be there: "?" before a commit, "!" after it.
[[noreturn]] void editForEver(const QString& folder, unsigned seed)
{
    kxRandomEdits random(seed);
    begin(folder, random.below(3) != 0);
    edit(random);
    journal().commit();
    std::vector<QByteArray> states{digest(folder)};
    std::vector<quint64> entries;
    say('!', states.back());
    for (;;)
    {
        const std::size_t what = random.below(12);
        if (what == 0)
        {
            kxFileReport report;
            kxSceneIO::save(folder + QStringLiteral("/scene.kxs"), report);
        }
        else if (what < 3 && !entries.empty())
        {
            const quint64 last = entries.back();
            entries.pop_back();
            states.pop_back();
            say('?', states.back());
            journal().exchange(last, [] {});
            journal().forget(last);
            say('!', states.back());
        }
        else
        {
            edit(random);
            const QByteArray now = digest(folder);
            if (now != states.back())
                say('?', now);
            const quint64 entry = journal().commit();
            if (entry == 0)
                continue;
            entries.push_back(entry);
            states.push_back(now);
            say('!', now);
        }
    }
}

/// Of the database and its log.
typedef std::function<void(QByteArray&, QByteArray&, kxRandomEdits&)> Damage;
} // namespace

Q_DECLARE_METATYPE(Damage)

class tst_kxRecovery : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { journal().stop(); }

    /// A process is killed at any moment, as often as KX_KILLS says: what it committed last is there, or what it was
    /// committing.
    void nothingCommittedIsLost()
    {
        const int kills = qEnvironmentVariableIsSet("KX_KILLS") ? qEnvironmentVariableIntValue("KX_KILLS") : 20;
        const unsigned first = kxSeed();
        std::mt19937 chance(first);
        int inFlight = 0, states = 0;
        for (int i = 0; i < kills; ++i)
        {
            const QTemporaryDir folder;
            const unsigned seed = first + unsigned(i);
            QProcess process;
            process.start(QCoreApplication::applicationFilePath(),
                          {QStringLiteral("--edit"), folder.path(), QString::number(seed)});
            QByteArray said;
            const int lines = 1 + int(chance() % 60);
            while (said.count('\n') < lines && process.waitForReadyRead(60000))
                said += process.readAllStandardOutput();
            // Any time later, or when the file has just been replaced.
            const auto file = [&] { return inodeOf(folder.filePath(QStringLiteral("scene.kxs"))); };
            const bool isAtSave = chance() % 3 == 0;
            const qint64 wait = isAtSave ? 200000000 : qint64(chance() % 8000000);
            QElapsedTimer clock;
            clock.start();
            for (const ino_t before = file(); clock.nsecsElapsed() < wait && (!isAtSave || file() == before);)
                continue;
            process.kill();
            process.waitForFinished(60000);
            said += process.readAllStandardOutput();
            const QList<QByteArray> all = said.split('\n');
            QByteArray committed, coming;
            for (const QByteArray& line : all.mid(0, all.size() - 1))
                (line[0] == '!' ? committed : coming) = line.mid(1);
            QString fault;
            const QByteArray found = recovered(folder.path(), fault);
            QVERIFY2(fault.isEmpty() && (found == committed || found == coming),
                     qPrintable(QStringLiteral("seed %1, %2 lines: %3").arg(seed).arg(all.size()).arg(fault)));
            inFlight += found != committed;
            states += all.size() / 2;
        }
        qInfo("%d kills after %d commits, %d of them between a commit and its report", kills, states, inFlight);
    }

    /// One warning, the scene is left alone, and what was written before is still there.
    void diskEndsTheJournal_data()
    {
        kxColumns<bool>("isFull");
        kxRow("full", true);
        kxRow("no such folder", false);
    }
    void diskEndsTheJournal()
    {
        QFETCH(const bool, isFull);
        const QTemporaryDir folder;
        QSignalSpy failures(&journal(), &kxJournal::failed);
        const std::size_t warnings = kxLogModel::the().entries().size();
        kxRandomEdits random(11);
        std::set<QByteArray> states = begin(folder.path() + (isFull ? "" : "/none"), false);
        QCOMPARE(journal().hasFailed(), !isFull);
        rlimit before = {};
        ::getrlimit(RLIMIT_FSIZE, &before);
        const rlimit tight = {rlim_t(QFileInfo(folder.filePath("journal.db-wal")).size()) + 60000, before.rlim_max};
        QByteArray last;
        for (int i = 0; i < 60; ++i)
        {
            edit(random);
            last = digest(folder.path());
            std::signal(SIGXFSZ, SIG_IGN);
            ::setrlimit(RLIMIT_FSIZE, &tight);
            if (journal().commit() != 0 && !journal().hasFailed())
                states.insert(last);
            ::setrlimit(RLIMIT_FSIZE, &before);
            QCOMPARE(digest(folder.path()), last);
        }
        QVERIFY(journal().isRunning() && journal().hasFailed());
        QCOMPARE(failures.count(), 1);
        QCOMPARE(kxLogModel::the().entries().size(), warnings + 1);
        QString fault;
        if (isFull)
            QVERIFY2(states.count(recovered(folder.path(), fault)) == 1, qPrintable(fault));
    }

    /// The scene's file holds what didn't change: where it isn't that file any more, only a whole journal gives a
    /// scene.
    void withoutTheSceneFile()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("scene.kxs"));
        for (const bool isOfFile : {false, true})
        {
            begin(folder.path(), isOfFile);
            const QByteArray state = digest(folder.path());
            journal().stop();
            QString fault;
            QCOMPARE(recovered(folder.path(), fault), state);
            if (!isOfFile)
                continue;
            kxVersionStore versions(kxVersionStore::folderOf(file)); // has what the journal needs
            QCOMPARE(versions.copy(kxVersion(), file), qint64(1));
            kxSceneIO::newScene();
            digest(folder.path());
            QVERIFY(writeFile(file, bytesOfFile(folder.filePath(QStringLiteral("digest.kxs")))));
            QVERIFY(recovered(folder.path(), fault) == state && versions.holds(file) == false);
            versions.remove(1);
            recovered(folder.path(), fault);
            QVERIFY2(fault.contains(file + "' is another file now"), qPrintable(fault));
            QVERIFY(QFile::remove(file) && recovered(folder.path(), fault).isEmpty());
            QVERIFY2(fault.contains(file + "' isn't there"), qPrintable(fault));
        }
    }

    /// Beside what changes, that is: no step, but the scene looks so again, as after saving and opening.
    void whatIsShownComesBack()
    {
        for (const bool isOfFile : {false, true})
        {
            const QTemporaryDir folder;
            begin(folder.path(), isOfFile);
            kxScene::the()->setSetting("film.range/Show", "31 70");
            kxScene::the()->markSettingsChanged();
            kxAnimManager::the()->setFPS(30);
            journal().commit();
            kxChosenCamera::set(nodeNamed("On the camera")->getParent());
            journal().noteCamera();
            const QByteArray state = digest(folder.path());
            journal().stop();
            QString fault;
            QVERIFY(recovered(folder.path(), fault) == state && fault.isEmpty());
            QVERIFY(kxChosenCamera::get() != osg::NullFC && kxAnimManager::the()->fps() == 30);
            kxScene::the()->setSetting("film.range/Show", "");
            journal().start(folder.filePath("journal.db")); // keeps what was chosen before
            const QByteArray begun = digest(folder.path());
            journal().stop();
            QCOMPARE(recovered(folder.path(), fault), begun);
        }
    }

    /// Whatever happens to the database and its log, what can be read comes back, and is said to be damaged where it
    /// isn't a state that was. The files stay as they are.
    void damageGivesTheLastStateThatCanBeRead_data()
    {
        const auto at = [](const QByteArray& bytes, kxRandomEdits& random)
        { return bytes.isEmpty() ? 0 : int(random.below(std::size_t(bytes.size()))); };
        const auto flip = [at](QByteArray& bytes, kxRandomEdits& random)
        {
            if (const int place = at(bytes, random); place < bytes.size())
                bytes[place] = char(bytes[place] ^ char(1 + random.below(255)));
        };
        const auto wipe = [](QByteArray& bytes, int from, int length)
        { bytes.replace(from, length, QByteArray(length, 0)); };
        constexpr int Page = 16384;
        kxColumns<Damage, int>("damage", "percent"); // that give the last state, at least
        const auto row = [](const char* name, int percent, const Damage& damage) { kxRow(name, damage, percent); };
        row("a byte", 70, [=](QByteArray& database, QByteArray&, kxRandomEdits& random) { flip(database, random); });
        row("a byte of the log", 80, [=](QByteArray&, QByteArray& log, kxRandomEdits& random) { flip(log, random); });
        row("cut", 30,
            [=](QByteArray& database, QByteArray&, kxRandomEdits& random) { database.truncate(at(database, random)); });
        row("log cut", 33, [=](QByteArray&, QByteArray& log, kxRandomEdits& random) { log.truncate(at(log, random)); });
        row("empty", 66, [=](QByteArray& database, QByteArray&, kxRandomEdits&) { database.clear(); });
        row("no log", 33, [=](QByteArray&, QByteArray& log, kxRandomEdits&) { log.clear(); });
        row("first page", 100, [=](QByteArray& database, QByteArray&, kxRandomEdits&) { wipe(database, 0, Page); });
        row("any page", 50,
            [=](QByteArray& database, QByteArray&, kxRandomEdits& random)
            { wipe(database, at(database, random) / Page * Page, Page); });
        row("head of the log", 100, [=](QByteArray&, QByteArray& log, kxRandomEdits&) { wipe(log, 0, 32); });
        row("a hole in the log", 50,
            [=](QByteArray&, QByteArray& log, kxRandomEdits& random)
            { wipe(log, at(log, random), std::min(log.size() / 2, 40000)); });
        row("a hundred bytes of both", 33,
            [=](QByteArray& database, QByteArray& log, kxRandomEdits& random)
            {
                for (int i = 0; i < 100; ++i)
                    flip(random.below(2) == 0 ? database : log, random);
            });
    }
    void damageGivesTheLastStateThatCanBeRead()
    {
        QFETCH(const Damage, damage);
        QFETCH(const int, percent);
        const unsigned seed = kxSeed();
        kxRandomEdits random(seed);
        const int copies = qEnvironmentVariableIsSet("KX_COPIES") ? qEnvironmentVariableIntValue("KX_COPIES") : 5;
        int last = 0, older = 0, mixed = 0, none = 0;
        for (const int kind : {0, 1, 2}) // saved, begun anew, and all in the database
        {
            const QTemporaryDir folder, damaged;
            const QString names[] = {QStringLiteral("/journal.db"), QStringLiteral("/journal.db-wal")};
            std::set<QByteArray> states = begin(folder.path(), kind == 0);
            QByteArray newest, bytes[2];
            for (int i = 0; i < 40; ++i)
            {
                kxFileReport report;
                if (i == 20)
                    kind == 0 ? void(kxSceneIO::save(folder.filePath(QStringLiteral("scene.kxs")), report))
                              : journal().start(folder.path() + names[0]);
                edit(random);
                states.insert(newest = digest(folder.path()));
                journal().commit();
            }
            if (kind == 2)
                journal().stop();
            for (const int file : {0, 1})
                bytes[file] = bytesOfFile(folder.path() + names[file]);
            journal().stop();
            for (int i = 0; i < copies; ++i)
            {
                QByteArray now[] = {bytes[0], bytes[1]};
                damage(now[0], now[1], random);
                for (const int file : {0, 1})
                    QVERIFY(writeFile(damaged.path() + names[file], now[file]));
                QFile::remove(damaged.path() + QStringLiteral("/journal.db-shm"));
                QString fault;
                const QByteArray found = recovered(damaged.path(), fault);
                QVERIFY(bytesOfFile(damaged.path() + names[0]) == now[0] &&
                        bytesOfFile(damaged.path() + names[1]) == now[1]);
                const bool isSaid =
                    fault.contains(QLatin1String("damaged")) || fault.contains(QLatin1String("another file"));
                QVERIFY2(states.count(found) != 0 || isSaid,
                         qPrintable(QStringLiteral("seed %1, copy %2: %3").arg(seed).arg(i).arg(fault)));
                ++(found.isEmpty() ? none : found == newest ? last : states.count(found) != 0 ? older : mixed);
            }
        }
        qInfo("%d the last state, %d older ones, %d of parts, %d nothing", last, older, mixed, none);
        QVERIFY(last * 100 >= percent * 3 * copies);
    }
};

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() == 4 && arguments[1] == QLatin1String("--edit"))
        editForEver(arguments[2], arguments[3].toUInt());
    if (qEnvironmentVariableIsSet("KX_KILLS"))
        qputenv("QTEST_FUNCTION_TIMEOUT", "7200000"); // milliseconds
    tst_kxRecovery test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_kxRecovery.moc"
