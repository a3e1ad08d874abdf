#pragma once

#include <QIcon>
#include <QStyledItemDelegate>

/// The eye of a row of the scene tree: a click hides the object or shows it.
class kxEyeDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    explicit kxEyeDelegate(QObject* parent);
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;

private:
    QIcon _open, _closed;
};
