#pragma once

#include <QGraphicsSimpleTextItem>
#include <QStaticText>

/// A label of a bar: one line that keeps its size at any zoom.
///
/// Laid out when its text changes and drawn from that layout: thousands of labels are drawn at each step of a drag.
class kxAnimClipLabel : public QGraphicsSimpleTextItem
{
public:
    explicit kxAnimClipLabel(QGraphicsItem* parent);

    void setLine(const QString& text);

    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

private:
    QStaticText _line;
};
