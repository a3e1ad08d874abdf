#include <settings/kxAnimSettingsFrames.h>

#include <frame/kxForm.h>

#include <QKXCollapsibleFrame.h>
#include <QKXSpiner.h>

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>

namespace
{
constexpr kxForm::Texts text("kxAnimSettingsFrames");

using kxForm::named;

template <class T>
T* makeField(const char* name, QWidget* parent)
{
    T* const field = named<T>(name, parent);
    field->setMinimumWidth(Ui::kxAnimSettingsFrames::MinimumWidth);
    return field;
}

QLabel* makeLabel(const char* name, const char* source, QWidget* parent)
{
    QLabel* const label = makeField<QLabel>(name, parent);
    label->setText(text(source));
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}

QCheckBox* makeCheckBox(const char* name, const char* source, QWidget* parent, const QString& toolTip = QString())
{
    QCheckBox* const box = makeField<QCheckBox>(name, parent);
    box->setText(text(source));
    box->setToolTip(toolTip);
    return box;
}

QKXDoubleSpiner* makeRate(const char* name, QWidget* parent)
{
    QKXDoubleSpiner* const field = makeField<QKXDoubleSpiner>(name, parent);
    field->setSuffix(text(" fps"));
    field->setDecimals(3); // 23.976 comes back as it was
    field->setValue(24.0);
    return field;
}

QComboBox* makeChoice(const char* name, std::initializer_list<const char*> entries, QWidget* parent)
{
    QComboBox* const box = makeField<QComboBox>(name, parent);
    for (const char* entry : entries)
        box->addItem(text(entry));
    return box;
}

QKXSpiner* makeFrame(const char* name, int value, QWidget* parent)
{
    QKXSpiner* const field = makeField<QKXSpiner>(name, parent);
    field->setAlignment(Qt::AlignRight);
    field->setValue(value);
    return field;
}

int entryOf(const QComboBox* box, int index)
{
    return index >= 0 && index < box->count() ? index : 1;
}

QGridLayout* makeGrid(const char* name, QWidget* page)
{
    QGridLayout* const grid = new QGridLayout(page);
    grid->setObjectName(QString::fromLatin1(name));
    return grid;
}
} // namespace

void Ui::kxAnimSettingsFrames::choose(QComboBox* box, int index)
{
    box->setCurrentIndex(entryOf(box, index));
}

int Ui::kxAnimSettingsFrames::chosen(const QComboBox* box, int current)
{
    return box->currentIndex() == entryOf(box, current) ? current : box->currentIndex();
}

double Ui::kxAnimSettingsFrames::rate(const QKXDoubleSpiner* field, double current)
{
    return field->textFromValue(field->value()) == field->textFromValue(current) ? current : field->value();
}

void Ui::kxAnimSettingsFrames::setupFrames(QWidget* form, const QString& verifyToolTip)
{
    gridLayout_3 = makeGrid("gridLayout_3", form);
    setupBase(form, verifyToolTip);
    setupPlayback(form);
    setupTimeline(form);
    frame = named<QFrame>("frame", form);
    frame->setFrameShape(QFrame::NoFrame);
    QSizePolicy policy = frame->sizePolicy();
    policy.setVerticalStretch(1);
    frame->setSizePolicy(policy);
}

void Ui::kxAnimSettingsFrames::setupBase(QWidget* form, const QString& verifyToolTip)
{
    _generalFrame = named<QKXCollapsibleFrame>("_generalFrame", form);
    page = named<QWidget>("page", _generalFrame);
    gridLayout = makeGrid("gridLayout", page);
    textLabel1_2 = makeLabel("textLabel1_2", "Time", page);
    _fps = makeRate("_fps", page);
    _keepFrames = makeCheckBox("_keepFrames", "Keep Keys at Current Frames", page);
    _verifyClips = makeCheckBox("_verifyClips", "Verify Clip Structure", page, verifyToolTip);
    gridLayout->addWidget(textLabel1_2, 0, 0);
    gridLayout->addWidget(_fps, 0, 1);
    gridLayout->addWidget(_keepFrames, 1, 1, 1, 2);
    gridLayout->addWidget(_verifyClips, 2, 1, 1, 2);
    textLabel1_2->setBuddy(_fps);
    _generalFrame->addPage(page, text("Base"));
}

