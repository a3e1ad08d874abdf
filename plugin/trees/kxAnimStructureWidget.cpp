#include <trees/kxAnimStructureWidget.h>

#include <clipmaker/edits/kxClipNodes.h>
#include <clipmaker/edits/kxClipStructure.h>
#include <trees/kxAnimLibraryPayload.h>
#include <trees/kxAnimMimeData.h>
#include <trees/kxAnimTreeWidgetItem.h>
#include <trees/kxOutOfParent.h>

#include <kxAnimManager.h>
#include <kxScenegraph.h>

#include <QAction>
#include <QDropEvent>
#include <QHeaderView>
#include <QMenu>

using namespace osg;

namespace
{
/// `node` as a child of `parent`: a node of the structure, or of nowhere, moves; one that belongs to an object or a
/// clip stays there, and a clone of it goes below `parent`. False where `parent` is the node itself or is below it.
bool addToStructure(const NodePtr& parent, const AnimNodePtr& node)
{
    if (kxNodeUtils::hasParent(parent, node))
        return false;
    const bool moves =
        node->getParent() == NullFC || kxNodeUtils::hasParent(node, kxAnimManager::the()->sceneStructureRoot());
    return kxClipStructure::moveInto(moves ? node : cloneAnimTree(node, true), parent);
}

/// The node of a row, or the structure root without a row; null for a row of anything else, or of a dead node.
NodePtr targetOf(const QTreeWidgetItem* row)
{
    return row == nullptr ? NodePtr(kxAnimManager::the()->sceneStructureRoot())
                          : static_cast<const kxAnimTreeWidgetItem*>(row)->node();
}
} // namespace

kxAnimStructureWidget::kxAnimStructureWidget(QWidget* parent) : kxAnimTreeWidget(parent)
{
    setColumnCount(1);
    setDefaultDropAction(Qt::MoveAction);
    setHeaderHidden(true);

    const auto addEntry = [this](const QString& text, const QKeySequence& shortcut, const char* slot)
    {
        QAction* const action = contextMenu()->addAction(text);
        action->setShortcut(shortcut);
        action->setShortcutContext(Qt::WidgetShortcut);
        connect(action, SIGNAL(triggered()), this, slot);
        addAction(action);
    };
    addEntry(tr("Paste"), QKeySequence::Paste, SLOT(pasteClone()));
    addEntry(tr("Delete"), QKeySequence(Qt::Key_Delete), SLOT(remove()));
    contextMenu()->addSeparator();
    addEntry(tr("Create group"), QKeySequence(Qt::CTRL + Qt::Key_G), SLOT(createGroup()));
}

void kxAnimStructureWidget::rebuild(bool saveStates)
{
    if (saveStates)
        saveItemStates();
    clear();
    QList<QTreeWidgetItem*> rows;
    if (const AnimNodePtr root = kxAnimManager::the()->sceneStructureRoot())
    {
        // The builder makes no row for a node without a parent.
        const kxOutOfParent detached(root, 0);
        for (const NodePtr& child : root->getChildren())
            if (const AnimNodePtr animation = AnimNodePtr::dcast(child))
                if (QTreeWidgetItem* const row = buildItem(animation))
                    rows.append(row);
    }
    addTopLevelItems(rows);
    if (saveStates)
        restoreItemStates();
}

void kxAnimStructureWidget::createGroup()
{
    const AnimNodePtr node = kxClipNodes::make(GroupBase::create(), tr("Group").toStdString());
    kxAnimManager::the()->addToSceneStructure(node);
    auto* const row = new kxAnimTreeWidgetItem(true);
    row->setNode(node, true, true);
    addTopLevelItem(row);
}

void kxAnimStructureWidget::showContextMenu(QPoint p)
{
    kxAnimTreeWidget::showContextMenu(p);
}

void kxAnimStructureWidget::changedItem(QTreeWidgetItem* item, int column)
{
    if (item != nullptr && column == 0)
        updateNames(); // the row has named its node
}

QStringList kxAnimStructureWidget::mimeTypes() const
{
    return {QLatin1String(kxAnimLibraryPayload::MimeType), QLatin1String(MimeType)};
}

QMimeData* kxAnimStructureWidget::mimeData(const QList<QTreeWidgetItem*> items) const
{
    QMimeData* const mime = QTreeWidget::mimeData(items);
    if (auto* const nodes = qobject_cast<kxAnimMimeData*>(mime))
        nodes->setFormat(QLatin1String(MimeType));
    return mime;
}

bool kxAnimStructureWidget::dropMimeData(QTreeWidgetItem* parent, int, const QMimeData* mime, Qt::DropAction)
{
    if (parent == nullptr)
        return false;
    const NodePtr target = targetOf(parent);
    if (target == NullFC || target->getCore() == NullFC ||
        target->getCore()->getType().getGroupId() != Group::_type.getGroupId())
        return false;
    const auto* const payload = qobject_cast<const kxAnimMimeData*>(mime);
    if (payload == nullptr || payload->format() != QLatin1String(kxAnimLibraryPayload::MimeType))
        return false;
    std::vector<AnimNodePtr> nodes;
    payload->getNodes(nodes);
    for (const AnimNodePtr& node : nodes)
    {
        const AnimNodePtr copy = cloneAnimTree(node, true);
        kxClipStructure::moveInto(copy, target);
        auto* const row = new kxAnimTreeWidgetItem(true);
        row->setNode(copy, true, true);
        parent->addChild(row);
    }
    return true;
}

void kxAnimStructureWidget::dropEvent(QDropEvent* event)
{
    const NodePtr target = targetOf(itemAt(event->pos()));
    const auto* const payload = qobject_cast<const kxAnimMimeData*>(event->mimeData());
    const bool taken = target != NullFC && target->getCore() != NullFC && payload != nullptr &&
                       payload->format() == QLatin1String(MimeType);
    bool changed = false;
    if (taken)
    {
        std::vector<AnimNodePtr> nodes;
        payload->getNodes(nodes);
        for (const AnimNodePtr& node : nodes)
            changed = addToStructure(target, node) || changed;
    }
    QTreeWidget::dropEvent(event);
    if (changed)
        rebuild(true); // the view moves its own rows at most
}
