#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <kernel/kxLogModel.h>
#include <kxScript.h>
#include <kxTable.h>
#include <python/kxInterpreter.h>

#include <QtTest>

#include <memory>

namespace
{
typedef kxPythonRegisterFactory::Level Level;

PyObject* initLateModule()
{
    static PyModuleDef definition = {
        PyModuleDef_HEAD_INIT, "kxLateModule", nullptr, -1, nullptr, nullptr, nullptr, nullptr, nullptr};
    return PyModule_Create(&definition);
}

/// What scripts write while it lives.
class Written
{
public:
    Written()
        : _listener(kxInterpreter::addListener([this](kxInterpreter::Stream stream, const std::string& text)
                                               { texts[stream] += QString::fromStdString(text); }))
    {
    }
    ~Written() { kxInterpreter::removeListener(_listener); }

    QString texts[2];

private:
    int _listener;
};

} // namespace

class tst_kxInterpreter : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(!kxScript::run("x = 1")); // not started: an answer, no crash
        _early = std::make_unique<kxPythonRegister>(
            [this](Level level)
            {
                _levels.append(level);
                _runningAtLevel.append(kxInterpreter::isRunning());
            });
        kxPythonRegister throwing([](Level) { throw std::runtime_error("broken module"); });
        kxPythonRegister empty(nullptr);
        QVERIFY(kxInterpreter::start());
        QVERIFY(kxInterpreter::start());
    }

    void init() { kxLogModel::the().clear(); }

    void levelsRunAroundTheStart()
    {
        QCOMPARE(_levels, (QList<int>{0, 1}));
        QCOMPARE(_runningAtLevel, (QList<bool>{false, true}));
        // A late registration catches up.
        QList<int> levels;
        {
            const kxPythonRegister late(
                [&levels](Level level)
                {
                    levels.append(level);
                    if (level == kxPythonRegisterFactory::BeforeStart)
                        PyImport_AppendInittab("kxLateModule", initLateModule);
                    else
                        QVERIFY(kxScript::run("import kxLateModule"));
                });
            QCOMPARE(levels, (QList<int>{0, 1}));
        }
        kxPythonRegisterFactory::run(kxPythonRegisterFactory::AfterStart);
        QCOMPARE(levels.size(), 2);               // gone with its object
        QCOMPARE(_levels, (QList<int>{0, 1, 1})); // and the other one isn't
    }

    void errorsEndTheScriptAlone_data()
    {
        kxColumns<QByteArray, QString>("script", "expected"); // the latter in the trace
        QTest::newRow("exception") << QByteArray("def f():\n    return 1 / 0\nf()") << "    return 1 / 0\n";
        QTest::newRow("syntax") << QByteArray("for in 3:") << "SyntaxError";
        QTest::newRow("null byte") << QByteArray("x = 1\0y", 7) << "null bytes";
        QTest::newRow("no UTF-8") << QByteArray("x = '\xff'") << "SyntaxError";
        QTest::newRow("endless recursion") << QByteArray("def f(): f()\nf()") << "RecursionError";
        QTest::newRow("interrupt") << QByteArray("raise KeyboardInterrupt") << "KeyboardInterrupt";
        QTest::newRow("text of the error fails")
            << QByteArray("class E(Exception):\n def __str__(self): raise self\nraise E") << "E";
        QTest::newRow("lone surrogate") << QByteArray("raise ValueError('\\udc80')") << "\\udc80";
    }

    void errorsEndTheScriptAlone()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, expected);
        const kxScriptResult result = kxInterpreter::run(script.toStdString());
        QVERIFY(!result.ok);
        QVERIFY(!result.exited);
        QCOMPARE(result.exitCode, script.contains("Keyboard") ? 130 : 1);
        const QString trace = QString::fromStdString(result.trace);
        QVERIFY2(trace.contains(expected), qPrintable(trace));
        QVERIFY(!trace.contains("<runner>"));
        QVERIFY(kxLogModel::the().entries().back().text.contains(trace.trimmed()));
        QVERIFY(kxScript::run("x = 1"));
    }

    void comesInWhileAScriptHasLetGoOfTheLock()
    {
        kxScript::run("import ctypes\nturn = ctypes.CDLL('libQt5Core.so.5')."
                      "_ZN16QCoreApplication13processEventsE6QFlagsIN10QEventLoop17ProcessEventsFlagEE\nseen = []");
        std::vector<std::string> names;
        QTimer::singleShot(0, this,
                           [&]
                           {
                               // One in the other: the loop that the first script turns runs the second one's.
                               QTimer::singleShot(0, this, [] { kxInterpreter::run("seen.append('inner')"); });
                               kxInterpreter::run("turn(0)\nseen.append('outer')");
                               bool more = true;
                               kxInterpreter::runInteractive("seen.append('typed')", &more);
                               names = kxInterpreter::complete("seen.appe");
                               const kxPythonRegister late([](Level) { PyRun_SimpleString("seen.append('late')"); });
                           });
        const kxScriptResult result = kxInterpreter::run("turn(0)\nassert seen == ['inner', 'outer', 'typed', 'late', "
                                                         "'late'], seen");
        QVERIFY2(result.ok, result.trace.c_str());
        QCOMPARE(names, std::vector<std::string>{"seen.append"});
    }

    void exitGivesItsCode()
    {
        const std::pair<const char*, int> exits[] = {{"", 0}, {"3", 3}, {"'too hot'", 1}, {"2**40", 2147483647}};
        for (const auto& [argument, code] : exits)
        {
            const Written written;
            const kxScriptResult result = kxInterpreter::run(std::string("import sys\nsys.exit(") + argument + ")");
            QVERIFY(result.exited);
            QCOMPARE(result.exitCode, code);
            QCOMPARE(result.ok, code == 0);
            QVERIFY(result.trace.empty());
            QCOMPARE(written.texts[kxInterpreter::Error], QString(code == 1 ? "too hot\n" : ""));
        }
    }

    void filesKnowTheirPlace()
    {
        QTemporaryDir folder;
        const auto write = [&folder](const QString& name, const QByteArray& text)
        {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(text);
        };
        const QString script = QString::fromUtf8("prüfung.py");
        write("neighbour_of_test.py", "value = 7\n");
        write(script, "import sys, os, neighbour_of_test\n"
                      "assert __name__ == '__main__' and sys.argv == [__file__]\n"
                      "assert os.path.basename(__file__) == 'pr\\xfcfung.py'\n"
                      "found = neighbour_of_test.value\n");
        const std::string path = folder.filePath(script).toStdString();
        const kxScriptResult result = kxInterpreter::runFile(path);
        QVERIFY2(result.ok, result.trace.c_str());
        QVERIFY(kxScript::run("assert found == 7 and '__file__' not in globals() and sys.argv != [0]"));
        QVERIFY(!QFileInfo::exists(folder.filePath("__pycache__")));

        write(script, "\nraise ValueError('here')\n");
        const QString trace = QString::fromStdString(kxInterpreter::runFile(path).trace);
        QVERIFY2(trace.contains("line 2") && trace.contains("    raise ValueError('here')"), qPrintable(trace));
    }

    void promptRunsWholeStatements_data()
    {
        kxColumns<QString, bool, QString>("text", "needsMore", "output"); // or a part of the trace
        QTest::newRow("value is shown") << "6 * 7" << false << "42\n";
        QTest::newRow("None isn't") << "None" << false << "";
        QTest::newRow("open bracket") << "print(1," << true << "";
        QTest::newRow("block goes on") << "for i in range(2):\n    print(i)" << true << "";
        QTest::newRow("block ends") << "for i in range(2):\n    print(i)\n" << false << "0\n1\n";
        QTest::newRow("several statements") << "a = 2\nfor i in (a, 3):\n    print(i)\na * 4" << false << "2\n3\n8\n";
        QTest::newRow("never valid") << "1 +* 2" << false << "SyntaxError";
        QTest::newRow("colon left out") << "for i in x" << false << "expected ':'";
        QTest::newRow("error in second line") << "a = 1\na +* 2" << false << "line 2";
        QTest::newRow("raises") << "[][1]" << false << "IndexError";
        QTest::newRow("comment") << "# nothing" << false << "";
        QTest::newRow("null byte") << QString("a") + QChar(0) << false << "null bytes";
    }

    void promptRunsWholeStatements()
    {
        QFETCH(QString, text);
        QFETCH(bool, needsMore);
        QFETCH(QString, output);
        const Written written;
        bool more = !needsMore;
        const kxScriptResult result = kxInterpreter::runInteractive(text.toStdString(), &more);
        QCOMPARE(more, needsMore);
        if (result.ok)
            QCOMPARE(written.texts[kxInterpreter::Output], output);
        else
            QVERIFY2(QString::fromStdString(result.trace).contains(output) && !output.isEmpty(), result.trace.c_str());
        QVERIFY2(result.trace.find("codeop") == std::string::npos, result.trace.c_str());
        QVERIFY(kxLogModel::the().entries().empty()); // the prompt shows its errors itself
    }

    void streamsReachListeners()
    {
        {
            const Written written;
            QVERIFY(kxScript::run("import sys\nprint('gr\\xfcn', end='')\nprint('warm', file=sys.stderr)\n"
                                  "print('\\udc80')\nsys.stdout.close()\nprint('open')"));
            QCOMPARE(written.texts[kxInterpreter::Output], QString::fromUtf8("gr\xc3\xbcn\\udc80\nopen\n"));
            QCOMPARE(written.texts[kxInterpreter::Error], QString("warm\n"));
        }
        QVERIFY(kxScript::run("print('nobody listens')"));
    }

    void threadsWriteOnTheMainThread()
    {
        QThread* thread = nullptr;
        const int listener = kxInterpreter::addListener([&thread](kxInterpreter::Stream, const std::string&)
                                                        { thread = QThread::currentThread(); });
        QVERIFY(
            kxScript::run("import threading\nt = threading.Thread(target=print, args=('far',))\nt.start()\nt.join()"));
        QTRY_COMPARE(thread, QThread::currentThread());
        kxInterpreter::removeListener(listener);
    }

private:
    QList<int> _levels;          // as the early registration was called
    QList<bool> _runningAtLevel; // whether Python ran then
    std::unique_ptr<kxPythonRegister> _early;
};

QTEST_GUILESS_MAIN(tst_kxInterpreter)
#include "tst_kxInterpreter.moc"
