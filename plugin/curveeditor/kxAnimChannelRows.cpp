#include <curveeditor/kxAnimChannelRows.h>

#include <curveeditor/edits/kxAnimChannelKeys.h>
#include <curveeditor/edits/kxAnimRemoval.h>

#include <kxScenegraph.h>

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

/// What a row below an object or a material stands for.
struct Listed
{
    kxAnimManager::kxOSGChannelData channel;
    osg::AnimNodePtr curveNode; // null where nothing drives the channel
};

std::vector<Listed> channelsOf(const osg::FieldContainerPtr& container, bool withEmptyCurves)
{
    const kxAnimManager& kernel = *kxAnimManager::the();
    std::vector<kxAnimManager::kxOSGChannelData> channels;
    std::vector<osg::AnimNodePtr> curveNodes;
    kernel.getKeyableChannels(container, channels);
    kernel.getChannelCurveNodes(kernel.getAnimAttachment(container), curveNodes);
    std::vector<Listed> listed;
    for (const kxAnimManager::kxOSGChannelData& channel : channels)
    {
        const osg::AnimNodePtr curveNode = curveNodeOf(channel, curveNodes);
        if (curveNode == osg::NullFC || withEmptyCurves || !isEmptyCurve(curveNode))
            listed.push_back({channel, curveNode});
    }
    return listed;
}

std::vector<osg::NodePtr> childrenOf(const osg::AnimNodePtr& animation, bool withEmptyCurves)
{
    std::vector<osg::NodePtr> children;
    for (const osg::NodePtr& child : animation->getChildren())
        if (osg::AnimNodePtr::dcast(child) != osg::NullFC && (withEmptyCurves || !isEmptyCurve(child)))
            children.push_back(child);
    return children;
}

void addChannels(kxAnimTreeWidgetItem* top, const osg::FieldContainerPtr& container, bool withEmptyCurves)
{
    for (const Listed& listed : channelsOf(container, withEmptyCurves))
    {
        auto* const below = new kxAnimTreeWidgetItem(top, false);
        below->setText(kxAnimChannelRows::Channel, channelText(listed.channel));
        below->setChannelData(listed.channel);
        below->setNode(listed.curveNode, false, false);
    }
}

kxAnimTreeWidgetItem* below(const kxAnimTreeWidgetItem& top, std::size_t index)
{
    return static_cast<kxAnimTreeWidgetItem*>(top.child(int(index)));
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
    for (const osg::NodePtr& child : childrenOf(animation, withEmptyCurves))
    {
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

bool kxAnimChannelRows::bindAgain(const kxAnimTreeWidgetItem& top, bool withEmptyCurves, bool& hasOthers)
{
    const auto count = std::size_t(top.childCount());
    if (const osg::AnimNodePtr animation = top.animNode())
    {
        const std::vector<osg::NodePtr> children = childrenOf(animation, withEmptyCurves);
        for (std::size_t i = 0; i < count && count == children.size(); ++i)
            if (below(top, i)->nodeId() != children[i]->getId())
                return false;
        return count == children.size();
    }
    const osg::NodePtr node = top.node();
    const std::vector<Listed> listed = channelsOf(
        node != osg::NullFC ? osg::FieldContainerPtr(node) : osg::FieldContainerPtr(top.material()), withEmptyCurves);
    if (count != listed.size())
        return false;
    for (std::size_t i = 0; i < count; ++i)
    {
        kxAnimTreeWidgetItem* const row = below(top, i);
        if (row->text(Channel) != channelText(listed[i].channel))
            return false;
        hasOthers = hasOthers || row->nodeId() != listed[i].curveNode.getFieldContainerId();
        if (listed[i].curveNode == osg::NullFC)
            row->clearNode();
        else
            row->setNode(listed[i].curveNode, false, false);
    }
    return true;
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
