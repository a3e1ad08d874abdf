#include <clipmaker/edits/kxClipTriggers.h>

#include <clipmaker/edits/kxClipNodes.h>

#include <kxAnimManager.h>
#include <osg/AnimCores.h>

namespace
{
/// Where time 0 of the children of `node` lies in the time of the tree's root, which rulers show; in seconds.
double sceneStart(const osg::AnimNodePtr& node)
{
    double seconds = 0;
    for (osg::NodePtr above = node; above != osg::NullFC; above = above->getParent())
        if (const osg::AnimNodePtr animation = osg::AnimNodePtr::dcast(above))
            seconds = double(animation->getOffset().x()) + seconds * double(animation->getScale());
    return seconds;
}

/// Puts a node that is in no tree into its place.
void place(const osg::AnimNodePtr& node, const osg::AnimNodePtr& clip, double frame)
{
    clip->addChild(node);
    const double seconds = frame / kxAnimManager::the()->fps();
    kxClipNodes::moveToFreeTrack(node, float(seconds - sceneStart(clip)));
    osg::markChanged(clip, osg::Node::ChildrenFieldMask);
}
} // namespace

void kxClipTriggers::add(unsigned int type, const std::string& name, const osg::AnimNodePtr& clip, double frame)
{
    const osg::AnimSequencePtr core = osg::AnimSequence::create();
    core->setName(name);
    core->setIsViewpoint(type == Viewpoint);
    core->setIsVariant(type == VariantSet);
    osg::markChanged(core, osg::AnimSequence::NameFieldMask | osg::AnimSequence::IsViewpointFieldMask |
                               osg::AnimSequence::IsVariantFieldMask);
    place(kxClipNodes::make(core, name), clip, frame);
}

void kxClipTriggers::addCameraTrack(const osg::AnimNodePtr& block, const osg::AnimNodePtr& clip, double frame)
{
    place(kxClipNodes::hiddenClone(block), clip, frame);
}
