#include <kxAnimEvaluator.h>

#include <animation/kxAnimEngine.h>
#include <animation/kxChannelTarget.h>
#include <animation/kxValueCommand.h>

#include <algorithm>
#include <cmath>

using namespace osg;

struct kxAnimEvaluator::Private
{
};

namespace
{
kxAnimEngine& engine()
{
    return kxAnimEngine::of(*kxAnimManager::the());
}

/// Marked, it is a deed of the user, who may take it back.
void writeValue(std::vector<kxChannelTarget> targets, float value, bool mark)
{
    targets.erase(
        std::remove_if(targets.begin(), targets.end(), [](const kxChannelTarget& target) { return target.isNull(); }),
        targets.end());
    if (targets.empty() || !std::isfinite(value))
        return;
    if (!mark)
    {
        for (const kxChannelTarget& target : targets)
            target.write(value);
        return;
    }
    auto command = std::make_unique<kxValueCommand>(targets, value);
    if (command->changesAnything())
        kxUndoStack::get(0).add(command.release());
}
} // namespace

kxAnimEvaluator::kxAnimEvaluator() = default;

kxAnimEvaluator* kxAnimEvaluator::the()
{
    static kxAnimEvaluator* const evaluator = new kxAnimEvaluator;
    return evaluator;
}

void kxAnimEvaluator::enqueue(const AnimNodePtr& node, bool restart)
{
    engine().queue.enqueue(node, restart);
}

void kxAnimEvaluator::dequeue(const AnimNodePtr& node, bool reset)
{
    engine().queue.dequeue(node, reset);
}

void kxAnimEvaluator::dequeueAll()
{
    engine().queue.dequeueAll();
}

bool kxAnimEvaluator::isPlaying(const AnimNodePtr& node) const
{
    return engine().queue.isPlaying(node);
}

void kxAnimEvaluator::blockSequenceEvaluation(bool block)
{
    engine().triggers.setBlocked(block);
}

void kxAnimEvaluator::setOSGFieldValue(const AnimCurvePtr& curve, float value, bool mark)
{
    if (curve == NullFC)
        return;
    std::vector<kxChannelTarget> targets;
    for (const FieldContainerPtr& aim : kxAims::ofCore(curve))
        targets.push_back(kxChannelTarget::find(aim, *curve));
    writeValue(std::move(targets), value, mark);
}

void kxAnimEvaluator::setOSGFieldValue(const kxAnimManager::kxOSGChannelData& channel, float value, bool mark)
{
    writeValue({kxChannelTarget::find(channel.container, channel.name, channel.suffix)}, value, mark);
}

bool kxAnimEvaluator::computeAim(const AnimCurvePtr& curve, const FieldContainerPtr& container,
                                 FieldContainerPtr& target, std::vector<FieldContainerPtr>& aims) const
{
    target = FieldContainerPtr();
    aims.clear();
    if (curve == NullFC)
        return false;
    aims = kxAims::inScene(curve);
    const FieldContainerPtr object = container != NullFC ? container : getFirstAim(curve);
    const kxChannelTarget found = kxChannelTarget::find(object, *curve);
    if (found.isNull())
        return false;
    target = FieldContainerPtr(found.container);
    if (std::find(aims.begin(), aims.end(), object) == aims.end())
        aims.push_back(object);
    return true;
}

FieldContainerPtr kxAnimEvaluator::getFirstAim(const AnimCurvePtr& curve) const
{
    return kxAnimManager::the()->findFirstParent(curve);
}
