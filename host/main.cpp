#include <app/kxApplication.h>
#include <app/kxFileTexts.h>
#include <app/kxVersionTexts.h>

#include <QApplication>
#include <QIcon>
#include <QTextStream>

#include <kxIconManager.h>

#include <cstdio>
#include <unistd.h>

namespace
{
constexpr const char Version[] = KX_VERSION;

QStringList argumentList(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    return arguments;
}

/// Gives true where the program ends here, with its exit code.
bool answersAtOnce(const kxCommandLine& line, int& exitCode)
{
    exitCode = kxApplication::Success;
    if (line.help)
        QTextStream(stdout) << kxCommandLine::helpText();
    else if (line.version)
        QTextStream(stdout) << "kxhost " << Version << Qt::endl;
    else if (!line.errors.isEmpty())
    {
        QTextStream errors(stderr);
        for (const QString& error : line.errors)
            errors << "kxhost: " << error << Qt::endl;
        exitCode = kxApplication::BadArguments;
    }
    else
        return false;
    return true;
}
} // namespace

int main(int argc, char** argv)
{
    kxCommandLine line = kxCommandLine::parse(argumentList(argc, argv));
    int exitCode = 0;
    if (line.help)
    {
        const QCoreApplication name(argc, argv); // the help text names the program
        answersAtOnce(line, exitCode);
        return exitCode;
    }
    if (answersAtOnce(line, exitCode))
        return exitCode;
    if (line.tellsOfFiles())
    {
        const QCoreApplication files(argc, argv); // readers look for their plug-ins beside it
        return kxFileTexts::run(line);
    }
    if (!line.versionsOf.isEmpty())
    {
        const QCoreApplication files(argc, argv);
        return kxVersionTexts::run(line);
    }
    if (!line.headless && !kxApplication::hasDisplay())
    {
        QTextStream(stderr) << "kxhost: there is no display for a window"
                            << (line.hasWork() ? "; doing the work without one" : "; --headless works without one")
                            << Qt::endl;
        if (!line.hasWork())
            return kxApplication::NoDisplay;
        line.headless = true;
    }
    kxApplication::prepare(line);
    // Never destroyed: the plug-in's tools are statics, which take down their widgets while the process ends.
    // Qt would take options of ours for its own: only the program's name is for it.
    static int forQt = 1;
    static const QApplication* const application = new QApplication(forQt, argv);
    Q_UNUSED(application);
    QApplication::setApplicationName(QStringLiteral("kxhost"));
    QApplication::setApplicationVersion(QString::fromLatin1(Version));
    QApplication::setDesktopFileName(QStringLiteral("kxhost"));
    QApplication::setWindowIcon(kxIconManager::getIcon(QStringLiteral("AppIcon"), QString()));
    kxApplication host(line);
    const int code = host.run();
    if (line.headless)
    {
        // What the plug-in says at its end is no output of a script.
        std::fflush(stdout);
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
    }
    return code;
}
