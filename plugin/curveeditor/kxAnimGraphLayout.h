#pragma once

#include <QPoint>
#include <QRect>
#include <QString>

#include <vector>

/// Arithmetic of the graph: grid, labels, zoom. Scene units: x in frames, y in channel values, y up; m11 > 0 and m22 <
/// 0 are the pixels of a unit.
namespace kxAnimGraphLayout
{
/// Pixels that a line of the grid is aimed at from the next.
constexpr int GridPitch = 75;

/// The step of grid lines that are to be about `distance` apart: whole above 1; below, k / (10 n) where `distance`
/// reaches 1 after n multiplications by 10 and k is what it is then. Always at least 0; 0 means no lines.
float gridStep(float distance);

/// Multiples of `step` but 0, rising: from `low` on and below `high` where they are above 0, above `low` and up to
/// `high` where they are below. None where there would be more of them than anyone can see.
std::vector<double> gridLines(double low, double high, float step);

/// A tick's label, six digits.
QString tickLabel(double value);

/// Height of the frame labels' base line over (-) or under (+) the x axis, in pixels, for what the viewport shows from
/// `top` (its lower edge) on: on the axis; on the lower edge where the axis lies below it; 15 pixels below the upper
/// edge where the axis lies above that.
double frameLabelBaseline(double top, double height, double m22);

/// Where the box of the value labels begins, in pixels right of the y axis, and how the text lies in it.
struct ValueLabel
{
    double x;
    Qt::Alignment alignment;
};
/// On the axis; on the left edge where the axis lies left of it; on the right where it lies near or beyond that.
ValueLabel valueLabel(double left, double width, double m11);

/// One step of the zoom by a drag and by the wheel.
constexpr double DragZoom = 1.05;
constexpr double WheelZoom = 1.15;
/// Whether either axis is as small as it gets.
bool isSmallest(double m11, double m22);

struct Scale
{
    double x;
    double y;
};
/// The factors of one step; an axis that is held keeps 1.
Scale zoomStep(double factor, bool in, bool onlyX, bool onlyY);

/// The rectangle with these corners, whatever the direction of the drag.
QRect between(const QPoint& a, const QPoint& b);
} // namespace kxAnimGraphLayout
