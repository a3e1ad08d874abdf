#pragma once

#include <kxExport.h>

#include <QByteArray>

#include <functional>
#include <string>

struct kxSceneContent;

/// A content as text that is made to be compared line by line: one value a line, under the paths of things, both
/// sorted.
///
///   [objects/Car/Wheel : Spin/rotation.Y]
///   class = AnimCurve
///   key 0.5 (frame 12) = 90, in linear -0.1 0, out linear 0.1 0
///
/// The same scene gives the same text, however its file numbers containers. Numbers are the shortest that read back as
/// the same. What can be animated always has its line, other values where a new thing has another. The frame that was
/// shown plays no part. Values that animations give at the moment don't either.
namespace kxSceneText
{
/// Hands the text over in pieces; `take` gives false to end it. False where it did.
KX_API bool write(const kxSceneContent& content, const std::function<bool(const QByteArray& piece)>& take);
KX_API QByteArray of(const kxSceneContent& content);
/// Not a part of what a scene is: the frame that was shown last.
KX_API bool isPassing(const std::string& setting);
} // namespace kxSceneText
