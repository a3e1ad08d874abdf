#pragma once

class QCheckBox;
class QComboBox;
class QFrame;
class QGridLayout;
class QLabel;
class QString;
class QWidget;
class QKXCollapsibleFrame;
class QKXDoubleSpiner;
class QKXSpiner;

namespace Ui
{
/// The settings that the preferences page and the quick dialog have in common, in three frames that fold: base
/// settings, playback, timeline ranges.
class kxAnimSettingsFrames
{
public:
    static constexpr int MinimumWidth = 130; ///< of labels and fields

    /// Chooses an entry; an index beyond the list counts as 1, which is what the kernel makes of it.
    static void choose(QComboBox* box, int index);
    /// What the user left in the field. Where the field shows all that it can show of `current`, that is `current`
    /// itself: an index beyond the list, or a rate of more decimals, survives until the field is changed.
    static int chosen(const QComboBox* box, int current);
    static double rate(const QKXDoubleSpiner* field, double current);

    QGridLayout* gridLayout_3;

    QKXCollapsibleFrame* _generalFrame;
    QWidget* page;
    QGridLayout* gridLayout;
    QLabel* textLabel1_2;
    QKXDoubleSpiner* _fps;
    QCheckBox* _keepFrames;
    QCheckBox* _verifyClips;

    QKXCollapsibleFrame* _playbackFrame_2;
    QWidget* page_2;
    QGridLayout* gridLayout_2;
    QLabel* textLabel1_3;
    QComboBox* _speed; // entries in the order of kxPlaybackSpeed
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

    QFrame* frame; // takes the height that is left

protected:
    /// Makes all of it but the places in gridLayout_3, which lies in `form`.
    void setupFrames(QWidget* form, const QString& verifyToolTip);

private:
    void setupBase(QWidget* form, const QString& verifyToolTip);
    void setupPlayback(QWidget* form);
    void setupTimeline(QWidget* form);
};
} // namespace Ui
