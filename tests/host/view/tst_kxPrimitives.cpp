#include <view/kxPrimitives.h>

#include <QVector3D>
#include <QtTest>

#include <map>

using osg::Vec2f;
using osg::Vec3f;

Q_DECLARE_METATYPE(osg::MeshPtr)

class tst_kxPrimitives : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void bodies_data()
    {
        // The rows hold no share: what is made for them lives until the test has ended.
        const auto owned = [this](const osg::MeshPtr& mesh)
        {
            mesh->addRef();
            _meshes.push_back(mesh);
            return mesh;
        };
        QTest::addColumn<osg::MeshPtr>("mesh");
        QTest::addColumn<float>("volume"); // of the exact body
        QTest::addColumn<float>("slack");
        const float pi = float(M_PI);
        QTest::newRow("box") << owned(kxPrimitives::box(Vec3f(1, 2, 3))) << 6.0f << 1e-4f;
        QTest::newRow("rounded box") << owned(kxPrimitives::roundedBox(Vec3f(2, 2, 2), 0.5f, 12))
                                     << 1.0f + 6 * 0.5f + 12 * pi * 0.25f / 4 + 4.0f / 3 * pi * 0.125f << 0.05f;
        QTest::newRow("sphere") << owned(kxPrimitives::sphere(1, 96)) << 4.0f / 3 * pi << 0.02f;
        QTest::newRow("cylinder") << owned(kxPrimitives::cylinder(1, 2, 96)) << 2 * pi << 0.02f;
        QTest::newRow("cone") << owned(kxPrimitives::cone(1, 3, 96)) << pi << 0.02f;
        QTest::newRow("torus") << owned(kxPrimitives::torus(2, 0.5f, 128, 64)) << 2 * pi * pi * 2 * 0.25f << 0.05f;
        QTest::newRow("lathe") << owned(kxPrimitives::lathe({Vec2f(0, 0), Vec2f(1, 0), Vec2f(1, 1), Vec2f(0.5f, 1),
                                                             Vec2f(0.5f, 2), Vec2f(0, 2)},
                                                            96))
                               << 1.25f * pi << 0.02f;
    }

    void bodies()
    {
        QFETCH(osg::MeshPtr, mesh);
        QFETCH(float, volume);
        QFETCH(float, slack);
        QVERIFY(mesh->isValid());
        QCOMPARE(mesh->normals().size(), mesh->positions().size());
        QCOMPARE(mesh->texCoords().size(), mesh->positions().size() / 3 * 2);
        const auto point = [](const std::vector<float>& values, osg::UInt32 i)
        { return QVector3D(values[3 * i], values[3 * i + 1], values[3 * i + 2]); };
        // Triangles that run the wrong way round, gaps and doubled faces all spoil the volume.
        float sum = 0;
        const std::vector<osg::UInt32>& indices = mesh->indices();
        for (std::size_t i = 0; i < indices.size(); i += 3)
        {
            const QVector3D a = point(mesh->positions(), indices[i]), b = point(mesh->positions(), indices[i + 1]),
                            c = point(mesh->positions(), indices[i + 2]);
            sum += QVector3D::dotProduct(a, QVector3D::crossProduct(b, c)) / 6;
            const QVector3D face = QVector3D::crossProduct(b - a, c - a);
            QVERIFY2(face.length() > 1e-9f, "a triangle without area");
            for (int k = 0; k < 3; ++k)
            {
                const QVector3D normal = point(mesh->normals(), indices[i + std::size_t(k)]);
                QVERIFY(qAbs(normal.length() - 1) < 1e-4f);
                QVERIFY2(QVector3D::dotProduct(normal, face.normalized()) > 0.5f, "a normal that looks away");
            }
        }
        QVERIFY2(qAbs(sum - volume) <= slack, qPrintable(QString::number(double(sum))));
    }

    void strangeSizesStillMakeABody()
    {
        const float nan = std::numeric_limits<float>::quiet_NaN();
        for (const osg::MeshPtr& mesh :
             {kxPrimitives::box(Vec3f(0, -1, nan)), kxPrimitives::roundedBox(Vec3f(1, 1, 1), 9, -4),
              kxPrimitives::sphere(nan, 0), kxPrimitives::cylinder(1, 0, 1), kxPrimitives::torus(-1, nan, 1000000, 3),
              kxPrimitives::plane(nan, 0)})
        {
            QVERIFY(mesh != osg::NullFC && mesh->isValid() && mesh->triangleCount() > 0);
            mesh->addRef();
            _meshes.push_back(mesh);
        }
        QVERIFY(kxPrimitives::lathe({Vec2f(1, 1)}) == osg::NullFC);
    }

    void cleanupTestCase()
    {
        for (const osg::MeshPtr& mesh : _meshes)
            mesh->subRef();
    }

private:
    std::vector<osg::MeshPtr> _meshes; // a share of each
};

QTEST_APPLESS_MAIN(tst_kxPrimitives)
#include "tst_kxPrimitives.moc"
