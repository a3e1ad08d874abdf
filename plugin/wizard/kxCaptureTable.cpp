#include <wizard/kxCaptureTable.h>

#include <frame/kxForm.h>
#include <wizard/kxWizardCapture.h>

#include <kxAnimEvaluator.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
/// Channels that a captured state leaves alone.
bool isPassedOver(const std::string& channelName)
{
    static const char* const names[] = {"focalLength", "turntableAngle", "turntableHeight", "turntableDistance"};
    return std::any_of(std::begin(names), std::end(names),
                       [&channelName](const char* name) { return channelName == name; });
}

/// A curve node with a first and a last key of the channel's present value; null for a channel that is passed over.
AnimNodePtr makeChannel(const kxAnimManager::kxOSGChannelData& channel, const FieldContainerPtr& object)
{
    if (isPassedOver(channel.channelName))
        return AnimNodePtr();
    const AnimNodePtr node = kxAnimManager::the()->createChannelCurveNode(channel, AnimAttachmentPtr());
    const AnimCurvePtr curve = node != NullFC ? AnimCurvePtr::dcast(node->getCore()) : AnimCurvePtr();
    if (curve == NullFC)
        return node;
    const float present = kxCaptureTable::presentValue(curve, object);
    const float value = std::isfinite(present) ? present : 0;
    for (const float seconds : {0.0f, 1.0f})
        curve->addPoint(Pnt2f(seconds, value), Vec2f(), Vec2f(), TangentType::Linear, TangentType::Linear, false, true);
    markChanged(curve, AnimCurveBase::ControlPointsFieldMask);
    return node;
}
} // namespace

FieldContainerPtr kxCaptureTable::Entry::container() const
{
    return osg::living<FieldContainer>(containerId);
}

bool kxCaptureTable::Entry::lives() const
{
    return container() != NullFC;
}

bool kxCaptureTable::Entry::isOutOfScene() const
{
    if (!lives())
        return true;
    const NodePtr node = NodePtr::dcast(container());
    return node != NullFC && !kxNodeUtils::hasParent(node, kxScenegraph::getSuperRoot());
}

std::string kxCaptureTable::Entry::objectName() const
{
    if (!lives())
        return std::string();
    if (const NodePtr node = NodePtr::dcast(container()))
        return kxNodeUtils::getName(node);
    return kxMaterials::getName(MaterialPtr::dcast(container()));
}

void kxCaptureTable::add(const FieldContainerPtr& container)
{
    dropDead();
    if (container == NullFC || _entries.count(container.getFieldContainerId()) != 0 ||
        (NodePtr::dcast(container) == NullFC && FCPtr<MaterialBase>::dcast(container) == NullFC))
        return;
    std::vector<kxAnimManager::kxOSGChannelData> channels;
    kxAnimManager::the()->getKeyableChannels(container, channels);
    if (channels.empty())
        return;
    Entry entry;
    entry.containerId = container.getFieldContainerId();
    entry.block = AnimNodeBase::create();
    entry.block->setCore(AnimBlockBase::create());
    for (const kxAnimManager::kxOSGChannelData& channel : channels)
        if (const AnimNodePtr node = makeChannel(channel, container))
            entry.block->addChild(node);
    markChanged(entry.block.get(), Node::CoreFieldMask | Node::ChildrenFieldMask);
    _entries.emplace(entry.containerId, entry);
}

void kxCaptureTable::captureStart(int interpolation)
{
    dropDead();
    eachCurve([interpolation](const AnimCurvePtr& curve, const Entry& entry)
              { kxWizardCapture::setStart(curve, presentValue(curve, entry.container()), interpolation); });
    for (auto& entry : _entries)
        entry.second.startCaptured = true;
}

