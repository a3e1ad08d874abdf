#include <animation/kxAnimScene.h>
#include <curveeditor/kxAnimGraphCurve.h>
#include <curveeditor/kxAnimGraphPoint.h>
#include <curveeditor/kxAnimGraphScene.h>
#include <curveeditor/kxAnimGraphView.h>
#include <kxAnimManager.h>
#include <kxBenchMain.h>
#include <kxUndo.h>
#include <scene/kxScene.h>

#include <QMouseEvent>
#include <QUndoStack>
#include <QWheelEvent>

#include <malloc.h>

#include <cmath>
#include <memory>
#include <random>

/// The graph at work, in a window of 1200 x 700 pixels. Times are those of an event with the repaint that follows.
namespace
{
/// Curve nodes under objects, ten to each, with keys 4 frames apart.
std::vector<osg::AnimNodePtr> makeNodes(int objects, int curvesPerObject, int keysPerCurve)
{
    kxScene::the()->clear();
    kxAnimScene::clear();
    std::vector<osg::AnimNodePtr> nodes;
    std::mt19937 random(1);
    std::uniform_real_distribution<float> value(-10, 10);
    for (int o = 0; o < objects; ++o)
    {
        const osg::NodePtr object = osg::Node::create();
        object->setCore(osg::Transform::create());
        const osg::AnimAttachmentPtr attachment = osg::AnimAttachmentBase::create();
        object->addAttachment(attachment);
        kxScene::the()->root()->addChild(object);
        for (int c = 0; c < curvesPerObject; ++c)
        {
            const osg::AnimCurvePtr curve = osg::AnimCurveBase::create();
            curve->setColor(osg::Color3f(0.3f + 0.07f * float(c), 0.9f - 0.05f * float(c), 0.5f));
            for (int k = 0; k < keysPerCurve; ++k)
                curve->addPoint(osg::Pnt2f(float(k) / 6, 5 * float(c) + value(random)), osg::Vec2f(), osg::Vec2f(),
                                1 + random() % 4, 1 + random() % 4, true, true);
            nodes.push_back(osg::AnimNodeBase::create());
            nodes.back()->setCore(curve);
            attachment->getAnimationRoot()->addChild(nodes.back());
        }
    }
    osg::markChanged(kxScene::the()->root(), osg::Node::ChildrenFieldMask);
    return nodes;
}

class Graph
{
public:
    Graph(int objects, int curvesPerObject, int keysPerCurve) : nodes(makeNodes(objects, curvesPerObject, keysPerCurve))
    {
        view.resize(1200, 700);
        view.show();
        QApplication::processEvents();
        showAll();
        view.frameAll();
        paint();
    }
    ~Graph() { stack()->clear(); }

