#include <widgets/kxRulerMath.h>

#include <QtTest>

#include <climits>

#include <kxTable.h>

using namespace kxRulerMath;

Q_DECLARE_METATYPE(kxRulerMath::Range)

class tst_kxRulerMath : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void ticks_data()
    {
        kxColumns<int, int, double, qint64, qint64>("start", "end", "right", "major", "minor");
        // Labels take 40 pixels, minor ticks 5.
        QTest::newRow("each frame has a label") << 0 << 10 << 600.0 << qint64(1) << qint64(1);
        QTest::newRow("halves of two") << 0 << 25 << 600.0 << qint64(2) << qint64(1);
        QTest::newRow("fifths of five") << 0 << 60 << 500.0 << qint64(5) << qint64(1);
        QTest::newRow("tenths of ten would be too dense") << 0 << 100 << 450.0 << qint64(10) << qint64(2);
        QTest::newRow("5 has no whole halves") << 0 << 100 << 900.0 << qint64(5) << qint64(1);
        QTest::newRow("a billion frames") << 0 << 1000000000 << 600.0 << qint64(100000000) << qint64(10000000);
        QTest::newRow("all of int") << INT_MIN << INT_MAX << 600.0 << qint64(500000000) << qint64(50000000);
        QTest::newRow("start after end is one frame") << 50 << 10 << 600.0 << qint64(1) << qint64(1);
        QTest::newRow("no width") << 0 << 100 << 0.0 << qint64(5000) << qint64(500);
    }

    void ticks()
    {
        QFETCH(int, start);
        QFETCH(int, end);
        QFETCH(double, right);
        QFETCH(qint64, major);
        QFETCH(qint64, minor);
        const Scale scale = makeScale(start, end, 0, right);
        QCOMPARE(majorStep(scale, 40), major);
        QCOMPARE(minorStep(scale, major, 5), minor);
        QVERIFY(scale.length / double(major) <= scale.width);
    }

    void tickOfNegativeFrames()
    {
        QCOMPARE(tickAtOrBefore(-1, 10), qint64(-10));
        QCOMPARE(tickAtOrBefore(-10, 10), qint64(-10));
        QCOMPARE(tickAtOrBefore(9.5, 10), qint64(0));
        QCOMPARE(tickAtOrBefore(INT_MIN, 500000000), qint64(-2500000000));
    }

    void framesComeBack()
    {
        const int limits[][2] = {{0, 25}, {-500, 500}, {7, 8}, {INT_MAX - 10, INT_MAX}, {INT_MIN, INT_MIN + 1},
                                 {50, 10}};
        for (const auto& extent : limits)
        {
            const Scale scale = makeScale(extent[0], extent[1], 14, 2014);
            const qint64 last = qMax<qint64>(extent[1], qint64(extent[0]) + 1);
            for (qint64 frame = extent[0]; frame <= last; ++frame)
                QCOMPARE(qint64(scale.frameAt(scale.toPixel(double(frame)))), frame);
            QCOMPARE(scale.frameAt(-1e9), extent[0]);
            QCOMPARE(qint64(scale.frameAt(1e9)), last);
        }
        const Scale whole = makeScale(INT_MIN, INT_MAX, 0, 1000);
        QCOMPARE(whole.frameAt(0), INT_MIN);
        QCOMPARE(whole.frameAt(1000), INT_MAX);
        QCOMPARE(makeScale(INT_MAX, INT_MAX, 0, 10).frameAt(10), INT_MAX); // the frame after the last int
    }

    void dragged_data()
    {
        // Grips: 0 start, 1 middle, 2 end; the way in frames.
        kxColumns<int, Range, Range, qint64, Range>("grip", "range", "full", "by", "expected");
        const qint64 far = 10000000000;
        kxRow("start stops one frame before the end", 0, Range{10, 20}, Range{0, 50}, far, Range{19, 20});
        kxRow("start stops at the full start", 0, Range{10, 20}, Range{3, 50}, -far, Range{3, 20});
        kxRow("end stops one frame after the start", 2, Range{10, 20}, Range{0, 50}, -far, Range{10, 11});
        kxRow("end stops at the full end", 2, Range{10, 20}, Range{0, 50}, far, Range{10, 50});
        kxRow("middle keeps its length to the left", 1, Range{10, 20}, Range{4, 50}, -far, Range{4, 14});
        kxRow("middle keeps its length to the right", 1, Range{10, 20}, Range{4, 50}, far, Range{40, 50});
        kxRow("middle by three", 1, Range{10, 20}, Range{0, 50}, qint64(3), Range{13, 23});
        kxRow("longer than the full range", 1, Range{-10, 90}, Range{0, 50}, qint64(3), Range{-10, 90});
        kxRow("from outside it comes in", 1, Range{60, 70}, Range{0, 50}, qint64(1), Range{40, 50});
        kxRow("start beyond the full range", 0, Range{60, 70}, Range{80, 90}, qint64(-5), Range{69, 70});
        kxRow("turned range stays", 1, Range{20, 10}, Range{0, 50}, qint64(1), Range{20, 10});
        kxRow("limits of int", 1, Range{INT_MIN, 0}, Range{INT_MIN, INT_MAX}, far, Range{-1, INT_MAX});
        kxRow("no room after the last int", 2, Range{INT_MAX, INT_MAX}, Range{0, 50}, far, Range{INT_MAX, INT_MAX});
    }

    void dragged()
    {
        QFETCH(int, grip);
        QFETCH(Range, range);
        QFETCH(Range, full);
        QFETCH(qint64, by);
        QFETCH(Range, expected);
        const Range result = grip == 0   ? withStart(range, full, range.start + by)
                             : grip == 1 ? moved(range, full, by)
                                         : withEnd(range, full, range.end + by);
        QCOMPARE(result.start, expected.start);
        QCOMPARE(result.end, expected.end);
    }

    void blockStaysInside()
    {
        const Scale scale = makeScale(0, 1000000000, 2, 402);
        const Range ranges[] = {{0, 1}, {999999999, 1000000000}, {500000000, 500000001}, {-50, 2000000000}, {40, 20}};
        for (const Range& range : ranges)
        {
            const Block block = rangeBlock(scale, range, 28);
            QVERIFY(block.right - block.left >= 28 - 1e-6);
            QVERIFY(block.left >= 2 && block.right <= 402);
        }
        const Block narrow = rangeBlock(makeScale(0, 50, 0, 9), {10, 20}, 28); // a widget smaller than the grips
        QVERIFY(narrow.left >= 0 && narrow.right <= 9 && narrow.left < narrow.right);
    }

    void marks()
    {
        QMap<float, QColor> keys;
        for (int i = 0; i < 10000; ++i)
            keys[float(i) / 10] = i % 10 == 0 ? Qt::red : Qt::blue; // frames 0 to 999.9, red on whole frames
        const Scale scale = makeScale(0, 1000, 0, 500);
        const auto single = visibleMarks(keys, scale, 0, 499.9, 1);
        QCOMPARE(single.size(), 500); // 20 keys a column, each column once
        for (int i = 0; i < single.size(); ++i)
        {
            QCOMPARE(single.at(i).column, qint64(i));
            QCOMPARE(single.at(i).color, QColor(Qt::red));
        }
        QCOMPARE(visibleMarks(keys, scale, 0, 499.9, 2).size(), 1000);
        QCOMPARE(visibleMarks(keys, scale, 100, 109.9, 1).size(), 10);
        QVERIFY(visibleMarks(keys, scale, 600, 700, 1).isEmpty());
        // Frames that float can't tell apart from their neighbours end the walk all the same.
        const QMap<float, QColor> huge{{2e9f, Qt::red}, {2.0000001e9f, Qt::blue}, {3e38f, Qt::red}};
        QVERIFY(visibleMarks(huge, makeScale(1999999999, 2000000001, 0, 500), 0, 500, 1).size() <= 2);
    }

    void times_data()
    {
        kxColumns<double, double, QString>("frame", "fps", "expected");
        QTest::newRow("whole second") << 24.0 << 24.0 << "0:01.000";
        QTest::newRow("rounded up to a minute") << 1438.56 << 23.976 << "1:00.000";
        QTest::newRow("carries into the minute") << 59.9999 << 1.0 << "1:00.000";
        QTest::newRow("before zero") << -36.0 << 24.0 << "-0:01.500";
        QTest::newRow("hours are minutes") << 215784.0 << 29.97 << "120:00.000";
        QTest::newRow("no rate") << 24.0 << 0.0 << "";
        QTest::newRow("negative rate") << 24.0 << -24.0 << "";
        QTest::newRow("rate that is no number") << 24.0 << qQNaN() << "";
        QTest::newRow("tiny rate") << 2e9 << 1e-300 << "";
    }

    void times()
    {
        QFETCH(double, frame);
        QFETCH(double, fps);
        QFETCH(QString, expected);
        QCOMPARE(timeText(frame, fps), expected);
    }
};

QTEST_APPLESS_MAIN(tst_kxRulerMath)
#include "tst_kxRulerMath.moc"
