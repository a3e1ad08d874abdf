#include "kxHands.h"

#include <app/kxApplication.h>
#include <files/scene/kxSceneContent.h>
#include <files/text/kxSceneText.h>
#include <journal/kxHistory.h>
#include <journal/kxJournal.h>
#include <kernel/kxHostHooks.h>
#include <kernel/kxLogModel.h>
#include <kxAnimManager.h>
#include <kxFramePlayer.h>
#include <python/kxInterpreter.h>
#include <view/kxView3D.h>

#include <QAbstractItemModelTester>
#include <QDesktopServices>
#include <QPixmapCache>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <csignal>
#include <ctime>
#include <pthread.h>
#include <thread>

namespace
{
constexpr int Patience = 20; // seconds
const QString Sources = QDir::currentPath() + QStringLiteral("/tests/monkey/");
std::atomic<int> beats;
QtMessageHandler qtHandler;

[[noreturn]] void fail(const QString& what)
{
    std::fprintf(stderr, "FAIL: %s\n", qPrintable(what));
    std::abort();
}

/// A turn of the event loop that takes too long ends the program, with the sanitizer's trace of it. Seconds of work
/// count, since the machine may have others to serve.
void watch(pthread_t main)
{
    int seen = -1, quiet = 0;
    for (std::clock_t begin = 0; quiet < 20 * Patience && std::clock() - begin < Patience * CLOCKS_PER_SEC; ++quiet)
    {
        if (seen != beats)
        {
            seen = beats;
            quiet = 0;
            begin = std::clock();
        }
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
    std::fputs("FAIL: hangs\n", stderr);
    pthread_kill(main, SIGABRT);
}

/// What Qt warns of is a fault, but for what a display without windows makes it say, what its views say of a row that
/// is no more when they begin to edit it some time after a click, and of file names with a NUL in them.
void hear(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    qtHandler(type, context, text);
    for (const char* const harmless : {"This plugin does not support", "edit: ", "Broken filename"})
        if (text.startsWith(QLatin1String(harmless)))
            return;
    if (type != QtDebugMsg && type != QtInfoMsg)
        fail(QStringLiteral("a warning"));
}

bool run(const QString& text)
{
    return kxInterpreter::run(text.toStdString(), "<monkey>").ok;
}

void runFile(const char* name)
{
    if (!kxInterpreter::runFile((Sources + QLatin1String(name)).toStdString()).ok)
        fail(QStringLiteral("no %1 in ").arg(QLatin1String(name)) + Sources);
}

void turn()
{
    QCoreApplication::processEvents();
    ++beats;
}

void turns()
{
    for (int i = 0; i < 4; ++i)
        turn();
}

void tell(const char* what, int number)
{
    QFile file(QStringLiteral("/proc/self/statm"));
    file.open(QIODevice::ReadOnly);
    std::printf("%s %d: %.0f MB\n", what, number, file.readAll().split(' ').at(1).toDouble() * 4096 / 1e6);
    std::fflush(stdout);
}

/// What the scene is and was, seen from outside of the history. Files go into the current folder.
class Ledger : public QObject
{
public:
    Ledger()
    {
        connect(&kxJournal::the(), &kxJournal::replaced, this, [this] { _isOther = true; });
        connect(&kxJournal::the(), &kxJournal::dropped, this, [this] { _first.clear(); });
        connect(&kxLogModel::the(), &kxLogModel::added, this,
                [this](const kxLogEntry& entry) {
                    _isCut = _isCut || entry.text.contains("brought back") ||
                             entry.text.startsWith("Clip structure verified");
                });
        connect(&kxJournal::the(), &kxJournal::failed, this, [](const QString& why) { fail(why); });
    }
    QByteArray text() const
    {
        kxHistory::the().flush();
        return kxSceneText::of(kxSceneContent::ofScene());
    }
    /// Each turn: another scene is known as it was opened.
    void look()
    {
        if (_isOther && kxHistory::the().count() == 0)
            _first = text();
        _isOther = _isOther && kxHistory::the().count() > 0;
    }
    static void tellHistory(const char* when)
    {
        kxHistory& history = kxHistory::the();
        std::fprintf(stderr, "%s: %d of %d\n", when, history.index(), history.count());
        for (int i = 0; i < history.count(); ++i)
            std::fprintf(stderr, "    %d %s\n", i, qPrintable(history.entry(i).act));
    }
    /// All back and there again, then saved and opened.
    void check()
    {
        const QByteArray now = text();
        const int count = kxHistory::the().index();
        tellHistory("before");
        while (kxHistory::the().undo())
            turn();
        tellHistory("undone");
        if (!_first.isEmpty() && !_isOther)
            compare(_first, "all undone");
        while (kxHistory::the().index() < count && kxHistory::the().redo())
            turn();
        tellHistory("done again");
        compare(now, "all done again");
        _isCut = false;
        if (!run(QStringLiteral("saveScene('checked.kxs'); openScene('checked.kxs')")))
            fail(QStringLiteral("the scene can't be saved and opened"));
        turns();
        if (!_isCut)
            compare(now, "saved and opened");
        look();
    }
    void compare(const QByteArray& expected, const char* when) const
    {
        const QByteArray found = text();
        if (expected == found)
            return;
        for (const auto& [name, bytes] : {std::pair("expected.txt", expected), std::pair("found.txt", found)})
            if (QFile file(QLatin1String{name}); file.open(QIODevice::WriteOnly))
                file.write(bytes);
        fail(QLatin1String(when) + QStringLiteral(": see expected.txt and found.txt in ") + QDir::currentPath());
    }

private:
    QByteArray _first; // empty where it isn't known
    bool _isOther = true;
    bool _isCut = false; // saving said that times beyond what can be played don't last
};

/// Mouse and keys, `steps` events of them; every `round` events the scene is looked at.
class Walk : public QObject
{
public:
    Walk(Ledger& ledger, unsigned seed, int steps, int round)
        : _ledger(ledger), _hands(seed, QDir::currentPath()), _steps(steps), _round(round)
    {
        runFile("scene.py");
        run(QStringLiteral("exportScene('c.glb')\nfor name in ('a', 'b', 'scene'): saveScene(name + '.kxs')"));
        begin();
        QTimer::singleShot(0, this, &Walk::next);
    }

private:
    /// All tools in sight, and something to work with.
    static void begin()
    {
        auto* const window = static_cast<kxMainWindow*>(kxHostHooks::the().mainWindow());
        window->setCleanView(false);
        window->resetLayout();
        window->resize(1200, 800);
        static int rounds = 0;
        window->view()->setUpdatesEnabled(rounds++ % 4 == 3); // its drawing would be most of the work
        for (const char* const dock : {"Curves", "Clips"})
            window->dockManager()->show(QString::fromLatin1(dock));
        run(QStringLiteral("selectNodes([findNode('Box'), findNode('Sphere')])"));
    }
    void next()
    {
        ++beats;
        if (QThread::currentThread()->loopLevel() == 1)
            _ledger.look();
        // The timer first: what this starts may have an event loop of its own.
        const bool ends = _done % _round == _round - 1;
        if (ends && (_hands.holds() || !rests()))
        {
            QTimer::singleShot(1, this, &Walk::next);
            return _hands.letGo();
        }
        if (++_done >= _steps)
            return QCoreApplication::exit();
        QTimer::singleShot(_done % 16 == 0 ? 20 : 0, this, &Walk::next);
        if (_done % 50 == 1)
            testModels();
        std::fprintf(stderr, "%d\n", _done);
        _hands.step();
    }
    /// True once nothing is held or open, and the scene was looked at.
    bool rests()
    {
        if (_hands.leave() || QThread::currentThread()->loopLevel() > 1 || ++_quiet < 60)
            return false;
        _quiet = 0;
        kxFramePlayer::the()->stop(nullptr);
        run(QStringLiteral("stopSequences()"));
        _ledger.check();
        tell("steps", _done + 1);
        if (_done / _round % 2 == 1)
            run(QStringLiteral("openScene('scene.kxs')"));
        begin();
        return true;
    }
    static void testModels()
    {
        for (QWidget* const widget : QApplication::allWidgets())
            if (const auto* const view = qobject_cast<QAbstractItemView*>(widget);
                view != nullptr && view->model() != nullptr && !view->model()->inherits("kxVersionModel") && // fetches
                QByteArray(view->model()->metaObject()->className()).startsWith("kx") &&
                view->model()->findChild<QAbstractItemModelTester*>() == nullptr)
                new QAbstractItemModelTester(view->model(), QAbstractItemModelTester::FailureReportingMode::Warning,
                                             view->model());
    }

    Ledger& _ledger;
    kxHands _hands;
    int _steps, _round, _done = 0, _quiet = 0;
};

/// What leads out of the application is let be.
class Fence : public QObject
{
    Q_OBJECT
public:
    Fence()
    {
        for (const char* const scheme : {"http", "https", "file", "mailto"})
            QDesktopServices::setUrlHandler(QString::fromLatin1(scheme), this, "ignore");
        kxHostHooks::the().mainWindow()->installEventFilter(this);
    }
    Q_SLOT void ignore(const QUrl&) {}
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Close)
            event->ignore();
        return event->type() == QEvent::Close;
    }
};

