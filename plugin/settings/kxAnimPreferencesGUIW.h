#pragma once

#include <settings/kxAnimPreferencesGUI.h>

#include <QWidget>

/// The animation page of the preferences dialog.
class kxAnimPreferencesGUIW : public QWidget, public Ui::kxAnimPreferencesGUI
{
    Q_OBJECT
public:
    explicit kxAnimPreferencesGUIW(QWidget* parent = nullptr);
};
