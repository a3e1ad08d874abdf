#pragma once

#include "kxCommandLine.h"
#include "kxHostServices.h"
#include "kxMainWindow.h"
#include "kxPluginLoader.h"
#include "kxSession.h"
#include <edits/kxClippingPlane.h>

#include <memory>

/// Brings the application up in the order that its parts need, and runs it.
///
/// Settings, services, window, plug-in library, interpreter, the plug-in's tools, then a new scene, which every tool
/// is notified of, and then what the command line asks for.
class kxApplication
{
public:
    enum ExitCode
    {
        Success = 0,
        Failure = 1, ///< a file, a script or a picture failed; a script may leave with a code of its own
        BadArguments = 2,
        NoDisplay = 3
    };

    /// What has to be said to Qt before the application object is made.
    static void prepare(const kxCommandLine& line);
    /// True where a window can be shown, as far as the environment says.
    static bool hasDisplay();

    explicit kxApplication(const kxCommandLine& line);
    ~kxApplication();
    kxApplication(const kxApplication&) = delete;
    kxApplication& operator=(const kxApplication&) = delete;

    int run();

private:
    void setHooks();
    void startTools();
    /// Shows what other runs left, if they left something.
    void offerLeftovers();

    const kxCommandLine& _line;
    kxPluginLoader _plugin;
    std::unique_ptr<kxSession> _session; // goes after the window
    std::unique_ptr<kxMainWindow> _window;
    std::unique_ptr<kxHostServices> _services;
    kxClippingPlane::Answer _clippingPlane;
};
