#include "kxDifferenceTree.h"

#include "kxEmptyHint.h"

#include <kernel/kxSelection.h>
#include <kxIconManager.h>
#include <kxPlatform.h>
#include <osg/FieldContainerFactory.h>
#include <scene/kxScene.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHash>
#include <QSignalBlocker>

namespace
{
enum Role
{
    Container = Qt::UserRole, ///< id in the open scene, 0 for none
    Line                      ///< the whole sentence
};

QIcon iconOf(kxSceneDifference::Kind kind)
{
    static const char* const names[] = {"Add", "Delete", "Properties"};
    return kxIconManager::getIcon(QString::fromLatin1(names[kind]), QString());
}

/// Below its group a line needs no name where that is the group's.
QString lineBelow(const kxSceneDifference::Entry& entry)
{
    QString text = entry.isOfGroup ? entry.detail : entry.words;
    text[0] = text[0].toUpper();
    return text;
}

QStringList linesOf(const QTreeWidgetItem* item)
{
    QStringList lines;
    if (item->childCount() == 0)
        lines << item->data(0, Line).toString();
    for (int row = 0; row < item->childCount(); ++row)
        lines << linesOf(item->child(row));
    return lines;
}
} // namespace

kxDifferenceTree::kxDifferenceTree(const QString& hint, QWidget* parent) : QTreeWidget(parent)
{
    setObjectName(QStringLiteral("_differences"));
    setAccessibleName(tr("Differences"));
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setSelectionMode(ExtendedSelection);
    setContextMenuPolicy(Qt::ActionsContextMenu);
    setIconSize(QSize(kxPlatform::getSmallIconSize(), kxPlatform::getSmallIconSize()));
    new kxEmptyHint(hint, this);
    auto* const copyAction = new QAction(kxIconManager::getIcon(QStringLiteral("Copy"), QString()), tr("Copy"), this);
    copyAction->setShortcut(QKeySequence::Copy);
    copyAction->setShortcutContext(Qt::WidgetShortcut);
    connect(copyAction, &QAction::triggered, this, &kxDifferenceTree::copy);
    addAction(copyAction);
    connect(this, &QTreeWidget::itemSelectionChanged, this, &kxDifferenceTree::selectInScene);
    connect(this, &QTreeWidget::itemClicked, this, &kxDifferenceTree::selectInScene);
}

void kxDifferenceTree::setDifference(const kxSceneDifference& difference)
{
    const QSignalBlocker blocker(this); // rows that go select nothing
    clear();
    _lines = int(difference.entries.size());
    QList<QTreeWidgetItem*> groups;
    QHash<QString, QTreeWidgetItem*> byName;
    QFont bold = font();
    bold.setBold(true);
    for (const kxSceneDifference::Entry& entry : difference.entries)
    {
        const QString key = QStringLiteral("%1/%2/%3").arg(entry.groupBefore).arg(entry.groupAfter).arg(entry.group);
        QTreeWidgetItem*& group = byName[key];
        if (group == nullptr)
        {
            group = new QTreeWidgetItem({entry.group});
            group->setFont(0, bold);
            group->setData(0, Container, entry.groupAfter);
            groups << group;
        }
        auto* const item = new QTreeWidgetItem(group, {lineBelow(entry)});
        item->setIcon(0, iconOf(entry.kind));
        item->setToolTip(0, entry.path);
        item->setData(0, Container, entry.groupAfter);
        item->setData(0, Line, entry.words);
    }
    addTopLevelItems(groups);
    expandAll();
}

QString kxDifferenceTree::summary() const
{
    if (_lines == 0)
        return QString();
    const QString lines = _lines == 1 ? tr("1 difference") : tr("%1 differences").arg(_lines);
    const int groups = topLevelItemCount();
    return groups == 1 ? tr("%1 in one thing").arg(lines) : tr("%1 in %2 things").arg(lines).arg(groups);
}

QString kxDifferenceTree::text() const
{
    QStringList lines;
    const bool all = selectionModel()->selectedRows().isEmpty();
    for (int i = 0; i < topLevelItemCount(); ++i)
    {
        const QTreeWidgetItem* const group = topLevelItem(i);
        if (all || group->isSelected())
            lines << linesOf(group);
        else
            for (int row = 0; row < group->childCount(); ++row)
                if (group->child(row)->isSelected())
                    lines << linesOf(group->child(row));
    }
    return lines.join(QLatin1Char('\n'));
}

void kxDifferenceTree::copy() const
{
    QApplication::clipboard()->setText(text());
}

void kxDifferenceTree::selectInScene() const
{
    std::vector<osg::NodePtr> nodes;
    std::vector<osg::MaterialPtr> materials;
    for (const QTreeWidgetItem* const item : selectedItems())
    {
        const osg::UInt32 id = item->data(0, Container).toUInt();
        const osg::FieldContainerPtr container = osg::living<osg::FieldContainer>(id);
        if (container == osg::NullFC || !kxScene::the()->contains(container))
            continue; // gone since, or a clip
        if (const osg::NodePtr node = osg::NodePtr::dcast(container))
            nodes.push_back(node);
        else if (const osg::MaterialPtr material = osg::MaterialPtr::dcast(container))
            materials.push_back(material);
    }
    if (!nodes.empty())
        kxSelection::the().selectNodes(nodes);
    if (!materials.empty())
        kxSelection::the().selectMaterials(materials);
}
