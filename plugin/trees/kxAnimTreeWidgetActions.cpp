#include <clipmaker/edits/kxClipNodes.h>
#include <curveeditor/edits/kxAnimRemoval.h>
#include <trees/kxAnimInfoText.h>
#include <trees/kxAnimTreeWidget.h>
#include <trees/kxAnimTreeWidgetItem.h>

#include <kxController.h>
#include <kxLog.h>
#include <kxScenegraph.h>
#include <kxUndo.h>
#include <osg/FieldContainerFactory.h>

#include <QAction>
#include <QCursor>
#include <QDebug>
#include <QFileDialog>
#include <QMainWindow>
#include <QMenu>
#include <QMessageBox>
#include <QSet>

#include <algorithm>

// What acts on the selected rows. Rows are noted by ids and persistent indexes before anything is done: what the kernel
// sends meanwhile may build any tree anew.

namespace
{
void pasteInto(const osg::FieldContainerPtr& target, bool shareCores, bool flipped)
{
    if (shareCores)
        kxAnimManager::the()->clonePasteTo(target, flipped, false);
    else
        kxAnimManager::the()->pasteTo(target, flipped, false);
    kxNodeUtils::syncCloneNodesAttachment(osg::NodePtr::dcast(target), osg::AnimAttachment::_type);
}

kxRemovalAnswer askRemoval(QWidget* parent, const QString& name)
{
    QMessageBox box(parent);
    box.setIcon(QMessageBox::Warning);
    box.setWindowTitle(kxAnimTreeWidget::tr("Delete animations..."));
    box.setTextFormat(Qt::PlainText); // a name may look like markup
    box.setText(name + kxAnimTreeWidget::tr(" is referenced somewhere else (e.g. in a clip)! ") +
                kxAnimTreeWidget::tr("If you delete this animation all references will be lost. Really delete?"));
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::YesToAll | QMessageBox::No | QMessageBox::NoToAll);
    box.setDefaultButton(QMessageBox::No);
    box.setEscapeButton(QMessageBox::No);
    switch (box.exec())
    {
    case QMessageBox::Yes:
        return kxRemovalAnswer::Yes;
    case QMessageBox::YesToAll:
        return kxRemovalAnswer::YesToAll;
    case QMessageBox::NoToAll:
        return kxRemovalAnswer::NoToAll;
    default:
        return kxRemovalAnswer::No;
    }
}
} // namespace

/// A row as a place to paste to.
struct kxAnimTreeWidget::Place
{
    QPersistentModelIndex index; // invalid once the row died, and where there is none
    unsigned int nodeId = 0;
    unsigned int materialId = 0;

    /// The node where the user may paste to it, else the material; null for neither.
    osg::FieldContainerPtr target() const
    {
        const osg::NodePtr node = osg::living<osg::Node>(nodeId);
        if (node != osg::NullFC && kxNodePermission::allows(node, kxScenegraphTypes::PasteAnimation))
            return node;
        return osg::living<osg::Material>(materialId);
    }
    /// The node, else the material, whatever the user may do with it.
    osg::FieldContainerPtr container() const
    {
        const osg::NodePtr node = osg::living<osg::Node>(nodeId);
        return node != osg::NullFC ? osg::FieldContainerPtr(node)
                                   : osg::FieldContainerPtr(osg::living<osg::Material>(materialId));
    }
};

/// An animation and the row above its row.
struct kxAnimTreeWidget::Entry
{
    unsigned int animationId = 0;
    bool hasParentRow = false;
    Place parent;
};

kxAnimTreeWidget::Place kxAnimTreeWidget::placeOf(QTreeWidgetItem* item) const
{
    Place place;
    if (const kxAnimTreeWidgetItem* const found = row(item))
        place = {indexFromItem(item), found->nodeId(), found->materialId()};
    return place;
}

std::vector<kxAnimTreeWidget::Entry> kxAnimTreeWidget::selectedEntries() const
{
    std::vector<Entry> entries;
    for (QTreeWidgetItem* item : selectedItems())
    {
        const kxAnimTreeWidgetItem* const found = row(item);
        if (found != nullptr && found->animNode() != osg::NullFC)
            entries.push_back({found->nodeId(), item->parent() != nullptr, placeOf(item->parent())});
    }
    return entries;
}

void kxAnimTreeWidget::rebuildPlaces(const std::vector<Place>& places, bool expand)
{
    if (places.empty())
        return; // a search keeps the states that it found
    saveItemStates();
    QSet<QPersistentModelIndex> done;
    for (const Place& place : places)
    {
        if (!place.index.isValid() || done.contains(place.index))
            continue;
        done.insert(place.index);
        rebuildChildren(row(itemFromIndex(place.index)));
    }
    restoreItemStates();
    if (expand)
        for (const QPersistentModelIndex& index : done)
            if (index.isValid())
                expandAtOnce(itemFromIndex(index), true);
}

