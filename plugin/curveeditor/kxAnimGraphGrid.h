#pragma once

#include <QPen>
#include <QRectF>

class QGraphicsView;
class QPainter;

/// Draws grid, axes and tick labels of the graph.
///
/// Lines are placed in scene units; on the screen they are a pixel wide and lie on whole pixels. Labels keep their size
/// at any zoom and stay in sight where their axis isn't.
class kxAnimGraphGrid
{
public:
    /// `rect`: what the viewport shows, in scene units. `view` null: one pixel a unit.
    kxAnimGraphGrid(QPainter* painter, const QRectF& rect, const QGraphicsView* view);

    void draw();

private:
    void drawFrameLine(double x);
    void drawValueLine(double y);
    void drawFrameLabel(double x);
    void drawValueLabel(double y);

    QPainter* _painter;
    QRectF _rect;
    double _m11 = 1; // pixels of a unit
    double _m22 = 1;
    float _stepX = 0;
    float _stepY = 0;
    QPen _axisX;
    QPen _axisY;
    QPen _textX;
    QPen _textY;
    double _dpi;
};
