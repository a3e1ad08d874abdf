#pragma once

#include <clipmaker/kxAnimClipInterferenceGUI.h>

#include <QDialog>

/// Asks how to go on where an animation about to be made overlaps one that its object has in the same clip.
///
/// Decides nothing itself: the caller acts on the answer.
class kxAnimClipInterferenceGUIImpl : public QDialog, public Ui::kxAnimClipInterferenceGUI
{
    Q_OBJECT
public:
    explicit kxAnimClipInterferenceGUIImpl(QWidget* parent = nullptr);

    /// Shows the dialog and waits; a `kxWizardInterference::Answer`.
    static int ask(QWidget* parent);

private:
    int choice() const;
};
