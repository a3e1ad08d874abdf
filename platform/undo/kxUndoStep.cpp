#include <undo/kxUndoStep.h>

#include <kxLog.h>

#include <undo/kxUndoRecorder.h>

#include <algorithm>

namespace
{
quint64 lastNumber = 0;
}

kxUndoStep::kxUndoStep(Commands commands)
    : QUndoCommand(commands.front()->text()), _commands(std::move(commands)), _number(++lastNumber)
{
}

void kxUndoStep::undo()
{
    const kxUndoRecorder::Running running(false);
    for (auto command = _commands.rbegin(); command != _commands.rend(); ++command)
    {
        if (!run(**command, false))
            return;
    }
    if (_restore)
        _restore();
    dropObsolete();
}

void kxUndoStep::redo()
{
    if (_hasRun)
    {
        _hasRun = false;
        return;
    }
    const kxUndoRecorder::Running running(true);
    for (const auto& command : _commands)
    {
        if (!run(*command, true))
            return;
    }
    dropObsolete();
}

int kxUndoStep::id() const
{
    static const int classId = kxUndoCommand::makeId(typeid(kxUndoStep));
    return classId;
}

bool kxUndoStep::mergeWith(const QUndoCommand* other)
{
    const auto* const next = dynamic_cast<const kxUndoStep*>(other);
    if (next == nullptr || _isClosed)
        return false;
    try
    {
        if (!canMergeWith(*next))
            return false;
        for (std::size_t i = 0; i < _commands.size(); ++i)
        {
            if (_commands[i]->mergeWith(next->_commands[i].get()))
                continue;
            if (i == 0)
                return false;
            kxLog::error("A command of the step '%s' could merge, and then did not", qUtf8Printable(text()));
        }
    }
    catch (...)
    {
        kxLog::error("The step '%s' can't merge: an exception occurred", qUtf8Printable(text()));
        return false;
    }
    dropObsolete();
    if (!_commands.empty())
        setText(_commands.front()->text());
    return true;
}

bool kxUndoStep::canMergeWith(const kxUndoStep& other) const
{
    if (other._commands.size() != _commands.size())
        return false;
    for (std::size_t i = 0; i < _commands.size(); ++i)
    {
        const kxUndoCommand& own = *_commands[i];
        const kxUndoCommand& next = *other._commands[i];
        const bool isSame = own.id() != -1 && own.id() == next.id();
        if (!isSame || !own.canMergeWith(&next) || (_commands.size() > 1 && own.text() != next.text()))
            return false;
    }
    return true;
}

bool kxUndoStep::run(kxUndoCommand& command, bool forward)
{
    if (command.isObsolete())
        return true;
    QString reason = QStringLiteral("unknown exception");
    try
    {
        forward ? command.redo() : command.undo();
        kxUndoRecorder::the().note(command);
        return true;
    }
    catch (const std::exception& e)
    {
        reason = QString::fromUtf8(e.what());
    }
    catch (...)
    {
    }
    kxLog::error("The step '%s' failed and is dropped: %s", qUtf8Printable(text()), qUtf8Printable(reason));
    setObsolete(true);
    kxUndoRecorder::the().settleLater();
    return false;
}

void kxUndoStep::dropObsolete()
{
    _commands.erase(std::remove_if(_commands.begin(), _commands.end(),
                                   [](const std::unique_ptr<kxUndoCommand>& c) { return c->isObsolete(); }),
                    _commands.end());
    if (_commands.empty())
        setObsolete(true);
}

void kxUndoStep::collectIds(const QUndoCommand& command, std::vector<int>& ids)
{
    const bool isGroup = dynamic_cast<const kxMultiCommand*>(&command) != nullptr && command.childCount() > 0;
    if (isGroup)
    {
        for (int i = 0; i < command.childCount(); ++i)
            collectIds(*command.child(i), ids);
    }
    else if (std::find(ids.begin(), ids.end(), command.id()) == ids.end())
    {
        ids.push_back(command.id());
    }
}
