#include "kxSceneFixture.h"

#include <kernel/kxPreferencesStore.h>
#include <kxLog.h>
#include <kxPreferences.h>
#include <kxTexts.h>
#include <panels/kxLogPanel.h>
#include <panels/kxMaterialModel.h>
#include <panels/kxMaterialPanel.h>
#include <panels/kxPreferencesDialog.h>
#include <panels/kxSceneTreePanel.h>
#include <scene/UberMaterial.h>

#include <QtWidgets>

using namespace kxSceneFixture;

namespace
{
QStringList lines(const QWidget& panel, const char* name)
{
    return kxTexts(panel.findChild<QListView*>(name)->model());
}

QToolButton* button(const QWidget& panel, const char* name)
{
    return panel.findChild<QToolButton*>(name);
}

/// A page of the settings with one number, 7 at first, and the number that the application was given.
class Page : public kxPreferences
{
public:
    explicit Page(const char* name) : kxPreferences(QString(), name), _key(std::string("Panels ") + name)
    {
        field = new QSpinBox;
        addPreferencesGUI(field);
    }
    ~Page() override
    {
        subPreferencesGUI(field);
        delete field.data();
    }
    void preferencesSetDefaults(bool overwrite) override { getData().set(_key, 7, overwrite); }
    void preferencesToGUI() override { field->setValue(boost::any_cast<int>(getData().get(_key))); }
    void preferencesFromGUI() override { getData().set(_key, field->value(), true); }
    void preferencesApply() override { applied = boost::any_cast<int>(getData().get(_key)); }

    QPointer<QSpinBox> field;
    int applied = 0;

private:
    std::string _key;
};
} // namespace

