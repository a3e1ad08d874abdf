#include <kxTable.h>
#include <view/kxCameraRig.h>

#include <QtTest>

#include <random>

namespace
{
osg::BoxVolume boxOf(const osg::Pnt3f& a, const osg::Pnt3f& b)
{
    osg::BoxVolume box;
    box.extendBy(a);
    box.extendBy(b);
    return box;
}
} // namespace

class tst_kxCameraRig : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void framingShowsTheWholeBox_data()
    {
        kxColumns<QVector3D, QVector3D, float>("low", "high", "aspect");
        QTest::newRow("cube") << QVector3D(-1, -1, -1) << QVector3D(1, 1, 1) << 1.6f;
        QTest::newRow("tall, far off") << QVector3D(100, 0, 50) << QVector3D(101, 40, 51) << 1.6f;
        QTest::newRow("long, narrow picture") << QVector3D(-30, 0, -1) << QVector3D(30, 1, 1) << 0.4f;
        QTest::newRow("flat") << QVector3D(-5, 0, -5) << QVector3D(5, 0, 5) << 2.0f;
        QTest::newRow("tiny") << QVector3D(0, 0, 0) << QVector3D(0.01f, 0.02f, 0.01f) << 1.0f;
    }

    void framingShowsTheWholeBox()
    {
        QFETCH(QVector3D, low);
        QFETCH(QVector3D, high);
        QFETCH(float, aspect);
        const osg::BoxVolume box =
            boxOf(osg::Pnt3f(low.x(), low.y(), low.z()), osg::Pnt3f(high.x(), high.y(), high.z()));
        for (const float yaw : {0.0f, 37.0f, 170.0f})
            for (const float pitch : {-60.0f, 0.0f, 20.0f, 85.0f})
            {
                kxCameraRig rig;
                QVERIFY(rig.setPose({QVector3D(3, 4, 5), 7, yaw, pitch}));
                QVERIFY(rig.setPose(rig.framed(box, aspect)));
                const kxViewCamera camera = rig.camera(aspect, box);
                const QSizeF size(1000 * double(aspect), 1000);
                for (int corner = 0; corner < 8; ++corner)
                {
                    QPointF at;
                    QVERIFY(camera.project(QVector3D(corner & 1 ? high.x() : low.x(), corner & 2 ? high.y() : low.y(),
                                                     corner & 4 ? high.z() : low.z()),
                                           size, at));
                    QVERIFY2(QRectF(QPointF(0, 0), size).contains(at), qPrintable(QString::number(double(yaw))));
                }
            }
    }

    void planesHoldTheScene()
    {
        const osg::BoxVolume box = boxOf(osg::Pnt3f(-200, -1, -300), osg::Pnt3f(500, 30, 80));
        std::mt19937 random(7);
        std::uniform_real_distribution<float> any(-1, 1);
        for (int i = 0; i < 200; ++i)
        {
            kxCameraRig rig;
            rig.setPose({QVector3D(any(random), any(random), any(random)) * 100, std::exp(any(random) * 5),
                         any(random) * 180, any(random) * 89});
            const kxViewCamera camera = rig.camera(1.5f, box);
            QVERIFY(camera.nearPlane > 0 && camera.farPlane > camera.nearPlane);
            for (const float x : {-200.0f, 500.0f})
                for (const float z : {-300.0f, 80.0f})
                    QVERIFY(-camera.view.map(QVector3D(x, 30, z)).z() < camera.farPlane);
        }
    }

    void panFollowsTheMouse()
    {
        kxCameraRig rig;
        rig.setPose({QVector3D(1, 2, 3), 8, 40, 25});
        const QVector3D grasped = rig.pose().target;
        const QSizeF size(900, 600);
        rig.pan(120, -45, 600);
        QPointF at;
        QVERIFY(rig.camera(1.5f, osg::BoxVolume()).project(grasped, size, at));
        QVERIFY(QLineF(at, QPointF(450 + 120, 300 - 45)).length() < 0.1);
    }

    void wayEndsExactlyAndTakesTheShorterTurn()
    {
        kxCameraRig rig;
        rig.setPose({QVector3D(), 5, 170, 0});
        const kxCameraRig::Pose to{QVector3D(3, 1, 2), 20, -170, 30};
        rig.animateTo(to);
        rig.advance(0.5f);
        QVERIFY(qAbs(rig.pose().yaw) > 170);             // by way of 180, not of 0
        QCOMPARE(rig.pose().target, to.target * 0.875f); // it slows down at the end
        rig.advance(1);
        QVERIFY(!rig.isAnimating());
        QCOMPARE(rig.pose().target, to.target);
        QCOMPARE(rig.pose().distance, to.distance);
        QVERIFY(qAbs(std::remainder(rig.pose().yaw - to.yaw, 360.0f)) < 1e-3f);
    }

    void badNumbersAreRefused()
    {
        kxCameraRig rig;
        const QVector3D target = rig.pose().target;
        QVERIFY(!rig.setPose({QVector3D(qQNaN(), 0, 0), 5, 0, 0}));
        rig.orbit(float(qInf()), 0, 600);
        rig.dolly(-1e9f);
        rig.pan(5, 5, 0);
        QVERIFY(std::isfinite(rig.pose().distance) && std::isfinite(rig.pose().yaw));
        Q_UNUSED(target)
        const float limit = std::numeric_limits<float>::max();
        QVERIFY(std::isfinite(rig.framed(boxOf(osg::Pnt3f(-limit, 0, 0), osg::Pnt3f(limit, 1, 1)), 1).distance));
    }

    void rayGoesThroughTheProjectedPoint()
    {
        kxCameraRig rig;
        const kxViewCamera camera = rig.camera(1.7f, osg::BoxVolume());
        const QSizeF size(1700, 1000);
        for (const QVector3D& point : {QVector3D(0, 0, 0), QVector3D(1, -0.4f, 0.7f), QVector3D(-1.5f, 0.8f, -2)})
        {
            QPointF at;
            QVERIFY(camera.project(point, size, at));
            const kxRay ray = camera.ray(at, size);
            const QVector3D arm = point - ray.origin;
            QVERIFY(QVector3D::crossProduct(arm, ray.direction).length() < 1e-3f);
            // The matrices agree with the arithmetic.
            const QVector3D clip = camera.viewProjection().map(point);
            QVERIFY(qAbs(double(clip.x()) * 850 + 850 - at.x()) < 0.1 &&
                    qAbs(500 - double(clip.y()) * 500 - at.y()) < 0.1);
        }
        QPointF behind;
        QVERIFY(!camera.project(camera.eye() - camera.forward(), size, behind));
    }
};

QTEST_APPLESS_MAIN(tst_kxCameraRig)
#include "tst_kxCameraRig.moc"
