#include <clipmaker/kxAnimClipStructureWidget.h>

#include <clipmaker/edits/kxClipNodes.h>
#include <clipmaker/edits/kxClipStructure.h>
#include <clipmaker/kxClipRows.h>
#include <frame/kxMessageRead.h>
#include <trees/kxAnimLibraryPayload.h>
#include <trees/kxAnimTreeWidgetItem.h>
#include <trees/kxOutOfParent.h>

#include <kxIconManager.h>
#include <kxMessageNames.h>
#include <kxPlatform.h>
#include <osg/FieldContainerFactory.h>

#include <QAction>
#include <QDragMoveEvent>
#include <QHeaderView>
#include <QInputDialog>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QStyledItemDelegate>
#include <QTimer>

#include <algorithm>

using namespace osg;

namespace
{
kxAnimClipStructureWidget* theTree = nullptr; // for the callbacks, which get no object

/// The column of locks holds check boxes and no text to edit.
class NoEditorDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QWidget* createEditor(QWidget*, const QStyleOptionViewItem&, const QModelIndex&) const override { return nullptr; }
};

/// Null for a row of a dead node, and without a row.
AnimNodePtr nodeOf(const QTreeWidgetItem* row)
{
    const auto* const found = dynamic_cast<const kxAnimTreeWidgetItem*>(row);
    return found == nullptr ? AnimNodePtr() : found->animNode();
}

/// The clip of a row, null where the row is of anything else.
AnimNodePtr clipOf(const QTreeWidgetItem* row)
{
    const AnimNodePtr node = nodeOf(row);
    return kxClipStructure::isClip(node) ? node : AnimNodePtr();
}

/// Gives the rows below `row` their locks while they are in no tree: there, each is announced and looked up in the
/// view.
void showLocks(QTreeWidgetItem* row)
{
    for (int i = 0; i < row->childCount(); ++i)
    {
        QTreeWidgetItem* const child = row->child(i);
        if (const AnimNodePtr node = nodeOf(child))
            child->setCheckState(1, node->getLocked() ? Qt::Checked : Qt::Unchecked);
        showLocks(child);
    }
}

kxAnimTreeWidgetItem* makeRow(const AnimNodePtr& node)
{
    auto* const row = new kxAnimTreeWidgetItem(true);
    row->setNode(node, true, true);
    return row;
}
} // namespace

kxAnimClipStructureWidget::kxAnimClipStructureWidget(QWidget* parent)
    : kxAnimTreeWidget(parent), _firstColumnPause(new QTimer(this)), _instance(theTree, this)
{
    _firstColumnPause->setSingleShot(true);
    _firstColumnPause->setInterval(0);
    connect(_firstColumnPause, &QTimer::timeout, this, &kxAnimClipStructureWidget::settleFirstColumn);
    setColumnCount(2);
    setHeaderLabels({tr("Clips"), QString()});
    headerItem()->setIcon(1, QIcon(kxIconManager::get(QStringLiteral("scenegraph/lockTrack.svg"))));
    const float dpi = kxPlatform::getDpiScaleX();
    header()->setSortIndicator(0, Qt::AscendingOrder);
    header()->setMinimumSectionSize(int(16 * dpi));
    header()->setStretchLastSection(false);
    setColumnWidth(1, int(16 * dpi));
    setColumnWidth(0, int(130 * dpi));
    setItemDelegateForColumn(1, new NoEditorDelegate(this));
    setDragDropMode(QAbstractItemView::DragDrop);
    setDragEnabled(true);
    setDropIndicatorShown(true);
    setDefaultDropAction(Qt::CopyAction);
    connect(this, SIGNAL(itemExpanded(QTreeWidgetItem*)), SLOT(resizeFirstColumn(QTreeWidgetItem*)));
    // Whoever empties the tree ends the list of hits.
    connect(model(), &QAbstractItemModel::modelReset, this, [this] { _showsHits = false; });
    createMenu();

    _callbacks.add(kxMessageName::PastedAnimations, &kxAnimClipStructureWidget::pastedAnimations);
    _callbacks.add(kxMessageName::CreateNewClip, &kxAnimClipStructureWidget::createNewClip);
    updateContextMenu();
}

