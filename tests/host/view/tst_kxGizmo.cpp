#include "kxTestObjects.h"

#include <kxTable.h>
#include <view/kxCameraRig.h>
#include <view/kxGizmo.h>
#include <view/kxGizmoMath.h>
#include <view/kxTransformEdit.h>

#include <QQuaternion>
#include <QUndoStack>
#include <QtTest>

#include <random>

namespace
{
const std::array<QVector3D, 3> WorldAxes = {QVector3D(1, 0, 0), QVector3D(0, 1, 0), QVector3D(0, 0, 1)};

QVector3D worldPlace(const osg::NodePtr& node)
{
    return kxSceneMath::worldMatrix(node).column(3).toVector3D();
}

osg::Transform& transformOf(const osg::NodePtr& node)
{
    return *osg::TransformPtr::dcast(node->getCore());
}

kxGizmoChange turn(const QVector3D& axis, float degrees)
{
    kxGizmoChange change;
    change.kind = kxGizmoChange::Rotate;
    change.axis = axis;
    change.degrees = degrees;
    return change;
}

kxGizmoChange move(const QVector3D& by)
{
    kxGizmoChange change;
    change.kind = kxGizmoChange::Translate;
    change.translation = by;
    return change;
}

bool isNear(const QVector3D& a, const QVector3D& b)
{
    return (a - b).length() < 1e-4f;
}
} // namespace

