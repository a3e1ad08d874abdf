#pragma once

#include <QPointF>
#include <QPolygonF>
#include <QRectF>
#include <QString>

/// Arithmetic of the clip timeline: places of bars, snapping, handles, labels.
///
/// Scene units: x in frames; y in pixels, tracks of pitch 50 * dpi from y = 0 downward. A view stretches x alone, by
/// `viewScale` pixels a frame; `itemScale` is the stretch of a bar since it was built, and `scale` their product.
namespace kxClipGeometry
{
/// Frames from end to end of the timeline; cycles without end are drawn this far.
constexpr double TimelineFrames = 200000;
/// Bars that share less than this touch without colliding, in frames: rounding of times to float stays below it.
constexpr double Touch = 0.001;

inline float trackPitch(float dpi)
{
    return 50 * dpi;
}
inline float barHeight(float dpi)
{
    return 49 * dpi;
}

/// One pass of a node on the timeline.
struct Span
{
    double x = 0;     ///< first frame
    double width = 0; ///< frames, at least 0
};

/// The bar of a node that lasts from `startSeconds` to `endSeconds` with all its cycles. Endless cycles, below 0, count
/// as one pass.
///
///   start                              end
///   |------ bar ------|-- cycle --|-- cycle --|
///   x            x + width
Span barSpan(double startSeconds, double endSeconds, int postCycles, double fps);

/// Width of the cycles after a bar of `barWidth`, in the bar's own units; endless ones reach past the timeline's end.
double cyclesWidth(double barWidth, int postCycles, double itemScale);

/// The cycle borders inside a stretch of the cycles that is seen, as multiples of `step`: first, first + stride, ...,
/// last. Borders that fall on one pixel count once; none where `first` > `last`.
///
///   0     step   2 step
///   |-- cycle --|-- cycle --|-- ...      a border is at the end of each cycle but the last
///            | from .. to |
struct Ticks
{
    qint64 first = 1;
    qint64 last = 0;
    qint64 stride = 1;
};
Ticks cycleTicks(double step, double width, double from, double to, double scale);

/// The nearest whole frame, halves away from 0.
double snappedFrame(double x);
/// The top of the nearest track, never above the first.
double snappedTrack(double y, float dpi);
/// The track of a y, cut towards 0; a y beyond any timeline gives the last track there is.
int trackOf(double y, float dpi);

/// How far a node moves, in frames, when its bar goes from `from` to `to`. `node` is where the node starts: where it
/// is under its bar, what rounding took from it in earlier steps is made good, so that a long drag adds up no
/// error.
double movedFrames(double from, double to, double node);
/// The same for y: scene units for the bar, units of an offset (50 a track) for the node and the result. A bar that
/// is on a track takes its node to a whole multiple.
float movedUnits(double from, double to, float node, float dpi);
/// The same for lengths: the factor that takes a node of length `node` along when its bar goes from length `from` to
/// `to`. 0 where there is none: each length has to be finite and above 0.
float stretchFactor(double from, double to, double node);

/// Pixels times dpi; a bar has to be wider for its ends to be grabbed.
constexpr double GrabWidth = 24;
enum class Handle
{
    None,
    Left,
    Right
};
/// Width of a handle in item units.
double handleWidth(double scale, float dpi);
/// Bars narrower than 24 pixels show no handles.
bool handlesFit(double width, double scale);
/// The handle at a point of `bar`, in item units. Of a bar up to 24 * dpi pixels wide neither end can be grabbed.
///
///   +--+---------------+--+
///   |L |               | R|   each 8 * dpi pixels wide; the right one wins where they overlap
///   +--+---------------+--+
Handle handleAt(const QPointF& point, const QRectF& bar, double scale, float dpi);

/// Whether a label fits its bar. `labelWidth` in pixels; `offset`, its distance from the bar's left end, and `barWidth`
/// in frames.
///
///   |<-offset->|<- label ->|<-offset->|
///   +------------ bar ----------------+
bool labelFits(double labelWidth, double viewScale, float offset, double barWidth);
/// "24.00"; never "-0.00".
QString frameText(double frame);
/// "24.00 - 72.00 (48.00)": from, to and length in frames.
QString timeText(double from, double width);

/// Half the width of a marker in frames: 5 * dpi pixels where the view is zoomed in, never wider than 5 * dpi frames.
float markerHalfWidth(float dpi, double viewScale);
/// The outline of a marker with its point at (0, 0).
///
///      /\       y = 0
///     |  |      y = 20 * dpi
///     |__|      y = 49 * dpi
QPolygonF markerShape(float halfWidth, float dpi);
} // namespace kxClipGeometry
