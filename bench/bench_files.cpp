#include <files/kxSceneIO.h>
#include <kxBenchScene.h>

#include <benchmark/benchmark.h>

#include <QApplication>
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
} // namespace

BENCHMARK(save)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(open)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    kxSceneIO::newScene();
    return 0;
}
