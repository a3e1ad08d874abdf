#include <curveeditor/edits/kxAnimChannelKeying.h>

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

osg::AnimNodePtr kxAnimChannelKeying::requireCurveNode(const kxAnimManager::kxOSGChannelData& channel)
{
    const osg::AnimAttachmentPtr attachment = kxAnimChannelKeys::requireAttachment(channel.container, _step.get());
    if (attachment == osg::NullFC)
        return osg::AnimNodePtr();
    if (std::find(_attachments.begin(), _attachments.end(), attachment) == _attachments.end())
        _attachments.push_back(attachment);
    return kxAnimChannelKeys::requireCurveNode(channel, attachment, *_step);
}

void kxAnimChannelKeying::take(const osg::AnimCurvePtr& curve, const QString& channel, const QString& value,
                               bool skipIgnored)
{
    if (curve == osg::NullFC || (skipIgnored && kxAnimManager::the()->ignoreChannel(curve->getChannelName())))
        return;
    kxAnimChannelKeys::Value taken{curve->getId(), 0};
    if (kxAnimChannelKeys::parse(value, taken.value))
        _values.push_back(taken);
    else
        _refused << QStringLiteral("%1 '%2'").arg(channel, value);
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
