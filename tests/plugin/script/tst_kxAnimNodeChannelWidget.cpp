#include <curveeditor/kxAnimChannelWidget.h>
#include <script/kxAnimNodeChannelWidget.h>
#include <script/kxScriptChannels.h>
#include <trees/kxAnimTreeWidgetItem.h>

#include <kernel/kxSelection.h>
#include <kxAnimFixture.h>
#include <kxController.h>
#include <kxMessageNames.h>
#include <kxTestWindow.h>
#include <kxUndo.h>

#include <QMenu>
#include <QtTest>

namespace
{
osg::NodePtr clippingNode;
void answer(kxMessage& message)
{
    if (clippingNode != osg::NullFC)
        message.set("node", clippingNode, true);
}

kxAnimTreeWidgetItem* row(const QString& text)
{
    for (QTreeWidgetItem* const item :
         kxAnimNodeChannelWidget::instance()->findItems(text, Qt::MatchExactly | Qt::MatchRecursive))
        return static_cast<kxAnimTreeWidgetItem*>(item);
    return nullptr;
}

/// The keys of the channel as "seconds:value", so that a failure shows them.
QString keysOf(const QString& text)
{
    QStringList keys;
    if (const osg::AnimCurvePtr curve = row(text)->curve())
        for (const osg::CCPnt& key : curve->getControlPoints())
            keys << QString("%1:%2").arg(double(key.x())).arg(double(key.y()));
    return keys.join(' ');
}
} // namespace

