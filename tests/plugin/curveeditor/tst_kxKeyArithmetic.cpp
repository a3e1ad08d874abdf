#include <curveeditor/kxKeyArithmetic.h>

#include <QtTest>

#include <set>

typedef std::vector<double> Values;
Q_DECLARE_METATYPE(Values)

class tst_kxKeyArithmetic : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void appliedToAll_data();
    void appliedToAll();
    void orderAvoidsCollisions_data();
    void orderAvoidsCollisions();
};

void tst_kxKeyArithmetic::appliedToAll_data()
{
    QTest::addColumn<int>("op");
    QTest::addColumn<double>("operand");
    QTest::addColumn<Values>("expected"); // of 3, -4, 0; empty where it is refused as a whole
    QTest::newRow("set") << int(RelativeSet) << 7.0 << Values{7, 7, 7};
    QTest::newRow("assign") << int(RelativeAssign) << -1.0 << Values{-1, -1, -1};
    QTest::newRow("add") << int(RelativeAdd) << 2.5 << Values{5.5, -1.5, 2.5};
    QTest::newRow("subtract") << int(RelativeSubtract) << 2.5 << Values{0.5, -6.5, -2.5};
    QTest::newRow("multiply") << int(RelativeMultiply) << 2.0 << Values{6, -8, 0};
    QTest::newRow("divide") << int(RelativeDivide) << 4.0 << Values{0.75, -1, 0};
    QTest::newRow("a divide by 0 changes nothing") << int(RelativeDivide) << 0.0 << Values{};
    QTest::newRow("what no float holds is refused") << int(RelativeMultiply) << 1e39 << Values{};
}

void tst_kxKeyArithmetic::appliedToAll()
{
    QFETCH(int, op);
    QFETCH(double, operand);
    QFETCH(Values, expected);
    const auto results = kxAppliedToAll({3, -4, 0}, RelativeOperator(op), operand);
    QCOMPARE(results.has_value(), !expected.empty());
    QCOMPARE(results.value_or(Values{}), expected);
}

void tst_kxKeyArithmetic::orderAvoidsCollisions_data()
{
    QTest::addColumn<Values>("from");
    QTest::addColumn<Values>("to");
    QTest::newRow("one to the right") << Values{2, 0, 1, 3} << Values{3, 1, 2, 4};
    QTest::newRow("one to the left") << Values{2, 0, 1, 3} << Values{1, -1, 0, 2};
    QTest::newRow("away from 0") << Values{-4, -2, 1, 2, 4} << Values{-8, -4, 2, 4, 8};
    QTest::newRow("towards 0") << Values{-4, -2, 4, 2, 8} << Values{-2, -1, 2, 1, 4};
}

void tst_kxKeyArithmetic::orderAvoidsCollisions()
{
    QFETCH(Values, from);
    QFETCH(Values, to);
    Values present = from;
    for (const std::size_t i : kxCollisionFreeOrder(from, to))
    {
        QVERIFY2(std::count(present.begin(), present.end(), to[i]) == 0, "a key lands on one that waits");
        present[i] = to[i];
    }
    QCOMPARE(present, to);
}

QTEST_MAIN(tst_kxKeyArithmetic)
#include "tst_kxKeyArithmetic.moc"
