#include <clipmaker/kxAnimClipDrop.h>

#include <clipmaker/kxAnimClipNodes.h>
#include <trees/kxAnimLibraryPayload.h>

#include <kxPlatform.h>
#include <osg/AnimCores.h>

osg::AnimNodePtr kxClipDrop::nodeOf(const QMimeData* data)
{
    const kxAnimLibraryPayload payload = kxAnimLibraryPayload::of(data);
    const osg::AnimNodePtr node = payload.rows.size() == 1 ? payload.rows.front().animation() : osg::AnimNodePtr();
    const osg::NodeCorePtr core = node == osg::NullFC ? osg::NodeCorePtr() : node->getCore();
    if (osg::AnimBlockPtr::dcast(core) == osg::NullFC && osg::TimeShapeCachePtr::dcast(core) == osg::NullFC)
        return osg::AnimNodePtr();
    return node;
}

osg::AnimNodePtr kxClipDrop::insert(const osg::AnimNodePtr& node, const osg::AnimNodePtr& clip, double frames,
                                    int tracks)
{
    if (node == osg::NullFC || clip == osg::NullFC || kxClipNodes::holds(node, clip))
        return osg::AnimNodePtr();
    const osg::AnimNodePtr clone = osg::cloneAnimTree(node, true);
    const float dpi = kxPlatform::getDpiScaleX();
    const double alone = kxClipNodes::spanOf(clone).x, y = double(dpi * clone->getOffset().y());
    clip->addChild(clone);
    // The way is measured where the clone stands: a nested clip has a time of its own.
    const QPointF from(kxClipNodes::spanOf(clone).x, y);
    const QPointF to(alone + frames, y + double(kxClipGeometry::trackPitch(dpi)) * tracks);
    if (!kxClipNodes::move(clone, from, to))
    {
        clip->subChild(clone);
        return osg::AnimNodePtr();
    }
    kxClipNodes::setActive(clone, true);
    osg::markChanged(clip, osg::Node::ChildrenFieldMask);
    return clone;
}