void kxAnimClipStructureWidget::createMenu()
{
    const auto addEntry = [this](const QString& text, const char* slot, const QKeySequence& shortcut = QKeySequence())
    {
        QAction* const action = contextMenu()->addAction(text, this, slot);
        if (!shortcut.isEmpty())
        {
            action->setShortcut(shortcut);
            action->setShortcutContext(Qt::WidgetShortcut);
            addAction(action);
        }
        return action;
    };
    addEntry(tr("New Clip"), SLOT(newClip()));
    _copy = addEntry(tr("Copy"), SLOT(copy()), QKeySequence::Copy);
    _paste = addEntry(tr("Paste"), SLOT(pasteCloneTriggered()), QKeySequence::Paste);
    _duplicate = addEntry(tr("Duplicate"), SLOT(duplicateSpecial()), QKeySequence(Qt::CTRL + Qt::Key_D));
    _duplicateFlipped = addEntry(tr("Duplicate Flipped"), SLOT(duplicateFlippedSpecial()));
    _delete = addEntry(tr("Delete"), SLOT(remove()), QKeySequence(Qt::Key_Delete));
    _rename = addEntry(tr("Rename"), SLOT(startRename()), QKeySequence(Qt::CTRL + Qt::Key_R));
    contextMenu()->addSeparator();
    _information = addEntry(tr("Information..."), SLOT(info()), QKeySequence(Qt::CTRL + Qt::Key_I));
}

void kxAnimClipStructureWidget::updateContextMenu()
{
    if (_information != nullptr)
    {
        const int count = selectedItems().size();
        for (QAction* action : {_copy, _duplicate, _duplicateFlipped, _delete})
            action->setEnabled(count >= 1);
        _paste->setEnabled(!selectedClipRows().isEmpty());
        _rename->setEnabled(count == 1);
        _information->setEnabled(count == 1);
    }
    kxAnimTreeWidget::updateContextMenu();
}

AnimNodePtr kxAnimClipStructureWidget::selectedClip() const
{
    const QList<QTreeWidgetItem*> rows = selectedItems();
    return rows.size() == 1 ? clipOf(rows.front()) : AnimNodePtr();
}

QList<QPersistentModelIndex> kxAnimClipStructureWidget::selectedClipRows() const
{
    QList<QPersistentModelIndex> clips;
    for (QTreeWidgetItem* item : selectedItems())
        if (clipOf(item) != NullFC)
            clips.append(indexFromItem(item));
    return clips;
}

void kxAnimClipStructureWidget::rebuild(bool saveStates)
{
    const bool changed = fillAnew(saveStates, [this] { fill(); });
    fitFirstColumn();
    _firstColumnWaits = false;
    resizeColumnToContents(1);
    if (changed || !selectedItems().isEmpty())
        Q_EMIT itemSelectionChanged(); // whoever shows what is selected follows it
}

void kxAnimClipStructureWidget::fill()
{
    setSortingEnabled(false);
    setAnimated(false);
    clear();
    QList<QTreeWidgetItem*> rows;
    if (const AnimNodePtr root = kxAnimManager::the()->clipStructureRoot())
    {
        const kxOutOfParent detached(root, 1);
        for (const NodePtr& child : root->getChildren())
            if (const AnimNodePtr animation = AnimNodePtr::dcast(child))
                if (QTreeWidgetItem* const row = buildItem(animation))
                {
                    showLocks(row);
                    rows.append(row);
                }
    }
    addTopLevelItems(rows);
    setSortingEnabled(true);
    setAnimated(true);
}

void kxAnimClipStructureWidget::refresh()
{
    if (_showsHits || !followClips())
        return rebuild(true);
    viewport()->update();
    if (!selectedItems().isEmpty())
        Q_EMIT itemSelectionChanged(); // whoever shows what is selected follows it
}

bool kxAnimClipStructureWidget::followClips()
{
    std::vector<kxClipRows::Missing> missing;
    {
        const QSignalBlocker blocker(this);
        if (!kxClipRows::follow(invisibleRootItem(), kxAnimManager::the()->clipStructureRoot(), missing))
            return false;
    }
    bool isSeen = false;
    for (const kxClipRows::Missing& entry : missing)
    {
        QTreeWidgetItem* const row = buildItem(entry.node);
        if (row == nullptr)
            continue;
        showLocks(row);
        if (entry.parent != invisibleRootItem())
            row->setCheckState(1, entry.node->getLocked() ? Qt::Checked : Qt::Unchecked);
        entry.parent->addChild(row); // at its place in the order
        isSeen = isSeen || (entry.parent != invisibleRootItem() && entry.parent->isExpanded());
    }
    if (isSeen)
        resizeFirstColumn(nullptr);
    return true;
}

void kxAnimClipStructureWidget::rebuildFrom(std::vector<AnimNodePtr> nodes)
{
    clear();
    _showsHits = true;
    setSortingEnabled(false);
    const auto end = std::find(nodes.begin(), nodes.end(), AnimNodePtr());
    QList<QTreeWidgetItem*> rows;
    for (auto node = nodes.begin(); node != end; ++node)
        rows.append(makeRow(*node));
    addTopLevelItems(rows);
    if (end != nodes.end())
        return;
    setSortingEnabled(true);
    sortItems(0, Qt::AscendingOrder);
    updateCheckStates();
}

