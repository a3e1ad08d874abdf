#include "kxEyeDelegate.h"

#include "kxSceneTreeModel.h"

#include <kxIconManager.h>
#include <kxPlatform.h>

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>

kxEyeDelegate::kxEyeDelegate(QObject* parent)
    : QStyledItemDelegate(parent), _open(kxIconManager::getIcon(QStringLiteral("Visible"), QString())),
      _closed(kxIconManager::getIcon(QStringLiteral("Hidden"), QString()))
{
}

void kxEyeDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    QStyle* const style = item.widget == nullptr ? QApplication::style() : item.widget->style();
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);

    const bool visible = index.data(kxSceneTreeModel::VisibleRole).toBool();
    const bool touched = (option.state & (QStyle::State_MouseOver | QStyle::State_Selected)) != 0;
    const int side = kxPlatform::getSmallIconSize();
    QRect place(0, 0, side, side);
    place.moveCenter(option.rect.center());
    painter->save();
    // Open eyes stand back, so that the closed ones are what catches the eye.
    painter->setOpacity(!visible || touched ? 1.0 : 0.45);
    (visible ? _open : _closed).paint(painter, place);
    painter->restore();
}

QSize kxEyeDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const int side = kxPlatform::getSmallIconSize() + 10;
    return QSize(side, QStyledItemDelegate::sizeHint(option, index).height());
}

bool kxEyeDelegate::editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem&,
                                const QModelIndex& index)
{
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick)
        return static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton;
    if (event->type() != QEvent::MouseButtonRelease || static_cast<QMouseEvent*>(event)->button() != Qt::LeftButton)
        return false;
    return model->setData(index, !index.data(kxSceneTreeModel::VisibleRole).toBool(), kxSceneTreeModel::VisibleRole);
}
