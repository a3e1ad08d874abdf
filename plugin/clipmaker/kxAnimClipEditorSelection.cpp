#include <clipmaker/kxAnimClipEditor.h>

#include <clipmaker/edits/kxClipStructure.h>
#include <clipmaker/kxAnimClipItem.h>
#include <clipmaker/kxAnimClipScene.h>
#include <clipmaker/kxAnimClipStructureWidget.h>
#include <clipmaker/kxAnimClipView.h>
#include <clipmaker/kxClipRowMarks.h>
#include <trees/kxAnimTreeWidgetItem.h>

#include <kxController.h>
#include <kxMessageNames.h>
#include <osg/AnimCores.h>

#include <QScopedValueRollback>
#include <QSignalBlocker>
#include <QTreeWidgetItemIterator>

// What is selected in the tree and on the tracks.

namespace
{
/// Tells the library which blocks are selected; nothing where there are none.
void announceBlocks(const std::vector<osg::AnimNodePtr>& blocks)
{
    if (blocks.empty())
        return;
    kxMessage message;
    message.set("blockNodes", blocks, true);
    kxController::call(kxMessageName::ClipBlockSelected, message, 0);
}

bool isBlock(const osg::AnimNodePtr& node)
{
    return node != osg::NullFC && osg::AnimBlockPtr::dcast(node->getCore()) != osg::NullFC;
}

osg::AnimNodePtr animationOf(const QTreeWidgetItem* item)
{
    const auto* const row = dynamic_cast<const kxAnimTreeWidgetItem*>(item);
    return row != nullptr ? osg::AnimNodePtr::dcast(row->node()) : osg::AnimNodePtr();
}
} // namespace

void kxAnimClipEditor::changedClipsSelection()
{
    if (_view == nullptr || _tree == nullptr || scene() == nullptr)
        return;
    std::vector<osg::AnimNodePtr> blocks;
    QSet<unsigned int> selected;
    for (const QTreeWidgetItem* const item : _tree->selectedItems())
    {
        const osg::AnimNodePtr node = animationOf(item);
        selected.insert(node.getFieldContainerId());
        if (isBlock(node))
            blocks.push_back(node);
    }
    // Rows that were built anew are no new selection: playing goes on, and the bars may be selected otherwise by now.
    const bool isNew = selected != _selectedRows;
    _selectedRows = selected;
    if (isNew)
        pause();
    announceBlocks(blocks); // the library follows, and what it does may build the rows anew
    const QList<QTreeWidgetItem*> items = _tree->selectedItems();
    const QTreeWidgetItem* const only = items.size() == 1 ? items.front() : nullptr;
    const osg::AnimNodePtr node = animationOf(only);
    const osg::AnimNodePtr clip = kxClipStructure::clipOf(node); // what has no tracks is shown where it is
    if (clip != osg::NullFC)
        scene()->setClip(clip, false);
    else if (only == nullptr || node != osg::NullFC)
        scene()->clear();
    const QScopedValueRollback<bool> told(_libraryKnows, true);
    if (isNew && node != clip)
        scene()->selectAlone(node.getFieldContainerId());
    updateStartAndDuration();
    updateCreateMenu();
    updateStatus();
}

void kxAnimClipEditor::updateLibrarySelection()
{
    if (_libraryKnows)
        return;
    std::vector<osg::AnimNodePtr> blocks;
    for (QGraphicsItem* const item : scene()->selectedItems())
        if (const auto* const bar = dynamic_cast<kxAnimClipItem*>(item); bar != nullptr && isBlock(bar->node()))
            blocks.push_back(bar->node());
    announceBlocks(blocks);
}

void kxAnimClipEditor::markRowsOfBars()
{
    const QVector<kxAnimAbstractClipItem*> bars = scene()->selectedBars();
    QSet<unsigned int> nodes;
    for (const kxAnimAbstractClipItem* const bar : bars)
        nodes.insert(bar->nodeId());
    _rowMarks->setNodes(nodes);
    if (bars.size() == 1)
        showRowOf(bars.front()->node());
}

void kxAnimClipEditor::showRowOf(const osg::AnimNodePtr& node)
{
    QTreeWidgetItemIterator row(_tree);
    while (*row != nullptr && animationOf(*row) != node)
        ++row;
    if (*row == nullptr || (*row)->isSelected())
        return;
    for (QTreeWidgetItem* above = (*row)->parent(); above != nullptr; above = above->parent())
        _tree->expandAtOnce(above, true);
    const QList<QTreeWidgetItem*> selected = _tree->selectedItems();
    const bool isTaken = selected.size() != 1 || kxClipStructure::isClip(animationOf(selected.front()));
    if (isTaken || kxClipStructure::isClip(node)) // a clip that is selected would be shown
        _tree->scrollToItem(*row);
    else
        _tree->setCurrentItem(*row);
}

void kxAnimClipEditor::updateSelectedClipTree()
{
    const QList<QTreeWidgetItem*> items = _tree->selectedItems();
    if (items.size() != 1)
        return;
    const osg::AnimNodePtr node = animationOf(items.front());
    if (!kxClipStructure::isClip(node) && items.front()->parent() == nullptr)
        return;
    const QSignalBlocker blocker(_tree.data());
    _tree->rebuild(true);
}
