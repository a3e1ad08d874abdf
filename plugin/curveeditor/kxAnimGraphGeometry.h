#pragma once

#include <kxCurveMath.h>

#include <QPointF>

#include <optional>

/// The rules of dragging in the graph, as numbers. Scene units: x in frames, y in channel values.
namespace kxAnimGraphGeometry
{
/// Where a key that is at `from` goes along a snapped axis when the mouse would take it to `to`: it stops at the
/// whole number that it has just reached, and stays where it is inside one whole-number cell.
///
///     from 2      to 2.7 -> 2     to 3.2 -> 3     to 0.4 -> 1     to 5 -> 5
double snapped(double from, double to);

/// What holds a handle back while it is dragged.
struct HandleLimits
{
    QPointF key;
    std::optional<double> previousX; ///< of the neighbours; none where there is no such key
    std::optional<double> nextX;
    bool isMirrored = false; ///< the other handle follows as a mirror image, and has a neighbour of its own
};

/// The place of a handle, relative to its key, when the mouse is at `mouse`. It crosses neither its key nor the
/// neighbour on its side; where it is mirrored, the other handle crosses none either. y follows the mouse.
///
///     previous     key        next
///        |<---------o--->|     |          the in handle may go as far left as the shorter gap,
///        |          |<-- mirrored out     since its mirror image must not pass `next`
QPointF handlePos(kxCurveMath::Side side, const QPointF& mouse, const HandleLimits& limits);
} // namespace kxAnimGraphGeometry
