#include "kxTestObjects.h"

#include <apart/kxPictures.h>
#include <kxRenderWidget.h>
#include <kxTexts.h>
#include <scene/CameraLight.h>
#include <scene/ClippingPlane.h>
#include <view/kxCameraRig.h>
#include <view/kxOffscreen.h>
#include <view/kxPrimitives.h>

#include <QBuffer>
#include <QtTest>

#include <random>

/// What is drawn without a window, held to rules. Beside it are the pictures of tst_kxPictures.
class tst_kxRenderer : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { _offscreen = std::make_unique<kxOffscreen>(); }

    void cleanup()
    {
        _offscreen.reset();
        kxScene::the()->clear();
        _pose = {QVector3D(0, 0, 0), 3, 0, 0};
        _selection.clear();
    }

    void materialsShow()
    {
        const osg::UberMaterialPtr red = kxTestObjects::material(osg::Color3f(0.8f, 0.02f, 0.02f));
        const osg::NodePtr node = kxTestObjects::add(kxPrimitives::box(), red, osg::Vec3f(0, 0, 0));
        QColor color = middle(picture());
        QVERIFY(color.red() > 2 * color.green() && color.red() > 2 * color.blue() && color.red() > 90);
        kxRenderOptions clear = bare();
        clear.transparent = true;
        const QImage cut = picture(clear);
        QCOMPARE(qAlpha(cut.pixel(48, 48)), 255);
        QCOMPARE(qAlpha(cut.pixel(2, 2)), 0);
        // A picture, its top at the top.
        QImage halves(8, 8, QImage::Format_RGBA8888);
        halves.fill(Qt::blue);
        for (int x = 0; x < 8; ++x)
            for (int y = 0; y < 4; ++y)
                halves.setPixelColor(x, y, Qt::green);
        const osg::ImagePtr image = osg::Image::create();
        QVERIFY(QImageConverter::convertToOSGImage(halves, image));
        red->setBaseColor(osg::Color3f(1, 1, 1));
        red->setBaseColorImage(image);
        osg::markChanged(red, osg::FieldBits);
        const QImage textured = picture();
        const QColor top = textured.pixelColor(48, 36), bottom = textured.pixelColor(48, 60);
        QVERIFY(top.green() > 2 * top.blue() && bottom.blue() > 2 * bottom.green());
        // The picture itself changes.
        halves.fill(Qt::red);
        QVERIFY(QImageConverter::convertToOSGImage(halves, image));
        osg::markChanged(image, osg::FieldBits);
        color = middle(picture());
        QVERIFY(color.red() > 2 * color.green());
        node->setTravMask(0);
        osg::markChanged(node, osg::Node::TravMaskFieldMask);
        QCOMPARE(qAlpha(picture(clear).pixel(48, 48)), 0);
    }

    /// Each on one half of a quad that looks at the eye, with the other half as it would be without.
    void picturesShapeTheSurface()
    {
        const osg::UberMaterialPtr material = kxTestObjects::material(osg::Color3f(0.5f, 0.5f, 0.5f));
        const osg::MeshPtr quad = osg::Mesh::create();
        quad->setPositions({-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0});
        quad->setNormals({0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1});
        quad->setTexCoords({0, 1, 1, 1, 1, 0, 0, 0});
        quad->setIndices({0, 1, 2, 0, 2, 3});
        kxTestObjects::add(quad, material, osg::Vec3f(0, 0, 0));
        const auto halves = [&](const QColor& upper, const QColor& lower)
        {
            QImage pixels(8, 8, QImage::Format_RGBA8888);
            for (int y = 0; y < 8; ++y)
                for (int x = 0; x < 8; ++x)
                    pixels.setPixelColor(x, y, y < 4 ? upper : lower);
            const osg::ImagePtr image = osg::Image::create();
            QImageConverter::convertToOSGImage(pixels, image);
            return image;
        };
        const auto colors = [&]
        {
            osg::markChanged(material, osg::FieldBits);
            const QImage seen = picture();
            return std::make_pair(seen.pixelColor(48, 36), seen.pixelColor(48, 60));
        };
        const auto plain = colors();
        // Up to the studio's lamp, and down: green is up.
        material->setNormalImage(halves(QColor(128, 230, 200), QColor(128, 26, 200)));
        const auto bumped = colors();
        QVERIFY(bumped.first.green() > bumped.second.green() + 15);
        material->setNormalImage(halves(QColor(128, 128, 255), QColor(128, 128, 255)));
        QVERIFY(std::abs(colors().first.green() - plain.first.green()) <= 2);
        material->setNormalImage(osg::ImagePtr());
        material->setEmissive(osg::Color3f(0.9f, 0.9f, 0.9f));
        material->setEmissiveImage(halves(Qt::red, Qt::black));
        const auto glowing = colors();
        QVERIFY(glowing.first.red() > plain.first.red() + 30 && glowing.first.red() > glowing.first.green() + 30);
        QVERIFY(std::abs(glowing.second.red() - plain.second.red()) <= 2);
        material->setEmissiveImage(osg::ImagePtr());
        material->setEmissive(osg::Color3f());
        material->setOcclusionImage(halves(Qt::white, Qt::black));
        const auto dim = colors();
        QVERIFY(std::abs(dim.first.red() - plain.first.red()) <= 2 && dim.second.red() < plain.second.red() - 15);
        material->setOcclusionImage(osg::ImagePtr());
        material->setMetallic(1);
        const auto metal = colors();
        material->setRoughnessImage(halves(QColor(0, 255, 255), QColor(0, 255, 0)));
        const auto mixed = colors();
        QVERIFY(std::abs(mixed.first.red() - metal.first.red()) <= 2);
        QVERIFY(std::abs(mixed.second.red() - plain.second.red()) <= 2 && mixed.second != metal.second);
    }

    /// Of more than all may take the rest isn't shown; what goes makes room.
    void picturesTakeAShare()
    {
        kxPictures::rules().memory = 4 * 600 * 600;
        const auto painted = [](const QColor& color, bool isFile)
        {
            QImage pixels(500, 500, QImage::Format_RGBA8888);
            pixels.fill(color);
            const osg::ImagePtr image = osg::Image::create();
            QImageConverter::convertToOSGImage(pixels, image);
            QBuffer buffer;
            buffer.open(QIODevice::WriteOnly);
            pixels.save(&buffer, "PNG");
            if (isFile)
            {
                image->set(0, 0, {});
                image->setEncoded({buffer.data().begin(), buffer.data().end()});
            }
            return image;
        };
        for (const bool isFile : {false, true})
        {
            const osg::UberMaterialPtr material = kxTestObjects::material(osg::Color3f(1, 1, 1));
            kxTestObjects::add(kxPrimitives::box(), material, osg::Vec3f(0, 0, 0));
            material->setNodeName("tiles");
            material->setBaseColorImage(painted(Qt::green, false));
            material->setEmissive(osg::Color3f(1, 1, 1));
            material->setEmissiveImage(painted(Qt::blue, isFile));
            kxLogModel::the().clear();
            QVERIFY(qRed(picture().pixel(48, 48)) > 200); // the emissive colour without its picture: white
            QVERIFY(kxLogged().join('|').contains("A picture of the material tiles (500 x 500) isn't shown"));
            kxScene::the()->clear();
        }
        kxPictures::rules() = kxPictures::Rules();
    }

    void theFirstPictureIsAsTheSecond()
    {
        const osg::UberMaterialPtr material = kxTestObjects::material(osg::Color3f(1, 1, 1));
        QImage pixels(8, 8, QImage::Format_RGBA8888);
        pixels.fill(Qt::green);
        const osg::ImagePtr image = osg::Image::create();
        QVERIFY(QImageConverter::convertToOSGImage(pixels, image));
        material->setBaseColorImage(image);
        kxTestObjects::add(kxPrimitives::box(), material, osg::Vec3f(0.4f, 0.5f, 0));
        _pose = {QVector3D(0, 0, 0), 4, 30, 30};
        const QImage first = picture(kxRenderOptions()); // uploads the texture between the maps of the shadows
        QVERIFY(first == picture(kxRenderOptions()));
    }

    void sidesAndDepth()
    {
        const osg::UberMaterialPtr red = kxTestObjects::material(osg::Color3f(0.9f, 0, 0));
        const osg::UberMaterialPtr green = kxTestObjects::material(osg::Color3f(0, 0.9f, 0));
        // Without normals, and without culling of the side that looks away.
        const osg::MeshPtr quad = osg::Mesh::create();
        quad->setPositions({-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0});
        quad->setIndices({0, 1, 2, 0, 2, 3});
        const osg::NodePtr front = kxTestObjects::add(quad, red, osg::Vec3f(0, 0, 0.5f));
        kxTestObjects::add(quad, green, osg::Vec3f(0, 0, 0));
        QVERIFY(middle(picture()).red() > 2 * middle(picture()).green());
        const osg::TransformPtr place = osg::TransformPtr::dcast(front->getCore());
        place->setEulerRotation(osg::Vec3f(0, 180, 0));
        osg::markChanged(place, osg::Transform::EulerRotationFieldMask);
        QVERIFY(middle(picture()).green() > 2 * middle(picture()).red());
        red->setDoubleSided(true);
        osg::markChanged(red, osg::UberMaterial::DoubleSidedFieldMask);
        QVERIFY(middle(picture()).red() > 2 * middle(picture()).green());
        // A mirror turns the sides round.
        red->setDoubleSided(false);
        place->setEulerRotation(osg::Vec3f());
        place->setScale(osg::Vec3f(-1, 1, 1));
        osg::markChanged(red, osg::UberMaterial::DoubleSidedFieldMask);
        osg::markChanged(place, osg::FieldBits);
        QVERIFY(middle(picture()).red() > 2 * middle(picture()).green());
    }

    void opacityAndCutOut()
    {
        const osg::UberMaterialPtr behind = kxTestObjects::material(osg::Color3f(0, 0.9f, 0));
        const osg::UberMaterialPtr pane = kxTestObjects::material(osg::Color3f(0.9f, 0, 0), 1.0f);
        pane->setDoubleSided(true);
        pane->setOpacity(0.5f);
        kxTestObjects::add(kxPrimitives::box(osg::Vec3f(2, 2, 0.1f)), behind, osg::Vec3f(0, 0, -1));
        kxTestObjects::add(kxPrimitives::box(osg::Vec3f(2, 2, 0.1f)), pane, osg::Vec3f(0, 0, 0));
        const QColor both = middle(picture());
        QVERIFY(both.red() > 60 && both.green() > 20 && both.blue() < 60);
        QImage hole(4, 4, QImage::Format_RGBA8888);
        hole.fill(QColor(255, 255, 255, 60));
        const osg::ImagePtr image = osg::Image::create();
        QImageConverter::convertToOSGImage(hole, image);
        pane->setOpacity(1);
        pane->setBaseColorImage(image);
        pane->setAlphaCutoff(0.5f);
        osg::markChanged(pane, osg::FieldBits);
        const QColor through = middle(picture());
        QVERIFY(through.green() > 2 * through.red());
    }

    void selectionHasAnOutline()
    {
        const osg::NodePtr above = kxTestObjects::addTransform(osg::Vec3f(), osg::Vec3f(), osg::Vec3f(1, 1, 1));
        kxTestObjects::add(kxPrimitives::box(), kxTestObjects::material(osg::Color3f(0.2f, 0.2f, 0.2f)), osg::Vec3f(),
                           above);
        const auto orange = [this]
        {
            const QImage image = picture();
            int count = 0;
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                {
                    const QColor c = image.pixelColor(x, y);
                    count += c.red() > 200 && c.blue() < 80 && c.green() > 90 && c.green() < 180;
                }
            return count;
        };
        QCOMPARE(orange(), 0);
        _selection = {above->getId()};
        QVERIFY(orange() > 60);
        QVERIFY(middle(picture()).red() < 200);
    }

    void lightsOfTheSceneCount()
    {
        kxTestObjects::add(kxPrimitives::sphere(1), kxTestObjects::material(osg::Color3f(0.8f, 0.8f, 0.8f)),
                           osg::Vec3f());
        const osg::NodePtr node = osg::Node::create();
        const osg::LightPtr light = osg::Light::create();
        light->setColor(osg::Color3f(0, 0, 1));
        light->setIntensity(3);
        node->setCore(light);
        kxScene::the()->root()->addChild(node);
        osg::markChanged(kxScene::the()->root(), osg::Node::ChildrenFieldMask);
        const QColor lit = middle(picture()); // it shines down -z, from the eye
        QVERIFY(lit.blue() > lit.red() + 30);
        light->setEulerRotation(osg::Vec3f(0, 180, 0));
        osg::markChanged(light, osg::Transform::EulerRotationFieldMask);
        const QColor unlit = middle(picture());
        QVERIFY(unlit.blue() < lit.blue() - 30);
        light->setIntensity(1e9f); // dimmed as a whole, instead of white all over
        light->setColor(osg::Color3f(1, 1, 1));
        light->setKind(osg::Light::PointLight);
        light->setTranslation(osg::Vec3f(0, 0, 20));
        osg::markChanged(light, osg::FieldBits);
        const QColor dimmed = middle(picture());
        QVERIFY2(dimmed.red() > 60 && dimmed.red() < 250, qPrintable(dimmed.name()));
    }

    void surfacesThroughTheEyeAndWildNumbers()
    {
        // The eye lies inside of a box, between its near and far corners, and among triangles of any kind.
        kxTestObjects::add(kxPrimitives::box(osg::Vec3f(40, 8, 40)), kxTestObjects::material(osg::Color3f(0, 0, 0.9f)),
                           osg::Vec3f());
        osg::UberMaterialPtr::dcast(
            osg::GeometryPtr::dcast(kxScene::the()->root()->getChild(0)->getCore())->getMaterial())
            ->setDoubleSided(true);
        const QColor inside = middle(picture());
        QVERIFY(inside.blue() > 2 * inside.red());
        std::mt19937 random(5);
        std::uniform_real_distribution<float> power(-12, 18), any(-1, 1);
        std::vector<float> positions;
        std::vector<osg::UInt32> indices;
        for (int i = 0; i < 900; ++i)
        {
            const float size = std::pow(10.0f, power(random) * (i % 3 == 0 ? 1.0f : 0.1f));
            for (int k = 0; k < 3; ++k)
                positions.push_back(any(random) * size);
            indices.push_back(osg::UInt32(i));
        }
        const osg::MeshPtr wild = osg::Mesh::create();
        wild->setPositions(positions);
        wild->setIndices(indices);
        wild->setNormals(std::vector<float>(positions.size(), 0.0f));
        kxTestObjects::add(wild, kxTestObjects::material(osg::Color3f(1, 1, 1)), osg::Vec3f());
        kxTestObjects::addTransform(osg::Vec3f(), osg::Vec3f(), osg::Vec3f(0, 0, 0));
        QVERIFY(!picture(kxRenderOptions()).isNull());
        QVERIFY(!picture(kxRenderOptions(), QSize(1, 1)).isNull());
        QVERIFY(!picture(kxRenderOptions(), QSize(33, 257)).isNull());
    }

    void clippingPlaneCuts()
    {
        const osg::UberMaterialPtr red = kxTestObjects::material(osg::Color3f(0.9f, 0, 0));
        const osg::UberMaterialPtr green = kxTestObjects::material(osg::Color3f(0, 0.9f, 0));
        kxTestObjects::add(kxPrimitives::box(osg::Vec3f(1, 1, 1)), red, osg::Vec3f());
        kxTestObjects::add(kxPrimitives::box(osg::Vec3f(0.2f, 0.2f, 0.2f)), green, osg::Vec3f()); // within the red one
        const osg::NodePtr node = kxTestObjects::addTransform(osg::Vec3f(), osg::Vec3f(), osg::Vec3f(1, 1, 1));
        const osg::ClippingPlanePtr plane = osg::ClippingPlane::create();
        node->setCore(plane);
        const auto place = [&plane](const osg::Vec3f& at, const osg::Vec3f& angles)
        {
            plane->setTranslation(at);
            plane->setEulerRotation(angles);
            osg::markChanged(plane, osg::Transform::TranslationFieldMask | osg::Transform::EulerRotationFieldMask);
        };
        const auto isRed = [](const QColor& color) { return color.red() > 60 && color.red() > 2 * color.green(); };
        const auto isGreen = [](const QColor& color) { return color.green() > 60 && color.green() > 2 * color.red(); };
        place(osg::Vec3f(0, 0, 0.8f), osg::Vec3f()); // before all
        QVERIFY(isRed(middle(picture())));
        place(osg::Vec3f(0, 0, 0.3f), osg::Vec3f()); // opens the red box
        QVERIFY(isGreen(middle(picture())));
        QVERIFY(isRed(picture().pixelColor(38, 38))); // the inside of its back
        place(osg::Vec3f(0, 0, -0.7f), osg::Vec3f()); // all of it lies before
        QVERIFY(!isRed(middle(picture())) && !isGreen(middle(picture())));
        place(osg::Vec3f(), osg::Vec3f(0, 90, 0)); // the right half
        const QImage half = picture();
        QVERIFY(isRed(half.pixelColor(36, 48)) && !isRed(half.pixelColor(60, 48)) && !isGreen(half.pixelColor(50, 48)));
        place(osg::Vec3f(), osg::Vec3f(0, -90, 0));
        QVERIFY(isRed(picture().pixelColor(60, 48)));
        node->setTravMask(0);
        osg::markChanged(node, osg::Node::TravMaskFieldMask);
        QVERIFY(isRed(picture().pixelColor(36, 48)) && isRed(picture().pixelColor(60, 48)));
        node->setTravMask(osg::Node::Active);
        osg::markChanged(node, osg::Node::TravMaskFieldMask);
        plane->setScale(osg::Vec3f(0, 0, 0)); // no plane is left
        osg::markChanged(plane, osg::Transform::ScaleFieldMask);
        QVERIFY(isRed(picture().pixelColor(36, 48)) && isRed(picture().pixelColor(60, 48)));
        picture(kxRenderOptions()); // with the floor and its shadow
    }

    void impossibleSizesAreRefused()
    {
        for (const QSize& size : {QSize(0, 10), QSize(10, -1), QSize(100000, 2)})
            QVERIFY(_offscreen->render(size.width(), size.height(), kxViewCamera(), kxRenderOptions()).isNull());
    }

private:
    QImage picture(const kxRenderOptions& options = bare(), const QSize& size = QSize(96, 96))
    {
        kxRenderScene& scene = _offscreen->scene();
        scene.setSelection(_selection);
        scene.update();
        kxCameraRig rig;
        rig.setPose(_pose);
        return _offscreen->render(size.width(), size.height(), rig.camera(1, scene.bounds()), options);
    }

    static kxRenderOptions bare()
    {
        kxRenderOptions options;
        options.grid = false;
        options.floorShadow = false;
        return options;
    }

    static QColor middle(const QImage& image) { return image.pixelColor(image.width() / 2, image.height() / 2); }

    std::unique_ptr<kxOffscreen> _offscreen;
    kxCameraRig::Pose _pose{QVector3D(0, 0, 0), 3, 0, 0};
    std::vector<osg::UInt32> _selection;
};

QTEST_MAIN(tst_kxRenderer)
#include "tst_kxRenderer.moc"
