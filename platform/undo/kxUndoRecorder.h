#pragma once

#include <kxUndo.h>

#include <undo/kxUndoStep.h>

#include <QObject>

class QUndoStack;

/// Turns added commands into steps of Qt's stack, and reports each step that ran to the modules.
///
/// A command runs when it is added and waits for the end of the outermost scope; what has gathered there becomes one
/// step. A command that is added by another's redo() joins its step. One that is added while a step is undone or redone
/// waits until that is over, since the stack can't take it then.
class kxUndoRecorder : public QObject
{
public:
    /// Steps the stack holds; the oldest go.
    static constexpr int Limit = 2000;

    static KX_API kxUndoRecorder& the();

    /// For the one stack, while it is empty; not owned.
    void setStack(QUndoStack* stack);

    void add(std::unique_ptr<kxUndoCommand> command);
    /// Whether what is written now belongs to a step.
    static KX_API bool isActing();
    /// Called before the commands of a step run: keeps what none of them holds, and returns what puts it back after
    /// they are undone, or null.
    typedef std::function<std::function<void()>()> Keeper;
    void setKeeper(Keeper keeper) { _keeper = std::move(keeper); }
    /// Called after a step came onto the stack, joined the one on its top, or undid it by joining.
    void setWatcher(std::function<void()> watcher) { _watcher = std::move(watcher); }
    bool isPushing() const { return _pushing; }
    void openScope();
    void closeScope();

    /// Around the commands of a step that is undone or redone.
    class Running
    {
    public:
        explicit Running(bool forward);
        ~Running();
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;
    };
    /// `command` ran inside a Running.
    void note(const kxUndoCommand& command);
    /// Sends what note() gathered at the next turn of the event loop, for a step that the stack drops in silence.
    void settleLater();
    /// True while a step is undone or redone.
    bool isRunning() const { return _running > 0; }

private:
    kxUndoRecorder() = default;
    void run(std::unique_ptr<kxUndoCommand> command);
    void drop(const kxUndoCommand* command);
    void push();
    /// The stack is at rest: the messages of what ran go out, and what had to wait is added.
    void settle();

    QUndoStack* _stack = nullptr;
    int _depth = 0;
    Keeper _keeper;
    std::function<void()> _watcher;
    bool _pushing = false;
    std::function<void()> _restore; // of the step that gathers
    kxUndoStep::Commands _pending;  // have run, wait for the end of the scope
    kxUndoStep::Commands _deferred; // haven't run, wait for the end of an undo or redo
    int _running = 0;
    bool _forward = false;
    std::vector<int> _undone; // class ids, each once
    std::vector<int> _redone;
};
