#include "kxTestObjects.h"

#include <kernel/kxSelection.h>
#include <kxPlaces.h>
#include <kxRenderWidget.h>
#include <kxSendMouse.h>
#include <kxTable.h>
#include <scene/CameraLight.h>
#include <scene/ClippingPlane.h>
#include <view/kxOffscreen.h>
#include <view/kxPrimitives.h>
#include <view/kxView3D.h>
#include <view/kxViewActions.h>

#include <QAction>

#include <functional>

Q_DECLARE_METATYPE(std::function<void(kxView3D&)>)

/// What is drawn, beside pictures that were looked at: pictures/<row>.png. Run with KX_RECORD_PICTURES=1 to make them
/// anew after a change that is meant, and look at each.
class tst_kxPictures : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        _material = kxTestObjects::material(osg::Color3f(0.7f, 0.3f, 0.1f), 0.4f);
        _material->addRef();
    }

    void cleanup()
    {
        kxSelection::the().clear();
        kxScene::the()->clear();
    }

    void rendered_data()
    {
        kxColumns<int, float, bool>("scene", "distance", "quick");
        kxRow("bodies on the floor", 0, 5.0f, false);
        kxRow("bodies on the floor, quickly", 0, 5.0f, true);
        kxRow("from far away", 0, 70.0f, false);
        kxRow("below the ground", 1, 6.0f, false);
        kxRow("high above the ground", 2, 6.0f, false);
        kxRow("lamps", 3, 5.0f, false);
        kxRow("a bent strip and edges", 4, 5.0f, false);
    }

    void rendered()
    {
        QFETCH(int, scene);
        QFETCH(float, distance);
        kxRenderOptions options;
        QFETCH(bool, quick);
        options.quick = quick;
        options.wire = scene == 4;
        const float height = scene == 1 ? -4 : scene == 2 ? 9 : 0;
        const osg::NodePtr node = box(osg::Vec3f(0.8f, height + 0.5f, 0));
        kxTestObjects::add(kxPrimitives::sphere(0.6f), _material, osg::Vec3f(-0.9f, height + 0.6f, 0.4f));
        if (scene == 2)
        {
            QImage squares(8, 8, QImage::Format_RGBA8888);
            for (int i = 0; i < 64; ++i)
                squares.setPixelColor(i % 8, i / 8, QColor(i * 4, (i + i / 8) % 2 * 255, 80));
            const osg::ImagePtr image = osg::Image::create();
            QVERIFY(QImageConverter::convertToOSGImage(squares, image));
            const osg::UberMaterialPtr material = kxTestObjects::material(osg::Color3f(1, 1, 1));
            material->setBaseColorImage(image);
            osg::GeometryPtr::dcast(node->getCore())->setMaterial(material);
        }
        if (scene == 3)
        {
            for (const osg::UInt32 kind : {osg::Light::Directional, osg::Light::PointLight, osg::Light::Spot})
            {
                const osg::LightPtr light = osg::Light::create();
                light->setKind(kind);
                light->setColor(osg::Color3f(kind == 0 ? 0.4f : 0, kind == 1 ? 6 : 0, kind == 2 ? 9 : 0));
                add(light, osg::Vec3f(kind == 1 ? -2 : 1, 2.5f, 1), osg::Vec3f(-70, 10, 0));
            }
        }
        if (scene == 4)
        {
            // Its half hangs down from a joint of its own.
            const osg::Vec3f one(1, 1, 1);
            const osg::NodePtr root = kxTestObjects::addTransform(osg::Vec3f(-1, 1.6f, 1), osg::Vec3f(), one);
            const osg::NodePtr arm = kxTestObjects::addTransform(osg::Vec3f(1, 0, 0), osg::Vec3f(0, 0, -60), one, root);
            const osg::MeshPtr mesh = osg::Mesh::create();
            mesh->setPositions({0, 0, 0, 1, 0, 0, 1, 0, 1, 2, 0, 0, 2, 0, 1});
            mesh->setIndices({0, 2, 1, 1, 2, 3, 3, 2, 4});
            const osg::SkinPtr skin = osg::Skin::create();
            skin->setJoints({root, arm});
            skin->setInverseBindMatrices(
                {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -1, 0, 0, 1});
            skin->setVertexJoints({0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0});
            skin->setVertexWeights({1, 0, 0, 0, 0.7f, 0.3f, 0, 0, 0.7f, 0.3f, 0, 0, 0, 1, 0, 0, 0.2f, 0.8f, 0, 0});
            const osg::NodePtr strip = kxTestObjects::add(mesh, _material, osg::Vec3f());
            osg::GeometryPtr::dcast(strip->getCore())->setSkin(skin);
            add(osg::ClippingPlane::create(), osg::Vec3f(0.9f, 0.5f, 0), osg::Vec3f(0, 80, 0));
        }
        kxOffscreen offscreen;
        QCOMPARE(offscreen.problem(), QString());
        offscreen.scene().update();
        offscreen.render(90, 60, kxViewCamera(), options); // of another size
        offscreen.scene().setSelection({node->getId()});
        kxCameraRig rig;
        rig.setPose({QVector3D(0, height + 0.5f, 0), distance, 35, 20});
        compare(offscreen.render(200, 150, rig.camera(4.0f / 3, offscreen.scene().bounds()), options));
    }

    void view_data()
    {
        kxColumns<Work>("work");
        const auto with = [](kxGizmo::Tool tool, bool local) -> Work
        {
            return [tool, local](kxView3D& view)
            {
                view.setTool(tool);
                view.setLocalAxes(local);
            };
        };
        kxRow<Work>("nothing", [](kxView3D&) { kxScene::the()->clear(); });
        kxRow<Work>("move", with(kxGizmo::MoveTool, false));
        kxRow<Work>("move along its own axes", with(kxGizmo::MoveTool, true));
        kxRow<Work>("rotate", with(kxGizmo::RotateTool, false));
        kxRow<Work>("scale", with(kxGizmo::ScaleTool, false));
        kxRow<Work>("a drag in steps",
                    [](kxView3D& view)
                    {
                        view.setTool(kxGizmo::MoveTool);
                        const QPoint middle(120, 90);
                        kxPress(&view, middle);
                        kxDragTo(&view, middle + QPoint(31, -22), Qt::ControlModifier);
                    });
        kxRow<Work>("without the grid",
                    [](kxView3D& view) { view.actions3D()->findChild<QAction*>("grid")->setChecked(false); });
        kxRow<Work>(
            "signs of lamps and cameras",
            [](kxView3D&)
            {
                add(osg::Camera::create(), osg::Vec3f(-1.5f, 1, 1), osg::Vec3f(-20, -50, 10));
                for (const osg::UInt32 kind : {osg::Light::Directional, osg::Light::PointLight, osg::Light::Spot})
                {
                    const osg::LightPtr light = osg::Light::create();
                    light->setKind(kind);
                    add(light, osg::Vec3f(float(kind) - 1, 1.6f, -0.5f), osg::Vec3f(-60, 30, 0));
                }
                const auto& root = kxScene::the()->root();
                kxSelection::the().setIds(kxSelection::Nodes, {root->getChild(1)->getId(), root->getChild(2)->getId()});
            });
        const auto cut = [](float distance, float yaw) -> Work
        {
            return [distance, yaw](kxView3D& view)
            {
                add(osg::ClippingPlane::create(), osg::Vec3f(0, 0.2f, 0.3f), osg::Vec3f(10, 30, 0));
                view.setPose({QVector3D(0, 0.3f, 0.3f), distance, yaw, 25});
            };
        };
        kxRow<Work>("a clipping plane", cut(5, 10));
        kxRow<Work>("a clipping plane around the eye", cut(0.25f, 110));
    }

    void view()
    {
        QFETCH(Work, work);
        const osg::NodePtr node = box(osg::Vec3f(0, 0.5f, 0), osg::Vec3f(1, 0.6f, 1.4f));
        osg::TransformPtr::dcast(node->getCore())->setEulerRotation(osg::Vec3f(15, 40, 0));
        kxSelection::the().setIds(kxSelection::Nodes, {node->getId()});
        kxView3D view;
        view.resize(240, 180);
        view.setAttribute(Qt::WA_DontShowOnScreen); // the first frame is that of the picture: no rate is measured yet
        view.show();
        view.setPose({QVector3D(0, 0.5f, 0), 5, 35, 20});
        work(view);
        compare(view.grabFrameBuffer(false));
        if (QTest::currentDataTag() != QByteArray("a drag in steps")) // which is painted quickly
            compare(view.grab().toImage());
    }

