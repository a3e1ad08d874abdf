#include <clipmaker/edits/kxClipStructure.h>

#include <clipmaker/edits/kxClipNodes.h>

#include <kxAnimManager.h>
#include <kxLog.h>
#include <kxPlatform.h>
#include <kxScenegraph.h>
#include <osg/AnimCores.h>
#include <osg/FieldContainerFactory.h>

#include <QCoreApplication>

#include <algorithm>

using namespace osg;

namespace
{
/// A clone of `node` that shares its cores, to be placed in a clip: active, since what is placed plays.
AnimNodePtr cloneToPlace(const AnimNodePtr& node)
{
    const AnimNodePtr clone = cloneAnimTree(node, true);
    kxClipNodes::setActive(clone, true);
    return clone;
}

/// Takes a node out of its parent, which is given back; null where it had none.
AnimNodePtr leaveParent(const AnimNodePtr& node)
{
    const NodePtr parent = node->getParent();
    if (parent == NullFC)
        return AnimNodePtr();
    parent->subChild(node);
    markChanged(parent, Node::ChildrenFieldMask);
    return AnimNodePtr::dcast(parent);
}
} // namespace

bool kxClipStructure::isClip(const NodePtr& node)
{
    return node != NullFC && AnimClipPtr::dcast(node->getCore()) != NullFC;
}

AnimNodePtr kxClipStructure::clipOf(const NodePtr& node)
{
    for (NodePtr above = node; above != NullFC; above = above->getParent())
        if (isClip(above))
            return AnimNodePtr::dcast(above);
    return AnimNodePtr();
}

AnimNodePtr kxClipStructure::targetOf(const NodePtr& node)
{
    if (isClip(node))
        return AnimNodePtr::dcast(node);
    if (node != NullFC)
        kxLog::warning(QCoreApplication::translate("kxClipStructure", "Nothing was put into \"%1\": it is no clip.")
                           .arg(QString::fromStdString(kxNodeUtils::getName(node))));
    return AnimNodePtr();
}

AnimNodePtr kxClipStructure::addClip(const std::string& name, const AnimNodePtr& parent)
{
    const AnimNodePtr clip = kxClipNodes::make(AnimClipBase::create(), name);
    if (parent == NullFC)
        moveToTop(clip);
    else
        moveInto(clip, parent);
    return clip;
}

bool kxClipStructure::moveInto(const AnimNodePtr& node, const NodePtr& parent)
{
    const NodePtr before = node->getParent();
    if (!parent->addChild(node))
        return false;
    if (before != NullFC && before != parent)
        markChanged(before, Node::ChildrenFieldMask);
    markChanged(parent, Node::ChildrenFieldMask);
    return true;
}

void kxClipStructure::moveToTop(const AnimNodePtr& node)
{
    if (isClip(node))
        kxAnimManager::the()->addToClipStructure(node);
}

void kxClipStructure::insert(const AnimNodePtr& node, const AnimNodePtr& clip, float seconds)
{
    moveInto(node, clip);
    kxClipNodes::moveToFreeTrack(node, seconds - float(kxClipNodes::extentOf(node).start));
}

void kxClipStructure::addBlock(const AnimNodePtr& block, const AnimNodePtr& clip, float seconds)
{
    const AnimNodePtr copy = kxClipNodes::hiddenClone(block);
    copy->moveBy(seconds, 0); // while it is in no tree, it moves in the time of the clip
    moveInto(copy, clip);
    kxClipNodes::moveToFreeTrack(copy, 0);
}

AnimNodePtr kxClipStructure::addClone(const AnimNodePtr& node, const AnimNodePtr& clip)
{
    if (kxNodeUtils::hasParent(clip, node))
        return AnimNodePtr();
    const AnimNodePtr clone = cloneToPlace(node);
    clip->addChild(clone);
    kxClipNodes::moveToFreeTrack(clone, 0);
    markChanged(clip, Node::ChildrenFieldMask);
    return clone;
}

AnimNodePtr kxClipStructure::insertClone(const AnimNodePtr& node, const AnimNodePtr& clip, double frames, int tracks)
{
    const AnimNodePtr clone = cloneToPlace(node);
    const float dpi = kxPlatform::getDpiScaleX();
    const double alone = kxClipNodes::spanOf(clone).x, y = double(dpi * clone->getOffset().y());
    clip->addChild(clone);
    // The way is measured where the clone is: a nested clip has a time of its own.
    const QPointF from(kxClipNodes::spanOf(clone).x, y);
    const QPointF to(alone + frames, y + double(kxClipGeometry::trackPitch(dpi)) * tracks);
    if (!kxClipNodes::move(clone, from, to))
    {
        clip->subChild(clone);
        return AnimNodePtr();
    }
    markChanged(clip, Node::ChildrenFieldMask);
    return clone;
}

std::vector<AnimNodePtr> kxClipStructure::paste(const AnimNodePtr& clip, double frame)
{
    return kxAnimManager::the()->clonePasteToWithOffset(clip, frame / kxAnimManager::the()->fps(), false, true);
}

std::vector<AnimNodePtr> kxClipStructure::duplicate(const AnimNodePtr& node, bool flipped)
{
    const NodePtr parent = node->getParent();
    if (parent == NullFC)
        return {};
    kxAnimManager::the()->copy(node, FieldContainerPtr());
    const std::vector<AnimNodePtr> clones = kxAnimManager::the()->clonePasteTo(parent, flipped, false);
    for (const AnimNodePtr& clone : clones)
    {
        kxAnimManager::the()->unshareClipsR(clone);
        if (isClip(parent))
            kxClipNodes::moveToFreeTrack(clone, 0);
    }
    return clones;
}

void kxClipStructure::takeOut(const std::vector<AnimNodePtr>& nodes, const std::vector<AnimNodePtr>& kept)
{
    // By id: what is taken out dies, with all that is left in it.
    std::vector<UInt32> bars;
    bars.reserve(nodes.size());
    std::vector<UInt32> parents;
    for (const AnimNodePtr& node : nodes)
        bars.push_back(node->getId());
    for (const UInt32 bar : bars)
        if (const AnimNodePtr node = living<AnimNode>(bar))
            parents.push_back(leaveParent(node).getFieldContainerId());
    for (const UInt32 parent : parents)
        for (AnimNodePtr clip = living<AnimNode>(parent); clip != NullFC && clip->getNChildren() == 0 && isClip(clip) &&
                                                          std::find(kept.begin(), kept.end(), clip) == kept.end();)
            clip = leaveParent(clip);
}

void kxClipStructure::removeUnused()
{
    kxAnimManager& kernel = *kxAnimManager::the();
    const bool before = kernel.getVerifyClipStructure();
    kernel.setVerifyClipStructure(true);
    kernel.verifyClipStructure();
    kernel.setVerifyClipStructure(before);
}
