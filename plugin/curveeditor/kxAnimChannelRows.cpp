#include <curveeditor/kxAnimChannelRows.h>

#include <curveeditor/kxAnimChannelKeys.h>

#include <kxScenegraph.h>
#include <trees/kxAnimRemoval.h>

#include <QCoreApplication>

namespace
{
bool isEmptyCurve(const osg::NodePtr& node)
{
    const osg::AnimCurvePtr curve = osg::AnimCurvePtr::dcast(node->getCore());
    return curve != osg::NullFC && curve->isEmpty();
}

/// The node among `curveNodes` whose curve drives the channel; null where there is none.
osg::AnimNodePtr curveNodeOf(const kxAnimManager::kxOSGChannelData& channel,
                             const std::vector<osg::AnimNodePtr>& curveNodes)
{
    const std::string name = channel.name + channel.suffix;
    for (const osg::AnimNodePtr& node : curveNodes)
    {
        const osg::AnimCurvePtr curve = osg::AnimCurvePtr::dcast(node->getCore());
        if (curve != osg::NullFC && curve->getChannelName() + curve->getSuffix() == name)
            return node;
    }
    return osg::AnimNodePtr();
}

QString channelText(const kxAnimManager::kxOSGChannelData& channel)
{
    const QString text = QCoreApplication::translate("kxAnimChannelWidget", channel.channelName.c_str());
    return channel.suffix.empty() ? text : text + QLatin1Char('.') + QString::fromStdString(channel.suffix);
}

void addChannels(kxAnimTreeWidgetItem* top, const osg::FieldContainerPtr& container, bool withEmptyCurves)
{
    const kxAnimManager& kernel = *kxAnimManager::the();
    std::vector<kxAnimManager::kxOSGChannelData> channels;
    std::vector<osg::AnimNodePtr> curveNodes;
    kernel.getKeyableChannels(container, channels);
    kernel.getChannelCurveNodes(kernel.getAnimAttachment(container), curveNodes);
    for (const kxAnimManager::kxOSGChannelData& channel : channels)
    {
        const osg::AnimNodePtr curveNode = curveNodeOf(channel, curveNodes);
        if (curveNode != osg::NullFC && !withEmptyCurves && isEmptyCurve(curveNode))
            continue;
        auto* const below = new kxAnimTreeWidgetItem(top, false);
        below->setText(kxAnimChannelRows::Channel, channelText(channel));
        below->setChannelData(channel);
        below->setNode(curveNode, false, false);
    }
}
} // namespace

kxAnimTreeWidgetItem* kxAnimChannelRows::ofNode(const osg::NodePtr& node, bool withEmptyCurves)
{
    if (node == osg::NullFC)
        return nullptr;
    if (const osg::AnimNodePtr animation = osg::AnimNodePtr::dcast(node))
        return ofAnimation(animation, withEmptyCurves);
    if (osg::GeometryPtr::dcast(node->getCore()) != osg::NullFC && kxNodeUtils::isGeometryComponent(node))
        return nullptr;
    auto* const top = new kxAnimTreeWidgetItem(false);
    top->setNode(node, true, true);
    addChannels(top, node, withEmptyCurves);
    return top;
}

kxAnimTreeWidgetItem* kxAnimChannelRows::ofAnimation(const osg::AnimNodePtr& animation, bool withEmptyCurves)
{
    auto* const top = new kxAnimTreeWidgetItem(true);
    top->setNode(animation, true, true);
    for (const osg::NodePtr& child : animation->getChildren())
    {
        if (osg::AnimNodePtr::dcast(child) == osg::NullFC || (!withEmptyCurves && isEmptyCurve(child)))
            continue;
        auto* const below = new kxAnimTreeWidgetItem(top, true);
        below->setNode(child, true, true);
    }
    return top;
}

kxAnimTreeWidgetItem* kxAnimChannelRows::ofMaterial(const osg::MaterialPtr& material, bool withEmptyCurves)
{
    if (material == osg::NullFC || !kxMaterials::isEditable(material))
        return nullptr;
    auto* const top = new kxAnimTreeWidgetItem(false);
    top->setMaterial(material, true, true);
    addChannels(top, material, withEmptyCurves);
    return top;
}

void kxAnimChannelRows::collectCurves(const kxAnimTreeWidgetItem& row, std::vector<osg::AnimCurvePtr>& curves)
{
    if (const osg::AnimCurvePtr curve = row.curve())
    {
        curves.push_back(curve);
        return;
    }
    if (osg::AnimBlockPtr::dcast(row.animObject()) != osg::NullFC)
    {
        kxAnimChannelKeys::collectCurves(row.node(), curves);
        return;
    }
    osg::AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(row.node());
    if (attachment == osg::NullFC)
        attachment = kxAnimManager::the()->getAnimAttachment(row.material());
    if (attachment != osg::NullFC)
        kxAnimChannelKeys::collectCurves(attachment->getAnimationRoot(), curves);
}

bool kxAnimChannelRows::isGone(const osg::NodePtr& node)
{
    if (node == osg::NullFC)
        return true;
    const kxAnimManager& kernel = *kxAnimManager::the();
    if (osg::AnimNodePtr::dcast(node) != osg::NullFC)
        return (node->getParent() == osg::NullFC || !kxIsPlaced(node)) && node != kernel.clipStructureRoot() &&
               node != kernel.sceneStructureRoot();
    return !kxNodeUtils::hasParent(node, kxScenegraph::getSuperRoot());
}

bool kxAnimChannelRows::isTopGone(const kxAnimTreeWidgetItem& row)
{
    return row.material() == osg::NullFC && isGone(row.node());
}

bool kxAnimChannelRows::isObjectGone(const kxAnimTreeWidgetItem& row)
{
    if (const auto* const top = dynamic_cast<const kxAnimTreeWidgetItem*>(row.parent()))
        return isTopGone(*top);
    // A tree may list the channels of its one object at the top.
    const osg::FieldContainerPtr container = row.channelData().container;
    const osg::NodePtr node = osg::NodePtr::dcast(container);
    return node != osg::NullFC ? isGone(node) : container == osg::NullFC;
}
