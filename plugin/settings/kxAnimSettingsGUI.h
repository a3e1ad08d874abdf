#pragma once

#include <settings/kxAnimSettingsFrames.h>

class QDialog;
class QDialogButtonBox;
class QHBoxLayout;
class QPushButton;

namespace Ui
{
/// The form of the quick settings dialog.
class kxAnimSettingsGUI : public kxAnimSettingsFrames
{
public:
    void setupUi(QDialog* form);

    QHBoxLayout* horizontalLayout;
    QPushButton* _openPreferences;
    QDialogButtonBox* _buttonBox;
};
} // namespace Ui
