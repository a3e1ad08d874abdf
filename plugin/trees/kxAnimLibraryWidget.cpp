#include <trees/kxAnimLibraryWidget.h>

#include <clipmaker/edits/kxClipNodes.h>
#include <frame/kxMessageRead.h>
#include <trees/kxAnimLibraryMoves.h>
#include <trees/kxAnimLibraryPayload.h>
#include <trees/kxAnimLibraryRows.h>
#include <trees/kxAnimTreeWidgetItem.h>

#include <kxLog.h>
#include <kxMessageNames.h>
#include <kxScenegraph.h>
#include <kxUndo.h>

#include <QAction>
#include <QDragMoveEvent>
#include <QHash>
#include <QItemSelection>
#include <QMenu>
#include <QMimeData>
#include <QSet>
#include <QSignalBlocker>

#include <cstring>
#include <unordered_set>

using namespace osg;
using namespace kxAnimLibraryRows;

namespace
{
kxAnimLibraryWidget* theLibrary = nullptr; // for the callbacks, which get no object

template <class Handle>
std::unordered_set<UInt32> idsOf(const std::vector<Handle>& handles)
{
    std::unordered_set<UInt32> ids;
    for (const Handle& handle : handles)
        ids.insert(handle.getFieldContainerId());
    return ids;
}
} // namespace

kxAnimLibraryWidget::kxAnimLibraryWidget(QWidget* parent) : kxAnimTreeWidget(parent), _instance(theLibrary, this)
{
    setColumnCount(1);
    setSortingEnabled(true);
    setExpandsOnDoubleClick(false);
    setHeaderLabel(tr("Library"));
    setDragDropMode(QAbstractItemView::DragDrop);
    setDragEnabled(true);
    setDropIndicatorShown(true);
    setDefaultDropAction(Qt::CopyAction);
    connect(this, SIGNAL(itemDoubleClicked(QTreeWidgetItem*, int)), SLOT(doubleClickedItem(QTreeWidgetItem*, int)));
    // Whoever empties the tree ends the list of hits.
    connect(model(), &QAbstractItemModel::modelReset, this, [this] { _showsHits = false; });
    createMenu();

    _callbacks.add(kxMessageName::ClipBlockSelected, &kxAnimLibraryWidget::clipBlockSelected);
    _callbacks.add(kxMessageName::PastedAnimations, &kxAnimLibraryWidget::pastedAnimations);
}

kxAnimLibraryWidget::~kxAnimLibraryWidget() = default;

QAction* kxAnimLibraryWidget::addEntry(const QString& text, const QKeySequence& shortcut, const char* slot,
                                       Qt::ShortcutContext context)
{
    QAction* const action = contextMenu()->addAction(text);
    connect(action, SIGNAL(triggered()), this, slot);
    if (!shortcut.isEmpty())
    {
        action->setShortcut(shortcut);
        action->setShortcutContext(context);
        addAction(action);
    }
    return action;
}

void kxAnimLibraryWidget::createMenu()
{
    QMenu* const menu = contextMenu();
    _save = addEntry(tr("Save..."), QKeySequence(), SLOT(saveSelected()));
    addEntry(tr("Rename"), QKeySequence(Qt::CTRL + Qt::Key_R), SLOT(startRename()));
    addEntry(tr("Delete"), QKeySequence(Qt::Key_Delete), SLOT(remove()));
    menu->addSeparator();
    addEntry(tr("Copy"), QKeySequence::Copy, SLOT(copy()));
    addEntry(tr("Cut"), QKeySequence::Cut, SLOT(cut()));
    addEntry(tr("Paste"), QKeySequence::Paste, SLOT(paste()));
    addEntry(tr("Paste Clone"), QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_V), SLOT(pasteClone()));
    menu->addSeparator();
    addEntry(tr("Clone"), QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_D), SLOT(clone()));
    addEntry(tr("Duplicate"), QKeySequence(Qt::CTRL + Qt::Key_D), SLOT(duplicate()));
    addEntry(tr("Unshare"), QKeySequence(), SLOT(unshare()));
    menu->addSeparator();
    _motionBlur = menu->addAction(tr("Motion Blur"));
    _motionBlur->setCheckable(true);
    connect(_motionBlur, SIGNAL(toggled(bool)), this, SLOT(changedMotionBlurR(bool)));
    menu->addSeparator();
    addEntry(tr("Group Selection"), QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_G), SLOT(createGroupFromSelected()));
    addEntry(tr("Select Node"), QKeySequence::New, SLOT(selectNodes()), Qt::WindowShortcut);
    menu->addSeparator();
    addEntry(tr("Information..."), QKeySequence(Qt::CTRL + Qt::Key_I), SLOT(info()), Qt::WindowShortcut);
}

