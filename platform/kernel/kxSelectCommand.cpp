#include <kernel/kxSelectCommand.h>

#include <osg/FieldContainerFactory.h>

namespace
{
/// "Select Box", "Select 3 Objects": the list of steps says what came to be selected.
QString stepText(kxSelection::Kind kind, const std::vector<unsigned int>& ids)
{
    const auto text = [](const char* words)
    { return kxUndoString(QString::fromLatin1(words), QStringLiteral("Scene")); };
    const bool isNodes = kind == kxSelection::Nodes;
    if (ids.empty())
        return isNodes ? text("Select Nothing") : text("Select No Material");
    if (ids.size() > 1)
        return (isNodes ? text("Select %1 Objects") : text("Select %1 Materials")).arg(ids.size());
    const auto container = osg::living<osg::AttachmentContainer>(ids.front());
    const QString name = container == osg::NullFC ? QString() : QString::fromStdString(container->getNodeName());
    if (name.isEmpty())
        return isNodes ? text("Select Object") : text("Select Material");
    return text("Select %1").arg(name);
}
} // namespace

kxSelectCommand::kxSelectCommand(kxSelection::Kind kind, std::vector<unsigned int> before,
                                 std::vector<unsigned int> after)
    : kxMergingCommand(stepText(kind, after)), _kind(kind), _before(std::move(before)), _after(std::move(after))
{
}

void kxSelectCommand::apply(bool forward)
{
    kxSelection::the().setIds(_kind, forward ? _after : _before);
}

bool kxSelectCommand::canMergeWith(const QUndoCommand* other) const
{
    const auto* const next = dynamic_cast<const kxSelectCommand*>(other);
    return next != nullptr && next->_kind == _kind;
}

bool kxSelectCommand::mergeWith(const QUndoCommand* other)
{
    if (!canMergeWith(other))
        return false;
    const auto& next = static_cast<const kxSelectCommand&>(*other);
    setMergeValue(next.mergeValue());
    setText(next.text());
    _after = next._after;
    setObsolete(_before == _after);
    return true;
}
