#pragma once

#include <QKXSpiner.h>
#include <QString>
#include <kxAnimManager.h>
#include <osg/SceneCores.h>
#include <scene/FieldDescription.h>

#include <vector>

/// What a user does to the scene in the host, each a step on the undo list. Empty lists and stale nodes do nothing.
namespace kxSceneEdits
{
typedef std::vector<osg::NodePtr> Nodes;

/// Puts a new object into the scene and selects it. `parent` null: under the scene's root. A name that is taken there
/// gets a number; a material that it brings comes into the list, under the object's name. False where the parent takes
/// no children.
bool addNode(const osg::NodePtr& node, const osg::NodePtr& parent, const QString& text);
osg::NodePtr makeNode(const osg::NodeCorePtr& core, const QString& name);
/// The selected objects under a new group that is where the first of them was.
bool groupNodes(const Nodes& nodes);
/// How many were deleted; objects that must stay are left out.
int deleteNodes(const Nodes& nodes);
/// Copies beside their originals; the copies are selected.
bool duplicateNodes(const Nodes& nodes);
/// Puts the nodes under `parent`, before its child `index` as it is (-1: after the last), each at its place in the
/// world. One whose place is animated goes below a group of its name with its old parent's place, if that is another.
/// False where one of them may not go there; nothing moves then.
bool moveNodes(const Nodes& nodes, const osg::NodePtr& parent, int index);
bool canMoveNodes(const Nodes& nodes, const osg::NodePtr& parent);
/// An empty name is refused. Triggers and steps of sequences that name it follow.
bool rename(const osg::AttachmentContainerPtr& container, const QString& name);
void setVisible(const Nodes& nodes, bool visible);

/// One value for a field of several containers; those without the field are left out.
void setField(const std::vector<osg::FieldContainerPtr>& containers, const std::string& field,
              const osg::FieldValue& value);
/// As setField(), but numbers that follow each other shortly are one step; so with setComponent().
void setNumber(const std::vector<osg::FieldContainerPtr>& containers, const std::string& field, float value);
/// An operator on one component of a field, for each container by itself.
void setComponent(const std::vector<osg::FieldContainerPtr>& containers, const std::string& field, unsigned component,
                  RelativeOperator op, double operand);

/// One component of a field that can be keyed; `name` is what the undo list calls it.
void setChannel(const kxAnimManager::kxOSGChannelData& channel, const QString& name, float value);

osg::MaterialPtr addMaterial();
/// Puts the material of a node's surface into the scene's list, under the node's name, where it isn't there yet.
void adoptMaterial(const osg::NodePtr& node);
void duplicateMaterials(const std::vector<osg::MaterialPtr>& materials);
/// Objects that show one of them show none then.
void deleteMaterials(const std::vector<osg::MaterialPtr>& materials);
/// Gives the surfaces among and below the nodes a material, and says how many there are.
int assignMaterial(const Nodes& nodes, const osg::MaterialPtr& material);

/// All objects of the scene, in the order of the tree.
Nodes allNodes();
/// True for what is below the scene's root: no viewpoint, no clip, and not the root itself.
bool isObject(const osg::NodePtr& node);
/// The nodes of the scene without those that are below another one of them, in the order of the tree.
Nodes topmost(const Nodes& nodes);
} // namespace kxSceneEdits
