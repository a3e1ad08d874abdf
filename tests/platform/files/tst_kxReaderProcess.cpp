#include "kxFilesFixture.h"

#include <files/apart/kxReaderProcess.h>
#include <files/scene/kxSceneContent.h>

#include <QElapsedTimer>
#include <QtTest>
#include <kxTable.h>

#include <sys/wait.h>

/// What goes wrong in the process that reads a file is an error of that file; the scene stays.
class tst_kxReaderProcess : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        kxSceneIO::newScene();
        addNode(kxScene::the()->root(), "kept", osg::NodeCorePtr(osg::Transform::create()));
        kxReaderProcess::rules() = kxReaderProcess::Rules();
        kxReaderProcess::rules().seconds = 1;
        kxReaderProcess::setWatch(nullptr);
    }
    void cleanup() { QVERIFY(waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD); } // none is left, dead or alive

    void failures_data()
    {
        kxColumns<QString>("reason");
        const auto row = [](const char* act, const char* reason)
        { kxRow(act, QStringLiteral("the reader of TEST files stopped: ") + reason); };
#ifndef KX_SANITIZED // which end a process in their own way, give it more time, and limit no memory
        row("crash", "it crashed (segmentation fault)");
        row("memory", "it needed more than 0.0625 GB of memory");
        row("loop", "it took more than 1 s of processor time");
        row("memory,large", "it needed more than 0.273 GB of memory"); // what a file of 7 MB gets by its size
#endif
        row("abort", "it gave up on an error of its own");
        row("throw", "it met an error that it doesn't handle");
        row("sleep", "it did nothing for 1 s");
        row("hide", "it didn't end within 1 s");
        row("nothing", "it handed nothing back");
        row("code", "it ended with the code 7");
        row("noise", "what it handed back is damaged: it doesn't begin as it should");
        row("half", "what it handed back is damaged: the content is nested too deeply or damaged");
        row("more", "what it handed back is damaged: something stands behind the report");
        row("long", "what it handed back is damaged: it is cut off");
    }

    void failures()
    {
        QFETCH(QString, reason);
        kxReaderProcess::rules().program = faulty();
        kxReaderProcess::rules().memory = quint64(64) << 20;
        const QByteArray act = QTest::currentDataTag();
        if (act == "sleep")
            kxReaderProcess::rules().quietSeconds = 1;
        kxReaderProcess::rules().clockASecond = act == "hide" ? 1 : 300;
        const int padding = act.contains("large") ? 7 << 20 : 0;
        kxFileReport report(file("model.test", act + QByteArray(padding, ' ')));
        QVERIFY(!(act > "l" ? kxSceneIO::importFile(report.file(), report) : kxSceneIO::open(report.file(), report)));
        QVERIFY2(report.error().startsWith(reason), qPrintable(report.error()));
        QVERIFY(!report.isCancelled() && nodeNamed("kept") != osg::NullFC);
    }

    void programIsMissing()
    {
        for (const char* const program : {"/nowhere/kxreader", "/etc/passwd", "/dev"})
        {
            kxReaderProcess::rules().program = QString::fromLatin1(program);
            kxFileReport report(file("box.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"));
            QVERIFY(!kxSceneIO::open(report.file(), report));
            QVERIFY2(report.error().startsWith(QLatin1String("its reader can't be started: the program '")),
                     qPrintable(report.error()));
        }
    }

    void isCancelled()
    {
        for (const char* const program : {"loop", "sleep"})
        {
            kxReaderProcess::rules() = kxReaderProcess::Rules();
            kxReaderProcess::rules().program = faulty();
            int asked = 0;
            kxReaderProcess::setWatch([&asked](double share) { return share <= 1 && ++asked < 4; });
            QElapsedTimer time;
            time.start();
            kxFileReport report(file("model.test", program));
            QVERIFY(!kxSceneIO::open(report.file(), report));
            QVERIFY(report.isCancelled() && asked == 4 && time.elapsed() < 5000);
        }
    }

    /// All that a reader reached beyond its task.
    void isShutIn()
    {
        const QString path = file("model.tries", "x");
        file("beside", "y");
        QFile::link(QStringLiteral("/etc/passwd"), _folder.filePath(QStringLiteral("link")));
        qputenv("KX_SECRET", "1");
        kxReaderProcess::rules().program = faulty();
        kxSceneContent content;
        kxFileReport report(path);
        QVERIFY2(kxSceneIO::readContent(path, content, report), qPrintable(report.error()));
        QCOMPARE(report.notes(), QStringList{QStringLiteral("read beside it")});
        QCOMPARE(content.frameRate, 12.0); // what goes beside the content
        QCOMPARE(bytesOfFile(path), QByteArray("x"));
    }

    /// What a link leads to is the model, with its folder.
    void aLinkLeadsToTheModel()
    {
        const QDir top(_folder.path());
        QVERIFY(top.mkpath("far"));
        QVERIFY(!file("far/x.mtl", "newmtl m\nKd 0 0 1\n").isEmpty());
        QVERIFY(!file("far/x.obj", "mtllib x.mtl\nusemtl m\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n").isEmpty());
        QVERIFY(QFile::link(top.filePath("far/x.obj"), top.filePath("here.obj")));
        kxFileReport report(top.filePath("here.obj"));
        QVERIFY2(kxSceneIO::open(report.file(), report), qPrintable(report.error()));
        QVERIFY(report.notes().isEmpty());
    }

    /// Limits that follow the size of a file have an end, and only what the file names counts.
    void limitsEnd_data()
    {
        kxColumns<bool, quint64>("isNamed", "seconds");
        kxRow("a large file beside it", false, quint64(1));
        kxRow("a large file that it names", true, quint64(LargestSeconds));
    }

    void limitsEnd()
    {
        QFETCH(bool, isNamed);
        QFETCH(quint64, seconds);
        kxReaderProcess::rules().program = faulty();
        kxReaderProcess::rules().mostSeconds = LargestSeconds;
        kxReaderProcess::rules().memory = quint64(64) << 20;
        const QString large = file("large one.bin", "");
        QVERIFY(QFile::resize(large, qint64(4) << 40));
        kxFileReport report(file("model.gltf", QByteArray("loop") + (isNamed ? ",\"large%20one.bin\"" : "")));
        QVERIFY(!kxSceneIO::open(report.file(), report));
        QVERIFY2(report.error().contains(QStringLiteral("more than %1 s of processor").arg(seconds)),
                 qPrintable(report.error()));
        QVERIFY(QFile::remove(large));
    }

    /// Small changes of files that others' readers don't survive.
    void hostileFiles_data()
    {
        kxColumns<QByteArray, QString>("bytes", "reason");
        const auto model = [](const char* name) { return bytesOfFile(modelsFolder() + QLatin1String(name)); };
        if (modelsFolder().isEmpty())
            QSKIP("the model collection isn't installed");
        kxRow("cut.cob", model("/COB/spider_6_6.cob").left(12800), "it met an error that it doesn't handle");
#ifndef KX_SANITIZED // see above
        kxRow("index.mdl", model("/MDL/MDL (HL1)/duplicate_submodels.mdl").replace(1970, 1, "\200"), "it crashed");
#endif
    }

    void hostileFiles()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, reason);
        kxFileReport report(file(QTest::currentDataTag(), bytes));
        QVERIFY(!kxSceneIO::open(report.file(), report) && nodeNamed("kept") != osg::NullFC);
        const QString suffix = QFileInfo(report.file()).suffix().toUpper();
        QVERIFY2(report.error().startsWith(QStringLiteral("the reader of %1 files stopped: %2").arg(suffix, reason)),
                 qPrintable(report.error()));
    }

private:
    static constexpr quint64 LargestSeconds = 2;
    static QString faulty()
    {
        return QStringLiteral("kxFaultyReader");
    }
    QString file(const char* name, const QByteArray& bytes)
    {
        const QString path = _folder.filePath(QString::fromLatin1(name));
        return writeFile(path, bytes) ? path : QString();
    }

    QTemporaryDir _folder;
};

QTEST_GUILESS_MAIN(tst_kxReaderProcess)
#include "tst_kxReaderProcess.moc"
