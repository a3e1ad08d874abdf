#pragma once

#include <QRect>
#include <QWidget>

/// The rubber band of the graph: a transparent sheet above the viewport.
class kxGraphSelectionOverlay : public QWidget
{
    Q_OBJECT
public:
    explicit kxGraphSelectionOverlay(QWidget* parent);

    /// In the coordinates of the view; an invalid rectangle draws nothing.
    const QRect& rectangle() const { return _rectangle; }
    void setRectangle(const QRect& rectangle);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QRect _rectangle; // (0, 0) to (-1, -1) while no band is drawn
};
