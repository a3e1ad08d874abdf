#include "kxTestObjects.h"

#include <kernel/kxSelection.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <kxScenegraph.h>
#include <kxSendMouse.h>
#include <kxUndo.h>
#include <osg/Share.h>
#include <scene/CameraLight.h>
#include <view/kxPrimitives.h>
#include <view/kxView3D.h>
#include <view/kxViewActions.h>

#include <QAction>
#include <QMenu>
#include <QSignalSpy>
#include <QTimer>
#include <QUndoStack>
#include <QtTest>

#include <functional>

namespace
{
int changedTransformations = 0;
void countChangedTransformation(kxMessage&)
{
    ++changedTransformations;
}
} // namespace

class tst_kxView3D : public QObject
{
    Q_OBJECT
public:
    static void initMain() { qputenv("QT_SCALE_FACTOR", "2"); } // a picture has more pixels than the view has units

private Q_SLOTS:
    void init()
    {
        const osg::UberMaterialPtr material = kxTestObjects::material(osg::Color3f(0.5f, 0.5f, 0.5f));
        _left = kxTestObjects::add(kxPrimitives::box(), material, osg::Vec3f(-1, 0.5f, 0));
        _right = kxTestObjects::add(kxPrimitives::box(), material, osg::Vec3f(1, 0.5f, 0));
        kxScene::the()->flush();
        _view = std::make_unique<kxView3D>();
        _view->resize(320, 240);
        _view->frameAll();
        _drawn = std::make_unique<QSignalSpy>(_view.get(), &kxView3D::frameDrawn);
        _view->show();
        settle();
        kxUndoStack::get(0).stack()->clear();
    }

    void cleanup()
    {
        _drawn.reset();
        _view.reset();
        kxSelection::the().clear();
        kxUndoStack::get(0).stack()->clear();
        kxScene::the()->clear();
    }

