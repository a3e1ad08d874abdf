#include "kxSceneCommands.h"

#include "kxSceneNotify.h"

#include <kxAnimManager.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxScene.h>

#include <algorithm>
#include <memory>

namespace
{
bool hasAnimations(const osg::NodePtr& root)
{
    bool found = false;
    osg::traverse(root,
                  [&found](const osg::NodePtr& node)
                  {
                      found = node->findAttachment<osg::AnimAttachment>() != osg::NullFC;
                      return found ? osg::Action::Quit : osg::Action::Continue;
                  });
    return found;
}

typedef std::vector<std::pair<std::string, osg::FieldValue>> Values;

/// The stored values that a write of `field` may touch.
Values storedValues(const osg::FieldContainer& container, const osg::FieldDescription& field)
{
    Values values;
    for (const osg::FieldDescription& other : container.getType().fields())
        if (!other.isTransient() && other.mask().intersects(field.mask()))
            values.emplace_back(other.name(), other.value(container));
    return values;
}

void restore(osg::FieldContainer& container, const Values& values)
{
    for (const auto& [name, value] : values)
        container.getType().field(name)->setValue(container, value);
}

std::vector<osg::Share<osg::FieldContainer>> sharesOf(const Values& values)
{
    std::vector<osg::Share<osg::FieldContainer>> shares;
    for (const auto& [name, value] : values)
        if (const auto* const reference = std::get_if<osg::FieldContainerPtr>(&value))
            shares.emplace_back(*reference);
    return shares;
}

bool areEqual(const Values& a, const Values& b)
{
    const auto same = [](const osg::FieldValue& x, const osg::FieldValue& y)
    {
        return std::visit(
            [&y](const auto& value)
            {
                typedef std::decay_t<decltype(value)> T;
                const T* const other = std::get_if<T>(&y);
                if constexpr (std::is_same_v<T, osg::MField<osg::CCPnt, 0>>)
                    return false;
                else
                    return other != nullptr && *other == value;
            },
            x);
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&same](const auto& x, const auto& y) { return same(x.second, y.second); });
}
} // namespace

void kxPlaceNodesCommand::insertNode(const osg::NodePtr& node, const osg::NodePtr& parent, int index)
{
    _moves.push_back({node, {}, {parent.getFieldContainerId(), index}});
}

void kxPlaceNodesCommand::removeNode(const osg::NodePtr& node)
{
    const osg::NodePtr parent = node->getParent();
    _moves.push_back({node, {parent.getFieldContainerId(), -1}, {}});
}

void kxPlaceNodesCommand::moveNode(const osg::NodePtr& node, const osg::NodePtr& parent, int index)
{
    const osg::NodePtr old = node->getParent();
    _moves.push_back({node, {old.getFieldContainerId(), -1}, {parent.getFieldContainerId(), index}});
}

bool kxPlaceNodesCommand::place(const osg::NodePtr& node, Place& from, const Place& to)
{
    if (node == osg::NullFC || node->getParent().getFieldContainerId() != from.parentId)
        return false;
    const osg::NodePtr source = osg::living<osg::Node>(from.parentId), target = osg::living<osg::Node>(to.parentId);
    if (to.parentId != 0 && (target == osg::NullFC || kxNodeUtils::hasParent(target, node)))
        return false;
    if (source != osg::NullFC)
    {
        from.index = source->findChild(node);
        source->subChild(node);
        osg::markChanged(source, osg::Node::ChildrenFieldMask);
    }
    if (target != osg::NullFC)
    {
        target->insertChild(to.index < 0 ? target->getNChildren() : unsigned(to.index), node);
        osg::markChanged(target, osg::Node::ChildrenFieldMask);
    }
    osg::markChanged(node, osg::Node::ParentFieldMask);
    return true;
}

void kxPlaceNodesCommand::apply(bool forward)
{
    if (forward)
    {
        _done.clear();
        for (Move& move : _moves)
            _done.push_back(place(move.node, move.from, move.to));
        kxAnimManager::the()->verifyClipStructure();
    }
    else
        for (std::size_t i = _moves.size(); i-- > 0;)
            if (_done[i])
            {
                Place to = _moves[i].to; // forward it goes to the place that it was given, whatever the index was
                place(_moves[i].node, to, _moves[i].from);
            }
    if (std::any_of(_moves.begin(), _moves.end(), [](const Move& move) { return hasAnimations(move.node); }))
        kxSceneNotify::animationsChanged();
    kxSceneNotify::structureChanged();
}

kxRenameCommand::kxRenameCommand(const osg::AttachmentContainerPtr& container, const std::string& name)
    : kxCommand(kxUndoString(QStringLiteral("Rename %1 to %2"), QStringLiteral("Scene"))
                    .arg(QString::fromStdString(container->getNodeName()), QString::fromStdString(name))),
      _id(container.getFieldContainerId()), _before(container->getNodeName()), _after(name)
{
}