/// The panels without a test of their own.
class tst_kxPanels : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { clear(); }

    void materialsFollowTheScene()
    {
        const osg::MaterialPtr red = addMaterial("Red"), blue = addMaterial("Blue"), bare = addMaterial("");
        addSurface("A", blue);
        addSurface("B", blue);
        kxMaterialPanel panel;
        const auto* const list = panel.findChild<QListView*>("_materialList");
        QAbstractItemModelTester tester(list->model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        const auto at = [list](int row, int role) { return list->model()->index(row, 0).data(role); };
        QCOMPARE(lines(panel, "_materialList"), QStringList({"Red", "Blue", "(unnamed)"}));
        QCOMPARE(at(0, Qt::ToolTipRole).toString(), QString("Shown by no object"));
        QVERIFY(at(1, Qt::ToolTipRole).toString().contains("2") &&
                at(0, Qt::ForegroundRole) != at(1, Qt::ForegroundRole));
        // A name by the user, and a look by whoever.
        const osg::UberMaterialPtr look = osg::UberMaterialPtr::dcast(blue);
        look->setBaseColor(osg::Color3f(0, 0, 0.9f));
        const auto corner = [&at](int x, int y)
        { return QColor(at(1, Qt::DecorationRole).value<QPixmap>().toImage().pixel(x, y)).name(); };
        const QStringList spots{corner(10, 9), corner(20, 12), corner(15, 24), corner(26, 15), corner(2, 15)};
        QCOMPARE(spots,
                 QStringList({"#8080f8", "#0000d3", "#00009e", "#000092", "#0000c2"})); // light, body, shade, rim
        look->setMetallic(1);
        QCOMPARE(corner(10, 9), QString("#6666f5")); // a metal's light has its colour
        look->setEmissive(osg::Color3f(0, 0.7f, 0));
        QCOMPARE(corner(15, 24), QString("#00da7f")); // shines all over
        QVERIFY(list->model()->setData(list->model()->index(1, 0), "Sky"));
        QVERIFY(!list->model()->setData(list->model()->index(1, 0), "Sea", Qt::DisplayRole));
        QCOMPARE(QString::fromStdString(blue->getNodeName()), QString("Sky"));
        kxSelection::the().setIds(kxSelection::Materials, {bare.getFieldContainerId()});
        kxSceneEdits::deleteMaterials({red});
        kxScene::the()->flush();
        QCOMPARE(lines(panel, "_materialList"), QStringList({"Sky", "(unnamed)"}));
        QCOMPARE(list->selectionModel()->selectedIndexes(), {list->model()->index(1, 0)});
        kxUndoStack::get(0).stack()->setIndex(0);
        kxScene::the()->flush();
        QCOMPARE(lines(panel, "_materialList"), QStringList({"Red", "Blue", "(unnamed)"}));
        kxScene::the()->subMaterial(red); // moved to the end within one turn
        kxScene::the()->addMaterial(red);
        kxScene::the()->flush();
        QCOMPARE(lines(panel, "_materialList"), QStringList({"Blue", "(unnamed)", "Red"}));
        QCOMPARE(list->selectionModel()->selectedIndexes(), {list->model()->index(1, 0)});
    }

    void materialsAndTheSelection()
    {
        const std::vector<osg::MaterialPtr> all{addMaterial("A"), addMaterial("B"), addMaterial("C")};
        kxMaterialPanel panel;
        QListView* const list = panel.findChild<QListView*>("_materialList");
        const auto row = [list](int index) { return list->model()->index(index, 0); };
        QVERIFY(!panel.findChild<QLabel*>()->isVisibleTo(&panel)); // there is something to see from the start
        kxSelection::the().selectMaterials({all[1], all[2]});
        QCOMPARE(list->selectionModel()->selectedIndexes(), QModelIndexList({row(1), row(2)}));
        list->selectionModel()->select(row(1), QItemSelectionModel::Deselect);
        QVERIFY(kxSelection::the().materials() == std::vector<osg::MaterialPtr>{all[2]});
        list->setCurrentIndex(row(0));
        QVERIFY(kxSelection::the().materials() == std::vector<osg::MaterialPtr>{all[0]});
        kxSelection::the().selectMaterials({});
        QVERIFY(!list->selectionModel()->hasSelection());
    }

    void rowsStayWhileTheirNamesAreWritten_data()
    {
        kxColumns<bool>("ofMaterials");
        kxRow("materials", true);
        kxRow("objects", false);
    }

    /// A search by keys leaves a row whose name is being written for one that is gone, and not yet known to be.
    void rowsStayWhileTheirNamesAreWritten()
    {
        QFETCH(bool, ofMaterials);
        for (const char* const name : {"Ask", "Bell", "Cup"})
            ofMaterials ? void(addMaterial(name)) : void(addObject(name));
        kxMaterialPanel materials;
        kxSceneTreePanel tree(nullptr);
        auto* const view = ofMaterials ? materials.findChild<QAbstractItemView*>("_materialList")
                                       : tree.findChild<QAbstractItemView*>("_objects");
        view->window()->show();
        view->setCurrentIndex(view->model()->index(0, 0));
        view->edit(view->currentIndex());
        view->findChild<QLineEdit*>()->setText("Axe");
        if (ofMaterials)
            kxSceneEdits::deleteMaterials({kxScene::the()->materials()[1]});
        else
            kxSceneEdits::deleteNodes({objects()[1]});
        const QSignalSpy gone(view->model(), &QAbstractItemModel::rowsRemoved);
        QTest::keyClick(view, 'b');
        QVERIFY(gone.isEmpty());
        QCOMPARE(kxTexts(view->model()), QStringList({"Axe", "Bell", "Cup"}));
        kxScene::the()->flush();
        QCOMPARE(kxTexts(view->model()), QStringList({"Axe", "Cup"}));
    }

    void materialButtons_data()
    {
        kxColumns<QString, bool, bool, bool, QStringList, QString>("button", "material", "object", "isEnabled", "names",
                                                                   "shown");
        const QStringList two{"Red", "Blue"};
        kxRow("add", "_addMaterial", false, false, true, two + QStringList("Material"), "Red");
        kxRow("duplicate", "_duplicateMaterial", true, false, true, two + QStringList("Blue_1"), "Red");
        kxRow("nothing to duplicate", "_duplicateMaterial", false, true, false, two, "Red");
        kxRow("assign", "_assignMaterial", true, true, true, two, "Blue");
        kxRow("assign to nothing", "_assignMaterial", true, false, false, two, "Red");
        kxRow("assign nothing", "_assignMaterial", false, true, false, two, "Red");
        kxRow("delete", "_deleteMaterial", true, false, true, QStringList("Red"), "Red");
        kxRow("nothing to delete", "_deleteMaterial", false, false, false, two, "Red");
    }

    void materialButtons()
    {
        QFETCH(QString, button);
        QFETCH(bool, material);
        QFETCH(bool, object);
        const osg::MaterialPtr red = addMaterial("Red"), blue = addMaterial("Blue");
        const osg::NodePtr surface = addSurface("Surface", red), group = addObject("Group");
        kxMaterialPanel panel;
        if (material)
            kxSelection::the().selectMaterials({blue});
        if (object)
            kxSelection::the().selectNodes({surface});
        const int steps = kxUndoStack::get(0).stack()->count();
        auto* const tool = panel.findChild<QToolButton*>(button);
        QTEST(tool->isEnabled(), "isEnabled");
        tool->click();
        kxScene::the()->flush();
        QTEST(lines(panel, "_materialList"), "names");
        const auto shown = [&surface]
        { return QString::fromStdString(osg::GeometryPtr::dcast(surface->getCore())->getMaterial()->getNodeName()); };
        QTEST(shown(), "shown");
        if (button == "_addMaterial")
            QCOMPARE(kxSelection::the().materials().front()->getNodeName(), std::string("Material"));
        kxUndoStack::get(0).stack()->setIndex(steps);
        kxScene::the()->flush();
        QCOMPARE(lines(panel, "_materialList"), QStringList({"Red", "Blue"}));
        QCOMPARE(shown(), QString("Red"));
        // What has no surface is refused with a word.
        kxLogModel::the().clear();
        kxSelection::the().selectMaterials({blue});
        kxSelection::the().selectNodes({group});
        panel.findChild<QToolButton*>("_assignMaterial")->click();
        QCOMPARE(kxLogModel::the().entries().size(), std::size_t(1));
    }

    void logShows_data()
    {
        kxColumns<int, QString, QStringList>("level", "search", "shown");
        kxRow("all", 0, "", QStringList({"Opened", "read 5", "left out 2", "broken 5"}));
        kxRow("warnings", 1, "", QStringList({"left out 2", "broken 5"}));
        kxRow("errors", 2, "", QStringList({"broken 5"}));
        kxRow("a word", 0, " BROKEN ", QStringList({"broken 5"}));
        kxRow("a word of a level", 1, "5", QStringList({"broken 5"}));
    }

    void logShows()
    {
        QFETCH(int, level);
        QFETCH(QString, search);
        kxLogModel::the().clear();
        kxLogModel::the().startScene("Opened");
        kxLog::info(QString("read 5"));
        kxLogPanel panel;
        const auto* const hint = panel.findChild<QLabel*>(); // over all of the list while it is empty
        panel.resize(400, 300);
        panel.show();
        panel.findChild<QComboBox*>("_level")->setCurrentIndex(level);
        QCOMPARE(hint->isVisible(), lines(panel, "_lines").isEmpty());
        panel.findChild<QLineEdit*>("_search")->setText(search);
        kxLog::warning("left out 2");
        kxLog::error("broken 5");
        QTEST(lines(panel, "_lines"), "shown");
        auto* const field = panel.findChild<QLineEdit*>("_search");
        for (QToolButton* const inside : field->findChildren<QToolButton*>()) // the cross among them
            inside->click();
        QCOMPARE(field->text(), QString());
        button(panel, "_clearLog")->click();
        QCOMPARE(lines(panel, "_lines"), QStringList());
        QVERIFY(hint->isVisible() && hint->size() == hint->parentWidget()->size());
    }

    void logCopies()
    {
        kxLogModel::the().clear();
        kxLogPanel panel;
        kxLogModel::the().startScene("Opened");
        kxLog::warning("left out");
        kxLog::info(QString("read"));
        auto* const list = panel.findChild<QListView*>("_lines");
        const auto row = [list](int index) { return list->model()->index(index, 0); };
        QVERIFY(row(0).data(Qt::FontRole).value<QFont>().bold() && !row(2).data(Qt::FontRole).isValid());
        QVERIFY(row(2).data(Qt::ForegroundRole).isValid() && !row(0).data(Qt::ForegroundRole).isValid() &&
                !row(1).data(Qt::ForegroundRole).isValid());
        QCOMPARE(row(1).data(Qt::AccessibleTextRole).toString(), QString("warning: left out"));
        const auto copied = [&panel]
        {
            button(panel, "_copyLog")->click();
            return QApplication::clipboard()->text().split('\n');
        };
        QCOMPARE(copied().size(), 3);
        QVERIFY(copied().at(1).contains("warning  left out") && copied().at(2).startsWith(QString::number(2)));
        panel.resize(400, 300);
        panel.show();
        for (const int index : {2, 0})
            QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier,
                              list->visualRect(row(index)).center());
        QTimer::singleShot(0, this,
                           [&panel]
                           {
                               auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
                               QVERIFY(menu != nullptr);
                               QCOMPARE(menu->actions().at(1), button(panel, "_clearLog")->defaultAction());
                               menu->close();
                           });
        QContextMenuEvent asked(QContextMenuEvent::Mouse, QPoint(5, 5));
        QApplication::sendEvent(list->viewport(), &asked);
        QVERIFY(copied().size() == 2 && copied().at(0).endsWith("Opened") && copied().at(1).endsWith("read"));
    }

    void logStaysAtItsEnd()
    {
        kxLogModel::the().clear();
        kxLogPanel panel;
        panel.resize(300, 150);
        panel.show();
        auto* const list = panel.findChild<QListView*>("_lines");
        const QScrollBar* const bar = list->verticalScrollBar();
        const auto write = [](int count)
        {
            for (int i = 0; i < count; ++i)
                kxLog::info(QString::number(i));
            QCoreApplication::processEvents();
        };
        write(60);
        QTRY_VERIFY(bar->maximum() > 0 && bar->value() == bar->maximum());
        list->verticalScrollBar()->setValue(bar->maximum() / 2);
        const int looked = bar->value(), before = bar->maximum();
        write(5);
        QTRY_VERIFY(bar->maximum() > before);
        QCOMPARE(bar->value(), looked);
        write(int(kxLogModel::Capacity)); // the oldest lines go
        QCOMPARE(list->model()->rowCount(), int(kxLogModel::Capacity));
        QCOMPARE(list->model()->index(0, 0).data().toString(), QString("0"));
        kxTestModel(list);
        write(2); // one goes, one comes
    }

    void preferencesDialog_data()
    {
        kxColumns<int, int, int, int, bool>("button", "first", "second", "secondShown", "open");
        kxRow("OK", int(QDialogButtonBox::Ok), 31, 32, 32, false);
        kxRow("Apply", int(QDialogButtonBox::Apply), 31, 32, 32, true);
        kxRow("Cancel", int(QDialogButtonBox::Cancel), 0, 0, 7, false);
        kxRow("Restore Defaults", int(QDialogButtonBox::RestoreDefaults), 0, 7, 7, true); // of the page that is shown
    }

    void preferencesDialog()
    {
        QFETCH(int, button);
        Page first("First"), second("Second");
        kxPreferencesDialog dialog(nullptr);
        kxPreferencesStore::the().initialisePages();
        kxPreferencesStore::the().restoreDefaults(&first);
        kxPreferencesStore::the().restoreDefaults(&second);
        first.applied = second.applied = 0;
        dialog.openPage(QString());
        QVERIFY(first.field->isVisible() && !second.field->isVisible());
        dialog.openPage("Second");
        QVERIFY(second.field->isVisible() && !first.field->isVisible());
        auto* const buttons = dialog.findChild<QDialogButtonBox*>();
        const QRect names = dialog.findChild<QListWidget*>()->geometry(),
                    page = dialog.findChild<QStackedWidget*>()->geometry();
        QVERIFY(names.right() < page.left() && names.width() < page.width() / 2 && page.right() + 20 > dialog.width() &&
                page.bottom() < buttons->y());
        dialog.openPage("Nobody");
        QVERIFY(second.field->isVisible() && second.field->value() == 7);
        dialog.findChild<QListWidget*>()->setCurrentRow(0);
        QVERIFY(first.field->isVisible() && !second.field->isVisible());
        dialog.openPage("Second");
        first.field->setValue(31);
        second.field->setValue(32);
        buttons->button(QDialogButtonBox::StandardButton(button))->click();
        QTEST(first.applied, "first");
        QTEST(second.applied, "second");
        QTEST(dialog.isVisible(), "open");
        dialog.openPage(QString()); // shows what holds
        QTEST(second.field->value(), "secondShown");
    }

    void pagesComeAndGo()
    {
        {
            kxPreferencesDialog dialog(nullptr);
            dialog.openPage(QString());
            QVERIFY(
                dialog.findChild<QStackedWidget*>()->findChild<QLabel*>()->isVisible()); // that there is nothing to set
            QVERIFY(!dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::RestoreDefaults)->isEnabled());
        }
        Page stays("Stays");
        {
            kxPreferencesDialog dialog(nullptr);
            dialog.openPage("Stays");
            const auto* const names = dialog.findChild<QListWidget*>();
            const int before = names->count();
            {
                Page guest("Guest");
                QTRY_COMPARE(names->count(), before + 1);
                QVERIFY(stays.field->isVisible() &&
                        !guest.field->isVisible()); // nothing changes under the user's hands
            }
            QTRY_COMPARE(names->count(), before);
            QVERIFY(stays.field->isVisible());
        }
        QVERIFY(!stays.field.isNull() && !stays.field->isVisible()); // outlives the dialog
    }
};

QTEST_MAIN(tst_kxPanels)
#include "tst_kxPanels.moc"
