#include "kxBenchMain.h"
#include "kxBenchScene.h"

#include <clipmaker/kxAnimAbstractClipItem.h>
#include <clipmaker/kxAnimClipScene.h>
#include <clipmaker/kxAnimClipView.h>

#include <animation/kxAnimScene.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <scene/kxScene.h>

#include <QWheelEvent>

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
    Shown()
    {
        view.resize(1200, 700);
        view.show();
        scene->setClip(node, false);
        view.scale(2, 1);
        view.centerOn(250, 300);
        view.clipScene()->updateAllTexts();
        settle();
    }

    static void settle() { QApplication::processEvents(); }

    kxAnimClipView view;
    kxAnimClipScene* const scene = view.clipScene();
};

void show(benchmark::State& state)
{
    Shown shown;
    for (auto _ : state)
    {
        shown.scene->setClip(shown.node, true); // with the old bars taken away
        shown.view.viewport()->repaint();
    }
}

void wheelStep(benchmark::State& state)
{
    Shown shown;
    int step = 0;
    for (auto _ : state)
    {
        QWheelEvent wheel(QPointF(600, 300), shown.view.mapToGlobal(QPoint(600, 300)), QPoint(),
                          QPoint(0, step++ % 2 == 0 ? 120 : -120), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                          false);
        QApplication::sendEvent(shown.view.viewport(), &wheel);
        shown.view.viewport()->repaint();
    }
}

void dragStep(benchmark::State& state)
{
    Shown shown;
    for (int i = 0; i < int(state.range(0)); ++i)
        shown.scene->bars()[i]->setSelected(true);
    int step = 0;
    for (auto _ : state)
    {
        const QPointF way(step++ % 20 < 10 ? 1 : -1, 0);
        for (kxAnimAbstractClipItem* bar : shown.scene->selectedBars())
            bar->setPos(bar->pos() + way);
        shown.scene->checkCollisions(shown.scene->selectedItems());
        shown.view.viewport()->repaint();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall); // what the scene does with its own writes
    }
}

/// What follows each step that is put onto the undo stack, whoever made it.
void undoStep(benchmark::State& state)
{
    Shown shown;
    for (auto _ : state)
    {
        kxSend(kxMessageName::Redo);
    }
}
/// 500 objects with 9 curves of 50 keys each, and a clip that places a block of each on 100 tracks, inside
/// of `depth` clips.
struct Playing
{
    explicit Playing(int depth)
    {
        clip->addRef();
        clip->setCore(AnimClipBase::create());
        AnimNodePtr inner = clip;
        for (int i = 0; i < depth; ++i)
        {
            const AnimNodePtr below = AnimNodeBase::create();
            below->setCore(AnimClipBase::create());
            below->setOffset(Vec2f(0.25f, 0));
            inner->addChild(below);
            inner = below;
        }
        for (const NodePtr& object : scene.objects)
        {
            const AnimNodePtr block =
                kxAnimManager::the()->createBlock(kxAnimManager::the()->getAnimAttachment(object), "Block");
            const AnimNodePtr copy = cloneAnimTree(block, true);
            const UInt32 place = inner->getNChildren();
            copy->setOffset(Vec2f(4.5f * float(place / Tracks), 50.0f * float(place % Tracks)));
            inner->addChild(copy);
        }
        kxAnimManager::the()->addToClipStructure(clip);
        markChanged(clip, Node::ChildrenFieldMask);
    }
    ~Playing()
    {
        clip->subRef();
        kxScene::the()->clear();
        kxAnimScene::clear();
    }

    kxBenchScene scene = kxBenchScene::make(500, 50);
    AnimNodePtr clip = AnimNodeBase::create();
};

/// A frame of the clip's playback: evaluated, and the timeline drawn.
void playFrame(benchmark::State& state)
{
    Playing playing(0);
    kxAnimClipView view;
    view.resize(1200, 700);
    view.show();
    view.clipScene()->setClip(playing.clip, false);
    view.frame();
    Shown::settle();
    int frame = 0;
    for (auto _ : state)
    {
        view.clipScene()->setTime(frame++ % 500);
        view.viewport()->repaint();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall);
    }
}

void evaluateFrame(benchmark::State& state)
{
    Playing playing(int(state.range(0)));
    int frame = 0;
    for (auto _ : state)
        kxAnimManager::the()->evaluateByFrame(playing.clip, frame++ % 500, false, true, false);
    state.counters["values"] = double(playing.scene.curves.size());
}
} // namespace

BENCHMARK(show)->Unit(benchmark::kMillisecond);
BENCHMARK(wheelStep)->Unit(benchmark::kMillisecond);
BENCHMARK(undoStep)->Unit(benchmark::kMillisecond);
BENCHMARK(dragStep)->ArgName("bars")->Arg(1)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(playFrame)->Unit(benchmark::kMillisecond);
BENCHMARK(evaluateFrame)->ArgName("depth")->Arg(0)->Arg(1)->Arg(8)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    return kxBenchMain(argc, argv);
}
