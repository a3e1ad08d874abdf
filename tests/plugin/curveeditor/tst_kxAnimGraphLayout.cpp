#include <curveeditor/kxAnimGraphLayout.h>

#include <QtTest>

#include <limits>

namespace layout = kxAnimGraphLayout;

/// The arithmetic of grid, labels and zoom, without a window.
class tst_kxAnimGraphLayout : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void gridStep_data()
    {
        QTest::addColumn<double>("distance");
        QTest::addColumn<double>("step");
        QTest::newRow("whole above one") << 7.4 << 7.0;
        QTest::newRow("ties go away from zero") << 2.5 << 3.0;
        QTest::newRow("mirrored") << -75.0 << 75.0;
        QTest::newRow("one is whole") << 1.0 << 1.0;
        QTest::newRow("first decade") << 0.64 << 0.6;
        QTest::newRow("second decade") << 0.05 << 5 / 20.0;
        QTest::newRow("third decade") << 0.0042 << 4 / 30.0;
        QTest::newRow("mirrored decade") << -0.05 << 0.25;
        QTest::newRow("nothing") << 0.0 << 0.0;
        QTest::newRow("smallest number") << double(std::numeric_limits<float>::denorm_min()) << 1 / 450.0;
        QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN() << 0.0;
        QTest::newRow("endless") << std::numeric_limits<double>::infinity() << 0.0;
    }
    void gridStep()
    {
        QFETCH(double, distance);
        QFETCH(double, step);
        QCOMPARE(layout::gridStep(float(distance)), float(step));
    }

    void gridLines_data()
    {
        typedef std::vector<double> Lines;
        QTest::addColumn<double>("low");
        QTest::addColumn<double>("high");
        QTest::addColumn<double>("step");
        QTest::addColumn<Lines>("lines");
        QTest::newRow("the axis is none of them") << -11.0 << 11.0 << 5.0 << Lines{-10, -5, 5, 10};
        QTest::newRow("edges, right of the axis") << 5.0 << 15.0 << 5.0 << Lines{5, 10};
        QTest::newRow("edges, left of the axis") << -15.0 << -5.0 << 5.0 << Lines{-10, -5};
        QTest::newRow("far away") << 1.0e6 + 0.1 << 1.0e6 + 1 << 0.5 << Lines{1.0e6 + 0.5};
        QTest::newRow("no step") << -11.0 << 11.0 << 0.0 << Lines{};
        QTest::newRow("more than can be seen") << -1.0e9 << 1.0e9 << 0.001 << Lines{};
        QTest::newRow("endless") << 0.0 << std::numeric_limits<double>::infinity() << 1.0 << Lines{};
        QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN() << 1.0 << 1.0 << Lines{};
        QTest::newRow("finer than the numbers") << 1.0e30 << 1.0e30 + 1 << 1.0 << Lines{};
    }
    void gridLines()
    {
        QFETCH(double, low);
        QFETCH(double, high);
        QFETCH(double, step);
        QFETCH(std::vector<double>, lines);
        QCOMPARE(layout::gridLines(low, high, float(step)), lines);
    }

    void tickLabel_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("label");
        QTest::newRow("whole") << 150.0 << "150";
        QTest::newRow("six digits") << double(0.1f) * 3 << "0.3";
        QTest::newRow("negative") << -0.25 << "-0.25";
        QTest::newRow("large") << 12345678.0 << "1.23457e+07";
    }
    void tickLabel()
    {
        QFETCH(double, value);
        QTEST(layout::tickLabel(value), "label");
    }

    void frameLabels_data()
    {
        QTest::addColumn<double>("top"); // the lower edge of the screen
        QTest::addColumn<double>("height");
        QTest::addColumn<double>("baseline");
        QTest::newRow("on the axis") << -10.0 << 100.0 << 0.0;
        QTest::newRow("only positive values: on the lower edge") << 20.0 << 100.0 << -40.0;
        QTest::newRow("only negative values: under the upper edge") << -120.0 << 100.0 << 15 + 40.0;
        QTest::newRow("axis just below the upper edge") << -95.0 << 100.0 << 5.0;
    }
    void frameLabels()
    {
        QFETCH(double, top);
        QFETCH(double, height);
        QTEST(layout::frameLabelBaseline(top, height, -2), "baseline");
    }

    void valueLabels_data()
    {
        QTest::addColumn<double>("left");
        QTest::addColumn<double>("x");
        QTest::addColumn<bool>("isLeft");
        QTest::newRow("on the axis") << -10.0 << 0.0 << true;
        QTest::newRow("axis left of the screen") << 30.0 << 60.0 << true;
        QTest::newRow("axis right of the screen") << -130.0 << -60.0 - 50 << false;
        QTest::newRow("axis close to the right edge") << -90.0 << 20.0 - 50 << false;
    }
    void valueLabels()
    {
        QFETCH(double, left);
        QFETCH(bool, isLeft);
        const layout::ValueLabel label = layout::valueLabel(left, 100, 2);
        QTEST(label.x, "x");
        QCOMPARE(label.alignment, isLeft ? Qt::AlignLeft : Qt::AlignRight);
    }

    void zoom()
    {
        QVERIFY(layout::isSmallest(0.00001, -1));
        QVERIFY(layout::isSmallest(1, -0.00001));
        QVERIFY(!layout::isSmallest(0.000011, -0.000011));
        const layout::Scale both = layout::zoomStep(1.05, false, false, false);
        QCOMPARE(both.x, 0.9523809523809523);
        QCOMPARE(both.y, both.x);
        const layout::Scale onlyX = layout::zoomStep(1.15, true, true, false);
        QCOMPARE(onlyX.x, 1.15);
        QCOMPARE(onlyX.y, 1.0);
        QCOMPARE(layout::zoomStep(1.15, true, false, true).x, 1.0);
    }
};

QTEST_MAIN(tst_kxAnimGraphLayout)
#include "tst_kxAnimGraphLayout.moc"
