#pragma once

#include <kxPreferences.h>

#include <QPointer>

class QPushButton;
class QTreeWidget;

/// The page of settings that lists the files whose code may run, and takes that back. What is taken back counts at
/// once.
class kxSecurityPreferences : public kxPreferences
{
public:
    kxSecurityPreferences();
    ~kxSecurityPreferences() override;

    void preferencesToGUI() override;

private:
    void makePage();
    void revoke(bool all);
    void updateButtons();

    QPointer<QWidget> _page; // owned, unless a dialog that showed it has taken it along
    QTreeWidget* _files = nullptr;
    QPushButton *_remove = nullptr, *_removeAll = nullptr;
};
