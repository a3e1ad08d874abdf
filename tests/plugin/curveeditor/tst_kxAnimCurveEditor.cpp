#include <curveeditor/kxAnimCurveEditor.h>
#include <curveeditor/kxAnimCurveUndoCommand.h>
#include <curveeditor/kxTrashAnimationUndoCommand.h>

#include <kernel/kxHostHooks.h>
#include <kernel/kxModuleRegistry.h>
#include <kxCapturedStderr.h>
#include <scene/kxScene.h>

#include <QKXDockWindowManager.h>
#include <kxAnimManager.h>
#include <kxController.h>
#include <kxMessageIds.h>
#include <kxMessageNames.h>

#include <QMainWindow>
#include <QUndoStack>
#include <QtTest>

namespace
{
void start(const boost::any& name, const boost::any& instantaneous = boost::any())
{
    kxMessage message;
    message.set("animation-name", name, true);
    if (!instantaneous.empty())
        message.set("instantaneous", instantaneous, true);
    kxController::call(kxMessageName::AnimationStart, message, 0);
}
} // namespace

class tst_kxAnimCurveEditor : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void newSceneGoesToTheStart();
    void startsAnimations();
    void sceneFollowsUndo();

private:
    float x() const { return _core->getTranslation().x(); }

    std::unique_ptr<QMainWindow> _window;
    std::unique_ptr<QKXDockWindowManager> _docks;
    std::unique_ptr<kxAnimCurveEditor> _module;
    osg::TransformPtr _core;     // of the one object in the scene
    osg::AnimCurvePtr _curve;    // moves it along x
    osg::AnimNodePtr _animation; // the block of the curve, "Move"
};

void tst_kxAnimCurveEditor::init()
{
    _window = std::make_unique<QMainWindow>();
    _docks = std::make_unique<QKXDockWindowManager>(_window.get());
    kxHostHooks::the().setMainWindow(_window.get());
    kxHostHooks::the().setDockWindowManager(_docks.get());
    _module = std::make_unique<kxAnimCurveEditor>();

    kxAnimManager& kernel = *kxAnimManager::the();
    _core = osg::Transform::create();
    const osg::NodePtr object = osg::Node::create();
    object->setCore(_core);
    kxScene::the()->root()->addChild(object);
    osg::markChanged(kxScene::the()->root(), osg::Node::ChildrenFieldMask);
    std::vector<kxAnimManager::kxOSGChannelData> channels;
    kernel.getKeyableChannels(object, channels);
    const auto channel = std::find_if(channels.begin(), channels.end(),
                                      [](const auto& c) { return c.name == "translation" && c.suffix == "X"; });
    QVERIFY(channel != channels.end());
    kernel.addAnimation(object, kernel.createChannelCurveNode(*channel, osg::AnimAttachmentPtr()));
    std::vector<osg::AnimNodePtr> nodes;
    kernel.getChannelCurveNodes(object, nodes);
    QCOMPARE(nodes.size(), std::size_t(1));
    _curve = osg::AnimCurvePtr::dcast(nodes.front()->getCore());
    _curve->addPoint({0, 1}, {}, {}, 1, 1, true, true);
    _curve->addPoint({2, 5}, {}, {}, 1, 1, true, true);
    osg::markChanged(_curve, osg::AnimCurveBase::ControlPointsFieldMask);
    _animation = kernel.createBlock(kernel.getAnimAttachment(object), "Move");
    QVERIFY(_animation != osg::NullFC);
    kernel.setCurrentFrame(0, true, true);
    QCOMPARE(x(), 1.0f);
}

void tst_kxAnimCurveEditor::cleanup()
{
    kxAnimManager::the()->dequeueAll();
    kxUndoStack::get(0).stack()->clear();
    kxScene::the()->clear();
    _module.reset();
    _docks.reset();
    _window.reset();
}

void tst_kxAnimCurveEditor::newSceneGoesToTheStart()
{
    QVERIFY(_docks->getDockWidget("Curve Editor") != nullptr);
    kxAnimManager::the()->setCurrentFrame(12, false, true);
    kxMessage message(kxMessageId::NewScene);
    kxModuleRegistry::the().deliver(message);
    QCOMPARE(kxAnimManager::the()->currentFrame(), 0.0);
    delete _module->moduleWidget();
    kxAnimManager::the()->setCurrentFrame(12, false, true);
    kxModuleRegistry::the().deliver(message); // without its window the module does nothing
    QCOMPARE(kxAnimManager::the()->currentFrame(), 12.0);
}

void tst_kxAnimCurveEditor::startsAnimations()
{
    const kxAnimManager& kernel = *kxAnimManager::the();
    start(std::string());
    start(std::string("Nothing of this name"));
    start(std::string("Nothing of this name"), true);
    QVERIFY(!kernel.isPlaying("Move"));
    {
        kxCapturedStderr captured;
        start(1);
        QVERIFY(captured.text().contains("kxMessage::get : Attribute 'animation-name' has wrong type"));
    }
    start(std::string("Move"), false);
    QVERIFY(kernel.isPlaying("Move"));
    kxAnimManager::the()->setCurrentFrame(24, false, true);
    start(std::string("Move"), true);
    QVERIFY(!kernel.isPlaying("Move"));
    QCOMPARE(x(), 1.0f);
}

void tst_kxAnimCurveEditor::sceneFollowsUndo()
{
    std::vector<osg::CCPnt> keys(_curve->getControlPoints().begin(), _curve->getControlPoints().end());
    keys.front().setY(3);
    QUndoStack* const stack = kxUndoStack::get(0).stack();
    kxUndoStack::get(0).add(new kxAnimCurveUndoCommand(_curve, keys));
    QCOMPARE(x(), 3.0f);
    kxUndoStack::get(0).add(new kxTrashAnimationUndoCommand({kxNodePtr(_animation)}));
    kxAnimManager::the()->setCurrentFrame(48, false, true);
    QCOMPARE(x(), 0.0f); // at rest, since nothing moves it
    stack->undo();
    QCOMPARE(x(), 5.0f);
    stack->undo();
    kxAnimManager::the()->setCurrentFrame(0, false, true);
    QCOMPARE(x(), 1.0f);
    stack->redo();
    QCOMPARE(x(), 3.0f);
}

QTEST_MAIN(tst_kxAnimCurveEditor)
#include "tst_kxAnimCurveEditor.moc"
