#include <curveeditor/NoEditDelegate.h>

QWidget* NoEditDelegate::createEditor(QWidget*, const QStyleOptionViewItem&, const QModelIndex&) const
{
    return nullptr;
}
