#include "kxPluginLoader.h"

#include <kernel/kxModuleRegistry.h>
#include <kxModuleBase.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include <exception>

namespace
{
QString tr(const char* text)
{
    return QCoreApplication::translate("kxPluginLoader", text);
}

/// Of the modules that a plug-in makes, those that aren't there.
QStringList missingModules()
{
    QStringList missing{QStringLiteral("Curve Editor"), QStringLiteral("Clip Maker"), QStringLiteral("Timeline")};
    for (const kxModuleBase* const module : kxModuleRegistry::the().modules())
        missing.removeAll(module->name());
    return missing;
}
} // namespace

QString kxPluginLoader::defaultFile()
{
    const QString folder = QCoreApplication::applicationDirPath(), name = QStringLiteral("/libkxAnimationWidgets.so");
    const QString installed = QDir::cleanPath(folder + QLatin1String("/" KX_PLUGINS_WAY) + name);
    return QFileInfo::exists(installed) ? installed : folder + name;
}

bool kxPluginLoader::load(const QString& file)
{
    const QFileInfo info(file);
    if (!info.isFile())
    {
        _error = tr("There is no animation plug-in '%1'.").arg(QDir::toNativeSeparators(file));
        return false;
    }
    _library.setFileName(info.absoluteFilePath());
    // Its code stays for as long as the process: handlers, statics and script classes point into it.
    _library.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    if (!_library.load())
    {
        _error = tr("The animation plug-in can't be loaded: %1").arg(_library.errorString());
        return false;
    }
    const auto version = reinterpret_cast<VersionFunction>(_library.resolve("getPluginVersion"));
    _initPreferences = reinterpret_cast<InitFunction>(_library.resolve("initPreferencesPlugin"));
    _initPlugin = reinterpret_cast<InitFunction>(_library.resolve("initPlugin"));
    if (version == nullptr || _initPreferences == nullptr || _initPlugin == nullptr)
    {
        _initPlugin = nullptr;
        _error = tr("'%1' is no animation plug-in: it lacks an entry point.").arg(file);
        return false;
    }
    _version = QString::fromUtf8(version());
    return true;
}

bool kxPluginLoader::start()
{
    if (!isLoaded())
        return false;
    try
    {
        _initPreferences();
        _initPlugin();
        const QStringList missing = missingModules();
        if (missing.isEmpty())
            return true;
        // The plug-in keeps its exceptions to itself, and logs them.
        _error = tr("The animation plug-in came without: %1.").arg(missing.join(QStringLiteral(", ")));
    }
    catch (const std::exception& exception)
    {
        _error = tr("The animation plug-in failed to start: %1").arg(QString::fromLocal8Bit(exception.what()));
    }
    catch (...)
    {
        _error = tr("The animation plug-in failed to start.");
    }
    return false;
}
