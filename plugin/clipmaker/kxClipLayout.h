#pragma once

#include <QRectF>
#include <QString>

#include <vector>

/// Arithmetic of the clip timeline's ruler and track column. Scene units as kxClipGeometry has them; a view shows
/// `scale` pixels a frame and one a unit of y.
namespace kxClipLayout
{
// Pixels times dpi.
constexpr double ColumnWidth = 80;
constexpr double StripHeight = 20;
constexpr double ButtonPitch = 20;
constexpr double ButtonSide = 18;

/// The buttons of a track from left to right.
enum class Button
{
    None = -1,
    Unlock,
    Lock,
    Show,
    Hide
};
constexpr int ButtonCount = 4;

struct TrackButton
{
    Button button = Button::None;
    int track = -1; ///< -1 where the point is above or below the row of buttons
};
/// What lies under a point of the scene; `left` is the left end of the track column.
///
///   left
///   |unlock| lock | show | hide |     each 20 * dpi pixels wide, left end inclusive
///   |           Track 3         |
TrackButton trackButtonAt(const QPointF& point, double left, double scale, float dpi);

/// Frames from number to number on the ruler that shows `width` frames.
int tickStep(double width);
/// The multiples of `step` strictly between `left` and `right`, rising.
std::vector<double> ticks(double left, double right, int step);
/// The step of the numbers that are drawn: `step`, or a coarser one where numbers `labelWidth` pixels wide would run
/// together.
int readableStep(int step, double scale, double labelWidth);
/// "24", or "24.50" between frames.
QString frameText(double frame);

/// The part of a clip to zoom to, from its first frame and its length: with room for the track column at the left.
QRectF framed(double start, double length, double top, double height, double viewportWidth, float dpi);
/// `factor`, cut so that `scale` stays within what a timeline can be read at.
double boundedZoom(double scale, double factor);
} // namespace kxClipLayout
