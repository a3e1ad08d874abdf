#include <curveeditor/edits/kxAnimRemoval.h>
#include <frame/kxPaneHint.h>
#include <trees/kxAnimTreeWidget.h>
#include <trees/kxAnimTreeWidgetItem.h>

#include <kxScenegraph.h>

#include <QAction>
#include <QDrag>
#include <QDragMoveEvent>
#include <QEvent>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QRegExp>
#include <QSet>
#include <QTreeWidgetItemIterator>

#include <algorithm>
#include <functional>

std::vector<kxAnimTreeWidget*> kxAnimTreeWidget::_trees;
QMap<unsigned int, QTreeWidgetItem*> kxAnimTreeWidget::_itemMap;
QMap<unsigned int, kxAnimTreeWidget::ItemState> kxAnimTreeWidget::_stateMap;

namespace
{
/// Calls `act` with each row of the tree, in the order of the tree.
template <class Act>
void forEachRow(QTreeWidget* tree, Act act)
{
    for (QTreeWidgetItemIterator item(tree); *item != nullptr; ++item)
        if (auto* const row = dynamic_cast<kxAnimTreeWidgetItem*>(*item))
            act(row);
}

/// The selected rows. Asking each row costs a walk through all ranges of the selection.
QSet<QTreeWidgetItem*> selectedSet(const QTreeWidget* tree)
{
    const QList<QTreeWidgetItem*> selected = tree->selectedItems();
    return QSet<QTreeWidgetItem*>(selected.begin(), selected.end());
}

/// Tells whether a name fits what the user searches for. The pattern is compiled once: QTreeWidget::findItems() does it
/// for each row.
std::function<bool(const QString&)> matcher(const QString& text)
{
    const QLatin1Char quote('"');
    if (text.size() < 2 || !text.startsWith(quote) || !text.endsWith(quote))
        return [text](const QString& name) { return name.contains(text, Qt::CaseInsensitive); };
    const QRegExp pattern(text.mid(1, text.size() - 2), Qt::CaseInsensitive, QRegExp::Wildcard);
    return [pattern](const QString& name) { return pattern.exactMatch(name); };
}

/// The whole rows of `indexes`, which are in the order of the tree, with neighbours in one range. The selection model's
/// own way to whole rows costs the square of the count.
QItemSelection rangesOf(const QModelIndexList& indexes)
{
    QItemSelection selection;
    for (int i = 0, end = 0; i < indexes.size(); i = end)
    {
        for (end = i + 1; end < indexes.size() && indexes[end].row() == indexes[end - 1].row() + 1 &&
                          indexes[end].parent() == indexes[i].parent();)
            ++end;
        const int lastColumn = indexes[i].model()->columnCount(indexes[i].parent()) - 1;
        selection.append(QItemSelectionRange(indexes[i], indexes[end - 1].sibling(indexes[end - 1].row(), lastColumn)));
    }
    return selection;
}

void appendMembers(const QList<kxAnimTreeWidgetItem*>& items, const QSet<QTreeWidgetItem*>& set,
                   QList<kxAnimTreeWidgetItem*>& members)
{
    for (kxAnimTreeWidgetItem* item : items)
        if (set.contains(item))
            members.append(item);
}
} // namespace

kxAnimTreeWidget::kxAnimTreeWidget(QWidget* parent)
    : QTreeWidget(parent), _contextMenu(new QMenu), _hiddenTree(new QTreeWidget)
{
    _trees.push_back(this);
    setAnimated(true);
    setRootIsDecorated(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setEditTriggers(QAbstractItemView::SelectedClicked);
    setExpandsOnDoubleClick(true);
    setTextElideMode(Qt::ElideMiddle); // names that begin alike differ at their ends
    _hiddenTree->setSortingEnabled(false);
    _hiddenTree->hide();

    _playAction = _contextMenu->addAction(tr("Play"), this, SLOT(playSelected()));
    _resetAction = _contextMenu->addAction(tr("Reset"), this, SLOT(resetSelected()));
    _contextMenu->addSeparator();
    auto* const deselect = new QAction(tr("Deselect all"), this);
    deselect->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A));
    deselect->setShortcutContext(Qt::WidgetShortcut);
    connect(deselect, SIGNAL(triggered()), this, SLOT(clearSelection()));
    addAction(deselect);

    connect(this, SIGNAL(customContextMenuRequested(const QPoint&)), this, SLOT(showContextMenu(const QPoint&)));
    connect(this, SIGNAL(itemChanged(QTreeWidgetItem*, int)), this, SLOT(changedItem(QTreeWidgetItem*, int)));
    connect(this, SIGNAL(itemSelectionChanged()), this, SLOT(updateContextMenu()));
}