    static QUndoStack* stack() { return kxUndoStack::get(0).stack(); }
    void paint()
    {
        view.viewport()->update();
        QApplication::processEvents(); // with what the scene has put off
    }
    void showAll() { view.setAnimations(nodes); }
    void select(int keys)
    {
        view.scene()->clearSelection();
        for (kxAnimGraphCurve* const curve : view.scene()->curves())
            for (kxAnimGraphPoint* const point : curve->points())
                if (--keys >= 0)
                    point->setSelected(true);
    }
    void mouse(QEvent::Type type, const QPoint& at, Qt::MouseButton button, Qt::MouseButtons held)
    {
        QMouseEvent event(type, at, view.viewport()->mapTo(&view, at), view.viewport()->mapToGlobal(at), button, held,
                          Qt::NoModifier);
        QApplication::sendEvent(view.viewport(), &event);
    }
    void wheel(int delta)
    {
        const QPoint at(500, 300);
        QWheelEvent event(at, view.viewport()->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(view.viewport(), &event);
    }

    std::vector<osg::AnimNodePtr> nodes;
    kxAnimGraphView view;
};

Graph& many()
{
    static Graph* graph = nullptr;
    if (graph == nullptr)
        graph = new Graph(20, 10, 50);
    return *graph;
}

void show(benchmark::State& state)
{
    Graph& graph = many();
    for (auto _ : state)
    {
        graph.showAll();
        graph.paint();
    }
}

void wheel(benchmark::State& state)
{
    Graph& graph = many();
    graph.view.frameAll();
    int step = 0;
    for (auto _ : state)
    {
        graph.wheel(step++ % 8 < 4 ? 120 : -120);
        graph.paint();
    }
}

void selectAll(benchmark::State& state)
{
    Graph& graph = many();
    for (auto _ : state)
    {
        state.PauseTiming();
        graph.showAll(); // none of them has shown its handles yet
        graph.paint();
        state.ResumeTiming();
        graph.view.scene()->selectAllPoints();
        graph.paint();
    }
    graph.view.scene()->clearSelection();
}

/// The first key selected is dragged, with `state.range(0)` others.
void drag(benchmark::State& state)
{
    Graph& graph = many();
    graph.showAll();
    graph.view.frameAll();
    graph.select(int(state.range(0)));
    graph.paint();
    const QPoint from = graph.view.mapFromScene(graph.view.scene()->curves().first()->point(0)->pos());
    graph.mouse(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
    int step = 0;
    for (auto _ : state)
    {
        ++step;
        graph.mouse(QEvent::MouseMove, from + QPoint(step % 5, step % 7), Qt::NoButton, Qt::LeftButton);
        graph.paint();
    }
    graph.mouse(QEvent::MouseButtonRelease, from, Qt::LeftButton, Qt::NoButton);
    state.counters["steps"] = graph.stack()->count();
    graph.stack()->clear();
}

void undoDrag(benchmark::State& state)
{
    Graph& graph = many();
    graph.showAll();
    graph.select(int(state.range(0)));
    const QPoint from = graph.view.mapFromScene(graph.view.scene()->curves().first()->point(0)->pos());
    graph.mouse(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
    graph.mouse(QEvent::MouseMove, from + QPoint(3, 9), Qt::NoButton, Qt::LeftButton);
    graph.mouse(QEvent::MouseButtonRelease, from, Qt::LeftButton, Qt::NoButton);
    for (auto _ : state)
    {
        if (graph.stack()->canUndo())
            graph.stack()->undo();
        else
            graph.stack()->redo();
        graph.view.refresh();
        graph.paint();
    }
    graph.stack()->clear();
}

/// 99 curves of 918 keys.
Graph& crowded()
{
    static Graph* graph = nullptr;
    if (graph == nullptr)
        graph = new Graph(9, 11, 918);
    return *graph;
}

void selectCrowd(benchmark::State& state)
{
    Graph& graph = crowded();
    for (auto _ : state)
    {
        state.PauseTiming();
        graph.showAll();
        graph.paint();
        state.ResumeTiming();
        graph.view.scene()->selectAllPoints();
        graph.paint();
    }
}

/// Deletes them all, or with `state.range(0)` takes that back and shows them again.
void deleteCrowd(benchmark::State& state)
{
    Graph& graph = crowded();
    for (auto _ : state)
    {
        state.PauseTiming();
        graph.showAll();
        graph.view.scene()->selectAllPoints();
        graph.paint();
        if (state.range(0) == 0)
            state.ResumeTiming();
        graph.view.scene()->deleteSelectedPoints();
        graph.paint();
        if (state.range(0) == 0)
            state.PauseTiming();
        else
            state.ResumeTiming();
        graph.stack()->undo();
        graph.view.refresh();
        graph.paint();
        if (state.range(0) == 0)
            state.ResumeTiming();
    }
    graph.stack()->clear();
}

Graph& one()
{
    static Graph* graph = nullptr;
    if (graph == nullptr)
        graph = new Graph(1, 1, 100000);
    return *graph;
}

void showOne(benchmark::State& state)
{
    Graph& graph = one();
    graph.view.setAnimations({});
    const auto before = mallinfo2().uordblks;
    graph.showAll();
    graph.paint();
    state.counters["bytes a key"] = double(mallinfo2().uordblks - before) / 100000;
    for (auto _ : state)
    {
        graph.showAll();
        graph.paint();
    }
}

void dragOne(benchmark::State& state)
{
    Graph& graph = one();
    kxAnimGraphPoint* const point = graph.view.scene()->curves().first()->point(50000);
    graph.view.setTransform(QTransform::fromScale(3, -20));
    graph.view.updatePointScale();
    graph.view.centerOn(point->pos());
    graph.paint();
    const QPoint from = graph.view.mapFromScene(point->pos());
    graph.mouse(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
    int step = 0;
    for (auto _ : state)
    {
        ++step;
        graph.mouse(QEvent::MouseMove, from + QPoint(step % 3, step % 7), Qt::NoButton, Qt::LeftButton);
        graph.paint();
    }
    graph.mouse(QEvent::MouseButtonRelease, from, Qt::LeftButton, Qt::NoButton);
    graph.stack()->clear();
}

void zoomedIn(benchmark::State& state)
{
    Graph& graph = one();
    graph.view.setTransform(QTransform::fromScale(3, -20)); // a hundred keys
    graph.view.updatePointScale();
    graph.view.centerOn(200000, 0);
    graph.paint();
    for (auto _ : state)
        graph.paint();
}

void wheelOne(benchmark::State& state)
{
    Graph& graph = one();
    graph.view.frameAll();
    int step = 0;
    for (auto _ : state)
    {
        graph.wheel(step++ % 8 < 4 ? 120 : -120);
        graph.paint();
    }
}

void pressOne(benchmark::State& state)
{
    Graph& graph = one();
    graph.view.frameAll();
    for (auto _ : state)
    {
        graph.mouse(QEvent::MouseButtonPress, QPoint(300, 20), Qt::LeftButton, Qt::LeftButton);
        graph.mouse(QEvent::MouseMove, QPoint(310, 30), Qt::NoButton, Qt::LeftButton);
        graph.mouse(QEvent::MouseButtonRelease, QPoint(310, 30), Qt::LeftButton, Qt::NoButton);
    }
}

void hoverOne(benchmark::State& state)
{
    Graph& graph = one();
    graph.view.frameAll();
    int step = 0;
    for (auto _ : state)
        graph.mouse(QEvent::MouseMove, QPoint(300 + ++step % 50, 20), Qt::NoButton, Qt::NoButton);
}
} // namespace

BENCHMARK(show)->Name("200 curves, 10,000 keys: shown")->Unit(benchmark::kMillisecond);
BENCHMARK(wheel)->Name("10,000 keys: wheel")->Unit(benchmark::kMillisecond);
BENCHMARK(selectAll)->Name("10,000 keys: all selected")->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(drag)->Name("10,000 keys: drag step of")->Arg(100)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(undoDrag)->Name("10,000 keys: undo of a drag of")->Arg(100)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(selectCrowd)->Name("99 curves, 90,882 keys: all selected")->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(deleteCrowd)->Name("90,882 keys: deleted")->Arg(0)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(deleteCrowd)->Name("90,882 keys: that undone")->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(showOne)->Name("100,000 keys: shown")->Unit(benchmark::kMillisecond);
BENCHMARK(dragOne)->Name("100,000 keys: drag step of one")->Unit(benchmark::kMillisecond);
BENCHMARK(zoomedIn)->Name("100,000 keys: repaint of a hundred")->Unit(benchmark::kMillisecond);
BENCHMARK(wheelOne)->Name("100,000 keys: wheel, all in sight")->Unit(benchmark::kMillisecond);
BENCHMARK(pressOne)->Name("100,000 keys: rubber band of nothing")->Unit(benchmark::kMillisecond);
BENCHMARK(hoverOne)->Name("100,000 keys: mouse over them")->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    return kxBenchMain(argc, argv);
}
