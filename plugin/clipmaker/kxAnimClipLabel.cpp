#include <clipmaker/kxAnimClipLabel.h>

#include <QPainter>

kxAnimClipLabel::kxAnimClipLabel(QGraphicsItem* parent) : QGraphicsSimpleTextItem(parent)
{
    setFlag(ItemIgnoresTransformations);
    _line.setTextFormat(Qt::PlainText);
    _line.setPerformanceHint(QStaticText::AggressiveCaching);
}

void kxAnimClipLabel::setLine(const QString& text)
{
    if (text == _line.text())
        return;
    _line.setText(text);
    setText(text);
}

void kxAnimClipLabel::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    painter->setFont(font());
    painter->setPen(brush().color());
    painter->drawStaticText(boundingRect().topLeft(), _line);
}
