#include <wizard/kxAnimWizardUI.h>

#include <frame/kxForm.h>
#include <wizard/kxSecondsSpiner.h>
#include <wizard/kxWizardCapture.h>

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QWizard>

namespace
{
constexpr int FieldWidth = 90;
constexpr int ButtonWidth = 100;

constexpr kxForm::Texts translated("kxAnimWizardUI");

using kxForm::named;

QLabel* makeText(const char* name, const char* text, QWidget* page)
{
    QLabel* const label = named<QLabel>(name, page);
    label->setText(translated(text));
    label->setWordWrap(true);
    return label;
}

QFrame* makeLine(const char* name, QWidget* page)
{
    QFrame* const line = named<QFrame>(name, page);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

/// A button that Return in another field doesn't press.
QPushButton* makeButton(const char* name, const char* text, QWidget* page)
{
    QPushButton* const button = named<QPushButton>(name, page);
    button->setText(translated(text));
    button->setMinimumWidth(ButtonWidth);
    button->setAutoDefault(false);
    return button;
}

QPushButton* makeCaptureButton(const char* name, const char* text, QWidget* page)
{
    QPushButton* const button = makeButton(name, text, page);
    button->setToolTip(translated("Click to capture"));
    button->setAccessibleName(translated(text)); // a picture takes the text's place
    button->setMinimumSize(ButtonWidth, ButtonWidth);
    button->setIconSize(QSize(kxWizardCapture::PictureSide, kxWizardCapture::PictureSide));
    return button;
}

QKXDoubleSpiner* makeTime(const char* name, double value, QWidget* page)
{
    QKXDoubleSpiner* const field = named<kxSecondsSpiner>(name, page);
    field->setMinimumWidth(FieldWidth);
    field->setSingleStep(0.5);
    field->setSuffix(translated(" sec"));
    field->setValue(value);
    return field;
}

void addRow(QGridLayout* grid, const char* text, QWidget* field)
{
    const int row = grid->rowCount();
    QLabel* const label = new QLabel(translated(text), field->parentWidget());
    label->setBuddy(field);
    grid->addWidget(label, row, 0);
    grid->addWidget(field, row, 1);
}
} // namespace

void Ui::kxAnimWizardUI::setupUi(QWizard* wizard)
{
    wizard->setObjectName(QStringLiteral("kxAnimWizardUI"));
    wizard->setWindowTitle(translated("Animation Wizard"));
    wizard->setMinimumSize(370, 500);
    wizard->setWizardStyle(QWizard::ModernStyle);
    wizard->setOptions(QWizard::NoDefaultButton | QWizard::NoBackButtonOnStartPage | QWizard::NoBackButtonOnLastPage |
                       QWizard::HelpButtonOnRight);
    wizardPage1 = named<QWizardPage>("wizardPage1", nullptr);
    setupChoicePage();
    wizard->setPage(ChoicePage, wizardPage1);
    wizardPage = named<QWizardPage>("wizardPage", nullptr);
    setupCapturePage();
    wizard->setPage(CapturePage, wizardPage);
}

void Ui::kxAnimWizardUI::setupChoicePage()
{
    gridLayout = named<QGridLayout>("gridLayout", wizardPage1);
    label = makeText("label",
                     "Choose the type of animation you want to create and select the desired aims in the scene "
                     "respectively scenegraph and/or material editor.",
                     wizardPage1);
    gridLayout->addWidget(label, 0, 0);
    _typeGroup = named<QButtonGroup>("_typeGroup", wizardPage1);
    const auto addType = [this](const char* name, const char* text, int row)
    {
        QRadioButton* const button = named<QRadioButton>(name, wizardPage1);
        button->setText(translated(text));
        _typeGroup->addButton(button);
        gridLayout->addWidget(button, row, 0);
        return button;
    };
    _geoType = addType("_geoType", "Object", 1);
    _matType = addType("_matType", "Material", 2);
    _geoMatType = addType("_geoMatType", "Object and Material", 3);
    _geoType->setChecked(true);
    gridLayout->addItem(new QSpacerItem(20, 152, QSizePolicy::Minimum, QSizePolicy::Expanding), 4, 0);
}

void Ui::kxAnimWizardUI::setupCapturePage()
{
    gridLayout_4 = named<QGridLayout>("gridLayout_4", wizardPage);
    label_2 = makeText("label_2", "Choose a name for your animation.", wizardPage);
    _name = named<QLineEdit>("_name", wizardPage);
    label_2->setBuddy(_name);
    line = makeLine("line", wizardPage);
    label_4 = makeText("label_4", "Set start time, duration and curve interpolation mode.", wizardPage);
    gridLayout_4->addWidget(label_2, 0, 0, 1, 2);
    gridLayout_4->addWidget(_name, 1, 0, 1, 2);
    gridLayout_4->addWidget(line, 2, 0, 1, 2);
    gridLayout_4->addWidget(label_4, 3, 0, 1, 2);
    setupTimes();
    gridLayout_4->addLayout(gridLayout_2, 4, 0);
    gridLayout_4->addItem(new QSpacerItem(128, 93, QSizePolicy::Expanding, QSizePolicy::Minimum), 4, 1);
    line_2 = makeLine("line_2", wizardPage);
    _captureText = makeText("_captureText", "Capture start state, modify object and material, then capture end state.",
                            wizardPage);
    gridLayout_4->addWidget(line_2, 5, 0, 1, 2);
    gridLayout_4->addWidget(_captureText, 6, 0, 1, 2);
    setupCaptures();
    gridLayout_4->addLayout(gridLayout_3, 7, 0, 1, 2);
    gridLayout_4->addItem(new QSpacerItem(20, 0, QSizePolicy::Minimum, QSizePolicy::Expanding), 8, 0);
    lockFieldsDuringPreview();
}

void Ui::kxAnimWizardUI::setupTimes()
{
    gridLayout_2 = named<QGridLayout>("gridLayout_2");
    _startTime = makeTime("_startTime", 0.0, wizardPage);
    _duration = makeTime("_duration", 2.0, wizardPage);
    _duration->setMinimum(0); // the last key never lies before the first
    _interpolation = named<QComboBox>("_interpolation", wizardPage);
    _interpolation->setMinimumWidth(FieldWidth);
    _interpolation->addItems(kxWizardCapture::interpolationTexts("kxAnimWizardUI"));
    addRow(gridLayout_2, "Start", _startTime);
    addRow(gridLayout_2, "Duration", _duration);
    addRow(gridLayout_2, "Interpolation", _interpolation);
}

void Ui::kxAnimWizardUI::setupCaptures()
{
    gridLayout_3 = named<QGridLayout>("gridLayout_3");
    _captureStart = makeCaptureButton("_captureStart", "Capture Start", wizardPage);
    _captureEnd = makeCaptureButton("_captureEnd", "Capture End", wizardPage);
    _preview = makeButton("_preview", "Preview", wizardPage);
    _preview->setCheckable(true);
    _reset = makeButton("_reset", "Reset Preview", wizardPage);
    _openClipMaker = named<QCheckBox>("_openClipMaker", wizardPage);
    _openClipMaker->setText(translated("Open Clip Maker when finished."));
    gridLayout_3->addWidget(_captureStart, 0, 0);
    gridLayout_3->addWidget(_captureEnd, 0, 1);
    gridLayout_3->addWidget(_preview, 1, 0);
    gridLayout_3->addWidget(_reset, 1, 1);
    gridLayout_3->addWidget(_openClipMaker, 2, 0, 1, 2);
}

void Ui::kxAnimWizardUI::lockFieldsDuringPreview()
{
    for (QWidget* const field :
         {static_cast<QWidget*>(_captureStart), static_cast<QWidget*>(_captureEnd),
          static_cast<QWidget*>(_interpolation), static_cast<QWidget*>(_duration), static_cast<QWidget*>(_startTime),
          static_cast<QWidget*>(_name), static_cast<QWidget*>(_openClipMaker)})
        QObject::connect(_preview, SIGNAL(toggled(bool)), field, SLOT(setDisabled(bool)));
}
