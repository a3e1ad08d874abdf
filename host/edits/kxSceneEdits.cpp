#include "kxSceneEdits.h"

#include "kxNodeCopy.h"
#include "kxSceneCommands.h"

#include "kxFieldLook.h"
#include "kxSceneryEdits.h"
#include <QObject>
#include <kxLog.h>
#include <kxScenegraph.h>
#include <osg/AnimCurve.h>
#include <scene/UberMaterial.h>
#include <scene/kxNodeNames.h>
#include <scene/kxScene.h>

#include <algorithm>
#include <set>

namespace
{
typedef kxSceneEdits::Nodes Nodes;

QString stepText(const char* text)
{
    return kxUndoString(QString::fromLatin1(text), QStringLiteral("Scene"));
}

/// `act` with its "%1" for what is acted on: "Delete Box", "Delete 3 Objects".
QString stepText(const char* act, const Nodes& nodes)
{
    return stepText(act).arg(nodes.size() == 1 ? QString::fromStdString(kxNodeUtils::getName(nodes.front()))
                                               : stepText("%1 Objects").arg(nodes.size()));
}

/// ".X" for a component of a field that has several.
QString axisText(const std::vector<osg::FieldContainerPtr>& containers, const std::string& field, unsigned component)
{
    const osg::FieldDescription* const known =
        containers.empty() ? nullptr : containers.front()->getType().field(field);
    return known == nullptr || known->components() < 2 || component >= known->components()
               ? QString()
               : QLatin1Char('.') + QString::fromStdString(known->suffixes()[component]);
}

/// "Change Roughness of Steel", "Change Position.X of Box", "Change Intensity of 2 Objects".
QString changeText(const std::vector<osg::FieldContainerPtr>& containers, const std::string& field,
                   const QString& axis = QString())
{
    const QString label = kxFieldLook::of(field).label;
    const QString what = (label.isEmpty() ? kxFieldLook::words(field) : label) + axis;
    if (containers.size() != 1)
        return stepText("Change %1 of %2 Objects").arg(what).arg(containers.size());
    const osg::NodeCorePtr core = osg::NodeCorePtr::dcast(containers.front());
    const osg::AttachmentContainerPtr named = core != osg::NullFC && !core->getParents().empty()
                                                  ? osg::AttachmentContainerPtr(core->getParents().front())
                                                  : osg::AttachmentContainerPtr::dcast(containers.front());
    // A curve's node is called as its channel; the list of steps names the object.
    const bool isCurve = osg::AnimCurvePtr::dcast(core) != osg::NullFC;
    const std::string name = named == osg::NullFC || isCurve ? std::string() : named->getNodeName();
    return name.empty() ? stepText("Change %1").arg(what)
                        : stepText("Change %1 of %2").arg(what, QString::fromStdString(name));
}

/// A name that no other object of the scene bears, nor one of `newcomers`, which are to join it.
void nameFreely(const osg::NodePtr& node, const std::string& wanted, const std::set<osg::UInt32>& newcomers = {})
{
    const auto isTaken = [&newcomers](const osg::AttachmentContainerPtr& other)
    {
        return newcomers.count(other->getId()) != 0 ||
               kxNodeUtils::hasParent(osg::NodePtr::dcast(other), kxScene::the()->root());
    };
    node->setNodeName(kxNodeNames::the()->free(wanted, isTaken));
    markChanged(node, osg::AttachmentContainer::NodeNameFieldMask);
}

/// The same for a material.
void nameFreely(const osg::MaterialPtr& material, const std::string& wanted)
{
    const auto isTaken = [](const osg::AttachmentContainerPtr& other)
    { return osg::MaterialPtr::dcast(other) != osg::NullFC && kxScene::the()->contains(other); };
    material->setNodeName(kxNodeNames::the()->free(wanted, isTaken));
    markChanged(material, osg::AttachmentContainer::NodeNameFieldMask);
}

/// "Wheel_2" is a copy of "Wheel".
std::string stem(const std::string& name)
{
    const std::size_t end = name.find_last_not_of("0123456789");
    return end != std::string::npos && end > 0 && end + 1 < name.size() && name[end] == '_' ? name.substr(0, end)
                                                                                            : name;
}

void add(kxUndoCommand* command)
{
    if (command != nullptr)
        kxUndoStack::get(0).add(command);
}

void addInRow(kxSetFieldCommand* command)
{
    if (command != nullptr)
        command->joinInRow();
    add(command);
}

/// Keeps a node's place in the world when its parent changes: written as steps on the fields.
void keepWorldPlace(const osg::NodePtr& node, const QMatrix4x4& world)
{
    const osg::TransformPtr core = osg::TransformPtr::dcast(node->getCore());
    // A shared core places its other nodes too: they stay.
    if (core == osg::NullFC || core->getParents().size() > 1)
        return;
    bool invertible = false;
    const QMatrix4x4 toParent = kxSceneMath::worldMatrix(node->getParent()).inverted(&invertible);
    if (!invertible)
        return;
    const osg::Vec3f translation = core->getTranslation(), rotation = core->getEulerRotation(),
                     scale = core->getScale();
    if (!kxSceneMath::setLocalMatrix(node, toParent * world))
        return;
    const osg::Vec3f newTranslation = core->getTranslation(), newRotation = core->getEulerRotation(),
                     newScale = core->getScale();
    core->setTranslation(translation);
    core->setEulerRotation(rotation);
    core->setScale(scale);
    add(kxSetFieldCommand::make(core, "translation", osg::FieldValue(newTranslation), stepText("Move")));
    add(kxSetFieldCommand::make(core, "eulerRotation", osg::FieldValue(newRotation), stepText("Move")));
    add(kxSetFieldCommand::make(core, "scale", osg::FieldValue(newScale), stepText("Move")));
}

/// Whether any animation, also one that is off or plays in clips, gives the node its place.
bool isPlaceAnimated(const osg::NodePtr& node)
{
    const auto isPlace = [](const osg::AnimCurvePtr& curve)
    {
        const auto& fields = osg::Transform::_type.fields();
        return !curve->isEmpty() && std::any_of(fields.begin(), fields.end(),
                                                [&curve](const osg::FieldDescription& field) {
                                                    return field.mask().intersects(osg::Transform::MatrixFieldMask) &&
                                                           field.channel() == curve->getChannelName();
                                                });
    };
    std::vector<osg::AnimCurvePtr> curves;
    for (const osg::FieldContainerPtr& owner : {osg::FieldContainerPtr(node), osg::FieldContainerPtr(node->getCore())})
        if (const osg::AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(owner))
            kxAnimManager::the()->getAnimCurves(attachment->getAnimationRoot(), curves, true, false, true);
    return osg::TransformPtr::dcast(node->getCore()) != osg::NullFC &&
           std::any_of(curves.begin(), curves.end(), isPlace);
}

/// Where the numbers of an animated node, and those of its animation, would mean another place below `parent`: a group
/// to stand there in its stead, which has the place of the node's parent. Else null.
osg::NodePtr carrierFor(const osg::NodePtr& node, const osg::NodePtr& parent)
{
    const osg::NodePtr old = node->getParent();
    if (old == parent || !isPlaceAnimated(node))
        return osg::NodePtr();
    const QMatrix4x4 before = kxSceneMath::worldMatrix(old), after = kxSceneMath::worldMatrix(parent);
    if (qFuzzyCompare(before, after))
        return osg::NodePtr();
    bool invertible = false;
    const QMatrix4x4 place = after.inverted(&invertible) * before;
    const osg::NodePtr group =
        kxSceneEdits::makeNode(osg::Transform::create(), QString::fromStdString(node->getNodeName()));
    if (invertible && kxSceneMath::setLocalMatrix(group, place))
        return group;
    const osg::Share<osg::Node> dropped(group);
    kxLog::warning(QObject::tr("The animation of '%1' was made for its old parent, and moves it elsewhere now.")
                       .arg(QString::fromStdString(node->getNodeName())));
    return osg::NodePtr();
}

/// Objects are below objects, not below viewpoints or what else the scene holds.
bool takesObjects(const osg::NodePtr& parent)
{
    return kxSceneEdits::isObject(parent) || parent == kxScene::the()->root();
}

/// The clips in which the animation has bars, quoted; empty for none.
QString clipsWith(const osg::AnimNodePtr& animation)
{
    const osg::NodePtr root = kxAnimManager::the()->clipStructureRoot();
    QStringList names;
    if (animation->getCore() == osg::NullFC)
        return QString();
    for (osg::NodePtr node : animation->getCore()->getParents())
    {
        if (node == root || !kxNodeUtils::hasParent(node, root))
            continue;
        while (node->getParent() != root)
            node = node->getParent();
        names << QStringLiteral("\"%1\"").arg(QString::fromStdString(node->getNodeName()));
    }
    names.removeDuplicates();
    return names.join(QStringLiteral(", "));
}

/// Names the animations of `root` and below that clips go on using without their object.
void warnOfSharedAnimations(const osg::NodePtr& root)
{
    osg::traverse(root,
                  [](const osg::NodePtr& node)
                  {
                      const auto attachment = node->findAttachment<osg::AnimAttachment>();
                      if (attachment == osg::NullFC)
                          return osg::Action::Continue;
                      std::vector<osg::AnimNodePtr> animations;
                      attachment->getTopLevelAnimations(animations, true);
                      for (const osg::AnimNodePtr& animation : animations)
                          if (const QString clips = clipsWith(animation); !clips.isEmpty())
                              kxLog::warning(QObject::tr("\"%1\" was deleted. The bar \"%2\" in %3 now moves nothing.")
                                                 .arg(QString::fromStdString(node->getNodeName()),
                                                      QString::fromStdString(animation->getNodeName()), clips));
                      return osg::Action::Continue;
                  });
}
} // namespace

