#include "kxFilesFixture.h"

#include <osg/AnimAttachments.h>
#include <scene/Mesh.h>

#include <QElapsedTimer>
#include <QtTest>

#include <cmath>

using namespace osg;

namespace
{
constexpr qint64 LongestRead = 30000; ///< milliseconds, also under sanitizers

/// What is wrong in the open scene, empty for nothing.
QString faultOf(const NodePtr& node)
{
    const GeometryPtr geometry = GeometryPtr::dcast(node->getCore());
    const QMatrix4x4 matrix = kxSceneMath::localMatrix(node);
    for (int i = 0; i < 16; ++i)
        if (!std::isfinite(matrix.constData()[i]))
            return QStringLiteral("place");
    if (geometry != NullFC && geometry->getMesh() != NullFC)
    {
        const MeshPtr mesh = MeshPtr::dcast(geometry->getMesh());
        const SkinPtr skin = SkinPtr::dcast(geometry->getSkin());
        if (!mesh->isValid())
            return QStringLiteral("mesh");
        if (mesh->normals().size() != mesh->positions().size())
            return QStringLiteral("normals");
        if (skin != NullFC && !skin->isValid(mesh->vertexCount()))
            return QStringLiteral("skin");
    }
    if (const AnimAttachmentPtr attachment = node->findAttachment<AnimAttachment>())
    {
        std::vector<AnimCurvePtr> curves;
        kxAnimManager::the()->getAnimCurves(attachment->getAnimationRoot(), curves, true, false, true);
        for (const AnimCurvePtr& curve : curves)
            for (UInt32 i = 0; i < curve->getControlPoints().getSize(); ++i)
            {
                const CCPnt& key = curve->getControlPoints(i);
                if (!std::isfinite(key.x() + key.y() + key.inX() + key.inY() + key.outX() + key.outY()) ||
                    (i > 0 && key.x() <= curve->getControlPoints(i - 1).x()))
                    return QStringLiteral("keys");
            }
    }
    return QString();
}
} // namespace

/// Opens every model of the installed collection, good and malformed.
class tst_kxModels : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void opens_data();
    void opens();
    void malformed_data();
    void malformed();
    void firstVersionGoesToTheOtherReader();
};

void tst_kxModels::initTestCase()
{
    if (modelsFolder().isEmpty())
        QSKIP("the model collection isn't installed");
}

void tst_kxModels::opens_data()
{
    QTest::addColumn<QString>("path");
    QDirIterator files(modelsFolder(), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
    {
        const QString path = files.next();
#ifdef KX_SANITIZED
        if (path.contains(QLatin1String("OutOfMemory"))) // the limit on memory is off there
            continue;
#endif
        if (kxSceneIO::canOpen(path))
            QTest::newRow(qPrintable(path.mid(modelsFolder().size() + 1))) << path;
    }
}

void tst_kxModels::opens()
{
    QFETCH(QString, path);
    kxSceneIO::newScene();
    addNode(kxScene::the()->root(), "stays", Transform::create());
    const QByteArray before = bytesOfScene();
    kxFileReport report(path);
    QElapsedTimer timer;
    timer.start();
    const bool opened = kxSceneIO::open(path, report);
    QVERIFY2(timer.elapsed() < LongestRead, "too slow");
    if (!opened)
    {
        QVERIFY(!report.error().isEmpty());
        QVERIFY(report.message().contains(path));
        QCOMPARE(bytesOfScene(), before);
        return;
    }
    QVERIFY(!report.failed());
    QVERIFY(nodeNamed("stays") == NullFC);
    QString fault;
    traverse(kxScene::the()->root(),
             [&fault](const NodePtr& node)
             {
                 fault = faultOf(node);
                 return fault.isEmpty() ? Action::Continue : Action::Quit;
             });
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

void tst_kxModels::malformed_data()
{
    QTest::addColumn<QString>("reason"); // what the error has to name
    QTest::newRow("glTF2/wrongTypes/badArray.gltf") << "meshes[0].primitives";
    QTest::newRow("glTF2/wrongTypes/badString.gltf") << "scenes[0].name";
    QTest::newRow("glTF2/wrongTypes/badUint.gltf") << "baseColorTexture.index: an index";
    QTest::newRow("glTF2/wrongTypes/badNumber.gltf") << "normalTexture.index";
    QTest::newRow("glTF2/wrongTypes/badObject.gltf") << "an object";
    QTest::newRow("glTF2/IndexOutOfRange/IndexOutOfRange.gltf") << "index";
    QTest::newRow("glTF2/IndexOutOfRange/AllIndicesOutOfRange.gltf") << "index";
    QTest::newRow("glTF2/MissingBin/BoxTextured.gltf") << "BoxTextured0.bin";
    QTest::newRow("glTF2/RecursiveNodes/RecursiveNodes.gltf") << "contains itself";
    QTest::newRow("glTF2/SchemaFailures/sceneWrongType.gltf") << "scene";
    QTest::newRow("glTF2/TestNoRootNode/NoScene.gltf") << "scenes";
    QTest::newRow("glTF2/TestNoRootNode/SceneWithoutNodes.gltf") << "no objects";
    QTest::newRow("glTF2/draco/2CylinderEngine.gltf") << "KHR_draco_mesh_compression";
    QTest::newRow("glTF2/BoxWithInfinites-glTF-Binary/BoxWithInfinites.glb") << "finite";
    QTest::newRow("invalid/empty.obj") << "";
#ifndef KX_SANITIZED
    QTest::newRow("invalid/OutOfMemory.off") << "claims more";
#endif
}

void tst_kxModels::malformed()
{
    QFETCH(QString, reason);
    kxFileReport report(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(!kxSceneIO::open(modelsFolder() + QLatin1Char('/') + QLatin1String(QTest::currentDataTag()), report));
    QVERIFY2(report.error().contains(reason), qPrintable(report.error()));
}

void tst_kxModels::firstVersionGoesToTheOtherReader()
{
    QDirIterator files(modelsFolder() + QStringLiteral("/glTF"), {QStringLiteral("*.gltf")}, QDir::Files,
                       QDirIterator::Subdirectories);
    QVERIFY(files.hasNext());
    while (files.hasNext())
    {
        kxFileReport report(files.next());
        QVERIFY2(kxSceneIO::open(report.file(), report), qPrintable(report.message()));
    }
}

QTEST_MAIN(tst_kxModels)
#include "tst_kxModels.moc"
