#include <curveeditor/edits/kxAnimChannelKeys.h>

#include <curveeditor/edits/kxAddAnimKeyUndoCommand.h>
#include <curveeditor/edits/kxChannelCurvesUndoCommand.h>

#include <kxAnimManager.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Share.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>

namespace
{
constexpr const char VisibleChannel[] = "visible";

float currentSeconds()
{
    const kxAnimManager& kernel = *kxAnimManager::the();
    return float(kernel.currentFrame() / double(float(kernel.fps())));
}

void addGroup(std::unique_ptr<kxMultiCommand> group)
{
    if (group->childCount() == 0)
        return;
    const kxScopedUndo scope(true);
    kxUndoStack::get(0).add(group.release());
}

/// The indices of the keys that AnimCurve::clearConstantControlPoints() takes out.
std::vector<unsigned int> constantKeys(const osg::AnimCurve& curve)
{
    const osg::Share<osg::AnimCurve> thinned(osg::AnimCurveBase::create());
    thinned->editControlPoints() = curve.getControlPoints();
    thinned->clearConstantControlPoints();
    const auto& kept = thinned->getControlPoints();
    std::vector<unsigned int> removed;
    for (unsigned int i = 0, next = 0; i < curve.getControlPoints().size(); ++i)
    {
        if (next < kept.size() && kept[next] == curve.getControlPoints(i))
            ++next;
        else
            removed.push_back(i);
    }
    return removed;
}
} // namespace

bool kxAnimChannelKeys::parse(const QString& text, float& value)
{
    bool isNumber = false;
    const float number = text.toFloat(&isNumber);
    if (!isNumber || !std::isfinite(number))
        return false;
    value = number;
    return true;
}

void kxAnimChannelKeys::add(const std::vector<Value>& values)
{
    const float seconds = currentSeconds();
    bool wasAnyEmpty = false;
    auto group = std::make_unique<kxMultiCommand>("Add Animation Keys", "Animation");
    for (const Value& entry : values)
    {
        const osg::AnimCurvePtr curve = osg::living<osg::AnimCurve>(entry.curveId);
        if (curve == osg::NullFC)
            continue;
        wasAnyEmpty = wasAnyEmpty || curve->isEmpty();
        const unsigned int type =
            curve->getChannelName() == VisibleChannel ? osg::TangentType::Constant : osg::TangentType::Linear;
        const osg::CCPnt key(osg::Pnt2f(seconds, entry.value), osg::Vec2f(), osg::Vec2f(), type, type);
        new kxAddAnimKeyUndoCommand(curve, key, group.get()); // owned by the group
    }
    addGroup(std::move(group));
    if (wasAnyEmpty)
        kxAnimManager::the()->updateSceneAnimCurveData();
}

void kxAnimChannelKeys::insert(const osg::AnimCurvePtr& curve, std::vector<osg::Pnt2f>&& points, osg::UInt32 type)
{
    if (curve == osg::NullFC)
        return;
    points.erase(std::remove_if(points.begin(), points.end(), [](const auto& p) { return !std::isfinite(p.x()); }),
                 points.end());
    // The order in which keys go in fastest.
    std::stable_sort(points.begin(), points.end(), [](const auto& a, const auto& b) { return a.x() < b.x(); });
    for (const osg::Pnt2f& point : points)
        curve->addPoint(point, osg::Vec2f(), osg::Vec2f(), type, type, false, true);
    osg::markChanged(curve, osg::AnimCurveBase::ControlPointsFieldMask);
}

osg::AnimAttachmentPtr kxAnimChannelKeys::requireAttachment(const osg::FieldContainerPtr& container,
                                                            kxChannelCurvesUndoCommand* step)
{
    const osg::AttachmentContainerPtr object = osg::AttachmentContainerPtr::dcast(container);
    if (object == osg::NullFC)
        return osg::AnimAttachmentPtr();
    osg::AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(object);
    if (attachment == osg::NullFC)
    {
        attachment = osg::AnimAttachmentBase::create();
        object->addAttachment(attachment);
        osg::markChanged(object, osg::AttachmentContainer::AttachmentsFieldMask);
        if (step != nullptr)
            step->noteAttachment(object, attachment);
    }
    return attachment;
}

osg::AnimNodePtr kxAnimChannelKeys::requireCurveNode(const kxAnimManager::kxOSGChannelData& channel,
                                                     const osg::AnimAttachmentPtr& attachment,
                                                     kxChannelCurvesUndoCommand& step)
{
    osg::AnimNodePtr node = kxAnimManager::the()->findChannelCurveNode(channel, attachment);
    if (node != osg::NullFC)
        return node;
    node = kxAnimManager::the()->createChannelCurveNode(channel, attachment);
    if (node != osg::NullFC)
        step.noteCurve(osg::AttachmentContainerPtr::dcast(channel.container), node);
    return node;
}

void kxAnimChannelKeys::switchBlocksOff(const osg::AnimAttachmentPtr& attachment, kxChannelCurvesUndoCommand& step,
                                        QStringList& names)
{
    std::vector<osg::AnimNodePtr> animations;
    attachment->getTopLevelAnimations(animations, true);
    for (const osg::AnimNodePtr& animation : animations)
    {
        if (osg::AnimBlockPtr::dcast(animation->getCore()) == osg::NullFC || animation->getTravMask() == 0)
            continue;
        names << QString::fromStdString(kxNodeUtils::getName(animation));
        step.noteSwitchedOff(animation, animation->getTravMask());
        animation->setTravMask(0);
        osg::markChanged(animation, osg::Node::TravMaskFieldMask);
    }
}

void kxAnimChannelKeys::removeConstant(const std::vector<osg::AnimCurvePtr>& curves)
{
    std::set<unsigned int> done;
    auto group = std::make_unique<kxMultiCommand>("Remove Constant Curves", "Animation");
    for (const osg::AnimCurvePtr& curve : curves)
    {
        const unsigned int id = curve.getFieldContainerId();
        if (id == 0 || !done.insert(id).second)
            continue;
        std::vector<unsigned int> indices = constantKeys(*curve);
        if (!indices.empty())
            (new kxAddAnimKeyUndoCommand(curve, std::move(indices), group.get()))->keepTangents(); // owned by the group
    }
    addGroup(std::move(group));
}

void kxAnimChannelKeys::collectCurves(const osg::NodePtr& root, std::vector<osg::AnimCurvePtr>& curves)
{
    osg::traverse(root,
                  [&curves](const osg::NodePtr& node)
                  {
                      if (const osg::AnimCurvePtr curve = osg::AnimCurvePtr::dcast(node->getCore()))
                          curves.push_back(curve);
                      return osg::Action::Continue;
                  });
}