std::vector<osg::AnimNodePtr> kxAnimTreeWidget::selectedAnimations() const
{
    std::vector<osg::AnimNodePtr> animations;
    for (QTreeWidgetItem* item : selectedItems())
        if (const kxAnimTreeWidgetItem* const found = row(item))
            if (const osg::AnimNodePtr animation = found->animNode())
                animations.push_back(animation);
    return animations;
}

void kxAnimTreeWidget::remove()
{
    removeSelected(false);
}

void kxAnimTreeWidget::removeSelected(bool checkReferences)
{
    QList<kxAnimTreeWidgetItem*> items;
    collectTopSelectedItems(items);
    QPersistentModelIndex nextCurrent;
    if (items.size() == 1 && items.front()->parent() != nullptr)
        nextCurrent = indexFromItem(items.front()->parent());
    std::vector<kxRemovalRow> rows;
    for (const kxAnimTreeWidgetItem* item : items)
        rows.push_back({item->nodeId(), item->materialId()});

    bool hasAsked = false;
    const kxRemoval removal = kxCollectRemoval(rows, checkReferences,
                                               [&](const QString& name)
                                               {
                                                   hasAsked = true;
                                                   return askRemoval(this, name);
                                               });
    if (removal.nodes.empty())
    {
        if (!rows.empty() && !hasAsked)
            kxLog::warning(tr("Nothing was deleted: there are no animations in the selected rows."));
        return;
    }
    const kxScopedUndo scope(true);
    kxRemoveAnimations(removal.nodes);
    if (nextCurrent.isValid())
        setCurrentItem(itemFromIndex(nextCurrent));
    const std::vector<kxAnimTreeWidget*> trees = removal.sharedDeleted ? _trees : std::vector<kxAnimTreeWidget*>{this};
    for (kxAnimTreeWidget* tree : trees)
        tree->rebuild(true);
}

void kxAnimTreeWidget::copy()
{
    const std::vector<osg::AnimNodePtr> animations = selectedAnimations();
    if (animations.empty() && !selectedItems().isEmpty())
        kxLog::warning(tr("Nothing was copied: no animation is selected."));
    kxAnimManager::the()->copy(animations);
}

void kxAnimTreeWidget::cut()
{
    copy();
    removeSelected(true);
}

void kxAnimTreeWidget::pasteToSelected(bool shareCores, bool rebuildListView)
{
    std::vector<Place> places;
    for (QTreeWidgetItem* item : selectedItems())
        places.push_back(placeOf(item));
    std::vector<Place> changed;
    for (const Place& place : places)
        if (const osg::FieldContainerPtr target = place.target())
        {
            pasteInto(target, shareCores, false);
            changed.push_back(place);
        }
    if (rebuildListView)
        rebuildPlaces(changed, true);
}

void kxAnimTreeWidget::paste(bool rebuildListView)
{
    pasteToSelected(false, rebuildListView);
}

void kxAnimTreeWidget::pasteClone(bool rebuildListView)
{
    pasteToSelected(true, rebuildListView);
}

void kxAnimTreeWidget::cloneSelected(bool flipped)
{
    std::vector<Place> changed;
    bool rebuildsAll = false;
    for (const Entry& entry : selectedEntries())
    {
        const osg::AnimNodePtr animation = osg::living<osg::AnimNode>(entry.animationId);
        if (animation == osg::NullFC)
            continue;
        if (!entry.hasParentRow)
        {
            const osg::NodePtr parent = animation->getParent();
            if (parent == osg::NullFC)
                continue;
            kxAnimManager::the()->copy(animation, osg::FieldContainerPtr());
            kxAnimManager::the()->clonePasteTo(parent, flipped, false);
            rebuildsAll = true;
        }
        else if (const osg::FieldContainerPtr target = entry.parent.target())
        {
            kxAnimManager::the()->copy(animation, osg::FieldContainerPtr());
            pasteInto(target, true, flipped);
            changed.push_back(entry.parent);
        }
    }
    if (rebuildsAll)
        rebuild(true);
    else
        rebuildPlaces(changed, false);
}

void kxAnimTreeWidget::clone()
{
    cloneSelected(false);
}

void kxAnimTreeWidget::cloneFlipped()
{
    cloneSelected(true);
}

void kxAnimTreeWidget::duplicate()
{
    std::vector<Place> changed;
    for (const Entry& entry : selectedEntries())
    {
        const osg::AnimNodePtr animation = osg::living<osg::AnimNode>(entry.animationId);
        const osg::FieldContainerPtr target = entry.parent.target();
        if (animation == osg::NullFC || target == osg::NullFC)
            continue;
        kxAnimManager::the()->copy(animation, osg::FieldContainerPtr());
        kxAnimManager::the()->setAllBlocksInactive(target);
        pasteInto(target, false, false);
        changed.push_back(entry.parent);
    }
    rebuildPlaces(changed, false);
}

void kxAnimTreeWidget::duplicateFlipped() {}

