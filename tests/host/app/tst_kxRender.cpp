#include "kxSceneFixture.h"

#include <QKXSpiner.h>
#include <app/kxFilmPanel.h>
#include <app/kxHostSettings.h>
#include <app/kxMainWindow.h>
#include <app/kxRenderDialog.h>
#include <app/kxRenderJob.h>
#include <app/kxRenderProgress.h>
#include <files/scene/kxFileReport.h>
#include <kxAnimFixture.h>
#include <osg/Share.h>
#include <scene/CameraLight.h>
#include <scene/UberMaterial.h>
#include <view/kxView3D.h>

#include <QtWidgets>

using namespace kxSceneFixture;

class tst_kxRender : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        kxHostSettings().clear();
        clear();
        kxAnimManager::the()->setFPS(24);
        kxAnimManager::the()->setDetailedRangeStart(3);
        kxAnimManager::the()->setDetailedRangeEnd(17);
        kxAnimManager::the()->setCurrentFrame(5, true, true);
    }

    void dialogRefuses_data()
    {
        kxColumns<int, QString, int, int, QString, QString>("mode", "file", "first", "last", "problem", "note");
        const int image = kxRenderDialog::Image, frames = kxRenderDialog::Frames, movie = kxRenderDialog::Movie;
        kxRow("one picture", image, "a.png", 0, 0, "", "");
        kxRow("of no kind", image, "a.txt", 0, 0, ".png", "");
        kxRow("into no folder", image, "gone/a.png", 0, 0, "There is no such folder", "");
        kxRow("frames", frames, "a_%04d.png", -2, 9, "", "");
        kxRow("of one name", frames, "a.png", 1, 2, "%04d", "");
        kxRow("one frame of one name", frames, "a.png", 7, 7, "", "");
        kxRow("backwards", frames, "a_%d.png", 9, 8, "The last frame stands before the first", "");
        kxRow("transparent", frames, "clear_%d.jpg", 3, 8, "can't be transparent", "");
        kxRow("movie", movie, "a.mp4", -2, 9, "", "12 frames, 0.20 s at 60 frames a second");
        kxRow("odd sides", movie, "odd.mp4", -2, 9, "", "even sides: 642 \u00d7 360");
        kxRow("movie of odd sides that can", movie, "odd.webm", -2, 9, "", "12 frames");
        kxRow("too fast", movie, "a.gif", -2, 9, "", "6 frames, 0.20 s at 30 frames a second");
        kxRow("in place of another", movie, "old.gif", -2, 9, "", "will be replaced");
        kxRow("backwards movie", movie, "a.gif", 9, 8, "The last frame stands before the first", "");
        kxRow("transparent movie", movie, "clear.mp4", 3, 8, "can't be transparent", "");
        kxRow("movie of no kind", movie, "a.png", 3, 8, ".webm", "");
    }

    void dialogRefuses()
    {
        QFETCH(int, mode);
        QFETCH(QString, file);
        QFETCH(int, first);
        QFETCH(int, last);
        QFETCH(QString, problem);
        QFETCH(QString, note);
        QVERIFY(QFile(path("old.gif")).open(QFile::WriteOnly));
        kxAnimManager::the()->setFPS(60);
        kxRenderDialog dialog(kxRenderDialog::Mode(mode), _folder.path(), "Film", true, nullptr);
        QCOMPARE(dialog.file(), path(QStringList{"Film.png", "Film_%04d.png", "Film.mp4"}.at(mode)));
        dialog.findChild<QLineEdit*>("_file")->setText(path(file));
        dialog.findChild<QCheckBox*>()->setChecked(file.startsWith("clear"));
        dialog.findChild<QKXSpiner*>("_height")->setValue(360);
        dialog.findChild<QKXSpiner*>("_width")->setValue(file.startsWith("odd") ? 641 : 640);
        if (mode != kxRenderDialog::Image)
        {
            QVERIFY(dialog.range().first == 3 && dialog.range().last == 17);
            dialog.findChild<QKXSpiner*>("_first")->setValue(first);
            dialog.findChild<QKXSpiner*>("_last")->setValue(last);
            QVERIFY(dialog.range().first == first && dialog.range().last == last);
        }
        QString said;
        for (const QLabel* const label : dialog.findChildren<QLabel*>())
            said += label->text() + '\n';
        QVERIFY2(said.contains(problem) && said.contains(note), qPrintable(said));
        QCOMPARE(said.contains("even"), file == "odd.mp4");
        QCOMPARE(dialog.findChild<QPushButton*>("_render")->isEnabled(), problem.isEmpty());
    }

    void dialogRemembers()
    {
        for (const bool accepts : {false, true})
        {
            kxRenderDialog dialog(kxRenderDialog::Image, _folder.path(), "Film", true, nullptr);
            dialog.show();
            QCOMPARE(dialog.size(), QSize(1920, 1080));
            dialog.findChild<QKXSpiner*>("_width")->setValue(640);
            dialog.findChild<QKXSpiner*>("_height")->setValue(400);
            const auto buttons = dialog.findChildren<QPushButton*>();
            for (QPushButton* const button : buttons)
                if ((button->objectName() == "_render") == accepts && button->isVisible())
                    button->click();
            QCOMPARE(dialog.result(), int(accepts));
            QVERIFY(!dialog.isVisible());
        }
        const kxRenderDialog next(kxRenderDialog::Image, QString(), "Other", true, nullptr);
        QVERIFY(next.size() == QSize(640, 400) && next.file() == path("Other.png"));
    }

    void dialogProposesTheFramesOfAClip()
    {
        typedef kxAnimFixture F;
        const osg::Share<osg::AnimNode> block(F::block("step", {F::curve("translation", "X", {{0, 0}, {2, 1}})}));
        const osg::AnimNodePtr inner = F::clip("Inner", {F::clone(block, 0.5f)});
        kxAnimManager::the()->clipStructureRoot()->addChild(F::clip("Walk", {inner, F::clone(block, 3)}));
        kxRenderDialog dialog(kxRenderDialog::Frames, _folder.path(), "Film", true, nullptr);
        auto* const source = dialog.findChild<QComboBox*>("_source");
        QCOMPARE(source->count(), 3);
        for (const auto& [entry, first, last] :
             {std::make_tuple("Walk", 12, 120), {"    Inner", 12, 60}, {"Timeline", 3, 17}})
        {
            source->setCurrentIndex(source->findText(entry));
            QVERIFY(dialog.range().first == first && dialog.range().last == last);
        }
    }

    void framesOfAClip()
    {
        typedef kxAnimFixture F;
        int fired = 0;
        kxAnimFixture::engine().triggers.setHandler([&fired](const std::string&, kxTriggers::Kind) { ++fired; });
        const osg::Share<osg::AnimNode> block(F::block("step", {F::curve("translation", "X", {{0, 0}, {1, 1}})}));
        const osg::AnimNodePtr clip = F::clip("Walk", {F::clone(block, 0), F::trigger("T", 0.1f)});
        kxAnimManager::the()->clipStructureRoot()->addChild(clip);
        kxRenderJob job;
        QList<int> frames;
        QVERIFY(!kxRenderJob::isRunning());
        job.progress = [&](int frame, const QString&)
        {
            frames << frame;
            return kxRenderJob::isRunning() && frame < 4; // the user takes it back
        };
        QString error;
        QCOMPARE(job.renderFrames(path("f_%02d.png"), kxRenderSource(clip), {1, 9}, QSize(16, 9), error), 4);
        QCOMPARE(frames, QList<int>({1, 2, 3, 4}));
        QVERIFY(QImage(path("f_04.png")).size() == QSize(16, 9) && !QFile::exists(path("f_05.png")));
        QVERIFY(!kxRenderJob::isRunning() && fired == 0);
        QCOMPARE(kxAnimManager::the()->currentFrame(), 5.0);
        kxAnimFixture::engine().triggers.setHandler(nullptr);
    }

    /// Whoever nobody named is seen through; and the dialog's three ways.
    void framesAreSeenThroughTheFilmsCameras()
    {
        const osg::AnimNodePtr clip = filmOfTwoCameras();
        const auto frame = [&](int at, const kxRenderCamera& camera)
        {
            kxRenderJob job;
            job.camera = camera;
            job.camera.chosen = [](float aspect) { return kxViewCamera::fromNode(osg::NodePtr(), aspect); };
            QString error;
            return job.renderFrames(path("f_%d.png"), kxRenderSource(clip), {at, at}, QSize(80, 45), error) == 1
                       ? QImage(path(QString("f_%1.png").arg(at)))
                       : QImage();
        };
        kxRenderCamera near, far, nobody, none;
        QString error;
        QVERIFY(near.setName("Near", error) && far.setName("Far", error) && none.setName("", error));
        nobody.film = false;
        QVERIFY(!none.setName("Nobody", error) && error.contains("'Nobody'; there are: Near, Far"));
        QVERIFY(!frame(6, {}).isNull() && frame(6, {}) == frame(6, near) && frame(30, {}) == frame(30, far));
        QVERIFY(frame(6, far) != frame(6, near) && frame(6, far) != frame(30, far) && frame(6, nobody) != frame(6, {}));
        kxRenderDialog dialog(kxRenderDialog::Frames, _folder.path(), "Film", false, nullptr);
        auto* const choice = dialog.findChild<QComboBox*>("_camera");
        QVERIFY(!dialog.camera().film && dialog.camera().named == osg::NullFC);
        choice->setCurrentIndex(choice->findText("Far"));
        QVERIFY(frame(6, dialog.camera()) == frame(6, far));
        choice->setCurrentIndex(0);
        QVERIFY(dialog.camera().film && frame(30, dialog.camera()) == frame(30, far));
    }

    /// Chosen cameras are kept; without anybody at the window they count, then the first camera of a scene of ours.
    void theChosenCameraIsKeptWithTheScene()
    {
        filmOfTwoCameras();
        const auto node = [](const char* name)
        {
            const std::vector<osg::NodePtr> nodes = objects();
            return *std::find_if(nodes.begin(), nodes.end(),
                                 [name](const osg::NodePtr& object) { return object->getNodeName() == name; });
        };
        const auto eye = [&node](const char* name) { return kxViewCamera::fromNode(node(name), 1).eye(); };
        kxMainWindow window;
        kxView3D* const view = window.view();
        const auto seen = [&window](bool headless)
        {
            const kxRenderCamera::Chosen chosen = kxRenderCamera::chosenIn(window, headless);
            return chosen ? chosen(1).eye() : QVector3D(99, 99, 99);
        };
        kxFileReport report(path("chosen.kxs"));
        const auto reopens = [&]
        {
            return window.document().write(report.file(), report) && window.document().newScene() &&
                   window.document().open(report.file(), report);
        };
        QVERIFY(reopens());
        QVERIFY(view->cameraNodeId() == 0 && seen(true) == eye("Near") && seen(false) == view->viewCamera(1).eye());
        view->setPose({QVector3D(), 800, 0, 0});
        view->lookThrough(node("Far")->getId());
        QVERIFY(!window.document().isUnsaved() && reopens());
        QCOMPARE(view->cameraNodeId(), node("Far")->getId());
        QVERIFY(seen(true) == eye("Far") && seen(false) == eye("Far") && view->rig().pose().distance < 80);
        view->setPose({QVector3D(1, 2, 3), 4, 50, 6});
        QVERIFY(seen(true) == view->viewCamera(1).eye() && seen(true) != eye("Far"));
        QVERIFY(reopens() && view->cameraNodeId() == 0);
        QCOMPARE(seen(true), eye("Near"));
    }

    void moviesShowThePicturesOfTheirFrames_data()
    {
        kxColumns<QString, double, bool, QSize, QString, int>("file", "rate", "clear", "size", "says", "step");
        kxRow("widely known", "m.mp4", 24.0, false, QSize(162, 92), "162,92,24/1,17", 1);
        kxRow("just below a whole rate", "m.mp4", 29.97, false, QSize(162, 92), "162,92,30000/1001,17", 1);
        kxRow("of odd sides", "m.webm", 30.0, false, QSize(161, 91), "161,91,30/1,17", 1);
        kxRow("transparent", "m.webm", 24.0, true, QSize(161, 91), "161,91,24/1,17", 1);
        kxRow("palette", "m.gif", 25.0, false, QSize(161, 91), "161,91,25/1,17", 1);
        kxRow("faster than a GIF", "m.gif", 100.0, true, QSize(161, 91), "161,91,50/1,9", 2);
    }

    void moviesShowThePicturesOfTheirFrames()
    {
        QFETCH(QString, file);
        QFETCH(double, rate);
        QFETCH(bool, clear);
        QFETCH(QSize, size);
        QFETCH(QString, says);
        QFETCH(int, step);
        kxAnimManager::the()->setFPS(rate);
        const osg::AnimNodePtr clip = filmOfTwoCameras();
        kxRenderJob job;
        job.transparent = clear;
        QString error;
        const kxRenderSource::Range range = {3, 19};
        QVERIFY2(job.renderMovie(path(file), kxRenderSource(clip), range, QSize(161, 91), error) == 16 / step + 1,
                 qPrintable(error));
        const auto run = [](const char* program, QStringList arguments)
        {
            QProcess process;
            process.start(program, QStringList{"-v", "error"} + arguments);
            process.waitForFinished();
            return process.readAllStandardOutput();
        };
        QCOMPARE(
            QString(run("ffprobe", {"-count_frames", "-show_entries", "stream=width,height,r_frame_rate,nb_read_frames",
                                    "-of", "csv=p=0", path(file)}))
                .trimmed(),
            says);
        QStringList decode = {"-i", path(file), "-vsync", "0", "-f", "rawvideo", "-pix_fmt", "rgba", "-"};
        if (clear && file.endsWith("webm"))
            decode = QStringList{"-c:v", "libvpx-vp9"} + decode; // the other one leaves the transparency out
        const QByteArray frames = run("ffmpeg", decode);
        const int bytes = 4 * size.width() * size.height();
        QCOMPARE(frames.size(), bytes * (16 / step + 1));
        const auto off = [&](int index, int frame) // mean of all bytes
        {
            job.renderFrames(path("p.png"), kxRenderSource(clip), {frame, frame}, size, error);
            const QImage picture = QImage(path("p.png")).convertToFormat(QImage::Format_RGBA8888);
            double sum = 0;
            for (int i = 0; i < bytes; ++i)
                if (i % 4 == 3 || picture.constBits()[i / 4 * 4 + 3] > 250) // what can't be seen has any colour
                    sum += std::abs(int(picture.constBits()[i]) - int(uchar(frames[index * bytes + i])));
            return sum / bytes;
        };
        for (const int index : {0, 5, 16 / step})
        {
            const int frame = range.first + index * step;
            const double own = off(index, frame);
            QVERIFY2(own < 4 && std::min(off(index, frame + step), off(index, frame - step)) > 1.5 * own,
                     qPrintable(QString("%1: %2, beside %3").arg(frame).arg(own).arg(off(index, frame + step))));
        }
        QCOMPARE(QDir(_folder.path()).entryList({".*"}, QDir::Files | QDir::Hidden), QStringList());
        QCOMPARE(QFileInfo(path(file)).permission(QFile::ReadGroup),
                 QFileInfo(path("p.png")).permission(QFile::ReadGroup));
    }

    /// What stood there stays, and nothing else is left.
    void moviesAreWholeOrNotThere_data()
    {
        kxColumns<QString, QString, int, QString>("encoder", "file", "ends", "says");
        kxRow("taken back while drawing", "", "m.mp4", 1, "");
        kxRow("taken back while the encoder is busy", "exec sleep 30", "m.mp4", 2, "");
        kxRow("no encoder", "none", "m.mp4", 0, "Please install the package \"ffmpeg\"");
        kxRow("disk full", "cat >/dev/null; echo half >\"$out\"; echo a: No space left on device >&2; exit 1", "m.webm",
              0, "m.webm' can't be written: the disk is full");
        kxRow("encoder gives up", "echo Unknown encoder >&2; exit 1", "m.gif", 0, "ffmpeg says: Unknown encoder");
        kxRow("encoder is shot", "echo half >\"$out\"; kill -9 $$", "m.mp4", 0, "ended early");
        kxRow("no folder", "", "gone/m.mp4", 0, "No such file");
        kxRow("of no kind", "", "m.avi", 0, ".mp4, .webm or .gif");
        kxRow("folder", "", "folder.mp4", 0, "it is a folder");
    }

    void moviesAreWholeOrNotThere()
    {
        QFETCH(QString, encoder);
        QFETCH(QString, file);
        QFETCH(int, ends);
        QFETCH(QString, says);
        const QTemporaryDir folder, programs;
        QVERIFY(QDir(folder.path()).mkdir("folder.mp4"));
        QFile before(folder.filePath("m.mp4")), program(programs.filePath("ffmpeg"));
        QVERIFY(before.open(QFile::WriteOnly) && before.write("before") == 6);
        before.close();
        const QByteArray ways = qgetenv("PATH");
        if (!encoder.isEmpty())
            qputenv("PATH", programs.path().toLocal8Bit() + (encoder == "none" ? "" : ":" + ways));
        if (!encoder.isEmpty() && encoder != "none")
        {
            QVERIFY(program.open(QFile::WriteOnly));
            program.write("#!/bin/sh\nfor last; do out=${last#file:}; done\n" + encoder.toLocal8Bit() + '\n');
            program.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
            program.close();
        }
        kxRenderJob job;
        int seen = 0;
        job.progress = [&](int, const QString&) { return ++seen < 3 || ends != 1; };
        job.waiting = [&] { return ends != 2; };
        QString error;
        const int written = job.renderMovie(folder.filePath(file), kxRenderSource(), {1, 5}, QSize(320, 200), error);
        qputenv("PATH", ways);
        QVERIFY2(written == 0 && error.contains(says) && error.isEmpty() == says.isEmpty(), qPrintable(error));
        QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList({"folder.mp4", "m.mp4"}));
        QVERIFY(before.open(QFile::ReadOnly) && before.readAll() == "before");
        QCOMPARE(kxAnimManager::the()->currentFrame(), 5.0);
    }

    void timeLeftIsSaid()
    {
        QCOMPARE(kxRenderTime::text(0.5, 3, 90), QString("Frame 3 of 90"));
        QCOMPARE(kxRenderTime::text(6, 3, 13), QString("Frame 3 of 13, about 20 s left"));
        QCOMPARE(kxRenderTime::text(6, 3, 90), QString("Frame 3 of 90, about 2 min 54 s left"));
        QCOMPARE(kxRenderTime::text(60, 10, 900), QString("Frame 10 of 900, about 1 h 29 min left"));
        QCOMPARE(kxRenderTime::text(60, 90, 90), QString("Frame 90 of 90"));
        // A reader that stays at half: what is told doesn't rise.
        kxWorkTime::Estimate time;
        QCOMPARE(time.text(1.5, -1), QString("1 s so far"));
        QCOMPARE(time.text(2, 0.5), QString("about 2 s left"));
        QCOMPARE(time.text(2.4, 0.5), QString("about 2 s left"));
        QVERIFY(time.text(3.2, 0.5) == "3 s so far" && time.isLost());
        QCOMPARE(time.text(4, 0.9), QString("4 s so far"));
    }

    /// Whatever is shown while frames are rendered, and where the user ends that.
    void whatIsShownComesBack_data()
    {
        kxColumns<QString, bool>("shown", "cancels");
        kxRow("the timeline", "", false);
        kxRow("a clip, as by the dock Film", "Walk", false);
        kxRow("a clip, as by the clip maker", "Walk maker", true);
        kxRow("a clip that the view has left", "Walk left", false);
    }

    void whatIsShownComesBack()
    {
        QFETCH(QString, shown);
        QFETCH(bool, cancels);
        const osg::AnimNodePtr clip = filmOfTwoCameras();
        kxAnimManager* const manager = kxAnimManager::the();
        kxAnimEngine& engine = kxAnimFixture::engine();
        manager->setCurrentFrame(21, false, true);
        if (shown.contains("maker"))
            manager->setCurrentFrameNoEvaluation(40, true);
        if (!shown.isEmpty())
            manager->evaluateByFrame(clip, 40, false, false, false);
        if (shown.contains("left"))
            engine.film.releaseCamera();
        const osg::NodePtr far = kxScene::the()->root()->getChildren().back();
        kxSceneEdits::setField({far->getCore()}, "translation", osg::FieldValue(osg::Vec3f(77, 0, 0))); // a pose
        const auto state = [&]
        {
            double seconds = 0;
            const osg::AnimNodePtr root = engine.plan.shownRoot(seconds);
            return QString("%1 %2 %3 %4 %5")
                .arg(manager->currentFrame())
                .arg(kxAnimScene::frame())
                .arg(root == osg::NullFC ? 0 : seconds)
                .arg(engine.film.camera() != osg::NullFC)
                .arg(double(kxSceneMath::worldMatrix(far).column(3).x()));
        };
        const QString before = state();
        QVERIFY2(before.endsWith(" 77"), qPrintable(before));
        kxRenderJob job;
        job.progress = [&](int, const QString&) { return !cancels; };
        QString error;
        job.renderFrames(path("s_%d.png"), kxRenderSource(clip), {30, 32}, QSize(8, 8), error);
        QCOMPARE(state(), before);
        job.renderFrames(path("s_%d.png"), kxRenderSource(), {3, 6}, QSize(8, 8), error);
        QCOMPARE(state(), before);
    }

    void picturesShowNoSelection()
    {
        const osg::NodePtr box = addSurface("Box", addMaterial("Paint"));
        kxRenderJob job;
        QString error;
        QVERIFY(job.renderImage(path("plain.png"), QSize(160, 90), error));
        kxSelection::the().selectNodes({box});
        QVERIFY(job.renderImage(path("selected.png"), QSize(160, 90), error));
        QCOMPARE(QImage(path("plain.png")), QImage(path("selected.png")));
        job.transparent = true;
        QVERIFY(job.renderImage(path("clear.png"), QSize(160, 90), error));
        QVERIFY(qAlpha(QImage(path("clear.png")).pixel(0, 0)) == 0 &&
                qAlpha(QImage(path("plain.png")).pixel(0, 0)) == 255);
    }

    /// Brighter than white, and through the curve of the screen as the other pictures.
    void lightIsWrittenAsItIs()
    {
        const osg::MaterialPtr paint = addMaterial("Paint");
        osg::UberMaterialPtr::dcast(paint)->setEmissive(osg::Color3f(6, 0.5f, 0));
        addSurface("Box", paint);
        kxRenderJob job;
        QString error;
        const QSize size(96, 54);
        const auto light = [&](const char* name, const char* format)
        {
            QProcess decode; // into planes of green, blue, red and maybe alpha
            decode.start("ffmpeg", {"-v", "error", "-i", path(name), "-f", "rawvideo", "-pix_fmt", format, "-"});
            decode.waitForFinished();
            const QByteArray bytes = decode.readAllStandardOutput();
            std::vector<float> planes(std::size_t(bytes.size()) / sizeof(float));
            std::memcpy(planes.data(), bytes.constData(), std::size_t(bytes.size()));
            return planes;
        };
        QVERIFY2(job.renderImage(path("a.EXR"), size, error) && job.renderImage(path("a.png"), size, error),
                 qPrintable(error));
        const std::vector<float> seen = light("a.EXR", "gbrpf32le");
        const std::size_t all = 96 * 54, middle = 27 * 96 + 48;
        QVERIFY(seen.size() == 3 * all && seen[2 * all + middle] > 5 && seen[middle] < 3);
        QFile file(path("a.EXR"));
        QVERIFY(file.open(QFile::ReadOnly) && file.readAll().contains(QByteArray("R\0\1\0\0\0", 6))); // halves
        const QImage picture(path("a.png"));
        std::size_t off = 0;
        for (std::size_t i = 0; i < all; ++i)
        {
            const double x = 0.8 * double(seen[i]), y = x * (2.51 * x + 0.03) / (x * (2.43 * x + 0.59) + 0.14);
            const double onScreen = 255 * (1.055 * std::pow(std::min(1.0, y), 1 / 2.4) - 0.055);
            off += std::abs(onScreen - qGreen(picture.pixel(int(i % 96), int(i / 96)))) > 3;
        }
        QVERIFY2(off < all / 20, qPrintable(QString::number(off))); // edges are mixed in light
        job.transparent = true;
        QVERIFY(job.renderImage(path("c.exr"), size, error));
        const std::vector<float> clear = light("c.exr", "gbrapf32le");
        QVERIFY(clear[3 * all] == 0 && clear[0] == 0 && clear[3 * all + middle] == 1 && clear[middle] == seen[middle]);
        QVERIFY(!job.renderImage(path("gone/a.exr"), size, error) && error.contains("gone/a.exr' can't be written"));
        kxMainWindow window;
        QVERIFY(file.rename(path("scene.kxs")) && !window.saveScreenshot(path("scene.kxs"), error));
        QVERIFY(error.contains("scene.kxs' can't be written") && file.size() > 0);
    }

    void menuWritesFiles_data()
    {
        kxColumns<QString, QString, QString>("action", "file", "says");
        kxRow("a picture", "_actionRenderImage", "one.png", "one.png written");
        kxRow("frames", "_actionRenderFrames", "n_%d.png", "pictures written to");
        kxRow("what can't be written", "_actionRenderImage", "folder.png", "folder.png' can't be written");
        kxRow("a movie", "_actionRenderMovie", "one.mp4", "15 frames written to");
        kxRow("a movie of the film that plays", "_actionRenderMovie", "two.gif", "5 frames written to");
        kxRow("a movie that can't be", "_actionRenderMovie", "folder.mp4", "folder.mp4' can't be written");
    }

    void menuWritesFiles()
    {
        QFETCH(QString, action);
        QFETCH(QString, file);
        QFETCH(QString, says);
        QDir(_folder.path()).mkdir("folder.png");
        QDir(_folder.path()).mkdir("folder.mp4");
        kxMainWindow window;
        kxFilmPlayer& film = window.findChild<kxFilmPanel*>()->player();
        if (file == "two.gif")
        {
            film.setClip(filmOfTwoCameras());
            film.setRange(20, 24);
            film.play();
        }
        QString said;
        QTimer answer; // the dialog, then the message where there is one
        connect(&answer, &QTimer::timeout, this,
                [&]
                {
                    if (auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
                    {
                        said = box->text();
                        box->accept();
                    }
                    else if (auto* const dialog = qobject_cast<kxRenderDialog*>(QApplication::activeModalWidget()))
                    {
                        dialog->findChild<QLineEdit*>("_file")->setText(path(file));
                        dialog->findChild<QKXSpiner*>("_width")->setValue(16);
                        dialog->findChild<QKXSpiner*>("_height")->setValue(9);
                        dialog->findChild<QPushButton*>("_render")->click();
                    }
                });
        answer.start(0);
        window.findChild<QAction*>(action)->trigger();
        answer.stop();
        QVERIFY(!film.isPlaying());
        QVERIFY2((said + window.statusBar()->currentMessage()).contains(says), qPrintable(said));
        QVERIFY(file != "n_%d.png" || QDir(_folder.path()).entryList({"n_*.png"}).size() == 15);
    }

private:
    /// A clip of a box, seen by "Near" for a second and by "Far" for another.
    static osg::AnimNodePtr filmOfTwoCameras()
    {
        addSurface("Box", addMaterial("Paint"));
        std::vector<osg::AnimNodePtr> bars;
        for (const float x : {1.0f, 3.0f})
        {
            const osg::NodePtr camera = kxAnimFixture::object(x < 2 ? "Near" : "Far");
            camera->setCore(osg::Camera::create());
            const osg::AnimNodePtr block =
                kxAnimFixture::block("shot", {kxAnimFixture::curve("translation", "X", {{0, x}, {1, -x}}),
                                              kxAnimFixture::curve("translation", "Z", {{0, 4 * x}, {1, 4 * x}})});
            kxAnimFixture::added(camera, block);
            bars.push_back(kxAnimFixture::clone(block, x < 2 ? 0 : 1.0f));
        }
        const osg::AnimNodePtr clip = kxAnimFixture::clip("Walk", bars);
        kxAnimManager::the()->clipStructureRoot()->addChild(clip);
        return clip;
    }
    QString path(const QString& name) const { return _folder.filePath(name); }
    QTemporaryDir _folder;
};

QTEST_MAIN(tst_kxRender)
#include "tst_kxRender.moc"