void kxAnimLibraryWidget::rebuild(bool saveStates)
{
    const bool hadSelection = !selectedItems().isEmpty();
    const bool changed = fillAnew(saveStates, [this] { fill(); });
    if (changed && !saveStates)
        Q_EMIT itemSelectionChanged();
    else if (hadSelection)
    {
        updateContextMenu();
        Q_EMIT selectionRebuilt(); // rows that went are no choice of the user's
    }
}

void kxAnimLibraryWidget::fill()
{
    clear();
    setSortingEnabled(false);
    setAnimated(false);

    addSceneNodes();
    addSceneplates();
    kxAnimManager::NodeTopLevelAnimations materials;
    kxAnimManager::the()->getMaterialsWithAnimation(materials);
    addRows(materials);

    setSortingEnabled(true);
    setAnimated(true);
    sortItems(0, Qt::AscendingOrder);
}

void kxAnimLibraryWidget::addSceneNodes()
{
    kxAnimManager::NodeTopLevelAnimations all, nodes;
    kxAnimManager::the()->getNodesWithAnimation(kxScenegraph::getSuperRoot(), all);
    // Scene plates may be below the super root too; their rows come from addSceneplates().
    const NodePtr plates = kxMaterials::getMaterialPool()->getSceneplateRoot();
    for (kxAnimManager::kxAnimNodeData& entry : all)
        if (plates == NullFC || !kxNodeUtils::hasParent(entry.node, plates))
            nodes.push_back(std::move(entry));
    addNodesWithAnimation(nodes);
}

void kxAnimLibraryWidget::addSceneplates()
{
    const kxMaterialPool* const pool = kxMaterials::getMaterialPool();
    if (pool == nullptr || pool->getSceneplateRoot() == NullFC)
        return;
    kxAnimManager::NodeTopLevelAnimations plates;
    kxAnimManager::the()->getNodesWithAnimation(pool->getSceneplateRoot(), plates);
    addNodesWithAnimation(plates);
}

void kxAnimLibraryWidget::addNodesWithAnimation(kxAnimManager::NodeTopLevelAnimations& animMap)
{
    addRows(animMap);
}

void kxAnimLibraryWidget::addRows(const kxAnimManager::NodeTopLevelAnimations& entries)
{
    QHash<QString, kxAnimTreeWidgetItem*> groups;
    for (int i = 0; i < topLevelItemCount(); ++i)
        if (showsGroup(topLevelItem(i)))
            groups.insert(topLevelItem(i)->text(0), rowOf(topLevelItem(i)));

    // Rows enter the tree when they are complete, all at once: each change of a row in the tree would be announced.
    List topLevel, expanded;
    for (const kxAnimManager::kxAnimNodeData& entry : entries)
    {
        if (entry.node == NullFC ? entry.material == NullFC : entry.node->getCore() == NullFC)
            continue; // no row can be bound to it
        if (entry.tags.isEmpty())
        {
            topLevel.append(makeObjectRow(entry));
            expanded.append(topLevel.back());
        }
        QSet<QString> done;
        for (const std::string& name : entry.tags)
        {
            const QString tag = QString::fromStdString(name);
            if (done.contains(tag))
                continue;
            done.insert(tag);
            kxAnimTreeWidgetItem*& group = groups[tag];
            if (group == nullptr)
            {
                group = makeGroup(tag);
                topLevel.append(group);
                expanded.append(group);
            }
            group->addChild(makeObjectRow(entry));
            expanded.append(group->child(group->childCount() - 1));
        }
    }
    addTopLevelItems(topLevel);
    for (QTreeWidgetItem* const row : expanded)
        row->setExpanded(true);
}

