#pragma once

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QFrame;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QWidget;
class QWizard;
class QWizardPage;
class QKXDoubleSpiner;

namespace Ui
{
/// The form of the animation wizard: what to animate, then the two captures.
class kxAnimWizardUI
{
public:
    enum Page
    {
        ChoicePage = 0,
        CapturePage = 1
    };

    void setupUi(QWizard* wizard);

    QWizardPage* wizardPage1;
    QGridLayout* gridLayout;
    QLabel* label;
    QRadioButton* _geoMatType;
    QRadioButton* _matType;
    QRadioButton* _geoType;
    QButtonGroup* _typeGroup;

    QWizardPage* wizardPage;
    QGridLayout* gridLayout_4;
    QLabel* label_2;
    QLineEdit* _name;
    QFrame* line;
    QLabel* label_4;
    QGridLayout* gridLayout_2;
    QKXDoubleSpiner* _startTime;
    QKXDoubleSpiner* _duration;
    QComboBox* _interpolation;
    QFrame* line_2;
    QLabel* _captureText;
    QGridLayout* gridLayout_3;
    QPushButton* _captureStart;
    QPushButton* _captureEnd;
    QPushButton* _preview;
    QPushButton* _reset;
    QCheckBox* _openClipMaker;

private:
    void setupChoicePage();
    void setupCapturePage();
    void setupTimes();
    void setupCaptures();
    void lockFieldsDuringPreview();
};
} // namespace Ui
