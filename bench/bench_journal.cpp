#include <files/kxSceneIO.h>
#include <files/scene/kxSceneContent.h>
#include <journal/kxHistory.h>
#include <journal/kxJournal.h>
#include <journal/kxRecovery.h>
#include <kxAnimManager.h>
#include <kxBenchMain.h>
#include <kxBenchScene.h>

#include <QTemporaryDir>

#include <optional>
#include <string>
#include <thread>

namespace
{
constexpr int Objects = 5000;
constexpr int KeysPerCurve = 100;

QString pathOf(const char* name)
{
    static const QTemporaryDir directory;
    return directory.filePath(QLatin1String(name));
}

bool openScene()
{
    kxFileReport report(pathOf("scene.kxs"));
    return kxSceneIO::open(pathOf("scene.kxs"), report);
}

std::vector<osg::AnimCurvePtr> curvesOfScene()
{
    std::vector<osg::AnimCurvePtr> curves;
    for (const osg::NodePtr& object : kxScene::the()->root()->getChildren())
        for (const osg::NodePtr& node :
             object->findAttachment<osg::AnimAttachment>()->getAnimationRoot()->getChildren())
            curves.push_back(osg::AnimCurvePtr::dcast(node->getCore()));
    return curves;
}

void moveKey(const osg::AnimCurvePtr& curve, osg::UInt32 key)
{
    curve->getControlPoints(key).setY(curve->getControlPoints(key).y() + 1);
    osg::markChanged(curve, osg::AnimCurveBase::ControlPointsFieldMask);
}

/// What an entry takes after `edit(turn)`, in the scene of 4.5 million keys as it was opened.
template <class Edit>
void measure(benchmark::State& state, const Edit& edit)
{
    int turn = 0;
    for (auto _ : state)
    {
        state.PauseTiming();
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // as hands do, who leave time to the disk
        edit(turn++);
        state.ResumeTiming();
        kxHistory::the().flush();
    }
}

/// Each time of another curve.
void key(benchmark::State& state)
{
    const std::vector<osg::AnimCurvePtr> curves = curvesOfScene();
    measure(state, [&](int turn) { moveKey(curves[std::size_t(turn) % curves.size()], 50); });
}

void movedKeys(benchmark::State& state)
{
    const std::vector<osg::AnimCurvePtr> curves = curvesOfScene();
    measure(state,
            [&](int turn)
            {
                for (std::size_t i = 0; i < 50; ++i)
                    for (osg::UInt32 k = 0; k < KeysPerCurve; ++k)
                        moveKey(curves[(std::size_t(turn) * 50 + i) % curves.size()], k);
            });
}

/// The end of a script's run, which moved all blocks of a clip.
void script(benchmark::State& state)
{
    const osg::AnimNodePtr clip = osg::AnimNodeBase::create();
    clip->setCore(osg::AnimClipBase::create());
    clip->setNodeName("Show");
    for (int i = 0; i < 50; ++i)
    {
        const osg::AnimNodePtr block = osg::AnimNodeBase::create();
        block->setCore(osg::AnimBlockBase::create());
        block->setNodeName("Block " + std::to_string(i));
        clip->addChild(block);
    }
    const osg::AnimNodePtr clips = kxAnimManager::the()->clipStructureRoot();
    clips->addChild(clip);
    osg::markChanged(clips, osg::Node::ChildrenFieldMask);
    kxHistory::the().flush();
    std::optional<kxHistory::Scope> run;
    for (auto _ : state)
    {
        state.PauseTiming();
        run.emplace(QStringLiteral("Move blocks"));
        for (const osg::NodePtr& node : clip->getChildren())
        {
            const osg::AnimNodePtr block = osg::AnimNodePtr::dcast(node);
            block->setOffset(block->getOffset() + osg::Vec2f(1, 0));
            osg::markChanged(block, osg::AnimNodeBase::OffsetFieldMask);
        }
        state.ResumeTiming();
        run.reset();
    }
    clips->subChild(clip);
    osg::markChanged(clips, osg::Node::ChildrenFieldMask);
    kxHistory::the().flush();
}

void longCurve(benchmark::State& state)
{
    const osg::AnimCurvePtr curve = curvesOfScene().front();
    const osg::MField<osg::CCPnt, 0> kept = curve->getControlPoints();
    for (int k = KeysPerCurve; k < 100000; ++k)
        curve->editControlPoints().push_back(osg::CCPnt(osg::Pnt2f(float(k * 2) / 24.0f, float(k % 7)), {}, {}, 1, 1));
    osg::markChanged(curve, osg::AnimCurveBase::ControlPointsFieldMask);
    kxHistory::the().flush();
    measure(state, [&](int turn) { moveKey(curve, osg::UInt32(turn)); });
    curve->editControlPoints() = kept;
    osg::markChanged(curve, osg::AnimCurveBase::ControlPointsFieldMask);
    kxHistory::the().flush();
}

void recover(benchmark::State& state)
{
    for (auto _ : state)
    {
        kxSceneContent content;
        kxFileReport report;
        if (!kxRecovery(pathOf("journal")).read(content, report))
            state.SkipWithError(qPrintable(report.error()));
    }
}

void open(benchmark::State& state)
{
    kxJournal::the().stop();
    kxSceneIO::newScene(); // with which the application begins
    if (state.range(0) != 0)
        kxJournal::the().start(pathOf("journal"));
    for (auto _ : state)
        if (!openScene())
            state.SkipWithError("the scene can't be opened");
    kxJournal::the().stop();
}
} // namespace

BENCHMARK(key)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(200);
BENCHMARK(movedKeys)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(100);
BENCHMARK(script)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(100);
BENCHMARK(longCurve)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(50);
BENCHMARK(recover)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(open)->Unit(benchmark::kMillisecond)->Arg(0)->Arg(1)->Iterations(6)->UseRealTime();

int main(int argc, char** argv)
{
    return kxBenchMain(argc, argv,
                       []
                       {
                           kxSceneIO::newScene();
                           kxBenchScene::make(Objects, KeysPerCurve);
                           kxFileReport report(pathOf("scene.kxs"));
                           kxHistory::the();
                           kxJournal::the().start(pathOf("journal"));
                           return kxSceneIO::save(pathOf("scene.kxs"), report) && openScene();
                       });
}
