#pragma once

#include <curveeditor/edits/kxAnimChannelKeys.h>
#include <curveeditor/edits/kxChannelCurvesUndoCommand.h>

#include <QStringList>

#include <memory>
#include <vector>

/// One keying of channels, in the order of its calls: all listed channels get a curve, the values to be keyed are
/// taken, and write() makes one step of undo of it all.
class kxAnimChannelKeying
{
public:
    /// The curve node of a listed channel, made where there is none; null where none can be made.
    osg::AnimNodePtr requireCurveNode(const kxAnimManager::kxOSGChannelData& channel);
    /// The value as the list shows it, by the name that the list gives the channel, becomes a key; nothing without a
    /// curve, and with `skipIgnored` for a channel that the kernel leaves out.
    void take(const osg::AnimCurvePtr& curve, const QString& channel, const QString& value, bool skipIgnored);
    /// Switches the blocks of the listed objects off and adds the keys. Everyone is notified: anyone may build rows
    /// anew.
    void write();
    /// What was refused, and what changed besides keys; empty for nothing.
    QStringList notices() const;

private:
    std::unique_ptr<kxChannelCurvesUndoCommand> _step = std::make_unique<kxChannelCurvesUndoCommand>();
    std::vector<osg::AnimAttachmentPtr> _attachments; // of the listed objects, each once
    std::vector<kxAnimChannelKeys::Value> _values;
    QStringList _refused;
    QStringList _switchedOff; // blocks
};