kxAnimTreeWidgetItem* kxAnimLibraryWidget::makeObjectRow(const kxAnimManager::kxAnimNodeData& entry)
{
    auto* const row = new kxAnimTreeWidgetItem(true);
    if (entry.node != NullFC)
        row->setNode(entry.node, true, true);
    else
        row->setMaterial(entry.material, true, true);
    for (const AnimNodePtr& node : entry.animations)
        if (QTreeWidgetItem* const child = buildItem(node))
            row->addChild(child);
    return row;
}

void kxAnimLibraryWidget::rebuildFrom(std::vector<AnimNodePtr> nodes)
{
    clear();
    setSortingEnabled(false);
    List rows;
    for (const AnimNodePtr& node : nodes)
    {
        if (node == NullFC)
            continue;
        auto* const row = new kxAnimTreeWidgetItem(true);
        row->setNode(node, true, true);
        rows.append(row);
    }
    addTopLevelItems(rows);
    setSortingEnabled(true);
    sortItems(0, Qt::AscendingOrder);
    _showsHits = true;
}

void kxAnimLibraryWidget::remove()
{
    removeSelected(true);
}

void kxAnimLibraryWidget::showContextMenu(QPoint p)
{
    kxAnimTreeWidgetItem* const row = rowOf(itemAt(p));
    {
        const QSignalBlocker blocker(_motionBlur);
        const AnimNodePtr node = animation(row);
        _motionBlur->setEnabled(node != NullFC);
        _motionBlur->setChecked(node != NullFC && node->getMotionBlur());
    }
    _save->setEnabled(row != nullptr && !row->isGroup() && selectedItems().size() == 1);
    kxAnimTreeWidget::showContextMenu(p);
}

void kxAnimLibraryWidget::changedItem(QTreeWidgetItem* item, int column)
{
    if (item != nullptr && column == 0)
        updateNames();
}

void kxAnimLibraryWidget::doubleClickedItem(QTreeWidgetItem* item, int)
{
    const NodePtr node = sceneNode(item);
    if (node == NullFC)
        return;
    const kxScopedUndo undo(true);
    kxSelectionManager::selectNode(node);
    kxScenegraph::scrollToNode(node);
}

void kxAnimLibraryWidget::selectNodes()
{
    std::vector<NodePtr> nodes;
    const auto take = [&nodes](const NodePtr& node)
    {
        if (node == NullFC)
            return;
        nodes.push_back(node);
        kxScenegraph::scrollToNode(node);
    };
    for (QTreeWidgetItem* const item : selectedItems())
    {
        if (rowOf(item)->isGroup())
            for (int i = 0; i < item->childCount(); ++i)
                take(sceneNode(item->child(i)));
        else
            take(sceneNode(item) != NullFC ? sceneNode(item) : sceneNode(item->parent()));
    }
    if (nodes.empty())
        return;
    const kxScopedUndo undo(true);
    kxSelectionManager::selectNodes(nodes);
}

void kxAnimLibraryWidget::changedMotionBlurR(bool value)
{
    if (value)
        activateMotionBlurR();
    else
        deactivateMotionBlurR();
}

void kxAnimLibraryWidget::activateMotionBlurR()
{
    setMotionBlurR(true);
}

void kxAnimLibraryWidget::deactivateMotionBlurR()
{
    setMotionBlurR(false);
}

void kxAnimLibraryWidget::setMotionBlurR(bool value)
{
    for (QTreeWidgetItem* const item : selectedItems())
        if (const AnimNodePtr node = animation(item))
            kxClipNodes::setMotionBlur(node, value, true);
}

kxAnimTreeWidgetItem* kxAnimLibraryWidget::addNewGroup()
{
    kxAnimTreeWidgetItem* const group = makeGroup(QString());
    group->setGroup(true);
    addTopLevelItem(group);
    group->setExpanded(true);
    return group;
}

void kxAnimLibraryWidget::createGroup()
{
    kxAnimTreeWidgetItem* const group = addNewGroup();
    editItem(group, 0);
    scrollToItem(group, QAbstractItemView::PositionAtCenter);
}

