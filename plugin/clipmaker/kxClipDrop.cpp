#include <clipmaker/kxClipDrop.h>

#include <clipmaker/edits/kxClipNodes.h>
#include <clipmaker/edits/kxClipStructure.h>
#include <trees/kxAnimLibraryPayload.h>

#include <kxPlatform.h>
#include <osg/AnimCores.h>

osg::AnimNodePtr kxClipDrop::nodeFor(const osg::AnimNodePtr& clip, const QMimeData* data)
{
    const kxAnimLibraryPayload payload = kxAnimLibraryPayload::of(data);
    if (clip == osg::NullFC || payload.rows.size() != 1)
        return osg::AnimNodePtr();
    const osg::AnimNodePtr node = payload.rows.front().animation();
    const osg::NodeCorePtr core = node == osg::NullFC ? osg::NodeCorePtr() : node->getCore();
    if (osg::AnimBlockPtr::dcast(core) == osg::NullFC && osg::TimeShapeCachePtr::dcast(core) == osg::NullFC)
        return osg::AnimNodePtr();
    return kxClipNodes::holds(node, clip) ? osg::AnimNodePtr() : node;
}

osg::AnimNodePtr kxClipDrop::insert(const osg::AnimNodePtr& node, const osg::AnimNodePtr& clip, double frames,
                                    int tracks)
{
    const osg::AnimNodePtr clone = kxClipStructure::cloneToPlace(node);
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
    osg::markChanged(clip, osg::Node::ChildrenFieldMask);
    return clone;
}
