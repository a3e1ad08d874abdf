#pragma once

class QGridLayout;
class QHBoxLayout;
class QToolButton;
class QVBoxLayout;
class QWidget;
class QKXSpiner;
class QKXTimeLine;
class QKXTimeLineRange;

namespace Ui
{
/// The form of the timeline bar: ranges above, time line, current frame and transport buttons below.
class kxAnimControlGUI
{
public:
    void setupUi(QWidget* form);

    QGridLayout* gridLayout;
    QHBoxLayout* horizontalLayout_2;
    QKXSpiner* _start;
    QKXSpiner* _rangeStart;
    QKXTimeLineRange* _range;
    QKXSpiner* _rangeEnd;
    QKXSpiner* _end;
    QToolButton* _key;
    QToolButton* _local;
    QVBoxLayout* verticalLayout;
    QToolButton* _close;
    QToolButton* _prefs;
    QHBoxLayout* horizontalLayout_3;
    QKXTimeLine* _timeLine;
    QKXSpiner* _current;
    QHBoxLayout* horizontalLayout;
    QToolButton* _gotoStart;
    QToolButton* _prevKey;
    QToolButton* _playRev;
    QToolButton* _stop;
    QToolButton* _play;
    QToolButton* _nextKey;
    QToolButton* _gotoEnd;

private:
    void setupRanges(QWidget* form);
    void setupSideButtons(QWidget* form);
    void setupTime(QWidget* form);
    void setupTransport(QWidget* form);
    void setupTexts(QWidget* form);
    void setupConnections();
};
} // namespace Ui
