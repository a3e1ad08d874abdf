#include <undo/kxUndoRecorder.h>

#include <kxController.h>
#include <kxLog.h>
#include <kxMessageNames.h>

#include <undo/kxUndoGesture.h>

#include <QUndoStack>

#include <algorithm>

namespace
{
void setMergeValue(QUndoCommand& command, std::uint64_t value)
{
    if (auto* const own = dynamic_cast<kxUndoCommand*>(&command))
        own->setMergeValue(value);
    for (int i = 0; i < command.childCount(); ++i)
        setMergeValue(const_cast<QUndoCommand&>(*command.child(i)), value); // Qt gives children to read only
}

/// True for a command that says so, and for a group without a child that does anything.
bool isWithoutEffect(const QUndoCommand& command)
{
    if (command.isObsolete() || typeid(command) != typeid(kxMultiCommand))
        return command.isObsolete();
    for (int i = 0; i < command.childCount(); ++i)
        if (!isWithoutEffect(*command.child(i)))
            return false;
    return true;
}

void announce(const char* name, bool added, const std::vector<int>& ids)
{
    for (int id : ids)
    {
        kxMessage message;
        message.set("added", added, true);
        message.set("id", id, true);
        kxController::call(name, message, 0);
    }
}
} // namespace

kxUndoRecorder& kxUndoRecorder::the()
{
    static kxUndoRecorder* const recorder = new kxUndoRecorder; // as long as the stack: the process
    return *recorder;
}

void kxUndoRecorder::setStack(QUndoStack* stack)
{
    _stack = stack;
    _stack->setUndoLimit(Limit);
    connect(_stack, &QUndoStack::indexChanged, this, &kxUndoRecorder::settle);
}

void kxUndoRecorder::add(std::unique_ptr<kxUndoCommand> command)
{
    if (isWithoutEffect(*command))
        return;
    if (_running == 0)
    {
        run(std::move(command));
        return;
    }
    _deferred.push_back(std::move(command));
    settleLater(); // the stack is silent where the running step drops out of it
}

void kxUndoRecorder::settleLater()
{
    QMetaObject::invokeMethod(
        this, [this] { settle(); }, Qt::QueuedConnection);
}

void kxUndoRecorder::run(std::unique_ptr<kxUndoCommand> command)
{
    setMergeValue(*command, kxUndoGesture::the().forCommand());
    openScope();
    kxUndoCommand* const added = command.get();
    _pending.push_back(std::move(command)); // first, so that what its redo() adds comes after it
    try
    {
        added->redo();
        if (added->isObsolete())
            drop(added);
    }
    catch (const std::exception& e)
    {
        kxLog::error("The step '%s' failed: %s", qUtf8Printable(added->text()), e.what());
        drop(added);
    }
    catch (...)
    {
        kxLog::error("The step '%s' failed: unknown exception", qUtf8Printable(added->text()));
        drop(added);
    }
    closeScope();
}

void kxUndoRecorder::drop(const kxUndoCommand* command)
{
    const auto found = std::find_if(_pending.begin(), _pending.end(),
                                    [command](const std::unique_ptr<kxUndoCommand>& c) { return c.get() == command; });
    if (found == _pending.end())
        return;
    const std::unique_ptr<kxUndoCommand> dropped = std::move(*found);
    _pending.erase(found); // before it dies, since a destructor may do anything
}

bool kxUndoRecorder::isActing()
{
    return the()._depth > 0 || the()._running > 0;
}

void kxUndoRecorder::openScope()
{
    if (_depth++ == 0 && _keeper)
        _restore = _keeper();
}

void kxUndoRecorder::closeScope()
{
    if (--_depth == 0 && !_pending.empty())
        push();
}

void kxUndoRecorder::push()
{
    kxUndoStep::Commands commands = std::move(_pending);
    _pending.clear();
    std::vector<int> ids;
    for (const auto& command : commands)
        kxUndoStep::collectIds(*command, ids);
    auto step = std::make_unique<kxUndoStep>(std::move(commands));
    step->setRestore(std::move(_restore));
    _pushing = true;
    _stack->push(step.release());
    _pushing = false;
    if (_watcher)
        _watcher();
    announce(kxMessageName::Redo, true, ids);
}

kxUndoRecorder::Running::Running(bool forward)
{
    ++the()._running;
    the()._forward = forward;
}

kxUndoRecorder::Running::~Running()
{
    --the()._running;
}

void kxUndoRecorder::note(const kxUndoCommand& command)
{
    kxUndoStep::collectIds(command, _forward ? _redone : _undone);
}

void kxUndoRecorder::settle()
{
    if (_running > 0)
        return;
    const std::vector<int> undone = std::move(_undone);
    const std::vector<int> redone = std::move(_redone);
    _undone.clear();
    _redone.clear();
    if (!undone.empty() || !redone.empty())
        kxUndoGesture::the().moveOn(); // what is added after a walk on the stack is no part of what it walked to
    announce(kxMessageName::Undo, false, undone);
    announce(kxMessageName::Redo, false, redone);

    if (_deferred.empty())
        return;
    kxUndoStep::Commands deferred = std::move(_deferred);
    _deferred.clear();
    openScope();
    for (auto& command : deferred)
        run(std::move(command));
    closeScope();
}