void Ui::kxAnimSettingsFrames::setupPlayback(QWidget* form)
{
    _playbackFrame_2 = named<QKXCollapsibleFrame>("_playbackFrame_2", form);
    page_2 = named<QWidget>("page_2", _playbackFrame_2);
    gridLayout_2 = makeGrid("gridLayout_2", page_2);
    textLabel1_3 = makeLabel("textLabel1_3", "Playback Speed", page_2);
    _speed =
        makeChoice("_speed", {"Every Frame", "Film (24 fps)", "PAL/SECAM (25 fps)", "NTSC (30 fps)", "Custom"}, page_2);
    _customSpeed = makeRate("_customSpeed", page_2);
    _customSpeed->setEnabled(false);
    textLabel1_4 = makeLabel("textLabel1_4", "Playback Range", page_2);
    _range = makeChoice("_range", {"Detail Range", "Full Range"}, page_2);
    textLabel1_9 = makeLabel("textLabel1_9", "Evaluation Context", page_2);
    _context = makeChoice("_context", {"Scene", "Curve Editor"}, page_2);
    _loop = makeCheckBox("_loop", "Loop", page_2);
    _evaluate_subframes = makeCheckBox("_evaluate_subframes", "Evaluate Subframes", page_2,
                                       text("If enabled the animation curves will be evaluated for subframes as well"));
    gridLayout_2->addWidget(textLabel1_3, 0, 0);
    gridLayout_2->addWidget(_speed, 0, 1);
    gridLayout_2->addWidget(_customSpeed, 0, 2);
    gridLayout_2->addWidget(textLabel1_4, 1, 0);
    gridLayout_2->addWidget(_range, 1, 1);
    gridLayout_2->addWidget(textLabel1_9, 2, 0);
    gridLayout_2->addWidget(_context, 2, 1);
    gridLayout_2->addWidget(_loop, 3, 1);
    gridLayout_2->addWidget(_evaluate_subframes, 4, 1);
    textLabel1_3->setBuddy(_speed);
    _customSpeed->setAccessibleName(text("Custom speed"));
    textLabel1_4->setBuddy(_range);
    textLabel1_9->setBuddy(_context);
    _playbackFrame_2->addPage(page_2, text("Playback"));
}

void Ui::kxAnimSettingsFrames::setupTimeline(QWidget* form)
{
    _generalFrame_2 = named<QKXCollapsibleFrame>("_generalFrame_2", form);
    page_3 = named<QWidget>("page_3", _generalFrame_2);
    gridLayout_4 = makeGrid("gridLayout_4", page_3);
    textLabel1_5 = makeLabel("textLabel1_5", "Full Range Start", page_3);
    _fullRangeStart = makeFrame("_fullRangeStart", 0, page_3);
    textLabel1_6 = makeLabel("textLabel1_6", "Full Range End", page_3);
    _fullRangeEnd = makeFrame("_fullRangeEnd", 50, page_3);
    textLabel1_7 = makeLabel("textLabel1_7", "Detailed Range Start", page_3);
    _detailedRangeStart = makeFrame("_detailedRangeStart", 0, page_3);
    textLabel1_8 = makeLabel("textLabel1_8", "Detailed Range End", page_3);
    _detailedRangeEnd = makeFrame("_detailedRangeEnd", 25, page_3);
    int row = 0;
    for (const auto& [label, field] :
         {std::pair(textLabel1_5, _fullRangeStart), std::pair(textLabel1_6, _fullRangeEnd),
          std::pair(textLabel1_7, _detailedRangeStart), std::pair(textLabel1_8, _detailedRangeEnd)})
    {
        label->setBuddy(field);
        gridLayout_4->addWidget(label, row, 0);
        gridLayout_4->addWidget(field, row++, 1);
    }
    _generalFrame_2->addPage(page_3, text("Timeline"));
}
