#pragma once

class QCheckBox;
class QComboBox;
class QFrame;
class QGridLayout;
class QLabel;
class QWidget;
class QKXCollapsibleFrame;
class QKXDoubleSpiner;
class QKXSpiner;

namespace Ui
{
/// The form of the animation page: base settings, playback, timeline ranges.
class kxAnimPreferencesGUI
{
public:
    void setupUi(QWidget* form);

    QGridLayout* gridLayout_3;

    QKXCollapsibleFrame* _generalFrame;
    QWidget* page;
    QGridLayout* gridLayout;
    QLabel* textLabel1_2;
    QKXDoubleSpiner* _fps;
    QCheckBox* _keepFrames;
    QCheckBox* _verifyClips;
    QCheckBox* _dontShowCreateCurveDialog;

    QKXCollapsibleFrame* _playbackFrame_2;
    QWidget* page_2;
    QGridLayout* gridLayout_2;
    QLabel* textLabel1_3;
    QComboBox* _speed;
    QKXDoubleSpiner* _customSpeed;
    QLabel* textLabel1_4;
    QComboBox* _range;
    QLabel* textLabel1_9;
    QComboBox* _context;
    QCheckBox* _loop;
    QCheckBox* _evaluate_subframes;

    QKXCollapsibleFrame* _generalFrame_2;
    QWidget* page_3;
    QGridLayout* gridLayout_4;
    QLabel* textLabel1_5;
    QKXSpiner* _fullRangeStart;
    QLabel* textLabel1_6;
    QKXSpiner* _fullRangeEnd;
    QLabel* textLabel1_7;
    QKXSpiner* _detailedRangeStart;
    QLabel* textLabel1_8;
    QKXSpiner* _detailedRangeEnd;

    QFrame* frame;

private:
    void setupBase(QWidget* form);
    void setupPlayback(QWidget* form);
    void setupTimeline(QWidget* form);
};
} // namespace Ui