kxAnimTreeWidget::~kxAnimTreeWidget()
{
    disconnect(model(), nullptr, this, nullptr); // it is reset once more below, when a derived tree is gone
    _trees.erase(std::remove(_trees.begin(), _trees.end(), this), _trees.end());
    delete _contextMenu;
    delete _hiddenTree;
}

kxAnimTreeWidgetItem* kxAnimTreeWidget::row(QTreeWidgetItem* item)
{
    return dynamic_cast<kxAnimTreeWidgetItem*>(item);
}

void kxAnimTreeWidget::collectTopLevelItems(QList<kxAnimTreeWidgetItem*>& items) const
{
    for (int i = 0; i < topLevelItemCount(); ++i)
        if (kxAnimTreeWidgetItem* const item = row(topLevelItem(i)))
            items.append(item);
}

void kxAnimTreeWidget::collectSelectedTopLevelItems(QList<kxAnimTreeWidgetItem*>& items) const
{
    QList<kxAnimTreeWidgetItem*> all;
    collectTopLevelItems(all);
    appendMembers(all, selectedSet(this), items);
}

void kxAnimTreeWidget::collectChildItems(QList<kxAnimTreeWidgetItem*>& items) const
{
    for (int i = 0; i < topLevelItemCount(); ++i)
        for (int j = 0; j < topLevelItem(i)->childCount(); ++j)
            if (kxAnimTreeWidgetItem* const item = row(topLevelItem(i)->child(j)))
                items.append(item);
}

void kxAnimTreeWidget::collectSelectedChildItems(QList<kxAnimTreeWidgetItem*>& items) const
{
    QList<kxAnimTreeWidgetItem*> all;
    collectChildItems(all);
    appendMembers(all, selectedSet(this), items);
}

void kxAnimTreeWidget::collectTopSelectedItems(QList<kxAnimTreeWidgetItem*>& items) const
{
    const QList<QTreeWidgetItem*> selected = selectedItems();
    const QSet<QTreeWidgetItem*> isSelected(selected.begin(), selected.end());
    QSet<QTreeWidgetItem*> taken;
    for (kxAnimTreeWidgetItem* item : items)
        taken.insert(item);
    for (QTreeWidgetItem* item : selected)
    {
        QTreeWidgetItem* top = item;
        for (QTreeWidgetItem* above = item->parent(); above != nullptr; above = above->parent())
            if (isSelected.contains(above))
                top = above;
        if (kxAnimTreeWidgetItem* const found = row(top); found != nullptr && !taken.contains(top))
        {
            taken.insert(top);
            items.append(found);
        }
    }
}

void kxAnimTreeWidget::saveItemStates()
{
    _stateMap.clear();
    const QSet<QTreeWidgetItem*> selected = selectedSet(this);
    forEachRow(this,
               [&selected](kxAnimTreeWidgetItem* item)
               {
                   if (item->node() != osg::NullFC)
                       _stateMap[item->nodeId()] = {item->isExpanded(), selected.contains(item)};
               });
}

void kxAnimTreeWidget::restoreItemStates()
{
    const QSet<QTreeWidgetItem*> selected = selectedSet(this);
    QModelIndexList select;
    QModelIndexList deselect;
    forEachRow(this,
               [&](kxAnimTreeWidgetItem* item)
               {
                   const auto state = _stateMap.constFind(item->nodeId());
                   if (state == _stateMap.constEnd() || item->node() == osg::NullFC)
                       return;
                   if (item->isExpanded() != state->expanded)
                       expandAtOnce(item, state->expanded);
                   if (selected.contains(item) == state->selected)
                       return;
                   (state->selected ? select : deselect).append(indexFromItem(item));
               });
    if (!deselect.isEmpty())
        selectionModel()->select(rangesOf(deselect), QItemSelectionModel::Deselect);
    if (!select.isEmpty())
        selectionModel()->select(rangesOf(select), QItemSelectionModel::Select);
}

void kxAnimTreeWidget::expandAtOnce(QTreeWidgetItem* item, bool expanded)
{
    const bool animated = isAnimated();
    setAnimated(false);
    item->setExpanded(expanded);
    setAnimated(animated);
}

void kxAnimTreeWidget::updateNames()
{
    for (kxAnimTreeWidget* tree : _trees)
    {
        const QSignalBlocker blocker(tree);
        forEachRow(tree,
                   [](kxAnimTreeWidgetItem* item)
                   {
                       const osg::NodePtr node = item->node();
                       if (node != osg::NullFC && !item->isChannel())
                           item->setText(0, QString::fromStdString(kxNodeUtils::getName(node)));
                   });
    }
}

