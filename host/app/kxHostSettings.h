#pragma once

#include <kernel/kxPreferencesStore.h>

#include <QSettings>

/// What the host remembers by itself: the layout of the window, recent files, folders.
class kxHostSettings : public QSettings
{
public:
    kxHostSettings() : QSettings(kxPreferencesStore::settingsFolder() + QStringLiteral("/window.ini"), IniFormat) {}
};
