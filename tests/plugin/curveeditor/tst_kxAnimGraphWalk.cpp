#include "kxGraphFixture.h"

#include <kxTable.h>

#include <cmath>
#include <random>

namespace
{
typedef std::vector<osg::CCPnt> Keys;

void compare(const Keys& actual, const Keys& expected)
{
    QCOMPARE(actual.size(), expected.size());
    const auto compareNumbers = [](float a, float e)
    {
        QVERIFY2(std::abs(a - e) <= 1e-5f * std::max(10.0f, std::abs(e)),
                 qPrintable(QString("%1 is not %2").arg(a).arg(e)));
    };
    for (std::size_t i = 0; i < actual.size(); ++i)
    {
        const osg::CCPnt &a = actual[i], &e = expected[i];
        QCOMPARE(a.inType, e.inType);
        QCOMPARE(a.outType, e.outType);
        compareNumbers(a.x(), e.x());
        compareNumbers(a.y(), e.y());
        compareNumbers(a.inX(), e.inX());
        compareNumbers(a.inY(), e.inY());
        compareNumbers(a.outX(), e.outX());
        compareNumbers(a.outY(), e.outY());
    }
}
} // namespace

/// Random edits through the graph, then everything undone and redone.
class tst_kxAnimGraphWalk : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void thereAndBack_data();
    void thereAndBack();

private:
    int random(int below) { return int(_random() % unsigned(below)); }
    void selectSome(kxGraphFixture& graph);
    void moveKeys(kxGraphFixture& graph);
    void dragHandle(kxGraphFixture& graph);
    void edit(kxGraphFixture& graph);
    void showOthers(kxGraphFixture& graph);
    std::vector<Keys> keysOf(const kxGraphFixture& graph) const;

    std::mt19937 _random;
};

std::vector<Keys> tst_kxAnimGraphWalk::keysOf(const kxGraphFixture& graph) const
{
    std::vector<Keys> keys;
    for (const osg::AnimNodePtr& node : graph.nodes)
    {
        const auto& points = kxAnimFixture::curveOf(node)->getControlPoints();
        keys.emplace_back(points.begin(), points.end());
    }
    return keys;
}

void tst_kxAnimGraphWalk::selectSome(kxGraphFixture& graph)
{
    graph.scene()->clearSelection();
    const int one = 2 + random(6);
    for (kxAnimGraphCurve* const curve : graph.scene()->curves())
        for (kxAnimGraphPoint* const point : curve->points())
            if (random(one) == 0)
                point->setSelected(true);
}

void tst_kxAnimGraphWalk::moveKeys(kxGraphFixture& graph)
{
    QList<kxAnimGraphPoint*> points;
    graph.scene()->selectedPoints(points);
    if (points.isEmpty())
        return;
    kxAnimGraphPoint* const key = points[random(points.size())];
    graph.view.centerOn(key->pos());
    const QPoint from = graph.at(key);
    graph.drag(from, from + QPoint(random(160) - 80, random(160) - 80), 1 + random(6));
}

void tst_kxAnimGraphWalk::dragHandle(kxGraphFixture& graph)
{
    QList<kxAnimGraphPoint*> points;
    graph.scene()->selectedPoints(points);
    if (points.isEmpty())
        return;
    graph.scene()->setBreakTangents(random(2) == 0);
    const kxAnimGraphPoint* const key = points[random(points.size())];
    graph.view.centerOn(key->pos());
    const QPoint from = graph.at(random(2) == 0 ? key->inTangentItem() : key->outTangentItem());
    graph.drag(from, from + QPoint(random(120) - 60, random(120) - 60), 1 + random(6));
}

void tst_kxAnimGraphWalk::showOthers(kxGraphFixture& graph)
{
    const std::size_t first = std::size_t(random(int(graph.nodes.size())));
    graph.view.setAnimations(std::vector<osg::AnimNodePtr>(graph.nodes.begin() + int(first), graph.nodes.end()));
}

void tst_kxAnimGraphWalk::edit(kxGraphFixture& graph)
{
    graph.scene()->setSnapToGridX(random(2) == 0);
    graph.scene()->setSnapToGridY(random(4) == 0);
    switch (random(12))
    {
    case 0:
        graph.scene()->copySelectedPoints();
        kxAnimManager::the()->setCurrentFrame(random(400), true, false);
        graph.press(Qt::Key_V, Qt::ControlModifier);
        break;
    case 1:
        if (graph.scene()->selectedItems().size() < 4)
            graph.press(Qt::Key_Delete);
        break;
    case 2:
    case 3:
        graph.view.setTangentType(unsigned(random(5)));
        break;
    case 4:
        showOthers(graph);
        break;
    case 5:
    case 6:
        selectSome(graph);
        break;
    case 7:
    case 8:
        dragHandle(graph);
        break;
    default:
        moveKeys(graph);
        break;
    }
}

void tst_kxAnimGraphWalk::thereAndBack_data()
{
    QTest::addColumn<bool>("dies"); // the last object goes in the middle
    kxRow("all live", false);
    kxRow("one dies", true);
}

void tst_kxAnimGraphWalk::thereAndBack()
{
    QFETCH(bool, dies);
    _random.seed(7);
    kxGraphFixture graph;
    graph.show(
        {{{0, 0}, {10, 2}, {24, -4}, {40, 3}}, {{5, 1}, {25, 8}, {30, 8}}, {{0, -5}, {12, -3}, {50, -9}, {51, 2}}});
    std::vector<Keys> start = keysOf(graph);
    for (int i = 0; i < 500; ++i)
    {
        edit(graph);
        if (dies && i == 250)
        {
            graph.nodes.back()->subRef();
            graph.nodes.pop_back();
            start.pop_back();
        }
        for (const Keys& keys : keysOf(graph))
        {
            QVERIFY(std::is_sorted(keys.begin(), keys.end(),
                                   [](const osg::CCPnt& a, const osg::CCPnt& b) { return a.x() < b.x(); }));
            for (const osg::CCPnt& key : keys)
                QVERIFY(std::isfinite(key.x() + key.y() + key.inX() + key.inY() + key.outX() + key.outY()));
        }
    }
    const std::vector<Keys> end = keysOf(graph);
    QVERIFY(graph.stack()->count() > 100);
    const auto verify = [&](const std::vector<Keys>& expected)
    {
        const std::vector<Keys> keys = keysOf(graph);
        for (std::size_t i = 0; i < keys.size() && !QTest::currentTestFailed(); ++i)
            compare(keys[i], expected[i]);
    };
    for (int round = 0; round < 2; ++round)
    {
        while (graph.stack()->canUndo())
        {
            graph.stack()->undo();
            if (random(8) == 0)
                graph.view.refresh();
        }
        verify(start);
        graph.stack()->setIndex(graph.stack()->count());
        graph.view.refresh();
        verify(end);
    }
}

QTEST_MAIN(tst_kxAnimGraphWalk)
#include "tst_kxAnimGraphWalk.moc"
