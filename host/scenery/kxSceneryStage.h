#pragma once

#include "kxSequenceRunner.h"

#include <osg/FCPtr.h>

#include <memory>

class kxView3D;

/// Where viewpoints are shown, variants set and sequences run: by the user's hand, by scripts and by the triggers of
/// animations.
///
/// What is set here passes like what an animation shows: it is no step, a saved scene doesn't hold it, and the next
/// frame of the timeline or of a clip takes variants back. While it lives, triggers reach it and the names of what
/// there is are answered.
class kxSceneryStage : public QObject
{
    Q_OBJECT
public:
    /// `view` outlives it.
    explicit kxSceneryStage(kxView3D* view, QObject* parent = nullptr);
    ~kxSceneryStage() override;

    kxView3D* view() const { return _view; }
    kxSequenceRunner& runner() { return _runner; }

    /// Each gives the reason why nothing was done, as part of a sentence; empty for success.
    QString showViewpoint(const std::string& name);
    QString playCameraTrack(const osg::NodePtr& track);
    /// `choice` empty: the next one.
    QString setVariant(const std::string& set, const std::string& choice);
    /// Begins a sequence. False, with a line in the log, where it runs already.
    bool run(const osg::NodePtr& sequence);
    /// Somebody starts to play something: the film is shown, and code that is skipped is told of once more.
    void playBegins();
    /// Plays it beside the timeline.
    void play(const osg::AnimNodePtr& animation);
    /// Shows a clip at a frame of its ruler.
    void showFrame(const osg::AnimNodePtr& clip, double frame);
    /// Plays a clip or a block beside the timeline; `id` becomes its node's.
    QString playClip(const std::string& name, unsigned int& id);

    /// Sequences, camera tracks, and what they play.
    void stopAll();
    bool isPlaying() const;

Q_SIGNALS:
    /// Something began or ended to play, or a sequence came to another step.
    void changed();

private:
    class SceneModule;
    kxSequenceRunner::World world();
    /// Time passed over a trigger of this name. What it shows is kxFilm's; here others are notified, and the user of
    /// what is missing.
    QString passViewpoint(const std::string& name);
    QString passVariant(const std::string& name) const;
    static void viewpointActivated();
    /// Why a step's code isn't run: said once for all that plays together.
    QString skipped();
    /// `set` is the one of this name, or null.
    QString findChoice(const osg::NodePtr& set, const std::string& name, const std::string& choice, int& index) const;

    kxView3D* _view;
    kxSequenceRunner _runner;
    bool _hasSkipped = false;   // code, since something was started to play
    unsigned int _playedId = 0; // the animation that was played by hand last
    std::unique_ptr<SceneModule> _module;
};
