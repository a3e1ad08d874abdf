#pragma once

#include <kxPreferences.h>

#include <QPointer>

class QPushButton;
class QSpinBox;
class QTreeWidget;

/// The page of settings that lists the files whose code may run, and takes that back, which counts at once; and says
/// how much memory the readers of models may take.
class kxSecurityPreferences : public kxPreferences
{
public:
    kxSecurityPreferences();
    ~kxSecurityPreferences() override;

    void preferencesSetDefaults(bool overwrite) override;
    void preferencesApply() override;
    void preferencesToGUI() override;
    void preferencesFromGUI() override;

private:
    void makePage();
    QSpinBox* addGigabytes(const QString& text, const char* name, const QString& tip);
    void listFiles();
    void revoke(bool all);
    void updateButtons();

    QPointer<QWidget> _page; // owned, unless a dialog that showed it has taken it along
    QTreeWidget* _files = nullptr;
    QPushButton *_remove = nullptr, *_removeAll = nullptr;
    QSpinBox *_memory = nullptr, *_pictures = nullptr;
};
