#include <trees/kxTreeHint.h>

#include <QAbstractItemView>
#include <QPainter>

void kxPaintTreeHint(const QAbstractItemView& view, const QString& text)
{
    QWidget* const viewport = view.viewport();
    constexpr int margin = 16; // device-independent pixels
    const QRect area = viewport->rect().marginsRemoved(QMargins(margin, margin, margin, margin));
    QPainter painter(viewport);
    painter.setFont(view.font());
    painter.setPen(view.palette().color(QPalette::Disabled, QPalette::WindowText));
    painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, text);
}
