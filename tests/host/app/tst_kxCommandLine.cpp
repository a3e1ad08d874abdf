#include <app/kxCommandLine.h>

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
        kxRow("unknown option", "--fly", "fly");
        kxRow("two scenes", "a.kxs b.kxs", "b.kxs");
        kxRow("missing scene", "none.kxs", "none.kxs");
        kxRow("folder as scene", "/", "is a folder");
        kxRow("missing script", "--script none.py", "none.py");
        kxRow("frame is a word", "a.kxs --frame soon", "soon");
        kxRow("frame is no number", "a.kxs --frame nan", "nan");
        kxRow("range backwards", "a.kxs --frames 9:3 --render x_%d.png", "9:3");
        kxRow("range beyond int", "a.kxs --frames 0:99999999999 --render x_%d.png", "99999999999");
        kxRow("range too long", "a.kxs --frames 0:2000000000 --render x_%d.png", "2000000000");
        kxRow("range without files", "a.kxs --frames 0:3", "--render");
        kxRow("range into one file", "a.kxs --frames 0:3 --render x.png", "x.png");
        kxRow("both kinds of frames", "a.kxs --frame 1 --frames 0:3 --render x_%d.png", "exclude");
        kxRow("clip without files", "a.kxs --clip Walk", "--render");
        kxRow("camera without files", "a.kxs --camera Near", "--render");
        kxRow("clip into one file", "a.kxs --clip Walk --render x.png", "x.png");
        kxRow("clip and a timeline's frame", "a.kxs --clip Walk --frame 1 --render x_%d.png", "exclude");
        kxRow("picture of no kind", "a.kxs --render x.txt", "x.txt");
        kxRow("movie of no kind", "a.kxs --movie x.avi", ".webm");
        kxRow("movie of one frame of the timeline", "a.kxs --movie x.mp4 --frame 3", "exclude");
        kxRow("all frames into one file", "a.kxs --frames all --render x.png", "x.png");
        kxRow("all frames of nothing", "a.kxs --frames all", "--movie");
        kxRow("transparency that a movie hasn't", "a.kxs --transparent --movie x.mp4", ".webm");
        kxRow("transparency that a picture hasn't", "a.kxs --transparent --render x.JPG", ".png and .exr can");
        kxRow("transparency of nothing", "a.kxs --transparent", "--render");
        kxRow("window as light", "a.kxs --screenshot x.exr", ".png");
        kxRow("export of no kind", "a.kxs --export x.fbx", "x.fbx");
        kxRow("animations of no kind", "a.kxs --export x.glb --animations some", "some");
        kxRow("animations of nothing", "a.kxs --animations clips", "--export");
        kxRow("size without height", "a.kxs --size 100", "100");
        kxRow("size too large", "a.kxs --size 99999x100", "99999x100");
        kxRow("twice", "a.kxs --frame 1 --frame 2", "--frame");
        kxRow("comparison of one", "--diff a.kxs", "two files");
        kxRow("comparison of three", "--diff a.kxs b.kxs a.kxs", "two files");
        kxRow("text of two", "--text a.kxs b.kxs", "one file");
        kxRow("text and comparison", "--text --diff a.kxs b.kxs", "--text doesn't go with --diff");
        kxRow("text as JSON", "--text --json a.kxs", "--diff");
        kxRow("JSON of nothing", "--json a.kxs", "--diff");
        kxRow("comparison and picture", "--diff a.kxs b.kxs --render x.png", "--render");
        kxRow("info of two", "--info a.kxs b.kxs", "one file, not of 2");
        kxRow("info and picture", "--info a.kxs --render x.png", "--render");
        kxRow("info and text", "--info --text a.kxs", "--info doesn't go with --text");
        kxRow("versions of nothing", "--versions", "one scene");
        kxRow("version without a file", "--versions a.kxs --version 3", "--save-as");
        kxRow("file without a version", "a.kxs --save-as b.kxs", "--version N");
        kxRow("version that is no number", "--versions a.kxs --version x --save-as b.kxs", "'x'");
        kxRow("versions and picture", "--versions a.kxs --render x.png", "--render");
        kxRow("quiet and idle", "--headless --quiet", "nothing to do");
        kxRow("code twice", "-c 1 -c 2", "-c is given more than once");
        kxRow("dashes without a script", "a.kxs -- b.kxs", "b.kxs");
        kxRow("headless and idle", "--headless", "nothing to do");
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
        const auto parsed = [](const char* arguments)
        {
            const kxCommandLine line = kxCommandLine::parse(QString(arguments).split(' '));
            if (!line.errors.isEmpty())
                QTest::qFail(qPrintable(line.errors.join('\n')), __FILE__, __LINE__);
            return line;
        };
        kxCommandLine line = parsed("kxhost --headless --frames -5:12 --render out_%04d.png a.kxs --size 640X480");
        QCOMPARE(line.scene, QString("a.kxs"));
        QVERIFY(line.headless && !line.trust && line.frames && !line.frame);
        QCOMPARE(line.frames->first, -5);
        QCOMPARE(line.frames->last, 12);
        QCOMPARE(*line.size, QSize(640, 480));

        line = parsed("kxhost --script s.py --script s.py --frame -2.5 --export OUT.GLB --screenshot w%.png");
        QCOMPARE(line.scripts.size(), 2);
        QCOMPARE(*line.frame, -2.5);
        QVERIFY(line.hasWork() && line.scene.isEmpty());
        line = parsed("kxhost --headless a.kxs --frames -7 --render out.png");
        QVERIFY(line.frames && line.frames->first == -7 && line.frames->last == -7);
        line = parsed("kxhost --headless --trust a.kxs --transparent --frames all --movie a.GIF --render a%d.png");
        QVERIFY(line.allFrames && !line.frames && line.transparent && line.hasWork() && line.movie == "a.GIF");
        line = parsed("kxhost a.kxs --script - -c pass -- --fly -- b.kxs");
        QVERIFY(line.scripts == QStringList("-") && line.command == "pass" && line.scene == "a.kxs" && !line.headless);
        QCOMPARE(line.scriptArguments, QStringList({"--fly", "--", "b.kxs"}));
        line = parsed("kxhost --quiet --python -- x");
        QVERIFY(line.prompt && line.headless && line.quiet && line.hasWork() && line.scriptArguments.size() == 1);
        QCOMPARE(parsed("kxhost -- a.kxs").scene, QString("a.kxs"));
        for (const char* const plain :
             {"kxhost", "kxhost --movie a.mp4", "kxhost --render a.png --size 1x1", "kxhost --headless a.kxs"})
            parsed(plain);
    }

    void namesOfFrames_data()
    {
        kxColumns<QString, bool, int, QString>("pattern", "several", "frame", "name"); // no name: refused
        kxRow("plain", "a.png", false, 3, "a.png");
        kxRow("plain for several", "a.png", true, 3, "");
        kxRow("padded", "a_%04d.png", true, 7, "a_0007.png");
        kxRow("longer than its width", "a_%02d.png", true, 12345, "a_12345.png");
        kxRow("negative", "a_%04d.png", true, -7, "a_-007.png");
        kxRow("bare", "a%d.jpg", true, 30, "a30.jpg");
        kxRow("light", "a%d.EXR", true, 30, "a30.EXR");
        kxRow("spaces", "%3d.png", true, 30, " 30.png");
        kxRow("two numbers", "%d/%d.png", true, 1, "");
        kxRow("percent sign", "50%%_%d.png", true, 1, "50%_1.png");
        kxRow("lonely percent", "100%_%d.png", true, 1, "");
        kxRow("text placeholder", "%s.png", false, 1, "");
        kxRow("memory write", "%n%d.png", true, 1, "");
        kxRow("huge width", "%0999999999d.png", true, 1, "");
    }

    void namesOfFrames()
    {
        QFETCH(QString, pattern);
        QFETCH(bool, several);
        QFETCH(int, frame);
        QFETCH(QString, name);
        QCOMPARE(kxFramePattern::problem(pattern, several).isEmpty(), !name.isEmpty());
        if (!name.isEmpty())
            QCOMPARE(kxFramePattern::fileName(pattern, frame), name);
    }

private:
    QTemporaryDir _folder;
};

QTEST_GUILESS_MAIN(tst_kxCommandLine)
#include "tst_kxCommandLine.moc"
