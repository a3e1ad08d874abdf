#include "kxFilesFixture.h"

#include <osg/AnimAttachments.h>
#include <osg/FieldContainerFactory.h>
#include <osg/Image.h>
#include <scene/CameraLight.h>
#include <scene/FieldDescription.h>
#include <scene/Mesh.h>
#include <scene/UberMaterial.h>

#include <QtTest>
#include <kxTable.h>

#include <algorithm>
#include <numeric>

using namespace osg;

namespace
{
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
std::vector<double> contentOfScene()
{
    std::vector<double> result;
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
        result.insert(result.end(), {double(count), sum.total});
    }
    return result;
}
} // namespace

/// Opens every model of the installed collection, good and malformed.
class tst_kxModels : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        if (modelsFolder().isEmpty())
            QSKIP("the model collection isn't installed");
    }

    /// What all models together hold, as they are read and as they come back from an export. Where that changes on
    /// purpose, the rows of before and after show which models.
    void contents()
    {
        const QTemporaryDir folder;
        std::vector<double> all(40, 0.0);
        QStringList rows;
        const auto take = [&](const QByteArray& name, std::size_t place)
        {
            const double weight = 1 + std::accumulate(name.begin(), name.end(), 0) % 101 / 100.0;
            QString row = QString::fromUtf8(name);
            for (const double value : contentOfScene())
            {
                all[place++] += weight * std::asinh(value); // the small ones count as much as the large ones
                row += QStringLiteral(" %1").arg(value, 0, 'g', 6);
            }
            rows << row;
        };
        const QStringList known = kxSceneIO::openFilter().section('(', 1).section(')', 0, 0).split(' ');
        QDirIterator files(modelsFolder(), known, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext())
        {
            const QByteArray name = files.next().mid(modelsFolder().size() + 1).toUtf8();
            if (name.contains("OutOfMemory"))
                continue;
            kxSceneIO::newScene();
            kxFileReport report(files.filePath());
            const bool opened = kxSceneIO::open(files.filePath(), report);
            QVERIFY2(opened == report.error().isEmpty(), name.constData());
            if (!opened)
                continue;
            take(name, 0);
            const QString copy =
                folder.filePath(name.endsWith('b') ? QStringLiteral("a.gltf") : QStringLiteral("a.glb"));
            kxFileReport written(copy), read(copy);
            if (files.fileInfo().size() < 400000 && kxSceneIO::exportScene(copy, written) &&
                kxSceneIO::open(copy, read))
                take(name, 20);
        }
        const double expected[] = {1323.5099, 4632.9494, 539.4721, 628.2670,  559.8313,  4965.3989, 54.4132,  269.8579,
                                   525.7496,  3733.2546, 94.9939,  1611.7080, 101.2092,  790.3658,  100.6917, 312.2729,
                                   947.2866,  4211.7070, 308.0799, 950.6120,  1147.3156, 4085.1926, 447.2299, 527.3530,
                                   477.9500,  4239.8372, 43.3530,  190.4478,  435.9575,  3262.1361, 87.1349,  1337.7291,
                                   82.7580,   646.2589,  81.6798,  193.4546,  790.8604,  3684.4394, 219.3765, 722.1904};
        QCOMPARE(all.size(), std::size(expected));
        QString numbers;
        for (const double number : all)
            numbers += QStringLiteral("%1, ").arg(number, 0, 'f', 4);
        for (std::size_t i = 0; i < all.size(); ++i)
            if (!(std::abs(all[i] - expected[i]) <= 1.0e-3)) // nor where it is no number
                QFAIL(qPrintable(QStringLiteral("number %1 differs: %2\n").arg(i).arg(numbers) + rows.join('\n')));
    }

    void malformed_data()
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

    void malformed()
    {
        QFETCH(QString, reason);
        kxFileReport report(QString::fromLatin1(QTest::currentDataTag()));
        QVERIFY(!kxSceneIO::open(modelsFolder() + QLatin1Char('/') + QLatin1String(QTest::currentDataTag()), report));
        QVERIFY2(report.error().contains(reason), qPrintable(report.error()));
    }

    /// Of two cubes one is smooth; the cube of a packed file is flat.
    void flatFacesStayFlat()
    {
        QSet<int> squares;
        const auto open = [&squares](const char* name)
        {
            squares.clear();
            kxFileReport report(modelsFolder() + QStringLiteral("/BLEND/") + QLatin1String(name));
            return kxSceneIO::open(report.file(), report);
        };
        const auto count = [&squares]
        {
            traverse(kxScene::the()->root(),
                     [&squares](const NodePtr& node)
                     {
                         if (const GeometryPtr geometry = GeometryPtr::dcast(node->getCore()))
                         {
                             const std::vector<float> normals = MeshPtr::dcast(geometry->getMesh())->normals();
                             squares.insert(int(std::count_if(normals.begin(), normals.end(),
                                                              [](float n) { return std::abs(n) > 0.99f; })));
                         }
                         return Action::Continue;
                     });
            return squares;
        };
        QVERIFY(open("SmoothVsSolidCube_248.blend"));
        QCOMPARE(count(), QSet<int>({0, 24})); // a normal along an axis at each corner
        QVERIFY(open("BlenderDefault_250_Compressed.blend"));
        QCOMPARE(count(), QSet<int>({24}));
    }

    void uncompressedTarga()
    {
        kxFileReport report(modelsFolder() + QStringLiteral("/Collada/duck.dae"));
        QVERIFY(kxSceneIO::open(report.file(), report));
        const ImagePtr image = UberMaterialPtr::dcast(kxScene::the()->materials().front())->getBaseColorImage();
        QVERIFY2(image != NullFC && image->getWidth() == 512, qPrintable(report.notes().join('\n')));
    }

    void whatIsNotReadIsNamed_data()
    {
        kxColumns<QString, QString>("model", "said");
        kxRow("names of a compressed file", "/Collada/duck.zae", "told apart by their names alone");
        kxRow("pictures of opacity", "/FBX/maxPbrMaterial_metalRough.fbx",
              "opacity beside those of colour are left out");
        kxRow("pictures of highlights", "/FBX/maxPbrMaterial_specGloss.fbx", "heights and highlights are left out");
    }

    void whatIsNotReadIsNamed()
    {
        QFETCH(QString, model);
        QFETCH(QString, said);
        kxFileReport report(modelsFolder() + model);
        QVERIFY(kxSceneIO::open(report.file(), report));
        QVERIFY2(report.notes().join(' ').contains(said), qPrintable(report.notes().join('\n')));
    }

    void firstVersionGoesToTheOtherReader()
    {
        QDirIterator files(modelsFolder() + QStringLiteral("/glTF"), {QStringLiteral("*.gltf")}, QDir::Files,
                           QDirIterator::Subdirectories);
        QVERIFY(files.hasNext());
        while (files.hasNext())
        {
            kxFileReport report(files.next());
            QVERIFY2(kxSceneIO::open(report.file(), report), qPrintable(report.message()));
            if (!report.file().contains("MilkTruck"))
                continue;
            const QMatrix4x4 wheels = kxSceneMath::worldMatrix(nodeNamed("Wheels"));
            QVERIFY((wheels.map(QVector3D()) - QVector3D(1.43267f, 0.427722f, 0)).length() < 1e-4f);
            QVERIFY((wheels.mapVector(QVector3D(1, 0, 0)) - QVector3D(0.984341f, -0.176277f, 0)).length() < 1e-4f);
            QVERIFY(report.notes().join(' ').contains("animations of the first version"));
        }
    }
};

QTEST_MAIN(tst_kxModels)
#include "tst_kxModels.moc"
