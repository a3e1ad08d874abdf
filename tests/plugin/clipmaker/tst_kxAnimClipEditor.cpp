#include "kxClipMakerFixture.h"

#include <curveeditor/edits/kxTrashAnimationUndoCommand.h>
#include <curveeditor/kxAnimTimeItem.h>

#include <clipmaker/edits/kxClipNodes.h>
#include <clipmaker/kxAnimClipItem.h>
#include <clipmaker/kxAnimSequenceGUIW.h>
#include <frame/kxCallbacks.h>
#include <wizard/kxAnimWizClipGUI.h>

#include <kxFramePlayer.h>
#include <kxPlatform.h>
#include <kxSendMouse.h>
#include <kxTreeProbe.h>
#include <osg/Share.h>

#include <QAction>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <kxCapturedStderr.h>
#include <kxTable.h>

#include <functional>
#include <limits>

namespace
{
std::vector<osg::AnimNodePtr> announced;
std::function<void()> onAnnounced;

void hearBlocks(kxMessage& message)
{
    announced = boost::any_cast<std::vector<osg::AnimNodePtr>>(message.get("blockNodes"));
    onAnnounced();
}
} // namespace

class tst_kxAnimClipEditor : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        _maker = std::make_unique<kxClipMakerFixture>();
        _form = _maker->form;
        _maker->fill();
        _clip = _maker->showClip;
    }

    void cleanup() { _maker.reset(); }

    void showsWhatIsSelected()
    {
        QVERIFY(!_form->_start->isEnabled() && !_form->_postCycles->isEnabled());
        select(_clip);
        QCOMPARE(shown()->clip(), _clip);
        QCOMPARE(shown()->bars().size(), 2);
        QCOMPARE(_form->_duration->value(), 72.0);
        QVERIFY(_form->_postCycles->isEnabled() && !_form->_duration->isEnabled());
        // What is no clip is shown in the clip that holds it, also among hits of a search.
        const osg::AnimNodePtr trigger = kxAnimFixture::trigger("Bell", 1);
        _clip->addChild(trigger);
        for (const bool isHit : {false, true})
            for (const osg::AnimNodePtr& inside : {child(_clip, 1), trigger})
            {
                isHit ? tree()->rebuildFrom({_clip, inside}) : tree()->rebuild(false);
                shown()->clear();
                select(inside);
                QCOMPARE(shown()->clip(), _clip);
                QCOMPARE(shown()->bars().size(), 3);
            }
        const osg::Share<osg::AnimNode> loose(kxAnimFixture::block("Loose", {}));
        tree()->rebuildFrom({loose});
        select(loose);
        QVERIFY(shown()->clip() == osg::NullFC);
        tree()->rebuild(false);
        tree()->expandAll();
        tree()->selectAll();
        QCOMPARE(shown()->bars().size(), 0);
    }

    void looks()
    {
        const QPoint stats = _form->_statsFrame->mapTo(_form, QPoint(1, 1));
        QCOMPARE(_form->grab().toImage().pixelColor(stats), QColor(70, 70, 70));
        QCOMPARE(_form->_viewFrame->geometry().bottom() + 1, _form->frame->y()); // nothing between view and player
        for (const QToolButton* const button : _form->frame->findChildren<QToolButton*>())
            QVERIFY2(!button->icon().isNull() && !button->accessibleName().isEmpty(), qPrintable(button->objectName()));
        QStringList menus;
        for (const QAction* const menu : _form->menubar->actions())
            menus << menu->text() + (menu->menu()->isTearOffEnabled() ? ": " : " ") + kxTextsOf(menu->menu());
        QCOMPARE(menus.join(" / "),
                 QString("Edit: New Clip | Rename Delete | Copy Paste | Duplicate | Information... / "
                         "View: Frame | Lock Objects Unlock Objects"));
    }

    void framesWhatWasNotSeen()
    {
        const osg::AnimNodePtr far = kxAnimFixture::clip("Far", {kxAnimFixture::clone(child(_clip, 0), 400)});
        kxAnimManager::the()->addToClipStructure(far);
        tree()->rebuild(false);
        const auto isSeen = [this]
        {
            _maker->view->grab();
            return _maker->view->mapToScene(_maker->view->viewport()->rect()).boundingRect();
        };
        const auto seen = [&](const osg::AnimNodePtr& clip)
        {
            select(clip);
            return isSeen();
        };
        const QRectF first = seen(_clip);
        QVERIFY(first.left() < 0 && std::abs(first.right() - 72) < 1);
        QVERIFY(std::abs(seen(far).right() - 9624) < 1);
        QVERIFY2(std::abs(seen(_clip).right() - 72) < 1, "nothing of it was in sight");
        _maker->view->scale(0.5, 1); // the user's
        const QRectF wider = seen(_clip);
        tree()->clearSelection();
        QCOMPARE(seen(_clip), wider);
        _maker->docks.getDockWidget("Clip Maker")->close();
        select(far);
        _maker->docks.show("Clip Maker");
        QVERIFY(std::abs(seen(far).right() - 9624) < 1);
        const osg::AnimNodePtr empty = kxAnimFixture::clip("Empty", {});
        kxAnimManager::the()->addToClipStructure(empty);
        kxAnimManager::the()->setDetailedRangeEnd(40);
        tree()->rebuild(false);
        QVERIFY(std::abs(seen(empty).right() - 40) < 1);
        QVERIFY(_maker->view->mapFromScene(0, 0).x() > 80 * kxPlatform::getDpiScaleX()); // beside the column
        _maker->view->scale(0.5, 1);
        const QRectF users = seen(_clip);
        QCOMPARE(seen(empty), users);
        // Bars from elsewhere are framed, unless somebody works in the view.
        for (const bool works : {true, false})
        {
            const osg::AnimNodePtr filled = kxAnimFixture::clip("Filled", {});
            kxAnimManager::the()->addToClipStructure(filled);
            tree()->rebuild(false);
            const QRectF before = seen(filled);
            if (works)
                kxSendMouse(_maker->view->viewport(), QEvent::MouseButtonPress, {300, 90}, Qt::RightButton,
                            Qt::RightButton);
            filled->addChild(kxAnimFixture::clone(child(_clip, 0), 0));
            kxAnimFixture::changed(filled, osg::Node::ChildrenFieldMask);
            kxSend(kxMessageName::PastedAnimations);
            QCoreApplication::processEvents();
            const QRectF after = isSeen();
            QVERIFY(shown()->bars().size() == 1 && (works ? after == before : std::abs(after.right() - 24) < 1));
        }
        kxAnimManager::the()->setDetailedRangeEnd(25);
    }

    void bringsNewBarsIntoSight()
    {
        select(_clip);
        _maker->view->grab();
        const auto isInSight = [this]
        {
            const int dpi = int(kxPlatform::getDpiScaleX());
            const QRect free = _maker->view->viewport()->rect().adjusted(80 * dpi, 20 * dpi, 0, -20 * dpi);
            return free.intersects(
                _maker->view->mapFromScene(shown()->bars().back()->sceneBoundingRect()).boundingRect());
        };
        shown()->bars()[1]->setSelected(true);
        for (int i = 0; i < 20; ++i) // each on a track of its own
            shown()->duplicateSelectedItems();
        QVERIFY(isInSight());
        QCOMPARE(tree()->selectedClip(), _clip);
        shown()->copySelectedItems();
        shown()->setTime(3000);
        shown()->paste();
        QVERIFY(isInSight());
        shown()->setTime(-4000);
        QMetaObject::invokeMethod(_maker->module.get(), "pasteClone"); // into the tree
        QCoreApplication::processEvents();
        QVERIFY(isInSight());
        static_cast<kxAnimClipItem*>(shown()->bars()[0])->duplicate();
        QVERIFY(isInSight());
        const QPoint place = _maker->view->mapFromScene(0, 0);
        child(_clip, 1)->moveBy(2000, 0); // its bar is no new one
        kxAnimFixture::changed(child(_clip, 1), osg::AnimNode::OffsetFieldMask);
        QCoreApplication::processEvents();
        QCOMPARE(_maker->view->mapFromScene(0, 0), place);
    }

    void rowsAndBarsSelectEachOther()
    {
        const osg::AnimNodePtr inner = kxAnimFixture::clip("Inner", {kxAnimFixture::clone(child(_clip, 0), 1)});
        inner->setOffset(osg::Vec2f(6, 0));
        _clip->addChild(inner);
        tree()->rebuild(false);
        tree()->collapseAll();
        const auto row = [this](const osg::AnimNodePtr& node)
        {
            QTreeWidgetItemIterator it(tree());
            while (*it != nullptr && static_cast<kxAnimTreeWidgetItem*>(*it)->nodeId() != node->getId())
                ++it;
            return *it;
        };
        const auto picture = [&](const osg::AnimNodePtr& node)
        { return tree()->viewport()->grab(tree()->visualItemRect(row(node))).toImage(); };
        select(_clip);
        shown()->bars()[1]->setSelected(true);
        QVERIFY(row(_clip)->isExpanded()); // the row is in sight, and stands out
        QCOMPARE(tree()->selectedClip(), _clip);
        const QImage marked = picture(child(_clip, 1));
        QVERIFY(marked != picture(child(_clip, 0)));
        tree()->rebuild(true);
        QCOMPARE(picture(child(_clip, 1)), marked);

        select(child(_clip, 0));
        QCOMPARE(shown()->selectedBars(), {shown()->bars()[0]});
        QVERIFY(picture(child(_clip, 1)) != marked);
        shown()->bars()[1]->setSelected(true);
        tree()->rebuild(true); // new rows are no new selection
        QCOMPARE(shown()->selectedBars().size(), 2);
        shown()->bars()[0]->setSelected(false);
        QCOMPARE(tree()->selectedItems(), {row(child(_clip, 1))});
        shown()->bars()[1]->setSelected(false);
        shown()->bars()[2]->setSelected(true);
        QCOMPARE(shown()->clip(), _clip); // the inner clip isn't shown by a click on its bar
        select(inner);
        QCOMPARE(shown()->clip(), inner);
    }

    void fieldsEditBarsAndClip()
    {
        select(_clip);
        kxAnimAbstractClipItem* const bar = shown()->bars()[1];
        bar->setSelected(true);
        _form->_start->setValue(50);
        QCOMPARE(bar->node()->getOffset()[0] * 24, 50.0f);
        bar->setX(60); // as a drag does
        QCOMPARE(_form->_start->value(), 60.0);
        _form->_start->setValue(50.3); // snapped away
        QCOMPARE(_form->_start->value(), 50.0);
        _form->_duration->setValue(48);
        QCOMPARE(bar->node()->getScale(), 2.0f);
        _form->_duration->setValue(0); // refused: nothing could make it longer again
        QVERIFY(bar->node()->getScale() > 0);
        QCOMPARE(_form->_duration->value(), 48.0);
        _form->_postCycles->setValue(3);
        QCOMPARE(bar->node()->getPostCycles(), 3);
        shown()->clearSelection();
        bar->setSelected(true);
        QCOMPARE(_form->_duration->value(), 48.0); // of one pass
        QCOMPARE(_form->_postCycles->value(), 3);
        _form->_duration->setValue(72);
        QCOMPARE(bar->node()->getScale(), 3.0f);
        _form->_start->setFocus();
        shown()->clearSelection();
        QVERIFY(_form->window()->focusWidget() != _form->_postCycles); // keys type into no other field
        QCOMPARE(_form->_postCycles->value(), 0);                      // the clip's
        QFocusEvent focus(QEvent::FocusIn);
        QApplication::sendEvent(_maker->view, &focus);
        QCOMPARE(kxAnimManager::the()->motionBlurObjectID(), _clip->getId());
        _form->_postCycles->setValue(-1);
        QCOMPARE(_clip->getPostCycles(), -1);
        QVERIFY(std::isfinite(_form->_duration->value()));
        _clip->setPostCycles(std::numeric_limits<int>::max());
        select(child(_clip, 0));
        select(_clip);
        QVERIFY(_form->_duration->value() >= 0);
        tree()->clearSelection();
        QCOMPARE(kxAnimManager::the()->motionBlurObjectID(), 0u);
    }

    void operatorsChangeEachBar_data()
    {
        // bars: start and length of the two that are selected, which begin as "48+24,120+48"
        kxColumns<QString, QString, QString>("field", "typed", "bars");
        kxRow("start plus", "_start", "+=24", "72+24,144+48");
        kxRow("one start for all", "_start", "30", "30+24,30+48");
        kxRow("divided by nothing", "_start", "/=0", "48+24,120+48");
        kxRow("duration times", "_duration", "*=1.5", "48+36,120+72");
        kxRow("no length for one of them", "_duration", "-=30", "48+24,120+18");
        kxRow("one duration for all", "_duration", "=36", "48+36,120+36");
    }

    void operatorsChangeEachBar()
    {
        QFETCH(QString, field);
        QFETCH(QString, typed);
        QFETCH(QString, bars);
        const osg::AnimNodePtr longer = kxAnimFixture::clone(child(_clip, 0), 5, 1);
        longer->setScale(2);
        _clip->addChild(longer);
        tree()->rebuild(false);
        select(_clip);
        for (const int i : {1, 2})
            shown()->bars()[i]->setSelected(true);
        auto* const spinner = _form->findChild<QKXDoubleSpiner*>(field);
        spinner->selectAll();
        QTest::keyClicks(spinner, typed);
        QTest::keyClick(spinner, Qt::Key_Return);
        QStringList now;
        for (const int i : {1, 2})
        {
            const kxClipGeometry::Span span = kxClipNodes::spanOf(child(_clip, unsigned(i)));
            now << QString("%1+%2").arg(std::round(span.x * 100) / 100).arg(std::round(span.width * 100) / 100);
        }
        QCOMPARE(now.join(','), bars);
        const QString last = now.back();
        QCOMPARE(spinner->value(), last.split('+')[field == "_start" ? 0 : 1].toDouble());
        QCOMPARE(child(_clip, 0)->getOffset()[0], 0.0f);
        const bool isRefused = QByteArray(QTest::currentDataTag()).startsWith("no ");
        QCOMPARE(!_form->statusbar->currentMessage().isEmpty(), isRefused);
    }

    void playsTheClip()
    {
        const kxFramePlayer& player = *kxFramePlayer::the();
        const auto isTimeMovable = [this]
        {
            for (const QGraphicsItem* const item : shown()->items())
                if (dynamic_cast<const kxAnimTimeItem*>(item) != nullptr)
                    return item->flags().testFlag(QGraphicsItem::ItemIsMovable);
            return false;
        };
        press("_play"); // no clip, nothing to play
        QVERIFY(!player.isPlaying() && !_form->_play->isChecked());
        select(_clip);
        press("_play");
        QVERIFY(player.isPlaying());
        QVERIFY(!isTimeMovable());
        QCOMPARE(player.owner(), static_cast<void*>(_maker->module.get()));
        QCOMPARE(player.getPlaybackParams().end, 72.0);
        press("_playRev");
        QVERIFY(player.getPlaybackParams().reverse && _form->_playRev->isChecked() && !_form->_play->isChecked());
        press("_stop");
        QVERIFY(!player.isPlaying() && _form->_gotoStart->isEnabled() && !_form->_playRev->isChecked());
        QVERIFY(isTimeMovable());
        press("_play");
        kxFramePlayer::the()->start(kxFramePlaybackParams(), false, this); // another owner takes the player
        QVERIFY(!_form->_play->isChecked());
        shown()->setTime(30);
        kxSend(kxMessageName::FramePlayerLoopChanged); // no business of the clip
        QCOMPARE(shown()->time(), 30.0);
        kxFramePlayer::the()->stop(this);
        press("_play");
        _maker->deliver(kxMessageId::AnimationsChanged);
        QVERIFY2(player.isPlaying(), "the same rows, built anew, let it play");
        select(child(_clip, 0));
        QVERIFY2(!player.isPlaying(), "another selection stops the playback");
    }

    void fieldsFollowTheClip()
    {
        select(_clip);
        const osg::AnimNodePtr second = child(_clip, 1);
        second->moveBy(1, 0); // by a script, say
        kxAnimFixture::changed(second, osg::AnimNode::OffsetFieldMask);
        QCoreApplication::processEvents();
        QCOMPARE(_form->_duration->value(), 96.0);
        shown()->bars()[1]->setSelected(true);
        QCOMPARE(_form->_start->value(), 72.0);
        kxAnimManager::the()->setFPS(30); // keys keep their seconds
        QCOMPARE(shown()->bars()[1]->x(), 90.0);
        QCOMPARE(_form->_start->value(), 90.0);
        _form->_start->setValue(130);
        QCOMPARE(second->getOffset()[0] * 30, 130.0f);
        shown()->clearSelection();
        QCOMPARE(_form->_duration->value(), 160.0);
        second->getParent()->subChild(second);
        _clip->moveBy(2, 0);
        kxAnimFixture::changed(_clip, osg::AnimNode::OffsetFieldMask);
        QCoreApplication::processEvents();
        QCOMPARE(_form->_start->value(), 60.0);
        QCOMPARE(_form->_duration->value(), 30.0);
    }

    /// What the library does with it may build the tree anew before the clip is shown.
    void tellsTheLibraryFirst()
    {
        select(_clip);
        tree()->expandAll();
        osg::AnimNodePtr shownThen = _clip;
        onAnnounced = [&]
        {
            shownThen = shown()->clip();
            const QSignalBlocker blocker(tree());
            tree()->rebuild(true);
        };
        kxCallbacks callbacks;
        callbacks.add(kxMessageName::ClipBlockSelected, hearBlocks);
        tree()->clearSelection();
        QCOMPARE(shown()->bars().size(), 0);
        select(child(_clip, 1));
        QCOMPARE(announced, std::vector<osg::AnimNodePtr>{child(_clip, 1)});
        QVERIFY(shownThen == osg::NullFC);
        QCOMPARE(shown()->clip(), _clip);
        QCOMPARE(shown()->bars().size(), 2);
        onAnnounced = [] {};
        QCOMPARE(shown()->selectedBars(), {shown()->bars()[1]});
        shown()->clearSelection();
        announced.clear();
        shown()->bars()[0]->setSelected(true);
        QCOMPARE(announced, std::vector<osg::AnimNodePtr>{child(_clip, 0)});
    }

    /// Also in a menu that is open, torn off.
    void offersWhatCanBeMade()
    {
        const QAction* const create = _form->findChild<QToolBar*>("QuickActionBar")->actions().front();
        const auto offered = [create]
        {
            QStringList texts;
            for (const QAction* const action : create->menu()->actions())
                if (action->isEnabled())
                    texts << action->text();
            return texts.join(',');
        };
        QCOMPARE(offered(), QStringLiteral("Clip,Animation,Camera Track"));
        select(_clip);
        QCOMPARE(offered(), QStringLiteral("Clip,Animation,Camera Track,Viewpoint,Variant Set,Sequence"));
        select(child(_clip, 0));
        QCOMPARE(offered(), QStringLiteral("Animation,Camera Track"));
        tree()->expandAll();
        tree()->selectAll();
        QCOMPARE(offered(), QStringLiteral("Clip,Animation,Camera Track"));
    }

    /// Whoever deletes, a row that is left behind would be clicked, shown and dropped on.
    void rowsGoWithWhatIsDeleted()
    {
        const auto rows = [this]
        {
            QCoreApplication::processEvents();
            return tree()->topLevelItemCount() == 0 ? -1 : tree()->topLevelItem(0)->childCount();
        };
        const auto remove = [this] { QMetaObject::invokeMethod(_maker->module.get(), "clickedDelete"); };
        select(_clip);
        shown()->bars()[0]->setSelected(true);
        remove(); // neither had the focus
        QCOMPARE(rows(), 2);
        QMetaObject::invokeMethod(_maker->module.get(), "updateLastDeleteFocus", Q_ARG(QWidget*, _maker->view));
        remove();
        QCOMPARE(rows(), 1);
        QUndoStack& stack = *kxUndoStack::get(0).stack();
        kxUndoStack::get(0).add(new kxTrashAnimationUndoCommand({kxNodePtr(_clip)})); // as a script does
        QCOMPARE(rows(), -1);
        for (const int count : {1, 2, 1, -1})
        {
            count < rows() ? stack.redo() : stack.undo();
            QCOMPARE(rows(), count);
        }
    }

    void pastesIntoClipsAlone()
    {
        const osg::AnimNodePtr block = child(_clip, 1);
        kxAnimManager::the()->copy(block, osg::FieldContainerPtr());
        const auto paste = [this](bool byKey = false)
        {
            kxCapturedStderr log;
            byKey ? QTest::keyClick(tree(), Qt::Key_V, Qt::ControlModifier)
                  : void(QMetaObject::invokeMethod(_maker->module.get(), "pasteClone"));
            return log.text();
        };
        select(block);
        for (const bool byKey : {false, true})
            QVERIFY(paste(byKey).contains("\"Move\": it is no clip"));
        QCOMPARE(block->getNChildren(), 1u);
        QCOMPARE(_clip->getNChildren(), 2u);
        select(_clip);
        shown()->setTime(120);
        QVERIFY(paste().isEmpty());
        QCOMPARE(_clip->getNChildren(), 3u);
        QCoreApplication::processEvents(); // the bars follow
        QCOMPARE(shown()->bars().back()->x(), 120.0);
        QVERIFY(!child(_clip, 2)->getFlipped());
        // At the top a clip has a core of its own, its blocks are shared.
        kxAnimManager::the()->copy(_clip, osg::FieldContainerPtr());
        tree()->clearSelection();
        QVERIFY(paste().isEmpty());
        const osg::AnimNodePtr copy = osg::AnimNodePtr::dcast(kxAnimManager::the()->clipStructureRoot()->getChild(1));
        QVERIFY(copy->getCore() != _clip->getCore() && child(copy, 1)->getCore() == block->getCore());
    }

    void answersAndFollows()
    {
        kxMessage question;
        kxController::call(kxMessageName::SelectedClipNode, question, 0);
        QVERIFY(question.get("node").empty());
        select(_clip);
        kxController::call(kxMessageName::SelectedClipNode, question, 0);
        QCOMPARE(boost::any_cast<osg::AnimNodePtr>(question.get("node")), _clip);
        kxMessage frame;
        frame.set("frame", 36.0, true);
        kxController::call(kxMessageName::FramePlayerFrameChanged, frame, 0);
        QCOMPARE(shown()->time(), 36.0);
        child(_clip, 1)->setOffset(osg::Vec2f(3, 0)); // without a word
        kxController::call(kxMessageName::UpdateClipScene, frame, 0);
        QCOMPARE(shown()->bars()[1]->x(), 72.0);
        kxAnimSequenceGUIW* triggers = nullptr;
        for (QWidget* const widget : QApplication::topLevelWidgets())
            if (auto* const dialog = qobject_cast<kxAnimSequenceGUIW*>(widget))
                triggers = dialog;
        triggers->_frame->setValue(36);
        kxAnimFixture::clear();
        _maker->deliver(kxMessageId::NewScene);
        QCOMPARE(tree()->topLevelItemCount(), 0);
        QCOMPARE(shown()->bars().size(), 0);
        QCOMPARE(shown()->time(), 0.0);
        QCOMPARE(triggers->_frame->value(), 0);
    }

    /// Where its window is behind a tab, too.
    void showsTheSourceInSight()
    {
        auto* const curves = new QWidget;
        _maker->docks.add("Curve Editor", "", curves, "", QIcon(), "Curves", 0, false, nullptr);
        _maker->docks.getDockWidget("Curve Editor")->setMinimized(true);
        _maker->docks.show("Clip Maker");
        QCoreApplication::processEvents();
        QVERIFY(curves->visibleRegion().isEmpty());
        select(_clip);
        static_cast<kxAnimClipItem*>(shown()->bars()[1])->showSource();
        QCoreApplication::processEvents();
        QVERIFY(!curves->visibleRegion().isEmpty());
    }

    void holdsTheDialogOfWizardClips()
    {
        const osg::AnimNodePtr made = kxAnimFixture::group<osg::AnimWizClipBase>("Made", {});
        made->addChild(kxAnimFixture::clone(child(_clip, 0), 0));
        made->setOffset(osg::Vec2f(4, 0));
        _clip->addChild(made);
        kxAnimFixture::changed(_clip, osg::Node::ChildrenFieldMask);
        select(_clip);
        const QPointer<kxAnimWizClipGUI> dialog = kxAnimWizClipGUI::create(nullptr); // the one that the module has
        const auto length = [this] { return shown()->bars()[2]->sceneBoundingRect().width(); };

        dialog->show(made);
        dialog->_duration->setValue(3);
        QCoreApplication::processEvents();
        QCOMPARE(length(), 72.0); // the bar follows
        _maker->docks.getDockWidget("Clip Maker")->close();
        _maker->deliver(kxMessageId::StopPlayback); // with the window hidden too
        QVERIFY(!dialog->isVisible());
        _maker->docks.show("Clip Maker");
        QCoreApplication::processEvents();
        select(_clip);
        QCOMPARE(length(), 24.0);

        QWidget* const port = _maker->view->viewport();
        _maker->view->frame();
        const QPoint bar = _maker->view->mapFromScene(shown()->bars()[2]->sceneBoundingRect().center());
        kxSendMouse(port, QEvent::MouseButtonDblClick, bar, Qt::LeftButton, Qt::LeftButton);
        kxRelease(port, bar);
        QVERIFY(dialog->isVisible());
        _maker->deliver(kxMessageId::NewScene);
        QVERIFY(!dialog->isVisible() && dialog->clip() == osg::NullFC);
        _maker->module.reset();
        QVERIFY(dialog == nullptr);
    }

    void doesNothingWithoutItsWindow()
    {
        delete _form;
        for (const kxMessageId::Id id : {kxMessageId::NewScene, kxMessageId::SceneChanged, kxMessageId::ClipsChanged})
        {
            kxMessage message(id);
            QCOMPARE(_maker->module->receivedMessage(message), 0);
        }
        for (const char* const name : {kxMessageName::TrashCleared, kxMessageName::UpdateClipScene,
                                       kxMessageName::SelectedClipNode, kxMessageName::FramePlayerLoopChanged})
            kxSend(name);
    }

private:
    void select(const osg::AnimNodePtr& node) { _maker->select(node); }
    kxAnimClipScene* shown() const { return _maker->shown; }
    kxAnimClipStructureWidget* tree() const { return _maker->tree; }
    void press(const char* button) { _form->findChild<QToolButton*>(button)->click(); }
    static osg::AnimNodePtr child(const osg::AnimNodePtr& node, unsigned int index)
    {
        return kxClipMakerFixture::child(node, index);
    }

    std::unique_ptr<kxClipMakerFixture> _maker;
    kxAnimClipEditorGUIW* _form = nullptr;
    osg::AnimNodePtr _clip;
};

QTEST_MAIN(tst_kxAnimClipEditor)
#include "tst_kxAnimClipEditor.moc"
