#include <kxBenchMain.h>
#include <kxBenchScene.h>

#include <animation/kxAnimScene.h>
#include <animation/kxAnimTree.h>
#include <animation/kxCurveEvaluation.h>
#include <animation/kxNodeTime.h>
#include <kxAnimManager.h>

#include <tbb/global_control.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <unistd.h>

using namespace osg;

namespace
{
constexpr int Keys = 100;
constexpr int Frames = 2 * (Keys - 1);

/// One scene for all measurements that only read it; another size replaces it.
kxBenchScene& scene(int objects)
{
    static kxBenchScene current;
    if (int(current.objects.size()) != objects)
    {
        kxScene::the()->clear();
        kxAnimScene::clear();
        current = kxBenchScene();
        current = kxBenchScene::make(objects, Keys);
        kxAnimManager::the()->setCurrentFrame(0, true, false);
    }
    return current;
}

/// Frames of a playback that is not locked to whole frames, or frames all over the range.
double frameOf(int step, bool jumps)
{
    return jumps ? double((step * 1103) % (Frames * 10)) / 10 : double(step % (Frames * 4)) / 4;
}

struct Item
{
    const AnimCurve* curve;
    UInt32 cursor;
};

void curvesAlone(benchmark::State& state)
{
    const kxBenchScene& s = scene(5000);
    std::vector<Item> items;
    for (const AnimCurvePtr& curve : s.curves)
        items.push_back(Item{curve.getCPtr(), 0});
    int step = 0;
    for (auto _ : state)
    {
        const double seconds = frameOf(step++, state.range(0) != 0) / 24;
        float sum = 0;
        kxCurveEvaluation::forEachFetched(
            items.data(), items.size(), [seconds](const Item&) { return seconds; },
            [&](Item& item) { sum += kxCurveEvaluation::value(*item.curve, seconds, item.cursor, 0); });
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(std::int64_t(state.iterations()) * std::int64_t(s.curves.size()));
}

void wholeScene(benchmark::State& state)
{
    const kxBenchScene& s = scene(int(state.range(2)));
    const tbb::global_control control(tbb::global_control::max_allowed_parallelism, std::size_t(state.range(1)));
    int step = 0;
    for (auto _ : state)
        kxAnimManager::the()->setCurrentFrame(frameOf(step++, state.range(0) != 0), false, false);
    state.SetItemsProcessed(std::int64_t(state.iterations()) * std::int64_t(s.curves.size()));
}

void nothingActive(benchmark::State& state)
{
    const kxBenchScene& s = scene(5000);
    for (const NodePtr& object : s.objects)
    {
        const AnimNodePtr root = kxAnimManager::the()->getAnimAttachment(object)->getAnimationRoot();
        kxAnimManager::the()->setTreeActive(root, false);
    }
    kxAnimManager::the()->updateSceneAnimCurveData();
    int step = 0;
    for (auto _ : state)
        kxAnimManager::the()->setCurrentFrame(++step % Frames, false, false);
    for (const NodePtr& object : s.objects)
        kxAnimManager::the()->setTreeActive(kxAnimManager::the()->getAnimAttachment(object)->getAnimationRoot(), true);
}

void planMadeAnew(benchmark::State& state)
{
    const kxBenchScene& s = scene(5000);
    for (auto _ : state)
    {
        markChanged(kxAnimManager::the()->getAnimAttachment(s.objects[0])->getAnimationRoot(), Node::ChildrenFieldMask);
        kxAnimManager::the()->updateSceneAnimCurveData();
    }
}

void oneKeyDragged(benchmark::State& state)
{
    const kxBenchScene& s = scene(5000);
    float y = 0;
    for (auto _ : state)
    {
        s.curves[77]->getControlPoints(3).setY(y = -y + 1);
        markChanged(s.curves[77], AnimCurveBase::ControlPointsFieldMask);
        kxAnimManager::the()->reevaluateAnimations(false);
    }
}

void appendAscending(benchmark::State& state)
{
    for (auto _ : state)
    {
        const AnimCurvePtr curve = AnimCurveBase::create();
        curve->addRef();
        for (int i = 0; i < 1000000; ++i)
            curve->addPoint(Pnt2f(float(i), float(i % 17)), Vec2f(), Vec2f(), 3, 3, true, true);
        curve->subRef();
    }
}

void insertAtRandom(benchmark::State& state)
{
    std::mt19937 random(5);
    std::uniform_real_distribution<float> seconds(0, 10000);
    for (auto _ : state)
    {
        const AnimCurvePtr curve = AnimCurveBase::create();
        curve->addRef();
        for (int i = 0; i < 10000; ++i)
            curve->addPoint(Pnt2f(seconds(random), float(i % 17)), Vec2f(), Vec2f(), 3, 3, true, true);
        curve->subRef();
    }
}

void deepCopy(benchmark::State& state)
{
    const AnimNodePtr block = kxAnimManager::the()->getAnimAttachment(scene(5000).objects[0])->getAnimationRoot();
    for (auto _ : state)
    {
        const AnimNodePtr copy = cloneAnimTree(block, false);
        copy->addRef();
        benchmark::DoNotOptimize(copy.getCPtr());
        state.PauseTiming();
        copy->subRef();
        state.ResumeTiming();
    }
}

double residentBytes()
{
    long pages = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return double(resident) * double(sysconf(_SC_PAGESIZE));
}

/// Of the whole scene: keys, curves, nodes, objects, the plan.
void memoryPerKey(benchmark::State& state)
{
    kxScene::the()->clear();
    kxAnimScene::clear();
    const double before = residentBytes();
    double bytes = 0;
    for (auto _ : state)
    {
        scene(5001);
        bytes = residentBytes() - before;
    }
    state.counters["bytes/key"] = bytes / (5001.0 * 9 * Keys);
}
} // namespace

BENCHMARK(memoryPerKey)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(curvesAlone)->ArgName("jumps")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(wholeScene)
    ->ArgNames({"jumps", "threads", "objects"})
    ->Args({0, 1, 5000})
    ->Args({1, 1, 5000})
    ->Args({0, 2, 5000})
    ->Args({1, 2, 5000})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(nothingActive)->Unit(benchmark::kMicrosecond);
BENCHMARK(planMadeAnew)->Unit(benchmark::kMillisecond);
BENCHMARK(oneKeyDragged)->Unit(benchmark::kMicrosecond);
BENCHMARK(deepCopy)->Unit(benchmark::kMicrosecond);
BENCHMARK(appendAscending)->Unit(benchmark::kMillisecond);
BENCHMARK(insertAtRandom)->Unit(benchmark::kMillisecond);
// Another scene size last: never slower than linear in the number of curves.
BENCHMARK(wholeScene)
    ->ArgNames({"jumps", "threads", "objects"})
    ->Args({0, 1, 500})
    ->Args({0, 1, 50})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

int main(int argc, char** argv)
{
    return kxBenchMain(argc, argv);
}
