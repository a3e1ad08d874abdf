#include <QImage>
#include <QtTest>

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
for frame in range(120):  # it touches the floor, and never sinks in
    bottom = at("Ball", "translation.Y", frame) - 0.5 * at("Ball", "scale.Y", frame)
    assert -0.02 < bottom < 3.01, (frame, bottom)
close(at("Ball", "translation.Y", 1000), 0.5, 0.03)
clip = findAnimClip("Bounce")
close(at("Ball", "translation.Y", 0, clip), 3.5)
)");
        QTest::newRow("turntable_tour") << QByteArray(R"(
tour = findAnimClip("Tour")
close(at("Arm", "rotation.Y", 48), 90)
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
close(at("Cap", "translation.X", 12, show), 1.55)  # the first to go, half way
close(at("Back plate", "translation.X", 30, show), -0.62)  # the last one waits
close(at("Clipping Plane", "translation.Z", 0), 2)
close(at("Clipping Plane", "translation.Z", 72), 0.02)
assert clippingPlane(True) == findNode("Clipping Plane") and variant("Cap") == "Red cap"
)");
        QTest::newRow("gear_clock") << QByteArray(R"(
for seconds in (-3.25, 0.5, 10.5, 1000):
    close(at("First wheel", "rotation.Z", seconds * 24), 24 * seconds, 0.1)
    close(at("Second wheel", "rotation.Z", seconds * 24), 15 - 48 * seconds, 0.1)
    close(at("Third wheel", "rotation.Z", seconds * 24), 32 * seconds, 0.1)
for seconds, angle in ((0.5, 0), (0.95, -3), (10.5, -60), (59.5, -354), (-0.5, 6)):
    close(at("Second hand", "rotation.Z", seconds * 24), angle, 0.05)
close(at("Minute hand", "rotation.Z", 90 * 24), -6, 0.05)
for seconds, angle in ((0, 14), (1, -14), (2, 14), (7, -14), (2.5, 0)):
    close(at("Pendulum", "rotation.Z", seconds * 24), angle, 0.05)
)");
        QTest::newRow("block_wave") << QByteArray(R"(
field = findAnimClip("Field")
assert len(field.children) == 10 and all(len(row.children) == 10 for row in field.children)
assert len(getAnimBlocks(False)) == 100 and getAnimClips() == ["Field"]
for frame in (24, 48, 96):  # a crest runs over the field, again and again
    close(at("Block 2.2", "translation.Y", frame, field), 1.7, 0.001)
    close(at("Block 4.0", "translation.Y", frame, field), 1.7, 0.001)
    close(at("Block 0.0", "translation.Y", frame, field), 0.4, 0.001)
close(at("Block 2.2", "translation.Y", 24 * 40, field), 0.4, 0.001)  # and comes to rest
close(at("Block 2.2", "rotation.Y", 18, field), 22.5, 0.01)
close(at("Block 1.3", "rotation.Y", 18, field), 67.5, 0.01)  # runs backwards
)");
    }

    void scripts()
    {
        QFETCH(QByteArray, check);
        const QTemporaryDir folder;
        QFile file(folder.filePath("check.py"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("import math\n"
                   "def at(name, channel, frame, clip=None):\n"
                   "    setCurrentFrame(frame) if clip is None else showAnimation(clip, frame)\n"
                   "    return channelValue(findNode(name), channel)\n"
                   "def close(value, wanted, error=0.0005):\n"
                   "    assert abs(value - wanted) <= error, (value, wanted)\n" +
                   check);
        file.close();
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("KX_SETTINGS_DIR", folder.filePath("settings"));
        process.setProcessEnvironment(environment);
        const QString script = QStringLiteral(KX_EXAMPLES "/%1.py").arg(QTest::currentDataTag());
        const QString scene = folder.filePath("made.kxs"), picture = folder.filePath("picture.png");
        QFile save(folder.filePath("save.py"));
        QVERIFY(save.open(QIODevice::WriteOnly) && save.write("saveScene(r'" + scene.toUtf8() + "')\n") > 0);
        save.close();
        const auto run = [&](const QStringList& arguments)
        {
            process.start(QStringLiteral(KX_HOST), arguments);
            return process.waitForFinished(120000) && process.exitStatus() == QProcess::NormalExit &&
                   process.exitCode() == 0;
        };
        QVERIFY2(run({"--headless", "--script", script, "--script", save.fileName(), "--script", file.fileName()}),
                 process.readAllStandardError().constData());
        // What was saved moves in the same way, and is worth a picture.
        QVERIFY2(run({"--headless", scene, "--script", file.fileName(), "--render", picture, "--size", "192x108"}),
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
