#pragma once

#include <QGraphicsRectItem>

/// The hatched extension that shows the passes of a node after the first, right of its bar.
///
/// A child of the bar, whose stretch it takes. Cycles without end reach past the end of the timeline.
class kxAnimClipCyclesItem : public QGraphicsRectItem
{
public:
    explicit kxAnimClipCyclesItem(QGraphicsItem* parent);

    int cycles() const { return _cycles; }
    /// Passes after the first, below 0 without end; shown where there are any.
    void setCycles(int cycles);

    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

private:
    void paintTicks(QPainter* painter, const QRectF& seen, double step, double scale) const;

    int _cycles = 0;
};
