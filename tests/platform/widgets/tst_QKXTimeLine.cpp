#include <QKXTimeLine.h>
#include <QKXTimeLineRange.h>
#include <kxSendMouse.h>
#include <kxTable.h>
#include <widgets/kxColors.h>

#include <QLineEdit>
#include <QtTest>

#include <climits>

namespace
{
constexpr int Margin = 14; // of the time line
constexpr int Inset = 2;   // of the range

void press(QWidget* w, int x)
{
    kxPress(w, QPoint(x, 10));
}
void drag(QWidget* w, int x)
{
    kxDragTo(w, QPoint(x, 10));
}
void release(QWidget* w, int x)
{
    kxRelease(w, QPoint(x, 10));
}

QList<int> values(const QSignalSpy& spy)
{
    QList<int> frames;
    for (const QList<QVariant>& call : spy)
        frames.append(call.at(0).toInt());
    return frames;
}
} // namespace

/// Notes what is painted.
template <class Widget>
class Painted : public Widget
{
public:
    QRegion painted;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        painted += event->region();
        Widget::paintEvent(event);
    }
};

class tst_QKXTimeLine : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void scrubStaysInTheExtent()
    {
        QKXTimeLine line;
        line.resize(100 + 2 * Margin, 32);
        line.setStartFrame(10);
        line.setEndFrame(20); // ten pixels a frame
        line.setCurrentFrame(10);
        QSignalSpy changed(&line, &QKXTimeLine::currentFrameChanged);
        QSignalSpy finished(&line, &QKXTimeLine::finishedSliding);
        press(&line, Margin + 31);
        drag(&line, Margin + 33); // the same frame
        drag(&line, Margin + 44);
        drag(&line, 5000);
        drag(&line, -5000);
        QCOMPARE(finished.count(), 0);
        release(&line, -5000);
        QCOMPARE(values(changed), QList<int>({13, 14, 20, 10}));
        QCOMPARE(finished.count(), 1);
        drag(&line, Margin + 50); // let go
        QCOMPARE(line.currentFrame(), 10);
    }

    void keys_data()
    {
        kxColumns<int, int, int>("from", "key", "expected");
        QTest::newRow("left") << 12 << int(Qt::Key_Left) << 11;
        QTest::newRow("left at the start") << -5 << int(Qt::Key_Left) << -5;
        QTest::newRow("page up is cut at the end") << 22 << int(Qt::Key_PageUp) << 25;
        QTest::newRow("from outside back into the extent") << INT_MAX << int(Qt::Key_Right) << 25;
        QTest::newRow("far below to the end") << INT_MIN << int(Qt::Key_End) << 25;
    }

    void keys()
    {
        QFETCH(int, from);
        QFETCH(int, key);
        QFETCH(int, expected);
        QKXTimeLine line;
        line.setStartFrame(-5);
        line.setEndFrame(25);
        line.setCurrentFrame(from);
        QSignalSpy finished(&line, &QKXTimeLine::finishedSliding);
        QTest::keyClick(&line, Qt::Key(key));
        QCOMPARE(line.currentFrame(), expected);
        QCOMPARE(finished.count(), from == expected ? 0 : 1);
    }

    void paintsAnyExtent()
    {
        const int extents[][2] = {{0, 1}, {0, 1000000000}, {INT_MIN, INT_MAX}, {INT_MAX, INT_MIN}, {INT_MAX, INT_MAX}};
        QMap<float, QColor> keys{{0, Qt::red}, {-1e38f, Qt::blue}, {1e38f, Qt::blue}};
        keys.insert(std::numeric_limits<float>::infinity(), Qt::red);
        for (const auto& extent : extents)
        {
            for (const QSize& size : {QSize(600, 32), QSize(1, 1), QSize(20, 60)})
            {
                QKXTimeLine line;
                line.resize(size);
                line.setStartFrame(extent[0]);
                line.setEndFrame(extent[1]);
                line.setKeyFrames(keys);
                line.setCurrentFrame(extent[1]);
                QCOMPARE(line.keyFrames().size(), 3); // the one at infinity has no place
                QVERIFY(!line.grab().isNull());
                QKXTimeLineRange range;
                range.resize(size);
                range.setStartFrame(extent[0]);
                range.setEndFrame(extent[1]);
                range.setRangeEndFrame(extent[1]);
                QVERIFY(!range.grab().isNull());
            }
        }
    }

    void scrubRepaintsNothingFarAway()
    {
        Painted<QKXTimeLine> line;
        line.resize(1000 + 2 * Margin, 32);
        line.setEndFrame(1000);
        line.setCurrentFrame(520); // its number covers a part of the label 500
        line.show();
        QVERIFY(QTest::qWaitForWindowExposed(&line));
        QCoreApplication::processEvents();
        const QImage before = line.grab().toImage();
        line.painted = QRegion();
        line.setCurrentFrame(780);
        QCoreApplication::processEvents();
        const QRegion painted = line.painted;
        int columns = 0;
        const QImage after = line.grab().toImage();
        for (int x = 0; x < after.width(); ++x)
        {
            if (painted.contains(QPoint(x, 5)))
                ++columns;
            for (int y = 0; !painted.contains(QPoint(x, 5)) && y < after.height(); ++y)
                QCOMPARE(after.pixel(x, y), before.pixel(x, y));
        }
        QVERIFY(columns > 0 && columns < 250);
    }

    void marksAreSeen()
    {
        QKXTimeLine line;
        line.resize(100 + 2 * Margin, 32);
        line.setStartFrame(10);
        line.setEndFrame(20);
        const QImage before = line.grab().toImage();
        line.setKeyFrames({{17, Qt::magenta}});
        const QImage marked = line.grab().toImage();
        int first = before.width(), last = -1;
        for (int x = 0; x < before.width(); ++x)
            for (int y = 0; y < before.height(); ++y)
                if (before.pixel(x, y) != marked.pixel(x, y))
                    first = qMin(first, x), last = qMax(last, x);
        const int ratio = line.devicePixelRatio();
        QCOMPARE(last - first + 1, 2 * ratio);
        QVERIFY(std::abs((first + last + 1) / 2 - (Margin + 70) * ratio) <= 1);
    }

    void labelsHaveRoom()
    {
        for (int width = 200; width < 900; width += 20)
        {
            QKXTimeLine line;
            line.resize(width, 32);
            line.setEndFrame(100);
            const QImage image = line.grab().toImage();
            int last = 0;
            for (int x = Margin + 4; x < width - Margin; ++x) // behind the cursor, where only long ticks reach so high
                if (image.pixel(x, 23) != image.pixel(x - 1, 23) && image.pixel(x - 1, 23) == image.pixel(x + 1, 23))
                    QVERIFY(x - std::exchange(last, x) > line.fontMetrics().horizontalAdvance("000"));
            QVERIFY(last > 0);
        }
    }

    void focusIsSeen()
    {
        QWidget window;
        QLineEdit other(&window);
        QKXTimeLine line(&window);
        QKXTimeLineRange range(&window);
        window.resize(400, 40);
        line.setGeometry(100, 0, 100, 32);
        range.setGeometry(200, 0, 100, 26);
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        for (QWidget* const widget : {static_cast<QWidget*>(&line), static_cast<QWidget*>(&range)})
        {
            other.setFocus();
            const QImage before = widget->grab().toImage();
            widget->setFocus();
            const QImage after = widget->grab().toImage();
            QCOMPARE(after.pixelColor(0, 13), kxColors::accent());
            for (int x = 0; x < 100; ++x)
                QCOMPARE(after.pixel(x, 13) != before.pixel(x, 13), x == 0 || x == 99);
        }
    }

    void rangeIsSeen()
    {
        Painted<QKXTimeLineRange> range;
        range.resize(200 + 2 * Inset, 26);
        range.setEndFrame(100);
        range.setRangeEndFrame(60);
        range.setRangeStartFrame(40); // from pixel 82 to 122
        range.setFocusPolicy(Qt::NoFocus);
        range.show();
        QVERIFY(QTest::qWaitForWindowExposed(&range));
        const QImage image = range.grab().toImage();
        QCOMPARE(image.pixelColor(0, 13), kxColors::border());
        QCOMPARE(image.pixelColor(102, 21), image.pixelColor(102, 4)); // above and below the block
        QVERIFY(image.pixelColor(102, 19) != image.pixelColor(102, 4));
        int left = 0, right = 0;
        for (int x = 0; x < 8; ++x)
        {
            left += image.pixelColor(84 + x, 13).lightness() > 120;
            right += image.pixelColor(119 - x, 13).lightness() > 120;
        }
        QVERIFY2(left > 0 && left == right, qPrintable(QString("%1 %2").arg(left).arg(right)));
        range.painted = QRegion();
        kxSendMouse(&range, QEvent::MouseMove, QPoint(84, 13), Qt::NoButton, Qt::NoButton);
        QCoreApplication::processEvents();
        QVERIFY(!range.painted.isEmpty());
    }

    /// The range is 20 to 30 in 0 to 100.
    void rangeKeys_data()
    {
        kxColumns<int, QPoint>("key", "expected");
        QTest::newRow("right") << int(Qt::Key_Right) << QPoint(21, 31);
        QTest::newRow("start") << int(Qt::CTRL + Qt::Key_Left) << QPoint(19, 30);
        QTest::newRow("end") << int(Qt::SHIFT + Qt::Key_Right) << QPoint(20, 31);
        QTest::newRow("to the first") << int(Qt::Key_Home) << QPoint(0, 10);
        QTest::newRow("to the last") << int(Qt::Key_End) << QPoint(90, 100);
        QTest::newRow("another key") << int(Qt::Key_K) << QPoint(20, 30);
    }

    void rangeKeys()
    {
        QFETCH(int, key);
        QKXTimeLineRange range;
        range.setStartFrame(0);
        range.setEndFrame(100);
        range.setRangeEndFrame(30);
        range.setRangeStartFrame(20);
        QTest::keyClick(&range, Qt::Key(key & ~Qt::KeyboardModifierMask),
                        Qt::KeyboardModifiers(key & Qt::KeyboardModifierMask));
        QTEST(QPoint(range.rangeStartFrame(), range.rangeEndFrame()), "expected");
    }

    void rangeDrag_data()
    {
        // From and to: pixels in a trough of ten pixels a frame, with the range 20 to 40.
        kxColumns<int, int, int, int>("from", "to", "start", "end");
        QTest::newRow("start") << 203 << 153 << 15 << 40;
        QTest::newRow("end") << 397 << 447 << 20 << 45;
        QTest::newRow("last pixel of the end") << 400 << 450 << 20 << 45;
        QTest::newRow("middle") << 300 << 351 << 25 << 45;
        QTest::newRow("beside the block") << 100 << 300 << 20 << 40;
    }

    void rangeDrag()
    {
        QFETCH(int, from);
        QFETCH(int, to);
        QKXTimeLineRange range;
        range.resize(1000 + 2 * Inset, 26);
        range.setEndFrame(100);
        range.setRangeEndFrame(40);
        range.setRangeStartFrame(20);
        press(&range, Inset + from);
        drag(&range, Inset + (from + to) / 2);
        drag(&range, Inset + to);
        release(&range, Inset + to);
        QTEST(range.rangeStartFrame(), "start");
        QTEST(range.rangeEndFrame(), "end");
        kxSendMouse(&range, QEvent::MouseButtonDblClick, QPoint(range.rangeStartFrame() * 10 + 12, 10), Qt::LeftButton,
                    Qt::LeftButton);
        QCOMPARE(range.rangeStartFrame(), 0);
        QCOMPARE(range.rangeEndFrame(), 100);
    }

    void listenersNeverSeeATurnedRange()
    {
        QKXTimeLineRange range;
        range.resize(1000 + 2 * Inset, 26);
        range.setEndFrame(100);
        range.setRangeEndFrame(10);
        bool ordered = true;
        int calls = 0;
        const auto check = [&]
        {
            ordered = ordered && range.rangeStartFrame() < range.rangeEndFrame();
            ++calls;
        };
        connect(&range, &QKXTimeLineRange::rangeStartChanged, check);
        connect(&range, &QKXTimeLineRange::rangeEndChanged, check);
        press(&range, Inset + 50);
        drag(&range, Inset + 850); // farther than its length, both ways
        drag(&range, Inset + 50);
        release(&range, Inset + 50);
        QCOMPARE(calls, 4);
        QVERIFY(ordered);
    }
};

QTEST_MAIN(tst_QKXTimeLine)
#include "tst_QKXTimeLine.moc"
