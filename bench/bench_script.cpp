#include <boost/python.hpp>

#include <kxBenchMain.h>
#include <script/kxAnimScript.h>

#include <animation/kxAnimScene.h>
#include <clipmaker/kxAnimClipEditor.h>
#include <kernel/kxHostHooks.h>
#include <kxAnimManager.h>
#include <kxScenegraph.h>
#include <kxScript.h>
#include <osg/AnimCores.h>
#include <osg/SceneCores.h>
#include <python/kxInterpreter.h>
#include <scene/kxScene.h>

#include <QKXDockWindowManager.h>

#include <QMainWindow>

namespace bp = boost::python;
using namespace osg;

namespace
{
constexpr int Names = 10000;

extern "C" PyObject* initModule()
{
    static PyModuleDef definition = {
        PyModuleDef_HEAD_INIT, "kxAnimWidgets", nullptr, -1, nullptr, nullptr, nullptr, nullptr, nullptr};
    return bp::detail::init_module(definition, kxAnimScript::registerFunctions);
}

/// An object "thing" in an empty scene, which scripts know by its name.
void makeScene()
{
    kxScene::the()->clear();
    kxAnimScene::clear();
    const NodePtr node = Node::create();
    node->setCore(Transform::create());
    node->setNodeName("thing");
    kxScene::the()->root()->addChild(node);
    markChanged(kxScene::the()->root(), Node::ChildrenFieldMask);
    bp::import("__main__").attr("thing") = node;
}

void run(benchmark::State& state, const char* script)
{
    if (!kxScript::run(script))
        state.SkipWithError("the script raised");
}

void manyKeys(benchmark::State& state)
{
    kxScript::run("times = [i / 24 for i in range(100000)]\nvalues = [(i, 0.5, -i) for i in range(100000)]");
    for (auto _ : state)
    {
        state.PauseTiming();
        makeScene();
        state.ResumeTiming();
        run(state, "addTranslationControlPoints(thing, times, values, False)");
    }
}

void singleKeys(benchmark::State& state)
{
    for (auto _ : state)
    {
        state.PauseTiming();
        makeScene();
        state.ResumeTiming();
        run(state, "for i in range(100000):\n    addTranslationControlPoint(thing, i / 24, (i, 0.5, -i), False)");
    }
}

/// Clips and blocks called "clip_0" and "block_0" and so on, each block under an object of its own.
void makeNames()
{
    makeScene();
    for (int i = 0; i < Names; ++i)
    {
        const AnimNodePtr clip = AnimNodeBase::create();
        clip->setCore(AnimClipBase::create());
        clip->setNodeName("clip_" + std::to_string(i));
        kxAnimManager::the()->clipStructureRoot()->addChild(clip);
        const AnimNodePtr block = AnimNodeBase::create();
        block->setCore(AnimBlockBase::create());
        block->setNodeName("block_" + std::to_string(i));
        const NodePtr object = Node::create();
        object->setCore(Transform::create());
        kxAnimManager::the()->addAnimation(object, block);
        kxScene::the()->root()->addChild(object);
    }
    markChanged(kxScene::the()->root(), Node::ChildrenFieldMask);
}

void findNames(benchmark::State& state, const char* script)
{
    makeNames();
    for (auto _ : state)
        run(state, script);
}

/// The clip maker on screen, which follows each step of a script.
struct OpenClipMaker
{
    OpenClipMaker() : docks(&window)
    {
        kxHostHooks::the().setMainWindow(&window);
        kxHostHooks::the().setDockWindowManager(&docks);
        editor = std::make_unique<kxAnimClipEditor>();
        window.resize(1600, 950);
        window.show();
        docks.show("Clip Maker");
        QApplication::processEvents();
    }
    ~OpenClipMaker()
    {
        editor.reset();
        kxHostHooks::the().setDockWindowManager(nullptr);
        kxHostHooks::the().setMainWindow(nullptr);
    }
    QMainWindow window;
    QKXDockWindowManager docks;
    std::unique_ptr<kxAnimClipEditor> editor;
};

/// `open`: with the clip maker. `nested`: all in one clip, else at the top.
void buildClips(benchmark::State& state)
{
    const auto clipMaker = state.range(0) != 0 ? std::make_unique<OpenClipMaker>() : nullptr;
    if (clipMaker && !clipMaker->docks.getDockWidget("Clip Maker")->isVisible())
        return state.SkipWithError("the clip maker isn't visible");
    bp::import("__main__").attr("nested") = state.range(1) != 0;
    for (auto _ : state)
    {
        state.PauseTiming();
        makeScene();
        state.ResumeTiming();
        run(state, R"(
addTranslationControlPoints(thing, [0, 1], [(0, 0, 0), (1, 0, 0)], False)
createAnimationBlockForNode(thing, False)
block = findAnimBlock("thing")
top = createAnimClip("top", kxNodePtr())
for i in range(1000):
    clip = createAnimClip("clip", top if nested else kxNodePtr())
    addToAnimClip(clip, block, i)
    setAnimClipDuration(clip, 12)
    setAnimClipStart(clip, i * 2, False)
)");
        QApplication::processEvents();
    }
}
} // namespace

BENCHMARK(buildClips)
    ->ArgNames({"open", "nested"})
    ->Args({0, 1})
    ->Args({1, 1})
    ->Args({1, 0})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(manyKeys)->Unit(benchmark::kMillisecond);
BENCHMARK(singleKeys)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(findNames, clips, "findAnimClip('clip_9999')")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(findNames, blocks, "findAnimBlock('block_9999')")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(findNames, block_after_edit, "addVisibleControlPoint(thing, 0, 1)\nfindAnimBlock('block_9999')")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(findNames, no_block, "findAnimBlock('nobody')")->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    return kxBenchMain(argc, argv,
                       []
                       {
                           PyImport_AppendInittab("kxAnimWidgets", initModule);
                           return kxInterpreter::start() &&
                                  kxScript::run("from kxTypes import *\nfrom kxAnimWidgets import *");
                       });
}
