#pragma once

#include <files/text/kxKeyChange.h>
#include <files/text/kxSceneOutline.h>

#include <QJsonValue>

#include <functional>

/// The sentences of a comparison.
namespace kxDifferenceWords
{
/// "'Spin' in clip 'Show'", "'rotation.Y' in 'Spin' of 'Fan'", "Material 'Steel'". Objects and animations have a kind
/// where it is asked for only.
QString subject(const kxSceneOutline& outline, std::size_t index, bool withKind = false);
/// "object", "clip", "channel".
QString kind(const kxSceneOutline& outline, std::size_t index);
/// The thing that a reader looks for: the object of an animation, the clip of a bar.
std::size_t group(const kxSceneOutline& outline, std::size_t index);
/// What holds it, past the node that gathers an object's animations; None for a top.
std::size_t holder(const kxSceneOutline& outline, std::size_t index);
/// "2 objects, 1 block": what stands below and `counts`; of a channel its keys too. Empty for nothing.
QString below(const kxSceneOutline& outline, std::size_t index, const std::function<bool(std::size_t)>& counts);

/// A field of a thing on one side.
struct Side
{
    const kxSceneOutline& outline;
    std::size_t index;
    osg::FieldValue value; ///< no reference
};
/// "starts at frame 24 (was 12)".
QString changed(const osg::FieldContainerType& type, const std::string& field, const Side& before, const Side& after);

QJsonValue json(const osg::FieldValue& value);
} // namespace kxDifferenceWords
