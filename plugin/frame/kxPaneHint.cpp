#include <frame/kxPaneHint.h>

#include <QPainter>

namespace
{
// Device-independent pixels.
constexpr int Margin = 16;
constexpr int Space = 12;
} // namespace

void kxPaneHint::paint(QPainter& painter, const QRect& pane, const QString& text)
{
    painter.drawText(pane.adjusted(Margin, Margin, -Margin, -Margin), Qt::AlignCenter | Qt::TextWordWrap, text);
}

void kxPaneHint::paint(QPainter& painter, const QRect& pane, const Colors& colors, const QString& title,
                       const QString& text)
{
    constexpr int Flags = Qt::AlignHCenter | Qt::TextWordWrap;
    const QFont textFont = painter.font();
    QFont titleFont = textFont;
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.25);
    const QRect area = pane.adjusted(2 * Space, 0, -2 * Space, 0);
    QRect head = QFontMetrics(titleFont).boundingRect(area, Flags, title);
    QRect body = QFontMetrics(textFont).boundingRect(area, Flags, text);
    head.moveTop(area.center().y() - (head.height() + Space / 2 + body.height()) / 2);
    body.moveTop(head.bottom() + Space / 2);
    const QRect sheet = (head | body).adjusted(-Space, -Space, Space, Space);
    if (!pane.contains(sheet))
        return;

    painter.setPen(Qt::NoPen);
    painter.setBrush(colors.sheet);
    painter.drawRoundedRect(sheet, 0.5 * Space, 0.5 * Space);
    painter.setFont(titleFont);
    painter.setPen(colors.title);
    painter.drawText(head, Flags, title);
    painter.setFont(textFont);
    painter.setPen(colors.text);
    painter.drawText(body, Flags, text);
}
