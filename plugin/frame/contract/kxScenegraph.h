#pragma once

#include <osg/SceneCores.h>

#include <QIcon>

#include <vector>

namespace kxScenegraphTypes
{
/// What a user may do with a node.
enum Action
{
    Rename = 1,
    Delete = 2,
    Move = 3,
    AddChild = 4,
    PasteAnimation = 22
};
} // namespace kxScenegraphTypes

/// The scene tree as the host shows it.
class KX_API kxScenegraph
{
public:
    /// In the order of selection.
    static std::vector<osg::NodePtr> getSelectedNodes();
    /// The node above everything in the scene, never null.
    static osg::NodePtr getSuperRoot();
    static void scrollToNode(const osg::NodePtr& node);
    /// `core` decides; `disabled` gives the muted form.
    static QIcon getNodeIcon(const osg::NodeCorePtr& core, const osg::NodePtr& node, bool disabled);
    static QIcon getMaterialIcon(const osg::MaterialPtr& material);
};

/// Changes what is selected. Each change is a step on the undo stack.
class KX_API kxSelectionManager
{
public:
    static void selectNode(const osg::NodePtr& node);
    static void selectNodes(const std::vector<osg::NodePtr>& nodes);
};

class KX_API kxNodePermission
{
public:
    static bool allows(const osg::NodePtr& node, kxScenegraphTypes::Action action);
};

/// Names and structure of nodes. Names are UTF-8.
class KX_API kxNodeUtils
{
public:
    static std::string getName(const osg::NodePtr& node);
    /// Writes and marks the name. `unique`: the name is changed until no other animation node has it, where `node` is
    /// an animation node; scene nodes may share names. `root`: where to look, null for the whole scene.
    static void setName(const osg::NodePtr& node, const std::string& name, bool unique, const osg::NodePtr& root);
    /// `proposal`, or "proposal_1" and so on: the first that isn't among `names`.
    static std::string getUniqueName(const std::string& proposal, const std::vector<std::string>& names);
    /// Gives back the share that kept a node alive which is out of the tree.
    static void destroy(const osg::NodePtr& node);
    /// True where `ancestor` is above `node`, or is it.
    static bool hasParent(const osg::NodePtr& node, const osg::NodePtr& ancestor);
    /// True for a part of a surface that the user doesn't see as an object of its own.
    static bool isGeometryComponent(const osg::NodePtr& node);
    /// Gives the clones of `node` (nodes of the same core) the attachment of this class that `node` has.
    static void syncCloneNodesAttachment(const osg::NodePtr& node, const osg::FieldContainerType& type);
};

/// The pool of the scene's materials.
class KX_API kxMaterialPool
{
public:
    /// The node under which scene plates are, null where there are none.
    osg::NodePtr getSceneplateRoot() const { return _sceneplateRoot; }
    void setSceneplateRoot(const osg::NodePtr& root) { _sceneplateRoot = root; }

private:
    osg::NodePtr _sceneplateRoot; // not owned
};

class KX_API kxMaterials
{
public:
    static std::string getName(const osg::MaterialPtr& material);
    static bool isEditable(const osg::MaterialPtr& material);
    /// Never null.
    static kxMaterialPool* getMaterialPool();
};

class KX_API kxUberMaterialUtils
{
public:
    /// True for a part of a measured material; this platform has none.
    static bool isXRiteSubMaterial(const osg::MaterialPtr& material);
};

/// The data of one open scene.
class KX_API kxSceneData
{
public:
    osg::NodePtr getRoot() const;
};

class KX_API kxSceneDataManager
{
public:
    /// `index` is 0: one scene is open. Never null.
    static kxSceneData* getSceneData(int index);
};

class KX_API kxQRPCConverter
{
public:
    /// The node of an object id, null where there is none.
    static osg::NodePtr idToNode(unsigned int id);
};
