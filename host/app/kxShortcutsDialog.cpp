#include "kxShortcutsDialog.h"

#include <kxShortcut.h>
#include <widgets/kxColors.h>

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QMap>
#include <QMenu>
#include <QSet>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace
{
QTreeWidgetItem* groupItem(QTreeWidget* tree, QMap<QString, QTreeWidgetItem*>& groups, const QString& name)
{
    QTreeWidgetItem*& item = groups[name];
    if (item == nullptr)
    {
        item = new QTreeWidgetItem(tree, {name});
        QFont font = tree->font();
        font.setBold(true);
        item->setFont(0, font);
        item->setFirstColumnSpanned(true);
        item->setFlags(Qt::ItemIsEnabled);
    }
    return item;
}

void addKey(QTreeWidgetItem* group, const QString& text, const QString& keys)
{
    auto* const item = new QTreeWidgetItem(group, {text, keys});
    item->setForeground(1, kxColors::accent());
}

/// `listed` keeps an entry that several menus show to the first of them.
void addMenu(QTreeWidgetItem* group, const QMenu* menu, QSet<const QAction*>& listed)
{
    for (const QAction* const action : menu->actions())
    {
        if (action->menu() != nullptr)
            addMenu(group, action->menu(), listed);
        else if (!action->shortcut().isEmpty() && !listed.contains(action))
        {
            listed.insert(action);
            addKey(group, action->text().remove(QLatin1Char('&')).remove(QStringLiteral("...")),
                   QKeySequence::listToString(action->shortcuts(), QKeySequence::NativeText)
                       .replace(QStringLiteral("; "), QStringLiteral(", ")));
        }
    }
}
} // namespace

kxShortcutsDialog::kxShortcutsDialog(const QList<QMenu*>& menus, QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("_shortcutsDialog"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Keyboard Shortcuts"));
    auto* const search = new QLineEdit(this);
    search->setPlaceholderText(tr("Search"));
    search->setClearButtonEnabled(true);
    auto* const tree = new QTreeWidget(this);
    tree->setColumnCount(2);
    tree->setHeaderHidden(true);
    tree->setRootIsDecorated(false);
    tree->setUniformRowHeights(true);
    tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    tree->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    tree->header()->setStretchLastSection(false);

    QMap<QString, QTreeWidgetItem*> groups;
    QSet<const QAction*> listed;
    for (const QMenu* const menu : menus)
        addMenu(groupItem(tree, groups, menu->title().remove(QLatin1Char('&'))), menu, listed);
    for (const kxShortcut::Entry& entry : kxShortcut::entries())
        addKey(groupItem(tree, groups, entry.group), entry.text, entry.sequence().toString(QKeySequence::NativeText));
    for (int i = tree->topLevelItemCount() - 1; i >= 0; --i)
        if (tree->topLevelItem(i)->childCount() == 0)
            delete tree->takeTopLevelItem(i);
    tree->expandAll();
    connect(search, &QLineEdit::textChanged, tree,
            [tree](const QString& text)
            {
                for (int i = 0; i < tree->topLevelItemCount(); ++i)
                {
                    QTreeWidgetItem* const group = tree->topLevelItem(i);
                    bool any = false;
                    for (int row = 0; row < group->childCount(); ++row)
                    {
                        QTreeWidgetItem* const item = group->child(row);
                        const bool fits = item->text(0).contains(text, Qt::CaseInsensitive) ||
                                          item->text(1).contains(text, Qt::CaseInsensitive);
                        item->setHidden(!fits);
                        any = any || fits;
                    }
                    group->setHidden(!any);
                }
            });

    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(search);
    layout->addWidget(tree, 1);
    layout->addWidget(buttons);
    resize(520, 640);
}
