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
    enum Answer
    {
        Cancel = 0,
        Nothing = 1, ///< OK with none of the three chosen
        MoveAnimation = 2,
        DiscardExisting = 3,
        NewClip = 4
    };

    explicit kxAnimClipInterferenceGUIImpl(QWidget* parent = nullptr);

    /// Shows the dialog and waits; one of the answers.
    static int ask(QWidget* parent);

private:
    Answer choice() const;
};
