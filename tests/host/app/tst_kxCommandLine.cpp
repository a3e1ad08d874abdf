#include <app/kxCommandLine.h>

#include <QTemporaryDir>
#include <QtTest>

#include <kxTable.h>

class tst_kxCommandLine : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        for (const char* const name : {"a.kxs", "b.kxs", "s.py"})
        {
            QFile file(_folder.filePath(QString::fromLatin1(name)));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
        QVERIFY(QDir::setCurrent(_folder.path()));
    }

    void refused_data()
    {
        kxColumns<QString, QString>("arguments", "word");
        const auto row = [](const char* name, const char* arguments, const char* word)
        { QTest::newRow(name) << QString(arguments) << QString(word); };
        row("unknown option", "--fly", "fly");
        row("two scenes", "a.kxs b.kxs", "b.kxs");
        row("missing scene", "none.kxs", "none.kxs");
        row("missing script", "--script none.py", "none.py");
        row("frame is a word", "a.kxs --frame soon", "soon");
        row("frame is no number", "a.kxs --frame nan", "nan");
        row("range backwards", "a.kxs --frames 9:3 --render x_%d.png", "9:3");
        row("range beyond int", "a.kxs --frames 0:99999999999 --render x_%d.png", "99999999999");
        row("range too long", "a.kxs --frames 0:2000000000 --render x_%d.png", "2000000000");
        row("range without files", "a.kxs --frames 0:3", "--render");
        row("range into one file", "a.kxs --frames 0:3 --render x.png", "x.png");
        row("both kinds of frames", "a.kxs --frame 1 --frames 0:3 --render x_%d.png", "exclude");
        row("clip without files", "a.kxs --clip Walk", "--render");
        row("clip into one file", "a.kxs --clip Walk --render x.png", "x.png");
        row("clip and a timeline's frame", "a.kxs --clip Walk --frame 1 --render x_%d.png", "exclude");
        row("picture of no kind", "a.kxs --render x.txt", "x.txt");
        row("export of no kind", "a.kxs --export x.fbx", "x.fbx");
        row("size without height", "a.kxs --size 100", "100");
        row("size too large", "a.kxs --size 99999x100", "99999x100");
        row("twice", "a.kxs --frame 1 --frame 2", "--frame");
        row("headless and idle", "--headless", "nothing to do");
    }

    void refused()
    {
        QFETCH(QString, arguments);
        QFETCH(QString, word);
        const kxCommandLine line = kxCommandLine::parse(QStringList{"kxhost"} + arguments.split(' '));
        QCOMPARE(line.errors.size(), 1); // one clear line for one fault
        QVERIFY2(line.errors.first().contains(word), qPrintable(line.errors.first()));
        QVERIFY(!line.errors.first().contains('\n'));
    }

    void accepted()
    {
        kxCommandLine line = kxCommandLine::parse(
            QString("kxhost --headless --frames -5:12 --render out_%04d.png a.kxs --size 640X480").split(' '));
        QVERIFY2(line.errors.isEmpty(), qPrintable(line.errors.join('\n')));
        QCOMPARE(line.scene, QString("a.kxs"));
        QVERIFY(line.headless && line.frames && !line.frame);
        QCOMPARE(line.frames->first, -5);
        QCOMPARE(line.frames->last, 12);
        QCOMPARE(*line.size, QSize(640, 480));

        line = kxCommandLine::parse(
            QString("kxhost --script s.py --script s.py --frame -2.5 --export OUT.GLB --screenshot w%.png").split(' '));
        QVERIFY2(line.errors.isEmpty(), qPrintable(line.errors.join('\n')));
        QCOMPARE(line.scripts.size(), 2);
        QCOMPARE(*line.frame, -2.5);
        QVERIFY(line.hasWork() && line.scene.isEmpty());
        QVERIFY(kxCommandLine::parse({"kxhost"}).errors.isEmpty());
        QVERIFY(kxCommandLine::parse({"kxhost", "--render", "a.png", "--size", "1x1"}).errors.isEmpty());
        QVERIFY(kxCommandLine::parse({"kxhost", "--headless", "a.kxs"}).errors.isEmpty());
    }

    void patternProblem_data()
    {
        kxColumns<QString, bool, bool>("pattern", "several", "fits");
        QTest::newRow("plain") << "a.png" << false << true;
        QTest::newRow("plain for several") << "a.png" << true << false;
        QTest::newRow("padded") << "a_%04d.png" << true << true;
        QTest::newRow("bare") << "a%d.jpg" << true << true;
        QTest::newRow("two numbers") << "%d/%d.png" << true << false;
        QTest::newRow("percent sign") << "100%%_%d.png" << true << true;
        QTest::newRow("lonely percent") << "100%_%d.png" << true << false;
        QTest::newRow("text placeholder") << "%s.png" << false << false;
        QTest::newRow("memory write") << "%n%d.png" << true << false;
        QTest::newRow("huge width") << "%0999999999d.png" << true << false;
    }

    void patternProblem()
    {
        QFETCH(QString, pattern);
        QFETCH(bool, several);
        QFETCH(bool, fits);
        QCOMPARE(kxFramePattern::problem(pattern, several).isEmpty(), fits);
    }

    void fileName_data()
    {
        kxColumns<QString, int, QString>("pattern", "frame", "name");
        QTest::newRow("padded") << "a_%04d.png" << 7 << "a_0007.png";
        QTest::newRow("longer than its width") << "a_%02d.png" << 12345 << "a_12345.png";
        QTest::newRow("negative") << "a_%04d.png" << -7 << "a_-007.png";
        QTest::newRow("bare") << "%d.png" << 30 << "30.png";
        QTest::newRow("spaces") << "%3d.png" << 30 << " 30.png";
        QTest::newRow("percent") << "50%%_%d.png" << 1 << "50%_1.png";
        QTest::newRow("nothing") << "a.png" << 3 << "a.png";
    }

    void fileName()
    {
        QFETCH(QString, pattern);
        QFETCH(int, frame);
        QFETCH(QString, name);
        QCOMPARE(kxFramePattern::fileName(pattern, frame), name);
    }

private:
    QTemporaryDir _folder;
};

QTEST_GUILESS_MAIN(tst_kxCommandLine)
#include "tst_kxCommandLine.moc"
