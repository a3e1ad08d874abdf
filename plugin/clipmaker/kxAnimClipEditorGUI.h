#pragma once

class QFrame;
class QGridLayout;
class QHBoxLayout;
class QLabel;
class QMainWindow;
class QMenuBar;
class QSplitter;
class QStatusBar;
class QToolButton;
class QVBoxLayout;
class QWidget;
class QKXDoubleSpiner;
class QKXSpiner;

namespace Ui
{
/// The form of the clip maker's window: clips, then fields, view and transport buttons.
class kxAnimClipEditorGUI
{
public:
    void setupUi(QMainWindow* window);

    QWidget* centralwidget;
    QGridLayout* gridLayout_2;
    QSplitter* _splitter;
    QFrame* _clipsFrame;
    QWidget* layoutWidget;
    QVBoxLayout* verticalLayout_2;
    QFrame* _statsFrame;
    QHBoxLayout* horizontalLayout;
    QLabel* _startLabel;
    QKXDoubleSpiner* _start;
    QLabel* _durationLabel;
    QKXDoubleSpiner* _duration;
    QLabel* _postCyclesLabel;
    QKXSpiner* _postCycles;
    QVBoxLayout* verticalLayout;
    QFrame* _viewFrame;
    QFrame* frame;
    QGridLayout* gridLayout;
    QToolButton* _gotoStart;
    QToolButton* _playRev;
    QToolButton* _stop;
    QToolButton* _play;
    QToolButton* _gotoEnd;
    QMenuBar* menubar;
    QStatusBar* statusbar;

private:
    void setupStats();
    void setupPlayer();
};
} // namespace Ui
