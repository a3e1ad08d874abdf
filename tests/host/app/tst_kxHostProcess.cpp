#include <files/scene/kxSceneFile.h>

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <kxPlaces.h>
#include <kxTable.h>

#include <csignal>

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
        write("bye.py", "import sys; sys.exit('gone for good')\n");
        write("tells_arguments.py", "import sys; print(sys.argv)\n");
        write("m.obj", "mtllib m.mtl\nusemtl m\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nf 1/1 2/1 3/1\n");
        write("m.mtl", "newmtl m\nmap_Kd none.png\n");
        write("ends.py", "import sys; sys.exit()\n");
        write("broken.kxs", "nothing of a scene");
        write("save.py", "import kxHost\nkxHost.newScene()\nkxHost.saveScene('made.kxs')\n"
                         "kxHost.addObject('box', 'Crate')\nkxHost.saveScene('more.kxs')\n"
                         "kxHost.openScene('made.kxs')\nkxHost.saveScene('kept.kxs')\nkxHost.keepVersion('first')\n"
                         "kxHost.addObject('box', 'Crate')\nkxHost.keepVersion('second')\n");
        const Result made = run({"--headless", "--script", "save.py"});
        QVERIFY2(made.code == 0 && made.errors.contains("New scene"), qPrintable(made.errors)); // not the first one
    }

    void exitCode_data()
    {
        kxColumns<QString, int, QString>("arguments", "code", "says");
        kxRow("opens", "made.kxs", 0, "");
        kxRow("script", "--script good.py", 0, "hello from a script");
        kxRow("script raises", "--script raises.py --render never.png", 1, "spoiled");
        kxRow("script leaves", "--script leaves.py --script raises.py --render never.png", 3, "code 3");
        kxRow("script ends early", "--script ends.py --script good.py", 0, "hello from a script");
        kxRow("script leaves with a text", "--script bye.py --render never.png", 1, "gone for good");
        kxRow("arguments", "--script tells_arguments.py -- -x --help", 0, "['tells_arguments.py', '-x', '--help']");
        kxRow("code", "more.kxs -c print(__import__('sys').argv,bool(findNode('Crate'))) -- a", 0, "['-c', 'a'] True");
        kxRow("code leaves", "-c exit(9) --render never.png", 9, "code 9");
        kxRow("damaged scene", "broken.kxs --render never.png", 1, "broken.kxs");
        kxRow("picture nowhere", "made.kxs --render no/such/folder/a.png --size 8x8", 1, "a.png");
        kxRow("export", "made.kxs --export out.glb", 0, "wrote out.glb");
        kxRow("export nowhere", "made.kxs --export no/such/a.glb --render never.png", 1, "a.glb");
        kxRow("window's picture", "made.kxs --screenshot shot.png", 0, "wrote shot.png");
        kxRow("equal", "--diff made.kxs made.kxs", 0, "");
        kxRow("different", "--diff made.kxs more.kxs", 1, "Object 'Crate': added\n");
        kxRow("different, as JSON", "--diff --json more.kxs made.kxs", 1, "\"kind\": \"removed\"");
        kxRow("compared with nothing", "--diff /dev/null more.kxs", 1, "Object 'Crate': added\n");
        kxRow("compared with a damaged scene", "--diff made.kxs broken.kxs", 2, "broken.kxs");
        kxRow("compared with no scene", "--diff none.kxs made.kxs", 2, "no such file");
        kxRow("info", "--info more.kxs", 0,
              "\nframes: 0 to 25, 24 a second\nobjects: 1 Geometry\nextents: (-0.5, 0, -0.5) to (0.5, 1, 0.5)\n");
        kxRow("info of a model", "--info m.obj", 0, "textures: 0\nclips: 0\ncode: 0\nnote: ");
        kxRow("info of a model, its picture", "--info --json m.obj", 0, "none.png");
        kxRow("info of a damaged scene", "--info broken.kxs", 2, "broken.kxs");
        kxRow("text", "--text more.kxs", 0, "\n[objects/Crate]\nclass = Geometry\n");
        kxRow("text of a damaged scene", "--text broken.kxs", 2, "broken.kxs");
        kxRow("versions of no scene", "--versions none.kxs", 1, "there are no versions of 'none.kxs'");
        kxRow("versions", "--versions kept.kxs", 0, "  first (Kept by hand)\n");
        kxRow("versions as JSON", "--versions --json kept.kxs", 0, "\"name\": \"second\"");
        kxRow("a version", "--versions kept.kxs --version 1 --save-as first.kxs", 0, "wrote first.kxs");
        kxRow("what that is", "--diff made.kxs first.kxs", 0, "");
        kxRow("no such version", "--versions kept.kxs --version 9 --save-as never.png", 1, "there is no version 9");
        kxRow("a version to nowhere", "--versions kept.kxs --version 2 --save-as no/such/a.kxs", 1, "a.kxs");
        kxRow("bad argument", "--frames 5:1", 2, "5:1");
        kxRow("version", "--version", 0, "kxhost");
        kxRow("help", "--help", 0, "--frames");
    }

    void exitCode()
    {
        QFETCH(QString, arguments);
        QFETCH(QString, says);
        const Result result = run(QStringList{"--headless"} + arguments.split(' '));
        QTEST(result.code, "code");
        QVERIFY2((result.output + result.errors).contains(says), qPrintable(result.output + result.errors));
        QVERIFY(!QFileInfo::exists(_folder.filePath("never.png")));
        QVERIFY2(result.code != 0 || !result.errors.contains("QF"), qPrintable(result.errors)); // no noise of a library
    }

    void aClosedPipeIsAnError()
    {
        write("prints.py", "n = 0\nwhile n < 1e6: n += 1; print('line', n)\n");
        write("tells.py", "import sys\nwhile True: print('more', file=sys.stderr)\n");
        write("leaves2.py", "import sys\ntry:\n    while True: print('x')\nexcept BrokenPipeError: sys.exit('gone')\n");
        write("pipes.py",
              "import os, socket, subprocess, sys\nends = os.pipe(), [s.detach() for s in socket.socketpair()]\n"
              "for near, far in ends:\n    os.close(near)\n    try: os.write(far, b'x')\n"
              "    except BrokenPipeError: print('told')\n"
              "assert subprocess.run(['sh', '-c', 'kill -PIPE $$; exit 0']).returncode == -13\n");
        const char* const rows[][3] = {{"--script prints.py", "head -1", "line 1\n141\n"},
                                       {"--script tells.py 2>&1", "grep -m1 -o more", "more\n141\n"},
                                       {"--script leaves2.py", "head -1", "x\n1\n"},
                                       {"--script pipes.py", "grep told", "told\ntold\n0\n"},
                                       {"--script good.py --export piped.glb", "true", "141\n"},
                                       {"made.kxs --export piped.glb", "true", "0\n"}};
        for (const auto& [arguments, reader, said] : rows)
        {
            QProcess process;
            start(process,
                  {"-c", QStringLiteral("{ %1 --headless 2>errors %2; echo $? >code; } | %3; cat code")
                             .arg(kxBuilt("kxhost"), arguments, reader)},
                  true, "settings", "sh");
            QVERIFY(process.waitForFinished(30000));
            QCOMPARE(process.readAllStandardOutput(), QByteArray(said));
            QVERIFY(!read("errors").contains("Traceback") && !read("errors").contains("141"));
        }
        QVERIFY(QFileInfo::exists(_folder.filePath("piped.glb")));
    }

    void shell_data()
    {
        kxColumns<QString, QString>("line", "output");
        kxRow("script from a pipe", "echo 'import beside, sys; print(beside.v, sys.argv)' | $K --script - -- 7",
              "5 ['-', '7']\n0\n");
        kxRow("no terminal", "echo 'print(beside.v)' | PYTHONPATH=more $K --script imports.py --python", "6\n0\n");
        kxRow("written", "$K made.kxs --export e.glb -c 'print(1)'", "1\nwrote e.glb\n0\n");
        kxRow("quiet", "$K made.kxs --export e.glb --quiet -c 'print(1)'; grep -c info errors", "1\n0\n1\n");
        kxRow("no settings", "export KX_SETTINGS_DIR=none; $K made.kxs -c 'saveScene(\"again.kxs\")'; ls none", "2\n");
        for (const char* const file : {"f.png", "f.jpg", "f.exr"})
            kxRow(file,
                  QStringLiteral("(trap '' XFSZ; ulimit -f 1; $K made.kxs --size 640x480 --render %1) 2>&1 | "
                                 "grep -o '%1.*File too large'; ls -A | grep -c %1")
                      .arg(file),
                  QStringLiteral("%1' can't be written: File too large\n0\n1\n").arg(file));
        kxRow("prompt",
              "printf 'x = 6\\nprint(x * 7)\\n1/0\\nexit(3)\\n' | script -qec \"$K --python\" /dev/null | "
              "grep -c -e ^42 -e ^ZeroDivision; tail -1 settings/prompt-history",
              "2\nexit(3)\n0\n");
    }

    void shell()
    {
        QFETCH(QString, line);
        QDir(_folder.path()).mkpath("more");
        write("beside.py", "v = 5\n");
        write("more/beside.py", "v = 6\n");
        QDir(_folder.path()).mkpath("apart");
        write("apart/imports.py", "import beside\n");
        line.replace("imports.py", "apart/imports.py");
        QProcess process;
        start(process, {"-c", "K='" + kxBuilt("kxhost") + " --headless'; { " + line + "; } 2>errors; echo $?"}, true,
              "settings", "bash");
        QVERIFY(process.waitForFinished(60000));
        QTEST(QString(process.readAllStandardOutput()).remove('\r'), "output");
    }

    void signalsReachScripts()
    {
        write("waits.py",
              "import time\ntry:\n    print('first', flush=True)\n    while True: time.sleep(0.01)\n"
              "except KeyboardInterrupt: pass\n"
              "try:\n    print('second', flush=True)\n    time.sleep(100)\nfinally: print('third', flush=True)\n");
        for (const int last : {SIGINT, SIGTERM})
        {
            QProcess process;
            start(process, {"--headless", "--script", "waits.py", "--render", "never.png"}, true, "settings");
            QByteArray output;
            for (const QByteArray said : {"first", "second"})
            {
                QTRY_VERIFY_WITH_TIMEOUT((output += process.readAllStandardOutput()).contains(said), 30000);
                ::kill(pid_t(process.processId()), said == "first" ? SIGINT : last);
            }
            QVERIFY(process.waitForFinished());
            QCOMPARE(output + process.readAllStandardOutput(), QByteArray("first\nsecond\nthird\n"));
            QVERIFY(!process.readAllStandardError().contains("<runner>"));
            QCOMPARE(process.exitStatus(), last == SIGINT ? QProcess::NormalExit : QProcess::CrashExit);
            QCOMPARE(process.exitCode(), last == SIGINT ? 130 : SIGTERM);
            QVERIFY(!QFileInfo::exists(_folder.filePath("never.png")));
        }
        QProcess frames;
        start(frames, {"made.kxs", "--headless", "--frames", "0:99999", "--size", "8x8", "--render", "s_%d.png"}, true,
              "settings");
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(_folder.filePath("s_1.png")), 30000);
        frames.terminate();
        QVERIFY(frames.waitForFinished() && frames.exitStatus() == QProcess::CrashExit);
        for (const QString& name : QDir(_folder.path()).entryList({"s_*"}, QDir::Files))
            QVERIFY2(name.endsWith(".png") && !QImage(_folder.filePath(name)).isNull(), qPrintable(name));
    }

    void gitShowsWhatChanged()
    {
        const QString git = QStandardPaths::findExecutable("git");
        if (git.isEmpty())
            QSKIP("git isn't installed");
        QDir(_folder.path()).mkdir("repository");
        const auto call = [&](const QStringList& arguments)
        {
            QProcess process;
            process.setWorkingDirectory(_folder.filePath("repository"));
            process.start(git,
                          QStringList{"-c", "user.name=a", "-c", "user.email=a@b", "-c", "core.pager=cat"} + arguments);
            return process.waitForFinished(60000)
                       ? QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError())
                       : QString();
        };
        const auto put = [&](const QString& name)
        {
            const QString place = _folder.filePath("repository/stage.kxs");
            QFile::remove(place);
            QVERIFY(QFile::copy(_folder.filePath(name), place));
        };
        call({"init", "-q"});
        write("repository/.gitattributes", "*.kxs diff=kxs\n");
        call({"config", "diff.kxs.textconv", kxBuilt("kxhost") + " --text"});
        call({"config", "diff.kxs.xfuncname", "^\\[.*"});
        call({"config", "difftool.kxs.cmd", kxBuilt("kxhost") + " --diff \"$LOCAL\" \"$REMOTE\""});
        put("made.kxs");
        call({"add", "."});
        call({"commit", "-q", "-m", "first"});
        put("more.kxs");
        const QString lines = call({"diff"});
        QVERIFY2(lines.contains("\n+[objects/Crate]\n") && lines.contains("\n+child = Crate\n"), qPrintable(lines));
        QVERIFY2(lines.contains(" @@ [animation]\n"), qPrintable(lines)); // the head of a hunk names the thing
        const QString words = call({"difftool", "-y", "-t", "kxs"});
        QVERIFY2(words.contains("Object 'Crate': added"), qPrintable(words));
    }

    void firstSceneHasDefaultsAndStoredSettings()
    {
        QDir(_folder.path()).mkdir("other");
        write("other/preferences.ini",
              "[int]\nAnimation%20playback%20speed=3\nAnimation%20full%20timeline%20range%20end=90\n");
        write("save2.py", "import kxHost\nkxHost.saveScene('made2.kxs')\n");
        QCOMPARE(run({"--headless", "--script", "save2.py"}, true, "other").code, 0);
        kxSceneContent content;
        kxFileReport report(_folder.filePath("made2.kxs"));
        QVERIFY2(kxSceneFile::read(report.file(), content, report), qPrintable(report.message()));
        QVERIFY(content.animation["playbackFPS"] == 30 && content.animation["fullRangeEnd"] == 90);
        QVERIFY(content.animation["fps"] == 24 && content.animation["detailedRangeEnd"] == 25);
        QVERIFY(content.animation["loopTimeline"] == 1 && content.animation["evaluateSubframes"] == 1);
    }

    void aWindowOpensWhatTheLineNames()
    {
        const Result result = run({"made.kxs"}); // ends with the first picture of it
        QVERIFY2(result.code == 0 && result.errors.contains("Opened 'made.kxs'"), qPrintable(result.errors));
    }

    void whatAKilledRunLeftIsSaidWhereItsSceneIsOpened()
    {
        write("edit.py", "import kxHost\nkxHost.addObject('box', 'Lid')\n");
        write("die.py", "import os, signal\nos.kill(os.getpid(), signal.SIGKILL)\n");
        const QString sessions = _folder.filePath("crashed/sessions");
        QVERIFY(run({"made.kxs", "--script", "edit.py"}, true, "crashed").code == 0 && QDir(sessions).isEmpty());
        QCOMPARE(run({"made.kxs", "--script", "edit.py", "--script", "die.py"}, true, "crashed").code, -1);
        const QString said = run({"made.kxs", "--headless"}, true, "crashed").errors;
        QVERIFY2(said.contains(QRegularExpression("weren't saved: made, last change .*, 'Run edit.py")),
                 qPrintable(said));
        QVERIFY(!run({"more.kxs", "--headless"}, true, "crashed").errors.contains("weren't saved"));
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
        {
            const Result drawn = run({scene, "--headless", "--render", QString(scene) + ".png", "--size", "64x36"});
            QVERIFY2(drawn.code == 0, qPrintable(drawn.errors));
        }
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
        QCOMPARE(run({"--headless", "--script", "clips.py"}).code, 0);
        const QJsonObject info =
            QJsonDocument::fromJson(run({"--info", "--json", "clips.kxs"}).output.toUtf8()).object();
        const QJsonObject clip = info["clips"][0].toObject();
        QVERIFY(clip["name"] == "Walk" && qAbs(clip["start"].toDouble() - 10.0 / 24) < 1e-6 &&
                qAbs(clip["frames"].toDouble() - 4) < 1e-5 && info["cameras"].toArray() == QJsonArray{"Camera"});
        const auto picture = [this](const QString& name) { return QImage(_folder.filePath(name)); };
        const QStringList common = {"clips.kxs", "--headless", "--size", "64x36"};
        QCOMPARE(run(common + QStringList{"--clip", "Walk", "--render", "c_%d.png"}).code, 0);
        QCOMPARE(QDir(_folder.path()).entryList({"c_*.png"}).size(), 5); // the clip's extent, 10 to 14
        QCOMPARE(run(common + QStringList{"--frames", "10:14", "--render", "t_%d.png"}).code, 0);
        for (const char* const frame : {"10.png", "14.png"})
            QVERIFY(picture(QString("c_") + frame) != picture(QString("t_") + frame));
        QVERIFY(picture("c_10.png") != picture("c_14.png"));
        const Result result = run(common + QStringList{"--clip", "Wlak", "--render", "never_%d.png"});
        QCOMPARE(result.code, 1);
        QVERIFY2(result.errors.contains("Wlak") && result.errors.contains("Walk"), qPrintable(result.errors));
    }

    void anInterruptedMovieLeavesNothing()
    {
        QVERIFY(QDir(_folder.path()).mkdir("film"));
        const QDir film(_folder.filePath("film"));
        write("film/m.webm", "before");
        write("film.py", "import kxHost\nkxHost.renderMovie('film/m.webm', 320, 180, first=0, last=99999)\n");
        const auto files = [&film] { return film.entryList(QDir::Files | QDir::Hidden); };
        for (const QStringList& arguments :
             {QStringList{"more.kxs", "--movie", "film/m.webm", "--frames", "0:99999"}, {"--script", "film.py"}})
        {
            QProcess process;
            start(process, arguments + QStringList{"--headless"}, true, "settings");
            QTRY_VERIFY_WITH_TIMEOUT(files().size() == 2, 30000);
            process.terminate();
            QVERIFY(process.waitForFinished() && process.exitStatus() == QProcess::CrashExit); // as the signal has it
            QVERIFY(process.readAllStandardError().contains("'film/m.webm' isn't written: interrupted"));
            QCOMPARE(files(), QStringList("m.webm"));
            QCOMPARE(QFileInfo(film.filePath("m.webm")).size(), 6);
        }
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
        QCOMPARE(run({"--diff", "made.kxs", "more.kxs"}, false).code, 1);
        const Result picture = run({"made.kxs", "--render", "w.png", "--size", "8x8"}, false);
        QVERIFY2(picture.code == 0, qPrintable(picture.errors));
        QVERIFY(QFileInfo(_folder.filePath("w.png")).isFile());
        const Result headless = run({"made.kxs", "--headless"}, false);
        QVERIFY(headless.code == 0 && !headless.errors.contains("display"));
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
        start(process, arguments, display, settings);
        if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
            return {-1, QString(), QStringLiteral("crashed or hung: ") + process.readAllStandardError()};
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    void start(QProcess& process, const QStringList& arguments, bool display, const QString& settings,
               const QString& program = kxBuilt("kxhost")) const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(QString::fromLatin1(name));
        if (display)
            environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("KX_SETTINGS_DIR", _folder.filePath(settings));
        if (!arguments.join(' ').contains("--headless"))
            environment.insert("KX_QUIT_AT_FIRST_FRAME", "1");
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(_folder.path());
        process.start(program, arguments);
    }

    QByteArray read(const QString& name) const
    {
        QFile file(_folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
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
