#pragma once

#include "kxGizmo.h"
#include "kxTransformCommand.h"

#include <QMatrix4x4>

#include <array>
#include <vector>

/// What the gizmo does to objects, from the start of a drag to its end.
class kxTransformEdit
{
public:
    /// Of `nodes` those that can be moved: with a place of their own, permitted, with an invertible place above them,
    /// not below another one of the list, and each core once.
    explicit kxTransformEdit(const std::vector<osg::NodePtr>& nodes);

    /// False as soon as one of the objects is gone.
    bool isInScene() const;
    bool isEmpty() const { return _targets.empty(); }
    /// Between the origins of the objects.
    QVector3D pivot() const { return _pivot; }
    /// Of the last object: its own, or the scene's. Unit length, at right angles.
    std::array<QVector3D, 3> axes(bool local) const;

    /// Adds the step that takes the objects from where they were at the start to `change`. Steps of one gesture merge.
    /// False where there is no step: nothing is different, or a number would not be finite.
    bool apply(const kxGizmoChange& change);

private:
    struct Target
    {
        osg::UInt32 coreId;
        kxTransformCommand::Values before;
        kxTransformCommand::Values last; // the rotation from which the next one is unrolled
        QMatrix4x4 above, aboveInverse;
        std::array<QVector3D, 3> axes;
    };
    QVector3D worldPlace(const Target& target) const;
    kxTransformCommand::Values changed(const Target& target, const kxGizmoChange& change) const;

    std::vector<Target> _targets;
    QVector3D _pivot;
};
