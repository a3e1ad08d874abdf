#pragma once

#include <kxCommand.h>
#include <kxNodePtr.h>
#include <osg/Share.h>

#include <vector>

/// Takes animations out of the tree. They live on, with a share that the command holds, until it is dropped.
class kxTrashAnimationUndoCommand : public kxMergingCommand<kxTrashAnimationUndoCommand>
{
public:
    /// An animation node stands for itself, any other node for all animations of its attachment.
    explicit kxTrashAnimationUndoCommand(const std::vector<kxNodePtr>& nodes);

private:
    void apply(bool forward) override;
    void addId(unsigned int id);

    struct Out
    {
        osg::Share<osg::Node> node;
        unsigned int parentId;
        unsigned int position; // among the parent's children
    };
    void takeOut();
    void putBack();

    std::vector<Out> _out;          // in the order in which they went
    std::vector<unsigned int> _ids; // the nodes to take out
};
