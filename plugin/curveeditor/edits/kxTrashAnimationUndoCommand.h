#pragma once

#include <kxNodePtr.h>
#include <kxUndo.h>

#include <map>
#include <vector>

/// Takes animations out of the tree. They live on, with a share that the command holds, until it is dropped.
class kxTrashAnimationUndoCommand : public kxUndoCommand
{
public:
    /// An animation node stands for itself, any other node for all animations of its attachment.
    explicit kxTrashAnimationUndoCommand(const std::vector<kxNodePtr>& nodes);
    ~kxTrashAnimationUndoCommand() override;

    /// The class id, as id() gives it.
    static int commandId();

    void undo() override;
    void redo() override;
    int id() const override;

private:
    void addId(unsigned int id);

    std::map<unsigned int, unsigned int> _parents;   // node to parent, of the nodes that are out of the tree
    std::map<unsigned int, unsigned int> _positions; // node to its index among the parent's children
    std::vector<unsigned int> _ids;                  // the nodes to take out
};
