#include <widgets/kxFieldUndo.h>

#include <QAbstractSpinBox>
#include <QKeyEvent>
#include <QLineEdit>

kxFieldUndo::kxFieldUndo(QAbstractSpinBox* field, QLineEdit* edit) : QObject(field), _edit(edit)
{
    field->installEventFilter(this); // it has the focus, and hands keys to its edit past the edit's filters
    // A field of its own text ("2" for 2.00) may leave the text as it was typed.
    connect(field, &QAbstractSpinBox::editingFinished, this, [this] { _edit->setModified(false); });
}

bool kxFieldUndo::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride && !_edit->isModified())
    {
        auto* const key = static_cast<QKeyEvent*>(event);
        if (key->matches(QKeySequence::Undo) || key->matches(QKeySequence::Redo))
            return true; // not accepted: nobody wants it for itself
    }
    return QObject::eventFilter(watched, event);
}
