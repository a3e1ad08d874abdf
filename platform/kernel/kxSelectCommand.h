#pragma once

#include <kxUndo.h>

#include <kernel/kxSelection.h>

/// A change of the selection. Changes with nothing between them are one step, of one gesture or of several: looking
/// around leaves a single line in the list of steps.
class KX_API kxSelectCommand : public kxUndoCommand
{
public:
    kxSelectCommand(kxSelection::Kind kind, std::vector<unsigned int> before, std::vector<unsigned int> after);

    void undo() override;
    void redo() override;
    int id() const override;
    bool canMergeWith(const QUndoCommand* other) const override;
    bool mergeWith(const QUndoCommand* other) override;

private:
    kxSelection::Kind _kind;
    std::vector<unsigned int> _before; // ids, in the order of selection
    std::vector<unsigned int> _after;
};
