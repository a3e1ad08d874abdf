#include <trees/kxAnimLibraryRows.h>

#include <trees/kxAnimTreeWidgetItem.h>

#include <kxIconManager.h>

#include <QTreeWidgetItemIterator>

using namespace osg;

kxAnimTreeWidgetItem* kxAnimLibraryRows::rowOf(QTreeWidgetItem* item)
{
    return static_cast<kxAnimTreeWidgetItem*>(item);
}

NodePtr kxAnimLibraryRows::sceneNode(QTreeWidgetItem* item)
{
    return item == nullptr || rowOf(item)->animNode() != NullFC ? NodePtr() : rowOf(item)->node();
}

AnimNodePtr kxAnimLibraryRows::animation(QTreeWidgetItem* item)
{
    return item == nullptr ? AnimNodePtr() : rowOf(item)->animNode();
}

bool kxAnimLibraryRows::showsGroup(QTreeWidgetItem* item)
{
    return rowOf(item)->nodeId() == 0 && rowOf(item)->materialId() == 0;
}

kxAnimTreeWidgetItem* kxAnimLibraryRows::makeGroup(const QString& tag)
{
    auto* const row = new kxAnimTreeWidgetItem(true);
    row->setText(0, tag);
    row->setIcon(0, QIcon(kxIconManager::get(QStringLiteral("scenegraph/GroupNode.svg"))));
    return row;
}

kxAnimLibraryPayload::Row kxAnimLibraryRows::payloadOf(QTreeWidgetItem* item)
{
    kxAnimLibraryPayload::Row ids;
    ids.animationId = animation(item).getFieldContainerId();
    if (ids.animationId == 0)
        ids.containerId = sceneNode(item).getFieldContainerId();
    else if (sceneNode(item->parent()) != NullFC)
        ids.containerId = sceneNode(item->parent()).getFieldContainerId();
    else if (item->parent() != nullptr)
        ids.containerId = rowOf(item->parent())->material().getFieldContainerId();
    return ids;
}

int kxAnimLibraryRows::depthOf(const QTreeWidgetItem* item)
{
    int depth = 0;
    for (const QTreeWidgetItem* above = item->parent(); above != nullptr; above = above->parent())
        ++depth;
    return depth;
}

void kxAnimLibraryRows::expandSubtree(QTreeWidgetItem* item, int itemDepth, int depth)
{
    item->setExpanded(itemDepth <= depth);
    for (int i = 0; i < item->childCount(); ++i)
        expandSubtree(item->child(i), itemDepth + 1, depth);
}

kxAnimLibraryRows::List kxAnimLibraryRows::matching(const QTreeWidget& tree,
                                                    const std::function<bool(const kxAnimTreeWidgetItem&)>& matches)
{
    List top, below;
    for (int i = 0; i < tree.topLevelItemCount(); ++i)
    {
        QTreeWidgetItem* const item = tree.topLevelItem(i);
        if (matches(*rowOf(item)))
            top.append(item);
        for (int k = 0; k < item->childCount(); ++k)
            if (matches(*rowOf(item->child(k))))
                below.append(item->child(k));
    }
    return top + below;
}

QHash<unsigned int, QTreeWidgetItem*> kxAnimLibraryRows::byCore(const QTreeWidget& tree)
{
    QHash<unsigned int, QTreeWidgetItem*> rows;
    for (QTreeWidgetItemIterator it(const_cast<QTreeWidget*>(&tree)); *it != nullptr; ++it)
    {
        const unsigned int core = rowOf(*it)->coreId();
        if (core != 0 && !rows.contains(core))
            rows.insert(core, *it);
    }
    return rows;
}
