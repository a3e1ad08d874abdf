#pragma once

#include <files/gltf/kxExportSources.h>
#include <osg/AnimCurve.h>

#include <array>

/// Takes what drives a channel apart into spans of time in which it is one smooth piece, exactly.
namespace kxExportSpans
{
/// A time as a share of the way from one to another, and the value there.
struct Sample
{
    double part = 0, value = 0;
};
typedef std::array<Sample, 9> Samples;

/// A piece of a curve, or a straight line, between two times of the animation.
struct Span
{
    double start = 0, end = 0;
    const osg::CCPnt* key = nullptr; ///< where the segment of a curve begins that ends at the next key; null for a line
    bool isOutside = false;          ///< a held end: nothing of the animation
    double first = 0, last = 0;      ///< of a line
    double rate = 1, shift = 0;      ///< the keys' time = rate * animation's time + shift
    double offset = 0;               ///< of values

    /// At a time that is held inside the span, which is right at both of its ends.
    double value(double seconds) const;
    bool isStill() const { return key == nullptr && first == last; }
    bool isStraight() const;
    /// Handles at thirds: a cubic of time.
    bool isCubic() const;
    /// Change in a second, of what is straight or a cubic.
    double slope(double seconds) const;
    /// Evenly along the curve between two times, which lie inside of the span up to the rounding of keys; without them.
    void sample(double from, double to, Samples& samples) const;
};

/// From `start` to `end` without gaps, in order. `isStepped`: values hold from key to key. No more than `most` times
/// are looked at, and `most` says how many are left: where it comes down to 0 the last span holds.
std::vector<Span> of(const kxExportSources::Source& source, double start, double end, bool isStepped,
                     std::size_t& most);
/// At one time, also where spans meet: which of them it belongs to.
double valueAt(const kxExportSources::Source& source, double seconds, bool isStepped);
} // namespace kxExportSpans
