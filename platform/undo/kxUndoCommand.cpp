#include <kxUndo.h>

#include <unordered_map>

kxUndoCommand::kxUndoCommand(const QString& text, QUndoCommand* parent) : QUndoCommand(text, parent), _mergeValue(0) {}

kxUndoCommand::~kxUndoCommand() = default;

int kxUndoCommand::id() const
{
    return -1;
}

bool kxUndoCommand::mergeWith(const QUndoCommand*)
{
    return false; // only the class knows how to take another's effect over
}

bool kxUndoCommand::canMergeWith(const QUndoCommand* other) const
{
    const auto* const command = dynamic_cast<const kxUndoCommand*>(other);
    return command != nullptr && typeid(*command) == typeid(*this) && command->id() == id() &&
           command->mergeValue() == _mergeValue;
}

int kxUndoCommand::makeId(std::type_index type)
{
    static auto* const ids = new std::unordered_map<std::type_index, int>;
    return ids->emplace(type, int(ids->size()) + 1).first->second;
}
