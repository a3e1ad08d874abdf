#pragma once

#include <kxUndo.h>

#include <functional>
#include <memory>
#include <vector>

/// What is on Qt's stack: the commands that were added in one outermost scope, in their order.
///
/// They have run when the step is pushed, so that the redo of the push does nothing. A command that throws is logged
/// and takes its step off the stack.
class KX_API kxUndoStep : public QUndoCommand
{
public:
    typedef std::vector<std::unique_ptr<kxUndoCommand>> Commands;

    /// `commands` isn't empty. The text is that of the first.
    explicit kxUndoStep(Commands commands);

    const Commands& commands() const { return _commands; }

    /// Tells it from all others of the process; later ones have higher numbers.
    quint64 number() const { return _number; }
    /// Nothing joins it any more: something else was done since.
    void close() { _isClosed = true; }

    /// Called at the end of undo(): for what no command holds.
    void setRestore(std::function<void()> restore) { _restore = std::move(restore); }

    void undo() override;
    void redo() override;
    int id() const override;
    /// Command by command: same number, same texts, and every one may.
    bool mergeWith(const QUndoCommand* other) override;

    /// The class ids of what `command` does, each once: its own, or those of its children where it is a group.
    static void collectIds(const QUndoCommand& command, std::vector<int>& ids);

private:
    bool canMergeWith(const kxUndoStep& other) const;
    bool run(kxUndoCommand& command, bool forward);
    /// Takes out commands that have lost their effect; the step goes where nothing is left.
    void dropObsolete();

    Commands _commands;
    const quint64 _number;
    bool _isClosed = false;
    std::function<void()> _restore;
    bool _hasRun = true; // until the first redo
};
