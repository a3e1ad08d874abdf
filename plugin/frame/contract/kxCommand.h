#pragma once

#include <kxUndo.h>

/// A command whose two directions are one function.
class kxCommand : public kxUndoCommand
{
public:
    using kxUndoCommand::kxUndoCommand;

    void undo() final { apply(false); }
    void redo() final { apply(true); }

protected:
    /// Does it, or takes it back.
    virtual void apply(bool forward) = 0;
};

/// One that takes those of its class over where they follow it in a gesture: `Self` derives from this and has
/// mergeWith(). Its id is that of its class.
template <class Self>
class kxMergingCommand : public kxCommand
{
public:
    using kxCommand::kxCommand;

    /// The class id, as id() gives it.
    static int commandId()
    {
        static const int classId = makeId(typeid(Self));
        return classId;
    }
    int id() const override { return commandId(); }
};
