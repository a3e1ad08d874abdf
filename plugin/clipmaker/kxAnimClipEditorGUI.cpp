#include <clipmaker/kxAnimClipEditorGUI.h>

#include <frame/kxForm.h>

#include <QKXSpiner.h>

#include <QGridLayout>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QSplitter>
#include <QStatusBar>
#include <QToolButton>

namespace
{
using kxForm::named;
constexpr kxForm::Texts text("kxAnimClipEditorGUI");

QLabel* makeLabel(const char* name, const char* source, QWidget* parent)
{
    QLabel* const label = named<QLabel>(name, parent);
    label->setText(text(source));
    return label;
}
} // namespace

void Ui::kxAnimClipEditorGUI::setupUi(QMainWindow* window)
{
    window->setObjectName(QStringLiteral("kxAnimClipEditorGUI"));
    centralwidget = named<QWidget>("centralwidget", window);
    gridLayout_2 = named<QGridLayout>("gridLayout_2", centralwidget);
    _splitter = named<QSplitter>("_splitter", centralwidget);
    _splitter->setOrientation(Qt::Horizontal);
    _clipsFrame = named<QFrame>("_clipsFrame", _splitter);
    _clipsFrame->setFrameShape(QFrame::NoFrame);

    layoutWidget = named<QWidget>("layoutWidget", _splitter);
    verticalLayout_2 = named<QVBoxLayout>("verticalLayout_2", layoutWidget);
    verticalLayout_2->setContentsMargins(0, 0, 0, 0);
    setupStats();
    verticalLayout = named<QVBoxLayout>("verticalLayout");
    verticalLayout->setSpacing(0);
    _viewFrame = named<QFrame>("_viewFrame", layoutWidget);
    _viewFrame->setFrameShape(QFrame::NoFrame);
    setupPlayer();
    verticalLayout->addWidget(_viewFrame, 1);
    verticalLayout->addWidget(frame);
    verticalLayout_2->addWidget(_statsFrame);
    verticalLayout_2->addLayout(verticalLayout, 1);

    gridLayout_2->addWidget(_splitter, 0, 0);
    window->setCentralWidget(centralwidget);
    menubar = named<QMenuBar>("menubar", window);
    menubar->setNativeMenuBar(false);
    window->setMenuBar(menubar);
    statusbar = named<QStatusBar>("statusbar", window);
    statusbar->setSizeGripEnabled(false); // the window is in a dock
    window->setStatusBar(statusbar);
}

void Ui::kxAnimClipEditorGUI::setupStats()
{
    _statsFrame = named<QFrame>("_statsFrame", layoutWidget);
    _statsFrame->setFrameShape(QFrame::NoFrame);
    QPalette palette = _statsFrame->palette();
    palette.setBrush(QPalette::Window, QColor(70, 70, 70, 255)); // a window in the background keeps it
    _statsFrame->setPalette(palette);
    _statsFrame->setAutoFillBackground(true);
    horizontalLayout = named<QHBoxLayout>("horizontalLayout", _statsFrame);
    horizontalLayout->setContentsMargins(6, 6, 6, 6);

    _startLabel = makeLabel("_startLabel", "Start", _statsFrame);
    _start = named<QKXDoubleSpiner>("_start", _statsFrame);
    _start->setDecimals(2);
    _start->setMinimumWidth(90);
    _durationLabel = makeLabel("_durationLabel", "Duration", _statsFrame);
    _duration = named<QKXDoubleSpiner>("_duration", _statsFrame);
    _duration->setDecimals(2);
    _duration->setMinimum(0.0);
    _duration->setMinimumWidth(90);
    _postCyclesLabel = makeLabel("_postCyclesLabel", "Cycles", _statsFrame);
    _postCycles = named<QKXSpiner>("_postCycles", _statsFrame);
    _postCycles->setMinimum(-1);
    _postCycles->setMinimumWidth(90);
    for (QWidget* widget : {static_cast<QWidget*>(_startLabel), static_cast<QWidget*>(_start),
                            static_cast<QWidget*>(_durationLabel), static_cast<QWidget*>(_duration),
                            static_cast<QWidget*>(_postCyclesLabel), static_cast<QWidget*>(_postCycles)})
        horizontalLayout->addWidget(widget);
    horizontalLayout->addStretch(1);
}

void Ui::kxAnimClipEditorGUI::setupPlayer()
{
    frame = named<QFrame>("frame", layoutWidget);
    frame->setFrameShape(QFrame::StyledPanel);
    frame->setStyleSheet(QStringLiteral("background-color: rgb(25, 25, 25);"));
    gridLayout = named<QGridLayout>("gridLayout", frame);
    gridLayout->addItem(new QSpacerItem(140, 15, QSizePolicy::Expanding, QSizePolicy::Minimum), 0, 0);
    _gotoStart = named<QToolButton>("_gotoStart", frame);
    _playRev = named<QToolButton>("_playRev", frame);
    _stop = named<QToolButton>("_stop", frame);
    _play = named<QToolButton>("_play", frame);
    _gotoEnd = named<QToolButton>("_gotoEnd", frame);
    _playRev->setCheckable(true);
    _play->setCheckable(true);
    int column = 1;
    for (QToolButton* button : {_gotoStart, _playRev, _stop, _play, _gotoEnd})
        gridLayout->addWidget(button, 0, column++);
    gridLayout->addItem(new QSpacerItem(140, 15, QSizePolicy::Expanding, QSizePolicy::Minimum), 0, 6);
}
