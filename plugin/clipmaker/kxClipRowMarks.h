#pragma once

#include <QSet>
#include <QStyledItemDelegate>

class kxAnimClipStructureWidget;

/// Writes the names in the clip tree bold whose bars are selected.
///
/// The tree's own selection is another: the clip in it is where new things go.
class kxClipRowMarks : public QStyledItemDelegate
{
public:
    explicit kxClipRowMarks(kxAnimClipStructureWidget* tree);

    /// The ids of the nodes; rows that come later are marked as well.
    void setNodes(const QSet<unsigned int>& nodes);

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

private:
    kxAnimClipStructureWidget* _tree; // its parent
    QSet<unsigned int> _nodes;
};
