#pragma once

#include <osg/AnimNode.h>

#include <QList>

#include <vector>

class QTreeWidgetItem;
class kxAnimTreeWidgetItem;

/// What the selected rows of a tree stand for. An object that is selected twice, as one that is in two groups,
/// counts once.
struct kxSelectedContainers
{
    std::vector<osg::FieldContainerPtr> containers; // objects, materials and animations
    std::vector<osg::AnimNodePtr> curveNodes;       // what the graph shows of them

    explicit kxSelectedContainers(const QList<QTreeWidgetItem*>& rows);
    /// Of the containers those that aren't animations.
    std::size_t objectCount() const;
    /// There are animations of them, and all curves of those are in blocks.
    bool areOnlyBlocks() const;

private:
    void add(const kxAnimTreeWidgetItem& item);
};
