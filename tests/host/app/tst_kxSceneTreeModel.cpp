#include "kxSceneFixture.h"

#include <app/kxSceneEdits.h>
#include <kernel/kxSelection.h>
#include <kxScenegraph.h>
#include <kxUndo.h>
#include <panels/kxSceneTreeModel.h>
#include <panels/kxSceneTreePanel.h>
#include <scene/kxScene.h>

#include <QAbstractItemModelTester>
#include <QMimeData>
#include <QTreeView>
#include <QUndoStack>
#include <QtTest>

using namespace kxSceneFixture;

class tst_kxSceneTreeModel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { clear(); }

    void followsRandomEdits_data()
    {
        QTest::addColumn<unsigned>("seed");
        for (unsigned seed = 1; seed <= 6; ++seed)
            QTest::newRow(qPrintable(QString::number(seed))) << seed;
    }

    void followsRandomEdits()
    {
        QFETCH(unsigned, seed);
        addMaterial("Steel");
        for (const char* const name : {"A", "B", "C", "D"})
            addObject(name);
        kxSceneTreeModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        kxSceneTreePanel panel(nullptr); // its filter has to survive the same
        std::mt19937 random(seed);
        for (int i = 0; i < 80; ++i)
        {
            // Several edits between two turns, and steps back and forth.
            for (unsigned edits = random() % 4; edits > 0; --edits)
                randomEdit(random);
            QUndoStack* const stack = kxUndoStack::get(0).stack();
            if (random() % 4 == 0)
                stack->setIndex(int(random() % unsigned(stack->count() + 1)));
            kxScene::the()->flush();
            model.syncVisibility();
            compare(model, QModelIndex(), kxScene::the()->root());
            if (QTest::currentTestFailed())
                return;
        }
    }

    void turnsAFamilyAround()
    {
        const osg::NodePtr root = kxScene::the()->root(), a = addObject("A"), b = addObject("B", a),
                           c = addObject("C", b);
        kxSceneTreeModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        // The youngest becomes the eldest, and the old root of the family dies, all in one turn.
        root->addChild(c);
        c->addChild(b);
        root->subChild(a);
        kxScene::the()->markStructureChanged();
        kxScene::the()->flush();
        compare(model, QModelIndex(), root);
        QCOMPARE(model.nodeCount(), 2);
    }

    void keepsWhatIsExpanded()
    {
        const osg::NodePtr a = addObject("A"), b = addObject("B");
        addObject("Child", b);
        kxScene::the()->flush();
        kxSceneTreePanel panel(nullptr);
        QTreeView* const view = panel.view();
        view->expandAll();
        const auto isExpanded = [view](const QString& name)
        {
            const QModelIndexList found = view->model()->match(view->model()->index(0, 0), Qt::DisplayRole, name, 1,
                                                               Qt::MatchExactly | Qt::MatchRecursive);
            return !found.isEmpty() && view->isExpanded(found.first());
        };
        QVERIFY(isExpanded("B"));
        kxSceneEdits::deleteNodes({a});
        addObject("C");
        kxSceneEdits::rename(b, "B2");
        kxScene::the()->flush();
        QVERIFY(isExpanded("B2"));
        kxSceneEdits::moveNodes({b}, objects().back(), -1);
        kxScene::the()->flush();
        QCOMPARE(objects().back()->getNodeName(), std::string("Child"));
        view->expand(view->model()->index(0, 0));
        QVERIFY(isExpanded("B2"));
    }

    void dropCountsVisibleRows()
    {
        // A surface with two parts that are no rows: they lie between the rows of its other children.
        const osg::NodePtr surface = addSurface("Surface", addMaterial("Steel"));
        for (const char* const name : {"", "Row 0", "", "Row 1"})
        {
            const osg::NodePtr part = addSurface(name, osg::MaterialPtr());
            surface->addChild(part);
        }
        const osg::NodePtr moved = addObject("Moved");
        kxScene::the()->flush();
        kxSceneTreeModel model;
        const QModelIndex parent = model.indexOf(surface.getFieldContainerId());
        QCOMPARE(model.rowCount(parent), 2);
        QScopedPointer<QMimeData> drag(model.mimeData({model.indexOf(moved.getFieldContainerId())}));
        QVERIFY(model.canDropMimeData(drag.data(), Qt::MoveAction, 1, 0, parent));
        QVERIFY(model.dropMimeData(drag.data(), Qt::MoveAction, 1, 0, parent));
        QCOMPARE(QString::fromStdString(surface->getChild(3)->getNodeName()), QString("Moved"));
        QCOMPARE(model.index(1, 0, parent).data().toString(), QString("Moved"));
        QVERIFY(!model.canDropMimeData(drag.data(), Qt::MoveAction, -1, 0,
                                       model.indexOf(moved.getFieldContainerId()))); // onto itself
    }

    void undoOfAnAddKeepsItsRedo()
    {
        kxSceneTreePanel panel(nullptr);
        panel.show();
        QVERIFY(kxSceneEdits::addNode(kxSceneEdits::makeNode(osg::Transform::create(), "New"), osg::NodePtr(), "Add"));
        kxScene::the()->flush();
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        stack->undo();
        kxScene::the()->flush();
        QCoreApplication::processEvents();
        QVERIFY(stack->canRedo()); // the row that left took its selection along, and that was no step
    }

    void theEyeHides()
    {
        addObject("A");
        const osg::NodePtr b = addObject("B");
        kxScene::the()->flush();
        kxSceneTreePanel panel(nullptr);
        panel.resize(250, 300);
        panel.show();
        QTreeView* const view = panel.view();
        const QRect eye = view->visualRect(view->model()->index(1, kxSceneTreeModel::VisibleColumn));
        const auto seen = [view, &eye] { return view->viewport()->grab(eye).toImage(); };
        const QImage open = seen();
        QTest::mouseClick(view->viewport(), Qt::RightButton, Qt::NoModifier, eye.center());
        QVERIFY(b->isActive());
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, eye.center());
        QVERIFY(!b->isActive());
        kxScene::the()->flush();
        QVERIFY(seen() != open);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, eye.center());
        QVERIFY(b->isActive());
    }

    void selectsBothWays()
    {
        const osg::NodePtr a = addObject("A"), b = addObject("B"), c = addObject("C"), below = addObject("Below", c);
        c->setCore(osg::Group::create());
        kxScene::the()->flush();
        kxSceneTreePanel panel(nullptr);
        QTreeView* const view = panel.view();
        view->expandAll();
        const auto shown = [view]
        {
            QStringList names;
            for (const QModelIndex& index : view->selectionModel()->selectedIndexes())
                names << index.data().toString() + QString::number(index.column());
            names.sort();
            return names;
        };
        kxSelection::the().selectNodes({below, b, a});
        QCOMPARE(shown(), QStringList({"1", "1", "1", "A0", "B0", "Below0"})); // whole rows
        QCOMPARE(view->currentIndex().data().toString(), QString("A"));
        const QModelIndex row = view->model()->index(2, 0);
        view->selectionModel()->select(row, QItemSelectionModel::Select | QItemSelectionModel::Rows);
        view->selectionModel()->select(view->model()->index(1, 0),
                                       QItemSelectionModel::Deselect | QItemSelectionModel::Rows);
        QVERIFY((kxSelection::the().nodes() == std::vector<osg::NodePtr>{below, a, c}));
        const auto icon = [](const QModelIndex& index)
        { return index.data(Qt::DecorationRole).value<QIcon>().cacheKey(); };
        QVERIFY(icon(row) != icon(view->model()->index(0, 0)) &&
                icon(row.siblingAtRow(1)) == icon(row.siblingAtRow(0)));
    }

private:
    static void compare(const kxSceneTreeModel& model, const QModelIndex& index, const osg::NodePtr& node)
    {
        QCOMPARE(model.rowCount(index), int(node->getNChildren()));
        for (int row = 0; row < model.rowCount(index); ++row)
        {
            const osg::NodePtr child = node->getChild(unsigned(row));
            const QModelIndex childIndex = model.index(row, 0, index);
            QVERIFY(model.node(childIndex) == child);
            QCOMPARE(childIndex.data(Qt::EditRole).toString(), QString::fromStdString(child->getNodeName()));
            QCOMPARE(childIndex.data(kxSceneTreeModel::VisibleRole).toBool(), child->isActive());
            compare(model, childIndex, child);
        }
    }
};

QTEST_MAIN(tst_kxSceneTreeModel)
#include "tst_kxSceneTreeModel.moc"
