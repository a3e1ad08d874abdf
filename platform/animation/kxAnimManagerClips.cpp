#include <kxAnimManager.h>

#include <animation/kxAnimManagerPrivate.h>
#include <animation/kxCameraShots.h>
#include <animation/kxNodeTime.h>
#include <animation/kxVerifyClipsCommand.h>
#include <undo/kxUndoRecorder.h>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace osg;

namespace
{
constexpr float TrackPitch = 50;

/// Bars side by side on one track may meet; a point in time needs room of its own.
bool overlap(double startA, double endA, double startB, double endB)
{
    const double slack = kxNodeTime::tolerance(std::max({std::abs(startA), std::abs(endA), std::abs(startB)}));
    if (endA - startA <= slack || endB - startB <= slack)
        return startA <= endB + slack && startB <= endA + slack;
    return startA < endB - slack && startB < endA - slack;
}

/// The first free track for [start, end] in the time that the children of `parent` are placed in.
float freeTrack(double start, double end, const AnimNodePtr& parent, const AnimNodePtr& excluded)
{
    // Of n bars one track up to n is free: bars on tracks above that play no part.
    std::vector<bool> taken(parent == NullFC ? 1 : parent->getNChildren() + 1, false);
    if (parent != NullFC)
        for (const NodePtr& child : parent->getChildren())
        {
            const AnimNodePtr node = AnimNodePtr::dcast(child);
            double s = 0, e = 0;
            if (node == NullFC || node == excluded || !kxNodeTime::extent(*node, s, e) || !overlap(start, end, s, e))
                continue;
            const long track = std::lround(std::clamp(double(node->getOffset().y()), -1.0e8, 1.0e8) / TrackPitch);
            if (track >= 0 && std::size_t(track) < taken.size())
                taken[std::size_t(track)] = true;
        }
    return float(std::find(taken.begin(), taken.end(), false) - taken.begin()) * TrackPitch;
}
} // namespace

float kxAnimManager::calculateFreeOffsetYFor(const AnimNodePtr& node, const AnimNodePtr& parent,
                                             const AnimNodePtr& excluded) const
{
    double start = 0, end = 0;
    if (node == NullFC)
        return 0;
    if (!kxNodeTime::extent(*node, start, end))
        start = end = node->getOffset().x();
    return freeTrack(start, end, parent, excluded);
}

float kxAnimManager::calculateFreeOffsetYFor(float start, float end, const AnimNodePtr& parent,
                                             const AnimNodePtr& excluded) const
{
    const kxNodeTime::Map map = kxNodeTime::toRoot(parent);
    return freeTrack(map.from(start), map.from(std::max(start, end)), parent, excluded);
}

void kxAnimManager::verifyClipStructure()
{
    // What a step took out comes and goes with the step.
    if (_p->verifyClipStructure && !kxUndoRecorder::the().isRunning())
        kxUndoStack::get(0).add(new kxVerifyClipsCommand);
}

void kxAnimManager::updateCameraShotCurves(const AnimNodePtr& node)
{
    kxCameraShots::updateCurves(node);
}

AnimNodePtr kxAnimManager::getCameraTrackBlock(const NodePtr& track) const
{
    AnimNodePtr block;
    traverse(track,
             [&block, this](const NodePtr& node)
             {
                 std::vector<AnimNodePtr> animations;
                 if (const AnimAttachmentPtr attachment = getAnimAttachment(node))
                     attachment->getTopLevelAnimations(animations, true);
                 for (const AnimNodePtr& animation : animations)
                     if (AnimBlockPtr::dcast(animation->getCore()) != NullFC &&
                         (block == NullFC || (!block->isActive() && animation->isActive())))
                         block = animation;
                 return block == NullFC ? Action::Continue : Action::Quit;
             });
    return block;
}

void kxAnimManager::updateCameraTrackBlockForNode(const AnimNodePtr& block)
{
    kxCameraShots::updateCurves(block);
}
