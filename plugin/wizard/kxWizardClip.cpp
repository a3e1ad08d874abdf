#include <wizard/kxWizardClip.h>

#include <wizard/kxWizardCapture.h>

#include <kxAnimManager.h>
#include <kxScenegraph.h>
#include <osg/Volume.h>

using namespace osg;

AnimNodePtr kxWizardClip::make(const kxCaptureTable& table) const
{
    const AnimNodePtr clip = AnimNodeBase::create();
    clip->setCore(makeCore());
    for (const kxCaptureTable::Entry& entry : table.present())
    {
        const std::string objectName = entry.objectName();
        const QString animation =
            kxWizardCapture::uniqueName(QString::fromStdString(objectName) + QLatin1Char('_') + name);
        const AnimBlockPtr core = AnimBlockPtr::dcast(entry.block->getCore());
        core->setName(animation.toStdString());
        markChanged(core, AnimObject::NameFieldMask);
        kxNodeUtils::setName(entry.block.get(), animation.toStdString(), true, NodePtr());
        kxAnimManager::the()->addAnimation(entry.container, entry.block);
        addClone(clip, entry.block);
    }
    markChanged(clip, Node::CoreFieldMask | Node::ChildrenFieldMask);
    kxNodeUtils::setName(clip, kxWizardCapture::uniqueName(name).toStdString(), true, NodePtr());
    return clip;
}

AnimWizClipPtr kxWizardClip::makeCore() const
{
    const AnimWizClipPtr core = AnimWizClipBase::create();
    core->setStart(float(start));
    core->setDuration(float(duration));
    core->setInterpolation(UInt32(interpolation));
    core->setStartImage(startImage);
    core->setEndImage(endImage);
    markChanged(core, FieldBits);
    return core;
}

void kxWizardClip::addClone(const AnimNodePtr& clip, const AnimNodePtr& block) const
{
    const AnimNodePtr clone = cloneAnimTree(block, true);
    if (clone == NullFC)
        return;
    // The clip stands at its own start yet: all clones cover its whole length.
    clone->moveBy(0, kxAnimManager::the()->calculateFreeOffsetYFor(0, float(duration), clip, clone));
    markChanged(clone, AnimNodeBase::OffsetFieldMask);
    clip->addChild(clone);
}

void kxWizardClip::place(const AnimNodePtr& clip, const AnimNodePtr& target) const
{
    target->addChild(clip);
    markChanged(target, Node::ChildrenFieldMask);
    BoxVolume volume;
    clip->getWorldVolume(volume);
    Pnt3f minimum, maximum;
    volume.getBounds(minimum, maximum);
    clip->moveBy(float(start) - minimum.x(), 0);
    const float y = kxAnimManager::the()->calculateFreeOffsetYFor(clip, target, clip);
    clip->moveBy(0, y - clip->getOffset().y());
    markChanged(clip, AnimNodeBase::OffsetFieldMask);
}
