#include <animation/kxRateCommand.h>

#include <utility>

kxRateCommand::kxRateCommand(double before, double after, Change change)
    : kxMergingCommand(kxUndoString(QStringLiteral("Change Frame Rate"), QStringLiteral("Animation"))), _before(before),
      _after(after), _change(std::move(change))
{
}

void kxRateCommand::apply(bool forward)
{
    if (!forward)
        _change(_after, _before);
    else if (!std::exchange(_hasRun, false))
        _change(_before, _after);
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
