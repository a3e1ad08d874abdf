#include <trees/kxSearchLine.h>

#include <QKeyEvent>

bool kxSearchLine::event(QEvent* event)
{
    if (event->type() != QEvent::ShortcutOverride || !text().isEmpty())
        return QLineEdit::event(event);
    const auto* const key = static_cast<const QKeyEvent*>(event);
    if (!key->matches(QKeySequence::Undo) && !key->matches(QKeySequence::Redo))
        return QLineEdit::event(event);
    event->ignore();
    return true;
}