kxSceneEdits::Nodes kxSceneEdits::allNodes()
{
    Nodes nodes;
    for (const osg::NodePtr& child : kxScene::the()->root()->getChildren())
        osg::traverse(child,
                      [&nodes](const osg::NodePtr& node)
                      {
                          nodes.push_back(node);
                          return osg::Action::Continue;
                      });
    return nodes;
}

bool kxSceneEdits::isObject(const osg::NodePtr& node)
{
    const osg::NodePtr root = kxScene::the()->root();
    return node != root && kxNodeUtils::hasParent(node, root);
}

kxSceneEdits::Nodes kxSceneEdits::topmost(const Nodes& nodes)
{
    std::set<unsigned int> wanted;
    for (const osg::NodePtr& node : nodes)
        if (node != osg::NullFC)
            wanted.insert(node.getFieldContainerId());
    Nodes result;
    osg::traverse(kxScene::the()->root(),
                  [&wanted, &result](const osg::NodePtr& node)
                  {
                      if (node == kxScene::the()->root() || wanted.count(node.getFieldContainerId()) == 0)
                          return osg::Action::Continue;
                      result.push_back(node);
                      return osg::Action::Skip;
                  });
    return result;
}

osg::NodePtr kxSceneEdits::makeNode(const osg::NodeCorePtr& core, const QString& name)
{
    const osg::NodePtr node = osg::Node::create();
    node->setCore(core);
    node->setNodeName(name.toStdString());
    return node;
}

