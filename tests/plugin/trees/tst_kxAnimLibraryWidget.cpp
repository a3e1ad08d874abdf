#include "kxTestLibrary.h"

#include <kernel/kxHostHooks.h>
#include <kernel/kxLogModel.h>
#include <kernel/kxSelection.h>

#include <kxController.h>
#include <kxMessageNames.h>
#include <kxUndo.h>
#include <osg/ChangeList.h>

#include <osg/Share.h>

#include <QApplication>
#include <QDragMoveEvent>
#include <QLineEdit>
#include <QTimer>
#include <QUndoStack>
#include <kxTable.h>

using namespace osg;
using namespace kxTestLibrary;

class tst_kxAnimLibraryWidget : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        _scene = std::make_unique<kxAnimFixture>();
        _drive = kxAnimFixture::clip("drive", {block("roll")});
        _open = block("open");
        // Not in the order of their names.
        _wheel = object("wheel", {block("turn")});
        _car = object("car", {_drive, kxAnimFixture::curve("translation", "X", {{0.0f, 0.0f}})});
        _door = object("door", {_open});
        _paint = material("paint", {block("fade")});
        _glass = material("glass", {block("mist")});
        tag(_wheel, {"round", "small", "round"});
        tag(_door, {"small"});
        kxAnimFixture::object("still");
        _library = std::make_unique<Library>();
        _library->rebuild(false);
    }

    void cleanup()
    {
        _library.reset();
        kxSelection::the().clear();
        kxUndoStack::get(0).stack()->clear();
        _scene.reset();
    }

    void showsTheScene()
    {
        const QStringList expected = {"car",    ".drive", "..roll", "glass", ".mist",  "paint",  ".fade", "round",
                                      ".wheel", "..turn", "small",  ".door", "..open", ".wheel", "..turn"};
        QCOMPARE(_library->dump(), expected);

        // A node that is named as a group is beside it; a scene plate has one row; bare curves show their node
        // alone.
        object("round", {block("spin")});
        const NodePtr plate = object("plate", {block("blink")});
        kxScene::the()->sceneplateRoot()->addChild(plate);
        object("zoom", {kxAnimFixture::curve("scale", "X", {{0.0f, 1.0f}})});
        _library->rebuild(false);
        QStringList found = _library->dump();
        QCOMPARE(found.mid(0, 7), expected.mid(0, 7));
        QCOMPARE(found.count("round"), 2);
        found.sort();
        QStringList extended = expected + QStringList{"round", ".spin", "plate", ".blink", "zoom"};
        extended.sort();
        QCOMPARE(found, extended);
        QVERIFY(_library->row("plate/blink") != nullptr);
        QVERIFY(_library->row("small/wheel/turn")->icon(0).availableSizes().size() > 0);
        QVERIFY(!_library->row("small")->isGroup());
    }

    void dragsRows_data()
    {
        // carried: the names of animation and container of each row
        kxColumns<QString, QStringList>("selected", "carried");

        kxRow("animation of a node", "small/door/open", QStringList{"open", "door"});
        kxRow("animation of a material", "paint/fade", QStringList{"fade", "paint"});
        kxRow("animation below an animation", "car/drive/roll", QStringList{"roll", ""});
        kxRow("scene node", "car", QStringList{"", "car"});
        kxRow("scene node in a group", "small/door", QStringList{"", "door"});
        kxRow("material", "paint", QStringList{"", ""});
        kxRow("group", "small", QStringList{"", ""});
        kxRow("what is below a selected row goes with it", "car/drive/roll,car/drive,paint/fade",
              QStringList{"drive", "car", "fade", "paint"});
    }

    void dragsRows()
    {
        QFETCH(QString, selected);
        _library->select(selected);
        QStringList carried;
        for (const kxAnimLibraryPayload::Row& row : _library->payload().rows)
        {
            carried << (row.animation() ? QString::fromStdString(row.animation()->getNodeName()) : QString());
            carried << (row.container() ? QString::fromStdString(row.container()->getNodeName()) : QString());
        }
        QTEST(carried, "carried");
        QVERIFY(_library->mimeData({}) == nullptr);
    }

    void dropsRows_data()
    {
        // target: empty = no row
        // path: of a row that is in the tree afterwards
        kxColumns<QString, QString, bool, QString>("source", "target", "taken", "path");

        kxRow("block to a node", "small/door/open", "car", true, "car/open");
        kxRow("block to a material", "paint/fade", "glass", true, "glass/fade");
        kxRow("block of a node to a material", "small/door/open", "paint", true, "small/door/open");
        kxRow("block of a material to a node", "paint/fade", "car", true, "paint/fade");
        kxRow("block in a clip to a node", "car/drive/roll", "small/door", true, "car/drive/roll");
        kxRow("block to its own node", "small/door/open", "small/door", true, "small/door/open");
        kxRow("node to a node", "car", "small/door", true, "car/drive");
        kxRow("node to a group", "car", "small", true, "small/car/drive");
        kxRow("node from two groups to one", "small/wheel", "round", true, "round/wheel/turn");
        kxRow("node to no row", "small/wheel", "", true, "wheel/turn");
        kxRow("block to no row", "small/door/open", "", true, "small/door/open");
        kxRow("block to a group", "small/door/open", "round", true, "small/door/open");
        kxRow("material to a group", "paint", "small", true, "paint/fade");
        kxRow("anything to an animation", "small/door/open", "car/drive", false, "small/door/open");
    }

    void dropsRows()
    {
        QFETCH(QString, source);
        QFETCH(QString, target);
        QFETCH(QString, path);
        const QStringList before = _library->dump();
        const UInt64 marks = WinThreadBase::getCurrentChangeList()->count();
        QTEST(_library->drop(source, target), "taken");
        QVERIFY2(_library->row(path) != nullptr, qPrintable(_library->dump().join('\n')));
        // Whoever asks for unsaved changes is notified.
        QCOMPARE(WinThreadBase::getCurrentChangeList()->count() != marks, _library->dump() != before);
        const bool leavesGroup = source == "small/wheel";
        QCOMPARE(_library->row("small/wheel") == nullptr, leavesGroup);
        QVERIFY(_library->dump().size() <= before.size() + 1);
    }

    void refusesDrops()
    {
        _library->select("small/door/open");
        const std::unique_ptr<QMimeData> mime(_library->mimeData(_library->selectedItems()));
        QVERIFY(!_library->dropMimeData(_library->row("car"), 0, nullptr, Qt::CopyAction));
        QVERIFY(!_library->dropMimeData(_library->row("car"), 0, mime.get(), Qt::MoveAction));
        QMimeData other;
        other.setData("application/anim-clip-item", mime->data("application/anim-lib-item"));
        QVERIFY(!_library->dropMimeData(_library->row("car"), 0, &other, Qt::CopyAction));

        // The row of a node that has died is no group, whatever its text.
        kxScene::the()->root()->subChild(_car);
        _library->select("small/wheel");
        const std::unique_ptr<QMimeData> wheel(_library->mimeData(_library->selectedItems()));
        QVERIFY(!_library->dropMimeData(_library->row("car"), 0, wheel.get(), Qt::CopyAction));
        QCOMPARE(tagsOf(_wheel).size(), std::size_t(3));
        // What was dragged may die as well.
        kxScene::the()->root()->subChild(_wheel);
        QVERIFY(_library->dropMimeData(_library->row("small"), 0, wheel.get(), Qt::CopyAction));
        QVERIFY(_library->row("small/wheel") == nullptr);
    }

    void refusesDropsOnWhatIsDragged()
    {
        _library->resize(200, 400);
        _library->show();
        _library->expandAll();
        _library->select("car");
        const std::unique_ptr<QMimeData> mime(_library->mimeData(_library->selectedItems()));
        const auto accepted = [&](const QString& path)
        {
            QDragMoveEvent event(_library->visualItemRect(_library->row(path)).center(), Qt::CopyAction, mime.get(),
                                 Qt::LeftButton, Qt::NoModifier);
            event.setDropAction(Qt::CopyAction);
            event.accept();
            _library->dragMoveEvent(&event);
            return event.isAccepted();
        };
        QVERIFY(!accepted("car"));
        QVERIFY(!accepted("car/drive/roll"));
        QVERIFY(accepted("small"));
    }

    void groupsTheSelection()
    {
        QSignalSpy created(_library.get(), &kxAnimLibraryWidget::groupCreated);
        _library->show();
        _library->row("paint")->setExpanded(false);
        _library->select("car,paint,small/door,small/door/open");
        _library->createGroupFromSelected();
        QCOMPARE(created.count(), 1);
        kxAnimTreeWidgetItem* const group = static_cast<kxAnimTreeWidgetItem*>(_library->topLevelItem(0));
        QVERIFY(group->isGroup() && group->text(0).isEmpty());
        QCOMPARE(group->childCount(), 2);
        QVERIFY(_library->row("/car")->isExpanded() && !_library->row("/paint")->isExpanded());
        QCOMPARE(_library->selectedItems().size(), 4);
        QVERIFY(tagsOf(_car).empty());

        // The name is asked for at once, and writes the tags.
        QLineEdit* const editor = _library->viewport()->findChild<QLineEdit*>();
        QVERIFY(editor != nullptr);
        QTest::keyClicks(editor, "fast");
        QTest::keyClick(editor, Qt::Key_Return);
        QCoreApplication::processEvents();
        QCOMPARE(tagsOf(_car), std::vector<std::string>{"fast"});
        QCOMPARE(tagsOf(_paint), std::vector<std::string>{"fast"});
        QCOMPARE(tagsOf(_door), std::vector<std::string>{"small"});
        _library->rebuild();
        QVERIFY(_library->row("fast/car/drive/roll") != nullptr && _library->row("fast/paint/fade") != nullptr);
    }

    void groupOfNothing()
    {
        QSignalSpy created(_library.get(), &kxAnimLibraryWidget::groupCreated);
        kxLogModel::the().clear();
        _library->select("small/door/open");
        const QStringList before = _library->dump();
        _library->createGroupFromSelected();
        QCOMPARE(created.count(), 1);
        QCOMPARE(_library->dump(), before);
        QCOMPARE(kxLogModel::the().entries().back().text,
                 QString("Warning: Can not create group because there are no node items selected!"));

        _library->createGroup();
        QCOMPARE(_library->dump().size(), before.size() + 1);
        // A drop on a group that has no name yet gives it the one that an empty name stands for.
        QVERIFY(_library->drop("car", ""));
        _library->createGroup();
        _library->select("car");
        const std::unique_ptr<QMimeData> mime(_library->mimeData(_library->selectedItems()));
        QVERIFY(_library->dropMimeData(_library->row(""), 0, mime.get(), Qt::CopyAction));
        QVERIFY(_library->row("Group/car/drive") != nullptr);
    }

    void findsAndSelects()
    {
        QCOMPARE(_library->findItem(_open), _library->row("small/door/open"));
        QVERIFY(_library->findItem(AnimNodePtr()) == nullptr);
        // Clones have the core in common: the first row wins.
        kernel()->addAnimation(_car, cloneAnimTree(_open, true));
        _library->rebuild();
        QCOMPARE(_library->findItem(_open), _library->row("car/open"));

        QSignalSpy changes(_library.get(), SIGNAL(itemSelectionChanged()));
        _library->selectItemsForNodes({_wheel, _car});
        _library->selectItemsForMaterials({_glass});
        QCOMPARE(changes.count(), 0);
        QCOMPARE(_library->selectedItems().size(), 4);
        for (const char* path : {"car", "round/wheel", "small/wheel", "glass"})
            QVERIFY2(_library->row(path)->isSelected(), path);
        _library->clearSelection();
        _library->selectItemsForNodes({NodePtr()}); // stands for rows without a node
        QCOMPARE(_library->selectedItems().size(), 4);

        changes.clear();
        const auto send = [](const boost::any& blocks)
        {
            kxMessage message;
            message.set("blockNodes", blocks, true);
            kxController::call(kxMessageName::ClipBlockSelected, message, 0);
        };
        send(std::vector<AnimNodePtr>{AnimNodePtr(), _drive, _open});
        QVERIFY(changes.count() > 0);
        QCOMPARE(_library->selectedItems().size(), 2);
        QVERIFY(_library->row("car/drive")->isSelected() && _library->row("car/open")->isSelected());
        send(std::vector<NodePtr>{_drive});
        QCOMPARE(_library->selectedItems().size(), 1);
        const osg::Share<AnimNode> elsewhere(kxAnimFixture::block("elsewhere", {}));
        send(std::vector<AnimNodePtr>{elsewhere.get()});
        QCOMPARE(_library->selectedItems().size(), 1);

        kernel()->addAnimation(_car, block("late"));
        kxSend(kxMessageName::PastedAnimations);
        QVERIFY(_library->row("car/late") != nullptr);
    }

    void selectsNoRowBetween()
    {
        for (const char* const name : {"m0", "m1", "m2"})
            tag(object(name, {block(name)}), {"big"});
        _library->rebuild(false);
        const auto node = [this](const char* path) { return _library->row(path)->node(); };
        _library->selectItemsForNodes({_car, node("big/m0"), node("big/m2")});
        QCOMPARE(_library->dump(true).filter("*"), QStringList({".m0+*", ".m2+*", "car+*"}));
    }

    void rebuildKeepsAndNamesFollow()
    {
        for (int i = 0; i < 120; ++i)
            tag(object(qPrintable(QString("n%1").arg(1000 + i)), {}), {"many"});
        _library->rebuild(false);
        _library->show();
        for (const char* const path : {"small/door", "car"}) // not in the order of their ids
            _library->row(path)->setSelected(true);
        QItemSelection ranges;
        for (int i = 0; i < 120; i += 2)
            ranges.append(QItemSelectionRange(_library->indexFromItem(_library->row("many")->child(i))));
        _library->selectionModel()->select(ranges, QItemSelectionModel::Select);
        QCOMPARE(_library->selectedItems().size(), 62);
        QVERIFY(_library->updatesEnabled());
        QSignalSpy changes(_library.get(), SIGNAL(itemSelectionChanged()));
        _library->rebuild(true);
        QCOMPARE(changes.size(), 0);

        Library other;
        other.rebuild(false);
        const QSignalSpy painted(other.model(), &QAbstractItemModel::dataChanged);
        _library->row("car/drive")->setData(0, Qt::EditRole, "ride");
        QVERIFY(!painted.isEmpty());
    }

    void selectsInTheScene()
    {
        int scrolls = 0;
        kxHostHooks::the().scrollToNode = [&scrolls](const NodePtr&) { ++scrolls; };
        const auto selected = [] { return kxSelection::the().nodes(); };
        const auto doubleClick = [this](const char* path)
        { Q_EMIT _library->itemDoubleClicked(_library->row(path), 0); };
        QUndoStack* const stack = kxUndoStack::get(0).stack();

        doubleClick("car");
        QVERIFY(selected() == std::vector<NodePtr>{_car});
        QCOMPARE(scrolls, 1);
        QCOMPARE(stack->count(), 1);
        for (const char* path : {"car/drive", "small", "paint"})
            doubleClick(path);
        QCOMPARE(stack->count(), 1);

        _library->select("small/door/open,car/drive/roll,paint,small");
        QMetaObject::invokeMethod(_library.get(), "selectNodes");
        QVERIFY(selected() == std::vector<NodePtr>{_door});
        QCOMPARE(stack->count(), 1); // selections with nothing between them are one step
        _library->row("small")->setGroup(true);
        _library->select("small");
        QMetaObject::invokeMethod(_library.get(), "selectNodes");
        QVERIFY((selected() == std::vector<NodePtr>{_door, _wheel}));
        stack->undo();
        QVERIFY(selected().empty());
        kxHostHooks::the().scrollToNode = nullptr;
    }

    void blursWhatIsBelow()
    {
        _library->resize(200, 400);
        _library->show();
        QAction* const blur = _library->action("Motion Blur");
        QAction* const save = _library->action("Save...");
        const auto open = [this](const QString& path)
        {
            QTimer::singleShot(0, _library->contextMenu(), &QMenu::close);
            _library->showContextMenu(_library->visualItemRect(_library->row(path)).center());
        };
        _library->select("car/drive");
        open("car/drive");
        QVERIFY(blur->isEnabled() && !blur->isChecked() && save->isEnabled());
        blur->trigger();
        const AnimNodePtr roll = AnimNodePtr::dcast(_drive->getChild(0));
        QVERIFY(_drive->getMotionBlur() && roll->getMotionBlur() && !_open->getMotionBlur());
        open("car/drive");
        QVERIFY(blur->isChecked());
        blur->trigger();
        QVERIFY(!_drive->getMotionBlur() && !roll->getMotionBlur());

        open("car");
        QVERIFY(!blur->isEnabled() && !blur->isChecked());
        _library->select("car,paint");
        open("car");
        QVERIFY(!save->isEnabled());
    }

    void takesKeyedObjectsOut()
    {
        const AnimNodePtr keys = kxAnimFixture::curve("translation", "Y", {{1.0f, 3.0f}, {2.0f, 7.0f}});
        object("keyed", {keys});
        material("faded", {kxAnimFixture::curve("diffuse", "R", {{1.0f, 1.0f}})});
        tag(object("bare", {}), {"round"});
        _library->rebuild(false);
        const QStringList before = _library->dump();
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        for (const char* const command : {"remove", "cut"})
        {
            _library->select("keyed,faded");
            QVERIFY(QMetaObject::invokeMethod(_library.get(), command));
            QVERIFY(!_library->dump().contains("keyed") && !_library->dump().contains("faded"));
            QCOMPARE(_library->dump().size(), before.size() - 2);
            stack->undo();
            _library->rebuild(true); // whoever shows the library is notified
            QCOMPARE(_library->dump(), before);
            QCOMPARE(kxAnimFixture::curveOf(keys)->getControlPoints().size(), 2u);
        }
        // What has nothing to delete says so.
        kxLogModel::the().clear();
        _library->select("round,round/bare");
        _library->remove();
        QCOMPARE(_library->dump(), before);
        QCOMPARE(kxLogModel::the().entries().size(), 1);
    }

    void makesBlocksOfKeyedChannels()
    {
        const auto key = [] { return kxAnimFixture::curve("scale", "Y", {{1.0f, 2.0f}}); };
        for (int i = 0; i < 30; ++i)
            object(qPrintable(QString("a%1").arg(i)), {block("fill")}); // so that not all rows are on screen
        object("yard", {key()});
        material("zinc", {key()});
        _library->resize(200, 150);
        _library->show();
        _library->rebuild(false);
        _library->select("yard");
        _library->createBlocksForSelected();
        const kxAnimTreeWidgetItem* const made = _library->row("yard/yard");
        QVERIFY2(made != nullptr, qPrintable(_library->dump().join(' ')));
        QVERIFY(made->isSelected() && _library->viewport()->rect().contains(_library->visualItemRect(made).center()));
        QCOMPARE(made->animNode()->getNChildren(), 1u);
        object("yawl", {key()});
        _library->rebuild(false);
        _library->select("yawl,zinc,small"); // more than one: none is chosen
        _library->createBlocksForSelected();
        QVERIFY(_library->selectedItems().isEmpty());
        QCOMPARE(_library->row("yawl")->childCount() + _library->row("zinc")->childCount(), 2);
    }

    void expandsToADepth_data()
    {
        kxColumns<int, QString, QString>("depth", "selected", "expanded");
        kxRow("nothing", -1, "", "");
        // The rows that are expanded, selected ones with a star.
        kxRow("the top", 0, "", "car+ glass+ paint+ round+ small+");
        kxRow("one below", 1, "", "car+ .drive+ glass+ paint+ round+ .wheel+ small+ .door+ .wheel+");
        kxRow("a selected row to the top", 0, "car", "car+* glass+ paint+ round+ .wheel+ small+ .door+ .wheel+");
        kxRow("a selected row below", 1, "round/wheel",
              "car+ .drive+ glass+ paint+ round+ .wheel+* small+ .door+ .wheel+");
    }

    void expandsToADepth()
    {
        QFETCH(int, depth);
        QFETCH(QString, selected);
        _library->expandAll();
        _library->select(selected);
        _library->expandToDepth(depth);
        QTEST(_library->dump(true).filter("+").join(' '), "expanded");
        QVERIFY(_library->updatesEnabled());
    }

    void saysWhatToDo()
    {
        _library->resize(200, 200);
        const auto seen = [this] { return _library->viewport()->grab().toImage(); };
        const auto words = [this](const QImage& image)
        {
            const QRgb quiet = _library->palette().color(QPalette::Disabled, QPalette::WindowText).rgb();
            int pixels = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    pixels += image.pixel(x, y) == quiet ? 1 : 0;
            return pixels > 20;
        };
        QVERIFY(!words(seen()));
        _library->search("no such name");
        const QImage nothingFound = seen();
        QVERIFY(words(nothingFound));
        _library->clear();
        QVERIFY(words(seen()) && seen() != nothingFound);
    }

private:
    std::unique_ptr<kxAnimFixture> _scene;
    std::unique_ptr<Library> _library;
    NodePtr _car, _door, _wheel; // the wheel in the groups "round" and "small", the door in "small"
    MaterialPtr _paint, _glass;
    AnimNodePtr _drive; // a clip over the block "roll", on the car
    AnimNodePtr _open;  // a block on the door
};

QTEST_MAIN(tst_kxAnimLibraryWidget)
#include "tst_kxAnimLibraryWidget.moc"
