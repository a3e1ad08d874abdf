#include "kxHistoryEdits.h"

#include <files/scene/kxFileReport.h>
#include <files/scene/kxSceneContent.h>
#include <files/text/kxSceneText.h>
#include <journal/kxHistory.h>
#include <journal/kxJournal.h>
#include <journal/kxRecovery.h>
#include <kxSeed.h>

#include <QApplication>
#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QProcess>
#include <QtTest>

#include <sqlite3.h>
#include <unistd.h>

using namespace kxHistoryEdits;

namespace
{
constexpr char Ready[] = "ready\n", CommitMark = '?';

QString journalIn(const QString& folder)
{
    return folder + QStringLiteral("/journal.db");
}

QByteArray digest(const kxSceneContent& content)
{
    return QCryptographicHash::hash(kxSceneText::of(content), QCryptographicHash::Md5).toHex();
}

void say(const QByteArray& line)
{
    Q_UNUSED(::write(STDOUT_FILENO, line.constData(), std::size_t(line.size())));
}

/// SQLite calls it for each database that is opened. Only what writes records is a state of the scene.
int watchCommits(sqlite3* database, const char**, const void*)
{
    static bool hasRecords = false;
    const auto note = [](void*, int, const char*, const char* table, sqlite3_int64)
    { hasRecords = hasRecords || qstrcmp(table, "latest") == 0; };
    const auto announce = [](void* of)
    {
        const char* const file = sqlite3_db_filename(static_cast<sqlite3*>(of), "main");
        if (std::exchange(hasRecords, false) && file != nullptr && QByteArray(file).endsWith("/killed/journal.db"))
            say(CommitMark + digest(kxSceneContent::ofScene()) + '\n');
        return 0;
    };
    sqlite3_update_hook(database, note, database);
    sqlite3_commit_hook(database, announce, database);
    return SQLITE_OK;
}

/// Works with all tools until it is killed, and tells of each commit of the journal before it is made what the scene
/// is then.
[[noreturn]] void walkForEver(const QString& folder, unsigned seed)
{
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(watchCommits));
    Application application;
    Application::makeScene();
    kxHistory& history = kxHistory::the();
    kxJournal::the().start(journalIn(folder));
    history.clear();
    Chance chance{QRandomGenerator(seed)};
    application.answer = [&chance] { return chance.below(3) > 0 ? QDialog::Accepted : QDialog::Rejected; };
    const std::vector<Edit> all = ofAll(folder);
    say(Ready);
    for (;;)
    {
        all[std::size_t(chance.below(int(all.size())))].run(chance);
        turns();
        for (const bool forward : {false, true})
            while (chance.below(4) == 0 && (forward ? history.redo() : history.undo()))
                turns();
    }
}
} // namespace

class tst_kxKilledWalk : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    /// The application is killed at any moment of any work, as often as KX_KILLS says: what it committed last is there,
    /// or what it was committing.
    void nothingCommittedIsLost()
    {
        const int kills = qEnvironmentVariableIsSet("KX_KILLS") ? qEnvironmentVariableIntValue("KX_KILLS") : 12;
        const unsigned first = kxSeed();
        std::mt19937 random(first);
        int commits = 0, inFlight = 0;
        for (int i = 0; i < kills; ++i)
        {
            const unsigned seed = first + unsigned(i);
            const QTemporaryDir temporary;
            const QString folder = temporary.filePath(QStringLiteral("killed"));
            QVERIFY(QDir().mkpath(folder));
            QProcess process;
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            environment.insert(QStringLiteral("KX_SETTINGS_DIR"), temporary.filePath(QStringLiteral("settings")));
            process.setProcessEnvironment(environment);
            process.setStandardErrorFile(QProcess::nullDevice());
            process.start(QCoreApplication::applicationFilePath(),
                          {QStringLiteral("--walk"), folder, QString::number(seed)});
            QByteArray said;
            const auto read = [&] { return process.waitForReadyRead(60000) && !(said += process.readAll()).isEmpty(); };
            while (!said.contains(Ready) && read())
                continue;
            const int lines = said.count('\n') + 1 + int(random() % 60);
            while (said.count('\n') < lines && read())
                continue;
            // Within the commit that was just announced, or any time later.
            const qint64 wait = qint64(random() % (random() % 2 == 0 ? 500000 : 60000000));
            QElapsedTimer clock;
            for (clock.start(); clock.nsecsElapsed() < wait;)
                continue;
            QVERIFY2(process.state() == QProcess::Running, qPrintable(QStringLiteral("seed %1").arg(seed)));
            process.kill();
            process.waitForFinished(60000);
            said += process.readAll();
            QList<QByteArray> states;
            for (const QByteArray& line : said.left(said.lastIndexOf('\n')).split('\n'))
                if (line.startsWith(CommitMark))
                    states << line.mid(1);
            kxRecovery recovery(journalIn(folder));
            kxSceneContent content;
            kxFileReport report;
            QVERIFY2(recovery.read(content, report) && report.notes().isEmpty(),
                     qPrintable(QStringLiteral("seed %1: ").arg(seed) + report.message()));
            const QByteArray found = digest(content);
            QVERIFY2(states.mid(states.size() - 2).contains(found),
                     qPrintable(QStringLiteral("seed %1 after %2 commits").arg(seed).arg(states.size())));
            commits += states.size();
            inFlight += found != states.last();
        }
        qInfo("%d kills after %d commits, %d of them before the last was made", kills, commits, inFlight);
    }
};

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() == 4 && arguments[1] == QLatin1String("--walk"))
        walkForEver(arguments[2], arguments[3].toUInt());
    if (qEnvironmentVariableIsSet("KX_KILLS"))
        qputenv("QTEST_FUNCTION_TIMEOUT", "7200000"); // milliseconds
    tst_kxKilledWalk test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_kxKilledWalk.moc"