    void clickSelectsAndIsUndone()
    {
        const auto click = [this](const QPoint& at, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
        {
            kxPress(_view.get(), at, modifiers);
            kxRelease(_view.get(), at, modifiers);
            settle();
        };
        const QPoint left = seen(QVector3D(-1, 0.5f, 0)), right = seen(QVector3D(1, 0.5f, 0));
        click(left);
        QVERIFY(kxScenegraph::getSelectedNodes() == std::vector<osg::NodePtr>{_left});
        click(right, Qt::ControlModifier);
        QVERIFY((kxScenegraph::getSelectedNodes() == std::vector<osg::NodePtr>{_left, _right}));
        click(left, Qt::ShiftModifier);
        QVERIFY(kxScenegraph::getSelectedNodes() == std::vector<osg::NodePtr>{_right});
        click(QPoint(3, 3), Qt::ControlModifier); // beside everything: nothing is lost
        QCOMPARE(kxScenegraph::getSelectedNodes().size(), std::size_t(1));
        click(QPoint(3, 3));
        QVERIFY(kxScenegraph::getSelectedNodes().empty());
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        QVERIFY(!stack->canUndo()); // selected as at the start: nothing to take back
        click(left);
        stack->undo();
        QVERIFY(kxScenegraph::getSelectedNodes().empty());
        stack->redo();
        QVERIFY(kxScenegraph::getSelectedNodes() == std::vector<osg::NodePtr>{_left});
    }

    void dragOfAHandleIsOneStep()
    {
        kxSelection::the().setIds(kxSelection::Nodes, {_left->getId()});
        _view->setTool(kxGizmo::MoveTool);
        settle();
        const osg::TransformPtr transform = osg::TransformPtr::dcast(_left->getCore());
        const osg::Vec3f before = transform->getTranslation();
        _left->setNodeName("Left");
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        changedTransformations = 0;
        kxController::addCB(kxMessageName::ChangedTransformation, &countChangedTransformation);
        for (int drag = 1; drag <= 2; ++drag)
        {
            const QPoint start = seen(kxSceneMath::worldMatrix(_left).column(3).toVector3D());
            kxPress(_view.get(), start);
            for (int i = 1; i <= 10; ++i)
                kxDragTo(_view.get(), start + QPoint(3 * i, -i));
            kxRelease(_view.get(), start + QPoint(30, -10));
            settle();
            QCOMPARE(stack->count(), drag);
            QVERIFY(stack->undoText().contains("Left"));
        }
        kxController::subCB(kxMessageName::ChangedTransformation, &countChangedTransformation);
        QCOMPARE(changedTransformations, 20);
        QVERIFY(transform->getTranslation() != before);
        stack->undo();
        stack->undo();
        QVERIFY(transform->getTranslation() == before);
    }

    void escapeTakesADragBack()
    {
        kxSelection::the().setIds(kxSelection::Nodes, {_left->getId()});
        _view->setTool(kxGizmo::ScaleTool);
        settle();
        const osg::TransformPtr transform = osg::TransformPtr::dcast(_left->getCore());
        const QPoint start = seen(QVector3D(-1, 0.5f, 0));
        kxPress(_view.get(), start);
        kxDragTo(_view.get(), start + QPoint(40, 0));
        QVERIFY(transform->getScale().x() > 1.1f);
        QTest::keyClick(_view.get(), Qt::Key_Escape);
        QVERIFY(transform->getScale() == osg::Vec3f(1, 1, 1));
        kxDragTo(_view.get(), start + QPoint(80, 0)); // the rest of the drag does nothing
        kxRelease(_view.get(), start + QPoint(80, 0));
        QVERIFY(transform->getScale() == osg::Vec3f(1, 1, 1));
        QTest::keyClick(_view.get(), Qt::Key_Escape);
        QCOMPARE(_view->tool(), kxGizmo::SelectTool);
    }

    void aDragEndsBeforeItsButtonIsUp_data()
    {
        QTest::addColumn<bool>("held"); // the button, afterwards
        for (const char* const way : {"undone", "object deleted", "new scene", "another window", "hidden"})
            QTest::newRow(way) << true;
        QTest::newRow("released elsewhere") << false;
    }

    void aDragEndsBeforeItsButtonIsUp()
    {
        const osg::Share<osg::Node> left(_left);
        const osg::TransformPtr core = osg::TransformPtr::dcast(left->getCore());
        kxSelection::the().setIds(kxSelection::Nodes, {left->getId()});
        _view->setTool(kxGizmo::MoveTool);
        settle();
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        const QPoint start = seen(QVector3D(-1, 0.5f, 0));
        kxPress(_view.get(), start);
        kxDragTo(_view.get(), start + QPoint(20, 0));
        QCOMPARE(stack->undoText(), QString("Move 1 Object"));
        const std::map<QString, std::function<void()>> ways = {
            {"undone", [stack] { stack->undo(); }},
            {"object deleted", [this] { kxScene::the()->root()->subChild(_left); }},
            {"new scene", [stack] { stack->clear(), kxScene::the()->clear(); }},
            {"another window",
             [this]
             {
                 QFocusEvent event(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
                 QCoreApplication::sendEvent(_view.get(), &event);
             }},
            {"hidden", [this] { _view->hide(); }},
            {"released elsewhere", [] {}}};
        ways.at(QTest::currentDataTag())();
        const osg::Vec3f place = core->getTranslation();
        const int steps = stack->count();
        QFETCH(bool, held);
        for (const int by : {40, 60})
            kxSendMouse(_view.get(), QEvent::MouseMove, start + QPoint(by, 0), Qt::NoButton,
                        held ? Qt::LeftButton : Qt::NoButton);
        QVERIFY(core->getTranslation() == place);
        QCOMPARE(stack->count(), steps);
        _view->setTool(kxGizmo::RotateTool); // not in the middle of a drag
        QCOMPARE(_view->tool(), kxGizmo::RotateTool);
    }

    void drawsOnlyWhatChanged()
    {
        QTRY_VERIFY(draws() > 0);
        rest();
        int before = draws();
        settle();
        QCOMPARE(draws(), before);
        for (int i = 0; i < 50; ++i) // many changes, one frame
            osg::markChanged(_left->getCore(), osg::Transform::TranslationFieldMask);
        QTRY_COMPARE(draws(), before + 1);
        settle();
        QCOMPARE(draws(), before + 1);
        // Each mover of the frame forces a picture: the first one draws, the rest and the scene's own signal need none.
        const auto force = [this, &before](int expected, const std::function<void()>& change)
        {
            rest();
            before = draws();
            change();
            _view->redraw(true);
            _view->redraw(true);
            settle();
            QCOMPARE(draws(), before + expected);
        };
        force(0, [] {});
        force(1, [this] { osg::markChanged(_left->getCore(), osg::Transform::TranslationFieldMask); });
        force(1, [this] { _view->setPose({}); });
        force(1, [this] { kxSelection::the().setIds(kxSelection::Nodes, {_left->getId()}); });
        force(1, [this] { _view->setTool(kxGizmo::MoveTool); });
        force(1, [this] { _view->resize(300, 200); });
    }

    void slowFramesAreDrawnQuickly()
    {
        kxFrameGovernor governor;
        QCOMPARE(governor.level(true), kxFrameGovernor::Full);
        governor.note(kxFrameGovernor::Full, 200);
        QCOMPARE(governor.level(true), kxFrameGovernor::Quick);
        QCOMPARE(governor.level(false), kxFrameGovernor::Full);
        governor.note(kxFrameGovernor::Full, 200); // at rest; says nothing new
        QCOMPARE(governor.level(true), kxFrameGovernor::Quick);
        governor.note(kxFrameGovernor::Quick, 30); // good enough, and not so fast that the level before would do
        QCOMPARE(governor.level(true), kxFrameGovernor::Quick);
        governor.note(kxFrameGovernor::Quick, 90);
        governor.note(kxFrameGovernor::Coarse, 300);
        QCOMPARE(governor.level(true), kxFrameGovernor::Coarse);
        governor.note(kxFrameGovernor::Coarse, 2);
        governor.note(kxFrameGovernor::Quick, 2);
        QCOMPARE(governor.level(true), kxFrameGovernor::Full);
    }

    void looksThroughACamera()
    {
        const osg::NodePtr node = osg::Node::create();
        const osg::CameraPtr camera = osg::Camera::create();
        camera->setTranslation(osg::Vec3f(0, 0.5f, 5));
        camera->setFieldOfView(60);
        node->setCore(camera);
        kxScene::the()->root()->addChild(node);
        osg::markChanged(kxScene::the()->root(), osg::Node::ChildrenFieldMask);
        _view->actions3D()->cameraMenu()->aboutToShow();
        QAction* const last = _view->actions3D()->cameraMenu()->actions().last();
        last->trigger();
        QCOMPARE(_view->cameraNodeId(), node->getId());
        QVERIFY((_view->viewCamera(1).eye() - QVector3D(0, 0.5f, 5)).length() < 1e-4f);
        QVERIFY(qAbs(_view->viewCamera(1).fieldOfView - 60) < 1e-3f);
        // A turn of the view leaves the camera where it is, without a jump.
        kxPress(_view.get(), QPoint(5, 5));
        kxDragTo(_view.get(), QPoint(10, 5));
        kxRelease(_view.get(), QPoint(10, 5));
        QCOMPARE(_view->cameraNodeId(), 0u);
        QVERIFY((_view->viewCamera(1).eye() - QVector3D(0, 0.5f, 5)).length() < 1.0f);
        QVERIFY(camera->getTranslation() == osg::Vec3f(0, 0.5f, 5));
        // A camera that is taken away while it is looked through.
        _view->lookThrough(node->getId());
        kxScene::the()->root()->subChild(node);
        osg::markChanged(kxScene::the()->root(), osg::Node::ChildrenFieldMask);
        QCOMPARE(_view->cameraNodeId(), 0u);
        settle();
    }

    void survivesObjectsThatGo()
    {
        kxSelection::the().setIds(kxSelection::Nodes, {_left->getId(), _right->getId()});
        _view->setTool(kxGizmo::RotateTool);
        settle();
        const QPoint start = seen(QVector3D(0, 0.5f, 0)) + QPoint(0, int(kxGizmo::Size * 1.12));
        kxPress(_view.get(), start);
        kxDragTo(_view.get(), start + QPoint(10, 0));
        kxScene::the()->clear(); // in the middle of the drag
        kxDragTo(_view.get(), start + QPoint(20, 0));
        kxRelease(_view.get(), start + QPoint(20, 0));
        _view->frameSelection();
        _view->frameAll();
        settle();
        // What is grabbed is what is seen, with the directions in their corner.
        const QImage grabbed = _view->grabFrameBuffer(false), seen = _view->grab().toImage();
        QCOMPARE(grabbed.size(), _view->size() * 2);
        int apart = 0;
        for (int i = 0; i < grabbed.width() * grabbed.height(); ++i)
        {
            const QPoint place(i % grabbed.width(), i / grabbed.width());
            apart += qAbs(qGray(grabbed.pixel(place)) - qGray(seen.pixel(place))) > 40;
        }
        QVERIFY2(apart < 60, QByteArray::number(apart).constData()); // edges, where one of them is drawn quickly
    }

    /// Who looks through a camera sees all of what a picture holds, and where it ends.
    void pictureFrame()
    {
        kxView3D view;
        view.resize(400, 300);
        const osg::NodePtr eye = osg::Node::create();
        eye->setCore(osg::Camera::create());
        kxScene::the()->root()->addChild(eye);
        const auto widthOf = [&view](const kxViewCamera& camera)
        { return std::tan(qDegreesToRadians(camera.fieldOfView) / 2) * camera.aspect; };
        view.setPictureSize(QSize(1600, 800));
        QVERIFY(view.pictureFrame().isEmpty()); // nobody takes pictures from here
        view.lookThrough(eye->getId());
        QCOMPARE(view.pictureFrame(), QRectF(0, 50, 400, 200));
        QCOMPARE(widthOf(view.shownCamera()), widthOf(view.viewCamera(2)));
        view.setPictureSize(QSize(300, 600));
        QCOMPARE(view.pictureFrame(), QRectF(125, 0, 150, 300));
        QCOMPARE(view.shownCamera().fieldOfView, view.viewCamera(0.5f).fieldOfView);
        view.setPictureSize(QSize(1600, 800));
        view.actions3D()->cameraMenu()->aboutToShow();
        view.actions3D()->cameraMenu()->findChild<QAction*>("pictureFrame")->trigger();
        QVERIFY(view.pictureFrame().isEmpty());
        QCOMPARE(view.shownCamera().fieldOfView, view.viewCamera(2).fieldOfView);
        kxScene::the()->root()->subChild(eye);
    }

    void looksFromTheSides()
    {
        kxView3D view; // before its first frame it goes there at once
        view.actions3D()->cameraMenu()->aboutToShow();
        const kxCameraRig::Pose first;
        const float expected[][2] = {
            {0, 0}, {90, 0}, {-90, 0}, {180, 0}, {0, kxCameraRig::LargestPitch}, {first.yaw, first.pitch}};
        for (int i = 0; i < 6; ++i)
        {
            view.actions3D()->cameraMenu()->actions().at(i)->trigger();
            QVERIFY(qAbs(std::remainder(view.rig().pose().yaw - expected[i][0], 360.0f)) < 1e-3f);
            QCOMPARE(view.rig().pose().pitch, expected[i][1]);
        }
    }

    void wheelAndTools()
    {
        const auto wheel = [this](int notches)
        {
            QWheelEvent event(QPointF(9, 9), QPointF(9, 9), QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                              Qt::NoModifier, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(_view.get(), &event);
            return _view->rig().pose().distance;
        };
        _view->setPose({QVector3D(0, 1, 0), 8, 30, 20});
        const float near = wheel(2);
        QVERIFY(near < 7.5f);
        QVERIFY(qAbs(wheel(-2) - 8) < 1e-3f);
        kxPress(_view.get(), QPoint(3, 3));
        QCOMPARE(wheel(1), _view->rig().pose().distance); // not while a button is held
        QVERIFY(qAbs(_view->rig().pose().distance - 8) < 1e-3f);
        kxRelease(_view.get(), QPoint(3, 3));
        for (const char* const tool : {"scaleTool", "moveTool", "rotateTool", "selectTool"})
        {
            auto* const action = _view->actions3D()->findChild<QAction*>(tool);
            _view->setTool(kxGizmo::Tool(action->data().toInt()));
            QVERIFY(action->isChecked()); // by whomever it was chosen
        }
    }

private:
    QPoint seen(const QVector3D& point) const
    {
        QPointF at;
        _view->viewCamera(320.0f / 240).project(point, QSizeF(_view->size()), at);
        return at.toPoint();
    }

    int draws() const { return _drawn->count(); }

    void settle()
    {
        for (int i = 0; i < 4; ++i)
            QCoreApplication::processEvents();
    }

    /// Until nothing more is going to be drawn: a coarse frame is followed by a sharp one.

    void rest()
    {
        const auto timers = _view->findChildren<QTimer*>();
        QTRY_VERIFY(std::none_of(timers.begin(), timers.end(), [](const QTimer* timer) { return timer->isActive(); }));
        settle();
    }

    std::unique_ptr<kxView3D> _view;
    std::unique_ptr<QSignalSpy> _drawn;
    osg::NodePtr _left, _right;
};

QTEST_MAIN(tst_kxView3D)
#include "tst_kxView3D.moc"
