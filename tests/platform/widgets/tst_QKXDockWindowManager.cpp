#include <QKXDockWindowManager.h>

#include <QLabel>
#include <QMainWindow>
#include <QTabBar>
#include <QToolButton>
#include <QtTest>

namespace
{
QKXDockWidget* addDock(QKXDockWindowManager& manager, const QString& name, QWidget* widget, int area, bool hidden)
{
    return manager.add(name, "Animation", widget, "Toolclip", QIcon(), name, area, hidden, nullptr);
}
} // namespace

class tst_QKXDockWindowManager : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void namesAreUnique()
    {
        QMainWindow window;
        QKXDockWindowManager manager(&window);
        QSignalSpy added(&manager, &QKXDockWindowManager::added);
        QKXDockWidget* dock = addDock(manager, "Curves", new QWidget, 0, true);
        QVERIFY(dock);
        QCOMPARE(dock->property("category").toString(), QString("Animation")); // where the host lists it
        QWidget second;
        QVERIFY(!addDock(manager, "Curves", &second, 0, true));
        QVERIFY(!second.parentWidget());
        QVERIFY(!addDock(manager, "Nothing", nullptr, 0, true));
        QCOMPARE(manager.getDockWidget("Curves"), dock);
        QVERIFY(manager.addToolbar("Timeline", "Animation", new QWidget, true, nullptr));
        QVERIFY(!manager.addToolbar("Timeline", "Animation", &second, true, nullptr));
        QVERIFY(!manager.getDockWidget("Timeline"));
        QVERIFY(!manager.getToolbar("Curves"));
        manager.show("Nobody");
        QCOMPARE(added.count(), 2);
    }

    void layoutComesBack()
    {
        QByteArray state;
        {
            QMainWindow window;
            QKXDockWindowManager manager(&window);
            addDock(manager, "Curves", new QWidget, 0, true);
            window.show();
            manager.show("Curves");
            window.addDockWidget(Qt::RightDockWidgetArea, manager.getDockWidget("Curves"));
            state = window.saveState();
        }
        for (const bool before : {true, false}) // the tool is loaded before, or after the layout
        {
            QMainWindow window;
            QKXDockWindowManager manager(&window);
            if (!before)
                QVERIFY(window.restoreState(state));
            addDock(manager, "Curves", new QWidget, 0, true);
            if (before)
                QVERIFY(window.restoreState(state));
            QKXDockWidget* dock = manager.getDockWidget("Curves");
            QCOMPARE(window.dockWidgetArea(dock), Qt::RightDockWidgetArea);
            QVERIFY(!dock->isHidden());
        }
    }

    void minimizedShowsTheTitleAlone()
    {
        QMainWindow window;
        QKXDockWindowManager manager(&window);
        auto* content = new QLabel("content");
        content->setMinimumHeight(120);
        QKXDockWidget* dock = addDock(manager, "Clips", content, Qt::LeftDockWidgetArea, false);
        window.resize(600, 500);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        dock->setMinimized(true);
        QTRY_VERIFY(content->height() == 0 && dock->height() < 40);
        const int width = dock->width();
        dock->setMinimized(false);
        QTRY_VERIFY(content->height() >= 120);
        QCOMPARE(content->minimumHeight(), 120);
        QCOMPARE(dock->width(), width);

        dock->setFloating(true);
        dock->resize(310, 290);
        dock->setMinimized(true);
        dock->setMinimized(true);
        QTRY_VERIFY(dock->height() < 40 && dock->width() == 310);
        dock->setMinimized(false);
        QTRY_COMPARE(dock->size(), QSize(310, 290));
    }

    void titlesAndTabs()
    {
        QMainWindow window;
        QKXDockWindowManager manager(&window);
        QKXDockWidget* const dock = addDock(manager, "Curves of all objects that are selected", new QWidget, 0, false);
        addDock(manager, "Clips", new QWidget, 0, false);
        window.resize(300, 300);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        auto* const tabs = window.findChild<QTabBar*>();
        QVERIFY(tabs != nullptr && tabs->acceptDrops() && tabs->changeCurrentOnDrag());

        QWidget* const bar = dock->titleBarWidget();
        const QList<QToolButton*> buttons = bar->findChildren<QToolButton*>();
        QCOMPARE(buttons.size(), 2);
        QCOMPARE(buttons[1]->x() - buttons[0]->x(), buttons[0]->width() + 3);
        auto* const title = bar->findChildren<QLabel*>().last();
        const QString before = title->text();
        QFont large = bar->font();
        large.setPixelSize(40);
        bar->setFont(large);
        QVERIFY2(title->text().size() < before.size(), qPrintable(before));
    }

    void deletedDocksAreForgotten()
    {
        QMainWindow window;
        QKXDockWindowManager manager(&window);
        delete addDock(manager, "Curves", new QWidget, 0, true);
        QVERIFY(!manager.getDockWidget("Curves"));
        QVERIFY(addDock(manager, "Curves", new QWidget, 0, true));
        QCOMPARE(manager.dockWidgets().size(), 1);
    }
};

QTEST_MAIN(tst_QKXDockWindowManager)
#include "tst_QKXDockWindowManager.moc"
