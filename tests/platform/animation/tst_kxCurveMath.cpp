#include <animation/kxCurveEvaluation.h>
#include <kxAwkwardCurves.h>
#include <kxCurveMath.h>
#include <kxTable.h>
#include <osg/Share.h>

#include <cmath>
#include <random>

using namespace osg;
using kxCurveMath::Place;
using kxCurveMath::Side;

namespace
{
/// All values that the segment has at `seconds`, by a search of its own in long double.
std::vector<long double> referenceValues(const CCPnt& a, const CCPnt& b, double seconds)
{
    typedef long double Real;
    const Real x0 = a.x(), x1 = x0 + a.outX(), x3 = b.x(), x2 = x3 + b.inX();
    const Real y0 = a.y(), y1 = y0 + a.outY(), y3 = b.y(), y2 = y3 + b.inY();
    if (a.outtangent() == Vec2f() && b.intangent() == Vec2f())
        return {seconds < b.x() ? y0 : y3};
    const auto bezier = [](Real p0, Real p1, Real p2, Real p3, Real u)
    {
        const Real v = 1 - u;
        return v * v * v * p0 + 3 * u * v * v * p1 + 3 * u * u * v * p2 + u * u * u * p3;
    };
    std::vector<Real> values;
    const int pieces = 2000;
    for (int i = 0; i < pieces; ++i)
    {
        Real low = Real(i) / pieces, high = Real(i + 1) / pieces;
        const bool rises = bezier(x0, x1, x2, x3, low) <= seconds && bezier(x0, x1, x2, x3, high) >= seconds;
        const bool falls = bezier(x0, x1, x2, x3, low) >= seconds && bezier(x0, x1, x2, x3, high) <= seconds;
        if (!rises && !falls)
            continue;
        for (int step = 0; step < 70; ++step)
        {
            const Real middle = (low + high) / 2;
            const bool isBelow = bezier(x0, x1, x2, x3, middle) < seconds;
            (isBelow == rises ? low : high) = middle;
        }
        values.push_back(bezier(y0, y1, y2, y3, (low + high) / 2));
    }
    return values;
}

bool agrees(const CCPnt& a, const CCPnt& b, double seconds)
{
    const double greatest = std::max({1.0, std::abs(double(a.y())), std::abs(double(b.y())),
                                      std::abs(double(a.y()) + a.outY()), std::abs(double(b.y()) + b.inY())});
    const double value = kxCurveMath::segmentValue(a, b, seconds);
    for (const long double expected : referenceValues(a, b, seconds))
        if (std::abs(double(expected) - value) <= 1.0e-5 * greatest)
            return true;
    qWarning("at %.9g: got %.9g", seconds, value);
    return false;
}

struct Curve : osg::Share<AnimCurve>
{
    explicit Curve(const std::vector<CCPnt>& keys) : Share(AnimCurveBase::create())
    {
        get()->editControlPoints().assign(keys.begin(), keys.end());
    }
    void setInfinity(UInt32 mode) const
    {
        get()->setPreInfinityMode(mode);
        get()->setPostInfinityMode(mode);
    }
    double at(double seconds) const { return kxCurveEvaluation::value(*get(), seconds); }
};

/// A key at (12, 6) with gaps of 12 before and 36 after; `neighbours` is 1 for the previous, 2 for the next.
QPointF vectorOf(Side side, int type, QPointF in, QPointF out, int neighbours)
{
    const Place previous = {0, 0}, next = {48, -12};
    kxCurveMath::Neighbourhood around;
    around.key = {12, 6};
    around.in = {in.x(), in.y()};
    around.out = {out.x(), out.y()};
    around.otherLength = 10;
    around.previous = (neighbours & 1) != 0 ? &previous : nullptr;
    around.next = (neighbours & 2) != 0 ? &next : nullptr;
    const Place vector = kxCurveMath::tangentVector(side, UInt32(type), around);
    return QPointF(vector.x, vector.y);
}
} // namespace

