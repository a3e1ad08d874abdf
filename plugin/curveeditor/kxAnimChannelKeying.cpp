#include <curveeditor/kxAnimChannelKeying.h>

#include <curveeditor/kxAnimChannelRows.h>

#include <kxServices.h>
#include <kxUndo.h>

#include <QCoreApplication>

#include <algorithm>

namespace
{
QString tr(const char* text)
{
    return QCoreApplication::translate("kxAnimChannelWidget", text);
}
} // namespace

void kxAnimChannelKeying::createChannelCurves(const QList<kxAnimTreeWidgetItem*>& listed)
{
    for (kxAnimTreeWidgetItem* const row : listed)
    {
        const kxAnimManager::kxOSGChannelData channel = row->channelData();
        if (channel.isEmpty() || kxAnimChannelRows::isObjectGone(*row))
            continue;
        const osg::AnimAttachmentPtr attachment = kxAnimChannelKeys::requireAttachment(channel.container, *_step);
        if (attachment == osg::NullFC)
            continue;
        if (std::find(_attachments.begin(), _attachments.end(), attachment) == _attachments.end())
            _attachments.push_back(attachment);
        row->setNode(kxAnimChannelKeys::requireCurveNode(channel, attachment, *_step), false, false);
    }
}

void kxAnimChannelKeying::take(const kxAnimTreeWidgetItem& row, bool skipIgnored)
{
    const osg::AnimCurvePtr curve = row.curve();
    if (curve == osg::NullFC || kxAnimChannelRows::isGone(row.node()) || kxAnimChannelRows::isObjectGone(row))
        return;
    if (skipIgnored && kxAnimManager::the()->ignoreChannel(curve->getChannelName()))
        return;
    kxAnimChannelKeys::Value value{curve->getId(), 0};
    if (kxAnimChannelKeys::parse(row.text(kxAnimChannelRows::Value), value.value))
        _values.push_back(value);
    else
        _refused << QStringLiteral("%1 '%2'").arg(row.text(kxAnimChannelRows::Channel),
                                                  row.text(kxAnimChannelRows::Value));
}

void kxAnimChannelKeying::write()
{
    for (const osg::AnimAttachmentPtr& attachment : _attachments)
        kxAnimChannelKeys::switchBlocksOff(attachment, *_step, _switchedOff);
    if (!_attachments.empty())
        kxAnimationService::the().animationsChanged();
    const kxScopedUndo scope(true);
    if (!_step->isEmpty())
        kxUndoStack::get(0).add(_step.release());
    kxAnimChannelKeys::add(_values);
}

QStringList kxAnimChannelKeying::notices() const
{
    QStringList texts;
    if (!_refused.isEmpty())
        texts << tr("Not keyed, since the value is no number: %1").arg(_refused.join(QStringLiteral(", ")));
    if (!_switchedOff.isEmpty())
        texts << tr("Switched off, so that the channels' own keys move the object: %1")
                     .arg(_switchedOff.join(QStringLiteral(", ")));
    return texts;
}
