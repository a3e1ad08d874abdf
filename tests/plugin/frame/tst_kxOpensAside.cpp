#include <frame/kxOpensAside.h>

#include <kernel/kxHostHooks.h>

#include <kxTable.h>

#include <QDialog>
#include <QDockWidget>
#include <QMainWindow>
#include <QStyle>

Q_DECLARE_METATYPE(std::vector<kxOpensAside::Kept>)

class tst_kxOpensAside : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void coversLeast_data()
    {
        typedef std::vector<kxOpensAside::Kept> Kept;
        kxColumns<QSize, Kept, QPoint>("size", "kept", "place");
        const kxOpensAside::Kept view{{240, 70, 760, 210}, 4}, left{{0, 70, 234, 620}, 1},
            right{{1000, 70, 280, 620}, 1}, bars{{486, 436, 470, 170}, 8};
        kxRow("below the view, at the right dock", QSize(370, 520), Kept{view, left, right}, QPoint(630, 280));
        kxRow("a small one below the bars", QSize(300, 150), Kept{bars, view, left, right}, QPoint(700, 606));
        kxRow("left of the bars, over a dock", QSize(470, 450), Kept{bars, view, left, right}, QPoint(16, 350));
        kxRow("rather a dock than the view", QSize(280, 800), Kept{{{0, 0, 1000, 200}, 4}, right}, QPoint(1000, 0));
        kxRow("beside all there is", QSize(300, 400), Kept{{{20, 30, 900, 700}, 4}}, QPoint(920, 400));
        kxRow("higher than the screen", QSize(300, 900), Kept{{{20, 30, 900, 700}, 4}}, QPoint(920, 0));
        kxRow("nothing is kept", QSize(300, 400), Kept{}, QPoint(980, 400));
    }

    void coversLeast()
    {
        QFETCH(QSize, size);
        QFETCH(std::vector<kxOpensAside::Kept>, kept);
        QTEST(kxOpensAside::placeFor(size, QRect(0, 0, 1280, 800), kept), "place");
    }

    void opensBesideWhatIsSeen()
    {
        QMainWindow window;
        kxHostHooks::the().setMainWindow(&window);
        window.setCentralWidget(new QWidget);
        QDockWidget* docks[3];
        for (QDockWidget*& dock : docks)
        {
            dock = new QDockWidget(&window);
            dock->setWidget(new QWidget);
            dock->widget()->setMinimumSize(250, 150);
            window.addDockWidget(dock == docks[2] ? Qt::BottomDockWidgetArea : Qt::RightDockWidgetArea, dock);
        }
        window.tabifyDockWidget(docks[0], docks[1]);
        window.setGeometry(20, 30, 560, 480); // of a screen of 800 x 600
        window.show();
        QCoreApplication::processEvents();
        QDialog dialog;
        dialog.resize(150, 100);
        new kxOpensAside(&dialog, docks[2]->widget());
        const auto covers = [&dialog](const QWidget* widget)
        { return dialog.geometry().intersects(QRect(widget->mapToGlobal(QPoint()), widget->size())); };
        dialog.show();
        QVERIFY(!covers(docks[1]) && !covers(docks[2]->widget()) && !covers(window.centralWidget()));
        const int title = dialog.style()->pixelMetric(QStyle::PM_TitleBarHeight);
        QCOMPARE(dialog.y() + title + dialog.height(), 600); // all of it is on the screen
        dialog.hide();
        window.move(60, 90); // it follows
        dialog.show();
        QVERIFY(!covers(docks[1]) && !covers(docks[2]->widget()));
        dialog.move(window.geometry().center()); // the user knows better
        for (int opening = 0; opening < 2; ++opening)
        {
            dialog.hide();
            dialog.show();
            QCOMPARE(dialog.pos(), window.geometry().center());
        }
        kxHostHooks::the().setMainWindow(nullptr);
    }
};

QTEST_MAIN(tst_kxOpensAside)
#include "tst_kxOpensAside.moc"
