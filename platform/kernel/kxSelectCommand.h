#pragma once

#include <kxCommand.h>

#include <kernel/kxSelection.h>

/// A change of the selection. Changes with nothing between them are one step, of one gesture or of several: looking
/// around leaves a single line in the list of steps.
class KX_API kxSelectCommand : public kxMergingCommand<kxSelectCommand>
{
public:
    kxSelectCommand(kxSelection::Kind kind, std::vector<unsigned int> before, std::vector<unsigned int> after);

    bool canMergeWith(const QUndoCommand* other) const override;
    bool mergeWith(const QUndoCommand* other) override;

private:
    void apply(bool forward) override;

    kxSelection::Kind _kind;
    std::vector<unsigned int> _before; // ids, in the order of selection
    std::vector<unsigned int> _after;
};
