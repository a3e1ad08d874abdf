#include "kxShortcutArbiter.h"

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QShortcutEvent>

kxShortcutArbiter::kxShortcutArbiter(QObject* parent) : QObject(parent)
{
    qApp->installEventFilter(this);
}

void kxShortcutArbiter::addActions(const QList<QAction*>& actions)
{
    _actions += actions;
}

QAction* kxShortcutArbiter::toolAction(const QKeySequence& key)
{
    QWidget* dock = QApplication::focusWidget();
    while (dock != nullptr && qobject_cast<QDockWidget*>(dock) == nullptr)
        dock = dock->parentWidget();
    if (dock == nullptr)
        return nullptr;
    for (const QWidget* const widget : dock->findChildren<QWidget*>())
        for (QAction* const action : widget->actions())
            if (action->isEnabled() && action->shortcuts().contains(key))
                return action;
    return nullptr;
}

bool kxShortcutArbiter::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::Shortcut)
        return QObject::eventFilter(watched, event);
    const auto* const shortcut = static_cast<QShortcutEvent*>(event);
    if (!shortcut->isAmbiguous())
        return QObject::eventFilter(watched, event);
    QAction* chosen = toolAction(shortcut->key());
    for (QAction* const action : qAsConst(_actions))
        if (chosen == nullptr && action->isEnabled() && action->shortcuts().contains(shortcut->key()))
            chosen = action;
    if (chosen == nullptr)
        return QObject::eventFilter(watched, event);
    chosen->trigger();
    return true;
}
