#include <QKXTimeLine.h>
#include <QKXTimeLineRange.h>
#include <kxSendMouse.h>
#include <kxTable.h>

#include <QRandomGenerator>
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
class PaintedLine : public QKXTimeLine
{
public:
    QRegion painted;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        painted += event->region();
        QKXTimeLine::paintEvent(event);
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

    void unknownKeysGoToTheParent()
    {
        QKXTimeLine line;
        const std::pair<int, Qt::KeyboardModifiers> others[] = {
            {Qt::Key_V, Qt::ControlModifier}, {Qt::Key_V, Qt::NoModifier}, {Qt::Key_Left, Qt::ControlModifier}};
        for (const auto& other : others)
        {
            QKeyEvent event(QEvent::KeyPress, other.first, other.second);
            QApplication::sendEvent(&line, &event);
            QVERIFY(!event.isAccepted());
        }
        QCOMPARE(line.currentFrame(), 0);
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
        PaintedLine line;
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
        int first = line.width(), last = -1;
        for (int x = 0; x < line.width(); ++x)
            for (int y = 0; y < line.height(); ++y)
                if (before.pixel(x, y) != marked.pixel(x, y))
                    first = qMin(first, x), last = qMax(last, x);
        QCOMPARE(last - first + 1, 2);
        QVERIFY(std::abs((first + last + 1) / 2 - (Margin + 70)) <= 1);
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
        QTest::addColumn<int>("from"); // pixels in a trough of ten pixels a frame, range 20 to 40
        kxColumns<int, int, int>("to", "start", "end");
        QTest::newRow("start") << 203 << 153 << 15 << 40;
        QTest::newRow("end") << 397 << 447 << 20 << 45;
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

    void randomDragsKeepTheRangeInside()
    {
        QRandomGenerator random(7);
        for (int round = 0; round < 200; ++round)
        {
            QKXTimeLineRange range;
            range.resize(random.bounded(30, 900), 26);
            const int start = random.bounded(-2000, 2000);
            const int end = start + random.bounded(1, 4000);
            range.setStartFrame(start);
            range.setEndFrame(end);
            range.setRangeStartFrame(start);
            range.setRangeEndFrame(end);
            for (int i = 0; i < 20; ++i)
            {
                press(&range, random.bounded(0, range.width()));
                drag(&range, random.bounded(-100, range.width() + 100));
                drag(&range, random.bounded(-100, range.width() + 100));
                release(&range, 0);
                QVERIFY(start <= range.rangeStartFrame());
                QVERIFY(range.rangeStartFrame() < range.rangeEndFrame());
                QVERIFY(range.rangeEndFrame() <= end);
            }
        }
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
