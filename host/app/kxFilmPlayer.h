#pragma once

#include "kxRenderSource.h"

#include <QObject>
#include <scenery/kxSceneryStage.h>

/// Plays the timeline or a clip as a film, from in to out by the wall clock; frames that it is too late for are left
/// out. Works without the tools of the plug-in.
class kxFilmPlayer : public QObject
{
    Q_OBJECT
public:
    /// `stage` outlives it.
    explicit kxFilmPlayer(kxSceneryStage* stage, QObject* parent = nullptr);
    ~kxFilmPlayer() override;

    /// Null for the timeline. A clip that is gone counts as the timeline.
    void setClip(const osg::AnimNodePtr& clip);
    osg::AnimNodePtr clip() const;

    /// Both included, in order. What the scene keeps for the clip or the timeline, else the whole extent.
    kxRenderSource::Range range() const { return _range; }
    /// Kept with the scene, as a step; the whole extent is kept as none.
    void setRange(int first, int last);
    /// What is played may have another extent or range.
    void refresh();
    /// Another scene is open: nothing of the one before is played on.
    void startOver() { setClip(clip()); }
    bool isLooping() const { return _isLooping; }
    void setLooping(bool loops);

    /// The last one that was shown, by a clip's ruler.
    double frame() const { return _frame; }
    /// Shows a frame, within in and out.
    void goTo(double frame);

    /// From the present frame on, or from the beginning where it stands at the end.
    void play();
    /// Ends whatever plays, by whomever it was started.
    void stop();
    bool isPlaying() const { return _ticks != 0; }

Q_SIGNALS:
    void frameChanged(double frame);
    /// Something else did.
    void changed();

private:
    /// Of the scene's setting that keeps in and out.
    std::string rangeKey() const;
    kxRenderSource::Range present() const;
    void tick();
    void wrap();
    void show(double frame, bool isAnew);
    void halt();

    kxSceneryStage* _stage;
    osg::UInt32 _clipId = 0;
    kxRenderSource::Range _range;
    bool _isLooping = false;
    double _frame = 0;
    int _ticks = 0; // number of the clock's ticker, 0 for none
    double _startClock = 0, _startFrame = 0;
};
