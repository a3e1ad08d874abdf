#include "kxSceneFixture.h"

#include <app/kxHostSettings.h>
#include <app/kxMainWindow.h>
#include <app/kxWelcome.h>
#include <journal/kxHistory.h>
#include <journal/kxVersions.h>
#include <kernel/kxLogModel.h>
#include <kxAnimFixture.h>
#include <kxAnswer.h>
#include <kxIconManager.h>
#include <kxPreferences.h>
#include <kxShortcut.h>
#include <kxTexts.h>
#include <panels/kxEmptyHint.h>
#include <python/kxInterpreter.h>
#include <view/kxView3D.h>

#include <QtWidgets>

using namespace kxSceneFixture;

/// The window without the tools of the plug-in, as its user meets it.
class tst_kxMenus : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        kxHostSettings().clear();
        clear();
        open();
    }

    void cleanup() { _window.reset(); }

    void recentFiles()
    {
        QVERIFY(recent().isEmpty());
        const QString first = file("first"), second = file("second");
        QVERIFY(_window->document().openFile(first) && _window->document().openFile(second));
        QCOMPARE(recent(), QStringList({"second.kxs", "first.kxs", "", "Clear List"}));
        const auto entry = [this](int i)
        { return _window->findChild<QMenu*>("_fileMenu")->findChildren<QMenu*>().at(0)->actions().at(i); };
        QCOMPARE(entry(1)->toolTip(), first);
        entry(1)->trigger();
        QVERIFY(_window->document().path() == first && recent().at(0) == "first.kxs");
        QFile::remove(second);
        _window->document().dialogs().showError = nullptr;
        entry(1)->trigger();
        QCOMPARE(recent(), QStringList({"first.kxs", "", "Clear List"}));
        for (int i = 0; i < 14; ++i)
            _window->document().recentFiles().add(path("x") + QString::number(i));
        QCOMPARE(recent().size(), 12);
        open(); // the next start
        QVERIFY(recent().size() == 12 && recent().at(0) == "x13" && recent().at(9) == "x4");
        entry(11)->trigger();
        QVERIFY(recent().isEmpty() && kxRecentFiles().files().isEmpty());
    }

    void welcome()
    {
        auto* const welcome = _window->view()->findChild<kxWelcome*>();
        const auto isInTheMiddle = [&]
        {
            const QPoint off = welcome->geometry().center() - _window->view()->rect().center();
            return std::abs(off.x()) <= 1 && off.y() > 40 && _window->view()->rect().contains(welcome->geometry());
        };
        _window->resize(1500, 900);
        QTRY_VERIFY(welcome->isVisible() && isInTheMiddle());
        _window->resize(_window->width() - 120, _window->height() - 60);
        QTRY_VERIFY(isInTheMiddle());
        auto* const box = welcome->findChild<QPushButton*>("_welcomeBox");
        box->setFocus();
        box->click();
        kxScene::the()->flush();
        QVERIFY(!welcome->isVisible() && _window->focusWidget() == _window->view());
        QCOMPARE(objectNames(), QStringList("Box"));
        _window->document().startOver();
        kxScene::the()->flush();
        QVERIFY(welcome->isVisible());
        welcome->findChild<QPushButton*>("_welcomeSample")->click();
        QCOMPARE(_window->document().name(), QString("turntable.kxs"));
    }

    void guide()
    {
        const QPointer<QWidget> guide = opened<QWidget>("_actionUserGuide", "_guide");
        QVERIFY(guide->isVisible());
        auto* const browser = guide->findChild<QTextBrowser*>();
        QVERIFY(browser->toPlainText().contains("Without a window") && browser->verticalScrollBar()->value() == 0);
        int pictures = 0;
        for (QTextBlock block = browser->document()->begin(); block.isValid(); block = block.next())
            for (auto it = block.begin(); !it.atEnd(); ++it)
                if (const QTextCharFormat format = it.fragment().charFormat(); format.isImageFormat())
                {
                    ++pictures;
                    QVERIFY(format.toImageFormat().width() > 0.8 * browser->viewport()->width());
                }
        QVERIFY(pictures > 0);
        auto* const escape = guide->findChild<QShortcut*>();
        QCOMPARE(escape->key(), QKeySequence(QKeySequence::Cancel));
        Q_EMIT escape->activated();
        QTRY_VERIFY(guide.isNull());
    }

    void shortcuts_data()
    {
        kxColumns<QString, QStringList>("search", "shown");
        QTest::newRow("a text") << "dupl" << QStringList{"Edit", "Duplicate|Ctrl+D"};
        QTest::newRow("a key") << "f11" << QStringList{"View", "Full Screen|F11"};
        QTest::newRow("two keys, once") << "redo" << QStringList{"Edit", "Redo|Ctrl+Shift+Z, Ctrl+Y"};
        QTest::newRow("of a tool") << "twirl" << QStringList{"Sorcery", "Twirl the curve|Ctrl+J"};
        QTest::newRow("nothing") << "no such thing" << QStringList();
        QTest::newRow("menus without keys") << "script" << QStringList();
    }

    void shortcuts()
    {
        QFETCH(QString, search);
        if (QTest::currentDataTag() == QByteArray("of a tool"))
            kxShortcut::addKey("Sorcery", Qt::Key_J, Qt::ControlModifier, "Twirl the curve");
        const QPointer<QDialog> dialog = opened<QDialog>("_actionKeyboardShortcuts", "_shortcutsDialog");
        auto* const tree = dialog->findChild<QTreeWidget*>();
        const auto rows = [tree]
        {
            QStringList texts;
            for (QTreeWidgetItemIterator it(tree, QTreeWidgetItemIterator::NotHidden); *it != nullptr; ++it)
                if (tree->visualItemRect(*it).isValid())
                    texts << (*it)->text(0) + ((*it)->parent() == nullptr ? "" : "|" + (*it)->text(1));
            return texts;
        };
        QVERIFY(rows().contains("New|Ctrl+N") && !rows().contains("Script"));
        QVERIFY(tree->columnWidth(0) > tree->columnWidth(1) && tree->isFirstColumnSpanned(0, QModelIndex()));
        QVERIFY(tree->columnWidth(1) > tree->fontMetrics().horizontalAdvance("Ctrl+Shift+Z, Ctrl+Y"));
        dialog->findChild<QLineEdit*>()->setText(search);
        QTEST(rows(), "shown");
        dialog->findChild<QPushButton*>()->click();
        QTRY_VERIFY(dialog.isNull());
    }

    void layoutIsKeptAndReset()
    {
        const int width = dock("Scene")->width();
        const QSize size = _window->size();
        _window->resize(400, size.height());
        QCoreApplication::processEvents();
        QVERIFY(dock("Scene")->width() > 150); // names stay readable
        _window->resize(size);
        _window->resizeDocks({dock("Scene")}, {width + 70}, Qt::Horizontal);
        dock("Materials")->close();
        dock("History")->setFloating(true);
        dock("Console")->raise();
        QVERIFY(_window->close());
        open();
        QVERIFY(!dock("Materials")->isVisible() && dock("History")->isFloating());
        QVERIFY(std::abs(dock("Scene")->width() - width) > 30);
        action("_actionResetLayout")->trigger();
        QTRY_VERIFY(dock("Materials")->isVisible() && !dock("History")->isFloating());
        QTRY_VERIFY(std::abs(dock("Scene")->width() - width) < 3);
        QVERIFY(!dock("Log")->visibleRegion().isEmpty() && dock("Console")->visibleRegion().isEmpty());
    }

    void menusInTheirOrder()
    {
        const auto entries = [this](const char* name)
        {
            QStringList texts;
            for (const QAction* const entry : _window->findChild<QWidget*>(name)->actions())
                texts << (entry->isSeparator() ? "-" : entry->text().remove('&'));
            return texts.join(' ');
        };
        QCOMPARE(
            entries("_fileMenu"),
            QString("New Open... Open Recent Versions of a File... Code of This Scene... - Save Save As... - Import... "
                    "Export glTF... - Render Image... Render Frames... Render Movie... - Quit"));
        QCOMPARE(entries("_helpMenu"), QString("User Guide Keyboard Shortcuts - About"));
        QVERIFY2(entries("Tools").startsWith("New Open... Save Undo Redo - "), qPrintable(entries("Tools")));
        QVERIFY(action("_actionClippingPlane")->toolTip().contains("animated"));
    }

    void savedAndBesideIt()
    {
        const auto startOf = [this](const char* entry)
        {
            QString start;
            kxAnswer<QFileDialog>(
                [&start](QFileDialog& dialog)
                {
                    start = dialog.directory().dirName();
                    dialog.reject();
                });
            action(entry)->trigger();
            return start;
        };
        QVERIFY(QDir(path("")).mkpath("scenes") && _window->document().saveTo(path("scenes/fan.kxs")));
        addObject("A");
        action("_actionSave")->trigger();
        QCOMPARE(_window->statusBar()->currentMessage(), QString("Saved 'fan.kxs'"));
        QCOMPARE(kxLogModel::the().entries().back().text, QString("Saved 'fan.kxs'"));
        const auto starts = [&startOf]
        { return startOf("_actionOpen") + ' ' + startOf("_actionImport") + ' ' + startOf("_actionCompareWithFile"); };
        QCOMPARE(starts(), QString("scenes scenes scenes"));
        QVERIFY(_window->document().newScene());
        QCOMPARE(starts(), QString("scenes scenes scenes")); // the last one there was
        QVERIFY(QDir(path("")).mkpath("models"));
        kxHostSettings().setValue("folder/model", path("models"));
        QCOMPARE(starts(), QString("scenes models scenes"));
    }

    void comparesWithAFile()
    {
        const osg::NodePtr a = addObject("A");
        animate(a); // which tells it from any other
        QVERIFY(_window->document().saveTo(path("before.kxs")));
        const QPointer<QDialog> dialog = compared();
        auto* const tree = dialog->findChild<QTreeWidget*>();
        auto* const copy = dialog->findChild<QPushButton*>("_copyDifferences");
        auto* const again = dialog->findChild<QPushButton*>("_compareAgain");
        QVERIFY(tree->findChild<kxEmptyHint*>()->isVisible() && !copy->isEnabled() && !dialog->isModal());
        kxSceneEdits::rename(a, "Arm");
        kxSceneEdits::addMaterial();
        addObject("B");
        again->click();
        QCOMPARE(dialog->findChild<QLabel*>("_summary")->text(),
                 QString("From before.kxs to the open scene: 3 differences in 3 things"));
        QStringList rows;
        for (QTreeWidgetItemIterator it(tree); *it != nullptr; ++it)
            rows << (*it)->text(0);
        QCOMPARE(rows.mid(2), QStringList({"Object 'Arm'", "Renamed from 'A'", "Object 'B'", "Added"}));
        tree->setFocus();
        QVERIFY(kxSelection::the().nodes().empty()); // looking selects nothing
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {},
                          tree->visualItemRect(tree->topLevelItem(1)->child(0)).center());
        QCOMPARE(kxSelection::the().nodes(), std::vector<osg::NodePtr>({a}));
        copy->click();
        QCOMPARE(QApplication::clipboard()->text(), QString("'Arm': renamed from 'A'"));
        tree->setCurrentItem(tree->topLevelItem(0));
        QCOMPARE(kxSelection::the().materials().size(), std::size_t(1));
        // A file that can't be read any more: all stays as it is, and the user hears why.
        QFile::resize(path("before.kxs"), 20);
        QString said;
        kxAnswer<QMessageBox>(
            [&said](QMessageBox& box)
            {
                said = box.text() + box.informativeText();
                box.accept();
            });
        again->click();
        QVERIFY2(said.startsWith("The file can't be compared.") && said.contains("before.kxs"), qPrintable(said));
        QVERIFY(tree->topLevelItemCount() == 3);
        dialog->close();
        QTRY_VERIFY(dialog.isNull());
    }

    void posesThatPassAreSaid_data()
    {
        kxColumns<QString, QString>("shown", "says");
        kxRow("what the timeline drives", "", "'Slider' is animated: this pose is lost");
        kxRow("what a clip drives", "Show", "'Slider' is animated by 'Show', which is shown: this edit is lost");
        kxRow("what a block drives", "Slide", "'Slider' is animated by 'Slide'");
        kxRow("what another clip drives", "Other", "");
    }

    void posesThatPassAreSaid()
    {
        typedef kxAnimFixture F;
        QFETCH(QString, shown);
        QFETCH(QString, says);
        const osg::NodePtr slider = F::object("Slider"), idler = F::object("Idler");
        const osg::AnimNodePtr block =
            F::added(slider, F::block("Slide", {F::curve("translation", "X", {{0, 1}, {3, 8}})}));
        F::added(F::clip("Show", {F::clone(block, 1)}));
        F::added(F::clip("Other", {F::clip("Empty", {})}));
        kxAnimManager::the()->setCurrentFrame(12, true, true);
        if (!shown.isEmpty())
            block->setTravMask(0);
        osg::markChanged(block, osg::Node::TravMaskFieldMask);
        const auto show = [&](double frame)
        {
            if (shown.isEmpty())
                kxAnimManager::the()->setCurrentFrame(frame, false, true);
            else
                kxAnimManager::the()->evaluateByFrame(kxAnimManager::the()->find(shown.toStdString()), frame, true,
                                                      false, false);
            kxScene::the()->flush();
        };
        const auto pose = [](const osg::NodePtr& node, float x)
        {
            kxSceneEdits::setField({node->getCore()}, "translation", osg::FieldValue(osg::Vec3f(x, 0, 0)));
            kxScene::the()->flush();
            return kxLogged().join('|');
        };
        show(36);
        kxLogModel::the().clear();
        QCOMPARE(pose(idler, 300), QString());
        const QString said = pose(slider, 300);
        QVERIFY2(says.isEmpty() ? said.isEmpty() : said.startsWith(says), qPrintable(said));
        QCOMPARE(pose(slider, 301), QString()); // once
        QVERIFY(_window->document().saveTo(path("posed.kxs")));
        QCOMPARE(kxLogged().filter("Saved without poses").size(), says.isEmpty() ? 0 : 1);
        show(40);
        QCOMPARE(pose(slider, 302).isEmpty(), says.isEmpty());
    }

    /// What the wizard has left on is asked about once it has finished, in words and as a setting.
    void finishedClipsRest_data()
    {
        kxColumns<int, bool, QString, bool, int, float>("setting", "unattended", "button", "active", "settingAfter",
                                                        "x");
        kxRow("asked", 0, false, "As It Begins", false, 0, 1.0f);
        kxRow("as it ends", 0, false, "As It Ends", false, 0, 5.0f);
        kxRow("as they stand", 0, false, "As They Stand, always", false, 4, 3.0f);
        kxRow("asked, and always", 0, false, "As It Begins, always", false, 1, 1.0f);
        kxRow("asked, and never", 0, false, "Leave On, always", true, 2, 3.0f);
        kxRow("always", 1, false, "", false, 1, 1.0f);
        kxRow("always as it ends", 3, false, "", false, 3, 5.0f);
        kxRow("never", 2, false, "", true, 2, 3.0f);
        kxRow("nobody there", 0, true, "", true, 0, 3.0f);
    }

    void finishedClipsRest()
    {
        QFETCH(QString, button);
        typedef kxAnimFixture F;
        QFETCH(int, setting);
        QFETCH(bool, unattended);
        kxPreferences::getData().set("film.finishedClips", setting);
        const osg::AnimNodePtr old =
            F::added(F::object("Old"), F::block("Old", {F::curve("translation", "X", {{0, 1}})}));
        F::added(F::clip("Old", {F::clone(old, 0)}));
        _window->setUnattended(unattended);
        QWizard wizard;
        wizard.show();
        const osg::NodePtr object = F::object("New");
        F::transform(object)->setTranslation(osg::Vec3f(9, 0, 0)); // as the wizard's user has left it
        const osg::AnimNodePtr made =
            F::added(object, F::block("New", {F::curve("translation", "X", {{0, 1}, {2, 5}})}));
        F::added(F::clip("New", {F::clone(made, 4)}));
        kxAnimManager::the()->setCurrentFrame(24, true, false);
        const QByteArray before = bytes();
        wizard.accept();
        QCoreApplication::processEvents();
        _window->setUnattended(true);
        auto* const box = _window->findChild<QMessageBox*>("_clipFinished");
        QCOMPARE(box != nullptr, !button.isEmpty());
        if (box != nullptr)
        {
            QVERIFY(box->text().contains("\"New\""));
            box->checkBox()->setChecked(button.contains("always"));
            for (QAbstractButton* const each : box->buttons())
                if (button.startsWith(each->text().remove('&')))
                    each->click();
        }
        QVERIFY(old->isActive());
        QTEST(made->isActive(), "active");
        QTEST(F::transform(object)->getTranslation().x(), "x");
        if (!made->isActive())
            stack()->undo();
        QVERIFY(made->isActive() && bytes() == before);
        _window->openPreferences("Film");
        auto* const choice = _window->findChild<QComboBox*>("_finishedClips");
        QVERIFY(choice->isVisible());
        QTEST(choice->currentIndex(), "settingAfter");
        choice->setCurrentIndex(0);
        _window->findChild<QDialog*>("_preferencesDialog")->accept();
        QCOMPARE(boost::any_cast<int>(kxPreferences::getData().get("film.finishedClips")), 0);
    }

    void versionsComeBack()
    {
        addObject("A");
        _window->resize(1400, 420); // leaves the view a strip
        _window->setUnattended(false);
        QCOMPARE(QImage::fromData(kxVersions::the().takePicture()).size(), QSize(160, 100));
        _window->setUnattended(true);
        QVERIFY(_window->document().saveTo(path("kept.kxs")));
        QString reason;
        QVERIFY(kxVersions::the().keep("one", reason) == 1);
        kxSceneEdits::addMaterial();
        addObject("B");
        kxScene::the()->flush();
        kxHistory::the().flush();
        const QByteArray before = bytes();
        QVERIFY(kxVersions::the().keep("two", reason) == 2);
        dock("Versions")->raise();
        auto* const list = dock("Versions")->findChild<QTreeView*>("_versionList");
        const auto row = [list](int i) { return list->model()->index(i, 0); };
        QCOMPARE(row(0).data().toString() + '|' + row(1).data().toString(), QString("two|one"));
        QTRY_VERIFY(list->model()->rowCount(row(0)) > 0); // found out while nobody does anything
        QStringList lines;
        for (int i = 0; i < list->model()->rowCount(row(0)); ++i)
            lines << list->model()->index(i, 0, row(0)).data().toString();
        QVERIFY2(lines.join('|').contains("Object 'B': added"), qPrintable(lines.join('|')));
        list->setCurrentIndex(row(1));
        QTest::keyClick(list, Qt::Key_Return);
        QCOMPARE(objectNames(), QStringList("A"));
        const kxHistory& history = kxHistory::the();
        QVERIFY2(history.undoText().startsWith("Go to version 1 (one)"), qPrintable(history.undoText()));
        QVERIFY(kxHistory::the().undo());
        QCOMPARE(bytes(), before);
        // Of a file that is gone: a scene that isn't saved yet.
        _window->document().startOver();
        QVERIFY(QFile::remove(path("kept.kxs")));
        action("_actionVersionsofaFile")->trigger();
        const QPointer<QDialog> dialog = _window->findChild<QDialog*>("_versionsDialog");
        QVERIFY(dialog->findChild<QListWidget*>()->item(0)->text().startsWith("kept.kxs"));
        dialog->findChild<QPushButton*>("_openVersion")->click();
        QCOMPARE(objectNames(), QStringList({"A", "B"}));
        QVERIFY(_window->isWindowModified() && _window->document().path().isEmpty());
        QCOMPARE(_window->document().name(), QString("kept.kxs"));
        QTRY_VERIFY(dialog.isNull());
    }

    void savesWhereTheUserSays()
    {
        addObject("A");
        kxHostSettings().setValue("folder/scene", _folder.path()); // where the last one was
        kxAnswer<QDialog>([](QDialog& dialog) { dialog.accept(); });
        action("_actionSaveAs")->trigger();
        QCOMPARE(_window->document().path(), path("Untitled.kxs"));
        QVERIFY(QFile::exists(path("Untitled.kxs")) && !_window->isWindowModified());
    }

    void closingAsks_data()
    {
        kxColumns<QString, bool>("button", "closes");
        QTest::newRow("save") << "Save" << true;
        QTest::newRow("don't") << "Don't Save" << true;
        QTest::newRow("cancel") << "Cancel" << false;
    }

    void closingAsks()
    {
        QFETCH(QString, button);
        QVERIFY(_window->document().openFile(file("asked")));
        kxSceneEdits::rename(objects().at(0), "Changed");
        QVERIFY(_window->isWindowModified());
        QString asked;
        kxAnswer<QMessageBox>(
            [&](QMessageBox& box)
            {
                asked = box.text();
                QCOMPARE(box.iconPixmap().toImage(), iconOf("Warning"));
                for (QAbstractButton* const each : box.buttons())
                    if (each->text().remove('&') == button)
                        each->click();
            });
        QTEST(_window->close(), "closes");
        QVERIFY(asked.contains("asked.kxs"));
        clear();
        kxFileReport report("");
        QVERIFY(_window->document().open(path("asked.kxs"), report));
        QCOMPARE(objectNames(), QStringList(button == "Save" ? "Changed" : "ASKED"));
    }

    void anotherProgramWrites_data()
    {
        kxColumns<QString, QString, QString, bool, QString>("act", "told", "answer", "unsaved", "left");
        kxRow("reloaded", "written", "changed", "_fileReload", false, "OTHER");
        kxRow("kept", "written", "changed", "_fileKeep", true, "ASKED");
        kxRow("gone", "removed", "is gone", "_fileSave", false, "ASKED");
        kxRow("touched", "touched", "", "", false, "ASKED");
        kxRow("saved here", "saved", "", "", false, "ASKED");
    }

    /// At once, above the view and in the log; the scene is unsaved until that is answered.
    void anotherProgramWrites()
    {
        QFETCH(QString, act);
        QFETCH(QString, told);
        QFETCH(QString, answer);
        QFETCH(QString, left);
        const QString other = file("other"), path = file("asked");
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
        QVERIFY(_window->document().openFile(path));
        kxLogModel::the().clear();
        QSignalSpy changed(&_window->document(), &kxDocument::fileChanged);
        if (act == "written")
        {
            QFile from(other), to(path); // in place, as cp does it
            QVERIFY(from.open(QIODevice::ReadOnly) && to.open(QIODevice::WriteOnly) && to.write(from.readAll()) > 0);
        }
        else if (act == "removed")
            QVERIFY(QFile::remove(path));
        else if (act == "saved")
            QVERIFY(_window->document().save());
        else
        {
            QFile touched(path);
            QVERIFY(touched.open(QIODevice::ReadWrite));
            QVERIFY(touched.setFileTime(QDateTime::currentDateTime().addDays(-1), QFileDevice::FileModificationTime));
        }
        if (told.isEmpty())
            Q_EMIT qApp->applicationStateChanged(Qt::ApplicationActive); // looks at once
        else
            QTRY_COMPARE(changed.size(), 1);
        const auto* const bar = _window->findChild<QWidget*>("_fileBar");
        QCOMPARE(bar->isVisible(), !told.isEmpty());
        QCOMPARE(_window->isWindowModified(), !told.isEmpty());
        QCOMPARE(kxLogged().filter("the scene is unsaved").isEmpty(), told.isEmpty());
        if (told.isEmpty())
            return;
        QVERIFY(_window->findChild<QLabel*>("_fileText")->text().contains(told));
        if (left == "OTHER") // no versions are kept here
            kxAnswer<QMessageBox>([](QMessageBox& box) { box.button(QMessageBox::Yes)->click(); });
        _window->findChild<QPushButton*>(answer)->click();
        QVERIFY(!bar->isVisible() && _window->focusWidget() == _window->view());
        QTEST(_window->isWindowModified(), "unsaved");
        QCOMPARE(objectNames(), QStringList(left));
        QCOMPARE(QFile::exists(path), true);
    }

    void errorsSayFileAndReason()
    {
        QFile broken(path("broken.kxs"));
        QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("nothing of a scene") > 0);
        broken.close();
        QString text;
        const auto read = [&text](QMessageBox& box)
        {
            QCOMPARE(box.iconPixmap().toImage(), iconOf("Error"));
            text = box.text() + box.informativeText() + box.detailedText();
            box.accept();
        };
        kxAnswer<QMessageBox>(read);
        QVERIFY(!_window->document().openFile(broken.fileName()));
        QVERIFY2(text.startsWith("The file can't be opened." + broken.fileName() + "\n\n"), qPrintable(text));
        kxFileReport report("a.glb");
        report.fail("no triangles");
        report.note("2 lights are left out");
        kxAnswer<QMessageBox>(read);
        _window->document().dialogs().showError("No", report);
        QCOMPARE(text, QString("No.a.glb\n\nno triangles2 lights are left out"));
        const auto isBusy = [] { return QGuiApplication::overrideCursor() != nullptr; };
        QVERIFY(!isBusy());
        _window->document().dialogs().busy("Opening...");
        QVERIFY(isBusy() && _window->statusBar()->currentMessage() == "Opening...");
        _window->document().dialogs().busy(QString());
        QVERIFY(!isBusy() && _window->statusBar()->currentMessage().isEmpty());
    }

    void dropped_data()
    {
        kxColumns<bool, QStringList>("shift", "names");
        QTest::newRow("the first is opened") << false << QStringList{"A", "b", "B"};
        QTest::newRow("with Shift all join") << true << QStringList{"There", "a", "A", "b", "B"};
    }

    void dropped()
    {
        QFETCH(bool, shift);
        QFETCH(QStringList, names);
        QMimeData data;
        // A script among others may be nothing that anybody looked at.
        data.setUrls(
            {QUrl::fromLocalFile(file("a")), QUrl::fromLocalFile(path("s.py")), QUrl::fromLocalFile(file("b"))});
        addObject("There");
        kxHistory::the().markSaved(); // nothing to ask about
        const Qt::KeyboardModifiers keys = shift ? Qt::ShiftModifier : Qt::NoModifier;
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, keys);
        QApplication::sendEvent(_window.data(), &enter);
        QDropEvent drop(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, keys);
        QApplication::sendEvent(_window.data(), &drop);
        QCoreApplication::processEvents();
        QCOMPARE(objectNames(), names);
        QVERIFY(enter.isAccepted() && (shift || _window->document().name() == "a.kxs"));
        const QString log = kxLogged().join('|');
        QVERIFY(log.contains("'s.py' came among other files") && !log.contains("Python isn't running"));
    }

    void keysOfObjects()
    {
        const osg::NodePtr a = addObject("A"), b = addObject("B");
        QVERIFY(!action("_actionDuplicate")->isEnabled() && action("_actionSelectAll")->isEnabled());
        kxSelection::the().selectNodes({b});
        action("_actionShoworHide")->trigger();
        QVERIFY(!b->isActive() && a->isActive());
        action("_actionShoworHide")->trigger();
        QVERIFY(b->isActive());
        action("_actionSelectAll")->trigger();
        QCOMPARE(kxSelection::the().nodes().size(), std::size_t(2));
        action("_actionGroup")->trigger();
        QCOMPARE(objectNames(), QStringList({"Group", "A", "B"}));
        action("_actionDuplicate")->trigger();
        QCOMPARE(objectNames(), QStringList({"Group", "A", "B", "Group_1", "A", "B"}));
        action("_actionDelete")->trigger(); // the copy is selected
        QCOMPARE(objectNames(), QStringList({"Group", "A", "B"}));
    }

    void oneKeyTwoActions()
    {
        // A tool's key that is one of the menus', too: the tool has it while it has the focus.
        auto* const tool = new QLineEdit;
        QAction other("other"), own("own");
        own.setShortcut(QKeySequence::New);
        other.setShortcut(QKeySequence::Open);
        tool->addActions({&other, &own});
        _window->dockManager()->add("Tool", "Scene", tool, QString(), QIcon(), "Tool", 0, true, nullptr);
        _window->dockManager()->show("Tool");
        _window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(_window.data()));
        QSignalSpy ours(action("_actionNew"), &QAction::triggered), theirs(&own, &QAction::triggered);
        const auto press = [this](QWidget* focused, bool isAmbiguous = true)
        {
            focused->setFocus();
            QShortcutEvent event(QKeySequence::New, 0, isAmbiguous);
            QApplication::sendEvent(_window.data(), &event);
        };
        press(tool);
        QVERIFY(theirs.size() == 1 && ours.isEmpty());
        press(_window->view());
        QVERIFY(theirs.size() == 1 && ours.size() == 1);
        own.setEnabled(false);
        press(tool);
        QVERIFY(theirs.size() == 1 && ours.size() == 2);
        press(tool, false); // Qt's own affair
        QCOMPARE(ours.size(), 2);
    }

    void aScriptThatFailsShowsTheLog()
    {
        dock("Log")->close();
        QVERIFY(!_window->runScript(path("gone.py")).ok);
        QVERIFY(dock("Log")->isVisible());
    }

