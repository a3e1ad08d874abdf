#include "kxSceneFixture.h"

#include <QKXSpiner.h>
#include <app/kxSceneEdits.h>
#include <kernel/kxSelection.h>
#include <kxAnimManager.h>
#include <kxSendMouse.h>
#include <kxServices.h>
#include <kxUndo.h>
#include <osg/AnimAttachments.h>
#include <panels/kxColorButton.h>
#include <panels/kxPropertyPanel.h>
#include <scene/CameraLight.h>
#include <scene/kxScene.h>

#include <QLineEdit>
#include <QPointer>
#include <QUndoStack>
#include <QtTest>

using namespace kxSceneFixture;

class tst_kxPropertyPanel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup() { _panel.reset(); }
    void typedValueGoesToAll();
    void aDragIsOneStep();
    void marksWhatIsDriven();
    void survivesTheEndOfItsObject();
    void followsOnce();

private:
    QKXDoubleSpiner* spinner(const char* name) const
    {
        return _panel->findChild<QKXDoubleSpiner*>(QString::fromLatin1(name));
    }
    static QUndoStack* stack() { return kxUndoStack::get(0).stack(); }
    void select(const std::vector<osg::NodePtr>& nodes)
    {
        kxSelection::the().selectNodes(nodes);
        QCoreApplication::processEvents(); // it follows when the event loop comes back
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        stack()->clear();
    }
    QScopedPointer<kxPropertyPanel> _panel;
};

void tst_kxPropertyPanel::init()
{
    clear();
    _panel.reset(new kxPropertyPanel);
    _panel->show();
}

void tst_kxPropertyPanel::typedValueGoesToAll()
{
    const osg::NodePtr a = addObject("A"), b = addObject("B");
    osg::TransformPtr::dcast(b->getCore())->setTranslation(osg::Vec3f(4, 4, 4));
    select({a, b});
    QKXDoubleSpiner* const x = spinner("translationX");
    QVERIFY(x != nullptr && x->font().italic()); // the two differ
    x->setFocus();
    x->selectAll();
    QTest::keyClicks(x, "+=2");
    QTest::keyClick(x, Qt::Key_Return);
    QCOMPARE(osg::TransformPtr::dcast(a->getCore())->getTranslation().x(), 2.0f);
    QCOMPARE(osg::TransformPtr::dcast(b->getCore())->getTranslation().x(), 6.0f);
    QCOMPARE(stack()->count(), 1);
    stack()->undo();
    kxScene::the()->flush();
    QCOMPARE(x->value(), 0.0);
}

void tst_kxPropertyPanel::aDragIsOneStep()
{
    // As a colour dialog does it: many values while one button is held.
    const osg::NodePtr node = kxSceneEdits::makeNode(osg::Light::create(), "Light");
    kxScene::the()->root()->addChild(node);
    select({node});
    auto* const button = _panel->findChild<kxColorButton*>();
    QVERIFY(button != nullptr);
    QWidget dialog;
    kxSendMouse(&dialog, QEvent::MouseButtonPress, QPoint(), Qt::LeftButton, Qt::LeftButton);
    for (int i = 1; i <= 20; ++i)
    {
        kxSendMouse(&dialog, QEvent::MouseMove, QPoint(i, 0), Qt::NoButton, Qt::LeftButton);
        Q_EMIT button->colorPicked(osg::Vec3f(0.04f * float(i), 0, 0));
    }
    kxSendMouse(&dialog, QEvent::MouseButtonRelease, QPoint(20, 0), Qt::LeftButton, Qt::NoButton);
    QCOMPARE(stack()->count(), 1);
    Q_EMIT button->colorPicked(osg::Vec3f(0, 1, 0));
    QCOMPARE(stack()->count(), 2);
    stack()->setIndex(0);
    QVERIFY(osg::LightPtr::dcast(node->getCore())->getColor() == osg::Color3f(1, 1, 1));
}

void tst_kxPropertyPanel::marksWhatIsDriven()
{
    const osg::NodePtr node = addObject("Node");
    animate(node);
    kxAnimManager::the()->updateSceneAnimCurveData();
    kxAnimManager::the()->setCurrentFrame(6, true, true);
    select({node});
    QVERIFY(spinner("translationX")->property("driven").toBool());
    QVERIFY(!spinner("translationY")->property("driven").toBool());
    // As soon as nothing drives it any more.
    node->subAttachment(node->findAttachment<osg::AnimAttachment>());
    osg::markChanged(node, osg::Node::AttachmentsFieldMask);
    kxAnimManager::the()->reevaluateAnimations(true);
    kxScene::the()->markStructureChanged();
    kxScene::the()->flush();
    QVERIFY(!spinner("translationX")->property("driven").toBool());
}

void tst_kxPropertyPanel::survivesTheEndOfItsObject()
{
    const osg::NodePtr node = addObject("Node");
    select({node});
    QKXDoubleSpiner* const x = spinner("translationX");
    kxScene::the()->clear(); // dies at once, the panel hears of it later
    Q_EMIT x->relativeOperatorApplied(RelativeAdd, 1);
    kxScene::the()->flush();
    QVERIFY(spinner("translationX") == nullptr || !spinner("translationX")->isVisible());
}

void tst_kxPropertyPanel::followsOnce()
{
    const auto shown = [this] { return _panel->findChild<QLineEdit*>("_name")->text(); };
    const osg::NodePtr a = addObject("A"), b = addObject("B"), c = addObject("C");
    select({a});
    const QPointer<QLineEdit> name = _panel->findChild<QLineEdit*>("_name");
    for (const osg::NodePtr& node : {b, a, c}) // as a script does it
        kxSelection::the().selectNodes({node});
    QVERIFY(name && name->isVisible());
    QTRY_COMPARE(shown(), QString("C"));
}

QTEST_MAIN(tst_kxPropertyPanel)
#include "tst_kxPropertyPanel.moc"
