#include "kxSceneFixture.h"

#include <edits/kxClippingPlane.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <scene/ClippingPlane.h>
#include <view/kxClipQuad.h>

using namespace kxSceneFixture;

namespace
{
osg::NodePtr answered()
{
    kxMessage message;
    kxController::call(kxMessageName::GetClippingTransformNode, message, 0);
    const boost::any node = message.get("node");
    return node.empty() ? osg::NodePtr() : boost::any_cast<osg::NodePtr>(node);
}
} // namespace

class tst_kxClippingPlane : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { clear(); }

    void isSwitched()
    {
        const kxClippingPlane::Answer answer;
        const QByteArray before = bytes();
        kxClippingPlane::setOn(false); // there is none
        QVERIFY(!kxClippingPlane::isOn() && answered() == osg::NullFC);
        QCOMPARE(stack()->count(), 0);
        kxClippingPlane::setOn(true);
        const osg::NodePtr plane = kxClippingPlane::node();
        QVERIFY(kxClippingPlane::isOn() && answered() == plane);
        kxClippingPlane::setOn(false);
        QVERIFY(!kxClippingPlane::isOn() && answered() == plane); // can be animated while it is off
        kxClippingPlane::setOn(true);
        QVERIFY(kxClippingPlane::node() == plane); // not a second one
        QCOMPARE(stack()->count(), 3);

        // Of two, the one that is shown counts.
        kxSceneEdits::duplicateNodes({plane});
        kxSceneEdits::setVisible({plane}, false);
        QVERIFY(kxClippingPlane::isOn() && kxClippingPlane::node() != plane);
        kxClippingPlane::setOn(false);
        QVERIFY(!kxClippingPlane::isOn());
        QVERIFY(goesBackAndForth(before));
    }

    void isGraspedByItsOutline()
    {
        kxClippingPlane::setOn(true); // a square of side 2 around the origin
        kxRenderScene scene;
        scene.update();
        kxViewCamera camera;
        camera.fieldOfView = 90;
        camera.view.translate(0, 0, -2);
        const QSizeF size(400, 400);
        const osg::UInt32 id = kxClippingPlane::node()->getId();
        QCOMPARE(kxClipQuad::at(QPointF(200, 200), scene, camera, size), id); // its middle
        QCOMPARE(kxClipQuad::at(QPointF(300, 160), scene, camera, size), id); // its right side
        QCOMPARE(kxClipQuad::at(QPointF(250, 250), scene, camera, size), 0u); // through it
        QCOMPARE(kxClipQuad::at(QPointF(350, 350), scene, camera, size), 0u);
        camera.view.translate(0, 0, 9); // behind the eye
        QCOMPARE(kxClipQuad::at(QPointF(200, 200), scene, camera, size), 0u);
    }

    void cutsThroughTheMiddle()
    {
        for (const float x : {3.0f, 9.0f})
        {
            const osg::NodePtr box = addSurface("Box", addMaterial("Paint"));
            osg::TransformPtr::dcast(box->getCore())->setTranslation(osg::Vec3f(x, 4, -2));
        }
        kxClippingPlane::setOn(true);
        const auto plane = osg::TransformPtr::dcast(kxClippingPlane::node()->getCore());
        QVERIFY(plane->getTranslation() == osg::Vec3f(6, 4, -2) && plane->getScale().x() > 7);
    }
};

QTEST_MAIN(tst_kxClippingPlane)
#include "tst_kxClippingPlane.moc"
