#pragma once

#include <files/scene/kxSceneContent.h>
#include <kxCommand.h>

/// Adds what was read from a file to the scene: one node, its materials, its clips, its viewpoints and
/// sequences.
///
/// Holds a share of each, so that they outlive a time out of the scene.
class kxImportCommand : public kxCommand
{
public:
    /// `group` is the node that the content is under. `rate`: frames a second that the scene takes over, 0 for none.
    kxImportCommand(const QString& text, const osg::NodePtr& group, const kxSceneContent& content, double rate);

    /// Each import is a step of its own.
    bool canMergeWith(const QUndoCommand*) const override { return false; }

private:
    void apply(bool forward) override;

    osg::Share<osg::Node> _group;
    std::vector<osg::Share<osg::Material>> _materials;
    std::vector<osg::Share<osg::AnimNode>> _clips;
    std::vector<osg::Share<osg::Node>> _scenery;
    double _rate; ///< of the scene when this is walked over next; 0 leaves it
};
