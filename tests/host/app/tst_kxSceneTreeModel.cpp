#include "kxSceneFixture.h"

#include <kxScenegraph.h>
#include <panels/kxSceneTreeModel.h>
#include <panels/kxSceneTreePanel.h>

#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QTreeView>

using namespace kxSceneFixture;

class tst_kxSceneTreeModel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { clear(); }

    void followsEdits_data()
    {
        kxColumns<int>("turn"); // edits between two returns to the event loop
        for (const int turn : {1, 2, 3, 5})
            kxRow(qPrintable(QString::number(turn)), turn);
    }

    void followsEdits()
    {
        QFETCH(int, turn);
        addMaterial("Steel");
        for (const char* const name : {"A", "B", "C", "D", "E"})
            addObject(name, objects().size() == 2 ? objects().back() : osg::NodePtr());
        objects().back()->setTravMask(0);
        kxSceneTreeModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        kxSceneTreePanel panel(nullptr); // its filter has to survive the same
        std::vector<std::function<void()>> walk = edits();
        const int steps = int(walk.size());
        for (const int index : {0, steps, steps / 3, 2 * steps / 3, 1})
            walk.push_back([index] { stack()->setIndex(index); });
        for (std::size_t i = 0; i < walk.size(); ++i)
        {
            walk[i]();
            if ((int(i) + 1) % turn != 0)
                continue;
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
        const QPersistentModelIndex kept = model.indexOf(b.getFieldContainerId());
        const osg::UInt32 gone = a.getFieldContainerId();
        // The youngest becomes the eldest, and the old root of the family dies, all in one turn.
        root->addChild(c);
        c->addChild(b);
        root->subChild(a);
        kxScene::the()->markStructureChanged();
        kxScene::the()->flush();
        compare(model, QModelIndex(), root);
        QVERIFY(!model.indexOf(gone).isValid());
        QVERIFY(kept.isValid()); // moved, not gone and come again
    }

    void keepsWhatIsExpanded()
    {
        const osg::NodePtr a = addObject("A"), b = addObject("B");
        addObject("Child", b);
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

    /// What the search hides is there once more after it, whatever moved and came meanwhile.
    void searchGivesBackAll()
    {
        const osg::NodePtr a = addObject("A"), b = addObject("B");
        const std::vector<osg::NodePtr> children = {addObject("A0", a), addObject("A1", a), addObject("B0", b)};
        kxSceneTreePanel panel(nullptr);
        auto* const search = panel.findChild<QLineEdit*>("_search");
        search->setClearButtonEnabled(false); // it fades, beyond the end of the test
        search->setText("nothing has this name");
        QCOMPARE(panel.view()->model()->rowCount(), 0);
        kxSelection::the().selectNodes(children);
        kxScene::the()->flush();
        kxSceneEdits::moveNodes({children[0], children[1]}, b, -1);
        kxScene::the()->flush();
        addObject("B3", b);
        addObject("A0 new", a);
        kxScene::the()->flush();
        search->clear();
        QCOMPARE(namesBelow(*panel.view()->model(), QModelIndex()), QString("A(A0 new())B(B0()A0()A1()B3())"));
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
        stack()->undo();
        kxScene::the()->flush();
        QCoreApplication::processEvents();
        QVERIFY(stack()->canRedo()); // the row that left took its selection along, and that was no step
    }

    void theEyeHides()
    {
        addObject("A");
        const osg::NodePtr b = addObject("B");
        QMenu menu;
        kxSceneTreePanel panel(&menu);
        panel.resize(250, 300);
        panel.show();
        QWidget* const rows = panel.view()->viewport();
        const QRect eye = panel.view()->visualRect(panel.view()->model()->index(1, kxSceneTreeModel::VisibleColumn));
        const auto contrast = [rows, &eye]
        {
            const QImage image = rows->grab(eye).toImage();
            int most = 0;
            for (int i = 0; i < image.width() * image.height(); ++i)
                most = std::max(most, std::abs(qGray(image.pixel(i % image.width(), i / image.width())) -
                                               qGray(image.pixel(0, 0))));
            return most;
        };
        const int open = contrast();
        QTest::mouseClick(rows, Qt::LeftButton, Qt::NoModifier, eye.center());
        QVERIFY(!b->isActive());
        kxScene::the()->flush();
        QVERIFY(contrast() > open); // a closed one stands out
        QTest::mouseClick(rows, Qt::LeftButton, Qt::NoModifier, eye.center());
        QVERIFY(b->isActive());
        QVERIFY(kxSelection::the().nodes().empty());
        kxScene::the()->flush();
        QTest::mouseMove(rows, eye.center());
        QVERIFY(contrast() > open);
        QTest::mouseClick(rows, Qt::RightButton, Qt::NoModifier, eye.center());
        QVERIFY(b->isActive());
        QContextMenuEvent event(QContextMenuEvent::Mouse, eye.center());
        QApplication::sendEvent(rows, &event);
        QVERIFY(menu.isVisible() && event.isAccepted()); // nobody shows another one
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
    static QString namesBelow(const QAbstractItemModel& model, const QModelIndex& index)
    {
        QString names;
        for (int row = 0; row < model.rowCount(index); ++row)
        {
            const QModelIndex child = model.index(row, 0, index);
            names += child.data().toString() + '(' + namesBelow(model, child) + ')';
        }
        return names;
    }
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
