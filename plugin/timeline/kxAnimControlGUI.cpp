#include <timeline/kxAnimControlGUI.h>

#include <frame/kxForm.h>

#include <QKXSpiner.h>
#include <QKXTimeLine.h>
#include <QKXTimeLineRange.h>
#include <kxPlatform.h>

#include <QGridLayout>
#include <QToolButton>

namespace
{
using kxForm::named;
constexpr kxForm::Texts text("kxAnimControlGUI");

template <class Layout>
Layout* namedLayout(const char* name, int spacing)
{
    Layout* const layout = named<Layout>(name);
    layout->setSpacing(spacing);
    return layout;
}

QKXSpiner* makeField(const char* name, int value, QWidget* parent)
{
    QKXSpiner* const field = named<QKXSpiner>(name, parent);
    field->setMaximumWidth(70);
    field->setValue(value);
    return field;
}

QToolButton* makeButton(const char* name, QWidget* parent)
{
    QToolButton* const button = named<QToolButton>(name, parent);
    button->setText(QStringLiteral("..."));
    return button;
}

/// The tool tip, and what a screen reader says where a widget shows no text of its own.
void describe(QWidget* widget, const char* toolTip, const char* accessibleName)
{
    widget->setToolTip(text(toolTip));
    widget->setAccessibleName(text(accessibleName));
}
} // namespace

void Ui::kxAnimControlGUI::setupUi(QWidget* form)
{
    if (form->objectName().isEmpty())
        form->setObjectName(QStringLiteral("kxAnimControlGUI"));
    form->resize(923, 72);
    gridLayout = named<QGridLayout>("gridLayout", form);
    gridLayout->setContentsMargins(3, 3, 3, 3);
    gridLayout->setHorizontalSpacing(0);
    gridLayout->setVerticalSpacing(3);
    setupRanges(form);
    setupTime(form);
    setupTransport(form);
    setupSideButtons(form);
    gridLayout->addLayout(horizontalLayout_2, 0, 0);
    gridLayout->addLayout(horizontalLayout_3, 1, 0);
    gridLayout->addLayout(verticalLayout, 0, 1, 2, 1);
    setupTexts(form);
    setupConnections();
}

void Ui::kxAnimControlGUI::setupRanges(QWidget* form)
{
    horizontalLayout_2 = namedLayout<QHBoxLayout>("horizontalLayout_2", 6);
    _start = makeField("_start", 0, form);
    _rangeStart = makeField("_rangeStart", 0, form);
    _range = named<QKXTimeLineRange>("_range", form);
    _rangeEnd = makeField("_rangeEnd", 25, form);
    _end = makeField("_end", 50, form);
    _key = makeButton("_key", form);
    _local = makeButton("_local", form);
    _local->setCheckable(true);
    horizontalLayout_2->addWidget(_start);
    horizontalLayout_2->addWidget(_rangeStart);
    horizontalLayout_2->addWidget(_range, 1);
    horizontalLayout_2->addWidget(_rangeEnd);
    horizontalLayout_2->addWidget(_end);
    horizontalLayout_2->addWidget(_key);
    horizontalLayout_2->addWidget(_local);
}

void Ui::kxAnimControlGUI::setupTime(QWidget* form)
{
    horizontalLayout_3 = namedLayout<QHBoxLayout>("horizontalLayout_3", 6);
    _timeLine = named<QKXTimeLine>("_timeLine", form);
    _timeLine->setForegroundColor(QColor(200, 200, 200, 255));
    _timeLine->setBackGradientColor1(QColor(45, 45, 45, 200));
    _timeLine->setBackGradientColor2(QColor(45, 45, 45, 200));
    _current = makeField("_current", 0, form);
    horizontalLayout_3->addWidget(_timeLine, 1);
    horizontalLayout_3->addWidget(_current);
}

