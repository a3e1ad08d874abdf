#include <clipmaker/edits/kxClipNodes.h>

#include <kxAnimManager.h>
#include <kxPlatform.h>
#include <kxScenegraph.h>
#include <osg/AnimCores.h>
#include <osg/Finite.h>

namespace
{
void moveBy(const osg::AnimNodePtr& node, float seconds, float units)
{
    node->moveBy(seconds, units);
    osg::markChanged(node, osg::AnimNode::OffsetFieldMask);
}

/// About `seconds` of the root's time; false where that is no factor or beyond a record's numbers.
bool scaleBy(const osg::AnimNodePtr& node, float factor, float seconds)
{
    const float scale = node->getScale();
    node->scaleBy(factor, seconds);
    if (node->getScale() == scale && factor != 1.0f)
        return false;
    osg::markChanged(node, osg::AnimNode::ScaleFieldMask | osg::AnimNode::OffsetFieldMask);
    return true;
}
} // namespace

kxClipNodes::Extent kxClipNodes::extentOf(const osg::AnimNodePtr& node)
{
    osg::BoxVolume volume;
    node->getWorldVolume(volume);
    osg::Pnt3f start, end;
    volume.getBounds(start, end);
    return {double(start.x()), double(end.x())};
}

kxClipGeometry::Span kxClipNodes::spanOf(const osg::AnimNodePtr& node)
{
    if (node == osg::NullFC)
        return {};
    const Extent extent = extentOf(node);
    return kxClipGeometry::barSpan(extent.start, extent.end, node->getPostCycles(), kxAnimManager::the()->fps());
}

void kxClipNodes::setActive(const osg::AnimNodePtr& node, bool value)
{
    if (node->isActive() == value)
        return;
    node->setTravMask(value ? osg::Node::Active : 0);
    osg::markChanged(node, osg::Node::TravMaskFieldMask);
}

void kxClipNodes::setLocked(const osg::AnimNodePtr& node, bool value)
{
    if (node->getLocked() == value)
        return;
    node->setLocked(value);
    osg::markChanged(node, osg::AnimNode::LockedFieldMask);
}

void kxClipNodes::setFlipped(const osg::AnimNodePtr& node, bool value)
{
    if (node->getFlipped() == value)
        return;
    node->setFlipped(value);
    osg::markChanged(node, osg::AnimNode::FlippedFieldMask);
}

void kxClipNodes::setPostCycles(const osg::AnimNodePtr& node, int value)
{
    if (node->getPostCycles() == value)
        return;
    node->setPostCycles(value);
    osg::markChanged(node, osg::AnimNode::PostCyclesFieldMask);
}

void kxClipNodes::setMotionBlur(const osg::AnimNodePtr& node, bool value, bool below)
{
    if (node->getMotionBlur() != value)
    {
        node->setMotionBlur(value);
        osg::markChanged(node, osg::AnimNode::MotionBlurFieldMask);
    }
    if (!below)
        return;
    for (const osg::NodePtr& child : node->getChildren())
        if (const osg::AnimNodePtr inner = osg::AnimNodePtr::dcast(child))
            setMotionBlur(inner, value, true);
}

void kxClipNodes::setMotionBlur(const osg::AnimNodePtr& node, bool value)
{
    setMotionBlur(node, value, osg::AnimBlockPtr::dcast(node->getCore()) != osg::NullFC);
}

bool kxClipNodes::move(const osg::AnimNodePtr& node, const QPointF& from, const QPointF& to)
{
    const double frames = kxClipGeometry::movedFrames(from.x(), to.x(), spanOf(node).x);
    const float seconds = float(frames) / float(kxAnimManager::the()->fps());
    const float units = kxClipGeometry::movedUnits(from.y(), to.y(), node->getOffset().y(), kxPlatform::getDpiScaleX());
    if (!osg::isFinite(seconds, units))
        return false;
    moveBy(node, seconds, units);
    return true;
}

