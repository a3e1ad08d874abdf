#pragma once

#include <QDialog>

/// Every key of the application: those of the menus, and those that the tools have listed.
class kxShortcutsDialog : public QDialog
{
    Q_OBJECT
public:
    /// The keys of the actions of `menus` come first, by menu.
    kxShortcutsDialog(const QList<class QMenu*>& menus, QWidget* parent);
};
