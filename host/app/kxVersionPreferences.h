#pragma once

#include <journal/kxVersions.h>
#include <kxPreferences.h>

#include <QPointer>

class QCheckBox;
class QSpinBox;

/// The page of settings that says when versions are kept, and for how long.
class kxVersionPreferences : public kxPreferences
{
public:
    kxVersionPreferences();
    ~kxVersionPreferences() override;

    /// Nobody works here: nothing is kept by itself, whatever is set.
    void setUnattended(bool unattended) { _isUnattended = unattended; }

    void preferencesSetDefaults(bool overwrite) override;
    void preferencesApply() override;
    void preferencesToGUI() override;
    void preferencesFromGUI() override;

private:
    void makePage();

    QPointer<QWidget> _page; // owned, unless a dialog that showed it has taken it along
    QCheckBox* _isOn = nullptr;
    QSpinBox* _minutes = nullptr;
    QSpinBox* _days = nullptr;
    QSpinBox* _megabytes = nullptr;
    bool _isUnattended = true;
};
