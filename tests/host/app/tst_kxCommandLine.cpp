#include <app/kxCommandLine.h>

#include <QTemporaryDir>
#include <QtTest>

class tst_kxCommandLine : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void refused_data();
    void refused();
    void accepted();
    void patternProblem_data();
    void patternProblem();
    void fileName_data();
    void fileName();

private:
    QTemporaryDir _folder;
};

void tst_kxCommandLine::initTestCase()
{
    for (const char* const name : {"a.kxs", "b.kxs", "s.py"})
    {
        QFile file(_folder.filePath(QString::fromLatin1(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QVERIFY(QDir::setCurrent(_folder.path()));
}

void tst_kxCommandLine::refused_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("word");
    QTest::newRow("unknown option") << "--fly"
                                    << "fly";
    QTest::newRow("two scenes") << "a.kxs b.kxs"
                                << "b.kxs";
    QTest::newRow("missing scene") << "none.kxs"
                                   << "none.kxs";
    QTest::newRow("missing script") << "--script none.py"
                                    << "none.py";
    QTest::newRow("missing plug-in") << "--plugin none.so"
                                     << "none.so";
    QTest::newRow("frame is a word") << "a.kxs --frame soon"
                                     << "soon";
    QTest::newRow("frame is no number") << "a.kxs --frame nan"
                                        << "nan";
    QTest::newRow("frame is endless") << "a.kxs --frame inf"
                                      << "inf";
    QTest::newRow("range backwards") << "a.kxs --frames 9:3 --render x_%d.png"
                                     << "9:3";
    QTest::newRow("range half") << "a.kxs --frames 9: --render x_%d.png"
                                << "9:";
    QTest::newRow("range beyond int") << "a.kxs --frames 0:99999999999 --render x_%d.png"
                                      << "99999999999";
    QTest::newRow("range too long") << "a.kxs --frames 0:2000000000 --render x_%d.png"
                                    << "2000000000";
    QTest::newRow("range without files") << "a.kxs --frames 0:3"
                                         << "--render";
    QTest::newRow("range into one file") << "a.kxs --frames 0:3 --render x.png"
                                         << "x.png";
    QTest::newRow("both kinds of frames") << "a.kxs --frame 1 --frames 0:3 --render x_%d.png"
                                          << "exclude";
    QTest::newRow("picture of no kind") << "a.kxs --render x.txt"
                                        << "x.txt";
    QTest::newRow("screenshot of no kind") << "a.kxs --screenshot x"
                                           << "'x'";
    QTest::newRow("export of no kind") << "a.kxs --export x.fbx"
                                       << "x.fbx";
    QTest::newRow("size without height") << "a.kxs --size 100"
                                         << "100";
    QTest::newRow("size of nothing") << "a.kxs --size 0x100"
                                     << "0x100";
    QTest::newRow("size too large") << "a.kxs --size 99999x100"
                                    << "99999x100";
    QTest::newRow("twice") << "a.kxs --frame 1 --frame 2"
                           << "--frame";
    QTest::newRow("headless and idle") << "--headless"
                                       << "nothing to do";
}

void tst_kxCommandLine::refused()
{
    QFETCH(QString, arguments);
    QFETCH(QString, word);
    const kxCommandLine line = kxCommandLine::parse(QStringList{"kxhost"} + arguments.split(' '));
    QCOMPARE(line.errors.size(), 1); // one clear line for one fault
    QVERIFY2(line.errors.first().contains(word), qPrintable(line.errors.first()));
    QVERIFY(!line.errors.first().contains('\n'));
}

void tst_kxCommandLine::accepted()
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
    QVERIFY(kxCommandLine::parse({"kxhost", "--headless", "a.kxs"}).errors.isEmpty());
}

void tst_kxCommandLine::patternProblem_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<bool>("several");
    QTest::addColumn<bool>("fits");
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

void tst_kxCommandLine::patternProblem()
{
    QFETCH(QString, pattern);
    QFETCH(bool, several);
    QFETCH(bool, fits);
    QCOMPARE(kxFramePattern::problem(pattern, several).isEmpty(), fits);
}

void tst_kxCommandLine::fileName_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<int>("frame");
    QTest::addColumn<QString>("name");
    QTest::newRow("padded") << "a_%04d.png" << 7 << "a_0007.png";
    QTest::newRow("longer than its width") << "a_%02d.png" << 12345 << "a_12345.png";
    QTest::newRow("negative") << "a_%04d.png" << -7 << "a_-007.png";
    QTest::newRow("bare") << "%d.png" << 30 << "30.png";
    QTest::newRow("spaces") << "%3d.png" << 30 << " 30.png";
    QTest::newRow("percent") << "50%%_%d.png" << 1 << "50%_1.png";
    QTest::newRow("nothing") << "a.png" << 3 << "a.png";
}

void tst_kxCommandLine::fileName()
{
    QFETCH(QString, pattern);
    QFETCH(int, frame);
    QFETCH(QString, name);
    QCOMPARE(kxFramePattern::fileName(pattern, frame), name);
}

QTEST_GUILESS_MAIN(tst_kxCommandLine)
#include "tst_kxCommandLine.moc"
