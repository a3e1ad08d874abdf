#include "kxCurveEditorFixture.h"

#include <curveeditor/edits/kxAddAnimKeyUndoCommand.h>
#include <curveeditor/edits/kxAnimCurveUndoCommand.h>
#include <curveeditor/edits/kxTrashAnimationUndoCommand.h>
#include <curveeditor/kxAnimTimeItem.h>
#include <timeline/kxAnimControlGUII.h>

#include <QKXTimeLine.h>
#include <kernel/kxSelection.h>
#include <kxCapturedStderr.h>
#include <kxHeard.h>
#include <kxScenegraph.h>
#include <kxSendMouse.h>
#include <scene/UberMaterial.h>

#include <QLineEdit>
#include <QScreen>
#include <kxTable.h>

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
    void init()
    {
        _editor = std::make_unique<kxCurveEditorFixture>();
        _box = _editor->animated("Box", {{0, 1}, {2, 5}}, "Move");
        _animation = kxAnimManager::the()->findBlockR(kxScene::the()->root(), "Move");
        QVERIFY(_animation != osg::NullFC);
        _curve = kxAnimFixture::curveOf(osg::AnimNodePtr::dcast(_animation->getChild(0)));
        kxAnimManager::the()->setCurrentFrame(0, true, true);
        QCOMPARE(x(), 1.0f);
    }

    void cleanup() { _editor.reset(); }

    void newSceneGoesToTheStart()
    {
        QVERIFY(_editor->docks.getDockWidget("Curve Editor") != nullptr);
        _editor->show();
        _editor->library->findItem(_animation)->setSelected(true);
        QCOMPARE(_editor->curves().size(), 1);
        kxAnimManager::the()->setCurrentFrame(12, false, true);
        kxAnimFixture::clear();
        _editor->deliver(kxMessageId::NewScene);
        QCOMPARE(kxAnimManager::the()->currentFrame(), 0.0);
        QVERIFY(_editor->curves().isEmpty());
        QCOMPARE(_editor->library->topLevelItemCount(), 0);
        QCOMPARE(_editor->channels->topLevelItemCount(), 0);
        delete _editor->form;
        kxAnimManager::the()->setCurrentFrame(12, false, true);
        _editor->deliver(kxMessageId::NewScene); // without its window the module does nothing
        QCOMPARE(kxAnimManager::the()->currentFrame(), 12.0);
    }

    void startsAnimations()
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

    void sceneFollowsUndo()
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

    void showsTheSelectionUpToALimit()
    {
        _editor->show();
        std::vector<osg::NodePtr> objects{_box};
        for (int i = 1; i <= 20; ++i)
            objects.push_back(_editor->animated(qPrintable(QString("Box %1").arg(i))));
        _editor->library->rebuild(true);
        const kxHeard<> announced(kxMessageName::SelectedAnimations);
        const auto nodes = [&announced]
        { return boost::any_cast<std::vector<osg::AnimNodePtr>>(announced.last.get("nodes")).size(); };
        _editor->library->selectItemsForNodes({objects.begin(), objects.begin() + 20});
        Q_EMIT _editor->library->itemSelectionChanged();
        QCOMPARE(_editor->channels->topLevelItemCount(), 20);
        QCOMPARE(_editor->curves().size(), 19); // the curve of the first one is in its block
        QCOMPARE(nodes(), std::size_t(19));
        const int count = announced.count;
        _editor->library->selectItemsForNodes({objects.back()});
        Q_EMIT _editor->library->itemSelectionChanged();
        QVERIFY(_editor->curves().isEmpty());
        QCOMPARE(_editor->channels->topLevelItemCount(), 0);
        QCOMPARE(announced.count, count);
        const QImage hint = _editor->channels->grab().toImage();
        _editor->channels->rebuildFromNodes({});
        QVERIFY(_editor->channels->grab().toImage() != hint); // too many isn't none
        _editor->library->clearSelection();
        QCOMPARE(announced.count, count + 1);
        QCOMPARE(nodes(), std::size_t(0));
    }

    void materialsOfASelectionDoNotReplaceIt()
    {
        _editor->show();
        const osg::MaterialPtr material = osg::MaterialPtr(osg::UberMaterial::create());
        kxScene::the()->addMaterial(material);
        kxSelection::the().selectNodes({_box});
        _editor->deliver(kxMessageId::SelectionChanged);
        QCOMPARE(_editor->channels->topLevelItemCount(), 1);
        const auto rowIsMaterial = [&]
        {
            const auto* const row = dynamic_cast<kxAnimTreeWidgetItem*>(_editor->channels->topLevelItem(0));
            return row != nullptr && row->material() == material;
        };
        _editor->deliver(kxMessageId::MaterialSelection, "materials", std::vector<osg::MaterialPtr>{material});
        QVERIFY(!rowIsMaterial());
        _editor->deliver(kxMessageId::MaterialSelection, "materials", std::vector<osg::MaterialPtr>{material});
        QVERIFY(rowIsMaterial());
    }

    void showsCurvesThatAreAskedFor()
    {
        _editor->show();
        kxAnimManager* const kernel = kxAnimManager::the();
        const osg::AnimNodePtr root = kernel->getAnimAttachment(_box)->getAnimationRoot(); // of the block
        for (const osg::AnimNodePtr& asked : {root, osg::AnimNodePtr()})
        {
            kxMessage message;
            message.set("node", asked, true);
            kxController::call(kxMessageName::ShowCurves, message, 0);
            QCOMPARE(_editor->curves().size(), 1);
            QCOMPARE(_editor->curves().front()->animCurve(), _curve);
        }
        kernel->setPlaybackContextHint(1); // what is shown alone is played
        kernel->setCurrentFrame(48, false, true);
        QCOMPARE(x(), 5.0f);
        kernel->setPlaybackContextHint(0);
        QCOMPARE(_editor->graph->scene()->timeItem()->time(), 48.0);
    }

    void keyingShowsUpEverywhere()
    {
        _editor->show();
        _editor->select({kxAnimFixture::object("Ball")});
        QCOMPARE(_editor->channels->topLevelItemCount(), 1);
        QVERIFY(_editor->curves().isEmpty());
        kxAnimManager::the()->setCurrentFrame(12, false, true);
        const auto seen = [this] // the name of a channel on the screen, where nobody asks for a repaint
        {
            QCoreApplication::processEvents();
            const QWidget* const port = _editor->channels->viewport();
            const QRect row = _editor->channels->visualItemRect(_editor->channels->topLevelItem(0)->child(2));
            const QRect place(port->mapTo(&_editor->window, row.topLeft()), row.size());
            return QGuiApplication::primaryScreen()->grabWindow(_editor->window.winId()).copy(place).toImage();
        };
        const QImage white = seen();
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        for (const char* const slot : {"keyAll", "keySelected"}) // of no row: that makes the curves alone
        {
            const bool withKeys = qstrcmp(slot, "keyAll") == 0;
            QMetaObject::invokeMethod(_editor->channels, slot);
            for (int round = 0; round < 2; ++round)
            {
                QCOMPARE(_editor->library->topLevelItemCount(), 2);
                QCOMPARE(seen() == white, !withKeys);
                const QList<kxAnimGraphCurve*> curves = _editor->curves();
                QVERIFY(!withKeys || (!curves.isEmpty() && curves.front()->point(0)->pos().x() == 12));
                stack->undo();
                QCOMPARE(_editor->library->topLevelItemCount(), 1);
                QVERIFY(seen() == white);
                stack->redo();
            }
            stack->undo();
        }
        _editor->channels->keyAll();
        _editor->channels->createBlocks();
        const QList<QTreeWidgetItem*> made = _editor->library->selectedItems();
        QCOMPARE(made.size(), 1);
        QVERIFY(static_cast<kxAnimTreeWidgetItem*>(made.front())->animNode() != osg::NullFC);
    }

    void framesTheFirstCurvesThatLeadSomewhere()
    {
        _editor->show();
        _editor->select({kxAnimFixture::object("Ball")});
        const auto keyAt = [this](double frame)
        {
            kxAnimManager::the()->setCurrentFrame(frame, false, true);
            _editor->channels->keyAll();
            const QRect port = _editor->graph->viewport()->rect();
            return port.contains(_editor->graph->mapFromScene(frame, 0));
        };
        QVERIFY(keyAt(300) && keyAt(1800));
        QVERIFY(!keyAt(9000)); // the zoom is the user's
    }

    /// What others than the curve editor make, take out and bring back.
    void followsScripts()
    {
        _editor->show();
        const osg::NodePtr ball = kxAnimFixture::object("Ball");
        kxAnimFixture::transform(ball)->setTranslation(osg::Vec3f(0, 7, 0));
        _editor->select({ball});
        kxAnimManager::the()->setCurrentFrame(12, false, true);
        const QTreeWidgetItem* const y = _editor->channels->topLevelItem(0)->child(1);
        const auto seen = [this, y]
        {
            QCoreApplication::processEvents();
            return QString(y->data(0, Qt::ForegroundRole).isValid() ? "%1 keyed, %2 shown" : "%1 white, %2 shown")
                .arg(y->text(1))
                .arg(_editor->curves().isEmpty() ? 0 : _editor->curves().front()->points().size());
        };
        const QString white = seen();
        QCOMPARE(white, QString("7.000 white, 0 shown"));
        kxAnimManager::the()->addAnimation(ball, kxAnimFixture::curve("translation", "Y", {{0, 1}, {1, 5}}));
        QCOMPARE(seen(), QString("3.000 keyed, 0 shown"));
        const_cast<QTreeWidgetItem*>(y)->setSelected(true);
        QCOMPARE(seen(), QString("3.000 keyed, 2 shown"));
        const osg::AnimCurvePtr curve = _editor->curveOf(ball);
        curve->addPoint({2, 9}, {}, {}, 1, 1, true, true);
        osg::markChanged(curve, osg::AnimCurveBase::ControlPointsFieldMask);
        QCOMPARE(seen(), QString("3.000 keyed, 3 shown"));
        kxUndoStack::get(0).add(new kxTrashAnimationUndoCommand({kxNodePtr(ball)}));
        QCOMPARE(seen(), white);
        kxUndoStack::get(0).stack()->undo();
        QCOMPARE(seen(), QString("3.000 keyed, 3 shown"));
        // The object's row goes with its animations, and the object stays selected.
        _editor->select({ball});
        _editor->library->remove();
        QCoreApplication::processEvents();
        QCOMPARE(_editor->channels->topLevelItemCount(), 1);
        QVERIFY(_editor->curves().isEmpty());
        kxUndoStack::get(0).stack()->undo();
        QCOMPARE(_editor->channels->topLevelItemCount(), 1);
        QCOMPARE(_editor->curves().size(), 1);
    }

    void marksFollowTheKeys()
    {
        _editor->show();
        kxAnimControlGUII timeline(&_editor->window);
        const osg::NodePtr ball = _editor->animated("Ball", {{0.25f, 1}, {0.5f, 1}, {1, 1}, {1.5f, 5}});
        _editor->select({ball});
        _editor->channels->topLevelItem(0)->setSelected(true); // not in the library
        kxAnimGraphScene* const graph = _editor->graph->scene();
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        const auto marks = [&timeline] { return timeline._timeLine->keyFrames().keys(); };
        typedef QList<float> Frames;
        QCOMPARE(marks(), (Frames{6, 12, 24, 36}));

        graph->curves().front()->point(3)->setSelected(true);
        Q_EMIT _editor->form->_frame->relativeOperatorApplied(RelativeAdd, 4);
        QCOMPARE(marks(), (Frames{6, 12, 24, 40}));
        graph->copySelectedPoints();
        kxAnimManager::the()->setCurrentFrame(60, false, true);
        kxSend(kxMessageName::PasteKeys); // of the timeline
        QCOMPARE(marks(), (Frames{6, 12, 24, 40, 60}));
        stack->undo();
        QCOMPARE(marks(), (Frames{6, 12, 24, 40}));
        QMetaObject::invokeMethod(_editor->channels, "removeConstCurves");
        QCOMPARE(marks(), (Frames{6, 24, 40}));
        stack->setIndex(0);
        QCOMPARE(marks(), (Frames{6, 12, 24, 36}));
        stack->redo();
        QCOMPARE(marks(), (Frames{6, 12, 24, 40}));
    }

    void keysStaySelected_data()
    {
        // frames of the keys that are selected, and those that are still after the steps and after their undo
        kxColumns<QString, QList<int>, QList<int>, QList<int>>("what", "selected", "done", "undone");
        typedef QList<int> Frames;
        kxRow("moved past others", "+30", Frames{10, 20}, Frames{40, 50}, Frames{10, 20});
        kxRow("deleted", "delete", Frames{10, 30}, Frames{}, Frames{10, 30});
        kxRow("a key added before them", "key", Frames{20, 30}, Frames{20, 30}, Frames{20, 30});
    }

    void keysStaySelected()
    {
        QFETCH(QString, what);
        QFETCH(QList<int>, selected);
        QFETCH(QList<int>, done);
        QFETCH(QList<int>, undone);
        _editor->show();
        const osg::NodePtr ball =
            _editor->animated("Ball", {{0, 1}, {10 / 24.0f, 2}, {20 / 24.0f, 3}, {30 / 24.0f, 4}, {1.5f, 5}});
        _editor->select({ball});
        const auto frames = [this]
        {
            QList<int> all;
            QList<kxAnimGraphPoint*> points;
            _editor->graph->scene()->selectedPoints(points);
            for (const kxAnimGraphPoint* const point : points)
                all << qRound(point->pos().x());
            return all;
        };
        for (kxAnimGraphPoint* const point : _editor->curves().front()->points())
            point->setSelected(selected.contains(qRound(point->pos().x())));
        if (what == "+30")
            Q_EMIT _editor->form->_frame->relativeOperatorApplied(RelativeAdd, 30);
        else if (what == "delete")
            _editor->graph->scene()->deleteSelectedPoints();
        else
            kxUndoStack::get(0).add(
                new kxAddAnimKeyUndoCommand(_editor->curveOf(ball), osg::CCPnt({0.2f, 9}, {}, {}, 1, 1)));
        _editor->deliver(kxMessageId::AnimationsChanged);
        QCOMPARE(frames(), done);
        kxUndoStack::get(0).stack()->undo();
        QCOMPARE(frames(), undone);
        kxUndoStack::get(0).stack()->redo();
        QCOMPARE(frames(), done);
        QCOMPARE(_editor->form->_frame->isEnabled(), !done.isEmpty());
    }

    void listedObjectsStay()
    {
        kxCurveEditorFixture editor;
        editor.show();
        const osg::NodePtr box = editor.animated("Box");
        const osg::NodePtr still = kxAnimFixture::object("Still"); // has no row in the library
        // The undo of a deletion notifies the selection before the change of the scene.
        editor.deliver(kxMessageId::NodeSelection, "nodes", std::vector<osg::NodePtr>{box, still});
        editor.deliver(kxMessageId::SceneChanged);
        QCOMPARE(editor.channels->topLevelItemCount(), 2);
        QCOMPARE(editor.library->selectedItems().size(), 1);
        kxAnimGraphPoint* const key = editor.curves().front()->point(0);
        key->setSelected(true);
        key->setKeyPos(3, 2);
        editor.graph->scene()->moveSelectedPoints();
        kxUndoStack::get(0).stack()->undo();
        QCOMPARE(editor.channels->topLevelItemCount(), 2);
        QCOMPARE(editor.curves().size(), 1);

        editor.library->clearSelection(); // by its user, who doesn't want it back
        editor.deliver(kxMessageId::SceneChanged);
        QVERIFY(editor.curves().isEmpty() && editor.library->selectedItems().isEmpty());
        QCOMPARE(editor.channels->topLevelItemCount(), 0);
        editor.select({box, still});
        QCOMPARE(editor.curves().size(), 1);
        kxScene::the()->root()->subChild(box);
        editor.deliver(kxMessageId::SceneChanged);
        QVERIFY(editor.curves().isEmpty());
        editor.select({still});
        editor.deliver(kxMessageId::NewScene);
        QCOMPARE(editor.channels->topLevelItemCount(), 0);

        editor.docks.getDockWidget("Curve Editor")->hide();
        const osg::NodePtr other = editor.animated("Other");
        kxSelectionManager::selectNode(other);
        editor.deliver(kxMessageId::SelectionChanged);
        editor.show();
        QCOMPARE(editor.channels->topLevelItem(0)->text(0), QString("Other"));
        QCOMPARE(editor.curves().size(), 1);
    }

    void searchOutlivesRebuilds()
    {
        _editor->show();
        _editor->animated("Ball", {{0, 1}, {1, 5}}, "Roll");
        _editor->animated("Cup", {{0, 1}, {1, 5}}, "Rest");
        _editor->library->rebuild(true);
        const auto shown = [this]
        {
            QStringList names;
            for (int i = 0; i < _editor->library->topLevelItemCount(); ++i)
                names << _editor->library->topLevelItem(i)->text(0);
            return names;
        };
        auto* const line = _editor->form->findChild<QLineEdit*>("SearchLine");
        line->setText("r");
        QCOMPARE(shown(), QStringList({"Rest", "Roll"}));
        _editor->library->topLevelItem(1)->setSelected(true);
        _editor->select({_box});
        _editor->channels->keyAll();
        QCOMPARE(shown(), QStringList({"Rest", "Roll"}));
        _editor->library->topLevelItem(0)->setSelected(true);
        QSignalSpy changes(_editor->library, SIGNAL(itemSelectionChanged()));
        _editor->library->rebuild(true);
        QVERIFY(_editor->library->topLevelItem(0)->isSelected() && changes.isEmpty());
        _editor->library->remove();
        QCOMPARE(shown(), QStringList({"Roll"}));
        kxUndoStack::get(0).stack()->undo();
        QCOMPARE(shown(), QStringList({"Rest", "Roll"}));
        line->clear();
        QCOMPARE(shown(), QStringList({"Ball", "Box", "Cup"}));
    }

    void emptySearchLeavesUndoToTheScene()
    {
        _editor->show();
        auto* const line = _editor->form->findChild<QLineEdit*>("SearchLine");
        QTest::keyClicks(line, "Ro");
        QVERIFY(kxTakesKey(line, Qt::Key_Z, Qt::ControlModifier));
        line->selectAll();
        QTest::keyClick(line, Qt::Key_Backspace);
        QVERIFY(!kxTakesKey(line, Qt::Key_Z, Qt::ControlModifier));
        QVERIFY(!kxTakesKey(line, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier));
        QVERIFY(kxTakesKey(line, Qt::Key_V, Qt::ControlModifier));
    }

    void unsharedCurvesAreTheOnesEdited()
    {
        _editor->show();
        kxAnimManager::the()->copy(_animation, _box);
        const osg::AnimNodePtr clone = kxAnimManager::the()->clonePasteTo(_box, false, false).front();
        _editor->library->rebuild(true);
        for (QTreeWidgetItemIterator row(_editor->library); *row != nullptr; ++row)
            (*row)->setSelected(static_cast<kxAnimTreeWidgetItem*>(*row)->nodeId() == clone->getId());
        QCOMPARE(_editor->curves().front()->animCurve(), _curve);
        QMetaObject::invokeMethod(_editor->library, "unshare");
        const osg::AnimCurvePtr own = kxAnimFixture::curveOf(osg::AnimNodePtr::dcast(clone->getChild(0)));
        QVERIFY(own != _curve);
        QCOMPARE(_editor->curves().size(), 1);
        QCOMPARE(_editor->curves().front()->animCurve(), own);
    }

private:
    float x() const { return kxAnimFixture::transform(_box)->getTranslation().x(); }

    std::unique_ptr<kxCurveEditorFixture> _editor;
    osg::NodePtr _box;           // the one object, moved along x
    osg::AnimCurvePtr _curve;    // moves it: 1 at 0 s, 5 at 2 s
    osg::AnimNodePtr _animation; // the block of the curve, "Move"
};

QTEST_MAIN(tst_kxAnimCurveEditor)
#include "tst_kxAnimCurveEditor.moc"
