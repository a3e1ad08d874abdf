#include <animation/kxValueCommand.h>

#include <animation/kxAnimEngine.h>
#include <kxAnimManager.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Node.h>

#include <algorithm>

namespace
{
/// "Set translation.X of Box".
QString textOf(const std::vector<kxChannelTarget>& targets)
{
    const kxChannelTarget& first = targets.front();
    const std::string& suffix = first.field->suffixes()[first.component];
    const osg::FieldContainerPtr container(first.container);
    const osg::NodeCorePtr core = osg::NodeCorePtr::dcast(container);
    const osg::AttachmentContainerPtr named = core != osg::NullFC && !core->getParents().empty()
                                                  ? osg::AttachmentContainerPtr(core->getParents().front())
                                                  : osg::AttachmentContainerPtr::dcast(container);
    const QString what = targets.size() > 1 ? QStringLiteral("%1 Objects").arg(targets.size())
                                            : QString::fromStdString(named->getNodeName());
    return kxUndoString(QStringLiteral("Set %1 of %2"), QStringLiteral("Animation"))
        .arg(QString::fromStdString(first.field->channel() + (suffix.empty() ? "" : "." + suffix)), what);
}
} // namespace

kxValueCommand::kxValueCommand(const std::vector<kxChannelTarget>& targets, float value)
    : kxCommand(textOf(targets)), _value(value)
{
    for (const kxChannelTarget& target : targets)
        _entries.push_back({target.container->getId(), target.field, target.component, target.value()});
}

bool kxValueCommand::changesAnything() const
{
    return std::any_of(_entries.begin(), _entries.end(), [this](const Entry& entry) { return entry.before != _value; });
}

void kxValueCommand::apply(bool forward)
{
    const std::vector<kxChannelTarget> written = write(forward);
    if (forward)
        return;
    // The value of before may be that of another frame.
    kxAnimEngine& engine = kxAnimEngine::of(*kxAnimManager::the());
    for (const kxChannelTarget& target : written)
        engine.plan.setStale(target);
    kxAnimManager::the()->updateSceneAnimCurveData();
}

std::vector<kxChannelTarget> kxValueCommand::write(bool forward) const
{
    std::vector<kxChannelTarget> written;
    for (const Entry& entry : _entries)
    {
        const auto container = osg::living<osg::FieldContainer>(entry.id);
        if (container == osg::NullFC)
            continue;
        written.push_back({&*container, entry.field, entry.component});
        written.back().write(forward ? _value : entry.before);
        osg::markChanged(container, entry.field->mask());
    }
    return written;
}
