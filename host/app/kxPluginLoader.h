#pragma once

#include <QLibrary>
#include <QString>

/// The animation plug-in's library: found, loaded, and driven through its entry points. Never unloaded.
class kxPluginLoader
{
public:
    /// Where it is installed, else beside the executable.
    static QString defaultFile();

    /// Loads the library; what it registers for scripts is registered with that. False, with the reason in error(),
    /// where there is none or it lacks an entry point.
    bool load(const QString& file);
    bool isLoaded() const { return _initPlugin != nullptr; }
    QString version() const { return _version; }
    QString error() const { return _error; }
    QString file() const { return _library.fileName(); }

    /// Makes the preferences page, then the tools. Needs the main window and the dock manager. False where the plug-in
    /// threw an exception or a module of it is missing; the reason is in error().
    bool start();

private:
    typedef const char* (*VersionFunction)();
    typedef void (*InitFunction)();

    QLibrary _library;
    InitFunction _initPlugin = nullptr;
    InitFunction _initPreferences = nullptr;
    QString _version, _error;
};