bool kxSceneEdits::addNode(const osg::NodePtr& node, const osg::NodePtr& parent, const QString& text)
{
    const osg::NodePtr target = parent == osg::NullFC ? kxScene::the()->root() : parent;
    const osg::Share<osg::Node> share(node);
    if (node == osg::NullFC || !takesObjects(target) || !kxNodePermission::allows(target, kxScenegraphTypes::AddChild))
        return false;
    if (!target->addChild(node))
        return false;       // it would stand too deep
    target->subChild(node); // the command puts it there
    nameFreely(node, node->getNodeName());
    const kxScopedUndo scope(true);
    auto* const command = new kxPlaceNodesCommand(kxUndoString(text, QStringLiteral("Scene")));
    command->insertNode(node, target, -1);
    add(command);
    adoptMaterial(node);
    kxSelectionManager::selectNode(node);
    return true;
}

bool kxSceneEdits::groupNodes(const Nodes& nodes)
{
    const Nodes top = topmost(nodes);
    if (top.empty())
        return false;
    const osg::NodePtr parent = top.front()->getParent();
    const osg::NodePtr group = makeNode(osg::Transform::create(), QObject::tr("Group"));
    nameFreely(group, group->getNodeName());
    const kxScopedUndo scope(true);
    auto* const command = new kxPlaceNodesCommand(stepText("Group %1", top));
    command->insertNode(group, parent, parent->findChild(top.front()));
    add(command);
    moveNodes(top, group, -1);
    kxSelectionManager::selectNode(group);
    return true;
}

