#pragma once

class QComboBox;
class QDialog;
class QDialogButtonBox;
class QFrame;
class QGridLayout;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QWidget;
class QKXCollapsibleFrame;
class QKXDoubleSpiner;

namespace Ui
{
/// The form of the dialog that edits a clip of the animation wizard.
class kxAnimWizClipDialog
{
public:
    void setupUi(QDialog* dialog);

    QGridLayout* gridLayout_2;
    QKXCollapsibleFrame* collapsibleFrame;
    QWidget* page;
    QGridLayout* gridLayout;
    QLabel* textLabel1_2;
    QLineEdit* _name;
    QLabel* textLabel1_6;
    QKXDoubleSpiner* _startTime; // seconds
    QLabel* _transitionDurationLabel;
    QKXDoubleSpiner* _duration; // seconds
    QLabel* _interpolationLabel;
    QComboBox* _interpolation;
    QFrame* frame_3; // sets the buttons off from the fields
    QHBoxLayout* horizontalLayout;
    QPushButton* _captureStart;
    QPushButton* _captureEnd;
    QHBoxLayout* horizontalLayout_2;
    QPushButton* _preview;
    QPushButton* _reset;
    QFrame* frame_2; // ends the page
    QFrame* frame;   // takes the height that is left
    QDialogButtonBox* buttonBox;

private:
    void setupFields();
    void setupButtons();
    void connectPreview();
};
} // namespace Ui
