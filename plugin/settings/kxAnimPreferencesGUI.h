#pragma once

#include <settings/kxAnimSettingsFrames.h>

namespace Ui
{
/// The form of the animation page of the preferences.
class kxAnimPreferencesGUI : public kxAnimSettingsFrames
{
public:
    void setupUi(QWidget* form);

    QCheckBox* _dontShowCreateCurveDialog;
};
} // namespace Ui
