#include "kxClipTree.h"

#include <kxController.h>
#include <osg/FieldContainerFactory.h>

#include <QApplication>
#include <QDragMoveEvent>
#include <QInputDialog>
#include <QSignalSpy>
#include <QTimer>
#include <kxCapturedStderr.h>
#include <kxMarks.h>
#include <kxTable.h>

using namespace osg;

typedef void (*ScriptEdit)(kxClipTree& clips);

Q_DECLARE_METATYPE(ScriptEdit)

class tst_kxAnimClipStructureWidget : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void newClips_data()
    {
        kxColumns<QString, bool, QString, QString>("selected", "ignoreSelection", "made", "selectedAfter");
        kxRow("nothing selected", "", false, "Clip", "Clip");
        kxRow("one in each clip", "A,B", false, "A/Clip,B/Clip_1", "A,B");
        kxRow("nested clip", "A/inner", false, "A/inner/Clip", "A/inner");
        kxRow("a block takes none", "B/step", false, "Clip", "Clip");
        kxRow("the block beside a clip doesn't count", "B/step,C", false, "C/Clip", "B/step,C");
        kxRow("selection ignored", "A", true, "Clip", "Clip");
    }

    void newClips()
    {
        QFETCH(QString, selected);
        QFETCH(bool, ignoreSelection);
        QFETCH(QString, made);
        QFETCH(QString, selectedAfter);
        kxClipTree f;
        f.tree.select(selected);
        f.tree.newClip(ignoreSelection);
        for (const QString& path : made.split(','))
            QVERIFY2(f.tree.row(path) != nullptr, qPrintable(path));
        QCOMPARE(f.tree.dump(), kxClipTree::fresh());
        QStringList now = f.tree.dump(true);
        f.tree.select(selectedAfter);
        QCOMPARE(now, f.tree.dump(true));
    }

    void newClipByMessage()
    {
        kxClipTree f;
        f.tree.select("A");
        kxMessage message;
        message.set("ignoreSelection", true, true);
        kxController::call("createNewClip", message, 0);
        QCOMPARE(boost::any_cast<AnimNodePtr>(message.get("node")), f.node("Clip"));
        f.tree.select("A,B");
        kxMessage silent;
        kxController::call("createNewClip", silent, 0);
        QCOMPARE(boost::any_cast<AnimNodePtr>(silent.get("node")), AnimNodePtr());
        QVERIFY(f.tree.row("A/Clip_1") != nullptr && f.tree.row("B/Clip_2") != nullptr);
    }

    void dropsOfRows_data()
    {
        // movedTo: empty = nothing changes
        kxColumns<QString, QString, bool, QString>("source", "target", "result", "movedTo");
        kxRow("clip into a clip", "B", "A/inner", true, "A/inner/B");
        kxRow("block into a clip", "B/step", "C", true, "C/step");
        kxRow("block into its own clip", "B/step", "B", true, "B/step");
        kxRow("nested clip to the top level", "A/inner", "", false, "inner");
        kxRow("block to the top level", "B/step", "", false, "");
        kxRow("onto a block", "C", "B/step", false, "");
        kxRow("into itself", "A", "A", false, "");
        kxRow("into its child", "A", "A/inner", false, "");
        kxRow("one of two into its child", "A,C", "A/inner", true, "A/inner/C");
    }

    void dropsOfRows()
    {
        QFETCH(QString, source);
        QFETCH(QString, target);
        QFETCH(bool, result);
        QFETCH(QString, movedTo);
        kxClipTree f;
        const AnimNodePtr moved = f.node(source.split(',').back());
        const NodePtr parent = moved->getParent();
        const QStringList before = f.tree.dump();
        const kxMarks marks;
        QCOMPARE(f.tree.drop(source, target), result);
        for (const NodePtr& marked : {parent, moved->getParent()})
            QCOMPARE(marks.times(marked), movedTo.isEmpty() ? 0 : 1);
        if (movedTo.isEmpty())
            QCOMPARE(f.tree.dump(), before);
        else
            QCOMPARE(f.node(movedTo), moved);
        if (result)
            QCOMPARE(f.tree.selectedClip(), f.node(target));
        QCOMPARE(f.tree.dump(), kxClipTree::fresh());
    }

    void dropsOfLibrary()
    {
        kxClipTree f;
        const unsigned int walk = kxClipTree::find("walk")->getId();
        QVERIFY(!f.dropFromLibrary({walk}, ""));
        {
            kxCapturedStderr log;
            QVERIFY(!f.dropFromLibrary({walk}, "B/step"));
            QVERIFY(log.text().contains("\"step\": it is no clip"));
        }
        QCOMPARE(f.tree.dump(), kxClipTree::fresh());

        // Every entry is taken, what is dead or no animation is skipped, and a clip above isn't cloned into itself.
        kxClipTree::find("walk")->setTravMask(0); // what is placed plays all the same
        const unsigned int dead = FieldContainerFactory::the()->getFieldContainerStore().size() + 7;
        const kxMarks marks;
        QVERIFY(f.dropFromLibrary({dead, walk, 0, f.node("A")->getId(), walk}, "A/inner"));
        const AnimNodePtr inner = f.node("A/inner");
        QVERIFY(marks.has(inner) && inner->getNChildren() == 3);
        const AnimNodePtr first = AnimNodePtr::dcast(inner->getChild(1)),
                          second = AnimNodePtr::dcast(inner->getChild(2));
        QVERIFY(first->getCore() == kxClipTree::find("walk")->getCore());
        QVERIFY(first->isActive() && !kxClipTree::find("walk")->isActive());
        QCOMPARE(first->getOffset(), Vec2f(0, 50));
        QCOMPARE(second->getOffset(), Vec2f(0, 100));
        QCOMPARE(first->getNodeName(), std::string("walk"));
        QCOMPARE(f.tree.selectedClip(), inner);
        QCOMPARE(f.tree.dump(), kxClipTree::fresh());
        QVERIFY(f.tree.row("A/inner/walk")->data(1, Qt::CheckStateRole).isValid()); // its lock

        const std::unique_ptr<QMimeData> mime(kxClipTree::libraryDrag({walk}));
        QVERIFY(!f.tree.dropMimeData(f.tree.row("C"), 0, mime.get(), Qt::MoveAction));
        QVERIFY(!f.tree.dropMimeData(f.tree.row("C"), 0, nullptr, Qt::CopyAction));
    }

    void dragsAreRefusedBelowThemselves()
    {
        kxClipTree f;
        f.tree.show();
        f.tree.select("A");
        const std::unique_ptr<QMimeData> rows(f.tree.mimeData(f.tree.selectedItems()));
        const std::unique_ptr<QMimeData> library(kxClipTree::libraryDrag({1}));
        const auto takes = [&f](const char* over, const QMimeData* mime)
        {
            QDragMoveEvent event(f.tree.visualItemRect(f.tree.row(over)).center(), Qt::CopyAction, mime, Qt::LeftButton,
                                 Qt::NoModifier);
            f.tree.dragMoveEvent(&event);
            return event.isAccepted();
        };
        QVERIFY(!takes("A", rows.get()));
        QVERIFY(!takes("A/inner", rows.get()));
        QVERIFY(!takes("A/inner/jump", rows.get()));
        QVERIFY(takes("B", rows.get()));
        QVERIFY(takes("A/inner", library.get()));
    }

    void duplicates()
    {
        kxClipTree f;
        f.tree.select("A,B/step");
        f.tree.duplicateFlippedSpecial();
        const AnimNodePtr copy = f.node("A_1"), inner = f.node("A_1/inner"), block = f.node("B/step_1");
        QVERIFY(copy->getFlipped() && !inner->getFlipped() && block->getFlipped());
        QVERIFY(copy->getCore() != f.node("A")->getCore() && inner->getCore() != f.node("A/inner")->getCore());
        QVERIFY(f.node("A_1/inner/jump")->getCore() == f.node("A/inner/jump")->getCore());
        QVERIFY(block->getCore() == f.node("B/step")->getCore());
        QCOMPARE(block->getOffset(), Vec2f(0, 50)); // beside, not on top
        f.tree.select("C");
        f.tree.duplicateSpecial();
        QVERIFY(!f.node("C_1")->getFlipped());
        QCOMPARE(f.tree.selectedClip(), f.node("C"));
    }

    void namesStayUnlessEdited()
    {
        kxClipTree f;
        kxAnimTreeWidgetItem* const row = f.tree.row("B/step");
        row->setCheckState(0, Qt::Unchecked); // the block under the object has the same name
        QVERIFY(!row->animNode()->isActive());
        row->setCheckState(1, Qt::Checked);
        QVERIFY(row->animNode()->getLocked());
        QCOMPARE(row->animNode()->getNodeName(), std::string("step"));
        row->setData(0, Qt::EditRole, "limp");
        QCOMPARE(row->animNode()->getNodeName(), std::string("limp"));
        row->setData(0, Qt::EditRole, "A"); // taken
        QCOMPARE(row->animNode()->getNodeName(), std::string("limp"));
        QCOMPARE(row->text(0), QString("limp"));
        // The column of locks has nothing to type into.
        f.tree.show();
        f.tree.editItem(row, 1);
        QVERIFY(f.tree.viewport()->findChild<QLineEdit*>() == nullptr);
    }

    void searchIsFlat()
    {
        kxClipTree f;
        f.tree.select("A/inner");
        f.tree.search("n");
        QCOMPARE(f.tree.dump(), QStringList("inner"));
        f.tree.search("no such clip");
        QCOMPARE(f.tree.dump(), QStringList());
        f.tree.search("");
        QCOMPARE(f.tree.selectedClip(), f.node("A/inner"));
        f.tree.rebuildFrom({f.node("C"), f.node("B"), AnimNodePtr(), f.node("A")});
        QCOMPARE(f.tree.dump(), QStringList({"C", "B"}));
        QVERIFY(!f.tree.isSortingEnabled());
    }

    void searchOutlivesRebuilds()
    {
        kxClipTree f;
        QLineEdit line;
        f.tree.setSearchLine(&line);
        f.tree.row("B")->setExpanded(false);
        const QStringList before = f.tree.dump(true);
        line.setText("n");
        f.tree.select("inner");
        const AnimNodePtr added = f.clip("Night", {});
        f.kernel()->addToClipStructure(added);
        const QSignalSpy announced(&f.tree, &QTreeWidget::itemSelectionChanged);
        f.tree.rebuild(true);
        QCOMPARE(f.tree.dump(true), QStringList({"Night", "inner*"}));
        f.tree.rebuild(false);
        QCOMPARE(f.tree.dump(true), QStringList({"Night", "inner"}));
        QCOMPARE(announced.size(), 2);
        kxClipTree::kernel()->clipStructureRoot()->subChild(added);
        f.tree.refresh();
        QCOMPARE(f.tree.dump(), QStringList("inner"));
        { // what another tree keeps meanwhile is its own
            kxClipTree::Tree other;
            other.rebuild(true);
        }
        line.clear();
        QCOMPARE(f.tree.dump(true), before);

        line.setText("n");
        f.tree.newClip(true); // is seen, whatever it is called
        QVERIFY(line.text().isEmpty());
        QVERIFY(f.tree.row("Clip")->isSelected() && f.tree.row("A/inner/jump") != nullptr);
    }

    void menuFollowsTheSelection_data()
    {
        kxColumns<QString, QString>("selected", "greyed");
        kxRow("nothing", "", "Play,Reset,Copy,Paste,Duplicate,Duplicate Flipped,Delete,Rename,Information...");
        kxRow("a clip", "A", "");
        kxRow("a block", "B/step", "Paste");
        kxRow("two", "A,B/step", "Rename,Information...");
    }

    void menuFollowsTheSelection()
    {
        QFETCH(QString, selected);
        kxClipTree f;
        f.tree.select("C");
        f.tree.select(selected);
        QStringList greyed;
        for (const QAction* const entry : f.tree.contextMenu()->actions())
            if (!entry->isEnabled())
                greyed << entry->text();
        QTEST(greyed.join(','), "greyed");
    }

    void namesFitTheirColumn()
    {
        kxClipTree f;
        const char* const name = "A name that is wider than the tree by far and farther";
        f.kernel()->addToClipStructure(f.clip(name, {}));
        f.tree.show();
        const int locks = f.tree.columnWidth(1);
        f.tree.resizeColumnToContents(1);
        QCOMPARE(f.tree.columnWidth(1), locks);
        for (const int width : {120, 900})
        {
            f.tree.resize(width, 200);
            f.tree.rebuild(true);
            const int first = f.tree.columnWidth(0), wanted = f.tree.viewport()->width() - f.tree.columnWidth(1);
            QCOMPARE(first == wanted, width == 900); // the locks are at the right edge
            QVERIFY(first >= wanted && first >= f.tree.fontMetrics().horizontalAdvance(name));
        }
    }

    void editsTheOneSelected()
    {
        kxClipTree f;
        const AnimNodePtr a = f.node("A"), b = f.node("B");
        int cycles = 7;
        const auto answer = [&cycles]
        {
            auto* const dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
            dialog->setIntValue(cycles);
            dialog->accept();
        };
        f.tree.select("A,B");
        f.tree.setFlipped(true);
        f.tree.editPostCycles(); // no question
        QVERIFY(!a->getFlipped() && !b->getFlipped());
        f.tree.select("B");
        f.tree.setFlipped(true);
        QTimer::singleShot(0, &f.tree, answer);
        f.tree.editPostCycles();
        QVERIFY(b->getFlipped() && !a->getFlipped());
        QCOMPARE(b->getPostCycles(), 7);
        // The clip may go while the question is open.
        QTimer::singleShot(0, &f.tree,
                           [&]
                           {
                               kxAnimFixture::clear();
                               answer();
                           });
        f.tree.editPostCycles();
    }

    void pasteIntoItselfIsRefused()
    {
        kxClipTree f;
        const AnimNodePtr a = f.node("A"), inner = f.node("A/inner"), c = f.node("C");
        kxAnimManager* const kernel = kxClipTree::kernel();
        kernel->copy({a, f.node("B")});
        QCOMPARE(kernel->clonePasteToWithOffset(inner, 1, false, false).size(), std::size_t(1));
        QCOMPARE(kernel->clonePasteTo(a, false, false).size(), std::size_t(1));
        QCOMPARE(kernel->pasteTo(c, false, false).size(), std::size_t(2));
        kernel->addToClipStructure(kernel->clipStructureRoot());
        QVERIFY(kernel->clipStructureRoot()->getParent() == NullFC);
        // What was copied is the clip, not the name: once it is elsewhere, its place takes it.
        kernel->addToClipStructure(inner);
        QCOMPARE(kernel->clonePasteTo(inner, false, false).size(), std::size_t(2));
    }

    void followsTheKernel()
    {
        kxClipTree f;
        f.tree.row("A")->setExpanded(false);
        f.tree.select("B/step");
        const AnimNodePtr root = kxClipTree::kernel()->clipStructureRoot();
        const NodePtr above = AnimNodeBase::create();
        above->addRef();
        for (const NodePtr& child : {NodePtr(root), NodePtr(AnimNodeBase::create()), NodePtr(AnimNodeBase::create())})
            above->addChild(child);
        const QStringList before = f.tree.dump(true);
        kxSend("pastedAnimations");
        QCOMPARE(f.tree.dump(true), before);
        QCOMPARE(above->findChild(root), 1); // the structure's place under a node above it
        above->subChild(root);
        above->subRef();
    }

    void refreshesAfterScripts_data()
    {
        kxColumns<ScriptEdit, bool>("edit", "rowsStay");
        const auto row = [](const char* name, bool rowsStay, ScriptEdit edit) { kxRow(name, edit, rowsStay); };
        row("nothing", true, [](kxClipTree&) {});
        row("a clip at the top, in its order", true,
            [](kxClipTree& f) { f.kernel()->addToClipStructure(f.clip("Ab", {f.clip("below", {})})); });
        row("a locked block in an open clip", true,
            [](kxClipTree& f)
            {
                const AnimNodePtr copy = f.clone(f.find("walk"), 3);
                copy->setLocked(true);
                f.node("A/inner")->addChild(copy);
            });
        row("an older block", true, [](kxClipTree& f) { f.node("B")->addChild(f.find("walk")); });
        row("flags", true,
            [](kxClipTree& f)
            {
                f.node("B")->setTravMask(0);
                f.node("B/step")->setLocked(true);
                f.node("A/inner/jump")->setTravMask(0);
            });
        row("a clip that moved", false, [](kxClipTree& f) { f.node("C")->addChild(f.node("A/inner")); });
        row("a block that is gone", false, [](kxClipTree& f) { f.node("B")->subChild(f.node("B/step")); });
        row("one gone and one new", false,
            [](kxClipTree& f)
            {
                f.node("B")->subChild(f.node("B/step"));
                f.node("B")->addChild(f.clip("new", {}));
            });
        row("another core", false, [](kxClipTree& f) { f.node("C")->setCore(AnimBlockBase::create()); });
    }

    void refreshesAfterScripts()
    {
        QFETCH(ScriptEdit, edit);
        QFETCH(bool, rowsStay);
        for (const char* const selected : {"", "A/inner", "A,B/step"})
        {
            kxClipTree f;
            f.tree.select(selected);
            f.tree.row("B")->setExpanded(false);
            const QSignalSpy reset(f.tree.model(), &QAbstractItemModel::modelReset);
            const QSignalSpy announced(&f.tree, &QTreeWidget::itemSelectionChanged);
            edit(f);
            f.tree.refresh();
            QCOMPARE(reset.isEmpty(), rowsStay);
            QCOMPARE(announced.isEmpty(), *selected == 0);
            const QStringList refreshed = f.tree.dump(true), checks = f.checks();
            f.tree.rebuild(true);
            QCOMPARE(refreshed, f.tree.dump(true));
            QCOMPARE(checks, f.checks());
        }
    }
};

QTEST_MAIN(tst_kxAnimClipStructureWidget)
#include "tst_kxAnimClipStructureWidget.moc"