/// `count` calls of scripts' functions with odd values, each taken back and made again.
void call(Ledger& ledger, unsigned seed, int count)
{
    kxHistory& history = kxHistory::the();
    static_cast<kxMainWindow*>(kxHostHooks::the().mainWindow())->setUnattended(true); // nothing is drawn
    runFile("calls.py");
    run(QStringLiteral("begin(%1)").arg(seed));
    for (int i = 0; i < count; ++i)
    {
        if (i % 100 == 0)
            runFile("scene.py");
        turns();
        ledger.look();
        const QByteArray before = ledger.text();
        const int index = history.index();
        run(QStringLiteral("call(%1)").arg(i));
        turns();
        const QByteArray after = ledger.text();
        const int end = history.index();
        if (end > index)
        {
            history.setIndex(index);
            turns();
            ledger.compare(before, "undone");
            history.setIndex(end);
            turns();
            ledger.compare(after, "done again");
        }
        if (i % 50 == 49)
            ledger.check();
        if (i % 1000 == 999)
            tell("calls", i + 1);
    }
}

/// What the process holds with more and more scenes opened, steps made, and frames shown.
void weigh(int scenes, int steps, int frames)
{
    runFile("scene.py");
    run(QStringLiteral("saveScene('a.kxs')"));
    const auto repeat = [](const char* what, int count, const std::function<void(int)>& act)
    {
        for (int i = 0; i <= count; ++i)
        {
            act(i);
            turns();
            if (i % std::max(1, count / 10) != 0)
                continue;
            QPixmapCache::clear(); // filled up to a limit of its own
            tell(what, i);
        }
    };
    repeat("scenes", scenes, [](int) { run(QStringLiteral("openScene('a.kxs')")); });
    repeat("steps of history", steps,
           [](int i)
           { run(QStringLiteral("setChannelValue(findNode('Box'), 'translation.Y', %1)").arg(0.5 * (i % 77))); });
    const auto show = [](int i)
    {
        static_cast<kxMainWindow*>(kxHostHooks::the().mainWindow())->view()->setUpdatesEnabled(i % 20 == 0);
        kxAnimManager::the()->setCurrentFrame(i % 120, true, true);
    };
    repeat("frames, each 20th drawn", frames, show);
}
} // namespace

