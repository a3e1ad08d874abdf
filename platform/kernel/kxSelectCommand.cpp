#include <kernel/kxSelectCommand.h>

kxSelectCommand::kxSelectCommand(kxSelection::Kind kind, std::vector<unsigned int> before,
                                 std::vector<unsigned int> after)
    : kxUndoCommand(kxUndoString(QStringLiteral("Select"), QStringLiteral("Scene"))), _kind(kind),
      _before(std::move(before)), _after(std::move(after))
{
}

void kxSelectCommand::undo()
{
    kxSelection::the().setIds(_kind, _before);
}

void kxSelectCommand::redo()
{
    kxSelection::the().setIds(_kind, _after);
}

int kxSelectCommand::id() const
{
    static const int classId = makeId(typeid(kxSelectCommand));
    return classId;
}

bool kxSelectCommand::canMergeWith(const QUndoCommand* other) const
{
    return kxUndoCommand::canMergeWith(other) && static_cast<const kxSelectCommand*>(other)->_kind == _kind;
}

bool kxSelectCommand::mergeWith(const QUndoCommand* other)
{
    if (!canMergeWith(other))
        return false;
    const auto& next = static_cast<const kxSelectCommand&>(*other);
    setMergeValue(next.mergeValue());
    _after = next._after;
    setObsolete(_before == _after);
    return true;
}
