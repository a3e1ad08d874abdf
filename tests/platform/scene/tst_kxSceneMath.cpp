#include <osg/Share.h>
#include <scene/Mesh.h>
#include <scene/kxScene.h>

#include <QtTest>

#include <cmath>
#include <random>

using namespace osg;

namespace
{
NodePtr makeNode(const NodeCorePtr& core)
{
    const NodePtr node = Node::create();
    node->setCore(core);
    return node;
}

MeshPtr box(float size)
{
    const MeshPtr mesh = Mesh::create();
    mesh->setPositions({-size, -size, -size, size, size, size, size, -size, size});
    mesh->setIndices({0, 1, 2});
    return mesh;
}

/// The greatest x of what is shown below a node.
float right(const NodePtr& root)
{
    Pnt3f low, high;
    kxSceneMath::worldBounds(root).getBounds(low, high);
    return high.x();
}
} // namespace

class tst_kxSceneMath : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aMatrixSurvivesItsParts()
    {
        std::mt19937 random(3);
        std::uniform_real_distribution<float> angle(-400, 400), place(-50, 50), size(0.2f, 4);
        const TransformPtr transform = Transform::create();
        const osg::Share node(makeNode(transform));
        for (int i = 0; i < 500; ++i)
        {
            transform->setTranslation(Vec3f(place(random), place(random), place(random)));
            transform->setEulerRotation(Vec3f(angle(random), angle(random), angle(random)));
            transform->setEulerRotationOrientation(i % 2 ? Vec3f(30, -70, 110) : Vec3f());
            transform->setScale(Vec3f(size(random), size(random), i % 3 ? size(random) : -size(random)));
            const QMatrix4x4 matrix = transform->getMatrix();
            // From another pose, so that nothing is left over.
            transform->setEulerRotation(Vec3f(1, 2, 3));
            QVERIFY(kxSceneMath::setLocalMatrix(node, matrix));
            const QMatrix4x4 off = transform->getMatrix() - matrix;
            QVERIFY2(std::all_of(off.constData(), off.constData() + 16, [](float d) { return std::abs(d) < 2e-3f; }),
                     qPrintable(QString::number(i)));
        }
        // One without an inverse is refused.
        const Vec3f scale = transform->getScale();
        QMatrix4x4 flat, broken;
        flat.scale(1, 0, 1);
        broken(0, 3) = NAN;
        QVERIFY(!kxSceneMath::setLocalMatrix(node, flat));
        QVERIFY(!kxSceneMath::setLocalMatrix(node, broken));
        QVERIFY(transform->getScale() == scale);
    }

    void anglesGoOnFromTheNearest()
    {
        std::mt19937 random(11);
        std::uniform_real_distribution<float> angle(-720, 720), step(-20, 20);
        for (int i = 0; i < 2000; ++i)
        {
            // Every fourth rotation is in gimbal lock.
            const Vec3f start(angle(random), i % 4 ? angle(random) : (i % 8 ? 90.0f : -90.0f), angle(random));
            float w, x, y, z;
            kxSceneMath::quaternionFromEuler(start, w, x, y, z);
            const Vec3f found =
                kxSceneMath::eulerFromQuaternion(w, x, y, z, start + Vec3f(step(random), step(random), step(random)));
            float w2, x2, y2, z2;
            kxSceneMath::quaternionFromEuler(found, w2, x2, y2, z2);
            const float same = std::abs(w * w2 + x * x2 + y * y2 + z * z2);
            QVERIFY2(same > 0.99999f, qPrintable(QString::number(double(same))));
            if (i % 4 && std::abs(std::cos(double(start.y()) * M_PI / 180)) > 0.5)
                for (std::size_t k = 0; k < 3; ++k)
                    QVERIFY2(std::abs(found[k] - start[k]) < 0.5f, qPrintable(QString::number(i)));
        }
        QVERIFY(kxSceneMath::eulerFromQuaternion(0, 0, 0, 0, Vec3f(1, 2, 3)) == Vec3f(1, 2, 3));
    }

    void onlyWhatIsShownHasBounds()
    {
        const SwitchPtr choice = Switch::create();
        const osg::Share root(makeNode(choice));
        for (int i = 0; i < 2; ++i)
        {
            const GeometryPtr geometry = Geometry::create();
            geometry->setMesh(box(1));
            geometry->setTranslation(Vec3f(10.0f * float(i), 0, 0));
            root->addChild(makeNode(geometry));
        }
        choice->setScale(Vec3f(2, 2, 2));
        choice->setChoice(0);
        QCOMPARE(right(root), 2.0f);
        QVERIFY(!kxSceneMath::isShown(root->getChild(1)));
        choice->setChoice(1);
        QCOMPARE(right(root), 22.0f);
        choice->setChoice(Switch::All);
        QCOMPARE(right(root), 22.0f);
        root->getChild(1)->setTravMask(0);
        QCOMPARE(right(root), 2.0f);
        QVERIFY(!kxSceneMath::isShown(root->getChild(1)));
        choice->setChoice(Switch::None);
        QVERIFY(kxSceneMath::worldBounds(root).isEmpty());
    }

    void skinnedBoundsFollowTheJoints()
    {
        const osg::Share root(makeNode(Transform::create()));
        const NodePtr joint = makeNode(Transform::create());
        root->addChild(joint);
        const GeometryPtr geometry = Geometry::create();
        geometry->setMesh(box(1));
        geometry->setTranslation(Vec3f(500, 0, 0)); // plays no part for a skinned mesh
        const SkinPtr skin = Skin::create();
        skin->setJoints({joint});
        skin->setInverseBindMatrices({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
        skin->setVertexJoints(std::vector<UInt32>(12, 0));
        skin->setVertexWeights({1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0});
        geometry->setSkin(skin);
        root->addChild(makeNode(geometry));
        TransformPtr::dcast(joint->getCore())->setTranslation(Vec3f(7, 0, 0));
        QCOMPARE(right(root), 8.0f);
        root->subChild(joint); // a joint that dies leaves its vertices out
        QCOMPARE(right(root), 0.0f);
    }

    void meshesThatCannotBeDrawnAreKnown()
    {
        const auto isValid = [](std::vector<float> positions, std::vector<UInt32> indices, std::size_t normals = 0,
                                std::size_t coordinates = 0, std::size_t colors = 0)
        {
            const osg::Share mesh(Mesh::create());
            mesh->setPositions(std::move(positions));
            mesh->setIndices(std::move(indices));
            mesh->setNormals(std::vector<float>(normals));
            mesh->setTexCoords(std::vector<float>(coordinates));
            mesh->setColors(std::vector<float>(colors));
            return mesh->isValid();
        };
        const std::vector<float> two = {0, 1, 2, 3, 4, 5};
        QVERIFY(isValid(two, {0, 1, 0}) && isValid(two, {0, 1, 1}, 6, 4, 8) && isValid({}, {}));
        QVERIFY(!isValid({0, 1, 2, 3}, {}) && !isValid(two, {0, 1}) && !isValid(two, {0, 1, 2}));
        QVERIFY(!isValid(two, {0, 1, 1}, 3) && !isValid(two, {0, 1, 1}, 0, 6) && !isValid(two, {0, 1, 1}, 0, 0, 6));
        QVERIFY(!isValid({0, 1, NAN, 3, 4, 5}, {0, 1, 1}));
    }

    /// Two faces share an edge; the larger weighs more, by its area.
    void normalsFollowTheFaces()
    {
        const QVector3D points[] = {{1, 2, 3}, {5, 3, 2}, {2, 7, 4}, {-2, 4, 9}};
        const osg::Share mesh(Mesh::create());
        std::vector<float> positions;
        for (const QVector3D& p : points)
            positions.insert(positions.end(), {p.x(), p.y(), p.z()});
        mesh->setPositions(positions);
        mesh->setIndices({0, 1, 2, 0, 2, 3});
        mesh->computeNormals();
        const QVector3D one = QVector3D::crossProduct(points[1] - points[0], points[2] - points[0]);
        const QVector3D two = QVector3D::crossProduct(points[2] - points[0], points[3] - points[0]);
        const QVector3D expected[] = {one + two, one, one + two, two};
        for (std::size_t i = 0; i < 4; ++i)
        {
            const float* const n = &mesh->normals()[3 * i];
            QVERIFY((QVector3D(n[0], n[1], n[2]) - expected[i].normalized()).length() < 1.0e-5f);
        }
    }
};

QTEST_GUILESS_MAIN(tst_kxSceneMath)
#include "tst_kxSceneMath.moc"
