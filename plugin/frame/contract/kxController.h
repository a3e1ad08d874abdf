#pragma once

#include <kxMessage.h>
#include <osg/FCPtr.h>

#include <string>

class QMainWindow;
class QKXDockWindowManager;

/// The host's switchboard: named messages, the main window, requests to draw.
class KX_API kxController
{
public:
    typedef void (*Callback)(kxMessage& message);

    /// `function` gets each message of this name until it is removed. The same pair counts once.
    static void addCB(const std::string& name, Callback function);
    static void subCB(const std::string& name, Callback function);
    /// Runs every handler of `name` at once, in the order of their registration, and gives how many ran. A handler may
    /// add attributes, send messages, and add and remove handlers: one that is removed meanwhile doesn't run any more,
    /// one that is added runs from the next message on. `flags` is 0.
    static int call(const std::string& name, kxMessage& message, int flags);

    /// Null before the host has made it.
    static QMainWindow* getMainWindow();
    static QKXDockWindowManager* getDockWindowManager();

    /// Asks for a redraw of the 3D views; `now` draws before it returns.
    static void updateRender(bool now);
    /// Brings behaviours up to date before a playback; `force` also where nothing changed.
    static void updateBehavior(bool force);
    /// True while the host renders pictures.
    static bool isSnapshotRendering();
    /// Plays an animation as the user would; null does nothing.
    static void playAnimation(const osg::AnimNodePtr& animation);
};

/// Runs the handlers of `name` with a message that says nothing but its name; gives how many ran.
inline int kxSend(const std::string& name)
{
    kxMessage message;
    return kxController::call(name, message, 0);
}
