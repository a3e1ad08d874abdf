#include <frame/kxHostWindows.h>

#include <kxController.h>

#include <stdexcept>

QMainWindow* kxRequireMainWindow()
{
    QMainWindow* const window = kxController::getMainWindow();
    if (window == nullptr)
        throw std::runtime_error("the application has no main window yet");
    return window;
}

QKXDockWindowManager* kxRequireDockWindowManager()
{
    QKXDockWindowManager* const manager = kxController::getDockWindowManager();
    if (manager == nullptr)
        throw std::runtime_error("the application has no dock window manager yet");
    return manager;
}
