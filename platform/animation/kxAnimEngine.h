#pragma once

#include <animation/kxAnimWatch.h>
#include <animation/kxClipProgram.h>
#include <animation/kxFilm.h>
#include <animation/kxPlaybackQueue.h>
#include <animation/kxRestValues.h>
#include <animation/kxScenePlan.h>
#include <animation/kxTriggers.h>

class kxAnimManager;

/// What evaluates and plays. kxAnimManager owns the one of the scene; its parts reach each other through it.
class KX_API kxAnimEngine
{
public:
    kxAnimEngine();
    ~kxAnimEngine();
    kxAnimEngine(const kxAnimEngine&) = delete;
    kxAnimEngine& operator=(const kxAnimEngine&) = delete;
    static kxAnimEngine& of(kxAnimManager& manager);

    /// Stops what plays and forgets what it knows of the scene, without writing rest values back.
    void clear();

    // The watch dies last, and what ticks first.
    kxAnimWatch watch;
    kxRestValues rest;
    kxScenePlan plan;
    kxClipPrograms programs;
    kxFilm film;
    kxTriggers triggers;
    kxPlaybackQueue queue;
    double sceneFrame = 0; ///< see kxAnimScene::frame()
};
