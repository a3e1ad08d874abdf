#pragma once

#include <trees/kxAnimLibraryPayload.h>

#include <QHash>
#include <QList>
#include <QString>

#include <functional>

class QTreeWidget;
class QTreeWidgetItem;
class kxAnimTreeWidgetItem;

/// What the rows of the animation library stand for, and ways to find them.
namespace kxAnimLibraryRows
{
typedef QList<QTreeWidgetItem*> List;

/// The row of an item of the tree, which holds no others; null for null.
kxAnimTreeWidgetItem* rowOf(QTreeWidgetItem* item);

/// The scene node that a row shows; null for an animation, a group, a material, what is dead, and null.
osg::NodePtr sceneNode(QTreeWidgetItem* item);
/// Null for any other row.
osg::AnimNodePtr animation(QTreeWidgetItem* item);
/// True for a row that stands for a tag, whether the scene or the user made it. The row of a dead object is none.
bool showsGroup(QTreeWidgetItem* item);

kxAnimTreeWidgetItem* makeGroup(const QString& tag);
/// The ids that a drag of this row carries.
kxAnimLibraryPayload::Row payloadOf(QTreeWidgetItem* item);

int depthOf(const QTreeWidgetItem* item);
/// Expands `item`, which has depth `itemDepth`, and all below it down to `depth`, and collapses the rest.
void expandSubtree(QTreeWidgetItem* item, int itemDepth, int depth);

/// Those of the top level, then those one level below.
List matching(const QTreeWidget& tree, const std::function<bool(const kxAnimTreeWidgetItem&)>& matches);
/// The first row of each core, depth first, by the core's id.
QHash<unsigned int, QTreeWidgetItem*> byCore(const QTreeWidget& tree);
} // namespace kxAnimLibraryRows
