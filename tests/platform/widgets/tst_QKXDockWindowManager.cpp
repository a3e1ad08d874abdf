#include <QKXCollapsibleFrame.h>
#include <QKXDockWindowManager.h>

#include <QGridLayout>
#include <QLabel>
#include <QMainWindow>
#include <QPointer>
#include <QSpinBox>
#include <QToolBar>
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
    void namesAreUnique();
    void firstLayout();
    void layoutComesBack();
    void minimizedShowsTheTitleAlone();
    void toolBarSpansTheWindow();
    void deletedDocksAreForgotten();
    void framesFoldAndAlign();
};

void tst_QKXDockWindowManager::namesAreUnique()
{
    QMainWindow window;
    QKXDockWindowManager manager(&window);
    QSignalSpy added(&manager, &QKXDockWindowManager::added);
    QKXDockWidget* dock = addDock(manager, "Curves", new QWidget, 0, true);
    QVERIFY(dock);
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

void tst_QKXDockWindowManager::firstLayout()
{
    QMainWindow window;
    QKXDockWindowManager manager(&window);
    auto* editor = new QMainWindow(&window); // tools bring whole windows
    QKXDockWidget* tree = addDock(manager, "Tree", new QWidget, Qt::LeftDockWidgetArea, false);
    QKXDockWidget* curves = addDock(manager, "Curves", editor, 0, true);
    QKXDockWidget* clips = addDock(manager, "Clips", new QWidget, 0, true);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(tree->isVisible() && !curves->isVisible() && !clips->isVisible() && !editor->isVisible());
    QCOMPARE(window.dockWidgetArea(tree), Qt::LeftDockWidgetArea);
    QCOMPARE(window.dockWidgetArea(clips), Qt::BottomDockWidgetArea);
    manager.show("Clips");
    manager.show("Curves");
    QCOMPARE(window.tabifiedDockWidgets(curves), QList<QDockWidget*>{clips});
    QTRY_VERIFY(editor->isVisible());
}

void tst_QKXDockWindowManager::layoutComesBack()
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

void tst_QKXDockWindowManager::minimizedShowsTheTitleAlone()
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

void tst_QKXDockWindowManager::toolBarSpansTheWindow()
{
    QMainWindow window;
    QKXDockWindowManager manager(&window);
    auto* panel = new QWidget(&window);
    QToolBar* bar = manager.addToolbar("Timeline", "Animation", panel, true, nullptr);
    manager.addToolbar("Second", "Animation", new QWidget, true, nullptr);
    window.resize(900, 400);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.toolBarArea(bar), Qt::BottomToolBarArea);
    QTRY_VERIFY(panel->isVisible() && panel->width() > 840);
    bar->close();
    QVERIFY(!panel->isVisible());
    QCOMPARE(manager.toolBars().size(), 2);
}

void tst_QKXDockWindowManager::deletedDocksAreForgotten()
{
    QMainWindow window;
    QKXDockWindowManager manager(&window);
    delete addDock(manager, "Curves", new QWidget, 0, true);
    QVERIFY(!manager.getDockWidget("Curves"));
    QVERIFY(addDock(manager, "Curves", new QWidget, 0, true));
    QCOMPARE(manager.dockWidgets().size(), 1);
}

void tst_QKXDockWindowManager::framesFoldAndAlign()
{
    QWidget root;
    auto* layout = new QVBoxLayout(&root);
    QList<QWidget*> fields;
    QList<QKXCollapsibleFrame*> frames;
    for (const char* text : {"A", "A much longer label than the others have", "Excluded"})
    {
        auto* page = new QWidget;
        auto* grid = new QGridLayout(page);
        grid->addWidget(new QLabel(text), 0, 0);
        fields.append(new QSpinBox);
        grid->addWidget(fields.last(), 0, 1);
        frames.append(new QKXCollapsibleFrame);
        QCOMPARE(frames.last()->addPage(page, text), 0);
        layout->addWidget(frames.last());
    }
    QKXCollapsibleFrame::fixLayouts(&root, 130, frames.last());
    root.resize(700, 300);
    root.show();
    QVERIFY(QTest::qWaitForWindowExposed(&root));
    QCOMPARE(fields.at(0)->x(), fields.at(1)->x());
    QVERIFY(fields.at(0)->x() >= 130);
    QVERIFY(fields.at(2)->x() != fields.at(0)->x());

    QSignalSpy changed(frames.first(), &QKXCollapsibleFrame::expandedChanged);
    frames.first()->setExpanded(0, false);
    frames.first()->setExpanded(0, false);
    frames.first()->setExpanded(5, false);
    QCOMPARE(changed.count(), 1);
    QVERIFY(!fields.first()->isVisible());
    QVERIFY(!frames.first()->isExpanded(0) && !frames.first()->isExpanded(-1));
}

QTEST_MAIN(tst_QKXDockWindowManager)
#include "tst_QKXDockWindowManager.moc"