void kxAnimTreeWidget::unshare()
{
    for (const Entry& entry : selectedEntries())
    {
        const osg::AnimNodePtr animation = osg::living<osg::AnimNode>(entry.animationId);
        const osg::FieldContainerPtr container = entry.parent.container();
        if (animation == osg::NullFC || container == osg::NullFC)
            continue;
        kxAnimManager::the()->unshareFrom(animation, container);
    }
    bindRowsAgain();
    viewport()->update();
    if (!selectedItems().isEmpty())
        Q_EMIT itemSelectionChanged(); // the same rows stand for other curves
}

void kxAnimTreeWidget::playSelected()
{
    const std::vector<osg::AnimNodePtr> animations = selectedAnimations();
    kxController::updateBehavior(false);
    kxAnimManager::the()->enqueue(animations, false);
}

void kxAnimTreeWidget::resetSelected()
{
    for (const Entry& entry : selectedEntries())
    {
        kxAnimManager::the()->dequeue(osg::living<osg::AnimNode>(entry.animationId));
        kxAnimManager::the()->reset(osg::living<osg::AnimNode>(entry.animationId), false);
    }
}

void kxAnimTreeWidget::toggledActive(bool value)
{
    for (const osg::AnimNodePtr& animation : selectedAnimations())
        kxAnimManager::the()->setTreeActive(animation, value);
}

void kxAnimTreeWidget::changedMotionBlur(bool value)
{
    for (const osg::AnimNodePtr& animation : selectedAnimations())
        kxClipNodes::setMotionBlur(animation, value, false);
}

void kxAnimTreeWidget::startRename()
{
    const QList<QTreeWidgetItem*> items = selectedItems();
    if (items.size() == 1)
        editItem(items.front(), 0);
}

void kxAnimTreeWidget::updateContextMenu()
{
    const QList<QTreeWidgetItem*> items = selectedItems();
    const bool hasAnimation = std::any_of(items.begin(), items.end(),
                                          [](QTreeWidgetItem* item)
                                          {
                                              const kxAnimTreeWidgetItem* const found = row(item);
                                              return found != nullptr && found->animObject() != osg::NullFC;
                                          });
    _playAction->setEnabled(hasAnimation);
    _resetAction->setEnabled(hasAnimation);
}

void kxAnimTreeWidget::showContextMenu(QPoint)
{
    _contextMenu->exec(QCursor::pos());
}

void kxAnimTreeWidget::updateCheckStates()
{
    const QSignalBlocker blocker(this);
    for (int i = 0; i < topLevelItemCount(); ++i)
        updateCheckStates(topLevelItem(i));
}

void kxAnimTreeWidget::updateCheckStates(QTreeWidgetItem* item)
{
    if (!(item->flags() & Qt::ItemIsUserCheckable))
        return;
    const kxAnimTreeWidgetItem* const found = row(item);
    if (const osg::NodePtr node = found == nullptr ? osg::NodePtr() : found->node())
    {
        item->setData(0, Qt::CheckStateRole, node->isActive() ? Qt::Checked : Qt::Unchecked);
        const osg::AnimNodePtr animation = osg::AnimNodePtr::dcast(node);
        if (animation != osg::NullFC && item->parent() != nullptr)
            item->setCheckState(1, animation->getLocked() ? Qt::Checked : Qt::Unchecked);
    }
    for (int i = 0; i < item->childCount(); ++i)
        updateCheckStates(item->child(i));
}

void kxAnimTreeWidget::info()
{
    const QList<QTreeWidgetItem*> items = selectedItems();
    if (const kxAnimTreeWidgetItem* const first = items.isEmpty() ? nullptr : row(items.front()))
        kxShowAnimInfo(first->animNode());
}

void kxAnimTreeWidget::saveSelected()
{
    const QList<QTreeWidgetItem*> items = selectedItems();
    const kxAnimTreeWidgetItem* const item = items.size() == 1 ? row(items.front()) : nullptr;
    if (item == nullptr || item->isGroup())
        return;
    const Place place = placeOf(items.front());
    if (place.container() == osg::NullFC)
    {
        kxLog::error(tr("Save animations failed. Invalid object!"));
        return;
    }
    const QString fileName = QFileDialog::getSaveFileName(kxController::getMainWindow(), tr("Save Animations..."),
                                                          QString(), tr("OpenSG Binary Geometry (*.osb)"));
    if (!fileName.isEmpty())
        kxAnimManager::the()->saveAnimations(fileName.toStdString(), place.container());
}

void kxAnimTreeWidget::debug()
{
    const std::vector<osg::AnimNodePtr> animations = selectedAnimations();
    if (animations.empty())
        return;
    osg::BoxVolume volume;
    animations.front()->getWorldVolume(volume);
    osg::Pnt3f minimum;
    osg::Pnt3f maximum;
    volume.getBounds(minimum, maximum);
    float start = 0;
    float end = 0;
    animations.front()->getBounds(start, end);
    qDebug() << "world volume" << minimum.x() << maximum.x() << "bounds" << start << end;
}
