#pragma once

#include <osg/AttachmentContainer.h>
#include <osg/Volume.h>

#include <functional>

namespace osg
{

/// What a node is: shared by all nodes that have it as their core.
class KX_API NodeCore : public AttachmentContainer
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }

    /// The nodes that have this core, in the order in which they took it.
    const std::vector<NodePtr>& getParents() const { return _parents; }

protected:
    NodeCore() = default;

private:
    friend class Node;
    std::vector<NodePtr> _parents; // not owned
};

/// A place in a tree: a core, a parent, children in order.
///
/// Owns one share of its core and of each child. The edits below write the fields; the caller marks them.
class KX_API Node : public AttachmentContainer
{
public:
    static constexpr BitVector CoreFieldMask = BitVector::bit(8);
    static constexpr BitVector ChildrenFieldMask = BitVector::bit(9);
    static constexpr BitVector ParentFieldMask = BitVector::bit(10);
    static constexpr BitVector TravMaskFieldMask = BitVector::bit(11);

    static constexpr UInt32 Active = 0xFFFFFFFFu;

    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static NodePtr create();

    NodeCorePtr getCore() const { return _core; }
    void setCore(const NodeCorePtr& core);

    NodePtr getParent() const { return _parent; }
    UInt32 getNChildren() const { return UInt32(_children.size()); }
    /// Null beyond the end.
    NodePtr getChild(UInt32 index) const { return index < _children.size() ? _children[index] : NodePtr(); }
    const std::vector<NodePtr>& getChildren() const { return _children; }
    /// The index of `child`, -1 where it is no child.
    int findChild(const NodePtr& child) const;

    /// Appends `child`, which leaves the parent that it has. Refused, with false: null, this node itself, a node above
    /// it, and an object below an animation or the other way round.
    bool addChild(const NodePtr& child);
    /// As addChild(), before the child that is at `index`; beyond the end it appends.
    bool insertChild(UInt32 index, const NodePtr& child);
    /// Takes a child out, which dies where nobody else owns it. False where it is no child.
    bool subChild(const NodePtr& child);

    /// Active (all ones): shown, or evaluated. Anything else: not.
    UInt32 getTravMask() const { return _travMask; }
    void setTravMask(UInt32 mask) { _travMask = mask; }
    bool isActive() const { return _travMask == Active; }

    /// The extent of the node and all below it in the coordinates of the tree's root.
    virtual void getWorldVolume(BoxVolume& volume) const;

protected:
    Node() = default;
    ~Node() override;

private:
    static void describeFields(FieldList& fields);

    NodeCorePtr _core;              // a share
    NodePtr _parent;                // not owned
    std::vector<NodePtr> _children; // a share of each
    UInt32 _travMask = Active;
};

/// What a visitor asks for after a node.
enum class Action
{
    Continue, ///< go on into the children
    Skip,     ///< leave the children out
    Quit      ///< end the walk
};

/// Walks `root` and all below it, parents first, children in order. Null does nothing.
KX_API Action traverse(const NodePtr& root, const std::function<Action(const NodePtr&)>& enter);

/// A core that only gathers children.
class KX_API Group : public NodeCore
{
public:
    static FieldContainerType _type;
    const FieldContainerType& getType() const override { return _type; }
    static GroupPtr create();

protected:
    Group() = default;
};

/// The name under which groups are created.
typedef Group GroupBase;

} // namespace osg
