#include <wizard/kxWizardClip.h>

#include <clipmaker/edits/kxClipStructure.h>
#include <wizard/kxWizardCapture.h>

#include <kxAnimManager.h>
#include <kxScenegraph.h>

#include <algorithm>

using namespace osg;

AnimNodePtr kxWizardClip::make(const kxCaptureTable& table) const
{
    const AnimNodePtr clip = AnimNodeBase::create();
    const AnimWizClipPtr recipe = AnimWizClipBase::create();
    write(recipe);
    clip->setCore(recipe);
    for (const kxCaptureTable::Entry& entry : table.present())
    {
        const std::string animation =
            kxWizardCapture::uniqueName(QString::fromStdString(entry.objectName()) + QLatin1Char('_') + name)
                .toStdString();
        const AnimBlockPtr core = AnimBlockPtr::dcast(entry.block->getCore());
        core->setName(animation);
        markChanged(core, AnimObject::NameFieldMask);
        kxNodeUtils::setName(entry.block.get(), animation, true, NodePtr());
        kxAnimManager::the()->addAnimation(entry.container(), entry.block);
        kxClipStructure::addClone(entry.block, clip);
    }
    markChanged(clip, Node::CoreFieldMask | Node::ChildrenFieldMask);
    kxNodeUtils::setName(clip, name.toStdString(), true, NodePtr());
    return clip;
}

void kxWizardClip::write(const AnimWizClipPtr& core) const
{
    core->setStart(float(start));
    core->setDuration(float(duration));
    core->setInterpolation(UInt32(std::max(0, interpolation)));
    core->setStartImage(startImage);
    core->setEndImage(endImage);
    markChanged(core, FieldBits);
}
