#pragma once

#include <QKXDockWindowManager.h>
#include <osg/FCPtr.h>

#include <QMainWindow>
#include <QPointer>

#include <functional>

/// What the host gives the platform: its windows, and its way of drawing. An empty function is left out.
class KX_API kxHostHooks
{
public:
    static kxHostHooks& the();

    std::function<void(bool now)> render;
    std::function<void(bool force)> updateBehavior;
    std::function<bool()> isSnapshotRendering;
    std::function<void(const osg::NodePtr& node)> scrollToNode;

    /// Neither is owned; both read as null again when they die.
    void setMainWindow(QMainWindow* window) { _mainWindow = window; }
    QMainWindow* mainWindow() const { return _mainWindow; }
    void setDockWindowManager(QKXDockWindowManager* manager) { _dockWindowManager = manager; }
    QKXDockWindowManager* dockWindowManager() const { return _dockWindowManager; }

private:
    kxHostHooks() = default;
    QPointer<QMainWindow> _mainWindow;
    QPointer<QKXDockWindowManager> _dockWindowManager;
};
