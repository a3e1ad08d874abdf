#include <curveeditor/edits/kxKeyArithmetic.h>

#include <kxTable.h>

#include <set>

typedef std::vector<double> Values;
Q_DECLARE_METATYPE(Values)

class tst_kxKeyArithmetic : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void appliedToAll_data()
    {
        // expected: of 3, -4, 0; empty where it is refused as a whole
        kxColumns<int, double, Values>("op", "operand", "expected");
        kxRow("set", int(RelativeSet), 7.0, Values{7, 7, 7});
        kxRow("assign", int(RelativeAssign), -1.0, Values{-1, -1, -1});
        kxRow("add", int(RelativeAdd), 2.5, Values{5.5, -1.5, 2.5});
        kxRow("subtract", int(RelativeSubtract), 2.5, Values{0.5, -6.5, -2.5});
        kxRow("multiply", int(RelativeMultiply), 2.0, Values{6, -8, 0});
        kxRow("divide", int(RelativeDivide), 4.0, Values{0.75, -1, 0});
        kxRow("a divide by 0 changes nothing", int(RelativeDivide), 0.0, Values{});
        kxRow("what no float holds is refused", int(RelativeMultiply), 1e39, Values{});
    }

    void appliedToAll()
    {
        QFETCH(int, op);
        QFETCH(double, operand);
        QFETCH(Values, expected);
        const auto results = kxAppliedToAll({3, -4, 0}, RelativeOperator(op), operand);
        QCOMPARE(results.has_value(), !expected.empty());
        QCOMPARE(results.value_or(Values{}), expected);
    }
};

QTEST_MAIN(tst_kxKeyArithmetic)
#include "tst_kxKeyArithmetic.moc"