void kxAnimLibraryWidget::createGroupFromSelected()
{
    List members;
    for (QTreeWidgetItem* const item : selectedItems())
        if (!rowOf(item)->isGroup() && (sceneNode(item) != NullFC || rowOf(item)->material() != NullFC))
            members.append(item);
    if (members.isEmpty())
        kxLog::warning(tr("Warning: Can not create group because there are no node items selected!"));
    else
    {
        kxAnimTreeWidgetItem* const group = addNewGroup();
        {
            const QSignalBlocker blocker(this);
            setSortingEnabled(false);
            List expanded;
            for (QTreeWidgetItem* const member : members)
            {
                const int index = indexOfTopLevelItem(member);
                if (index < 0)
                    continue;
                if (member->isExpanded())
                    expanded.append(member);
                group->addChild(takeTopLevelItem(index));
            }
            for (QTreeWidgetItem* const member : expanded)
                member->setExpanded(true);
            addToSelection(members);
        }
        setSortingEnabled(true);
        editItem(group, 0);
        sortItems(0, Qt::AscendingOrder);
        scrollToItem(group, QAbstractItemView::PositionAtCenter);
    }
    Q_EMIT groupCreated();
}

void kxAnimLibraryWidget::createBlocksForSelected()
{
    std::vector<AnimNodePtr> blocks;
    for (QTreeWidgetItem* const item : selectedItems())
    {
        const kxAnimTreeWidgetItem& row = *rowOf(item);
        if (row.isGroup())
            continue;
        const NodePtr node = row.node();
        const MaterialPtr material = row.nodeId() == 0 ? row.material() : MaterialPtr();
        const AnimAttachmentPtr attachment = node != NullFC ? kxAnimManager::the()->getAnimAttachment(node)
                                                            : kxAnimManager::the()->getAnimAttachment(material);
        if (attachment == NullFC)
            continue;
        std::string name = node != NullFC ? kxNodeUtils::getName(node) : kxMaterials::getName(material);
        if (const AnimNodePtr block = kxAnimManager::the()->createBlock(attachment, name.empty() ? "Block" : name))
            blocks.push_back(block);
    }
    if (blocks.empty())
        return;
    rebuild(false);
    if (blocks.size() > 1)
        return;
    if (kxAnimTreeWidgetItem* const row = findItem(blocks.front()))
    {
        scrollToItem(row, QAbstractItemView::PositionAtCenter);
        row->setSelected(true);
    }
}

void kxAnimLibraryWidget::expandToDepth(int depth)
{
    const bool animated = isAnimated();
    const QSignalBlocker blocker(this);
    setAnimated(false);
    setUpdatesEnabled(false);
    scheduleDelayedItemsLayout();
    const List selected = selectedItems();
    for (QTreeWidgetItem* const item : selected)
        expandSubtree(item, depthOf(item), depth);
    if (selected.isEmpty() && depth == -1)
        collapseAll();
    else if (selected.isEmpty())
        QTreeView::expandToDepth(depth);
    setUpdatesEnabled(true);
    setAnimated(animated);
}

void kxAnimLibraryWidget::addToSelection(const List& rows)
{
    QItemSelection selection;
    for (const QTreeWidgetItem* const row : rows)
    {
        const QModelIndex index = indexFromItem(row);
        if (!index.isValid())
            continue;
        // Neighbours make one range: the cost of a selection grows with the square of its ranges.
        if (!selection.isEmpty() && selection.back().parent() == index.parent() &&
            selection.back().bottom() + 1 == index.row())
            selection.back() = QItemSelectionRange(selection.back().topLeft(), index);
        else
            selection.append(QItemSelectionRange(index));
    }
    selectionModel()->select(selection, QItemSelectionModel::Select); // one column: these are whole rows
}

void kxAnimLibraryWidget::selectItemsForNodes(const std::vector<NodePtr>& nodes)
{
    const std::unordered_set<UInt32> ids = idsOf(nodes);
    const QSignalBlocker blocker(this);
    addToSelection(matching(*this, [&ids](const kxAnimTreeWidgetItem& row) { return ids.count(row.nodeId()) > 0; }));
}

void kxAnimLibraryWidget::selectItemsForMaterials(const std::vector<MaterialPtr>& materials)
{
    const std::unordered_set<UInt32> ids = idsOf(materials);
    const QSignalBlocker blocker(this);
    addToSelection(
        matching(*this, [&ids](const kxAnimTreeWidgetItem& row) { return ids.count(row.materialId()) > 0; }));
}

