#include <wizard/kxAnimWizClipDialog.h>

#include <frame/kxForm.h>
#include <wizard/kxSecondsSpiner.h>
#include <wizard/kxWizardCapture.h>

#include <QKXCollapsibleFrame.h>

#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace
{
constexpr const char Context[] = "kxAnimWizClipDialog";
constexpr int ColumnWidth = 130;
/// Of a capture button, which leaves a margin around its picture.
constexpr int CaptureSide = 100;
/// A button with a picture in a style of wide margins is no higher than one with a text.
constexpr int CaptureMargin = 8;
/// Above and below the buttons.
constexpr int GroupSpace = 6;

constexpr kxForm::Texts text(Context);

using kxForm::named;

QLabel* makeLabel(const char* name, const char* source, QWidget* parent)
{
    QLabel* const label = named<QLabel>(name, parent);
    label->setText(text(source));
    label->setMinimumWidth(ColumnWidth);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}

QKXDoubleSpiner* makeSeconds(const char* name, double value, QWidget* parent)
{
    QKXDoubleSpiner* const field = named<kxSecondsSpiner>(name, parent);
    field->setMinimumWidth(ColumnWidth);
    field->setSingleStep(0.5);
    field->setSuffix(text(" sec"));
    field->setValue(value);
    return field;
}

/// No default button: Return in a field doesn't press it.
QPushButton* makeButton(const char* name, const char* source, QWidget* parent)
{
    QPushButton* const button = named<QPushButton>(name, parent);
    button->setText(text(source));
    button->setMinimumWidth(ColumnWidth);
    button->setAutoDefault(false);
    return button;
}

QPushButton* makeCapture(const char* name, const char* source, QWidget* parent)
{
    QPushButton* const button = makeButton(name, source, parent);
    button->setAccessibleName(text(source)); // also while it shows a picture
    button->setToolTip(text("Click to capture"));
    button->setMinimumSize(CaptureSide, CaptureSide);
    button->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Expanding);
    button->setIconSize(QSize(kxWizardCapture::PictureSide, kxWizardCapture::PictureSide));
    return button;
}

QFrame* makeSpace(const char* name, QSizePolicy::Policy horizontal, QSizePolicy::Policy vertical, QWidget* parent)
{
    QFrame* const space = named<QFrame>(name, parent);
    space->setFrameShape(QFrame::NoFrame);
    space->setSizePolicy(horizontal, vertical);
    return space;
}
} // namespace

void Ui::kxAnimWizClipDialog::setupUi(QDialog* dialog)
{
    dialog->setObjectName(QString::fromLatin1(Context));
    dialog->setWindowTitle(text("Animation Attributes"));
    gridLayout_2 = named<QGridLayout>("gridLayout_2", dialog);
    collapsibleFrame = named<QKXCollapsibleFrame>("collapsibleFrame", dialog);
    page = named<QWidget>("page", collapsibleFrame);
    gridLayout = named<QGridLayout>("gridLayout", page);
    setupFields();
    setupButtons();
    collapsibleFrame->addPage(page, text("General"));
    frame = makeSpace("frame", QSizePolicy::Preferred, QSizePolicy::Expanding, dialog);
    buttonBox = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Qt::Horizontal, dialog);
    buttonBox->setObjectName(QStringLiteral("buttonBox"));
    gridLayout_2->addWidget(collapsibleFrame, 0, 0);
    gridLayout_2->addWidget(frame, 1, 0);
    gridLayout_2->addWidget(buttonBox, 2, 0);
    gridLayout_2->setRowStretch(1, 1);
    QObject::connect(buttonBox, SIGNAL(accepted()), dialog, SLOT(accept()));
    QObject::connect(buttonBox, SIGNAL(rejected()), dialog, SLOT(reject()));
    connectPreview();
    dialog->resize(473, 431);
}

void Ui::kxAnimWizClipDialog::setupFields()
{
    textLabel1_2 = makeLabel("textLabel1_2", "Name", page);
    _name = named<QLineEdit>("_name", page);
    textLabel1_6 = makeLabel("textLabel1_6", "Start Time", page);
    _startTime = makeSeconds("_startTime", 0.0, page);
    frame_3 = makeSpace("frame_3", QSizePolicy::Preferred, QSizePolicy::Preferred, page);
    frame_3->setFixedHeight(GroupSpace);
    _transitionDurationLabel = makeLabel("_transitionDurationLabel", "Base Duration", page);
    _duration = makeSeconds("_duration", 2.0, page);
    _duration->setMinimum(0.0);
    _interpolationLabel = makeLabel("_interpolationLabel", "Interpolation", page);
    _interpolation = named<QComboBox>("_interpolation", page);
    _interpolation->setMinimumWidth(ColumnWidth);
    _interpolation->addItems(kxWizardCapture::interpolationTexts(Context));
    textLabel1_2->setBuddy(_name);
    textLabel1_6->setBuddy(_startTime);
    _transitionDurationLabel->setBuddy(_duration);
    _interpolationLabel->setBuddy(_interpolation);

    gridLayout->addWidget(textLabel1_2, 0, 0);
    gridLayout->addWidget(_name, 0, 1);
    gridLayout->addWidget(textLabel1_6, 1, 0);
    gridLayout->addWidget(_startTime, 1, 1);
    gridLayout->addWidget(_transitionDurationLabel, 2, 0);
    gridLayout->addWidget(_duration, 2, 1);
    gridLayout->addWidget(_interpolationLabel, 3, 0);
    gridLayout->addWidget(_interpolation, 3, 1);
    gridLayout->addWidget(frame_3, 4, 1);
}

void Ui::kxAnimWizClipDialog::setupButtons()
{
    _captureStart = makeCapture("_captureStart", "Capture Start", page);
    _captureEnd = makeCapture("_captureEnd", "Capture End", page);
    horizontalLayout = named<QHBoxLayout>("horizontalLayout");
    horizontalLayout->addWidget(_captureStart, 1);
    horizontalLayout->addWidget(_captureEnd, 1);

    _preview = makeButton("_preview", "Preview", page);
    _preview->setCheckable(true);
    _reset = makeButton("_reset", "Reset Preview", page);
    horizontalLayout_2 = named<QHBoxLayout>("horizontalLayout_2");
    horizontalLayout_2->addWidget(_preview, 1);
    horizontalLayout_2->addWidget(_reset, 1);

    gridLayout->addLayout(horizontalLayout, 5, 1);
    gridLayout->setRowMinimumHeight(5, CaptureSide + CaptureMargin);
    gridLayout->addLayout(horizontalLayout_2, 6, 1);
    frame_2 = makeSpace("frame_2", QSizePolicy::Preferred, QSizePolicy::Preferred, page);
    frame_2->setFixedHeight(GroupSpace);
    gridLayout->addWidget(frame_2, 7, 1);
}

void Ui::kxAnimWizClipDialog::connectPreview()
{
    for (QWidget* const locked :
         {static_cast<QWidget*>(buttonBox), static_cast<QWidget*>(_captureStart), static_cast<QWidget*>(_captureEnd),
          static_cast<QWidget*>(_interpolation), static_cast<QWidget*>(_duration), static_cast<QWidget*>(_startTime),
          static_cast<QWidget*>(_name)})
        QObject::connect(_preview, SIGNAL(toggled(bool)), locked, SLOT(setDisabled(bool)));
}
