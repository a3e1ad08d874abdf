#pragma once

#include <QColor>
#include <QString>

class QPainter;
class QRect;

/// Advice in the middle of a pane that has nothing to show, in the painter's font.
namespace kxPaneHint
{
struct Colors
{
    QColor title;
    QColor text;
    QColor sheet; ///< below the words, which no line of the pane runs through
};

/// A line or two, in the painter's pen.
void paint(QPainter& painter, const QRect& pane, const QString& text);
/// What there is not, in larger letters, and below it what to do. Nothing where the pane is too small for it.
void paint(QPainter& painter, const QRect& pane, const Colors& colors, const QString& title, const QString& text);
} // namespace kxPaneHint
