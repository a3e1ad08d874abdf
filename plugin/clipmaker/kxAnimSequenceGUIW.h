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
    enum TriggerType : unsigned int
    {
        Sequence = 0,
        Viewpoint = 1,
        VariantSet = 2,
        CameraTrack = 3
    };

    explicit kxAnimSequenceGUIW(QWidget* parent = nullptr);

    /// Fills the list with what the scene has of this type, sorted; any other number only empties it.
    void setType(unsigned int type);
    /// Back to how it was made; of another scene nothing is kept.
    void reset();

private:
    static std::set<QString> namesOf(unsigned int type);
};