std::vector<osg::NodePtr> kxAnimLibraryWidget::withoutItem(std::vector<NodePtr> nodes) const
{
    std::unordered_set<UInt32> shown;
    for (QTreeWidgetItem* const item : matching(*this, [](const kxAnimTreeWidgetItem&) { return true; }))
        shown.insert(rowOf(item)->nodeId());
    nodes.erase(std::remove_if(nodes.begin(), nodes.end(),
                               [&shown](const NodePtr& node) { return shown.count(node.getFieldContainerId()) > 0; }),
                nodes.end());
    return nodes;
}

kxAnimTreeWidgetItem* kxAnimLibraryWidget::findItem(const AnimNodePtr& animation) const
{
    if (animation == NullFC || animation->getCore() == NullFC)
        return nullptr;
    return rowOf(byCore(*this).value(animation->getCore().getFieldContainerId()));
}

void kxAnimLibraryWidget::selectBlocks(const std::vector<NodePtr>& blocks)
{
    const QHash<unsigned int, QTreeWidgetItem*> rows = byCore(*this);
    List found;
    for (const NodePtr& block : blocks)
        if (block != NullFC && block->getCore() != NullFC)
            if (QTreeWidgetItem* const row = rows.value(block->getCore().getFieldContainerId()))
                found.append(row);
    if (found.isEmpty())
        return;
    {
        const QSignalBlocker blocker(this);
        clearSelection();
    }
    addToSelection(found);
}

void kxAnimLibraryWidget::clipBlockSelected(kxMessage& message)
{
    if (theLibrary == nullptr)
        return;
    // Blocks come as animations; a sender may also give them as plain nodes.
    std::vector<NodePtr> nodes;
    std::vector<AnimNodePtr> blocks;
    const boost::any value = message.get("blockNodes");
    if (std::strcmp(value.type().name(), typeid(nodes).name()) == 0)
        getFromMessage(message, "blockNodes", nodes);
    else if (getFromMessage(message, "blockNodes", blocks))
        nodes.assign(blocks.begin(), blocks.end());
    theLibrary->selectBlocks(nodes);
}

void kxAnimLibraryWidget::pastedAnimations(kxMessage&)
{
    if (theLibrary != nullptr)
        theLibrary->rebuild(true);
}

QStringList kxAnimLibraryWidget::mimeTypes() const
{
    return {QLatin1String(kxAnimLibraryPayload::MimeType)};
}

Qt::DropActions kxAnimLibraryWidget::supportedDropActions() const
{
    return Qt::CopyAction;
}

QMimeData* kxAnimLibraryWidget::mimeData(const QList<QTreeWidgetItem*> items) const
{
    return items.isEmpty() ? nullptr : dragPayload(kxAnimLibraryPayload::MimeType, kxAnimLibraryRows::payloadOf);
}

void kxAnimLibraryWidget::dragMoveEvent(QDragMoveEvent* event)
{
    QTreeView::dragMoveEvent(event);
    refuseOverItself(event, kxAnimLibraryPayload::MimeType);
}

bool kxAnimLibraryWidget::dropMimeData(QTreeWidgetItem* parent, int, const QMimeData* mime, Qt::DropAction action)
{
    if (action != Qt::CopyAction || !kxAnimLibraryPayload::isIn(mime))
        return false;
    const kxAnimLibraryPayload payload = kxAnimLibraryPayload::of(mime);
    if (parent == nullptr)
        kxAnimLibraryMoves::leaveGroups(payload);
    else if (showsGroup(parent))
        kxAnimLibraryMoves::moveToGroup(payload, parent->text(0).toStdString());
    else if (const NodePtr node = sceneNode(parent))
        kxAnimLibraryMoves::moveToNode(payload, node);
    else if (const MaterialPtr material = rowOf(parent)->material())
        kxAnimLibraryMoves::moveToMaterial(payload, material);
    else
        return false;
    rebuild(true);
    return true;
}

QString kxAnimLibraryWidget::hint() const
{
    return _showsHits ? tr("Nothing found") : tr("No animations yet. Select an object and press Ctrl+K.");
}