class tst_kxAnimNodeChannelWidget : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        kxAnimFixture::clear();
        kxController::addCB(kxMessageName::GetClippingTransformNode, answer);
        _host = std::make_unique<kxTestWindow>();
        clippingNode = kxAnimFixture::object("Plane");
    }

    void cleanup()
    {
        kxController::subCB(kxMessageName::GetClippingTransformNode, answer);
        _host.reset();
        QVERIFY(kxAnimNodeChannelWidget::instance() == nullptr);
        clippingNode = osg::NodePtr();
        kxUndoStack::get(0).stack()->clear();
        kxAnimFixture::clear();
    }

    void nothingToKeyBefore()
    {
        kxScriptChannels::keyAll();
        kxScriptChannels::keySelected();
        QCOMPARE(kxUndoStack::get(0).stack()->count(), 0);
        clippingNode = osg::NodePtr();
        kxScriptChannels::animateClippingTransform(); // nobody has a clipping plane
        QVERIFY(kxAnimNodeChannelWidget::instance() == nullptr);
        clippingNode = kxAnimFixture::object("Plane");
        _host.reset();
        kxScriptChannels::animateClippingTransform(); // nowhere to show it
        QVERIFY(kxAnimNodeChannelWidget::instance() == nullptr);
    }

    void listsTheClippingNode()
    {
        kxAnimManager::the()->addAnimation(clippingNode, kxAnimFixture::curve("rotation", "Y", {{0, 1}}));
        const osg::AnimNodePtr last = kxAnimFixture::curve("rotation", "Y", {{0, 2}});
        kxAnimManager::the()->addAnimation(clippingNode, last);
        kxScriptChannels::animateClippingTransform();
        QVERIFY(_host->docks.getDockWidget("Node Channels") != nullptr);
        QVERIFY(!_host->docks.getDockWidget("Node Channels")->isHidden());
        QVERIFY(row("Plane.translation.X") != nullptr && row("Plane.visible") != nullptr);
        QVERIFY(!(row("Plane.visible")->flags() & Qt::ItemIsUserCheckable));
        QVERIFY(row("Plane.translation.X")->curve() == osg::NullFC);
        QVERIFY(row("Plane.rotation.Y")->node() == last);
        QCOMPARE(kxAnimNodeChannelWidget::instance()->topLevelItem(0)->childCount(), 0);

        kxAnimNodeChannelWidget* const first = kxAnimNodeChannelWidget::instance();
        clippingNode = kxAnimFixture::object("Other");
        kxScriptChannels::animateClippingTransform();
        QVERIFY(kxAnimNodeChannelWidget::instance() == first); // the window is made once
        QVERIFY(row("Plane.visible") == nullptr && row("Other.visible") != nullptr);
    }

    void keysByScript()
    {
        kxScriptChannels::animateClippingTransform(); // its window isn't on screen here
        kxAnimFixture::transform(clippingNode)->setTranslation(osg::Vec3f(3, 4, 5));
        kxAnimManager::the()->setCurrentFrame(12, false, true);
        kxScriptChannels::keyAll();
        QCOMPARE(keysOf("Plane.translation.Y"), QString("0.5:4"));
        QCOMPARE(keysOf("Plane.visible"), QString()); // left out of all
        QCOMPARE(kxUndoStack::get(0).stack()->count(), 1);

        kxAnimNodeChannelWidget::instance()->clearSelection();
        row("Plane.visible")->setSelected(true);
        kxScriptChannels::keySelected();
        QCOMPARE(keysOf("Plane.visible"), QString("0.5:1"));
        kxAnimNodeChannelWidget::instance()->rebuild();
        QCOMPARE(keysOf("Plane.visible"), QString("0.5:1"));
        QVERIFY(row("Plane.visible")->isSelected());
    }

    void keyAllMessageGoesToTheSelection()
    {
        kxAnimChannelWidget channels; // that of the curve editor
        const osg::NodePtr selected = kxAnimFixture::object("selected");
        kxSelection::the().selectNodes({selected});
        kxScriptChannels::animateClippingTransform(); // was built last, but the button says "selection"
        kxSend(kxMessageName::KeyAll);
        QVERIFY(kxAnimManager::the()->getAnimAttachment(selected) != osg::NullFC);
        QVERIFY(kxAnimManager::the()->getAnimAttachment(clippingNode) == osg::NullFC);
    }

    void nodeIsGone()
    {
        kxScriptChannels::animateClippingTransform();
        kxScene::the()->root()->subChild(clippingNode);
        clippingNode = osg::NodePtr();
        kxScriptChannels::keyAll();
        QCOMPARE(kxUndoStack::get(0).stack()->count(), 0);
        kxAnimNodeChannelWidget::instance()->rebuild();
        QCOMPARE(kxAnimNodeChannelWidget::instance()->topLevelItemCount(), 0);
    }

    void dockListsWhatThereIs()
    {
        kxAnimNodeChannelWidget::addDock();
        kxAnimNodeChannelWidget::addDock(); // once
        QDockWidget* const dock = _host->docks.getDockWidget("Node Channels");
        QVERIFY(dock != nullptr && dock->isHidden() && kxAnimNodeChannelWidget::instance() == nullptr);
        QCOMPARE(_host->window.dockWidgetArea(dock), Qt::BottomDockWidgetArea); // beside the other editors
        const osg::NodePtr plane = clippingNode;
        clippingNode = osg::NodePtr();
        _host->window.show();
        dock->toggleViewAction()->trigger();
        QVERIFY(kxAnimNodeChannelWidget::instance() != nullptr);
        QCOMPARE(kxAnimNodeChannelWidget::instance()->topLevelItemCount(), 0);
        dock->hide();
        clippingNode = plane;
        _host->docks.show("Node Channels");
        QVERIFY(row("Plane.translation.X") != nullptr);
        QWidget* const holder = kxAnimNodeChannelWidget::instance()->parentWidget();
        QCoreApplication::processEvents();
        QCOMPARE(kxAnimNodeChannelWidget::instance()->geometry(), holder->rect());
        // What a script listed stays.
        kxAnimNodeChannelWidget::instance()->rebuildFromNode(kxAnimFixture::object("Other"));
        dock->hide();
        dock->show();
        QVERIFY(row("Other.translation.X") != nullptr);
    }

private:
    std::unique_ptr<kxTestWindow> _host;
};

QTEST_MAIN(tst_kxAnimNodeChannelWidget)
#include "tst_kxAnimNodeChannelWidget.moc"
