#include <curveeditor/kxAnimGraphCurve.h>
#include <curveeditor/kxAnimGraphPoint.h>
#include <curveeditor/kxAnimGraphScene.h>
#include <kxBenchMain.h>

#include <animation/kxAnimScene.h>
#include <kxAnimManager.h>
#include <kxUndo.h>
#include <scene/kxScene.h>

#include <QGraphicsView>
#include <QUndoStack>

#include <cmath>
#include <malloc.h>
#include <memory>

namespace
{
/// Keys 2 frames apart on a wave with noise, all tangent types in turn.
osg::AnimCurvePtr makeCurve(int keys, int phase)
{
    const osg::AnimCurvePtr curve = osg::AnimCurvePtr::dcast(osg::AnimCurveBase::create());
    curve->addRef();
    curve->setColor(osg::Color3<float>(0.9f, 0.4f, 0.3f));
    for (int i = 0; i < keys; ++i)
    {
        const float seconds = float(i) / 12;
        const float value = 100 * std::sin(0.3f * float(i + 7 * phase)) + float((i * 7919 + phase * 104729) % 40);
        const auto type = osg::UInt32(1 + i % 4);
        curve->addPoint(osg::Pnt2f(seconds, value), osg::Vec2f(), osg::Vec2f(), type, type, true, i + 1 == keys);
    }
    for (int i = 0; i < keys; ++i)
    {
        curve->computeIntangent(osg::UInt32(i), -1);
        curve->computeOuttangent(osg::UInt32(i), -1);
    }
    return curve;
}

/// A graph of some curves in a view of 1000 by 600 pixels, as the curve editor has it.
struct Graph
{
    Graph(int curves, int keys)
    {
        scene.setItemIndexMethod(QGraphicsScene::NoIndex);
        view.setScene(&scene);
        view.setViewportUpdateMode(QGraphicsView::FullViewportUpdate);
        view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        view.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        view.setOptimizationFlag(QGraphicsView::DontSavePainterState);
        view.setSceneRect(-1e5, -1e6, 1e6, 2e6);
        view.resize(1000, 600);
        view.show();
        QApplication::processEvents();
        for (int i = 0; i < curves; ++i)
            kernel.push_back(makeCurve(keys, i));
        for (const osg::AnimCurvePtr& curve : kernel)
            items.push_back(new kxAnimGraphCurve(curve, &scene));
        QApplication::processEvents();
    }
    ~Graph()
    {
        kxUndoStack::get(0).stack()->clear();
        scene.clear();
        for (const osg::AnimCurvePtr& curve : kernel)
            curve->subRef();
    }

    void show(double firstFrame, double frames)
    {
        view.setTransform(QTransform::fromScale(1000 / frames, -2));
        kxAnimGraphPoint::setScale(frames / 1000, -0.5);
        view.centerOn(firstFrame + frames / 2, 0);
        QApplication::processEvents();
    }
    void repaint() { view.viewport()->repaint(); }

