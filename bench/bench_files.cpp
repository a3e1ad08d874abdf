#include <apart/kxPictures.h>
#include <files/apart/kxModelReader.h>
#include <files/apart/kxReaderProcess.h>
#include <files/kxSceneIO.h>
#include <files/scene/kxSceneContent.h>
#include <files/text/kxSceneDifference.h>
#include <files/text/kxSceneText.h>
#include <kxBenchMain.h>
#include <kxBenchScene.h>

#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>
#include <QTextStream>

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

/// A grid of so many squares a side as a file of another program.
QString model(int64_t squares)
{
    const QString path = folder().filePath(QStringLiteral("grid%1.obj").arg(squares));
    QFile file(path);
    if (file.exists() || !file.open(QIODevice::WriteOnly))
        return path;
    QTextStream out(&file);
    for (int64_t y = 0; y <= squares; ++y)
        for (int64_t x = 0; x <= squares; ++x)
            out << "v " << 0.01 * double(x) << ' ' << 0.01 * double(y) << ' ' << 0.001 * double(x * y % 17) << '\n';
    for (int64_t y = 0; y < squares; ++y)
        for (int64_t x = 0; x < squares; ++x)
        {
            const int64_t first = y * (squares + 1) + x + 1, above = first + squares + 1;
            out << "f " << first << ' ' << first + 1 << ' ' << above + 1 << ' ' << above << '\n';
        }
    return path;
}

/// Reads it as the application does, and without a process of its own.
void readModel(benchmark::State& state)
{
    kxModelReader::Task task;
    task.path = model(state.range(0));
    for (auto _ : state)
    {
        kxSceneContent content;
        kxFileReport report(task.path);
        if (state.range(1) == 0 ? !kxModelReader::read(task, content, report)
                                : !kxReaderProcess::read(task.kind, task.path, content, report))
            state.SkipWithError(qUtf8Printable(report.message()));
    }
}

/// A photograph's worth of pixels, 2,048 x 1,024, decoded as the application does, and without a process of its own.
void decodePicture(benchmark::State& state)
{
    QImage image(2048, 1024, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x * y >> 8 & 255, x * 7 & 255, (x ^ y) & 255));
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG");
    const std::vector<unsigned char> bytes(buffer.data().begin(), buffer.data().end());
    QString reason;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            state.range(0) == 0
                ? QImage::fromData(buffer.data()).convertToFormat(QImage::Format_RGBA8888).sizeInBytes()
                : kxPictures::decode(bytes, reason).convertToFormat(QImage::Format_RGBA8888).sizeInBytes());
}
} // namespace

BENCHMARK(decodePicture)
    ->ArgNames({"apart"})
    ->Arg(0)
    ->Arg(1)
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(readModel)
    ->ArgNames({"squares", "apart"})
    ->ArgsProduct({{1, 300, 900}, {0, 1}})
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(save)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(open)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(compare)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(text)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(exportScene)->Iterations(2)->Unit(benchmark::kMillisecond)->UseRealTime();

int main(int argc, char** argv)
{
    return kxBenchMain(argc, argv);
}