int kxSceneEdits::deleteNodes(const Nodes& nodes)
{
    Nodes doomed;
    for (const osg::NodePtr& node : topmost(nodes))
        if (kxNodePermission::allows(node, kxScenegraphTypes::Delete))
            doomed.push_back(node);
    if (doomed.empty())
        return 0;
    const kxScopedUndo scope(true);
    auto* const command = new kxPlaceNodesCommand(stepText("Delete %1", doomed));
    for (const osg::NodePtr& node : doomed)
    {
        warnOfSharedAnimations(node);
        command->removeNode(node);
    }
    add(command);
    kxSelectionManager::selectNodes({});
    return int(doomed.size());
}

bool kxSceneEdits::duplicateNodes(const Nodes& nodes)
{
    const Nodes top = topmost(nodes);
    if (top.empty())
        return false;
    Nodes copies;
    std::set<osg::UInt32> ids;
    auto* const command = new kxPlaceNodesCommand(stepText("Duplicate %1", top));
    for (const osg::NodePtr& node : top)
    {
        const osg::NodePtr copy = kxNodeCopy::copyTree(node);
        nameFreely(copy, stem(node->getNodeName()), ids);
        ids.insert(copy->getId());
        command->insertNode(copy, node->getParent(), -1);
        copies.push_back(copy);
    }
    const kxScopedUndo scope(true);
    add(command);
    kxSelectionManager::selectNodes(copies);
    return true;
}

bool kxSceneEdits::canMoveNodes(const Nodes& nodes, const osg::NodePtr& parent)
{
    if (!takesObjects(parent) || nodes.empty() || !kxNodePermission::allows(parent, kxScenegraphTypes::AddChild))
        return false;
    return std::all_of(nodes.begin(), nodes.end(),
                       [&parent](const osg::NodePtr& node)
                       {
                           return node != osg::NullFC && kxNodePermission::allows(node, kxScenegraphTypes::Move) &&
                                  !kxNodeUtils::hasParent(parent, node);
                       });
}