void kxRenameCommand::apply(bool forward)
{
    const auto container = osg::living<osg::AttachmentContainer>(_id);
    if (container == osg::NullFC)
        return;
    container->setNodeName(forward ? _after : _before);
    osg::markChanged(container, osg::AttachmentContainer::NodeNameFieldMask);
    if (container->getType().isDerivedFrom(osg::Material::_type))
        kxSceneNotify::materialsChanged();
    else
        kxSceneNotify::structureChanged();
}

kxSetFieldCommand* kxSetFieldCommand::make(const osg::FieldContainerPtr& container, const std::string& field,
                                           const osg::FieldValue& value, const QString& text)
{
    return make(
        container, field,
        [&value](osg::FieldContainer& target, const osg::FieldDescription& description)
        { return description.setValue(target, value); },
        text);
}

kxSetFieldCommand* kxSetFieldCommand::make(const osg::FieldContainerPtr& container, const std::string& field,
                                           const Writer& write, const QString& text)
{
    const osg::FieldDescription* const description =
        container == osg::NullFC ? nullptr : container->getType().field(field);
    if (description == nullptr)
        return nullptr;
    std::unique_ptr<kxSetFieldCommand> command(new kxSetFieldCommand(container, field, text));
    command->_before = storedValues(*container, *description);
    command->_beforeShares = sharesOf(command->_before);
    const bool written = write(*container, *description);
    command->_after = storedValues(*container, *description);
    command->_afterShares = sharesOf(command->_after);
    restore(*container, command->_before);
    return written && !areEqual(command->_before, command->_after) ? command.release() : nullptr;
}

kxSetFieldCommand::kxSetFieldCommand(const osg::FieldContainerPtr& container, const std::string& field,
                                     const QString& text)
    : kxMergingCommand(text), _id(container.getFieldContainerId()), _field(field)
{
}

bool kxSetFieldCommand::canMergeWith(const QUndoCommand* other) const
{
    constexpr qint64 RowTime = 2000; // milliseconds
    if (kxMergingCommand::canMergeWith(other))
        return true;
    const auto* const next = dynamic_cast<const kxSetFieldCommand*>(other);
    return next != nullptr && _inRow.isValid() && next->_inRow.isValid() && !_inRow.hasExpired(RowTime) &&
           next->_id == _id && next->_field == _field && next->text() == text();
}

bool kxSetFieldCommand::mergeWith(const QUndoCommand* other)
{
    if (!canMergeWith(other))
        return false;
    const auto& next = static_cast<const kxSetFieldCommand&>(*other);
    if (next._id != _id || next._field != _field)
        return false;
    _after = next._after;
    _afterShares = next._afterShares;
    _inRow = next._inRow;
    setMergeValue(next.mergeValue());
    setObsolete(areEqual(_before, _after));
    return true;
}

void kxSetFieldCommand::apply(bool forward)
{
    const osg::FieldContainerPtr container = osg::FieldContainerFactory::the()->getContainer(_id);
    if (container == osg::NullFC)
        return;
    restore(*container, forward ? _after : _before);
    osg::markChanged(container, container->getType().field(_field)->mask());
    kxSceneNotify::fieldChanged(container);
}

kxMaterialListCommand::kxMaterialListCommand(const osg::MaterialPtr& material, int index, bool adds,
                                             const QString& text)
    : kxCommand(text), _material(material), _index(index), _adds(adds)
{
}

kxMaterialListCommand* kxMaterialListCommand::add(const osg::MaterialPtr& material, int index)
{
    return new kxMaterialListCommand(material, index, true,
                                     kxUndoString(QStringLiteral("Add Material"), QStringLiteral("Materials")));
}

kxMaterialListCommand* kxMaterialListCommand::remove(const osg::MaterialPtr& material)
{
    const auto& all = kxScene::the()->materials();
    const int index = int(std::find(all.begin(), all.end(), material) - all.begin());
    return new kxMaterialListCommand(material, index, false,
                                     kxUndoString(QStringLiteral("Delete Material"), QStringLiteral("Materials")));
}

void kxMaterialListCommand::apply(bool forward)
{
    const osg::MaterialPtr material = _material;
    if (forward == _adds)
        kxScene::the()->insertMaterial(_index < 0 ? kxScene::the()->materials().size() : std::size_t(_index), material);
    else
        kxScene::the()->subMaterial(material);
    if (kxAnimManager::the()->getAnimAttachment(material) != osg::NullFC)
        kxSceneNotify::animationsChanged();
    kxSceneNotify::materialsChanged();
    if (forward)
        kxAnimManager::the()->verifyClipStructure();
}
