#pragma once

#include "kxViewCamera.h"

#include <osg/Volume.h>

/// The eye of the 3D view: turns around a target like a turntable, pans, comes closer, and frames what it is given.
///
/// Plain arithmetic; knows no window and no clock. Angles in degrees, lengths in scene units.
class kxCameraRig
{
public:
    struct Pose
    {
        QVector3D target;
        float distance = 6.0f;
        float yaw = 32.0f;   ///< around y; 0 looks along -z
        float pitch = 20.0f; ///< above the horizon, -89.5 to 89.5
    };

    static constexpr float FieldOfView = 35.0f;
    static constexpr float LargestPitch = 89.5f;

    const Pose& pose() const { return _pose; }
    /// Ends an animation. Numbers that aren't finite are refused with false.
    bool setPose(const Pose& pose);

    /// Turns by a drag of so many pixels in a picture of this height; half the height is a quarter turn.
    void orbit(float dx, float dy, float pictureHeight);
    /// Moves so that what lies at the target's depth follows the drag.
    void pan(float dx, float dy, float pictureHeight);
    /// One step comes closer by a tenth, a negative one goes back.
    void dolly(float steps);
    /// The pose of a camera of the scene, upright, its target `distance` before it; 0 is the present distance.
    Pose poseOf(const kxViewCamera& camera, float distance = 0) const;
    /// True where the pose of poseOf() sees what the camera sees: it stands upright and is as wide.
    static bool isUpright(const kxViewCamera& camera);

    /// The pose that shows all of `box` from the present direction, with some room around it; the present pose for an
    /// empty box.
    Pose framed(const osg::BoxVolume& box, float aspect) const;
    /// Starts a way to `pose` that advance() walks.
    void animateTo(const Pose& pose);
    /// Walks on; `progress` 0 to 1 counts from the start of the way.
    void advance(float progress);
    bool isAnimating() const { return _animating; }

    /// The view, its planes as close around `scene` as they can be.
    kxViewCamera camera(float aspect, const osg::BoxVolume& scene) const;
    /// Puts both planes of `camera` around `scene` and the floor near the target.
    static void fitPlanes(kxViewCamera& camera, const osg::BoxVolume& scene, float distance);

private:
    Pose _pose, _from, _to;
    bool _animating = false;
};