bool kxSceneEdits::moveNodes(const Nodes& nodes, const osg::NodePtr& parent, int index)
{
    const Nodes top = topmost(nodes);
    if (!canMoveNodes(top, parent))
        return false;
    const osg::NodePtr anchor = index < 0 ? osg::NodePtr() : parent->getChild(unsigned(index));
    // The child before which the nodes go may be one of them: then the next that stays.
    osg::NodePtr before = anchor;
    while (before != osg::NullFC && std::find(top.begin(), top.end(), before) != top.end())
        before = parent->getChild(unsigned(parent->findChild(before) + 1));

    std::vector<QMatrix4x4> worlds;
    Nodes carriers; // beside `top`: null for what goes by itself
    for (const osg::NodePtr& node : top)
    {
        worlds.push_back(kxSceneMath::worldMatrix(node));
        carriers.push_back(carrierFor(node, parent));
    }
    const auto goesOut = [&parent](const osg::NodePtr& node) { return node->getParent() == parent; };
    const int own = int(std::count_if(top.begin(), top.end(), goesOut));
    int at = -1;
    if (before != osg::NullFC)
    {
        const auto& children = parent->getChildren();
        const auto end = std::find(children.begin(), children.end(), before);
        at = int(std::count_if(children.begin(), end,
                               [&top](const osg::NodePtr& child)
                               { return std::find(top.begin(), top.end(), child) == top.end(); }));
    }
    const kxScopedUndo scope(true);
    auto* const command = new kxPlaceNodesCommand(stepText("Move %1 in Tree", top));
    // Own children leave first, so that the places count without them.
    if (own > 0)
        for (const osg::NodePtr& node : top)
            if (goesOut(node))
                command->moveNode(node, parent, -1);
    for (std::size_t i = 0; i < top.size(); ++i)
    {
        const int place = at < 0 ? -1 : at + int(i);
        if (carriers[i] != osg::NullFC)
            command->insertNode(carriers[i], parent, place);
        command->moveNode(top[i], carriers[i] == osg::NullFC ? parent : carriers[i],
                          carriers[i] == osg::NullFC ? place : -1);
    }
    add(command);
    for (std::size_t i = 0; i < top.size(); ++i)
        if (carriers[i] == osg::NullFC)
            keepWorldPlace(top[i], worlds[i]);
        else
            kxLog::info(QObject::tr("'%1' is animated: a group of its name has its old parent's place.")
                            .arg(QString::fromStdString(top[i]->getNodeName())));
    return true;
}

bool kxSceneEdits::rename(const osg::AttachmentContainerPtr& container, const QString& name)
{
    const QString trimmed = name.trimmed();
    if (container == osg::NullFC || trimmed.isEmpty())
        return false;
    if (trimmed.toStdString() == container->getNodeName())
        return true;
    const QString problem = kxSceneryEdits::problemOfName(osg::NodePtr::dcast(container), trimmed);
    if (!problem.isEmpty())
    {
        kxLog::warning(problem);
        return false;
    }
    const kxScopedUndo scope(true);
    kxSceneryEdits::followRename(container, trimmed.toStdString());
    add(new kxRenameCommand(container, trimmed.toStdString()));
    return true;
}

void kxSceneEdits::setVisible(const Nodes& nodes, bool visible)
{
    const kxScopedUndo scope(true);
    const QString text = stepText(visible ? "Show %1" : "Hide %1", nodes);
    for (const osg::NodePtr& node : nodes)
        if (node != osg::NullFC && node->isActive() != visible)
            add(kxSetFieldCommand::make(node, "visible", osg::FieldValue(visible), text));
}

void kxSceneEdits::setField(const std::vector<osg::FieldContainerPtr>& containers, const std::string& field,
                            const osg::FieldValue& value)
{
    const kxScopedUndo scope(true);
    const QString text = changeText(containers, field);
    for (const osg::FieldContainerPtr& container : containers)
        add(kxSetFieldCommand::make(container, field, value, text));
}

void kxSceneEdits::setNumber(const std::vector<osg::FieldContainerPtr>& containers, const std::string& field,
                             float value)
{
    const kxScopedUndo scope(true);
    const QString text = changeText(containers, field);
    for (const osg::FieldContainerPtr& container : containers)
        addInRow(kxSetFieldCommand::make(container, field, osg::FieldValue(value), text));
}

void kxSceneEdits::setComponent(const std::vector<osg::FieldContainerPtr>& containers, const std::string& field,
                                unsigned component, RelativeOperator op, double operand)
{
    const kxScopedUndo scope(true);
    const auto write = [component, op, operand](osg::FieldContainer& target, const osg::FieldDescription& description)
    {
        double value = double(description.component(target, component));
        return component < description.components() && QKXDoubleSpiner::applyRelative(op, operand, value) &&
               description.setComponent(target, component, float(value));
    };
    const QString text = changeText(containers, field, axisText(containers, field, component));
    for (const osg::FieldContainerPtr& container : containers)
        addInRow(kxSetFieldCommand::make(container, field, write, text));
}

