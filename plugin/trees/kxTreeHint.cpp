#include <trees/kxTreeHint.h>

#include <QAbstractItemView>
#include <QPainter>

void kxPaintTreeHint(const QAbstractItemView& view, const QString& text)
{
    QWidget* const viewport = view.viewport();
    const int margin = 2 * view.fontMetrics().averageCharWidth();
    const QRect area = viewport->rect().marginsRemoved(QMargins(margin, margin, margin, margin));
    QPainter painter(viewport);
    painter.setFont(view.font());
    painter.setPen(view.palette().color(QPalette::PlaceholderText));
    painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, text);
}
