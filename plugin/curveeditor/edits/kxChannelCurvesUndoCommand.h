#pragma once

#include <kxCommand.h>
#include <osg/AnimAttachments.h>
#include <osg/Share.h>

#include <vector>

/// What keying changes besides keys, so that undoing it leaves no trace: the curves and attachments that it made for
/// channels without one, and the blocks that it switched off.
///
/// All of it has been done when the command is added; the first redo() changes nothing. What undo() takes out lives on
/// with a share that the command holds, until it is dropped.
class kxChannelCurvesUndoCommand : public kxMergingCommand<kxChannelCurvesUndoCommand>
{
public:
    kxChannelCurvesUndoCommand();

    /// `attachment` was made for `container`.
    void noteAttachment(const osg::AttachmentContainerPtr& container, const osg::AnimAttachmentPtr& attachment);
    /// `node` was made under an attachment of `container`.
    void noteCurve(const osg::AttachmentContainerPtr& container, const osg::AnimNodePtr& node);
    /// `block` was switched off, and had this traversal mask before.
    void noteSwitchedOff(const osg::AnimNodePtr& block, osg::UInt32 mask);
    bool isEmpty() const { return _attachments.empty() && _curves.empty() && _blocks.empty(); }

private:
    void apply(bool forward) override;
    struct Made
    {
        unsigned int containerId;
        unsigned int id;                     // of the attachment, or of the curve's node
        osg::Share<osg::FieldContainer> out; // null while it is in the scene
        unsigned int position = 0;           // below its parent, of a curve that is out
    };
    struct Block
    {
        unsigned int id;
        osg::UInt32 mask; // of the other side of this step
    };

    void swapMasks();
    void takeOutCurves();
    void takeOutAttachments();
    void putBackAttachments();
    void putBackCurves();

    std::vector<Made> _attachments;
    std::vector<Made> _curves;
    std::vector<Block> _blocks;
    bool _wasUndone = false;
};
