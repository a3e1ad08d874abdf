#include <kxAwkwardCurves.h>
#include <kxTable.h>
#include <osg/AnimCurve.h>
#include <osg/Share.h>

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstring>
#include <random>

using namespace osg;

namespace
{
struct Curve : osg::Share<AnimCurve>
{
    Curve() : Share(AnimCurveBase::create()) {}
    UInt32 add(float x, float y, UInt32 type = 1, bool replace = true)
    {
        return get()->addPoint(Pnt2f(x, y), Vec2f(), Vec2f(), type, type, replace, true);
    }
};
} // namespace

class tst_AnimCurve : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void textIsReadAsAScannerDoes()
    {
        const auto read = [](const char* text)
        {
            MField<CCPnt, 0> field;
            field.pushValueByStr(text);
            return field.size() == 1 ? field[0] : CCPnt(Pnt2f(99, 99), Vec2f(), Vec2f(), 9, 9);
        };
        const CCPnt expected(Pnt2f(1.5f, -2), Vec2f(-0.25f, 0), Vec2f(0.5f, 8), 2, 5);
        // Spaces before numbers, exponents, no closing quote.
        for (const char* const text : {"\" 1.5,\t-2, -0.25, 0,+0.5, 8, 2, 5\"", "\"15e-1,-.2E1,-0.25,0,5e-1,8,2,5\"",
                                       "\"1.5,-2,-0.25,0,0.5,8,2,5"})
            QVERIFY2(read(text) == expected, text);
        for (const char* const text : {
                 "\"1.5,-2,-0.25,0,0.5,8,2\"",     // seven values
                 "\"1.5 ,-2,-0.25,0,0.5,8,2,5\"",  // space before a comma
                 "\"1.5,,-0.25,0,0.5,8,2,5\"",     // a number is missing
                 "1.5,-2,-0.25,0,0.5,8,2,5",       // no opening quote
                 "\"1.5,-2,-0.25,0,0.5,8,2.5,5\"", // type with a fraction
                 "\"1.5,inf,-0.25,0,0.5,8,2,5\"",  // infinite
                 "\"1.5,1e39,-0.25,0,0.5,8,2,5\"", // beyond a float
             })
            QVERIFY2(read(text) == CCPnt(), text);
    }

    void textRoundTrips()
    {
        std::setlocale(LC_ALL, "de_DE.UTF-8");
        MField<CCPnt, 0> field;
        for (const kxAwkwardCurve& awkward : kxAwkwardCurves())
            field.insert(field.end(), awkward.keys.begin(), awkward.keys.end());
        std::mt19937 random(3);
        for (int i = 0; i < 3000; ++i)
        {
            float v[6];
            for (float& value : v)
            {
                UInt32 bits = random();
                std::memcpy(&value, &bits, sizeof(value));
                if (!std::isfinite(value))
                    value = 0.1f;
            }
            field.push_back(CCPnt(Pnt2f(v[0], v[1]), Vec2f(v[2], v[3]), Vec2f(v[4], v[5]), random(), random() % 6));
        }
        field.push_back(CCPnt(Pnt2f(), Vec2f(), Vec2f(), UINT32_MAX, 0));
        MField<CCPnt, 0> read;
        std::string text;
        for (UInt32 i = 0; i < field.getSize(); ++i)
        {
            field.getValueByStr(text, i);
            read.pushValueByStr(text.c_str());
        }
        QVERIFY(read == field);
        const std::string last = text;
        field.getValueByStr(text, field.getSize());
        QCOMPARE(text, last); // beyond the end nothing happens
        MField<CCPnt, 0> two(2);
        two[1] = CCPnt(Pnt2f(0.1f, -1.0e20f), Vec2f(), Vec2f(), 0, 5);
        two.getValuesByStr(text);
        QCOMPARE(text, std::string("\"0,0,0,0,0,0,1,1\", \"0.1,-1e+20,0,0,0,0,0,5\""));
        std::setlocale(LC_ALL, "C");
    }

    void addPointPlacesAndComputes()
    {
        Curve curve;
        QCOMPARE(curve.add(0, 0, 3), 0u);
        QCOMPARE(curve.add(4, 8, 3), 1u);
        QCOMPARE(curve.add(1, 0, 3), 1u);
        // Neighbours have turned to the new key: hermite from (0, 0) over (1, 0) to (4, 8).
        QCOMPARE(curve->getControlPoints(0).outtangent(), Vec2f(0.5f, 0));
        QCOMPARE(curve->getControlPoints(1).outtangent(), Vec2f(4 / 3.0f, 8 / 3.0f));
        QCOMPARE(curve->getControlPoints(2).intangent(), Vec2f(-1.5f, -4));
        // The same time: replaced, or after the one that is there.
        QCOMPARE(curve.add(1, 5, 0, true), 1u);
        QCOMPARE(curve->getControlPoints().size(), std::size_t(3));
        QCOMPARE(curve.add(1, 6, 0, false), 2u);
        QCOMPARE(curve->getControlPoints(1).y(), 5.0f);
        // A vector that is given stays, a free side too.
        const UInt32 index = curve->addPoint(Pnt2f(9, 1), Vec2f(-1, 3), Vec2f(), 2, 5, true, true);
        QCOMPARE(curve->getControlPoints(index).intangent(), Vec2f(-1, 3));
        QCOMPARE(curve->getControlPoints(index).outtangent(), Vec2f());
        QCOMPARE(curve->addPoint(Pnt2f(2, NAN), Vec2f(), Vec2f(), 1, 1, true, true), AnimCurve::NoKey);
        QCOMPARE(curve->addPoint(Pnt2f(2, 0), Vec2f(INFINITY, -INFINITY), Vec2f(), 1, 1, true, true), AnimCurve::NoKey);
    }

    void randomEditsKeepKeysSortedAndFinite()
    {
        std::mt19937 random(11);
        const float extremes[] = {0, 1.0e-40f, -3.0e38f, 3.0e38f, NAN, INFINITY, 1};
        const auto number = [&]
        { return random() % 12 == 0 ? extremes[random() % 7] : float(int(random() % 4000)) / 24.0f - 20.0f; };
        for (int round = 0; round < 30; ++round)
        {
            Curve curve;
            for (int i = 0; i < 300; ++i)
            {
                const UInt32 index = random() % 60, edit = random() % 5;
                if (edit == 0)
                    curve->subPoint(index);
                else if (edit == 1)
                    curve->computeIntangent(index, Int32(random() % 9) - 2);
                else if (edit == 2)
                    curve->computeOuttangent(index, Int32(random() % 9) - 2);
                else
                    curve->addPoint(Pnt2f(number(), number()), Vec2f(),
                                    random() % 2 ? Vec2f() : Vec2f(number(), number()), random() % 7, random() % 7,
                                    random() % 2, random() % 2);
                const MField<CCPnt, 0>& keys = curve->getControlPoints();
                QVERIFY(std::is_sorted(keys.begin(), keys.end(),
                                       [](const CCPnt& a, const CCPnt& b) { return a.x() < b.x(); }));
                for (const CCPnt& k : keys)
                    for (const float v : {k.x(), k.y(), k.inX(), k.inY(), k.outX(), k.outY()})
                        QVERIFY(std::isfinite(v));
            }
        }
    }

    /// What the undo of a delete leans on: keys come back with their vectors, and neighbours get theirs again.
    void deletingAndAddingBackRestores()
    {
        Curve curve;
        for (int i = 0; i < 12; ++i)
            curve.add(float(i), float(i * i % 7), UInt32(i % 5));
        const MField<CCPnt, 0> before = curve->getControlPoints();
        for (const UInt32 index : {5u, 0u, 11u})
        {
            const CCPnt key = curve->getControlPoints(index);
            curve->subPoint(index);
            if (index > 0)
                curve->computeOuttangent(index - 1, -1);
            curve->computeIntangent(index, -1);
            QCOMPARE(curve->addControlPoint(key, true, true), index);
            QVERIFY(curve->getControlPoints() == before);
        }
    }

    void constantKeysGo_data()
    {
        kxColumns<QVector<QPointF>, int, QVector<int>>("keys", "type", "left");
        typedef QVector<QPointF> Keys;
        typedef QVector<int> Left;
        QTest::newRow("all one value") << Keys{{0, 5}, {1, 5}, {2, 5}} << 2 << Left{};
        QTest::newRow("all nothing") << Keys{{0, 0}, {1, 0}} << 2 << Left{};
        QTest::newRow("stretches inside")
            << Keys{{0, 5}, {1, 5}, {2, 5}, {3, 9}, {4, 9}, {6, 9}} << 2 << Left{0, 2, 3, 6};
        QTest::newRow("linear: a slope keeps its key") << Keys{{0, 5}, {1, 5}, {2, 7}} << 1 << Left{0, 1, 2};
        QTest::newRow("hermite: a slope keeps keys") << Keys{{0, 5}, {1, 5}, {2, 5}, {3, 7}} << 3 << Left{0, 1, 2, 3};
    }

    void constantKeysGo()
    {
        QFETCH(QVector<QPointF>, keys);
        QFETCH(int, type);
        Curve curve;
        for (const QPointF& key : keys)
            curve.add(float(key.x()), float(key.y()), UInt32(type));
        curve->clearConstantControlPoints();
        QVector<int> found;
        for (const CCPnt& key : curve->getControlPoints())
            found.push_back(int(key.x()));
        QTEST(found, "left");
    }
};

QTEST_GUILESS_MAIN(tst_AnimCurve)
#include "tst_AnimCurve.moc"
