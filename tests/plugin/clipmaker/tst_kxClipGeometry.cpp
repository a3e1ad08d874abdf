#include <clipmaker/edits/kxClipGeometry.h>
#include <clipmaker/kxClipColor.h>
#include <clipmaker/kxClipLayout.h>
#include <clipmaker/kxClipTracks.h>

#include <QGraphicsRectItem>
#include <kxTable.h>

#include <limits>

namespace Geometry = kxClipGeometry;
using Geometry::Handle;

Q_DECLARE_METATYPE(kxClipGeometry::Handle)

namespace
{
constexpr double Infinity = std::numeric_limits<double>::infinity();
}

class tst_kxClipGeometry : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void findsTracks_data()
    {
        kxColumns<double, float, int>("y", "dpi", "track");
        kxRow("inside", 149.0, 1.0f, 2);
        kxRow("above the first", -30.0, 1.0f, 0);
        kxRow("far above", -130.0, 1.0f, -2);
        kxRow("short of a track by rounding", double(1.0416666f * 250.0f), 1.0416666f, 5);
        kxRow("doubled", 149.0, 2.0f, 1);
        kxRow("beyond every number", 1.0e300, 1.0f, 1000000);
    }

    void findsTracks()
    {
        QFETCH(double, y);
        QFETCH(float, dpi);
        QTEST(Geometry::trackOf(y, dpi), "track");
    }

    void findsHandles_data()
    {
        kxColumns<QPointF, double, double, float, Handle>("point", "width", "scale", "dpi", "handle");
        const auto row = [](const char* name, QPointF point, double width, double scale, float dpi, Handle handle)
        { kxRow(name, point, width, scale, dpi, handle); };
        row("left", {7.9, 20}, 100, 1, 1, Handle::Left);
        row("right", {92.1, 20}, 100, 1, 1, Handle::Right);
        row("between", {8.1, 20}, 100, 1, 1, Handle::None);
        row("zoomed in, handles are thin in frames", {1, 20}, 100, 16, 1, Handle::None);
        row("zoomed out, handles are wide in frames", {15, 20}, 100, 0.5, 1, Handle::Left);
        row("as wide as the limit", {1, 20}, 24, 1, 1, Handle::None);
        row("above the limit", {1, 20}, 24.1, 1, 1, Handle::Left);
        row("the limit grows with the screen", {1, 20}, 40, 1, 2, Handle::None);
        row("on the upper edge", {1, 0}, 100, 1, 1, Handle::None);
        row("on the lower edge", {1, 49}, 100, 1, 1, Handle::None);
    }

    void findsHandles()
    {
        QFETCH(QPointF, point);
        QFETCH(double, width);
        QFETCH(double, scale);
        QFETCH(float, dpi);
        QTEST(Geometry::handleAt(point, QRectF(0, 0, width, 49), scale, dpi), "handle");
    }

    void timesHaveNoNegativeZero()
    {
        QCOMPARE(Geometry::timeText(-0.001, 24), QString("0.00 - 24.00 (24.00)"));
        QCOMPARE(Geometry::timeText(-24.006, 24), QString("-24.01 - -0.01 (24.00)"));
    }

    void ticksStandBetweenCycles_data()
    {
        kxColumns<double, double, double, double, double, QList<double>>("step", "width", "from", "to", "scale",
                                                                         "ticks");
        const QList<double> none;
        kxRow("none at the end", 50.0, 150.0, 0.0, 150.0, 1.0, QList<double>{50, 100});
        kxRow("one cycle has no border", 50.0, 50.0, 0.0, 50.0, 1.0, none);
        kxRow("a third rounds to no tick at the end", 100.0 / 3, 100.0, 0.0, 100.0, 1.0,
              QList<double>{100.0 / 3, 200.0 / 3});
        kxRow("what is seen alone", 10.0, 1.0e6, 503.0, 525.0, 1.0, QList<double>{500, 510, 520});
        kxRow("one for a pixel", 0.25, 100.0, 10.0, 12.0, 1.0, QList<double>{10, 11, 12});
        kxRow("no length", 0.0, 0.0, 0.0, 10.0, 1.0, none);
        kxRow("without end", 10.0, Infinity, 0.0, 10.0, 1.0, none);
    }

    void ticksStandBetweenCycles()
    {
        QFETCH(double, step);
        QFETCH(double, width);
        QFETCH(double, from);
        QFETCH(double, to);
        QFETCH(double, scale);
        QList<double> drawn;
        const Geometry::Ticks ticks = Geometry::cycleTicks(step, width, from, to, scale);
        for (qint64 tick = ticks.first; tick <= ticks.last; tick += ticks.stride)
            drawn.append(double(tick) * step);
        QTEST(drawn, "ticks");
    }

    void labelsKeepOffTheEnds()
    {
        QVERIFY(Geometry::labelFits(150, 2, 12, 99.1));
        QVERIFY(!Geometry::labelFits(150, 2, 12, 99));
    }

    void textsReadWell()
    {
        const QColor dark[] = {{0, 0, 0}, {9, 9, 9}, {0, 0, 255}, {255, 255, 255, 60}}; // the last shows the ground
        for (const QColor& fill : dark)
            QCOMPARE(kxClipColor::textOn(fill), kxClipColor::LightText);
        for (const QColor& fill : {QColor(255, 255, 0), kxClipColor::Bar})
            QCOMPARE(kxClipColor::textOn(fill), kxClipColor::DarkText);
    }

    void numbersTheRuler()
    {
        const std::pair<double, int> steps[] = {{0, 1},     {10.9, 1},   {11, 1},     {25, 2},
                                                {100, 5},   {101, 10},   {250, 20},   {450, 50},
                                                {1000, 50}, {3999, 200}, {1e5, 5000}, {1e300, 5000000}};
        for (const auto& step : steps)
            QCOMPARE(kxClipLayout::tickStep(step.first), step.second);
        QCOMPARE(kxClipLayout::ticks(-10, 15, 5), (std::vector<double>{-5, 0, 5, 10}));
        QVERIFY(kxClipLayout::ticks(0, NAN, 5).empty() && kxClipLayout::ticks(0, 10, 0).empty());
        QVERIFY(kxClipLayout::ticks(1e20, 1e20 + 32768, 1).size() <= 100001); // its steps don't lead on there
        QCOMPARE(kxClipLayout::readableStep(5, 10, 40), 5);
        QCOMPARE(kxClipLayout::readableStep(5, 2, 40), 25);
        QCOMPARE(kxClipLayout::frameText(-0.0), QString("0"));
        QCOMPARE(kxClipLayout::frameText(24.00009), QString("24"));
        QCOMPARE(kxClipLayout::frameText(-24.5), QString("-24.50"));
    }

    void makesRoundingGood()
    {
        // A node that lost a little under its bar catches up; one that is elsewhere keeps its distance.
        QCOMPARE(Geometry::movedFrames(10, 12, 10.0001), 1.9999);
        QCOMPARE(Geometry::movedFrames(10, 12, 500), 2.0);
        QCOMPARE(Geometry::stretchFactor(100, 50, 100.01), float(50 / 100.01));
        QCOMPARE(Geometry::stretchFactor(100, 50, 300), 0.5f);
    }

    void rowsTellWhatOverlaps_data()
    {
        kxColumns<QRectF, bool>("area", "hit");
        kxRow("overlaps", QRectF(90, 50, 50, 49), true);
        kxRow("touches", QRectF(100, 50, 50, 49), false);
        kxRow("overlaps by rounding", QRectF(99.9996, 50, 50, 49), false);
        kxRow("one track below", QRectF(0, 100, 50, 49), false);
        kxRow("between two tracks", QRectF(0, 20, 50, 49), true);
        kxRow("inside", QRectF(40, 50, 5, 49), true);
        kxRow("on its lower edge", QRectF(40, 99, 5, 49), false);
    }

    void rowsTellWhatOverlaps()
    {
        QFETCH(QRectF, area);
        QGraphicsRectItem other, self;
        kxClipTracks tracks(1);
        tracks.add(&other, QRectF(0, 50, 100, 49));
        tracks.add(&self, area);
        const QList<QGraphicsItem*> hits = tracks.hits(area, &self);
        QTEST(hits == QList<QGraphicsItem*>{&other}, "hit");
        QVERIFY(hits.size() < 2);
    }
};

QTEST_GUILESS_MAIN(tst_kxClipGeometry)
#include "tst_kxClipGeometry.moc"
