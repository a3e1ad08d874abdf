#pragma once

#include <kxUndo.h>

#include <kernel/kxSelection.h>

/// A change of the selection. The changes of one drag are one step.
class kxSelectCommand : public kxUndoCommand
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
