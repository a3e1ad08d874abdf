#pragma once

#include <kxExport.h>

#include <QColor>
#include <QMap>
#include <QString>
#include <QVector>

/// Geometry of frame rulers as plain functions: frames in, device-independent pixels out, and back.
///
/// Frames span all of int, so lengths are kept in double or 64 bits. Nothing here walks over frames or keys: the work
/// is bounded by the width of the ruler in pixels.
namespace kxRulerMath
{
/// Frames from `start` to `start + length` on the pixels from `left` to `left + width`.
///
///     left              left + width
///      |---------------------|
///    start             start + length
struct KX_API Scale
{
    double start = 0;
    double length = 1; // frames, at least 1
    double left = 0;
    double width = 1; // pixels, at least 1

    double pixelsPerFrame() const { return width / length; }
    double end() const { return start + length; }
    double toPixel(double frame) const { return left + (frame - start) * pixelsPerFrame(); }
    double toFrame(double pixel) const { return start + (pixel - left) / pixelsPerFrame(); }
    /// The whole frame next to `pixel`, from the first to the last frame of the scale.
    int frameAt(double pixel) const;
};

/// `end` at or before `start` gives an extent of one frame, `right` at or before `left` a width of one pixel.
KX_API Scale makeScale(int start, int end, double left, double right);

/// The smallest of 1, 2, 5, 10, 20, 50, ... frames that takes at least `minPixels`.
KX_API qint64 majorStep(const Scale& scale, double minPixels);
/// The finest whole division of `major` (tenths, fifths, halves) whose parts take at least `minPixels`; `major` itself
/// where none does.
KX_API qint64 minorStep(const Scale& scale, qint64 major, double minPixels);
/// The last multiple of `step` at or before `frame`. `step` at least 1.
KX_API qint64 tickAtOrBefore(double frame, qint64 step);
/// How many characters the longest label of the scale has.
KX_API int longestLabel(const Scale& scale);

/// `x` rounded to the middle of a device pixel column, so that a line of one device pixel is sharp.
KX_API double snapToDevice(double x, double pixelRatio);

struct Mark
{
    qint64 column; // device pixels
    QColor color;
};
/// Marks between two positions in pixels, at most one for each device pixel column; the first of a column wins.
KX_API QVector<Mark> visibleMarks(const QMap<float, QColor>& keys, const Scale& scale, double from, double to,
                                  double pixelRatio);

/// "0:01.042", "-1:00.000" for frames before 0; empty where `fps` isn't a rate above 0.
KX_API QString timeText(double frame, double fps);

/// A range of frames; `start` < `end` unless it was set otherwise from outside.
struct Range
{
    int start;
    int end;
    bool operator==(const Range& other) const { return start == other.start && end == other.end; }
};
/// `range` with its start or its end at `frame`, kept in `full` and at least one frame long.
KX_API Range withStart(const Range& range, const Range& full, qint64 frame);
KX_API Range withEnd(const Range& range, const Range& full, qint64 frame);
/// `range` moved by `frames` as far as it stays in `full`, its length kept. A range longer than `full` stays as it is.
KX_API Range moved(const Range& range, const Range& full, qint64 frames);

/// Pixels that a range's block covers, at least `minWidth` wide and inside the scale.
struct Block
{
    double left;
    double right;
};
KX_API Block rangeBlock(const Scale& scale, const Range& range, double minWidth);
} // namespace kxRulerMath
