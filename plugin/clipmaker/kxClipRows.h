#pragma once

#include <osg/AnimNode.h>

#include <QTreeWidgetItem>

#include <vector>

/// The rows of a tree of clips, held against the clips that they show.
namespace kxClipRows
{
/// A node that has no row yet, and the row that it belongs below.
struct Missing
{
    QTreeWidgetItem* parent;
    osg::AnimNodePtr node;
};

/// Corrects the check marks of the rows below `row`, which shows `node`, and appends what lacks a row. False where more
/// is wrong than that: rows of other nodes, or rows whose node has another core.
bool follow(QTreeWidgetItem* row, const osg::NodePtr& node, std::vector<Missing>& missing);
} // namespace kxClipRows