    QGraphicsView view;
    kxAnimGraphScene scene;
    std::vector<osg::AnimCurvePtr> kernel;
    std::vector<kxAnimGraphCurve*> items;
};

std::size_t heap()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void buildCurve(benchmark::State& state)
{
    const int keys = int(state.range(0));
    Graph graph(0, 0);
    const osg::AnimCurvePtr curve = makeCurve(keys, 0);
    double bytes = 0;
    for (auto _ : state)
    {
        const std::size_t before = heap();
        auto* item = new kxAnimGraphCurve(curve, &graph.scene);
        graph.repaint();
        state.PauseTiming();
        QApplication::processEvents();
        bytes = double(heap() - before) / keys;
        delete item;
        state.ResumeTiming();
    }
    curve->subRef();
    state.counters["bytes_a_key"] = bytes;
}

void rebuildCurve(benchmark::State& state)
{
    Graph graph(1, int(state.range(0)));
    for (auto _ : state)
        graph.items.front()->rebuildFromCurve();
}

void updateCurve(benchmark::State& state)
{
    Graph graph(1, int(state.range(0)));
    for (auto _ : state)
        graph.items.front()->updateFromCurve();
}

/// One key of many, with all that the step takes but the repaint.
void dragOneKey(benchmark::State& state)
{
    Graph graph(1, int(state.range(0)));
    kxAnimGraphPoint* key = graph.items.front()->point(unsigned(state.range(0) / 2));
    key->setSelected(true);
    const QPointF start = key->pos();
    int step = 0;
    for (auto _ : state)
    {
        ++step;
        key->setPos(start + QPointF(0.01 * (step % 50), step % 70));
        graph.scene.moveSelectedPoints();
    }
}

/// As above without the command: the items' own part.
void collectAfterOneKey(benchmark::State& state)
{
    Graph graph(1, int(state.range(0)));
    kxAnimGraphPoint* key = graph.items.front()->point(unsigned(state.range(0) / 2));
    const QPointF start = key->pos();
    int step = 0;
    for (auto _ : state)
    {
        ++step;
        key->setPos(start + QPointF(0.01 * (step % 50), step % 70));
        std::vector<osg::CCPnt> keys;
        graph.items.front()->collectControlPoints(keys);
        benchmark::DoNotOptimize(keys.data());
    }
}

/// `range(0)` selected keys of 10,000 in 200 curves, with the repaint.
void dragKeys(benchmark::State& state)
{
    Graph graph(200, 50);
    graph.show(0, 100);
    std::vector<kxAnimGraphPoint*> keys;
    for (kxAnimGraphCurve* curve : graph.items)
        for (int i = 0; i < state.range(0) / 200 || (i < 1 && int(keys.size()) < state.range(0)); ++i)
            keys.push_back(curve->point(unsigned(2 * i)));
    for (kxAnimGraphPoint* key : keys)
        key->setSelected(true);
    QApplication::processEvents();
    int step = 0;
    for (auto _ : state)
    {
        ++step;
        for (kxAnimGraphPoint* key : keys)
            key->setPos(key->pos() + QPointF(step % 2 ? 0.25 : -0.25, 0));
        graph.scene.moveSelectedPoints();
        graph.repaint();
    }
}

void selectAll(benchmark::State& state)
{
    Graph graph(200, 50);
    graph.show(0, 100);
    for (auto _ : state)
    {
        graph.scene.selectAllPoints();
        if (state.range(0) != 0)
            graph.repaint();
        state.PauseTiming();
        graph.scene.clearSelection();
        for (kxAnimGraphCurve* curve : graph.items)
            curve->rebuildFromCurve();
        state.ResumeTiming();
    }
}

/// Curves, keys a curve, frames in the view: a wheel step with its repaint.
void wheelStep(benchmark::State& state)
{
    Graph graph(int(state.range(0)), int(state.range(1)));
    graph.show(0, double(state.range(2)));
    int step = 0;
    for (auto _ : state)
    {
        const double factor = ++step % 2 ? 1.15 : 1 / 1.15;
        graph.view.scale(factor, factor);
        const QTransform& transform = graph.view.transform();
        kxAnimGraphPoint::setScale(1 / transform.m11(), 1 / transform.m22());
        graph.repaint();
    }
}

/// Nothing changed but the time cursor.
void repaint(benchmark::State& state)
{
    Graph graph(int(state.range(0)), int(state.range(1)));
    graph.show(0, double(state.range(2)));
    for (auto _ : state)
        graph.repaint();
}

/// What the mouse is over.
void hover(benchmark::State& state)
{
    Graph graph(1, int(state.range(0)));
    graph.show(0, 200);
    for (auto _ : state)
        benchmark::DoNotOptimize(graph.view.itemAt(500, 300));
}
} // namespace

BENCHMARK(buildCurve)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(rebuildCurve)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(updateCurve)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(collectAfterOneKey)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(dragOneKey)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(dragKeys)->Arg(100)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(selectAll)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(wheelStep)
    ->Args({200, 50, 100})
    ->Args({1, 100000, 200000})
    ->Args({1, 100000, 200})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(repaint)
    ->Args({200, 50, 100})
    ->Args({1, 100000, 200000})
    ->Args({1, 100000, 200})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(hover)->Arg(100000)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    return kxBenchMain(argc, argv);
}
