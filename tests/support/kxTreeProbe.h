#pragma once

#include <trees/kxAnimTreeWidgetItem.h>

#include <QAction>
#include <QMenu>
#include <QMimeData>
#include <QTreeWidgetItemIterator>

#include <memory>

/// The entries of a menu, "|" for a line between them.
inline QString kxTextsOf(const QMenu* menu)
{
    QStringList entries;
    for (const QAction* const entry : menu->actions())
        entries << (entry->isSeparator() ? QString("|") : entry->text());
    return entries.join(' ');
}

/// A tree whose protected parts are open, and short words for what it shows.
template <class Tree>
struct kxTreeProbe : Tree
{
    using Tree::contextMenu;
    using Tree::dragMoveEvent;
    using Tree::dropMimeData;
    using Tree::indexFromItem;
    using Tree::mimeData;
    using Tree::showContextMenu;

    /// The row whose texts from the top level down are these, null where there is none.
    kxAnimTreeWidgetItem* row(const QString& path)
    {
        QTreeWidgetItem* found = this->invisibleRootItem();
        for (const QString& text : path.split('/'))
        {
            QTreeWidgetItem* next = nullptr;
            for (int i = 0; found != nullptr && i < found->childCount() && next == nullptr; ++i)
                if (found->child(i)->text(0) == text)
                    next = found->child(i);
            found = next;
        }
        return static_cast<kxAnimTreeWidgetItem*>(found);
    }
    /// An entry of the context menu, null where there is none.
    QAction* action(const QString& text)
    {
        for (QAction* const entry : contextMenu()->actions())
            if (entry->text() == text)
                return entry;
        return nullptr;
    }
    QList<QTreeWidgetItem*> rows()
    {
        QList<QTreeWidgetItem*> all;
        for (QTreeWidgetItemIterator it(this); *it != nullptr; ++it)
            all.append(*it);
        return all;
    }
    /// The rows of these paths, apart by commas, and no others.
    void select(const QString& paths)
    {
        this->clearSelection();
        for (const QString& path : paths.split(',', Qt::SkipEmptyParts))
            row(path)->setSelected(true);
    }
    /// One line a row: its depth as dots and its text; "+" after an expanded row, "*" after a selected one.
    QStringList dump(bool withStates = false)
    {
        QStringList lines;
        for (QTreeWidgetItem* item : rows())
        {
            QString line = item->text(0);
            for (QTreeWidgetItem* above = item->parent(); above != nullptr; above = above->parent())
                line.prepend('.');
            if (withStates && item->isExpanded() && item->childCount() > 0)
                line.append('+');
            if (withStates && item->isSelected())
                line.append('*');
            lines.append(line);
        }
        return lines;
    }
    bool drop(const QString& source, const QString& target)
    {
        select(source);
        const std::unique_ptr<QMimeData> mime(mimeData(this->selectedItems()));
        return dropMimeData(target.isEmpty() ? nullptr : row(target), 0, mime.get(), Qt::CopyAction);
    }
};