private:
    typedef std::function<void(kxView3D&)> Work;

    static void compare(const QImage& image)
    {
        const QString name = QString(QTest::currentDataTag()).replace(' ', '_');
        const QString file = kxSource("tests/host/view/pictures/" + name + ".png");
        if (qEnvironmentVariableIsSet("KX_RECORD_PICTURES"))
            QVERIFY(image.convertToFormat(QImage::Format_RGB888).save(file));
        const QImage expected(file);
        QCOMPARE(image.size(), expected.size());
        int far = 0, sum = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
            {
                const QRgb a = image.pixel(x, y), b = expected.pixel(x, y);
                const int apart = qAbs(qRed(a) - qRed(b)) + qAbs(qGreen(a) - qGreen(b)) + qAbs(qBlue(a) - qBlue(b));
                sum += apart;
                far += apart > 60;
            }
        const bool same = far <= 8 && sum <= image.width() * image.height();
        if (!same)
            image.save(QDir::temp().filePath(QFileInfo(file).fileName()));
        QVERIFY2(same,
                 qPrintable(QString("%1 pixels, %2 in all; see the folder for temporary files").arg(far).arg(sum)));
    }

    osg::NodePtr box(const osg::Vec3f& place, const osg::Vec3f& size = osg::Vec3f(1, 1, 1))
    {
        return kxTestObjects::add(kxPrimitives::box(size), _material, place);
    }

    static void add(const osg::NodeCorePtr& core, const osg::Vec3f& place, const osg::Vec3f& angles)
    {
        const osg::TransformPtr transform = osg::TransformPtr::dcast(core);
        transform->setTranslation(place);
        transform->setEulerRotation(angles);
        const osg::NodePtr node = osg::Node::create();
        node->setCore(core);
        kxScene::the()->root()->addChild(node);
        osg::markChanged(kxScene::the()->root(), osg::Node::ChildrenFieldMask);
    }

    osg::UberMaterialPtr _material;
};

QTEST_MAIN(tst_kxPictures)
#include "tst_kxPictures.moc"
