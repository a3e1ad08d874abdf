#include <QImage>
#include <QtTest>

#include <kxPlaces.h>

/// The example scripts, run by the program without a window: what they build has to move as they say.
class tst_kxExamples : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void scripts_data()
    {
        QTest::addColumn<QByteArray>("check"); // at(object, channel, frame of the timeline, or of a clip)
        QTest::newRow("bouncing_ball") << QByteArray(R"(
contact = 24 * math.sqrt(2 * 3 / 9.81)
close(at("Ball", "translation.Y", 0), 3.5)
close(at("Ball", "translation.X", contact), -3 + 1.1 * contact / 24, 0.01)
assert at("Ball", "scale.Y", contact) < 0.75 < 1.1 < at("Ball", "scale.X", contact)
close(at("Ball", "translation.Y", 1000), 0.5, 0.03)
close(at("Ball", "translation.Y", 0, findAnimClip("Bounce")), 3.5)
)");
        QTest::newRow("turntable_tour") << QByteArray(R"(
tour = findAnimClip("Tour")
close(at("Arm", "rotation.Y", 48, tour), 90)
close(at("Arm", "rotation.Y", 5 * 192 + 144, tour), 270, 0.01)  # repeats without end
close_views = ["Close to " + n for n in ("Sphere", "Rounded Box", "Torus", "Cone", "Cylinder")]
assert [v.name for v in viewpoints()] == ["Start"] + close_views
assert len(tour.children) == 1 + len(close_views)
)");
        QTest::newRow("exploded_view") << QByteArray(R"(
show = findAnimClip("Show")
for part, near, far in (("Shaft", 0.1, 2.7), ("Back plate", -0.62, -2.32), ("Balls", 0, 0.72)):
    close(at(part, "translation.X", 0, show), near)
    close(at(part, "translation.X", 66, show), far)
    close(at(part, "translation.X", 144, show), near)
close(at("Clipping Plane", "translation.Z", 72), 0.02)
assert clippingPlane(True) == findNode("Clipping Plane") and variant("Cap") == "Red cap"
)");
        QTest::newRow("gear_clock") << QByteArray(R"(
for seconds in (-3.25, 0.5, 10.5, 1000):
    close(at("First wheel", "rotation.Z", seconds * 24), 24 * seconds, 0.1)
    close(at("Second wheel", "rotation.Z", seconds * 24), 15 - 48 * seconds, 0.1)
    close(at("Third wheel", "rotation.Z", seconds * 24), 32 * seconds, 0.1)
for hand, seconds, angle in (("Second hand", 10.5, -60), ("Second hand", -0.5, 6), ("Minute hand", 90, -6),
                             ("Pendulum", 7, -14), ("Pendulum", 2.5, 0)):
    close(at(hand, "rotation.Z", seconds * 24), angle, 0.05)
)");
        QTest::newRow("block_wave") << QByteArray(R"(
field = findAnimClip("Field")
assert len(field.children) == 10 and all(len(row.children) == 10 for row in field.children)
assert len(getAnimBlocks(False)) == 100 and getAnimClips() == ["Field"]
for block, height in (("Block 2.2", 1.7), ("Block 4.0", 1.7), ("Block 0.0", 0.4)):  # a crest runs over the field
    close(at(block, "translation.Y", 96, field), height, 0.001)
    close(at(block, "translation.Y", 96), height, 0.001)  # on the timeline too
close(at("Block 2.2", "translation.Y", 24 * 40, field), 0.4, 0.001)  # and comes to rest
close(at("Block 2.2", "rotation.Y", 18, field), 22.5, 0.01)
close(at("Block 1.3", "rotation.Y", 18, field), 67.5, 0.01)  # runs backwards
)");
    }

    void scripts()
    {
        QFETCH(QByteArray, check);
        const QTemporaryDir folder;
        const auto script = [&folder](const char* name, const QByteArray& text)
        {
            QFile file(folder.filePath(name));
            return file.open(QIODevice::WriteOnly) && file.write(text) > 0 ? file.fileName() : QString();
        };
        const QString scene = folder.filePath("made.kxs"), picture = folder.filePath("picture.png");
        const QString save = script("save.py", "saveScene(r'" + scene.toUtf8() + "')\n");
        const QString checks =
            script("check.py", "import math\n"
                               "def at(name, channel, frame, clip=None):\n"
                               "    setCurrentFrame(frame) if clip is None else showAnimation(clip, frame)\n"
                               "    return channelValue(findNode(name), channel)\n"
                               "def close(value, wanted, error=0.0005):\n"
                               "    assert abs(value - wanted) <= error, (value, wanted)\n" +
                                   check);
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("KX_SETTINGS_DIR", folder.filePath("settings"));
        process.setProcessEnvironment(environment);
        const QString example = kxSource(QStringLiteral("examples/%1.py").arg(QTest::currentDataTag()));
        const auto run = [&](const QStringList& arguments)
        {
            process.start(kxBuilt("kxhost"), arguments);
            return process.waitForFinished(120000) && process.exitStatus() == QProcess::NormalExit &&
                   process.exitCode() == 0;
        };
        QVERIFY2(run({"--headless", "--script", example, "--script", save, "--script", checks}),
                 process.readAllStandardError().constData());
        // What was saved moves in the same way, and is worth a picture.
        QVERIFY2(run({"--headless", scene, "--script", checks, "--render", picture, "--size", "192x108"}),
                 process.readAllStandardError().constData());
        const QImage image(picture);
        QSet<QRgb> colors;
        for (int x = 0; x < image.width(); ++x)
            for (int y = 0; y < image.height(); ++y)
                colors.insert(image.pixel(x, y) & 0xfff0f0f0); // without the fine gradients
        QVERIFY2(colors.size() > 40, qPrintable(QString::number(colors.size())));
    }
};

QTEST_GUILESS_MAIN(tst_kxExamples)
#include "tst_kxExamples.moc"
