#pragma once

#include <QPainter>
#include <QPalette>

/// The squares of keys and handles, and curves that have more keys than the screen has columns: painted in pixels, so
/// that they are sharp at any zoom and pixel ratio.
namespace kxAnimGraphMarks
{
/// Side of a square in pixels.
constexpr double Size = 6;

/// Puts the painter into pixels of the widget for as long as it lives: no transform, no smoothing of edges.
class InPixels
{
public:
    explicit InPixels(QPainter& painter);
    ~InPixels();
    InPixels(const InPixels&) = delete;
    InPixels& operator=(const InPixels&) = delete;

    /// From the item to pixels.
    const QTransform& transform() const { return _transform; }

private:
    QPainter& _painter;
    QTransform _transform;
    bool _isSmooth;
};

/// Of the lines from keys to their handles, and of the handles.
const QPen& handlePen();
/// A square around `place`, a point in pixels. Inside InPixels.
void drawSquare(QPainter& painter, const QPointF& place, const QColor& color);
/// The outline that Qt gives a selected item, around drawSquare().
void drawOutline(QPainter& painter, const QPointF& place, const QPalette& palette);

/// Draws a dense line through points in order of x: each pixel column is one bar from its lowest to its highest point.
/// Inside InPixels.
class Columns
{
public:
    Columns(QPainter& painter, const QColor& color);
    ~Columns() { flush(); }
    Columns(const Columns&) = delete;
    Columns& operator=(const Columns&) = delete;

    /// `place` in pixels.
    void add(const QPointF& place);

private:
    void flush();

    QPainter& _painter;
    QColor _color;
    double _ratio; // device pixels in one pixel of the widget
    double _column = 0;
    double _low = 0;
    double _high = 0;
    bool _isEmpty = true;
};
} // namespace kxAnimGraphMarks