private:
    /// The dialog for the file that is proposed.
    QDialog* compared() const
    {
        kxAnswer<QDialog>([](QDialog& dialog) { dialog.accept(); });
        action("_actionCompareWithFile")->trigger();
        return _window->findChild<QDialog*>("_compareDialog");
    }
    void open()
    {
        _window.reset(new kxMainWindow);
        _window->finishLayout();
        _window->document().newScene();
        _window->show();
        QVERIFY(QTest::qWaitForWindowExposed(_window.data()));
    }

    QString path(const char* name) const { return _folder.filePath(QString::fromLatin1(name)); }
    /// A scene file with one object; the open scene is empty then.

    QString file(const char* name)
    {
        addObject(qPrintable(QString::fromLatin1(name).toUpper()));
        const QString path = _folder.filePath(QString::fromLatin1(name) + ".kxs");
        kxFileReport report(path);
        if (!_window->document().write(path, report))
            qFatal("%s", qPrintable(report.message()));
        _window->document().startOver();
        return path;
    }

    QAction* action(const char* name) const { return _window->findChild<QAction*>(QString::fromLatin1(name)); }
    QKXDockWidget* dock(const char* name) const { return _window->dockManager()->getDockWidget(name); }
    template <class T>
    T* opened(const char* entry, const char* name) const
    {
        action(entry)->trigger();
        return _window->findChild<T*>(QString::fromLatin1(name));
    }

    QStringList recent() const
    {
        const auto menus = _window->findChild<QMenu*>("_fileMenu")->findChildren<QMenu*>();
        QStringList texts;
        for (const QAction* const entry : menus.at(0)->actions())
            texts << (menus.at(0)->isEnabled() ? entry->text() : "(off) " + entry->text());
        return texts;
    }

    static QImage iconOf(const char* name)
    {
        return kxIconManager::getIcon(QString::fromLatin1(name), QString()).pixmap(32).toImage();
    }

    static QStringList objectNames()
    {
        QStringList names;
        for (const osg::NodePtr& node : objects())
            names << QString::fromStdString(node->getNodeName());
        return names;
    }

    QTemporaryDir _folder;
    QScopedPointer<kxMainWindow> _window;
};

QTEST_MAIN(tst_kxMenus)
#include "tst_kxMenus.moc"