void Ui::kxAnimControlGUI::setupTransport(QWidget* form)
{
    horizontalLayout = namedLayout<QHBoxLayout>("horizontalLayout", 3);
    _gotoStart = makeButton("_gotoStart", form);
    _prevKey = makeButton("_prevKey", form);
    _playRev = makeButton("_playRev", form);
    _stop = makeButton("_stop", form);
    _play = makeButton("_play", form);
    _nextKey = makeButton("_nextKey", form);
    _gotoEnd = makeButton("_gotoEnd", form);
    _playRev->setCheckable(true);
    _play->setCheckable(true);
    for (QToolButton* button : {_gotoStart, _prevKey, _playRev, _stop, _play, _nextKey, _gotoEnd})
        horizontalLayout->addWidget(button);
    horizontalLayout_3->addLayout(horizontalLayout);
}

void Ui::kxAnimControlGUI::setupSideButtons(QWidget* form)
{
    verticalLayout = namedLayout<QVBoxLayout>("verticalLayout", 2);
    verticalLayout->setContentsMargins(2, 0, 0, 0);
    _close = named<QToolButton>("_close", form);
    _prefs = named<QToolButton>("_prefs", form);
    const int icon = kxPlatform::getSmallIconSize();
    for (QToolButton* button : {_close, _prefs})
    {
        button->setIconSize(QSize(icon, icon));
        button->setFixedSize(icon + 2, icon + 2);
        verticalLayout->addWidget(button);
    }
    verticalLayout->addItem(new QSpacerItem(16, 40, QSizePolicy::Minimum, QSizePolicy::Expanding));
}

void Ui::kxAnimControlGUI::setupTexts(QWidget* form)
{
    form->setWindowTitle(text("Form"));
    describe(_start, "Start value for full timeline range.", "Full range start");
    describe(_rangeStart, "Start value for detailed timeline range.", "Detailed range start");
    describe(_rangeEnd, "End value for detailed timeline range.", "Detailed range end");
    describe(_end, "End value for full timeline range.", "Full range end");
    describe(_key, "Keys all channels except visible for current selection.", "Key all");
    describe(_local, "Sets the evaluation context to current curves in curve editor.", "Evaluate curve editor");
    describe(_close, "Closes the animation control widget.", "Close");
    describe(_prefs, "Opens animation settings dialog.", "Settings");
    describe(_current, "Shows the current frame.", "Current frame");
    describe(_gotoStart, "Sets current frame to detailed timeline start.", "Go to start");
    describe(_prevKey, "Sets current frame to previous key of selected animation object.", "Previous key");
    describe(_playRev, "Plays timeline detailed range reverse.", "Play reverse");
    describe(_stop, "Stops playing and sets current frame to detailed range start.", "Stop");
    describe(_play, "Plays timeline detailed range.", "Play");
    describe(_nextKey, "Sets current frame to next key of selected animation object.", "Next key");
    describe(_gotoEnd, "Sets current frame to detailed timeline end.", "Go to end");
}

void Ui::kxAnimControlGUI::setupConnections()
{
    QObject::connect(_current, SIGNAL(valueChanged(int)), _timeLine, SLOT(setCurrentFrame(int)));
    QObject::connect(_start, SIGNAL(valueChanged(int)), _range, SLOT(setStartFrame(int)));
    QObject::connect(_end, SIGNAL(valueChanged(int)), _range, SLOT(setEndFrame(int)));
    QObject::connect(_rangeStart, SIGNAL(valueChanged(int)), _range, SLOT(setRangeStartFrame(int)));
    QObject::connect(_rangeEnd, SIGNAL(valueChanged(int)), _range, SLOT(setRangeEndFrame(int)));
    QObject::connect(_range, SIGNAL(rangeStartChanged(int)), _timeLine, SLOT(setStartFrame(int)));
    QObject::connect(_range, SIGNAL(rangeEndChanged(int)), _timeLine, SLOT(setEndFrame(int)));
}
