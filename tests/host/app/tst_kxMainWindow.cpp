#include "kxSceneFixture.h"

#include <app/kxHostSettings.h>
#include <app/kxMainWindow.h>
#include <app/kxSession.h>
#include <files/scene/kxSceneContent.h>
#include <files/text/kxSceneText.h>
#include <journal/kxHistory.h>
#include <journal/kxJournal.h>
#include <journal/kxRecovery.h>
#include <journal/kxVersions.h>
#include <kernel/kxLogModel.h>
#include <kxLog.h>
#include <kxTexts.h>
#include <panels/kxSceneTreePanel.h>
#include <panels/kxVersionModel.h>
#include <panels/kxVersionView.h>
#include <python/kxPythonConsole.h>
#include <view/kxView3D.h>

#include <functional>

#include <QtWidgets>

class tst_kxMainWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        kxHostSettings().clear();
        kxSceneFixture::clear();
        open();
    }

    void cleanup() { _window.reset(); }

    void neverLargerThanTheScreen_data()
    {
        kxColumns<bool, bool>("beside", "restored");
        QTest::newRow("tools in tabs") << false << false;
        QTest::newRow("tools beside each other") << true << false;
        QTest::newRow("a layout of a larger screen") << true << true;
    }

    void neverLargerThanTheScreen()
    {
        QFETCH(bool, beside);
        QFETCH(bool, restored);
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        const QSize size = restored ? QSize(2600, 1700) : QSize(798, 470);
        _window->resize(size);
        _window->dockManager()->show("Curves");
        _window->dockManager()->show("Clips");
        if (beside)
            _window->splitDockWidget(dock("Curves"), dock("Clips"), Qt::Horizontal);
        QCoreApplication::processEvents();
        QCOMPARE(_window->size(), size);
        if (restored)
        {
            QVERIFY(_window->close());
            open();
            QVERIFY(screen.contains(_window->frameGeometry()));
            return;
        }
        // All of it can be reached.
        const auto* const tool = dock("Clips")->content();
        const auto* const room = qobject_cast<QScrollArea*>(dock("Clips")->widget());
        QTRY_COMPARE(room->horizontalScrollBar()->maximum(), tool->width() - room->viewport()->width());
        QVERIFY(tool->width() >= 647 && tool->height() >= 270 && room->horizontalScrollBar()->isVisible());
    }

    void typedTextIsAnEditFirst_data()
    {
        kxColumns<bool, bool>("inTree", "saves");
        QTest::newRow("name, undo") << false << false;
        QTest::newRow("name, save") << false << true;
        QTest::newRow("row, undo") << true << false;
        QTest::newRow("row, save") << true << true;
    }

    void typedTextIsAnEditFirst()
    {
        QFETCH(bool, inTree);
        QFETCH(bool, saves);
        QTemporaryDir folder;
        const osg::NodePtr first = kxSceneFixture::addObject("First"), box = kxSceneFixture::addObject("Box");
        QVERIFY(_window->document().saveTo(folder.filePath("typed.kxs")));
        const int start = kxHistory::the().index();
        for (const osg::NodePtr& node : {first, box})
        {
            kxSelection::the().selectNodes({node});
            kxHistory::the().flush();
        }
        const int count = kxHistory::the().count();
        QApplication::setActiveWindow(_window.data());
        QCoreApplication::processEvents();
        auto* const rows = _window->findChild<QTreeView*>("_objects");
        if (inTree)
            rows->edit(rows->model()->index(1, 0));
        auto* const field =
            inTree ? rows->viewport()->findChild<QLineEdit*>() : _window->findChild<QLineEdit*>("_name");
        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, "Typed");
        _window->findChild<QAction*>(saves ? "_actionSave" : "_actionUndo")->trigger();
        QCoreApplication::processEvents();
        QCOMPARE(QString::fromStdString(box->getNodeName()), QString(saves ? "Typed" : "Box"));
        QCOMPARE(kxHistory::the().count(), count + 1);
        QVERIFY(!saves || !_window->isWindowModified());
        while (kxHistory::the().index() > start && kxHistory::the().undo()) // properties go with the selection
            QCoreApplication::processEvents();
        while (kxHistory::the().redo())
            QCoreApplication::processEvents();
        QCOMPARE(QString::fromStdString(box->getNodeName()), QString("Typed"));
    }

    void tabLeadsToWhatIsSeen()
    {
        QSet<const QWidget*> unseen, met;
        for (const char* const name : {"Console", "Scenery"})
            for (const QWidget* const widget : dock(name)->findChildren<QWidget*>())
                unseen.insert(widget);
        for (const bool next : {true, false})
        {
            QWidget* const first = _window->view();
            first->setFocus();
            met.clear();
            do
            {
                QTest::keyClick(_window->focusWidget(), next ? Qt::Key_Tab : Qt::Key_Backtab);
                met.insert(_window->focusWidget());
            } while (_window->focusWidget() != first && met.size() < 500);
            QVERIFY(!met.intersects(unseen));
            QVERIFY(met.size() > 10 && met.contains(_window->sceneTree()->findChild<QTreeView*>()));
        }
    }

    void whatGoesBehindATabLosesTheKeys()
    {
        QLineEdit* const field = new QLineEdit(dock("Clips")->content());
        _window->dockManager()->show("Clips");
        _window->dockManager()->show("Console");
        QWidget* const prompt = _window->console()->findChild<QWidget*>("_promptInput");
        QVERIFY(prompt != nullptr);
        prompt->setFocus();
        field->show();
        _window->dockManager()->show("Clips");
        QTRY_COMPARE(_window->focusWidget(), dock("Clips")->content());
        field->setFocus();
        _window->dockManager()->show("Log");
        QTRY_VERIFY(dock("Log")->isAncestorOf(_window->focusWidget()));
        _window->dockManager()->show("Clips"); // the field in which it was typed last
        QTRY_COMPARE(_window->focusWidget(), field);
        _window->view()->setFocus();
        _window->dockManager()->show("Log"); // nobody's keys are taken away
        QCoreApplication::processEvents();
        QCOMPARE(_window->focusWidget(), _window->view());
    }

    void aRecoveredSceneGoesOnWithItsVersions()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath("engine.kxs");
        QString reason;
        kxSceneFixture::addObject("Wheel");
        QVERIFY(_window->document().saveTo(file) && kxVersions::the().keep("round", reason) == 1);
        kxJournal::the().start(folder.filePath("journal.db"));
        kxJournal::the().stop();
        auto* const list = dock("Versions")->findChild<kxVersionView*>()->versions();
        kxTestModel(dock("Versions")->findChild<kxVersionView*>());
        QVERIFY(_window->document().newScene() && list->rowCount() == 0);
        kxRecovery recovery(folder.filePath("journal.db"));
        QVERIFY(_window->document().openRecovered(recovery, file));
        QVERIFY(list->rowCount() == 1 && list->index(0, 0).data().toString().contains("round"));
        QVERIFY(kxVersions::the().keep(QString(), reason) > 0);
        QVERIFY(_window->document().saveTo(file) && list->rowCount() == 1); // the same scene
        QVERIFY(QFile::resize(kxVersions::the().store().file(1), 5));
        list->follow(&kxVersions::the().store());
        QVERIFY(list->index(0, 0).data(kxVersionModel::SummaryRole).toString().startsWith("Damaged"));
    }

    /// Of a model that was opened, killed before it was saved: its versions go on, bear its name, and go along.
    void aRecoveredModelGoesOnWithItsVersions()
    {
        const QTemporaryDir folder;
        const QString model = folder.filePath("engine.glb");
        QString reason;
        kxSceneFixture::addObject("Wheel");
        kxFileReport report;
        QVERIFY(_window->document().exportTo(model) && _window->document().open(model, report));
        kxSession session(false);
        session.follow(_window->document());
        kxJournal::the().start(folder.filePath("journal.db"));
        QVERIFY(kxVersions::the().keep("round", reason) == 1);
        kxSceneFixture::addObject("Lid");
        kxHistory::the().flush();
        _window->document().changed();
        kxJournal::the().stop();
        _window->document().startOver();
        kxRecovery recovery(folder.filePath("journal.db"));
        QVERIFY(_window->document().openRecovered(recovery, model));
        QVERIFY(kxVersions::the().keep("lid", reason) == 2);
        _window->findChild<QAction*>("_actionVersionsofaFile")->trigger();
        QDialog* const dialog = _window->findChild<QDialog*>("_versionsDialog");
        const QString first = dialog->findChild<QListWidget*>()->item(0)->text();
        QVERIFY2(first.startsWith("engine.glb (never saved)\n"), qPrintable(first));
        dialog->close();
        QVERIFY(_window->document().saveTo(folder.filePath("engine.kxs")));
        const auto* const list = dock("Versions")->findChild<kxVersionView*>()->versions();
        QCOMPARE(list->rowCount(), 2);
        QVERIFY(list->index(1, 0).data().toString().contains("round"));
    }

    void scriptsLoseNothing_data()
    {
        kxColumns<QStringList>("acts"); // a file to open, or nothing for a new scene
        kxRow("a new one", QStringList{""});
        kxRow("a file", QStringList{"other.kxs"});
        kxRow("one that can't be opened", QStringList{"none.kxs"});
        kxRow("nothing more to lose", QStringList{"", "other.kxs"});
    }
    /// What isn't saved is kept where a script replaces the scene without a question, once.
    void scriptsLoseNothing()
    {
        QFETCH(const QStringList, acts);
        const QTemporaryDir folder;
        QVERIFY(_window->document().saveTo(folder.filePath("other.kxs")));
        kxJournal::the().start(folder.filePath("journal.db"));
        kxVersions::Settings settings;
        settings.isOn = true;
        kxVersions::the().setSettings(settings);
        kxSceneFixture::addObject("Wheel");
        kxScriptDocument& document = _window->document();
        for (const QString& act : acts)
        {
            kxFileReport report;
            if (act.isEmpty())
                document.startOver();
            else
                QCOMPARE(document.open(folder.filePath(act), report), act == "other.kxs");
        }
        kxJournal::the().stop();
        kxVersionStore kept(kxVersionStore::folderOf(folder.filePath("other.kxs")));
        QCOMPARE(kept.list().size(), std::size_t(acts.back() == "other.kxs" ? 2 : 1)); // with that of the opening
        QCOMPARE(kept.list().front().title(), QString("Before another scene took its place"));
        kxSceneContent content;
        kxFileReport report;
        QVERIFY(kxVersions::read(kept, 1, content, report));
        QVERIFY(kxSceneText::of(content).contains("[objects/Wheel]"));
    }

    void keysOfTheToolsInTheSceneTree()
    {
        kxSelection::the().selectNodes({kxSceneFixture::addObject("Wheel")});
        _window->activateWindow();
        auto* const search = _window->sceneTree()->findChild<QLineEdit*>();
        auto* const tree = _window->sceneTree()->findChild<QTreeView*>();
        for (const auto& [key, tool] : {std::make_pair(Qt::Key_W, kxGizmo::MoveTool),
                                        {Qt::Key_E, kxGizmo::RotateTool},
                                        {Qt::Key_R, kxGizmo::ScaleTool},
                                        {Qt::Key_Q, kxGizmo::SelectTool}})
        {
            search->clear();
            search->setFocus();
            QTest::keyClick(search, key);
            QCOMPARE(search->text().toUpper(), QString(QChar(key))); // a letter in a field
            search->clear();
            tree->setFocus();
            QTest::keyClick(tree, key);
            QCOMPARE(_window->view()->tool(), tool);
        }
    }

    void warningsAreSeen()
    {
        const QString title = dock("Log")->windowTitle();
        kxLog::warning("In front of the user");
        QCOMPARE(_window->statusBar()->currentMessage(), QString("In front of the user"));
        QCOMPARE(dock("Log")->windowTitle(), title);
        _window->dockManager()->show("Console");
        QCoreApplication::processEvents();
        kxLog::info(QString("Nothing to worry about"));
        QCOMPARE(dock("Log")->windowTitle(), title);
        kxLog::warning("There are no viewpoints.");
        kxLog::error("Two\nlines");
        QCOMPARE(_window->statusBar()->currentMessage(), QString("Two lines"));
        QCOMPARE(dock("Log")->windowTitle(), title + " (2)");
        _window->dockManager()->show("Log");
        QTRY_COMPARE(dock("Log")->windowTitle(), title);
        dock("Log")->close();
        kxLog::error("Seen by nobody");
        QCOMPARE(dock("Log")->windowTitle(), title + " (1)");
        kxLogModel::the().clear();
        QCOMPARE(dock("Log")->windowTitle(), title);
    }

    void whatTakesTheKeysHasAName()
    {
        addWheel();
        QStringList nameless;
        for (QWidget* const widget : _window->findChildren<QWidget*>())
            if ((widget->focusPolicy() & Qt::TabFocus) != 0 && widget->focusProxy() == nullptr &&
                !qobject_cast<QTabBar*>(widget) &&
                QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name).isEmpty())
                nameless << widget->metaObject()->className() + QString(" ") + widget->objectName();
        QVERIFY2(nameless.isEmpty(), qPrintable(nameless.join(", ")));
    }

    void everythingHasItsPlace()
    {
        const std::function<bool(QLayout*, QWidget*)> holds = [&holds](QLayout* layout, QWidget* widget)
        {
            bool found = layout->indexOf(widget) >= 0;
            for (int i = 0; i < layout->count() && !found; ++i)
                found = layout->itemAt(i)->layout() != nullptr && holds(layout->itemAt(i)->layout(), widget);
            return found;
        };
        addWheel();
        QCOMPARE(_window->findChild<QWidget*>("_properties"), dock("Properties")->content()); // as scripts find it
        QStringList lost;
        for (const char* const name : {"Scene", "Materials", "Properties", "Scenery", "Log", "Console"})
            for (QWidget* const widget : dock(name)->content()->findChildren<QWidget*>())
                if (QLayout* const layout = widget->parentWidget()->layout();
                    qobject_cast<QBoxLayout*>(layout) || qobject_cast<QGridLayout*>(layout))
                    if (!widget->isWindow())
                    {
                        bool covered = !holds(layout, widget);
                        for (const QWidget* const other :
                             widget->parentWidget()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
                            covered = covered || (other != widget && widget->isVisible() && other->isVisible() &&
                                                  other->geometry().intersects(widget->geometry()));
                        const auto* const tool = qobject_cast<QToolButton*>(widget);
                        if (covered || (tool != nullptr && !tool->autoRaise())) // all lie flat
                            lost << name + QString(": ") + widget->metaObject()->className() + widget->objectName();
                    }
        QVERIFY2(lost.isEmpty(), qPrintable(lost.join(", ")));
    }

    void deleteDeletesWhatIsInFocus()
    {
        addWheel();
        kxSelection::the().selectMaterials(kxScene::the()->materials());
        _window->activateWindow();
        const auto press = [this](const char* list)
        {
            auto* const view = _window->findChild<QAbstractItemView*>(list);
            view->setFocus();
            QTest::keyClick(view, Qt::Key_Delete);
            kxScene::the()->flush();
        };
        press("_objects");
        QCOMPARE(kxScene::the()->root()->getNChildren(), 0u);
        QCOMPARE(kxScene::the()->materials().size(), std::size_t(1));
        press("_materialList");
        QVERIFY(kxScene::the()->materials().empty());
    }

    void unattendedDrawsTheViewForItsPictureAlone()
    {
        _window->setUnattended(true);
        const QSignalSpy drawn(_window->view(), &kxView3D::frameDrawn);
        addWheel();
        _window->view()->redraw(true);
        QCOMPARE(drawn.count(), 0);
        const QTemporaryDir folder;
        QString error;
        QVERIFY(_window->saveScreenshot(folder.filePath("a.png"), error));
        QCOMPARE(drawn.count(), 1);
    }

private:
    /// An object with a material, selected.
    static void addWheel()
    {
        kxSelection::the().selectNodes({kxSceneFixture::addSurface("Wheel", kxSceneFixture::addMaterial("Steel"))});
        kxScene::the()->flush();
        QCoreApplication::processEvents();
    }

    /// With two tools that want more room than a small screen has.
    void open()
    {
        _window.reset(new kxMainWindow);
        for (const char* const name : {"Curves", "Clips"})
        {
            auto* const tool = new QWidget;
            tool->setMinimumSize(647, 270);
            _window->dockManager()->add(name, "Animation", tool, QString(), QIcon(), name, 0, true, nullptr);
        }
        _window->finishLayout();
        _window->show();
        QVERIFY(QTest::qWaitForWindowExposed(_window.data()));
    }

    QKXDockWidget* dock(const char* name) const { return _window->dockManager()->getDockWidget(name); }
    QScopedPointer<kxMainWindow> _window;
};

QTEST_MAIN(tst_kxMainWindow)
#include "tst_kxMainWindow.moc"