void kxAnimClipStructureWidget::changedItem(QTreeWidgetItem*, int)
{
    updateNames(); // the row has named its node
}

void kxAnimClipStructureWidget::newClip(bool ignoreSelection)
{
    const QList<QPersistentModelIndex> clips = ignoreSelection ? QList<QPersistentModelIndex>() : selectedClipRows();
    if (clips.isEmpty())
        addTopLevelClip();
    for (const QPersistentModelIndex& index : clips)
        addClipBelow(index);
    settleFirstColumn();
    updateCheckStates(); // a new row shows its lock
}

void kxAnimClipStructureWidget::addClipBelow(const QPersistentModelIndex& index)
{
    const AnimNodePtr parent = clipOf(itemFromIndex(index));
    if (parent == NullFC)
        return;
    addRow(index, kxClipStructure::addClip(tr("Clip").toStdString(), parent));
    if (index.isValid())
        expandAtOnce(itemFromIndex(index), true); // shows what was made
}

void kxAnimClipStructureWidget::addRow(const QPersistentModelIndex& parent, const AnimNodePtr& node)
{
    if (parent.isValid())
        itemFromIndex(parent)->addChild(buildItem(node));
}

void kxAnimClipStructureWidget::addTopLevelClip()
{
    endSearch();
    QTreeWidgetItem* const row = makeRow(kxClipStructure::addClip(tr("Clip").toStdString(), AnimNodePtr()));
    addTopLevelItem(row);
    selectAlone(indexFromItem(row));
}

