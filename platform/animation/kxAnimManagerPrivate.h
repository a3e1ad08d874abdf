#pragma once

#include <animation/kxAnimEngine.h>
#include <kxAnimManager.h>
#include <osg/Share.h>

#include <optional>

/// What the manager keeps.
struct kxAnimManager::Private
{
    kxAnimEngine engine;

    double fps = 24.0;
    double playbackFps = 24.0;
    double frame = 0;
    // What was sent to the listeners last; none after an unannounced change, so that the next message isn't swallowed.
    std::optional<double> announcedFrame = 0.0;
    std::optional<int> announcedFullFrame = 0;

    int fullRangeStart = 0;
    int fullRangeEnd = 50;
    int detailedRangeStart = 0;
    int detailedRangeEnd = 25;
    bool loopTimeline = true;
    bool evaluateSubframes = true;
    bool keepKeysAtFrame = false;
    int playbackRangeHint = 0;
    int playbackContextHint = 0;
    bool verifyClipStructure = false;
    unsigned int motionBlurObjectId = 0;
    CurveEditorDataCB curveEditorData;

    osg::Share<osg::AnimNode> clipRoot;
    osg::Share<osg::AnimNode> sceneRoot;

    /// Writes the scene's values at the current frame: all, or those that are stale.
    void evaluate(bool all);
    /// The same after an edit: a clip that is shown goes on being shown.
    void evaluateAnew(bool all);
    /// `keepFrames`: all times, which are those of the rate `from`, go along. True where one did.
    bool changeRate(double from, double to, bool keepFrames);
    void announce(bool force);
    void takeBackOthers(const osg::AnimNodePtr& node);
    void forgetAnnounced();
};
