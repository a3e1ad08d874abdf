#include "kxClipTree.h"
#include <plugin/trees/kxTestLibrary.h>

#include <trees/kxAnimStructureWidget.h>

#include <kernel/kxSelection.h>
#include <kxUndo.h>

#include <kxTable.h>

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>
#include <QUndoStack>

using namespace osg;
using namespace kxTestLibrary;

namespace
{
/// Every tree of animations, over one scene.
struct Trees : kxClipTree
{
    Library library;
    kxTreeProbe<kxAnimStructureWidget> structure;

    Trees()
    {
        kxTestLibrary::object("car", {clip("drive", {block("roll", {})})});
        kxTestLibrary::object("door", {block("open", {curve("scale", "X", {{0, 1}})})});
        kernel()->addToSceneStructure(group<GroupBase>("walk", {group<GroupBase>("legs", {})}));
        kernel()->addToSceneStructure(group<GroupBase>("arms", {}));
        for (QTreeWidget* const each : all())
        {
            static_cast<kxAnimTreeWidget*>(each)->rebuild(false);
            each->expandAll();
        }
        QObject::connect(&tree, &kxAnimClipStructureWidget::pasteCloneRequested, &tree,
                         [this]
                         {
                             kernel()->clonePasteTo(tree.selectedClip(), false, false);
                             tree.rebuild(true);
                         });
    }
    ~Trees()
    {
        kxSelection::the().clear();
        kxUndoStack::get(0).stack()->clear();
    }

    QList<QTreeWidget*> all() { return {&library, &structure, &tree}; }
};

QString pathOf(const QTreeWidgetItem* item)
{
    return item->parent() == nullptr ? item->text(0) : pathOf(item->parent()) + '/' + item->text(0);
}

/// The paths of the rows; "_" after a shared one, "-" after one that is off.
QStringList rowsOf(QTreeWidget* tree)
{
    QStringList paths;
    for (QTreeWidgetItemIterator item(tree); *item != nullptr; ++item)
    {
        QString path = pathOf(*item);
        if (qvariant_cast<QFont>((*item)->data(0, Qt::FontRole)).underline())
            path += '_';
        if ((*item)->data(0, Qt::CheckStateRole) == Qt::Unchecked)
            path += '-';
        paths << path;
    }
    return paths;
}
} // namespace

class tst_kxTreeKeys : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void does_data()
    {
        // tree: library, structure, clips. steps: keys, "@" before the paths to select, the number of another tree.
        // seen: rows that went and came, then what opened, was selected in the scene, or is selected no more.
        kxColumns<int, QString, QString>("tree", "steps", "seen");
        const auto row = [](int tree, const char* steps, const char* seen)
        { kxRow(qPrintable(QString("%1 %2").arg(tree).arg(steps)), tree, QString(steps), QString(seen)); };
        row(0, "@door/open Del", "-door -door/open none");
        row(0, "@door/open Ctrl+R", "edits 'open'");
        row(0, "@door/open Ctrl+C @car Ctrl+V", "+car/open_1");
        row(0, "@door/open Ctrl+X @car Ctrl+V", "-door -door/open +car/open_1");
        row(0, "@door/open Ctrl+C @car Ctrl+Shift+V", "-door/open +car/open_1_ +door/open_");
        row(0, "@door/open Ctrl+Shift+D", "-door/open +door/open_ +door/open_1_");
        row(0, "@door/open Ctrl+D", "-door/open +door/open- +door/open_1");
        row(0, "@door Ctrl+Shift+G", "-door -door/open + +/door +/door/open edits ''");
        row(0, "@door/open Ctrl+N", "picks 'door'");
        row(0, "@door/open Ctrl+I", "says 'open Animation Information'");
        row(1, "@walk/legs Del", "-walk/legs");
        row(1, "@arms Ctrl+G", "+Group");
        row(2, "@B/step Ctrl+C @C Ctrl+V", "+C/step_1_");
        row(2, "@B/step Ctrl+C Ctrl+V", "");
        row(2, "@B Ctrl+D", "+B_1 +B_1/step_");
        row(2, "@B Del", "-B -B/step_ none");
        row(2, "@B Ctrl+R", "edits 'B'");
        row(2, "@B Ctrl+I", "says 'B Animation Information'");
        row(0, "@car,door Ctrl+Shift+A", "none");
        row(2, "@A,B Ctrl+Shift+A", "none");
        row(1, "0 @door/open Ctrl+C 1 @arms Ctrl+V", "+arms/open_1_");
    }

    void does()
    {
        QFETCH(int, tree);
        QFETCH(QString, steps);
        Trees f;
        QTreeWidget* shown = f.all()[tree];
        const QStringList before = rowsOf(shown);
        QStringList seen;
        QTimer boxes;
        connect(&boxes, &QTimer::timeout,
                [&seen]
                {
                    if (auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
                    {
                        seen << QString("says '%1'").arg(box->text());
                        box->close();
                    }
                });
        boxes.start(0);
        for (const QString& step : steps.split(' '))
        {
            if (step.size() == 1)
                shown = f.all()[step.toInt()];
            else if (step.startsWith('@'))
            {
                shown->clearSelection();
                for (QTreeWidgetItemIterator item(shown); *item != nullptr; ++item)
                    (*item)->setSelected(step.mid(1).split(',').contains(pathOf(*item)));
                QVERIFY(!shown->selectedItems().isEmpty());
                shown->show();
                shown->activateWindow();
                QVERIFY(QTest::qWaitForWindowActive(shown));
                shown->setFocus();
            }
            else
                QTest::keySequence(shown, QKeySequence(step));
        }
        const QStringList after = rowsOf(shown);
        for (const QString& path : before)
            if (!after.contains(path))
                seen << '-' + path;
        for (const QString& path : after)
            if (!before.contains(path))
                seen << '+' + path;
        if (auto* const editor = shown->viewport()->findChild<QLineEdit*>())
            seen << QString("edits '%1'").arg(editor->text());
        for (const NodePtr& node : kxSelection::the().nodes())
            seen << QString("picks '%1'").arg(node->getNodeName().c_str());
        if (shown->selectedItems().isEmpty())
            seen << "none";
        QTEST(seen.join(' '), "seen");
    }

    void menus()
    {
        Trees f;
        QCOMPARE(kxTextsOf(f.library.contextMenu()),
                 QString("Play Reset | Save... Rename Delete | Copy Cut Paste Paste Clone | Clone Duplicate Unshare | "
                         "Motion Blur | Group Selection Select Node | Information..."));
        QCOMPARE(kxTextsOf(f.structure.contextMenu()), QString("Play Reset | Paste Delete | Create group"));
        QCOMPARE(
            kxTextsOf(f.tree.contextMenu()),
            QString("Play Reset | New Clip Copy Paste Duplicate Duplicate Flipped Delete Rename | Information..."));
    }
};

QTEST_MAIN(tst_kxTreeKeys)
#include "tst_kxTreeKeys.moc"
