#include <kxLog.h>
#include <kxUndo.h>

namespace
{
bool canMerge(const QUndoCommand* child, const QUndoCommand* other)
{
    const auto* const command = dynamic_cast<const kxUndoCommand*>(child);
    return command != nullptr && command->id() != -1 && command->id() == other->id() && command->canMergeWith(other);
}
} // namespace

kxMultiCommand::kxMultiCommand(const QString& text, const QString& category, QUndoCommand* parent)
    : kxUndoCommand(kxUndoString(text, category), parent)
{
}

int kxMultiCommand::id() const
{
    static const int classId = makeId(typeid(kxMultiCommand));
    return classId;
}

bool kxMultiCommand::canMergeWith(const QUndoCommand* other) const
{
    if (!kxUndoCommand::canMergeWith(other) || other->text() != text() || childCount() == 0 ||
        other->childCount() != childCount())
        return false;
    for (int i = 0; i < childCount(); ++i)
    {
        if (!canMerge(child(i), other->child(i)))
            return false;
    }
    return true;
}

bool kxMultiCommand::mergeWith(const QUndoCommand* other)
{
    if (!canMergeWith(other))
        return false;
    bool effective = false;
    for (int i = 0; i < childCount(); ++i)
    {
        auto* const own = const_cast<QUndoCommand*>(child(i)); // Qt gives children to read only
        if (!own->mergeWith(other->child(i)))
        {
            if (i == 0)
                return false;
            kxLog::error("A command of the group '%s' could merge, and then did not", qUtf8Printable(text()));
        }
        effective = effective || !own->isObsolete();
    }
    setMergeValue(static_cast<const kxUndoCommand*>(other)->mergeValue());
    setObsolete(!effective);
    return true;
}
