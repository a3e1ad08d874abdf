#include <files/kxSceneFile.h>

#include <QImage>
#include <QtTest>

#include <kxTable.h>

/// The real program without a display: what it writes, and its exit codes.
class tst_kxHostProcess : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        write("good.py", "print('hello from a script')\n");
        write("raises.py", "raise ValueError('spoiled')\n");
        write("leaves.py", "import sys; sys.exit(3)\n");
        write("ends.py", "import sys; sys.exit()\n");
        write("broken.kxs", "nothing of a scene");
        write("save.py", "import kxHost\nkxHost.saveScene('made.kxs')\n");
        const Result made = run({"--headless", "--script", "save.py"});
        QVERIFY2(made.code == 0 && QFileInfo(_folder.filePath("made.kxs")).isFile(), qPrintable(made.errors));
    }

    void exitCode_data()
    {
        kxColumns<QString, int, QString>("arguments", "code", "says");
        QTest::newRow("opens") << "made.kxs" << 0 << "";
        QTest::newRow("script") << "--script good.py" << 0 << "hello from a script";
        QTest::newRow("script raises") << "--script raises.py --render never.png" << 1 << "spoiled";
        QTest::newRow("script leaves") << "--script leaves.py --script raises.py --render never.png" << 3 << "code 3";
        QTest::newRow("script ends early") << "--script ends.py --script good.py" << 0 << "hello from a script";
        QTest::newRow("damaged scene") << "broken.kxs --render never.png" << 1 << "broken.kxs";
        QTest::newRow("picture nowhere") << "made.kxs --render no/such/folder/a.png --size 8x8" << 1 << "a.png";
        QTest::newRow("export") << "made.kxs --export out.glb" << 0 << "wrote out.glb";
        QTest::newRow("export nowhere") << "made.kxs --export no/such/a.glb --render never.png" << 1 << "a.glb";
        QTest::newRow("window's picture") << "made.kxs --screenshot shot.png" << 0 << "wrote shot.png";
        QTest::newRow("bad argument") << "--frames 5:1" << 2 << "5:1";
        QTest::newRow("version") << "--version" << 0 << "kxhost";
        QTest::newRow("help") << "--help" << 0 << "--frames";
    }

    void exitCode()
    {
        QFETCH(QString, arguments);
        QFETCH(int, code);
        QFETCH(QString, says);
        const Result result = run(arguments.split(' ') + QStringList{"--headless"});
        QVERIFY2(result.code == code, qPrintable(result.errors));
        QVERIFY2((result.output + result.errors).contains(says), qPrintable(result.output + result.errors));
        QVERIFY(!QFileInfo::exists(_folder.filePath("never.png")));
        QVERIFY2(code != 0 || !result.errors.contains("QF"), qPrintable(result.errors)); // no noise of a library
    }

    void firstSceneHasTheDefaults()
    {
        kxSceneContent content;
        kxFileReport report(_folder.filePath("made.kxs"));
        QVERIFY2(kxSceneFile::read(report.file(), content, report), qPrintable(report.message()));
        const std::map<std::string, double> expected = {
            {"fps", 24},         {"playbackFPS", 24},      {"fullRangeEnd", 50},  {"detailedRangeEnd", 25},
            {"loopTimeline", 1}, {"evaluateSubframes", 1}, {"keepKeysAtFrame", 0}};
        for (const auto& [name, value] : expected)
            QVERIFY2(content.animation[name] == value,
                     qPrintable(QString("%1 is %2").arg(name.c_str()).arg(content.animation[name])));
    }

    void storedSettingsReachTheFirstScene()
    {
        QDir(_folder.path()).mkdir("other");
        write("other/preferences.ini",
              "[int]\nAnimation%20playback%20speed=3\nAnimation%20full%20timeline%20range%20end=90\n");
        write("save2.py", "import kxHost\nkxHost.saveScene('made2.kxs')\n");
        QCOMPARE(run({"--headless", "--script", "save2.py"}, true, "other").code, 0);
        kxSceneContent content;
        kxFileReport report(_folder.filePath("made2.kxs"));
        QVERIFY(kxSceneFile::read(report.file(), content, report));
        QVERIFY(content.animation["playbackFPS"] == 30 && content.animation["fullRangeEnd"] == 90);
    }

    void aWindowOpensWhatTheLineNames()
    {
        const Result result = run({"made.kxs"}); // ends with the first picture of it
        QVERIFY2(result.code == 0 && result.errors.contains("Opened 'made.kxs'"), qPrintable(result.errors));
    }

    void aMissingDriverIsNamed()
    {
        qputenv("__EGL_VENDOR_LIBRARY_FILENAMES", "/no/such/driver.json");
        const Result result = run({"made.kxs", "--headless", "--render", "never.png"});
        const Result window = run({"made.kxs"});
        qunsetenv("__EGL_VENDOR_LIBRARY_FILENAMES");
        QVERIFY2(result.code == 1 && result.errors.contains("\"libgl1-mesa-dri\""), qPrintable(result.errors));
        QCOMPARE(window.code, 0); // all but the picture can be worked with
    }

    void modelsAreFramedWhole()
    {
        // A camera of ours is what the scene is made for; one of another program may mean something else.
        write("camera.py",
              "camera = addObject('camera')\nsetChannelValue(camera, 'translation.Z', 4)\naddObject('box')\n"
              "saveScene('c.kxs')\nexportScene('c.glb')\n");
        QCOMPARE(run({"--headless", "--script", "camera.py"}).code, 0);
        for (const char* const scene : {"c.kxs", "c.glb"})
            QCOMPARE(run({scene, "--headless", "--render", QString(scene) + ".png", "--size", "64x36"}).code, 0);
        QVERIFY(QImage(_folder.filePath("c.kxs.png")) != QImage(_folder.filePath("c.glb.png")));
    }

    void rendersClip()
    {
        // The block moves the box from frame 0 on, the clip holds it from frame 10 to 14.
        write("clips.py", R"(
from kxHost import *
from kxAnimWidgets import *
camera = addObject("camera", "Camera")
setChannelValue(camera, "translation.Z", 8)
box = addObject("box", "Box")
addTranslationControlPoints(box, [0.0, 1.0], [(-2, 0, 0), (2, 0, 0)], False)
createAnimationBlockForNode(box, False)
clip = createAnimClip("Walk", kxNodePtr())
addToAnimClip(clip, findAnimBlock("Box"), 0)
setAnimClipDuration(clip, 4)
setAnimClipStart(clip, 10, False)
saveScene("clips.kxs")
)");
        Result result = run({"--headless", "--script", "clips.py"});
        QVERIFY2(result.code == 0, qPrintable(result.errors));
        const auto picture = [this](const char* name) { return QImage(_folder.filePath(name)); };
        const QStringList common = {"clips.kxs", "--headless", "--size", "64x36"};
        result = run(common + QStringList{"--clip", "Walk", "--render", "c_%d.png"});
        QVERIFY2(result.code == 0, qPrintable(result.errors));
        QCOMPARE(QDir(_folder.path()).entryList({"c_*.png"}).size(), 5); // the clip's extent, 10 to 14
        result = run(common + QStringList{"--frames", "10:14", "--render", "t_%d.png"});
        QVERIFY2(result.code == 0, qPrintable(result.errors));
        for (const char* const frame : {"10", "14"})
            QVERIFY(picture((QByteArray("c_") + frame + ".png").constData()) !=
                    picture((QByteArray("t_") + frame + ".png").constData()));
        QVERIFY(picture("c_10.png") != picture("c_14.png"));

        result = run(common + QStringList{"--clip", "Wlak", "--render", "never_%d.png"});
        QCOMPARE(result.code, 1);
        QVERIFY2(result.errors.contains("Wlak") && result.errors.contains("Walk"), qPrintable(result.errors));
    }

    void goesOnWithoutThePlugin()
    {
        write("none.so", "no library");
        const Result result =
            run({"made.kxs", "--headless", "--plugin", "none.so", "--render", "n.png", "--size", "8x8"});
        QCOMPARE(result.code, 0);
        QVERIFY2(result.errors.contains("plug-in") && result.errors.contains("none.so"), qPrintable(result.errors));
    }

    void saysWhereThereIsNoDisplay()
    {
        const Result idle = run({"made.kxs"}, false);
        QCOMPARE(idle.code, 3);
        QVERIFY(idle.errors.contains("display"));
        const Result working = run({"made.kxs", "--render", "w.png", "--size", "8x8"}, false);
        QCOMPARE(working.code, 0);
        QVERIFY(QFileInfo(_folder.filePath("w.png")).isFile());
    }

private:
    struct Result
    {
        int code;
        QString output, errors;
    };

    Result run(const QStringList& arguments, bool display = true, const QString& settings = "settings") const
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(QString::fromLatin1(name));
        if (display)
            environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("KX_SETTINGS_DIR", _folder.filePath(settings));
        if (!arguments.contains("--headless"))
            environment.insert("KX_QUIT_AT_FIRST_FRAME", "1");
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(_folder.path());
        process.start(QStringLiteral(KX_HOST), arguments);
        if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
            return {-1, QString(), QStringLiteral("crashed or hung: ") + process.readAllStandardError()};
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    void write(const QString& name, const QByteArray& text) const
    {
        QFile file(_folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }

    QTemporaryDir _folder;
};

QTEST_GUILESS_MAIN(tst_kxHostProcess)
#include "tst_kxHostProcess.moc"
