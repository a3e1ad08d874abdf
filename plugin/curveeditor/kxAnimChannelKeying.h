#pragma once

#include <curveeditor/edits/kxAnimChannelKeys.h>
#include <curveeditor/edits/kxChannelCurvesUndoCommand.h>

#include <QList>
#include <QStringList>

#include <memory>
#include <vector>

class kxAnimTreeWidgetItem;

/// One keying of rows of the channel list, in the order of its calls: all listed rows get a curve, the rows to be keyed
/// are taken, and write() makes one step of undo of it all.
class kxAnimChannelKeying
{
public:
    /// Binds each of `listed` that is a channel to its curve, made where there is none. Rows whose object is gone are
    /// left out.
    void createChannelCurves(const QList<kxAnimTreeWidgetItem*>& listed);
    /// The value that the row shows becomes a key; nothing for a row without curve, and with `skipIgnored` for a
    /// channel that the kernel leaves out.
    void take(const kxAnimTreeWidgetItem& row, bool skipIgnored);
    /// Switches the blocks of the listed objects off and adds the keys. No row may be used behind this, which is heard
    /// by everyone: anyone may build the rows anew.
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
