#include <clipmaker/kxAnimClipStructureWidget.h>
#include <kxBenchMain.h>

#include <animation/kxAnimScene.h>
#include <kxAnimManager.h>
#include <osg/AnimCores.h>
#include <scene/kxScene.h>

using namespace osg;

namespace
{
constexpr int Clips = 2000;

template <class Base>
AnimNodePtr make(const std::string& name)
{
    const AnimNodePtr node = AnimNodeBase::create();
    node->setCore(Base::create());
    node->setNodeName(name);
    return node;
}

/// The tree on screen, over 2,000 clips of two blocks each, every tenth at the top level and the others below those.
struct Shown
{
    Shown()
    {
        AnimNodePtr top;
        for (int i = 0; i < Clips; ++i)
        {
            const AnimNodePtr clip = make<AnimClipBase>("clip_" + std::to_string((i * 1103) % Clips));
            clip->addChild(make<AnimBlockBase>("step"));
            clip->addChild(make<AnimBlockBase>("jump"));
            if (i % 10 == 0)
                kxAnimManager::the()->addToClipStructure(top = clip);
            else
                top->addChild(clip);
        }
        tree.resize(300, 800);
        tree.show();
        tree.rebuild(false);
        QApplication::processEvents();
    }
    ~Shown() { kxAnimScene::clear(); }

    kxAnimClipStructureWidget tree;
};

/// `expanded` and `selected`: all rows are.
void rebuild(benchmark::State& state)
{
    Shown shown;
    if (state.range(0) != 0)
        shown.tree.expandAll();
    if (state.range(1) != 0)
        shown.tree.selectAll();
    for (auto _ : state)
    {
        shown.tree.rebuild(true);
        QApplication::processEvents();
        shown.tree.viewport()->repaint();
    }
}

void newClip(benchmark::State& state)
{
    Shown shown;
    for (auto _ : state)
        shown.tree.newClip(true);
}
} // namespace

BENCHMARK(rebuild)
    ->ArgNames({"expanded", "selected"})
    ->Args({0, 0})
    ->Args({1, 0})
    ->Args({1, 1})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(newClip)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    return kxBenchMain(argc, argv);
}