class tst_kxGizmo : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        kxUndoStack::get(0).stack()->clear();
        kxCameraRig rig;
        rig.setPose({QVector3D(1, 0, 0), 10, 30, 25});
        _camera = rig.camera(1.5f, osg::BoxVolume());
        _gizmo = kxGizmo();
        _gizmo.setView(_camera, _size);
        _gizmo.setPlace(QVector3D(1, 0.5f, 0), WorldAxes);
    }

    void cleanup() { kxScene::the()->clear(); }

    void handlesFollowTheMouse()
    {
        _gizmo.setTool(kxGizmo::MoveTool);
        const float unit = _camera.pixelLength(_gizmo.origin(), _size.height()) * float(kxGizmo::Size);
        for (int i = 0; i < 3; ++i)
        {
            const QVector3D& axis = WorldAxes[std::size_t(i)];
            const QPointF start = onAxis(axis, unit * 0.8f);
            QCOMPARE(int(_gizmo.handleAt(start)), int(kxGizmo::AxisX) + i);
            _gizmo.beginDrag(_gizmo.handleAt(start), start);
            const kxGizmoChange change = _gizmo.drag(onAxis(axis, unit * 0.8f + 2.5f), false);
            QVERIFY(isNear(change.translation, axis * 2.5f));
            _gizmo.endDrag();
        }
        // In the plane of the view: what was grasped stays below the mouse.
        const QPointF middle = onAxis(WorldAxes[0], 0);
        QCOMPARE(_gizmo.handleAt(middle), kxGizmo::Screen);
        _gizmo.beginDrag(kxGizmo::Screen, middle);
        const QPointF to = middle + QPointF(140, -60);
        const kxGizmoChange change = _gizmo.drag(to, false);
        QPointF at;
        QVERIFY(_camera.project(_gizmo.origin() + change.translation, _size, at));
        QVERIFY(QLineF(at, to).length() < 0.1);
        _gizmo.endDrag();
        QCOMPARE(_gizmo.handleAt(QPointF(5, 5)), kxGizmo::NoHandle);

        _gizmo.setTool(kxGizmo::ScaleTool);
        const QPointF start = onAxis(WorldAxes[1], unit);
        _gizmo.beginDrag(_gizmo.handleAt(start), start);
        QVERIFY(isNear(_gizmo.drag(onAxis(WorldAxes[1], unit * 3), false).factors, QVector3D(1, 3, 1)));
        QVERIFY(_gizmo.drag(onAxis(WorldAxes[1], -unit * 3), false).factors.y() > 0); // never inside out
        _gizmo.endDrag();
    }

    void turnsAddUpPastFullCircles()
    {
        _gizmo.setTool(kxGizmo::RotateTool);
        const float radius = _camera.pixelLength(_gizmo.origin(), _size.height()) * float(kxGizmo::Size) * 0.92f;
        const auto onRing = [&](float degrees)
        {
            const float a = qDegreesToRadians(degrees);
            QPointF at; // around y: from x against the clock, seen from above, comes -z
            _camera.project(_gizmo.origin() + QVector3D(std::cos(a), 0, -std::sin(a)) * radius, _size, at);
            return at;
        };
        // Start at the side towards the eye, where the ring can be grasped.
        QCOMPARE(_gizmo.handleAt(onRing(-70)), kxGizmo::RingY);
        _gizmo.beginDrag(kxGizmo::RingY, onRing(-70));
        kxGizmoChange change;
        for (int degrees = -70; degrees <= 730; degrees += 20)
            change = _gizmo.drag(onRing(float(degrees)), false);
        QVERIFY(isNear(change.axis, QVector3D(0, 1, 0)));
        QVERIFY(qAbs(change.degrees - 800) < 0.1f);
        for (int degrees = 730; degrees >= -430; degrees -= 20)
            change = _gizmo.drag(onRing(float(degrees)), false);
        QVERIFY(qAbs(change.degrees + 360) < 0.1f);
    }

    void snapping_data()
    {
        kxColumns<float, float>("length", "step");
        QTest::newRow("below one") << 0.7f << 0.5f;
        QTest::newRow("two") << 4.9f << 2.0f;
        QTest::newRow("tens") << 14.0f << 10.0f;
        QTest::newRow("thousandth") << 0.0051f << 0.005f;
        QTest::newRow("no length") << 0.0f << 1.0f;
        QTest::newRow("not a number") << float(qQNaN()) << 1.0f;
    }

    void snapping()
    {
        QFETCH(float, length);
        QFETCH(float, step);
        QCOMPARE(kxGizmoMath::roundStep(length), step);
        QCOMPARE(kxGizmoMath::snapped(3.4f * step, step), 3 * step);
    }

    void aDragIsOneStepThatReturnsExactly()
    {
        std::mt19937 random(3);
        std::uniform_real_distribution<float> any(-400, 400);
        for (int round = 0; round < 20; ++round)
        {
            const osg::NodePtr node =
                kxTestObjects::addTransform(osg::Vec3f(any(random), any(random), any(random)),
                                            osg::Vec3f(any(random), any(random), any(random)), osg::Vec3f(1, 2, 0.5f));
            const auto before = kxTransformCommand::Values::of(transformOf(node));
            QUndoStack* const stack = kxUndoStack::get(0).stack();
            const int count = stack->count();
            kxTransformEdit edit({node});
            // A button that is held makes one gesture of what follows.
            QMouseEvent press(QEvent::MouseButtonPress, QPointF(), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
            QObject receiver;
            QCoreApplication::sendEvent(&receiver, &press);
            for (int i = 1; i <= 30; ++i)
                QVERIFY(edit.apply(turn(QVector3D(1, 2, 3).normalized(), float(i) * 25)));
            QMouseEvent release(QEvent::MouseButtonRelease, QPointF(), Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
            QCoreApplication::sendEvent(&receiver, &release);
            QCOMPARE(stack->count(), count + 1);
            QCOMPARE(stack->undoText(), QString("Rotate 1 Object"));
            const auto after = kxTransformCommand::Values::of(transformOf(node));
            stack->undo();
            QVERIFY(kxTransformCommand::Values::of(transformOf(node)) == before);
            stack->redo();
            QVERIFY(kxTransformCommand::Values::of(transformOf(node)) == after);
        }
    }

    void onlyTheDraggedFieldIsWritten()
    {
        const osg::NodePtr node =
            kxTestObjects::addTransform(osg::Vec3f(1, 2, 3), osg::Vec3f(10, 500, -30), osg::Vec3f(1, 2, 3));
        kxTransformEdit edit({node});
        QVERIFY(edit.apply(move(QVector3D(1, 0, 0))));
        QCOMPARE(transformOf(node).getEulerRotation().y(), 500.0f);
        QVERIFY(transformOf(node).getTranslation() == osg::Vec3f(2, 2, 3));
        QVERIFY(!edit.apply(move(QVector3D(1, 0, 0)))); // nothing new
        QVERIFY(!edit.apply(move(QVector3D(float(qInf()), 0, 0))));
        kxTransformEdit again({node});
        again.apply(turn(QVector3D(0, 1, 0), 15));
        QVERIFY(transformOf(node).getTranslation() == osg::Vec3f(2, 2, 3));
        QVERIFY(qAbs(transformOf(node).getEulerRotation().y() - 500) < 30); // near where it was, not wrapped
    }

    void editsUnderAMirrorOfAnotherSize()
    {
        for (const float side : {1.0f, -1.0f})
        {
            const osg::NodePtr above =
                kxTestObjects::addTransform(osg::Vec3f(4, 5, 6), osg::Vec3f(20, 40, 60), osg::Vec3f(2 * side, 2, 2));
            const osg::NodePtr node =
                kxTestObjects::addTransform(osg::Vec3f(1, 1, 1), osg::Vec3f(15, 0, 80), osg::Vec3f(1, 1, 1), above);
            const QVector3D axis = QVector3D(2, -1, 1).normalized();
            const QVector3D before = kxSceneMath::worldMatrix(node).mapVector(QVector3D(0, 0, 1));
            kxTransformEdit edit({node});
            edit.apply(turn(axis, 50));
            const QVector3D after = kxSceneMath::worldMatrix(node).mapVector(QVector3D(0, 0, 1));
            QVERIFY(isNear(after, QQuaternion::fromAxisAndAngle(axis, 50).rotatedVector(before)));
            const QVector3D place = worldPlace(node);
            QVERIFY(isNear(edit.pivot(), place));
            kxTransformEdit({node}).apply(move(QVector3D(1, -2, 3)));
            QVERIFY(isNear(worldPlace(node), place + QVector3D(1, -2, 3)));
        }
    }

    void severalObjectsMoveTogether()
    {
        const osg::Vec3f one(1, 1, 1);
        const osg::NodePtr a = kxTestObjects::addTransform(osg::Vec3f(-2, 0, 0), osg::Vec3f(), one);
        const osg::NodePtr b = kxTestObjects::addTransform(osg::Vec3f(2, 0, 0), osg::Vec3f(), one);
        const osg::NodePtr below = kxTestObjects::addTransform(osg::Vec3f(0, 1, 0), osg::Vec3f(), one, b);
        kxTransformEdit edit({a, b, below});
        QVERIFY(isNear(edit.pivot(), QVector3D()));
        edit.apply(turn(QVector3D(0, 1, 0), 90));
        QVERIFY(isNear(worldPlace(a), QVector3D(0, 0, 2)));
        QVERIFY(isNear(worldPlace(b), QVector3D(0, 0, -2)));
        QVERIFY(isNear(worldPlace(below), QVector3D(0, 1, -2))); // carried along, not turned twice
        QVERIFY(transformOf(below).getEulerRotation() == osg::Vec3f());
        kxGizmoChange scale;
        scale.kind = kxGizmoChange::Scale;
        scale.factors = QVector3D(3, 3, 3);
        scale.isUniform = true;
        kxTransformEdit({a, b}).apply(scale);
        QVERIFY(isNear(worldPlace(a), QVector3D(0, 0, 6)));
        QVERIFY(transformOf(b).getScale() == osg::Vec3f(3, 3, 3));
    }

    void whatCantBeMovedIsLeftOut()
    {
        const osg::NodePtr flat = kxTestObjects::addTransform(osg::Vec3f(), osg::Vec3f(), osg::Vec3f(0, 0, 0));
        const osg::NodePtr node = kxTestObjects::addTransform(osg::Vec3f(), osg::Vec3f(), osg::Vec3f(1, 1, 1), flat);
        QVERIFY(kxTransformEdit({node}).isEmpty()); // no way to know where it should go
        QVERIFY(kxTransformEdit({osg::NodePtr()}).isEmpty());
        const osg::NodePtr group = osg::Node::create();
        group->setCore(osg::Group::create());
        kxScene::the()->root()->addChild(group);
        QVERIFY(kxTransformEdit({group}).isEmpty());
    }

private:
    /// Of a point of the handle's axis, `length` scene units from the middle.
    QPointF onAxis(const QVector3D& axis, float length) const
    {
        QPointF at;
        _camera.project(_gizmo.origin() + axis * length, _size, at);
        return at;
    }
    kxGizmo _gizmo;
    kxViewCamera _camera;
    QSizeF _size = QSizeF(900, 600);
};

QTEST_GUILESS_MAIN(tst_kxGizmo)
#include "tst_kxGizmo.moc"
