#include "kxFilesFixture.h"

#include <osg/AnimAttachments.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Image.h>
#include <scene/CameraLight.h>
#include <scene/FieldDescription.h>
#include <scene/Mesh.h>
#include <scene/UberMaterial.h>

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
/// The numbers of a value, weighed by their places, so that none can be lost or change places unseen.
struct Sum
{
    void add(double value) { total += value * (1 + (place++ * 7 % 101) / 100.0); }
    void add(const FieldValue& value)
    {
        const auto each = [this](const auto& v)
        {
            typedef std::decay_t<decltype(v)> T;
            if constexpr (std::is_same_v<T, UInt32>)
                add(double(Int32(v))); // masks of all bits
            else if constexpr (std::is_arithmetic_v<T>)
                add(double(v));
            else if constexpr (std::is_same_v<T, MField<CCPnt, 0>>)
                for (const CCPnt& key : v)
                    for (const float number : {key.x(), key.y(), key.inX(), key.inY(), key.outX(), key.outY()})
                        add(double(number));
            else if constexpr (std::is_same_v<T, Vec2f> || std::is_same_v<T, Vec3f> || std::is_same_v<T, Vec4f>)
                for (std::size_t i = 0; i < sizeof(T) / sizeof(float); ++i)
                    add(double(v[i]));
            else if constexpr (std::is_same_v<T, std::vector<float>> || std::is_same_v<T, std::vector<UInt32>> ||
                               std::is_same_v<T, std::vector<UInt8>> || std::is_same_v<T, std::string>)
                for (const auto number : v)
                    add(double(number));
        };
        std::visit(each, value);
    }
    double total = 0;
    std::size_t place = 0;
};

/// For each class: how many the scene has, and the sum of all their numbers.
QString contentOfScene()
{
    QStringList parts;
    for (const FieldContainerType* type :
         {&Node::_type, &Transform::_type, &Mesh::_type, &Skin::_type, &UberMaterial::_type, &osg::Image::_type,
          &Camera::_type, &Light::_type, &AnimNode::_type, &AnimCurve::_type})
    {
        Sum sum;
        int count = 0;
        for (FieldContainer* const container : FieldContainerFactory::the()->getFieldContainerStore())
        {
            if (container == nullptr || &container->getType() != type)
                continue;
            ++count;
            for (const FieldDescription& field : type->fields())
                if (!field.isTransient())
                    sum.add(field.value(*container));
        }
        if (count > 0)
            parts << QStringLiteral("%1 %2 %3").arg(type->getName()).arg(count).arg(sum.total, 0, 'g', 7);
    }
    return parts.join(QLatin1Char(' '));
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
    void contents_data();
    void contents();
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

void tst_kxModels::contents_data()
{
    QTest::addColumn<QString>("expected");
    QTest::newRow("FBX/animation_with_skeleton.fbx")
        << "Node 27 25950.13 Transform 20 2166.208 Mesh 1 1.259321e+07 Skin 1 87203.22 UberMaterial 1 1027.169 Camera "
           "1 19818.04 Light 1 1066.07 AnimNode 318 534352.8 AnimCurve 135 360466.8";
    QTest::newRow("FBX/cubes_with_mirroring_and_pivot.fbx")
        << "Node 9 8354.44 Transform 1 5.1 Mesh 4 429600.4 UberMaterial 2 2216.972 AnimNode 2 2015.78";
    QTest::newRow("FBX/phong_cube.fbx")
        << "Node 6 6570.1 Transform 1 5.1 Mesh 1 651.715 UberMaterial 1 683.6383 AnimNode 2 2015.78";
    QTest::newRow("Collada/lights.dae") << "Node 10 8171.82 Transform 1 13.83437 Mesh 1 25649.75 Skin 1 839.5088 "
                                           "UberMaterial 1 2426.327 Light 4 520.6086 AnimNode 2 2015.78";
    QTest::newRow("Collada/cameras.dae")
        << "Node 8 8668.91 Mesh 1 8773.092 Skin 1 408.54 UberMaterial 1 2426.327 Camera 3 2391.674 AnimNode 2 2015.78";
    QTest::newRow("3DS/CameraRollAnimWithChildObject.3ds")
        << "Node 9 9028.46 Transform 2 -328.2216 Mesh 2 2425.465 UberMaterial 1 860.7189 Camera 1 1690.609 AnimNode 45 "
           "66002.6 AnimCurve 18 36102.9";
    QTest::newRow("OBJ/spider.obj") << "Node 24 21882.18 Transform 1 5.1 Mesh 19 110193.3 UberMaterial 6 7688.078 "
                                       "Image 5 4.356281e+07 AnimNode 2 2015.78";
    QTest::newRow("glTF2/glTF-Sample-Models/AnimatedMorphCube-glTF/AnimatedMorphCube.gltf")
        << "Node 5 7122.57 Mesh 1 603.5536 UberMaterial 1 1027.353 AnimNode 2 2015.78";
    QTest::newRow("glTF2/simple_skin/simple_skin.gltf")
        << "Node 7 6711.8 Transform 2 10.76 Mesh 1 491.225 Skin 1 77.4525 UberMaterial 1 877.759 AnimNode 12 15536.65 "
           "AnimCurve 3 8228.848";
    QTest::newRow("glTF2/cameras/Cameras.gltf")
        << "Node 7 6711.8 Mesh 1 44 UberMaterial 1 877.759 Camera 2 10443.89 AnimNode 2 2015.78";
    QTest::newRow("glTF/CesiumMilkTruck/CesiumMilkTruck.gltf")
        << "Node 14 22542.8 Transform 5 21.41 Mesh 4 7870518 UberMaterial 4 8291.249 Image 1 1.751084e+08 AnimNode 2 "
           "2015.78";
    QTest::newRow("glTF2/BoxTextured-glTF-Binary/BoxTextured.glb")
        << "Node 6 5983.38 Transform 1 -103.8 Mesh 1 748.45 UberMaterial 1 924.6 Image 1 473948 AnimNode 2 2015.78";
    QTest::newRow("X/test.x")
        << "Node 5 5420.28 Mesh 1 622.8718 UberMaterial 1 1309.973 Image 1 4370865 AnimNode 2 2015.78";
    QTest::newRow("FBX/maxPbrMaterial_metalRough.fbx")
        << "Node 6 6441.16 Transform 1 5.1 Mesh 1 953.2769 UberMaterial 1 1540.712 AnimNode 2 2015.78";
}

void tst_kxModels::contents()
{
    kxSceneIO::newScene();
    kxFileReport report(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(kxSceneIO::open(modelsFolder() + QLatin1Char('/') + QLatin1String(QTest::currentDataTag()), report));
    QFETCH(QString, expected);
    const QString content = contentOfScene();
    const QStringList found = content.split(' '), wanted = expected.split(' ');
    QVERIFY2(found.size() == wanted.size(), qPrintable(content));
    for (int i = 0; i < found.size(); ++i)
    {
        bool isNumber = false;
        const double number = wanted[i].toDouble(&isNumber);
        QVERIFY2(isNumber ? std::abs(found[i].toDouble() - number) <= 1.0e-5 * std::abs(number) : found[i] == wanted[i],
                 qPrintable(content));
    }
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
