#include <kxAnimManager.h>

#include <animation/kxAnimManagerPrivate.h>
#include <animation/kxAttachmentRegistry.h>
#include <animation/kxChannelTarget.h>
#include <animation/kxNodeTime.h>
#include <scene/FieldDescription.h>
#include <scene/kxScene.h>

#include <algorithm>
#include <unordered_set>

using namespace osg;

namespace
{
/// Visits the curve nodes of `node`: itself and, `recursive`, all below it, else its direct children.
template <class Visit>
void visitCurves(const AnimNodePtr& node, bool recursive, bool activeOnly, int depth, const Visit& visit)
{
    if (node == NullFC || (activeOnly && !node->isActive()))
        return;
    if (const AnimCurvePtr curve = AnimCurvePtr::dcast(node->getCore()))
        visit(node, curve);
    if (depth > 0 && !recursive)
        return;
    for (const NodePtr& child : node->getChildren())
        visitCurves(AnimNodePtr::dcast(child), recursive, activeOnly, depth + 1, visit);
}

void appendChannels(const FieldContainerPtr& object, const FieldContainerType& type, const std::string& objectName,
                    std::vector<kxAnimManager::kxOSGChannelData>& channels)
{
    for (const FieldDescription& field : type.fields())
        for (unsigned i = 0; field.isAnimatable() && i < field.components(); ++i)
        {
            kxAnimManager::kxOSGChannelData channel;
            channel.container = object;
            channel.name = channel.channelName = field.channel();
            channel.fieldName = field.name();
            channel.suffix = field.suffixes()[i];
            channel.objectName = objectName;
            channel.component = i;
            channels.push_back(channel);
        }
}

/// False for an object without animations and groups.
bool fillAnimations(const AttachmentContainerPtr& object, kxAnimManager::kxAnimNodeData& data)
{
    const AnimAttachmentPtr attachment = object->findAttachment<AnimAttachment>();
    const TagAttachmentPtr tags = object->findAttachment<TagAttachment>();
    if (tags != NullFC)
        data.tags.assign(tags->getAnimations().begin(), tags->getAnimations().end());
    if (attachment != NullFC)
        attachment->getTopLevelAnimations(data.animations, true);
    return !data.tags.empty() || (attachment != NullFC && attachment->getAnimationRoot()->getNChildren() > 0);
}
} // namespace

AnimAttachmentPtr kxAnimManager::getAnimAttachment(const FieldContainerPtr& container) const
{
    const AttachmentContainerPtr object = AttachmentContainerPtr::dcast(container);
    return object == NullFC ? AnimAttachmentPtr() : object->findAttachment<AnimAttachment>();
}

void kxAnimManager::getAnimCurves(const AnimNodePtr& node, std::vector<AnimCurvePtr>& curves, bool recursive,
                                  bool activeOnly, bool unique) const
{
    std::unordered_set<UInt32> seen;
    visitCurves(node, recursive, activeOnly, 0,
                [&](const AnimNodePtr&, const AnimCurvePtr& curve)
                {
                    if (!unique || seen.insert(curve->getId()).second)
                        curves.push_back(curve);
                });
}

void kxAnimManager::getAnimCurveData(const AnimNodePtr& node, std::vector<kxCurveData>& data,
                                     std::vector<AnimNodePtr>& nodes, bool recursive, bool unique, bool activeOnly,
                                     bool withTargets) const
{
    std::unordered_set<UInt32> seen;
    visitCurves(node, recursive, activeOnly, 0,
                [&](const AnimNodePtr& curveNode, const AnimCurvePtr& curve)
                {
                    if (unique && !seen.insert(curve->getId()).second)
                        return;
                    kxCurveData entry;
                    entry.curveId = curve->getId();
                    entry.nodeId = curveNode->getId();
                    if (withTargets)
                    {
                        const std::vector<FieldContainerPtr> aims = kxAims::ofNode(curveNode);
                        const auto shown =
                            std::find_if(aims.begin(), aims.end(),
                                         [](const FieldContainerPtr& aim) { return kxScene::the()->contains(aim); });
                        entry.targetId = shown == aims.end() ? 0 : shown->getFieldContainerId();
                    }
                    data.push_back(entry);
                    nodes.push_back(curveNode);
                });
}

void kxAnimManager::getChannelCurveNodes(const NodePtr& node, std::vector<AnimNodePtr>& nodes) const
{
    getChannelCurveNodes(getAnimAttachment(node), nodes);
}

