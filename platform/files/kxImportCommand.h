#pragma once

#include <files/scene/kxSceneContent.h>
#include <kxUndo.h>

/// Adds what was read from a file to the scene: one node, its materials, its clips, its viewpoints and
/// sequences.
///
/// Holds a share of each, so that they outlive a time out of the scene.
class kxImportCommand : public kxUndoCommand
{
public:
    /// `group` is the node that the content stands under.
    kxImportCommand(const QString& text, const osg::NodePtr& group, const kxSceneContent& content);

    void undo() override;
    void redo() override;
    int id() const override;
    /// Each import is a step of its own.
    bool canMergeWith(const QUndoCommand*) const override { return false; }

private:
    kxShare<osg::Node> _group;
    std::vector<kxShare<osg::Material>> _materials;
    std::vector<kxShare<osg::AnimNode>> _clips;
    std::vector<kxShare<osg::Node>> _scenery;
};
