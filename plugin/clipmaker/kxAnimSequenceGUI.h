#pragma once

class QComboBox;
class QDialog;
class QDialogButtonBox;
class QFrame;
class QGridLayout;
class QLabel;
class QKXSpiner;

namespace Ui
{
/// The form of the trigger dialog: what to fire, at which frame.
class kxAnimSequenceGUI
{
public:
    void setupUi(QDialog* dialog);

    QGridLayout* gridLayout_2;
    QDialogButtonBox* _buttons;
    QGridLayout* gridLayout;
    QLabel* _type;
    QComboBox* _names;
    QLabel* label_2;
    QKXSpiner* _frame;
    QFrame* frame;
};
} // namespace Ui
