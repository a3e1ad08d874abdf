#include <animation/kxScenePlanBuilder.h>

#include <animation/kxAnimWatch.h>
#include <animation/kxAttachmentRegistry.h>
#include <osg/AnimCores.h>
#include <scene/kxScene.h>

#include <algorithm>

using namespace osg;

namespace
{
bool isInScene(const FieldContainerPtr& object)
{
    const NodePtr node = NodePtr::dcast(object);
    if (node == NullFC)
        return true; // materials and cores have no place in the tree
    NodePtr top = node;
    while (top->getParent() != NullFC)
        top = top->getParent();
    return top == kxScene::the()->superRoot();
}

bool changesTime(const AnimNode& node)
{
    return node.getOffset().x() != 0 || node.getScale() != 1 || node.getPostCycles() != 0 || node.getFlipped() ||
           node.getUsePlayRange();
}
} // namespace

void kxScenePlanBuilder::build()
{
    for (const AnimAttachmentPtr& attachment : kxAttachmentRegistry::all())
        addAttachment(attachment);
    // In the order in which containers were met, which mostly is that of their memory.
    std::unordered_map<const FieldContainer*, std::size_t> order;
    order.reserve(drives.size());
    for (const Drive& drive : drives)
        order.emplace(drive.target.container, order.size());
    const bool isGrouped = std::is_sorted(drives.begin(), drives.end(),
                                          [&order](const Drive& a, const Drive& b)
                                          { return order[a.target.container] < order[b.target.container]; });
    if (!isGrouped)
        std::stable_sort(drives.begin(), drives.end(),
                         [&order](const Drive& a, const Drive& b)
                         { return order[a.target.container] < order[b.target.container]; });
}

void kxScenePlanBuilder::addAttachment(const AnimAttachmentPtr& attachment)
{
    std::vector<FieldContainerPtr> objects;
    for (const AttachmentContainerPtr& parent : attachment->getParents())
    {
        _watch.addRole(parent->getId(), kxAnimWatch::Used);
        if (isInScene(parent))
            objects.push_back(parent);
    }
    if (!objects.empty())
        addTree(*attachment->getAnimationRoot(), 0, objects);
}

void kxScenePlanBuilder::addTree(const AnimNode& node, UInt32 place, const std::vector<FieldContainerPtr>& objects)
{
    nodeIds.push_back(node.getId());
    _watch.addRole(node.getId(), kxAnimWatch::Used | kxAnimWatch::SceneNode);
    if (!node.isActive() || AnimClipPtr::dcast(node.getCore()) != NullFC)
        return; // clips play, they don't follow the scene's time
    if (changesTime(node))
    {
        places.push_back(Place{&node, place});
        place = UInt32(places.size());
    }
    if (const AnimCurvePtr curve = AnimCurvePtr::dcast(node.getCore()))
        addCurve(*curve, node.getId(), place, objects);
    for (const NodePtr& child : node.getChildren())
        if (const AnimNodePtr below = AnimNodePtr::dcast(child))
            addTree(*below, place, objects);
}

void kxScenePlanBuilder::addCurve(const AnimCurve& curve, UInt32 nodeId, UInt32 place,
                                  const std::vector<FieldContainerPtr>& objects)
{
    _watch.addCurve(curve.getId(), curve.isEmpty(), 0);
    if (curve.isEmpty())
        return;
    for (const FieldContainerPtr& object : objects)
    {
        const kxChannelTarget target = kxChannelTarget::find(object, curve);
        if (target.isNull())
            continue;
        const Drive drive = {target, &curve, place, nodeId};
        const auto known = _driveOfTarget.emplace(target, drives.size());
        if (known.second)
            drives.push_back(drive);
        else
            drives[known.first->second] = drive;
    }
}