bool kxClipNodes::setStart(const osg::AnimNodePtr& node, float seconds, bool keepEnd)
{
    const Extent extent = extentOf(node);
    if (keepEnd && seconds >= extent.end)
        return false;
    if (keepEnd)
        scaleBy(node, float((extent.end - seconds) / (extent.end - extent.start)), float(extent.start));
    moveBy(node, float(seconds - extent.start), 0);
    return true;
}

bool kxClipNodes::setEnd(const osg::AnimNodePtr& node, float seconds, bool keepStart)
{
    const Extent extent = extentOf(node);
    if (keepStart && extent.start >= seconds)
        return false;
    if (keepStart)
        scaleBy(node, float((seconds - extent.start) / (extent.end - extent.start)), float(extent.start));
    else
        moveBy(node, float(seconds - extent.end), 0);
    return true;
}

void kxClipNodes::setDuration(const osg::AnimNodePtr& node, double frames)
{
    const Extent extent = extentOf(node);
    const double length = kxAnimManager::the()->fps() * (extent.end - extent.start);
    scaleBy(node, float(frames / length), float(extent.start));
}

void kxClipNodes::moveToFreeTrack(const osg::AnimNodePtr& node, float seconds)
{
    node->moveBy(seconds, 0);
    const osg::AnimNodePtr parent = osg::AnimNodePtr::dcast(node->getParent());
    node->setOffset(
        osg::Vec2f(node->getOffset().x(), kxAnimManager::the()->calculateFreeOffsetYFor(node, parent, node)));
    osg::markChanged(node, osg::AnimNode::OffsetFieldMask);
}

void kxClipNodes::beginAt(const osg::AnimNodePtr& node, float seconds)
{
    const float way = seconds - float(extentOf(node).start);
    if (way != 0)
        moveToFreeTrack(node, way);
}

bool kxClipNodes::stretch(const osg::AnimNodePtr& node, double from, double to, double x)
{
    const float factor = kxClipGeometry::stretchFactor(from, to, spanOf(node).width);
    return factor > 0 && scaleBy(node, factor, float(x / kxAnimManager::the()->fps()));
}

bool kxClipNodes::holds(const osg::AnimNodePtr& node, const osg::AnimNodePtr& clip)
{
    for (osg::NodePtr above = clip; above != osg::NullFC; above = above->getParent())
        if (above == node || (above->getCore() != osg::NullFC && above->getCore() == node->getCore()))
            return true;
    return false;
}

osg::AnimNodePtr kxClipNodes::make(const osg::NodeCorePtr& core, const std::string& name)
{
    const osg::AnimNodePtr node = osg::AnimNode::create();
    node->setCore(core);
    osg::markChanged(node, osg::Node::CoreFieldMask);
    kxNodeUtils::setName(node, name, true, osg::NodePtr());
    return node;
}

osg::AnimNodePtr kxClipNodes::hiddenClone(const osg::AnimNodePtr& node)
{
    const osg::AnimNodePtr clone = osg::cloneAnimTree(node, true);
    clone->setHidden(true);
    osg::markChanged(clone, osg::AnimNode::HiddenFieldMask);
    return clone;
}

osg::AnimNodePtr kxClipNodes::duplicate(const osg::AnimNodePtr& node, bool flip)
{
    const osg::AnimNodePtr parent = osg::AnimNodePtr::dcast(node->getParent());
    if (parent == osg::NullFC)
        return osg::AnimNodePtr();
    const float y = kxAnimManager::the()->calculateFreeOffsetYFor(node, parent, osg::AnimNodePtr());
    const osg::AnimNodePtr clone = osg::cloneAnimTree(node, true);
    clone->setOffset(osg::Vec2f(clone->getOffset().x(), y));
    osg::markChanged(clone, osg::AnimNode::OffsetFieldMask);
    if (flip)
        setFlipped(clone, !clone->getFlipped());
    parent->addChild(clone);
    osg::markChanged(parent, osg::Node::ChildrenFieldMask);
    kxAnimManager::the()->unshareClipsR(clone);
    return clone;
}
