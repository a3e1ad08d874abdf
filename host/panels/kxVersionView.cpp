#include "kxVersionView.h"

#include "kxEmptyHint.h"
#include "kxVersionModel.h"

#include <QApplication>
#include <QPainter>
#include <QStyledItemDelegate>
#include <kxFramePlayer.h>
#include <widgets/kxColors.h>

#include <algorithm>
#include <utility>

namespace
{
constexpr int Margin = 4;
constexpr int RestMs = 400;

/// A version: its picture, and beside it the title, when it was kept, and what changed.
class Delegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        if (index.parent().isValid())
            return QStyledItemDelegate::paint(painter, option, index);
        QStyleOptionViewItem item = option;
        initStyleOption(&item, index);
        item.text.clear();
        item.icon = QIcon();
        item.widget->style()->drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);

        painter->save();
        QRect picture(option.rect.left() + Margin, option.rect.top() + Margin, kxVersionModel::PictureWidth,
                      kxVersionModel::PictureHeight);
        const QPixmap pixmap = index.data(Qt::DecorationRole).value<QPixmap>();
        painter->fillRect(picture, kxColors::trough());
        if (!pixmap.isNull())
        {
            QRect place(QPoint(), pixmap.size().scaled(picture.size(), Qt::KeepAspectRatio));
            place.moveCenter(picture.center());
            painter->setRenderHint(QPainter::SmoothPixmapTransform);
            painter->drawPixmap(place, pixmap);
        }
        paintTexts(painter, item, option.rect.adjusted(picture.width() + 3 * Margin, Margin, -Margin, -Margin), index);
        painter->restore();
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        if (index.parent().isValid())
            return QStyledItemDelegate::sizeHint(option, index);
        const int texts = 3 * option.fontMetrics.lineSpacing();
        return {kxVersionModel::PictureWidth + 100, std::max(kxVersionModel::PictureHeight, texts) + 2 * Margin};
    }

private:
    static void paintTexts(QPainter* painter, const QStyleOptionViewItem& item, const QRect& place,
                           const QModelIndex& index)
    {
        const bool isSelected = (item.state & QStyle::State_Selected) != 0;
        const int line = item.fontMetrics.lineSpacing();
        QRect row(place.left(), place.top() + (place.height() - 3 * line) / 2, place.width(), line);
        const auto write = [&](const QString& text, const QColor& color, bool isBold)
        {
            QFont font = item.font;
            font.setBold(isBold);
            painter->setFont(font);
            painter->setPen(isSelected ? kxColors::selectionText() : color);
            painter->drawText(row, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                              QFontMetrics(font).elidedText(text, Qt::ElideRight, row.width()));
            row.translate(0, line);
        };
        write(index.data().toString(), kxColors::text(), index.data(kxVersionModel::NamedRole).toBool());
        write(index.data(kxVersionModel::DetailRole).toString(), kxColors::dimText(), false);
        write(index.data(kxVersionModel::SummaryRole).toString(), kxColors::dimText(), false);
    }
};
} // namespace

kxVersionView::kxVersionView(const QString& hint, QWidget* parent) : QTreeView(parent), _model(new kxVersionModel(this))
{
    setModel(_model);
    setItemDelegate(new Delegate(this));
    setHeaderHidden(true);
    setFrameShape(QFrame::NoFrame);
    setIndentation(14);
    setEditTriggers(NoEditTriggers);
    setExpandsOnDoubleClick(false);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setContextMenuPolicy(Qt::ActionsContextMenu);
    new kxEmptyHint(hint, this);
    _rest.setInterval(RestMs);
    connect(&_rest, &QTimer::timeout, this, &kxVersionView::compareOne);
    connect(_model, &QAbstractItemModel::rowsInserted, this,
            [this](const QModelIndex& above)
            {
                if (!above.isValid() && isVisible())
                    _rest.start();
            });
    connect(_model, &QAbstractItemModel::modelReset, this, &kxVersionView::currentVersionChanged);
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this, &kxVersionView::currentVersionChanged);
    connect(this, &QTreeView::activated, this,
            [this](const QModelIndex& index)
            {
                if (QApplication::mouseButtons() != Qt::NoButton)
                    _pressed = _model->number(index);
                else if (const qint64 number = _model->number(index); number != 0)
                    Q_EMIT chosen(number);
            });
}

qint64 kxVersionView::current() const
{
    return _model->number(currentIndex());
}

void kxVersionView::mouseReleaseEvent(QMouseEvent* event)
{
    QTreeView::mouseReleaseEvent(event);
    if (const qint64 number = std::exchange(_pressed, 0); number != 0)
        Q_EMIT chosen(number);
}

void kxVersionView::showEvent(QShowEvent* event)
{
    QTreeView::showEvent(event);
    _model->sync();
    _rest.start();
}

void kxVersionView::hideEvent(QHideEvent* event)
{
    QTreeView::hideEvent(event);
    _rest.stop();
}

void kxVersionView::compareOne()
{
    if (QApplication::mouseButtons() == Qt::NoButton && !kxFramePlayer::the()->isPlaying() && !_model->compareNext())
        _rest.stop();
}
