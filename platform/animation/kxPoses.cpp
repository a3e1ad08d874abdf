#include <animation/kxPoses.h>

#include <animation/kxAnimEngine.h>
#include <kxAnimManager.h>
#include <osg/FieldContainerFactory.h>
#include <osg/SceneCores.h>

#include <algorithm>

using namespace osg;

std::vector<kxScenePlan::Pose> kxPoses::all()
{
    const kxAnimEngine& engine = kxAnimEngine::of(*kxAnimManager::the());
    if (!engine.queue.isEmpty())
        return {};
    std::vector<kxScenePlan::Pose> poses;
    double seconds = 0;
    if (engine.plan.isShown())
        poses = engine.plan.poses();
    else if (const kxClipProgram* const program = engine.programs.find(engine.plan.shownRoot(seconds)))
        poses = program->poses(engine.watch.touched());
    poses.erase(std::remove_if(poses.begin(), poses.end(),
                               [](const kxScenePlan::Pose& pose) { return living<Switch>(pose.id) != NullFC; }),
                poses.end());
    return poses;
}

std::vector<kxScenePlan::Pose> kxPoses::drivenBy(const AnimNodePtr& root)
{
    std::vector<kxScenePlan::Pose> driven;
    traverse(
        root,
        [&driven](const NodePtr& node)
        {
            if (const AnimCurvePtr curve = AnimCurvePtr::dcast(node->getCore()))
                for (const FieldContainerPtr& object : kxAims::ofNode(node))
                    if (const kxChannelTarget target = kxChannelTarget::find(object, *curve); !target.isNull())
                        driven.push_back({target.container->getId(), target.field, target.component, target.value()});
            return Action::Continue;
        });
    return driven;
}

QString kxPoses::nameOf(UInt32 id)
{
    const FieldContainerPtr container = FieldContainerFactory::the()->getContainer(id);
    const NodeCorePtr core = NodeCorePtr::dcast(container);
    const AttachmentContainerPtr named = core != NullFC && !core->getParents().empty()
                                             ? AttachmentContainerPtr(core->getParents().front())
                                             : AttachmentContainerPtr::dcast(container);
    return QStringLiteral("'%1'").arg(named == NullFC ? QString() : QString::fromStdString(named->getNodeName()));
}

QString kxPoses::unsaved()
{
    const kxRestValues& rest = kxAnimEngine::of(*kxAnimManager::the()).rest;
    QStringList names;
    for (const kxScenePlan::Pose& pose : all())
    {
        // Files hold what a channel has of itself, which may be this.
        float own = 0;
        if (!rest.get(pose.id, pose.field->name(), pose.component, own) || own != pose.value)
            names << nameOf(pose.id);
    }
    names.removeDuplicates();
    return names.join(QStringLiteral(", "));
}
