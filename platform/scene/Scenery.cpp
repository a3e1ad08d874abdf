#include <scene/Scenery.h>

#include <scene/FieldDescription.h>

#include <algorithm>
#include <cmath>

namespace osg
{

namespace
{
constexpr float Closest = 1e-3f;
constexpr float Farthest = 1e7f;
} // namespace

FieldContainerType Viewpoint::_type(
    "Viewpoint", &Camera::_type, nullptr, [] { return FieldContainerPtr(Viewpoint::create()); },
    &Viewpoint::describeFields);
FieldContainerType SceneSequence::_type(
    "SceneSequence", &NodeCore::_type, nullptr, [] { return FieldContainerPtr(SceneSequence::create()); },
    &SceneSequence::describeFields);

ViewpointPtr Viewpoint::create()
{
    return ViewpointPtr(new Viewpoint);
}

void Viewpoint::setTargetDistance(float distance)
{
    if (std::isfinite(distance))
        _targetDistance = std::clamp(distance, Closest, Farthest);
}

void Viewpoint::describeFields(FieldList& fields)
{
    FieldDescription distance(
        "targetDistance", TargetDistanceFieldMask,
        [](const FieldContainer& container)
        { return FieldValue(static_cast<const Viewpoint&>(container)._targetDistance); },
        [](FieldContainer& container, const FieldValue& value)
        {
            const float* const typed = std::get_if<float>(&value);
            if (typed == nullptr || !std::isfinite(*typed))
                return false;
            static_cast<Viewpoint&>(container).setTargetDistance(*typed);
            return true;
        });
    fields.push_back(distance.range(Closest, Farthest));
}

SceneSequencePtr SceneSequence::create()
{
    return SceneSequencePtr(new SceneSequence);
}

void SceneSequence::describeFields(FieldList& fields)
{
    fields.push_back(FieldDescription::member("steps", StepsFieldMask, &SceneSequence::_steps));
}

} // namespace osg
