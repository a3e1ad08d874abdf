#include <animation/kxRateCommand.h>

#include <utility>

kxRateCommand::kxRateCommand(double before, double after, Apply apply)
    : kxUndoCommand(kxUndoString(QStringLiteral("Change Frame Rate"), QStringLiteral("Animation"))), _before(before),
      _after(after), _apply(std::move(apply))
{
}

void kxRateCommand::undo()
{
    _apply(_after, _before);
}

void kxRateCommand::redo()
{
    if (!std::exchange(_hasRun, false))
        _apply(_before, _after);
}

int kxRateCommand::id() const
{
    static const int classId = makeId(typeid(kxRateCommand));
    return classId;
}

bool kxRateCommand::mergeWith(const QUndoCommand* other)
{
    if (!canMergeWith(other))
        return false;
    const auto& next = static_cast<const kxRateCommand&>(*other);
    _after = next._after;
    setMergeValue(next.mergeValue());
    setObsolete(_before == _after);
    return true;
}
