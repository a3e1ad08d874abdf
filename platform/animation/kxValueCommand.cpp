#include <animation/kxValueCommand.h>

#include <osg/FieldContainerFactory.h>

#include <algorithm>

kxValueCommand::kxValueCommand(const std::vector<kxChannelTarget>& targets, float value)
    : kxUndoCommand(kxUndoString(QStringLiteral("Set Value"), QStringLiteral("Animation"))), _value(value)
{
    for (const kxChannelTarget& target : targets)
        _entries.push_back({target.container->getId(), target.field, target.component, target.value()});
}

bool kxValueCommand::changesAnything() const
{
    return std::any_of(_entries.begin(), _entries.end(), [this](const Entry& entry) { return entry.before != _value; });
}

void kxValueCommand::undo()
{
    write(false);
}

void kxValueCommand::redo()
{
    write(true);
}

void kxValueCommand::write(bool forward) const
{
    for (const Entry& entry : _entries)
    {
        const auto container = osg::FieldContainerFactory::the()->get<osg::FieldContainer>(entry.id);
        if (container == osg::NullFC)
            continue;
        kxChannelTarget{&*container, entry.field, entry.component}.write(forward ? _value : entry.before);
        osg::markChanged(container, entry.field->mask());
    }
}
