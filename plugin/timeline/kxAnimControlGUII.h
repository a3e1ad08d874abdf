#pragma once

#include <frame/kxCallbacks.h>
#include <timeline/kxAnimControlGUI.h>

#include <QWidget>

#include <set>
#include <vector>

class kxFramePlayer;

/// The timeline bar: shows and sets ranges and current frame, and plays. Frames are whole numbers.
///
/// The kernel holds all of it; the bar writes there and follows what the kernel announces.
class kxAnimControlGUII : public QWidget, public Ui::kxAnimControlGUI
{
    Q_OBJECT
public:
    explicit kxAnimControlGUII(QWidget* parent);
    ~kxAnimControlGUII() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

public Q_SLOTS:
    void setRangeStart(int value);
    void setRangeEnd(int value);
    void setStart(int value);
    void setEnd(int value);
    /// Ends the playback and goes back to the start of the detailed range.
    void stop();

private Q_SLOTS:
    void udpateRangeSpiner(int value);
    void updateFrameSpiner(int value);
    void setCurrentFrame(int value);
    void gotoStart();
    void gotoEnd();
    void gotoPrevKey();
    void gotoNextKey();
    void play(bool value);
    void playRev(bool value);
    void pause();
    void startChanged(int value);
    void endChanged(int value);
    void rangeStartChanged(int value);
    void rangeEndChanged(int value);
    void openAnimPrefs();
    void keyAll();
    void changedLocalMode(bool value);

private:
    void connectForm();
    void connectCameraService();
    void setIcons();
    void setPlaying(bool playing, bool reverse);
    void setPlayState(bool playing);
    static void tellPlaying(bool playing);
    /// The playback came to its end, or another owner took the player.
    void playbackEnded();
    void showFrame(int frame);
    void followKernel(const kxMessage& message);
    void showKeys(const kxMessage& message);
    /// The keys of the selected animations, at the frames where they are at the present rate.
    void markKeys();

    static void kernelChanged(kxMessage& message);
    static void rateChanged(kxMessage& message);
    static void animationsSelected(kxMessage& message);
    static void curveEditorMovedFrame(kxMessage& message);
    static void framePlayerUserChanged(kxMessage& message);

    kxInstancePointer<kxAnimControlGUII> _instance;
    kxFramePlayer* _framePlayer;
    bool _isPlayTold = false;               // others were notified that it plays, and not yet that it stopped
    std::vector<unsigned int> _selectedIds; // the selected animations
    std::set<float> _keyFrames;             // of these
    kxCallbacks _callbacks;
};