class tst_kxCurveMath : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    /// Slopes of 0.5, -0.5 and -0.25: each wrong cell of the table gives another vector.
    void tangents_data()
    {
        kxColumns<int, int, int, QPointF>("side", "type", "neighbours", "expected");
        const auto rows = [](const char* type, int number, std::array<QPointF, 6> vectors)
        {
            const char* const places[] = {"in, first",  "in, last",  "in, inside",
                                          "out, first", "out, last", "out, inside"};
            const int neighbours[] = {2, 1, 3};
            for (std::size_t i = 0; i < 6; ++i)
                QTest::addRow("%s %s", type, places[i]) << int(i / 3) << number << neighbours[i % 3] << vectors[i];
        };
        typedef QPointF P;
        rows("constant", 0, {P(0, 0), P(0, 0), P(0, 0), P(0, 0), P(0, 0), P(0, 0)});
        rows("linear", 1, {P(-18, 0), P(-6, -3), P(-6, -3), P(18, -9), P(6, 0), P(18, -9)});
        rows("flat", 2, {P(-18, 0), P(-6, 0), P(-6, 0), P(18, 0), P(6, 0), P(16, 0)});
        rows("hermite", 3, {P(-18, 9), P(-6, -3), P(-6, 1.5), P(18, -9), P(6, 3), P(16, -4)});
        rows("following", 4, {P(-18, 9), P(-6, 0), P(-6, 3), P(18, -9), P(6, 0), P(16, -8)});
        rows("unknown", 9, {P(-10, 0), P(-10, 0), P(-10, 0), P(10, 0), P(10, 0), P(10, 0)});
    }

    void tangents()
    {
        QFETCH(int, side);
        QFETCH(int, type);
        QFETCH(int, neighbours);
        QTEST(vectorOf(Side(side), type, {1, 1}, {1, 1}, neighbours), "expected");
    }

    void freeTangents_data()
    {
        kxColumns<QPointF, QPointF, int, QPointF, QPointF>("in", "out", "neighbours", "newIn", "newOut");
        typedef QPointF P;
        QTest::newRow("clear") << P(-11, 3) << P(35, 2) << 3 << P(-11, 3) << P(35, 2);
        QTest::newRow("in side on its neighbour shortens both") << P(-12, 4) << P(24, 2) << 3 << P(-12, 4) << P(12, 1);
        QTest::newRow("out side on its neighbour") << P(-6, 3) << P(36, 18) << 3 << P(-12, 6) << P(12, 6);
        QTest::newRow("out side past its neighbour") << P(-6, 3) << P(72, 36) << 3 << P(-12, 6) << P(12, 6);
        QTest::newRow("first key") << P(-6, 3) << P(72, 36) << 2 << P(-36, 18) << P(36, 18);
        QTest::newRow("last key") << P(-24, 8) << P(3, 1) << 1 << P(-12, 4) << P(12, 4);
        QTest::newRow("a vertical side stays") << P(0, 5) << P(72, 36) << 3 << P(0, 5) << P(12, 6);
        QTest::newRow("alone") << P(-99, 5) << P(99, 5) << 0 << P(-99, 5) << P(99, 5);
    }

    void freeTangents()
    {
        QFETCH(QPointF, in);
        QFETCH(QPointF, out);
        QFETCH(int, neighbours);
        QTEST(vectorOf(Side::In, 5, in, out, neighbours), "newIn");
        QTEST(vectorOf(Side::Out, 5, in, out, neighbours), "newOut");
    }

    /// Whatever handles a user can drag: x between the key and its neighbour, any height.
    void editorSegmentsAreExact()
    {
        std::mt19937 random(7);
        std::uniform_real_distribution<float> unit(0, 1), height(-40, 40), place(-20, 500);
        for (int i = 0; i < 1500; ++i)
        {
            const float x = place(random), length = 0.01f + unit(random) * (i % 3 == 0 ? 0.1f : 8.0f);
            // Also the ends of what is allowed: no length, all the length.
            const auto share = [&] { return i % 7 == 0 ? float(int(unit(random) * 3) / 2.0) : unit(random); };
            const CCPnt a(Pnt2f(x, height(random)), Vec2f(), Vec2f(share() * length, height(random)), 5, 5);
            const CCPnt b(Pnt2f(x + length, height(random)), Vec2f(-share() * length, height(random)), Vec2f(), 5, 5);
            for (int j = 0; j < 4; ++j)
                QVERIFY(agrees(a, b, a.x() + (double(b.x()) - a.x()) * unit(random)));
        }
    }

    void awkwardCurves()
    {
        for (const auto& [name, keys, isMonotone] : kxAwkwardCurves())
        {
            const Curve curve(keys);
            const double first = keys.front().x(), last = keys.back().x();
            for (const UInt32 mode : {0u, 1u, 2u, 3u, 4u, 77u})
            {
                curve.setInfinity(mode);
                for (int i = -300; i <= 500; ++i)
                    QVERIFY2(std::isfinite(curve.at(first + (last - first) * i / 200.0)), name);
                for (const double far : {-1.0e300, -1.0e20, 1.0e20, 1.0e300, double(INFINITY), double(-INFINITY)})
                    QVERIFY2(std::isfinite(curve.at(far)), name);
            }
            for (std::size_t i = 0; i + 1 < keys.size(); ++i)
            {
                const CCPnt &a = keys[i], &b = keys[i + 1];
                const bool isSane = std::abs(a.y()) < 1.0e30f && b.x() > a.x();
                for (int j = 1; isSane && j < 200; ++j)
                    QVERIFY2(agrees(a, b, a.x() + (double(b.x()) - a.x()) * j / 200), name);
            }
        }
    }

    /// Keys (1, 2), (3, 6), out slope at the first 0.5, in slope at the last 4: a period of 2 that rises by 4. A row
    /// says where inside the keys the value is found, and what is added to it.
    void infinity_data()
    {
        kxColumns<int, double, double, double>("mode", "seconds", "inside", "added");
        const auto row = [](const char* name, InfinityMode mode, double seconds, double inside, double added)
        { QTest::addRow("%s at %g", name, seconds) << int(mode) << seconds << inside << added; };
        row("constant", InfinityMode::Constant, -5, 1, 0);
        row("constant", InfinityMode::Constant, 9, 3, 0);
        row("linear", InfinityMode::Linear, -1, 1, -1);
        row("linear", InfinityMode::Linear, 4, 3, 4);
        row("loop", InfinityMode::Loop, 4.5, 2.5, 0);
        row("loop", InfinityMode::Loop, -1, 1, 0);
        row("loop with offset", InfinityMode::LoopWithOffset, 4.5, 2.5, 4);
        row("loop with offset", InfinityMode::LoopWithOffset, -1.5, 2.5, -8);
        row("loop with offset", InfinityMode::LoopWithOffset, 5, 1, 8);
        row("oscillate", InfinityMode::Oscillate, 3.5, 2.5, 0);
        row("oscillate", InfinityMode::Oscillate, -1.5, 2.5, 0);
        row("oscillate", InfinityMode::Oscillate, 5.5, 1.5, 0);
        row("a mode that isn't one", InfinityMode(9), 9, 3, 0);
    }

    void infinity()
    {
        QFETCH(int, mode);
        QFETCH(double, seconds);
        QFETCH(double, inside);
        QFETCH(double, added);
        const Curve curve({CCPnt(Pnt2f(1, 2), Vec2f(-1, 7), Vec2f(0.5f, 0.25f), 5, 5),
                           CCPnt(Pnt2f(3, 6), Vec2f(-0.5f, -2), Vec2f(1, 7), 5, 5)});
        curve.setInfinity(UInt32(mode));
        QVERIFY(std::abs(curve.at(seconds) - curve.at(inside) - added) < 1.0e-5);
    }

    /// A step at frame 7 shows its new value at frame 7, on whichever way frame 7 became seconds.
    void jumpsMeetRoundedTimes()
    {
        for (const double fps : {23.976, 24.0, 25.0, 29.97, 59.94})
            for (int frame = 1; frame < 3000; frame += 7)
            {
                const auto key = [](double seconds, float value)
                { return CCPnt(Pnt2f(float(seconds), value), Vec2f(), Vec2f(), 0, 0); };
                const double seconds = frame / fps;
                const Curve curve({key(0, 1), key(frame / double(float(fps)), 2), key((frame + 1) / fps, 3)});
                UInt32 cursor = 0;
                const auto at = [&](double time)
                { return kxCurveEvaluation::value(*curve.get(), time, cursor, seconds * 2.4e-7); };
                QCOMPARE(at(seconds), 2.0f);
                QCOMPARE(at((frame + 1) / fps), 3.0f);
                QCOMPARE(at((frame - 0.01) / fps), 1.0f);
                // Two keys share the time, and a slope leads to the first of them.
                curve->editControlPoints()[0].setOuttangent(Vec2f(0.01f, 0));
                curve->editControlPoints()[2].setPoint(Pnt2f(curve->getControlPoints(1).x(), 3));
                QCOMPARE(at(seconds * (1 - 1.0e-8)), 3.0f);
                curve->clear();
                QCOMPARE(curve.at(seconds), 0.0);
            }
    }
};

QTEST_GUILESS_MAIN(tst_kxCurveMath)
#include "tst_kxCurveMath.moc"
