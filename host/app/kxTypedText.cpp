#include "kxTypedText.h"

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QLineEdit>

namespace
{
/// Null where it isn't the field of a row that is being renamed.
QAbstractItemView* viewOf(const QWidget* editor)
{
    const QWidget* const viewport = editor->parentWidget();
    auto* const view = viewport == nullptr ? nullptr : qobject_cast<QAbstractItemView*>(viewport->parentWidget());
    return view != nullptr && view->viewport() == viewport ? view : nullptr;
}
} // namespace

void kxTypedText::finish()
{
    QWidget* const field = QApplication::focusWidget();
    if (field == nullptr)
        return;
    auto* const number = qobject_cast<QAbstractSpinBox*>(field);
    auto* const text = qobject_cast<QLineEdit*>(field);
    if (QAbstractItemView* const view = viewOf(field))
    {
        QMetaObject::invokeMethod(view, "commitData", Q_ARG(QWidget*, field));
        QMetaObject::invokeMethod(view, "closeEditor", Q_ARG(QWidget*, field),
                                  Q_ARG(QAbstractItemDelegate::EndEditHint, QAbstractItemDelegate::NoHint));
    }
    else if (number != nullptr)
        number->interpretText();
    else if (text != nullptr && text->isModified())
        Q_EMIT text->editingFinished();
}
