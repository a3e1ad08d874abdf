#pragma once

#include <QList>
#include <QObject>

class QAction;
class QKeySequence;
class QShortcutEvent;

/// Decides which action a key means that both the menus and a tool in a dock have: the tool's while its dock has the
/// focus, else the menu's. Without it, Qt runs neither.
class kxShortcutArbiter : public QObject
{
    Q_OBJECT
public:
    explicit kxShortcutArbiter(QObject* parent);

    /// Actions of the menus; not owned, and each lives as long as this.
    void addActions(const QList<QAction*>& actions);
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    static QAction* toolAction(const QKeySequence& key);
    QList<QAction*> _actions;
};
