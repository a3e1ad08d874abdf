#pragma once

#include <QStyledItemDelegate>

/// Edits a column of numbers: nothing else can be entered.
class ValidatorEditDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};
