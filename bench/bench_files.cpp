#include <files/kxSceneIO.h>
#include <files/scene/kxSceneContent.h>
#include <files/text/kxSceneDifference.h>
#include <files/text/kxSceneText.h>
#include <kxBenchMain.h>
#include <kxBenchScene.h>

#include <QFileInfo>
#include <QTemporaryDir>

namespace
{
constexpr int Objects = 5000;
constexpr int KeysPerCurve = 100;
constexpr double Keys = 9.0 * Objects * KeysPerCurve;

const QTemporaryDir& folder()
{
    static const QTemporaryDir directory;
    return directory;
}

QString sceneFile()
{
    return folder().filePath(QStringLiteral("scene.kxs"));
}

void save(benchmark::State& state)
{
    kxSceneIO::newScene();
    kxBenchScene::make(Objects, KeysPerCurve);
    for (auto _ : state)
    {
        kxFileReport report(sceneFile());
        if (!kxSceneIO::save(sceneFile(), report))
            state.SkipWithError(qUtf8Printable(report.message()));
    }
    state.counters["bytes/key"] = double(QFileInfo(sceneFile()).size()) / Keys;
}

/// Reads the file that save() wrote, over the scene that is open.
void open(benchmark::State& state)
{
    for (auto _ : state)
    {
        kxFileReport report(sceneFile());
        if (!kxSceneIO::open(sceneFile(), report))
            state.SkipWithError(qUtf8Printable(report.message()));
    }
}

/// Reads the file twice and compares what they hold, a key of each object being another.
void compare(benchmark::State& state)
{
    for (auto _ : state)
    {
        kxSceneContent before, after;
        kxFileReport report(sceneFile());
        if (!kxSceneIO::readContent(sceneFile(), before, report) || !kxSceneIO::readContent(sceneFile(), after, report))
            state.SkipWithError(qUtf8Printable(report.message()));
        for (const osg::NodePtr& node : after.root->getChildren())
        {
            const osg::NodePtr curve = node->findAttachment<osg::AnimAttachment>()->getAnimationRoot()->getChild(4);
            osg::AnimCurvePtr::dcast(curve->getCore())->getControlPoints(50).setY(77);
        }
        state.counters["differences"] = double(kxSceneDifference::between(before, after).entries.size());
    }
}

void text(benchmark::State& state)
{
    for (auto _ : state)
    {
        double bytes = 0;
        kxSceneText::write(kxSceneContent::ofScene(),
                           [&bytes](const QByteArray& piece)
                           {
                               bytes += piece.size();
                               return true;
                           });
        state.counters["bytes/key"] = bytes / Keys;
    }
}

/// A fifth of that scene for other programs: 900,000 keys.
void exportScene(benchmark::State& state)
{
    kxSceneIO::newScene();
    kxBenchScene::make(Objects / 5, KeysPerCurve);
    const QString path = folder().filePath(QStringLiteral("scene.glb"));
    for (auto _ : state)
    {
        kxFileReport report(path);
        if (!kxSceneIO::exportScene(path, report))
            state.SkipWithError(qUtf8Printable(report.message()));
    }
    state.counters["bytes/key"] = double(QFileInfo(path).size()) * 5 / Keys;
}
} // namespace

BENCHMARK(save)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(open)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(compare)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(text)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(exportScene)->Iterations(2)->Unit(benchmark::kMillisecond)->UseRealTime();

int main(int argc, char** argv)
{
    return kxBenchMain(argc, argv);
}
