#pragma once

#include <clipmaker/kxAnimSequenceGUI.h>

#include <QDialog>

#include <set>

/// Asks what a trigger fires, or which camera track to add, and at which frame.
///
/// Made once; setType() fills it before each exec(). The caller reads `_names` and `_frame`.
class kxAnimSequenceGUIW : public QDialog, public Ui::kxAnimSequenceGUI
{
    Q_OBJECT
public:
    explicit kxAnimSequenceGUIW(QWidget* parent = nullptr);

    /// Fills the list with what the scene has of this `kxClipTriggers::Type`, sorted; any other number only empties it.
    void setType(unsigned int type);
    /// Back to how it was made; of another scene nothing is kept.
    void reset();

private:
    static std::set<QString> namesOf(unsigned int type);
};
