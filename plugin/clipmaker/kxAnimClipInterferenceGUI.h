#pragma once

class QButtonGroup;
class QDialog;
class QDialogButtonBox;
class QGridLayout;
class QLabel;
class QRadioButton;

namespace Ui
{
/// The form of the interference dialog: three ways to proceed.
class kxAnimClipInterferenceGUI
{
public:
    void setupUi(QDialog* dialog);

    QGridLayout* gridLayout;
    QLabel* label;
    QRadioButton* _moveAnim;
    QRadioButton* _discardExisting;
    QRadioButton* _newClip;
    QButtonGroup* _proceedGroup;
    QDialogButtonBox* buttonBox;
};
} // namespace Ui
