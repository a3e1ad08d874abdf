#include <widgets/kxFieldUndo.h>

#include <QAbstractSpinBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSpinBox>

kxFieldUndo::kxFieldUndo(QAbstractSpinBox* field, QLineEdit* edit) : QObject(field), _field(field), _edit(edit)
{
    field->installEventFilter(this); // it has the focus, and hands keys to its edit past the edit's filters
    // A field of its own text ("2" for 2.00) may leave the text as it was typed.
    connect(field, &QAbstractSpinBox::editingFinished, this, [this] { _edit->setModified(false); });
}

/// True where the event was for this.
bool kxFieldUndo::takesBack(QEvent& event)
{
    const bool isKey = event.type() == QEvent::ShortcutOverride || event.type() == QEvent::KeyPress;
    if (!isKey || !_edit->isModified() || static_cast<QKeyEvent&>(event).key() != Qt::Key_Escape)
        return false;
    event.accept(); // nobody's shortcut, and no dialog's Cancel
    if (event.type() == QEvent::ShortcutOverride)
        return true;
    if (auto* const number = qobject_cast<QDoubleSpinBox*>(_field))
        number->setValue(number->value());
    else if (auto* const whole = qobject_cast<QSpinBox*>(_field))
        whole->setValue(whole->value());
    _edit->setModified(false);
    _field->selectAll();
    return true;
}

bool kxFieldUndo::eventFilter(QObject* watched, QEvent* event)
{
    if (takesBack(*event))
        return true;
    if (event->type() == QEvent::ShortcutOverride && !_edit->isModified())
    {
        auto* const key = static_cast<QKeyEvent*>(event);
        if (key->matches(QKeySequence::Undo) || key->matches(QKeySequence::Redo))
            return true; // not accepted: nobody wants it for itself
    }
    return QObject::eventFilter(watched, event);
}
