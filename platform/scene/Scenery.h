#pragma once

#include <scene/CameraLight.h>

namespace osg
{

/// A place to look from that is kept under a name: the core of a node below the scene's scenery root.
class KX_API Viewpoint : public Camera
{
public:
    static constexpr BitVector TargetDistanceFieldMask = BitVector::bit(40);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static FCPtr<Viewpoint> create();

    /// How far before the eye the point lies that a view turns around, in scene units; above 0.
    float getTargetDistance() const { return _targetDistance; }
    void setTargetDistance(float distance);

protected:
    Viewpoint() = default;

private:
    static void describeFields(FieldList& fields);

    float _targetDistance = 6.0f;
};
typedef FCPtr<Viewpoint> ViewpointPtr;

/// Steps that follow each other: the core of a node below the scene's scenery root, whose name is the sequence's.
class KX_API SceneSequence : public NodeCore
{
public:
    static constexpr BitVector StepsFieldMask = BitVector::bit(16);

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static FCPtr<SceneSequence> create();

    /// Each as kxSequenceStep::toText() writes it. A text that it can't read stays as it is.
    const std::vector<std::string>& getSteps() const { return _steps; }
    void setSteps(const std::vector<std::string>& steps) { _steps = steps; }

protected:
    SceneSequence() = default;

private:
    static void describeFields(FieldList& fields);

    std::vector<std::string> _steps;
};
typedef FCPtr<SceneSequence> SceneSequencePtr;

} // namespace osg
