#pragma once

#include <kxAnimRecords.h>

#include <memory>

/// Moves the current frame by a wall clock for one owner at a time.
///
/// Reports by "framePlayerFrameChanged", "framePlayerLoopChanged", "framePlayerUserChanged" and
/// "finishedPlayingGlobal"; the timeline follows by "currentFullFrameChanged".
class KX_API kxFramePlayer
{
public:
    static kxFramePlayer* the();

    /// Starts a playback, ending one that runs. `ownEvaluation`: the owner evaluates at each "framePlayerFrameChanged"
    /// and the scene's frame isn't moved. Params that aren't finite, or a rate that is neither -1.0 nor above 0, are
    /// refused with a warning.
    void start(const kxFramePlaybackParams& params, bool ownEvaluation, void* owner);
    /// Stops the playback of `owner`; null stops any.
    void stop(void* owner);
    bool isPlaying() const;
    void* owner() const;
    const kxFramePlaybackParams& getPlaybackParams() const;

private:
    kxFramePlayer();
    ~kxFramePlayer() = delete;

    struct Private;
    std::unique_ptr<Private> _p;
};