/// kxMonkey walk SEED EVENTS ROUND, calls SEED COUNT or weight SCENES STEPS FRAMES, in the folder of the sources.
int main(int argc, char** argv)
{
    QTemporaryDir folder(QStringLiteral("/tmp/kxMonkeyXXXXXX"));
    folder.setAutoRemove(false);
    qputenv("LP_NUM_THREADS", "0"); // of the drawing in software: others have work to do as well
    for (const char* const name : {"HOME", "KX_SETTINGS_DIR", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
        qputenv(name, folder.path().toUtf8());
    QDir::setCurrent(folder.path());
    const kxCommandLine line;
    kxApplication::prepare(line);
    new QApplication(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const QStringList words = QApplication::arguments() + QStringList{"1", "1000", "1000"}.mid(std::max(0, argc - 2));
    auto* const application = new kxApplication(line);
    qtHandler = qInstallMessageHandler(&hear);
    const Fence fence;
    Ledger ledger;
    std::thread(watch, pthread_self()).detach();
    kxHostHooks::the().mainWindow()->show();
    std::fprintf(stderr, "%s\n", qPrintable(words.join(' ') + ' ' + folder.path()));
    if (words[1] == QLatin1String("calls"))
        call(ledger, words[2].toUInt(), words[3].toInt());
    else if (words[1] == QLatin1String("weight"))
        weigh(words[2].toInt(), words[3].toInt(), words[4].toInt());
    else
    {
        const Walk walk(ledger, words[2].toUInt(), words[3].toInt(), words[4].toInt());
        application->run();
    }
    std::printf("%s %s: nothing found\n", qPrintable(words[1]), qPrintable(words[2]));
    std::fflush(stdout);
    ::_exit(0); // the plug-in's tools are statics
}
#include "kxMonkey.moc"