void kxAnimTreeWidget::bindRowsAgain()
{
    const QSignalBlocker blocker(this);
    forEachRow(this,
               [](kxAnimTreeWidgetItem* item)
               {
                   const osg::NodePtr node = item->node();
                   if (node != osg::NullFC && node->getCore().getFieldContainerId() != item->coreId())
                       item->setNode(node, false, false);
               });
}

std::vector<unsigned int> kxAnimTreeWidget::selectedIds() const
{
    std::vector<unsigned int> ids;
    for (QTreeWidgetItem* const item : selectedItems())
        if (const kxAnimTreeWidgetItem* const selected = row(item))
            ids.push_back(selected->nodeId() != 0 ? selected->nodeId() : selected->materialId());
    std::sort(ids.begin(), ids.end());
    return ids;
}

QSize kxAnimTreeWidget::sizeHint() const
{
    return QSize(100, 300);
}

bool kxAnimTreeWidget::event(QEvent* event)
{
    const QEvent::Type type = event->type();
    if (type == QEvent::ShortcutOverride || type == QEvent::KeyPress || type == QEvent::FocusOut)
        edit(currentIndex(), DoubleClicked, nullptr); // ends the wait, and edits nothing
    return QTreeWidget::event(event);
}

bool kxAnimTreeWidget::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event)
{
    return trigger != AnyKeyPressed && QTreeWidget::edit(index, trigger, event);
}

void kxAnimTreeWidget::paintEvent(QPaintEvent* event)
{
    QTreeWidget::paintEvent(event);
    if (topLevelItemCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setFont(font());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::WindowText));
    kxPaneHint::paint(painter, viewport()->rect(), hint());
}

void kxAnimTreeWidget::startDrag(Qt::DropActions supportedActions)
{
    const QList<QTreeWidgetItem*> items = selectedItems();
    if (items.isEmpty())
        return;
    QMimeData* const payload = mimeData(items);
    if (payload == nullptr)
        return;
    auto* const drag = new QDrag(this); // Qt deletes it, and the payload with it, when the drag has ended
    drag->setMimeData(payload);
    drag->exec(supportedActions);
}

QMimeData*
kxAnimTreeWidget::dragPayload(const char* format,
                              const std::function<kxAnimLibraryPayload::Row(kxAnimTreeWidgetItem* item)>& rowOf) const
{
    kxAnimLibraryPayload payload;
    payload.rightButton = QGuiApplication::mouseButtons() == Qt::RightButton;
    QList<kxAnimTreeWidgetItem*> dragged;
    collectTopSelectedItems(dragged);
    for (kxAnimTreeWidgetItem* const item : dragged)
        payload.rows.push_back(rowOf(item));
    auto* const mime = new QMimeData;
    mime->setData(QLatin1String(format), payload.encode());
    return mime;
}

void kxAnimTreeWidget::refuseOverItself(QDragMoveEvent* event, const char* format) const
{
    if (!event->mimeData()->hasFormat(QLatin1String(format)))
        return;
    // A row belongs to a dragged one exactly where it is selected or one above it is.
    for (const QTreeWidgetItem* row = itemAt(event->pos()); row != nullptr; row = row->parent())
        if (row->isSelected())
        {
            event->ignore();
            return;
        }
}

void kxAnimTreeWidget::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    // Each range is looked up on the screen by a walk through the rows; with many of them the whole view is drawn anew
    // at less cost.
    constexpr int ManyRanges = 50;
    const bool drawsAll = updatesEnabled() && selected.size() + deselected.size() > ManyRanges;
    if (drawsAll)
        setUpdatesEnabled(false);
    QTreeWidget::selectionChanged(selected, deselected);
    if (drawsAll)
        setUpdatesEnabled(true);
}

void kxAnimTreeWidget::buildItems(const osg::AnimNodePtr& root)
{
    _itemMap.clear();
    const auto build = [&root](const osg::NodePtr& node)
    {
        const osg::NodeCorePtr core = node->getCore();
        if (core == osg::NullFC || core->getType().isDerivedFrom(osg::AnimCurve::_type))
            return osg::Action::Continue;
        const osg::NodePtr parent = node->getParent();
        if (parent == osg::NullFC)
        {
            _itemMap.insert(node->getId(), nullptr);
            return osg::Action::Continue;
        }
        const auto above = _itemMap.constFind(parent->getId());
        // Below a node that is left out nobody would ask for the row.
        if (above == _itemMap.constEnd() && node != root && parent != root)
            return osg::Action::Continue;
        auto* const item = new kxAnimTreeWidgetItem(above == _itemMap.constEnd() ? nullptr : *above, true);
        item->setNode(node, true, true);
        _itemMap.insert(node->getId(), item);
        return osg::Action::Continue;
    };
    osg::traverse(root, build);
}

