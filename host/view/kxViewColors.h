#pragma once

#include <QColor>

/// Colours of the 3D view beside those of its light, which kxShadeSource.inc holds.
namespace kxViewColor
{
const QColor Selection(244, 133, 22);
const QColor AxisX(226, 84, 78);
const QColor AxisY(126, 190, 70);
const QColor AxisZ(82, 136, 234);
const QColor Hover(255, 214, 92);
const QColor Neutral(222, 226, 232);
const QColor Text(208, 212, 220);
const QColor Hint(150, 155, 165);
const QColor Plate(30, 32, 36, 170); ///< behind text
} // namespace kxViewColor
