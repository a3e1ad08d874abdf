#pragma once

class QKXDockWindowManager;
class QMainWindow;

/// What each module is hung on. Both throw std::runtime_error where the host hasn't made it yet, so that the module
/// isn't built and the next start of the plug-in tries again.
QMainWindow* kxRequireMainWindow();
QKXDockWindowManager* kxRequireDockWindowManager();
