#pragma once

#include <kernel/kxHostHooks.h>

#include <QKXDockWindowManager.h>

#include <QMainWindow>

/// A main window with dock windows, which is the host's while it lives.
struct kxTestWindow
{
    kxTestWindow() : docks(&window)
    {
        kxHostHooks::the().setMainWindow(&window);
        kxHostHooks::the().setDockWindowManager(&docks);
    }
    ~kxTestWindow()
    {
        kxHostHooks::the().setMainWindow(nullptr);
        kxHostHooks::the().setDockWindowManager(nullptr);
    }
    kxTestWindow(const kxTestWindow&) = delete;
    kxTestWindow& operator=(const kxTestWindow&) = delete;

    QMainWindow window;
    QKXDockWindowManager docks;
};
