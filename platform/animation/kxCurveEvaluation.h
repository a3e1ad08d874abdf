#pragma once

#include <osg/AnimCurve.h>

/// Values of whole curves, keys and what lies outside them.
namespace kxCurveEvaluation
{
/// The value at `seconds`; always finite, 0 for a curve without keys.
///
/// `cursor` is the index of the segment that was used last, any number at first; it only makes the search short.
/// `tolerance`, in seconds: a time short of a jump by no more than this counts as on it, since keys and times are
/// rounded to float on different ways.
KX_API float value(const osg::AnimCurve& curve, double seconds, osg::UInt32& cursor, double tolerance);
KX_API float value(const osg::AnimCurve& curve, double seconds);
} // namespace kxCurveEvaluation
