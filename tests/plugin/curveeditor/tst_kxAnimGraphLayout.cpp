#include <curveeditor/kxAnimGraphLayout.h>

#include <kxTable.h>

#include <limits>

namespace layout = kxAnimGraphLayout;

/// The arithmetic of grid, labels and zoom, without a window.
class tst_kxAnimGraphLayout : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void gridStep_data()
    {
        kxColumns<double, double>("distance", "step");
        kxRow("whole above one", 7.4, 7.0);
        kxRow("ties go away from zero", 2.5, 3.0);
        kxRow("mirrored", -75.0, 75.0);
        kxRow("one is whole", 1.0, 1.0);
        kxRow("second decade", 0.05, 5 / 20.0);
        kxRow("third decade", 0.0042, 4 / 30.0);
        kxRow("nothing", 0.0, 0.0);
        kxRow("smallest number", double(std::numeric_limits<float>::denorm_min()), 1 / 450.0);
        kxRow("no number", std::numeric_limits<double>::quiet_NaN(), 0.0);
        kxRow("endless", std::numeric_limits<double>::infinity(), 0.0);
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
        kxColumns<double, double, double, Lines>("low", "high", "step", "lines");
        kxRow("the axis is none of them", -11.0, 11.0, 5.0, Lines{-10, -5, 5, 10});
        kxRow("edges, right of the axis", 5.0, 15.0, 5.0, Lines{5, 10});
        kxRow("edges, left of the axis", -15.0, -5.0, 5.0, Lines{-10, -5});
        kxRow("far away", 1.0e6 + 0.1, 1.0e6 + 1, 0.5, Lines{1.0e6 + 0.5});
        kxRow("no step", -11.0, 11.0, 0.0, Lines{});
        kxRow("more than can be seen", -1.0e9, 1.0e9, 0.001, Lines{});
        kxRow("endless", 0.0, std::numeric_limits<double>::infinity(), 1.0, Lines{});
        kxRow("no number", std::numeric_limits<double>::quiet_NaN(), 1.0, 1.0, Lines{});
        kxRow("finer than the numbers", 1.0e30, 1.0e30 + 1, 1.0, Lines{});
        kxRow("a little finer than the numbers", 3.0e18, 3.0e18 + 512, 1.0, Lines{});
    }
    void gridLines()
    {
        QFETCH(double, low);
        QFETCH(double, high);
        QFETCH(double, step);
        QFETCH(std::vector<double>, lines);
        QCOMPARE(layout::gridLines(low, high, float(step)), lines);
    }

    void frameLabels_data()
    {
        // top: the lower edge of the screen
        kxColumns<double, double, double>("top", "height", "baseline");
        kxRow("on the axis", -10.0, 100.0, 0.0);
        kxRow("only positive values: on the lower edge", 20.0, 100.0, -40.0);
        kxRow("only negative values: under the upper edge", -120.0, 100.0, 15 + 40.0);
        kxRow("axis on the lower edge of a low view", 0.0, 5.0, 15 - 10.0);
        kxRow("axis just below the upper edge", -95.0, 100.0, 5.0);
    }
    void frameLabels()
    {
        QFETCH(double, top);
        QFETCH(double, height);
        QTEST(layout::frameLabelBaseline(top, height, -2), "baseline");
    }

    void valueLabels_data()
    {
        kxColumns<double, double, bool>("left", "x", "isLeft");
        kxRow("on the axis", -10.0, 0.0, true);
        kxRow("axis left of the screen", 30.0, 60.0, true);
        kxRow("axis right of the screen", -130.0, -60.0 - 50, false);
        kxRow("axis close to the right edge", -90.0, 20.0 - 50, false);
    }
    void valueLabels()
    {
        QFETCH(double, left);
        QFETCH(bool, isLeft);
        const layout::ValueLabel label = layout::valueLabel(left, 100, 2);
        QTEST(label.x, "x");
        QCOMPARE(label.alignment, isLeft ? Qt::AlignLeft : Qt::AlignRight);
    }
};

QTEST_MAIN(tst_kxAnimGraphLayout)
#include "tst_kxAnimGraphLayout.moc"
