#pragma once

#include <kxCommand.h>
#include <osg/AnimAttachments.h>
#include <osg/Share.h>

#include <vector>

/// Puts animations that were read from a file under an object or a material. A curve takes the place of the one that
/// the object has for the same channel: two would fight over it.
///
/// Holds a share of all that comes and goes, so that it outlives a time out of the scene.
class kxLoadAnimationsCommand : public kxCommand
{
public:
    kxLoadAnimationsCommand(const QString& text, const osg::AttachmentContainerPtr& object,
                            const std::vector<osg::AnimNodePtr>& animations);

    /// Each file is a step of its own.
    bool canMergeWith(const QUndoCommand*) const override { return false; }

private:
    void apply(bool forward) override;
    struct Replaced
    {
        osg::Share<osg::AnimNode> curve;
        int position; // below the object's animation root, with those before it taken out
    };
    void place();
    void takeBack();
    void takeOut(const osg::AnimNodePtr& curve);

    osg::Share<osg::AttachmentContainer> _object;
    osg::Share<osg::AnimAttachment> _attachment;
    bool _bringsAttachment; // the object has none of its own
    std::vector<osg::Share<osg::AnimNode>> _animations;
    std::vector<Replaced> _replaced;
};
