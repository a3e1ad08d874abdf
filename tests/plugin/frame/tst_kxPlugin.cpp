#include <kernel/kxHostHooks.h>
#include <kernel/kxModuleRegistry.h>
#include <kernel/kxPreferencesStore.h>
#include <python/kxInterpreter.h>

#include <QKXDockWindowManager.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <kxModuleBase.h>
#include <kxPlaces.h>
#include <kxScript.h>

#include <QLibrary>
#include <QMainWindow>
#include <QProcess>
#include <QtTest>

#include <cstdio>
#include <cstdlib>

namespace
{
// A small host in a process of its own, which says on the standard output what it sees.

/// Runs after the statics of the library are gone, since it is registered before them.
void countHandlersLeft()
{
    namespace Name = kxMessageName;
    int handlers = 0;
    for (const char* name : {Name::CurrentFullFrameChanged, Name::FinishedPlayingGlobal, Name::ChangedFPS,
                             Name::SelectedAnimations, Name::FrameChangedCurveEditor, Name::UpdateAnimControlGUI,
                             Name::FramePlayerUserChanged, Name::AnimationStart, Name::Undo, Name::Redo})
        handlers += kxSend(name);
    std::printf("handlers left %d\n", handlers);
}

void tellModules()
{
    for (kxModuleBase* module : kxModuleRegistry::the().modules())
        std::printf("module %s %s %llx\n", qPrintable(module->name()), qPrintable(module->category()),
                    static_cast<unsigned long long>(module->messageMask()));
}

int runHost(int argc, char** argv)
{
    countHandlersLeft(); // makes what it uses before the library's statics
    std::atexit(countHandlersLeft);
    QApplication application(argc, argv);
    QLibrary library(kxBuilt("libkxAnimationWidgets.so"));
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    typedef const char* (*Text)();
    typedef void (*Entry)();
    const Text version = reinterpret_cast<Text>(library.resolve("getPluginVersion"));
    const Entry initPlugin = reinterpret_cast<Entry>(library.resolve("initPlugin"));
    const Entry initPreferences = reinterpret_cast<Entry>(library.resolve("initPreferencesPlugin"));
    if (version == nullptr || initPlugin == nullptr || initPreferences == nullptr)
    {
        std::printf("%s\n", qPrintable(library.errorString()));
        return 1;
    }
    std::printf("version %s\n", version());
    initPlugin(); // there is no main window yet
    std::printf("interpreter %d\n", kxInterpreter::start());
    std::printf("script %d\n", kxScript::run("assert kxAnimWidgets.__name__ == 'kxAnimWidgets'\n"
                                             "assert kxAnimWidgets.__doc__ is None"));
    std::printf("modules %d\n", int(kxModuleRegistry::the().modules().size()));

    QMainWindow window;
    QKXDockWindowManager docks(&window);
    kxHostHooks::the().setMainWindow(&window);
    kxHostHooks::the().setDockWindowManager(&docks);
    {
        // The second module fails when its window is docked already.
        QObject context;
        QObject::connect(&docks, &QKXDockWindowManager::added, &context,
                         [](const QString& name)
                         {
                             if (name == "Clip Maker")
                                 kxHostHooks::the().setMainWindow(nullptr);
                         });
        initPlugin();
        std::printf("modules %d\n", int(kxModuleRegistry::the().modules().size()));
        kxHostHooks::the().setMainWindow(&window);
    }
    for (int round = 0; round < 2; ++round)
    {
        initPreferences();
        initPlugin();
    }
    tellModules();
    std::printf("pages %d\n", int(kxPreferencesStore::the().pages().size()));
    std::printf("docks %d bars %d\n", int(docks.dockWidgets().size()), int(docks.toolBars().size()));
    std::printf("clips %d\n", docks.getDockWidget("Clip Maker")->widget() != nullptr);
    kxMessage message;
    std::printf("handlers of one message %d\n", kxController::call(kxMessageName::SelectedAnimations, message, 0));
    for (kxModuleBase* module : kxModuleRegistry::the().modules())
    {
        const QByteArray name = module->name().toUtf8();
        QObject::connect(module, &QObject::destroyed, [name] { std::printf("gone %s\n", name.constData()); });
    }
    std::fflush(stdout);
    return 0;
}
} // namespace

class tst_kxPlugin : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void exportsFourNames()
    {
        QProcess nm;
        nm.start("nm", {"-D", "--defined-only", "--format=posix", kxBuilt("libkxAnimationWidgets.so")});
        QVERIFY2(nm.waitForFinished(), "nm of the binutils is needed");
        QStringList names;
        for (const QByteArray& line : nm.readAllStandardOutput().split('\n'))
            if (!line.isEmpty())
                names.append(QString::fromLatin1(line.split(' ').first()));
        names.sort();
        QCOMPARE(names,
                 (QStringList{"PyInit_kxAnimWidgets", "getPluginVersion", "initPlugin", "initPreferencesPlugin"}));
    }

    void livesAndDies()
    {
        QProcess host;
        host.start(QCoreApplication::applicationFilePath(), {"--host"});
        QVERIFY(host.waitForFinished());
        const QString output = QString::fromUtf8(host.readAllStandardOutput());
        const QByteArray errors = host.readAllStandardError();
        QCOMPARE(output.split('\n'), (QStringList{
                                         "handlers left 0",
                                         "version 15.3",
                                         "interpreter 1",
                                         "script 1",
                                         "modules 0",
                                         "modules 1",
                                         "module Curve Editor Animation 38288130",
                                         "module Clip Maker Animation 4a88130",
                                         "module Timeline Animation a00010",
                                         "pages 1",
                                         "docks 3 bars 1",
                                         "clips 1",
                                         "handlers of one message 1",
                                         "kxAnimControlWidget::~kxAnimControlWidget",
                                         "gone Timeline",
                                         "gone Clip Maker",
                                         "gone Curve Editor",
                                         "handlers left 0",
                                         "",
                                     }));
        QVERIFY2(errors.contains("initPlugin : "), errors.constData());
        QCOMPARE(host.exitStatus(), QProcess::NormalExit);
        QCOMPARE(host.exitCode(), 0);
    }
};

int main(int argc, char** argv)
{
    if (argc > 1 && QByteArray(argv[1]) == "--host")
        return runHost(argc, argv);
    QCoreApplication application(argc, argv);
    tst_kxPlugin test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_kxPlugin.moc"
