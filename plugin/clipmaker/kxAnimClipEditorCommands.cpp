#include <clipmaker/kxAnimClipEditor.h>

#include <clipmaker/edits/kxClipStructure.h>
#include <clipmaker/edits/kxClipTriggers.h>
#include <clipmaker/kxAnimClipEditorGUIW.h>
#include <clipmaker/kxAnimClipScene.h>
#include <clipmaker/kxAnimClipStructureWidget.h>
#include <clipmaker/kxAnimClipView.h>
#include <clipmaker/kxAnimSequenceGUIW.h>
#include <trees/kxAnimTreeWidgetItem.h>

#include <QKXSpiner.h>
#include <kxAnimManager.h>
#include <kxLog.h>
#include <kxScenegraph.h>
#include <kxServices.h>
#include <osg/FieldContainerFactory.h>

#include <QAction>
#include <QComboBox>
#include <QMenu>
#include <QMessageBox>
#include <QToolButton>

namespace
{
/// What the log calls the things of a trigger type.
const char* wordFor(unsigned int type)
{
    switch (type)
    {
    case kxClipTriggers::Viewpoint:
        return "viewpoints";
    case kxClipTriggers::VariantSet:
        return "variant sets";
    default:
        return "sequences";
    }
}

osg::NodePtr findCameraTrack(const QString& name)
{
    auto* const cameras = kxKernelServiceFactory::the().getService<kxCameraService>();
    if (cameras == nullptr)
        return osg::NodePtr();
    for (const kxdCameraTrackNode& track : cameras->getCameraTracks())
        if (track.getName() == name)
            return kxQRPCConverter::idToNode(track.getObjectId());
    return osg::NodePtr();
}
} // namespace

void kxAnimClipEditor::addSequence()
{
    addTrigger(kxClipTriggers::Sequence);
}

void kxAnimClipEditor::addViewpoint()
{
    addTrigger(kxClipTriggers::Viewpoint);
}

void kxAnimClipEditor::addVariant()
{
    addTrigger(kxClipTriggers::VariantSet);
}

void kxAnimClipEditor::addTrigger(unsigned int type)
{
    const osg::AnimNodePtr clip = _tree->selectedClip();
    if (clip == osg::NullFC)
        return;
    const unsigned int clipId = clip->getId();
    _triggerDialog->setType(type);
    if (_triggerDialog->_names->count() == 0)
    {
        kxLog::warning("Can't add animation object! There are no existing %s.", wordFor(type));
        return;
    }
    if (_triggerDialog->exec() != QDialog::Accepted)
        return;
    // The dialog ran an event loop, in which the clip may have gone.
    const auto target = osg::living<osg::AnimNode>(clipId);
    if (target == osg::NullFC)
        return;
    const std::string name = _triggerDialog->_names->currentText().toStdString();
    kxClipTriggers::add(type, name, target, _triggerDialog->_frame->value());
    showClip(target);
}

void kxAnimClipEditor::addCameraTrack()
{
    _triggerDialog->setType(kxClipTriggers::CameraTrack);
    if (_triggerDialog->_names->count() == 0)
    {
        QMessageBox::warning(_window, tr("Add Camera Track..."),
                             tr("Can't add animation object! There are no existing camera tracks!"), QMessageBox::Close,
                             QMessageBox::Close);
        return;
    }
    if (_triggerDialog->exec() != QDialog::Accepted)
        return;
    const QString name = _triggerDialog->_names->currentText();
    const osg::AnimNodePtr block = kxAnimManager::the()->getCameraTrackBlock(findCameraTrack(name));
    if (block == osg::NullFC)
        return;
    kxAnimManager::the()->updateCameraTrackBlockForNode(block);
    const osg::AnimNodePtr clip = requireClipFor(name.toStdString());
    if (clip == osg::NullFC)
        return;
    kxClipTriggers::addCameraTrack(block, clip, _triggerDialog->_frame->value());
    showClip(clip);
}

osg::AnimNodePtr kxAnimClipEditor::requireClipFor(const std::string& name)
{
    const osg::AnimNodePtr selected = _tree->selectedClip();
    if (selected != osg::NullFC)
        return selected;
    _tree->newClip(true); // one clip, also where several are selected
    const osg::AnimNodePtr clip = _tree->selectedClip();
    if (clip != osg::NullFC)
        kxNodeUtils::setName(clip, name + tr("_Clip").toStdString(), true, osg::NodePtr());
    return clip;
}

void kxAnimClipEditor::showClip(const osg::AnimNodePtr& clip)
{
    _tree->rebuild(true);
    scene()->setClip(clip, true);
    if (!scene()->bars().isEmpty())
        scene()->bringIntoSight({scene()->bars().back()}); // what was added
}

void kxAnimClipEditor::showCreateMenu()
{
    updateCreateMenu();
    if (_createButton != nullptr)
        _createButton->showMenu();
}

void kxAnimClipEditor::updateCreateMenu()
{
    if (_tree == nullptr)
        return;
    const QList<QTreeWidgetItem*> items = _tree->selectedItems();
    const bool isClip = _tree->selectedClip() != osg::NullFC;
    _createClip->setEnabled(items.size() != 1 || isClip);
    for (QAction* const trigger : {_createViewpoint, _createVariant, _createSequence})
        trigger->setEnabled(isClip);
}

void kxAnimClipEditor::clickedVerify()
{
    kxClipStructure::removeUnused();
    _tree->rebuild(true);
}

void kxAnimClipEditor::clickedDelete()
{
    if (_lastDeleteFocus == nullptr)
        return;
    if (_lastDeleteFocus == _tree)
    {
        _tree->remove();
    }
    else if (_lastDeleteFocus == _view)
    {
        scene()->deleteSelectedItems();
        _tree->rebuild(true);
    }
}

void kxAnimClipEditor::pasteClone()
{
    const double frame = scene() != nullptr ? scene()->time() : 0.0;
    std::vector<unsigned int> targets;
    for (const QTreeWidgetItem* const item : _tree->selectedItems())
        if (const auto* const row = dynamic_cast<const kxAnimTreeWidgetItem*>(item); row->node() != osg::NullFC)
            targets.push_back(row->nodeId());
    if (_tree->selectedItems().isEmpty())
        kxClipStructure::paste(kxAnimManager::the()->clipStructureRoot(), frame);
    for (const unsigned int id : targets)
        kxClipStructure::paste(kxClipStructure::targetOf(osg::living<osg::AnimNode>(id)), frame);
    _tree->rebuild(true);
    for (QTreeWidgetItem* const item : _tree->selectedItems())
        _tree->expandAtOnce(item, true);
}
