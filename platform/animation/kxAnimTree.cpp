#include <animation/kxAnimTree.h>

#include <osg/AnimCurve.h>
#include <scene/FieldDescription.h>

using namespace osg;

NodeCorePtr kxAnimTree::copyCore(const NodeCorePtr& core)
{
    if (core == NullFC)
        return NodeCorePtr();
    if (const AnimCurvePtr curve = AnimCurvePtr::dcast(core))
    {
        // By far the most frequent core, and the one with much data: no detour over field values.
        const AnimCurvePtr copy = AnimCurveBase::create();
        copy->setName(curve->getName());
        copy->setNodeName(curve->getNodeName());
        copy->setChannelName(curve->getChannelName());
        copy->setSuffix(curve->getSuffix());
        copy->setColor(curve->getColor());
        copy->setPreInfinityMode(curve->getPreInfinityMode());
        copy->setPostInfinityMode(curve->getPostInfinityMode());
        copy->editControlPoints() = curve->getControlPoints();
        return copy;
    }
    const NodeCorePtr copy = NodeCorePtr::dcast(core->getType().create());
    if (copy != NullFC)
        for (const FieldDescription& field : core->getType().fields())
            if (!field.isTransient())
                field.setValue(*copy, field.value(*core));
    return copy;
}

AnimNodePtr osg::cloneAnimTree(const AnimNodePtr& node, bool shareCores)
{
    if (node == NullFC)
        return AnimNodePtr();
    const AnimNodePtr copy = AnimNodeBase::create();
    copy->setCore(shareCores ? node->getCore() : kxAnimTree::copyCore(node->getCore()));
    copy->setNodeName(node->getNodeName());
    copy->setTravMask(node->getTravMask());
    copy->setOffset(node->getOffset());
    copy->setScale(node->getScale());
    copy->setPostCycles(node->getPostCycles());
    copy->setLocked(node->getLocked());
    copy->setFlipped(node->getFlipped());
    copy->setMotionBlur(node->getMotionBlur());
    copy->setHidden(node->getHidden());
    copy->setUsePlayRange(node->getUsePlayRange());
    copy->setPlayRange(node->getPlayRange());
    for (const NodePtr& child : node->getChildren())
        copy->addChild(cloneAnimTree(AnimNodePtr::dcast(child), shareCores));
    return copy;
}