void kxCaptureTable::captureEnd(double duration, int interpolation)
{
    dropDead();
    eachCurve([=](const AnimCurvePtr& curve, const Entry& entry)
              { kxWizardCapture::setEnd(curve, duration, presentValue(curve, entry.container()), interpolation); });
    for (auto& entry : _entries)
        entry.second.endCaptured = true;
}

void kxCaptureTable::setInterpolation(int interpolation)
{
    eachCurve([interpolation](const AnimCurvePtr& curve, const Entry&)
              { kxWizardCapture::setInterpolation(curve, interpolation); });
}

void kxCaptureTable::setDuration(double duration, int interpolation)
{
    eachCurve([=](const AnimCurvePtr& curve, const Entry&)
              { kxWizardCapture::setDuration(curve, duration, interpolation); });
}

std::vector<kxCaptureTable::Entry> kxCaptureTable::present() const
{
    std::vector<Entry> found;
    for (const auto& entry : _entries)
        if (!entry.second.isOutOfScene())
            found.push_back(entry.second);
    return found;
}

std::vector<kxCaptureTable::Entry> kxCaptureTable::living() const
{
    std::vector<Entry> found;
    for (const auto& entry : _entries)
        if (entry.second.lives())
            found.push_back(entry.second);
    return found;
}

bool kxCaptureTable::holdsBlock(unsigned int id) const
{
    return std::any_of(_entries.begin(), _entries.end(),
                       [id](const Entries::value_type& entry) { return entry.second.block->getId() == id; });
}

QString kxCaptureTable::missingCaptures() const
{
    constexpr kxForm::Texts text("kxAnimWizardGUII");
    QString lines;
    for (const Entry& entry : present())
    {
        if (entry.startCaptured && entry.endCaptured)
            continue;
        lines += QString::fromStdString(entry.objectName());
        if (entry.startCaptured)
            lines += text(": end");
        else
            lines += text(": start") + (entry.endCaptured ? QString() : text(" and end"));
        lines += QLatin1Char('\n');
    }
    return lines;
}

void kxCaptureTable::dropDead()
{
    dropWhere([](const Entry& entry) { return !entry.lives(); });
}

bool kxCaptureTable::keepOnly(bool nodes, bool materials)
{
    dropDead();
    return dropWhere([=](const Entry& entry)
                     { return NodePtr::dcast(entry.container()) != NullFC ? !nodes : !materials; });
}

bool kxCaptureTable::dropWhere(const std::function<bool(const Entry&)>& isDropped)
{
    const std::size_t before = _entries.size();
    for (auto entry = _entries.begin(); entry != _entries.end();)
    {
        if (!isDropped(entry->second))
        {
            ++entry;
            continue;
        }
        entry = _entries.erase(entry);
    }
    return _entries.size() != before;
}

void kxCaptureTable::clear()
{
    Entries().swap(_entries); // empty for whoever is notified that the blocks go
}

std::vector<AnimCurvePtr> kxCaptureTable::curvesOf(const AnimNodePtr& block)
{
    std::vector<AnimCurvePtr> curves;
    for (const NodePtr& child : block->getChildren())
        if (const AnimCurvePtr curve = AnimCurvePtr::dcast(child->getCore()))
            curves.push_back(curve);
    return curves;
}

FieldContainerPtr kxCaptureTable::aimOf(const AnimCurvePtr& curve, const FieldContainerPtr& object)
{
    FieldContainerPtr target;
    std::vector<FieldContainerPtr> aims;
    kxAnimEvaluator::the()->computeAim(curve, object, target, aims);
    return target;
}

float kxCaptureTable::presentValue(const AnimCurvePtr& curve, const FieldContainerPtr& object)
{
    return kxAnimManager::the()->getOSGFieldValue(curve, aimOf(curve, object));
}

void kxCaptureTable::eachCurve(const std::function<void(const AnimCurvePtr&, const Entry&)>& visit) const
{
    for (const Entry& entry : living())
        for (const AnimCurvePtr& curve : curvesOf(entry.block))
            visit(curve, entry);
}
