#pragma once

#include <kxCommand.h>
#include <osg/Node.h>
#include <osg/Share.h>
#include <scene/FieldDescription.h>

#include <QElapsedTimer>

#include <functional>
#include <vector>

/// Puts nodes into the tree, takes them out, or moves them from one parent to another.
///
/// Holds a share of each node, so that a node which is out keeps its id, its materials and its animations. A move whose
/// node no longer is where the step expects it is skipped.
class kxPlaceNodesCommand : public kxCommand
{
public:
    using kxCommand::kxCommand;

    /// Steps of apply(true), in this order. `index` counts after the node has left its old place; -1 is after the
    /// last.
    void insertNode(const osg::NodePtr& node, const osg::NodePtr& parent, int index);
    void removeNode(const osg::NodePtr& node);
    void moveNode(const osg::NodePtr& node, const osg::NodePtr& parent, int index);

private:
    struct Place
    {
        unsigned int parentId = 0; // 0: out of the tree
        int index = -1;
    };
    struct Move
    {
        osg::Share<osg::Node> node;
        Place from, to;
    };
    /// Takes the node from `from` to `to`; `from.index` is filled in where the node was found.
    static bool place(const osg::NodePtr& node, Place& from, const Place& to);
    void apply(bool forward) override;

    std::vector<Move> _moves;
    std::vector<bool> _done; // moves that the last apply(true) made
};

/// Gives a node or a material another name.
class kxRenameCommand : public kxCommand
{
public:
    kxRenameCommand(const osg::AttachmentContainerPtr& container, const std::string& name);

private:
    void apply(bool forward) override;

    unsigned int _id;
    std::string _before, _after;
};

/// Writes a field. Steps of one gesture on one field merge.
///
/// Keeps the stored values that the field shows, so that a field that is a view of another one (field of
/// view of focal length, visible of the traversal mask) comes back exactly.
class kxSetFieldCommand : public kxMergingCommand<kxSetFieldCommand>
{
public:
    /// `write` puts the new value into the container; it is called once, here, and taken back.
    typedef std::function<bool(osg::FieldContainer& container, const osg::FieldDescription& field)> Writer;

    /// Null where the class has no such field, or it refuses the value, or has it already.
    static kxSetFieldCommand* make(const osg::FieldContainerPtr& container, const std::string& field,
                                   const osg::FieldValue& value, const QString& text);
    static kxSetFieldCommand* make(const osg::FieldContainerPtr& container, const std::string& field,
                                   const Writer& write, const QString& text);
    /// Steps of this text that follow each other shortly are one, also of several gestures: arrow keys, notches of the
    /// wheel and a typed number.
    void joinInRow() { _inRow.start(); }
    bool canMergeWith(const QUndoCommand* other) const override;
    bool mergeWith(const QUndoCommand* other) override;

private:
    typedef std::vector<std::pair<std::string, osg::FieldValue>> Values;
    kxSetFieldCommand(const osg::FieldContainerPtr& container, const std::string& field, const QString& text);
    void apply(bool forward) override;

    unsigned int _id;
    std::string _field;
    QElapsedTimer _inRow; // since the last of the row; invalid for one that joins none
    Values _before, _after;
    std::vector<osg::Share<osg::FieldContainer>> _beforeShares, _afterShares; // of containers that the values name
};

/// Adds a material to the scene's list or takes it out. Objects that show it keep it: assigning is a field.
class kxMaterialListCommand : public kxCommand
{
public:
    /// `index` -1 is after the last.
    static kxMaterialListCommand* add(const osg::MaterialPtr& material, int index);
    static kxMaterialListCommand* remove(const osg::MaterialPtr& material);

private:
    kxMaterialListCommand(const osg::MaterialPtr& material, int index, bool adds, const QString& text);
    void apply(bool forward) override;

    osg::Share<osg::Material> _material;
    int _index;
    bool _adds;
};