void kxAnimManager::getChannelCurveNodes(const AnimAttachmentPtr& attachment, std::vector<AnimNodePtr>& nodes) const
{
    if (attachment != NullFC)
        attachment->getTopLevelCurveNodes(nodes);
}

void kxAnimManager::getKeyableChannels(const FieldContainerPtr& container,
                                       std::vector<kxOSGChannelData>& channels) const
{
    const AttachmentContainerPtr object = AttachmentContainerPtr::dcast(container);
    if (object == NullFC || AnimNodePtr::dcast(container) != NullFC)
        return;
    const NodePtr node = NodePtr::dcast(container);
    if (node != NullFC && node->getCore() != NullFC)
        appendChannels(container, node->getCore()->getType(), object->getNodeName(), channels);
    appendChannels(container, object->getType(), object->getNodeName(), channels);
}

void kxAnimManager::getNodesWithAnimation(const NodePtr& root, NodeTopLevelAnimations& out) const
{
    traverse(root,
             [&out](const NodePtr& node)
             {
                 kxAnimNodeData data;
                 data.node = node;
                 if (fillAnimations(node, data))
                     out.push_back(data);
                 return Action::Continue;
             });
}

void kxAnimManager::getMaterialsWithAnimation(NodeTopLevelAnimations& out) const
{
    for (const MaterialPtr& material : kxScene::the()->materials())
    {
        kxAnimNodeData data;
        data.material = material;
        if (fillAnimations(material, data))
            out.push_back(data);
    }
}

kxAnimManager::kxAnimInfo kxAnimManager::getInfo(const AnimNodePtr& node) const
{
    kxAnimInfo info;
    if (node == NullFC)
        return info;
    visitCurves(node, true, false, 0,
                [&info](const AnimNodePtr&, const AnimCurvePtr& curve)
                {
                    ++info.curves;
                    info.points += curve->getControlPoints().size();
                });
    info.inTangents = info.outTangents = info.points;
    info.controlPoints = info.points + info.inTangents + info.outTangents;
    BoxVolume volume;
    node->getWorldVolume(volume);
    Pnt3f minimum, maximum;
    volume.getBounds(minimum, maximum);
    info.start = minimum.x();
    info.end = maximum.x();
    const kxNodeTime::Map map = kxNodeTime::toRoot(node->getParent());
    info.localScale = node->getScale();
    info.globalScale = float(map.scale * node->getScale());
    info.localOffset = node->getOffset();
    info.globalOffset = Vec2f(float(map.to(node->getOffset().x())), node->getOffset().y());
    return info;
}

float kxAnimManager::getOSGFieldValue(const AnimCurvePtr& curve, const FieldContainerPtr& target) const
{
    if (curve == NullFC)
        return 0;
    if (target != NullFC)
    {
        const kxChannelTarget found = kxChannelTarget::find(target, *curve);
        return found.isNull() ? 0 : found.value();
    }
    for (const FieldContainerPtr& aim : kxAims::inScene(curve))
    {
        const kxChannelTarget found = kxChannelTarget::find(aim, *curve);
        if (!found.isNull())
            return found.value();
    }
    return 0;
}

float kxAnimManager::getOSGFieldValue(const kxOSGChannelData& channel) const
{
    const kxChannelTarget target = kxChannelTarget::find(channel.container, channel.name, channel.suffix);
    return target.isNull() ? 0 : target.value();
}

bool kxAnimManager::ignoreChannel(const std::string& channelName) const
{
    return channelName == "visible";
}

unsigned int kxAnimManager::blockSceneRefCount(const AnimNodePtr& node) const
{
    if (node == NullFC || node->getCore() == NullFC)
        return 0;
    const std::vector<NodePtr>& nodes = node->getCore()->getParents();
    return unsigned(std::count_if(nodes.begin(), nodes.end(),
                                  [](const NodePtr& other)
                                  {
                                      const AnimAttachmentPtr attachment = kxAttachmentRegistry::above(other);
                                      if (attachment == NullFC)
                                          return false;
                                      const auto& objects = attachment->getParents();
                                      return std::any_of(objects.begin(), objects.end(),
                                                         [](const AttachmentContainerPtr& object)
                                                         { return kxScene::the()->contains(object); });
                                  }));
}

FieldContainerPtr kxAnimManager::findFirstParent(const NodeCorePtr& core) const
{
    const std::vector<FieldContainerPtr> objects = kxAims::inScene(core);
    return objects.empty() ? FieldContainerPtr() : objects.front();
}
