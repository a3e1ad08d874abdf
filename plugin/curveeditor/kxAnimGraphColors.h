#pragma once

#include <QColor>

/// Colours of the graph.
namespace kxAnimGraphColors
{
const QColor Background(52, 52, 52, 255);
const QColor Grid(Qt::black); // axes and lines of the grid alike
const QColor Label(Qt::gray);
const QColor Bar(220, 220, 20, 150); // an animation without curves
const QColor RubberBand(Qt::white);
const QColor HintTitle(190, 190, 190);
const QColor Hint(150, 150, 150);
} // namespace kxAnimGraphColors