QTreeWidgetItem* kxAnimTreeWidget::builtItem(const osg::NodePtr& node)
{
    return _itemMap.value(node.getFieldContainerId(), nullptr);
}

QTreeWidgetItem* kxAnimTreeWidget::buildItem(const osg::AnimNodePtr& root)
{
    buildItems(root);
    return builtItem(root);
}

void kxAnimTreeWidget::rebuild(kxAnimTreeWidgetItem* item)
{
    if (item == nullptr)
        return;
    saveItemStates();
    rebuildChildren(item);
    restoreItemStates();
}

void kxAnimTreeWidget::rebuildChildren(kxAnimTreeWidgetItem* item)
{
    qDeleteAll(item->takeChildren());

    std::vector<osg::AnimNodePtr> animations;
    if (const osg::AnimNodePtr animation = item->animNode())
    {
        for (const osg::NodePtr& child : animation->getChildren())
            animations.push_back(osg::AnimNodePtr::dcast(child));
    }
    else
    {
        const osg::NodePtr node = item->node();
        const osg::FieldContainerPtr container =
            node != osg::NullFC ? osg::FieldContainerPtr(node) : osg::FieldContainerPtr(item->material());
        if (const osg::AnimAttachmentPtr attachment = kxAnimManager::the()->getAnimAttachment(container))
            attachment->getTopLevelAnimations(animations, true);
    }
    QList<QTreeWidgetItem*> children;
    for (const osg::AnimNodePtr& animation : animations)
        if (QTreeWidgetItem* const child = buildItem(animation))
            children.append(child);
    item->addChildren(children);
}

void kxAnimTreeWidget::rebuildFrom(std::vector<osg::AnimNodePtr> nodes)
{
    clear();
    setSortingEnabled(false);
    QList<QTreeWidgetItem*> items;
    for (const osg::AnimNodePtr& node : nodes)
    {
        if (node == osg::NullFC || node->getCore() == osg::NullFC)
            continue;
        auto* const item = new kxAnimTreeWidgetItem(true);
        item->setNode(node, true, true);
        for (const osg::NodePtr& child : node->getChildren())
            if (osg::AnimNodePtr::dcast(child) != osg::NullFC && child->getCore() != osg::NullFC)
                (new kxAnimTreeWidgetItem(item, true))->setNode(child, true, true);
        items.append(item);
    }
    addTopLevelItems(items);
    for (QTreeWidgetItem* item : items)
        item->setExpanded(true);
    setSortingEnabled(true);
    sortItems(0, Qt::AscendingOrder);
    resizeColumnToContents(0);
}

void kxAnimTreeWidget::rebuildFrom(std::vector<osg::MaterialPtr>) {}

void kxAnimTreeWidget::parkItems()
{
    saveItemStates();
    _hiddenTree->clear();
    _hiddenTree->addTopLevelItems(invisibleRootItem()->takeChildren());
}

void kxAnimTreeWidget::setSearchLine(QLineEdit* line)
{
    _searchLine = line;
    connect(line, SIGNAL(textChanged(QString)), this, SLOT(search(QString)));
}

void kxAnimTreeWidget::endSearch()
{
    if (_searchLine != nullptr)
        _searchLine->clear();
}

void kxAnimTreeWidget::search(QString text)
{
    if (text.isEmpty())
    {
        rebuild(false);
        _stateMap = _statesBeforeSearch;
        restoreItemStates();
        _searchText = text;
        _hiddenTree->clear();
        return;
    }
    if (_searchText.isEmpty())
    {
        parkItems();
        _statesBeforeSearch = _stateMap;
    }
    showHits(text);
    _searchText = text;
}

void kxAnimTreeWidget::showHits(const QString& text)
{
    const std::function<bool(const QString&)> matches = matcher(text);
    std::vector<osg::AnimNodePtr> animations;
    forEachRow(_hiddenTree,
               [&](kxAnimTreeWidgetItem* item)
               {
                   const osg::AnimNodePtr animation = item->animNode();
                   // What was deleted during the search lives on the undo stack.
                   if (animation != osg::NullFC && matches(item->text(0)) && kxIsPlaced(animation))
                       animations.push_back(animation);
               });
    rebuildFrom(animations);
}

bool kxAnimTreeWidget::fillAnew(bool saveStates, const std::function<void()>& fill)
{
    const std::vector<unsigned int> selected = selectedIds();
    // Who follows the selection would take the moment without rows for the end of it.
    const QSignalBlocker blocker(this);
    if (saveStates)
        saveItemStates();
    fill();
    if (saveStates)
        restoreItemStates();
    if (_searchLine != nullptr && !_searchLine->text().isEmpty())
    {
        parkItems();
        showHits(_searchLine->text());
        restoreItemStates();
    }
    return selectedIds() != selected;
}