void kxSceneEdits::setChannel(const kxAnimManager::kxOSGChannelData& channel, const QString& name, float value)
{
    const osg::NodePtr node = osg::NodePtr::dcast(channel.container);
    const bool isOwn = node == osg::NullFC || node->getType().field(channel.fieldName) != nullptr;
    const unsigned component = unsigned(channel.component);
    add(kxSetFieldCommand::make(
        isOwn ? channel.container : osg::FieldContainerPtr(node->getCore()), channel.fieldName,
        [component, value](osg::FieldContainer& target, const osg::FieldDescription& field)
        { return field.setComponent(target, component, value); },
        stepText("Set %1 of %2")
            .arg(name, QString::fromStdString(osg::AttachmentContainerPtr::dcast(channel.container)->getNodeName()))));
}

osg::MaterialPtr kxSceneEdits::addMaterial()
{
    const osg::UberMaterialPtr material = osg::UberMaterial::create();
    nameFreely(osg::MaterialPtr(material), QObject::tr("Material").toStdString());
    add(kxMaterialListCommand::add(material, -1));
    return material;
}

void kxSceneEdits::adoptMaterial(const osg::NodePtr& node)
{
    const osg::GeometryPtr geometry = osg::GeometryPtr::dcast(node->getCore());
    const osg::MaterialPtr material = geometry == osg::NullFC ? osg::MaterialPtr() : geometry->getMaterial();
    if (material == osg::NullFC || kxScene::the()->contains(material))
        return;
    nameFreely(material, node->getNodeName());
    add(kxMaterialListCommand::add(material, -1));
}

void kxSceneEdits::duplicateMaterials(const std::vector<osg::MaterialPtr>& materials)
{
    const kxScopedUndo scope(true);
    for (const osg::MaterialPtr& material : materials)
    {
        const osg::MaterialPtr copy = kxNodeCopy::copyMaterial(material);
        if (copy == osg::NullFC)
            continue;
        nameFreely(copy, stem(material->getNodeName()));
        add(kxMaterialListCommand::add(copy, -1));
    }
}

void kxSceneEdits::deleteMaterials(const std::vector<osg::MaterialPtr>& materials)
{
    const kxScopedUndo scope(true);
    const QString text = kxUndoString(QStringLiteral("Delete Material"), QStringLiteral("Materials"));
    std::vector<osg::FieldContainerPtr> surfaces;
    osg::traverse(kxScene::the()->root(),
                  [&](const osg::NodePtr& node)
                  {
                      const osg::GeometryPtr geometry = osg::GeometryPtr::dcast(node->getCore());
                      if (geometry != osg::NullFC && geometry->getMaterial() != osg::NullFC &&
                          std::find(materials.begin(), materials.end(), geometry->getMaterial()) != materials.end())
                          surfaces.push_back(geometry);
                      return osg::Action::Continue;
                  });
    for (const osg::FieldContainerPtr& surface : surfaces)
        add(kxSetFieldCommand::make(surface, "material", osg::FieldValue(osg::FieldContainerPtr()), text));
    for (const osg::MaterialPtr& material : materials)
        if (material != osg::NullFC)
            add(kxMaterialListCommand::remove(material));
}

int kxSceneEdits::assignMaterial(const Nodes& nodes, const osg::MaterialPtr& material)
{
    const kxScopedUndo scope(true);
    const QString text = kxUndoString(QStringLiteral("Assign %1"), QStringLiteral("Materials"))
                             .arg(QString::fromStdString(kxMaterials::getName(material)));
    int count = 0;
    for (const osg::NodePtr& root : topmost(nodes))
        osg::traverse(root,
                      [&](const osg::NodePtr& node)
                      {
                          const osg::GeometryPtr geometry = osg::GeometryPtr::dcast(node->getCore());
                          if (geometry == osg::NullFC)
                              return osg::Action::Continue;
                          ++count;
                          add(kxSetFieldCommand::make(geometry, "material",
                                                      osg::FieldValue(osg::FieldContainerPtr(material)), text));
                          return osg::Action::Continue;
                      });
    return count;
}
