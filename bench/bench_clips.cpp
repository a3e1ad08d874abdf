#include <clipmaker/kxAnimAbstractClipItem.h>
#include <clipmaker/kxAnimClipScene.h>

#include <animation/kxAnimScene.h>
#include <kxAnimManager.h>
#include <scene/kxScene.h>

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QGraphicsView>

using namespace osg;

namespace
{
constexpr int Tracks = 100;
constexpr int BarsPerTrack = 20;

/// A clip of 2,000 blocks, one and a half seconds every two seconds, on 100 tracks.
struct Clip
{
    Clip()
    {
        kxAnimManager::kxOSGChannelData channel;
        channel.name = channel.channelName = "translation";
        channel.suffix = "X";
        node->addRef();
        node->setCore(AnimClipBase::create());
        for (int i = 0; i < Tracks * BarsPerTrack; ++i)
        {
            const AnimNodePtr curve = kxAnimManager::the()->createChannelCurveNode(channel, AnimAttachmentPtr());
            for (const float seconds : {0.0f, 1.5f})
                AnimCurvePtr::dcast(curve->getCore())
                    ->addPoint(Pnt2f(seconds, seconds), Vec2f(), Vec2f(), 1, 1, true, true);
            const AnimNodePtr block = AnimNodeBase::create();
            block->setCore(AnimBlockBase::create());
            block->setNodeName("Block of the clip");
            block->addChild(curve);
            block->setOffset(Vec2f(2.0f * float(i / Tracks), 50.0f * float(i % Tracks)));
            node->addChild(block);
        }
        markChanged(node, Node::ChildrenFieldMask);
    }
    ~Clip() { node->subRef(); }

    AnimNodePtr node = AnimNodeBase::create();
};

/// The clip in a view of 1200 by 700 pixels at two pixels a frame.
struct Shown : Clip
{
    Shown() : view(&scene)
    {
        view.setViewportUpdateMode(QGraphicsView::FullViewportUpdate);
        view.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        view.setSceneRect(-100000, -20, 200000, 10000);
        view.resize(1200, 700);
        view.scale(2, 1);
        view.show();
        view.centerOn(250, 300);
        addBars();
        settle();
    }

    void addBars()
    {
        for (const NodePtr& child : node->getChildren())
            scene.addBar(AnimNodePtr::dcast(child));
    }
    static void settle() { QApplication::processEvents(); }

    kxAnimClipScene scene;
    QGraphicsView view;
};

void show(benchmark::State& state)
{
    Shown shown;
    for (auto _ : state)
    {
        state.PauseTiming();
        shown.scene.clear();
        state.ResumeTiming();
        shown.addBars();
        shown.view.viewport()->repaint();
    }
}

void wheelStep(benchmark::State& state)
{
    Shown shown;
    int step = 0;
    for (auto _ : state)
    {
        shown.view.scale(step++ % 2 == 0 ? 1.15 : 1 / 1.15, 1);
        shown.scene.updateAllTexts();
        shown.view.viewport()->repaint();
    }
}

void dragStep(benchmark::State& state)
{
    Shown shown;
    for (int i = 0; i < int(state.range(0)); ++i)
        shown.scene.bars()[i]->setSelected(true);
    int step = 0;
    for (auto _ : state)
    {
        const QPointF way(step++ % 20 < 10 ? 1 : -1, 0);
        for (kxAnimAbstractClipItem* bar : shown.scene.selectedBars())
            bar->setPos(bar->pos() + way);
        shown.scene.checkCollisions(shown.scene.selectedItems());
        shown.view.viewport()->repaint();
    }
}
} // namespace

BENCHMARK(show)->Unit(benchmark::kMillisecond);
BENCHMARK(wheelStep)->Unit(benchmark::kMillisecond);
BENCHMARK(dragStep)->ArgName("bars")->Arg(1)->Arg(200)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    kxScene::the()->clear();
    return 0;
}
