#include "kxTestObjects.h"

#include <scene/ClippingPlane.h>
#include <view/kxPicking.h>
#include <view/kxPrimitives.h>
#include <view/kxSkinning.h>

#include <QtTest>

#include <random>

namespace
{
float randomFloat(std::mt19937& random, float reach)
{
    return std::uniform_real_distribution<float>(-reach, reach)(random);
}

QVector3D randomPoint(std::mt19937& random, float reach)
{
    const float x = randomFloat(random, reach), y = randomFloat(random, reach);
    return QVector3D(x, y, randomFloat(random, reach));
}

kxRay towards(const QVector3D& from, const QVector3D& to)
{
    return {from, (to - from).normalized()};
}
} // namespace

class tst_kxPicking : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void treeFindsWhatATestOfAllFinds()
    {
        std::mt19937 random(11);
        for (const int count : {1, 5, 300, 4000})
        {
            std::vector<float> positions;
            std::vector<osg::UInt32> indices;
            for (int i = 0; i < count; ++i)
            {
                // Some lie flat in one plane, where boxes have no height.
                const QVector3D middle = randomPoint(random, 10);
                for (int k = 0; k < 3; ++k)
                {
                    QVector3D p = middle + randomPoint(random, 1);
                    if (i % 5 == 0)
                        p.setY(2);
                    positions.insert(positions.end(), {p.x(), p.y(), p.z()});
                    indices.push_back(osg::UInt32(indices.size()));
                }
            }
            kxMeshBvh bvh;
            bvh.build(positions, indices);
            for (int i = 0; i < 400; ++i)
            {
                const QVector3D from = randomPoint(random, 20);
                const QVector3D direction = (randomPoint(random, 8) - from) * 0.01f;
                const kxMeshBvh::Sides sides = kxMeshBvh::Sides(i % 3);
                float nearest = std::numeric_limits<float>::max();
                for (std::size_t t = 0; t < indices.size(); t += 3)
                {
                    QVector3D corners[3];
                    for (std::size_t k = 0; k < 3; ++k)
                        corners[k] =
                            QVector3D(positions[3 * (t + k)], positions[3 * (t + k) + 1], positions[3 * (t + k) + 2]);
                    float distance = 0;
                    if (kxMeshBvh::hitTriangle(from, direction, corners, sides, distance))
                        nearest = std::min(nearest, distance);
                }
                kxMeshBvh::Hit hit;
                const bool found = bvh.hit(from, direction, std::numeric_limits<float>::max(), sides, hit);
                QCOMPARE(found, nearest < std::numeric_limits<float>::max());
                if (found)
                    QCOMPARE(hit.distance, nearest);
            }
        }
    }

    void degenerateMeshesAreHarmless()
    {
        kxMeshBvh bvh;
        kxMeshBvh::Hit hit;
        QVERIFY(!bvh.hit(QVector3D(), QVector3D(0, 0, 1), 1, kxMeshBvh::Both, hit));
        bvh.build({}, {});
        QVERIFY(!bvh.hit(QVector3D(), QVector3D(0, 0, 1), 1, kxMeshBvh::Both, hit));
        // Ten thousand triangles in one point must not make the tree as deep as there are triangles.
        bvh.build(std::vector<float>(9, 1.0f), std::vector<osg::UInt32>(30000, 1));
        QVERIFY(!bvh.hit(QVector3D(1, 1, 0), QVector3D(0, 0, 1), 10, kxMeshBvh::Both, hit));
    }

    void placesSidesAndChangesCount()
    {
        const osg::UberMaterialPtr material = kxTestObjects::material(osg::Color3f(1, 1, 1));
        const osg::NodePtr turned =
            kxTestObjects::addTransform(osg::Vec3f(5, 0, 0), osg::Vec3f(90, 0, 0), osg::Vec3f(4, 1, -4));
        const osg::MeshPtr plane = kxPrimitives::plane();
        const osg::NodePtr node = kxTestObjects::add(plane, material, osg::Vec3f(0, 0, 0), turned);
        kxRenderScene scene;
        scene.update();
        QVERIFY(scene.items()[0].mirrored);
        kxPicking picking;
        // Turned and mirrored, the plane faces +z and covers x from 3 to 7.
        const auto fromFront = [](float x) { return towards(QVector3D(x, 0, 9), QVector3D(x, 0, 0)); };
        const auto fromBack = [](float x) { return towards(QVector3D(x, 0, -9), QVector3D(x, 0, 0)); };
        QCOMPARE(picking.pick(scene, fromFront(6.9f)).nodeId, node->getId());
        QCOMPARE(picking.pick(scene, fromFront(7.1f)).nodeId, 0u);
        QCOMPARE(picking.pick(scene, fromBack(6)).nodeId, 0u);
        material->setDoubleSided(true);
        osg::markChanged(material, osg::UberMaterial::DoubleSidedFieldMask);
        scene.update();
        QCOMPARE(picking.pick(scene, fromBack(6)).nodeId, node->getId());
        // What is hidden can't be picked.
        node->setTravMask(0);
        osg::markChanged(node, osg::Node::TravMaskFieldMask);
        scene.update();
        QCOMPARE(picking.pick(scene, fromFront(6)).nodeId, 0u);
        node->setTravMask(osg::Node::Active);
        osg::markChanged(node, osg::Node::TravMaskFieldMask);
        // A mesh that changes is looked at anew.
        std::vector<float> positions = plane->positions();
        for (std::size_t i = 0; i < positions.size(); i += 3)
            positions[i] += 10;
        plane->setPositions(positions);
        osg::markChanged(plane, osg::Mesh::MeshFieldMask);
        scene.update();
        QCOMPARE(picking.pick(scene, fromFront(6)).nodeId, 0u);
        QCOMPARE(picking.pick(scene, fromFront(45)).nodeId, node->getId());
    }

    void boundsHoldWhatIsTurned()
    {
        const osg::NodePtr turned =
            kxTestObjects::addTransform(osg::Vec3f(), osg::Vec3f(0, 0, 30), osg::Vec3f(1, 1, 1));
        kxTestObjects::add(kxPrimitives::box(osg::Vec3f(2, 1, 3)), kxTestObjects::material(osg::Color3f(1, 1, 1)),
                           osg::Vec3f(), turned);
        kxRenderScene scene;
        scene.update();
        osg::Pnt3f low, high;
        scene.bounds().getBounds(low, high);
        const float expected[] = {1.1160f, 0.9330f, 1.5f}; // cos 30 + 0.5 sin 30, and so on
        for (std::size_t i = 0; i < 3; ++i)
            QVERIFY(qAbs(high[i] - expected[i]) < 1e-3f && qAbs(low[i] + expected[i]) < 1e-3f);
    }

    void cutAwayIsNotPicked()
    {
        const osg::UberMaterialPtr material = kxTestObjects::material(osg::Color3f(1, 1, 1));
        const osg::NodePtr shell = kxTestObjects::add(kxPrimitives::box(osg::Vec3f(4, 4, 4)), material, osg::Vec3f());
        const osg::NodePtr kernel = kxTestObjects::add(kxPrimitives::box(osg::Vec3f(1, 1, 1)), material, osg::Vec3f());
        const osg::NodePtr node = kxTestObjects::addTransform(osg::Vec3f(), osg::Vec3f(), osg::Vec3f(1, 1, 1));
        const osg::ClippingPlanePtr plane = osg::ClippingPlane::create();
        plane->setTranslation(osg::Vec3f(0, 0, 1));
        node->setCore(plane);
        osg::markChanged(node, osg::Node::CoreFieldMask);
        kxRenderScene scene;
        scene.update();
        kxPicking picking;
        const kxPicking::Hit front = picking.pick(scene, towards(QVector3D(0, 0, 10), QVector3D(0, 0, 0)));
        QCOMPARE(front.nodeId, kernel->getId()); // into the open shell
        QVERIFY(qAbs(front.distance - 9.5f) < 1e-3f && qAbs(front.point.z() - 0.5f) < 1e-3f);
        const kxPicking::Hit inside = picking.pick(scene, towards(QVector3D(1.5f, 0, 10), QVector3D(1.5f, 0, 0)));
        QCOMPARE(inside.nodeId, shell->getId()); // its back from within
        QVERIFY(qAbs(inside.point.z() + 2) < 1e-3f);
        QCOMPARE(picking.pick(scene, towards(QVector3D(-9, 0, 1.5f), QVector3D(0, 0, 1.5f))).nodeId, 0u);
        QCOMPARE(picking.pick(scene, towards(QVector3D(0, 0, -10), QVector3D(0, 0, 0))).nodeId, shell->getId());
    }

    void skinnedMeshIsPickedWhereItIsBent()
    {
        // Two joints; each carries half of a strip. The second one turns its half by a quarter around z.
        const osg::NodePtr root = kxTestObjects::addTransform(osg::Vec3f(), osg::Vec3f(), osg::Vec3f(1, 1, 1));
        const osg::NodePtr arm =
            kxTestObjects::addTransform(osg::Vec3f(1, 0, 0), osg::Vec3f(), osg::Vec3f(1, 1, 1), root);
        const osg::MeshPtr mesh = osg::Mesh::create();
        mesh->setPositions({0, 0, 0, 1, 0, 0, 1, 0, 1, 2, 0, 0, 2, 0, 1});
        mesh->setNormals({0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0});
        mesh->setIndices({0, 2, 1, 1, 2, 3, 3, 2, 4});
        const osg::SkinPtr skin = osg::Skin::create();
        skin->setJoints({root, arm});
        skin->setInverseBindMatrices(
            {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -1, 0, 0, 1});
        skin->setVertexJoints({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0});
        skin->setVertexWeights({1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0});
        // The geometry's own place plays no part.
        const osg::NodePtr node =
            kxTestObjects::add(mesh, kxTestObjects::material(osg::Color3f(1, 1, 1)), osg::Vec3f(50, 50, 50));
        const osg::GeometryPtr geometry = osg::GeometryPtr::dcast(node->getCore());
        geometry->setSkin(skin);
        osg::markChanged(geometry, osg::Geometry::SkinFieldMask);
        kxRenderScene scene;
        scene.update();
        QCOMPARE(scene.items()[0].bent->positions[9], 2.0f);

        const osg::TransformPtr joint = osg::TransformPtr::dcast(arm->getCore());
        joint->setEulerRotation(osg::Vec3f(0, 0, 90));
        osg::markChanged(joint, osg::Transform::EulerRotationFieldMask);
        QVERIFY(scene.update());
        const kxBentMesh& bent = *scene.items()[0].bent;
        const float expected[3] = {1, 1, 0}, normal[3] = {-1, 0, 0};
        for (std::size_t i = 0; i < 3; ++i)
        {
            QVERIFY(qAbs(bent.positions[9 + i] - expected[i]) < 1e-5f);
            QVERIFY(qAbs(bent.normals[9 + i] - normal[i]) < 1e-5f);
        }
        osg::Pnt3f low, high;
        scene.bounds().getBounds(low, high);
        QVERIFY(high.x() < 1.01f && high.y() > 0.99f);
        kxPicking picking;
        QCOMPARE(picking.pick(scene, towards(QVector3D(-5, 0.8f, 0.3f), QVector3D(1, 0.8f, 0.3f))).nodeId,
                 node->getId());
        QCOMPARE(picking.pick(scene, towards(QVector3D(0.5f, 0.5f, -5), QVector3D(0.5f, 0.5f, 1))).nodeId,
                 0u); // beside it
    }

    void cleanup() { kxScene::the()->clear(); }
};

QTEST_GUILESS_MAIN(tst_kxPicking)
#include "tst_kxPicking.moc"
