#include <curveeditor/kxAnimGraphGeometry.h>

#include <kxTable.h>

using kxAnimGraphGeometry::HandleLimits;
using kxCurveMath::Side;

class tst_kxAnimGraphGeometry : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void snapping_data()
    {
        kxColumns<double, double, double>("from", "to", "expected");
        kxRow("right, inside its cell", 2.0, 2.9, 2.0);
        kxRow("right, past a whole number", 2.0, 3.1, 3.0);
        kxRow("left, into the cell before", 2.0, 1.9, 2.0);
        kxRow("left, past a whole number", 2.0, 0.9, 1.0);
        kxRow("exactly a whole number", 2.0, 5.0, 5.0);
        kxRow("a start between stays there", 2.3, 2.8, 2.3);
        kxRow("zero is one cell from -1 to 1", 0.0, -0.9, 0.0);
        kxRow("below zero, left", -2.0, -4.5, -3.0);
        kxRow("below zero, right", -2.0, -0.5, 0.0);
    }

    void snapping()
    {
        QFETCH(double, from);
        QFETCH(double, to);
        QTEST(kxAnimGraphGeometry::snapped(from, to), "expected");
    }

    void handles_data()
    {
        // neighbours: 1 previous, 2 next
        // expected: relative to the key at (20, 5); neighbours at 12 and 26
        kxColumns<bool, bool, int, QPointF, QPointF>("isIn", "isMirrored", "neighbours", "mouse", "expected");
        kxRow("in, free", true, true, 3, QPointF(16, 9), QPointF(-4, 4));
        kxRow("in, close to its key", true, true, 3, QPointF(19.5, 9), QPointF(-0.5, 4));
        kxRow("in, past its key", true, true, 3, QPointF(23, 1), QPointF(0, -4));
        kxRow("in, past its neighbour", true, false, 3, QPointF(2, 9), QPointF(-8, 4));
        kxRow("in, at the mirror limit", true, true, 3, QPointF(13, 9), QPointF(-6, 4));
        kxRow("in, past both limits", true, true, 3, QPointF(-50, 9), QPointF(-6, 4));
        kxRow("in, mirrored without a next", true, true, 1, QPointF(2, 9), QPointF(-8, 4));
        kxRow("in, the first key, mirrored", true, true, 2, QPointF(-80, 9), QPointF(-6, 4));
        kxRow("out, free", false, true, 3, QPointF(24, 2), QPointF(4, -3));
        kxRow("out, past its key", false, true, 3, QPointF(20, 2), QPointF(0, -3));
        kxRow("out, past its neighbour", false, true, 3, QPointF(90, 2), QPointF(6, -3));
        kxRow("out, at the mirror limit", false, true, 1, QPointF(29, 2), QPointF(8, -3));
        kxRow("out, broken", false, false, 1, QPointF(29, 2), QPointF(9, -3));
        kxRow("out, no limits at all", false, true, 0, QPointF(1020, 2), QPointF(1000, -3));
    }

    void handles()
    {
        QFETCH(bool, isIn);
        QFETCH(bool, isMirrored);
        QFETCH(int, neighbours);
        QFETCH(QPointF, mouse);
        HandleLimits limits;
        limits.key = QPointF(20, 5);
        if (neighbours & 1)
            limits.previousX = 12;
        if (neighbours & 2)
            limits.nextX = 26;
        limits.isMirrored = isMirrored;
        QTEST(kxAnimGraphGeometry::handlePos(isIn ? Side::In : Side::Out, mouse, limits), "expected");
    }
};

QTEST_MAIN(tst_kxAnimGraphGeometry)
#include "tst_kxAnimGraphGeometry.moc"
