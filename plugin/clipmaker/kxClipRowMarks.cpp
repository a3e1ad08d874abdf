#include <clipmaker/kxClipRowMarks.h>

#include <clipmaker/kxAnimClipStructureWidget.h>
#include <trees/kxAnimTreeWidgetItem.h>

kxClipRowMarks::kxClipRowMarks(kxAnimClipStructureWidget* tree) : QStyledItemDelegate(tree), _tree(tree) {}

void kxClipRowMarks::setNodes(const QSet<unsigned int>& nodes)
{
    if (nodes == _nodes)
        return;
    _nodes = nodes;
    _tree->viewport()->update();
}

void kxClipRowMarks::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    const auto* const row = dynamic_cast<const kxAnimTreeWidgetItem*>(_tree->itemFromIndex(index));
    option->font.setBold(row != nullptr && _nodes.contains(row->nodeId()));
}
