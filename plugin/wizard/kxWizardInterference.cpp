#include <wizard/kxWizardInterference.h>

#include <kxAnimManager.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Volume.h>

#include <algorithm>

using namespace osg;

namespace
{
struct Interval
{
    double start;
    double end;

    bool meets(const Interval& other) const { return start <= other.end && other.start <= end; }
};

/// Seconds of the time of the tree's root.
Interval intervalOf(const AnimNodePtr& node)
{
    BoxVolume volume;
    node->getWorldVolume(volume);
    Pnt3f minimum, maximum;
    volume.getBounds(minimum, maximum);
    return {double(minimum.x()), double(maximum.x())};
}

/// The nodes with the cores of the object's blocks: the blocks themselves and their clones in clips.
std::vector<AnimNodePtr> barsOf(const FieldContainerPtr& object)
{
    std::vector<AnimNodePtr> bars;
    std::vector<AnimNodePtr> animations;
    if (const AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(object))
        attachment->getTopLevelAnimations(animations, false);
    for (const AnimNodePtr& animation : animations)
        if (const AnimBlockPtr block = AnimBlockPtr::dcast(animation->getCore()))
            for (const NodePtr& parent : block->getParents())
                if (const AnimNodePtr bar = AnimNodePtr::dcast(parent))
                    bars.push_back(bar);
    return bars;
}

/// Takes a node out of its parent, which is given back; null where it had none.
AnimNodePtr takeOut(const AnimNodePtr& node)
{
    const NodePtr parent = node->getParent();
    if (parent == NullFC)
        return AnimNodePtr();
    parent->subChild(node);
    markChanged(parent, Node::ChildrenFieldMask);
    return AnimNodePtr::dcast(parent);
}
} // namespace

kxWizardInterference kxWizardInterference::find(const kxCaptureTable& table, double start, const AnimNodePtr& target)
{
    kxWizardInterference found;
    for (const kxCaptureTable::Entry& entry : table.present())
    {
        const Interval own = intervalOf(entry.block);
        const Interval planned{own.start + start, own.end + start};
        for (const AnimNodePtr& bar : barsOf(entry.container))
        {
            const Interval existing = intervalOf(bar);
            if (!planned.meets(existing) || !kxNodeUtils::hasParent(bar, target) ||
                std::find(found.nodes.begin(), found.nodes.end(), bar) != found.nodes.end())
                continue;
            found.end = found.nodes.empty() ? float(existing.end) : std::max(found.end, float(existing.end));
            found.nodes.push_back(bar);
        }
    }
    return found;
}

void kxWizardInterference::discard(const std::vector<AnimNodePtr>& kept) const
{
    // By id: what is taken out dies, with all that is left in it.
    const auto living = [](UInt32 id) { return FieldContainerFactory::the()->get<AnimNode>(id); };
    std::vector<UInt32> bars;
    std::vector<UInt32> parents;
    for (const AnimNodePtr& node : nodes)
        bars.push_back(node->getId());
    for (const UInt32 bar : bars)
        if (const AnimNodePtr node = living(bar))
            parents.push_back(takeOut(node).getFieldContainerId());
    for (const UInt32 parent : parents)
        for (AnimNodePtr clip = living(parent); clip != NullFC && clip->getNChildren() == 0 &&
                                                AnimClipPtr::dcast(clip->getCore()) != NullFC &&
                                                std::find(kept.begin(), kept.end(), clip) == kept.end();)
            clip = takeOut(clip);
}