void kxAnimClipStructureWidget::selectAlone(const QPersistentModelIndex& index)
{
    clearSelection();
    if (!index.isValid())
        return;
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    // Not by the row itself, which writes to itself after whoever is notified has made all rows anew.
    selectionModel()->select(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    if (index.isValid())
        scrollTo(index);
}

void kxAnimClipStructureWidget::duplicateSpecial()
{
    duplicateSelected(false);
}

void kxAnimClipStructureWidget::clone()
{
    duplicateSpecial();
}

void kxAnimClipStructureWidget::duplicateFlippedSpecial()
{
    duplicateSelected(true);
}

void kxAnimClipStructureWidget::duplicateSelected(bool flipped)
{
    const std::vector<AnimNodePtr> nodes = selectedAnimations();
    for (const AnimNodePtr& node : nodes)
        kxClipStructure::duplicate(node, flipped);
    if (!nodes.empty())
        rebuild(true);
}

void kxAnimClipStructureWidget::keyPressEvent(QKeyEvent* event)
{
    // The entry is off where no clip is selected, and its key with it: whoever pastes says why nothing comes.
    if (event->matches(QKeySequence::Paste) && !_paste->isEnabled())
        pasteCloneTriggered();
    else
        kxAnimTreeWidget::keyPressEvent(event);
}

void kxAnimClipStructureWidget::pasteCloneTriggered()
{
    Q_EMIT pasteCloneRequested();
}

void kxAnimClipStructureWidget::setFlipped(bool value)
{
    const QList<QTreeWidgetItem*> rows = selectedItems();
    const AnimNodePtr node = rows.size() == 1 ? nodeOf(rows.front()) : AnimNodePtr();
    if (node != NullFC)
        kxClipNodes::setFlipped(node, value);
}

void kxAnimClipStructureWidget::editPostCycles()
{
    const QList<QTreeWidgetItem*> rows = selectedItems();
    const AnimNodePtr node = rows.size() == 1 ? nodeOf(rows.front()) : AnimNodePtr();
    if (node == NullFC)
        return;
    const unsigned int id = node->getId();
    bool ok = false;
    const int cycles =
        QInputDialog::getInt(this, tr("Post cycles"), tr("Cycles:"), node->getPostCycles(), 0, 100000, 1, &ok);
    const AnimNodePtr shown = living<AnimNode>(id); // it may have died while the question was open
    if (ok && shown != NullFC)
        kxClipNodes::setPostCycles(shown, cycles);
}

void kxAnimClipStructureWidget::resizeFirstColumn(QTreeWidgetItem*)
{
    // Measuring walks through the rows on screen and below: once for many rows, not for each.
    _firstColumnWaits = _firstColumnPause->isActive();
    if (_firstColumnWaits)
        return;
    fitFirstColumn();
    _firstColumnPause->start();
}

void kxAnimClipStructureWidget::fitFirstColumn()
{
    resizeColumnToContents(0);
    setColumnWidth(0, std::max(columnWidth(0), viewport()->width() - columnWidth(1)));
}

void kxAnimClipStructureWidget::settleFirstColumn()
{
    if (_firstColumnWaits)
        fitFirstColumn();
    _firstColumnWaits = false;
}

QStringList kxAnimClipStructureWidget::mimeTypes() const
{
    return {QLatin1String(kxAnimLibraryPayload::MimeType), QLatin1String(MimeType)};
}

Qt::DropActions kxAnimClipStructureWidget::supportedDropActions() const
{
    return Qt::CopyAction;
}

QMimeData* kxAnimClipStructureWidget::mimeData(const QList<QTreeWidgetItem*> items) const
{
    const auto idsOf = [](const kxAnimTreeWidgetItem* item) -> kxAnimLibraryPayload::Row {
        return {nodeOf(item).getFieldContainerId(), nodeOf(item->parent()).getFieldContainerId()};
    };
    return items.isEmpty() ? nullptr : dragPayload(MimeType, idsOf);
}

void kxAnimClipStructureWidget::dragMoveEvent(QDragMoveEvent* event)
{
    kxAnimTreeWidget::dragMoveEvent(event);
    refuseOverItself(event, MimeType);
}

bool kxAnimClipStructureWidget::dropMimeData(QTreeWidgetItem* parent, int, const QMimeData* mime, Qt::DropAction action)
{
    if (mime == nullptr || action != Qt::CopyAction)
        return false;
    if (kxAnimLibraryPayload::isIn(mime))
        return dropLibraryRows(parent, mime->data(QLatin1String(kxAnimLibraryPayload::MimeType)));
    if (mime->hasFormat(QLatin1String(MimeType)))
        return dropClipRows(parent, mime->data(QLatin1String(MimeType)));
    return false;
}

bool kxAnimClipStructureWidget::dropLibraryRows(QTreeWidgetItem* parent, const QByteArray& bytes)
{
    const AnimNodePtr clip = kxClipStructure::targetOf(nodeOf(parent));
    if (clip == NullFC)
        return false;
    const QPersistentModelIndex target = indexFromItem(parent);
    for (const kxAnimLibraryPayload::Row& entry : kxAnimLibraryPayload::decode(bytes).rows)
    {
        const AnimNodePtr node = entry.animation();
        if (node == NullFC || node->getCore() == NullFC)
            continue;
        if (const AnimNodePtr clone = kxClipStructure::addClone(node, clip))
            addRow(target, clone);
    }
    updateCheckStates();
    selectAlone(target);
    return true;
}

bool kxAnimClipStructureWidget::dropClipRows(QTreeWidgetItem* parent, const QByteArray& bytes)
{
    const std::vector<kxAnimLibraryPayload::Row> entries = kxAnimLibraryPayload::decode(bytes).rows;
    if (parent == nullptr)
    {
        for (const kxAnimLibraryPayload::Row& entry : entries)
            kxClipStructure::moveToTop(entry.animation());
        rebuild(true);
        return false; // the rows are in their place: the view is to do nothing with what it dragged
    }
    const AnimNodePtr clip = kxClipStructure::targetOf(nodeOf(parent));
    if (clip == NullFC)
        return false;
    bool refusesAll = !entries.empty();
    for (const kxAnimLibraryPayload::Row& entry : entries)
        if (const AnimNodePtr node = entry.animation(); node == NullFC || kxClipStructure::moveInto(node, clip))
            refusesAll = false;
    if (refusesAll)
        return false;
    selectAlone(indexFromItem(parent));
    rebuild(true);
    return true;
}

void kxAnimClipStructureWidget::focusInEvent(QFocusEvent* event)
{
    Q_EMIT gotFocus(this);
    kxAnimTreeWidget::focusInEvent(event);
}

void kxAnimClipStructureWidget::resizeEvent(QResizeEvent* event)
{
    kxAnimTreeWidget::resizeEvent(event);
    resizeFirstColumn(nullptr);
}

QString kxAnimClipStructureWidget::hint() const
{
    return _showsHits ? tr("Nothing found")
                      : tr("No clips yet. Create > Clip makes one; then drag animations onto "
                           "it from the library of the curve editor.");
}

void kxAnimClipStructureWidget::pastedAnimations(kxMessage&)
{
    if (theTree != nullptr)
        theTree->rebuild(true);
}

void kxAnimClipStructureWidget::createNewClip(kxMessage& message)
{
    if (theTree == nullptr)
        return;
    bool ignoreSelection = false;
    getFromMessage(message, "ignoreSelection", ignoreSelection);
    theTree->newClip(ignoreSelection);
    message.set("node", theTree->selectedClip(), true);
}
