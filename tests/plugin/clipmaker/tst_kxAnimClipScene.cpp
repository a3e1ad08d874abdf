#include "kxShownClip.h"

#include <clipmaker/edits/kxClipNodes.h>
#include <clipmaker/kxAnimClipCyclesItem.h>
#include <clipmaker/kxAnimClipItem.h>
#include <clipmaker/kxAnimClipSequenceItem.h>
#include <frame/kxAnimationWatch.h>

#include <kxMessageNames.h>
#include <kxScenegraph.h>
#include <kxUndo.h>

#include <QHelpEvent>
#include <QToolTip>
#include <QUndoStack>
#include <kxMarks.h>
#include <kxTable.h>

#include <functional>

using namespace osg;

class tst_kxAnimClipScene : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void showsChildrenByTheirCores()
    {
        kxShownClip f;
        const auto shot = [](UInt32 transition, UInt32 kind)
        {
            const AnimNodePtr node = AnimNodeBase::create();
            const AnimShotPtr core = AnimShotBase::create();
            core->setTransitionType(transition);
            core->setShotType(kind);
            node->setCore(core);
            return node;
        };
        const std::vector<AnimNodePtr> bars = {f.blockOf(1),
                                               f.clip("Inner", {f.blockOf(1)}),
                                               f.group<AnimWizClipBase>("Wizard", {}),
                                               f.group<VertexAnimCurvesBase>("Vertices", {}),
                                               f.group<TimeShapeCacheBase>("Shapes", {}),
                                               shot(1, 0),
                                               shot(0, 1)};
        const std::vector<AnimNodePtr> markers = {f.group<AnimSequenceBase>("Trigger", {}), shot(0, 0)};
        for (const auto* const list : {&bars, &markers})
            for (const AnimNodePtr& node : *list)
                f.add(node);
        f.add(f.curve("translation", "X", {{0, 0}, {1, 1}}));
        f.add(AnimNodeBase::create()); // without a core
        f.show();
        QCOMPARE(f.scene.bars().size(), int(bars.size() + markers.size()));
        for (const AnimNodePtr& node : bars)
            QVERIFY(dynamic_cast<kxAnimClipItem*>(f.barOf(node)) != nullptr);
        for (const AnimNodePtr& node : markers)
            QVERIFY(dynamic_cast<kxAnimClipSequenceItem*>(f.barOf(node)) != nullptr);
    }

    void showsAnotherClip()
    {
        kxShownClip f;
        const AnimNodePtr first = f.add(f.blockOf(1)), second = f.add(f.blockOf(1), 2);
        f.show();
        f.barOf(second)->setSelected(true);
        QSignalSpy selections(&f.scene, SIGNAL(selectionChanged()));

        f.add(f.blockOf(1), 4);
        f.scene.setClip(f.clipNode, false);
        QCOMPARE(f.scene.bars().size(), 2); // shown already
        f.scene.setClip(f.clipNode, true);
        QCOMPARE(f.scene.bars().size(), 3);
        QVERIFY(f.barOf(second)->isSelected() && !f.barOf(first)->isSelected());

        osg::Share<AnimNode> other(f.clip("Other", {f.blockOf(1)}));
        selections.clear();
        f.scene.setClip(other, false);
        QCOMPARE(f.scene.bars().size(), 1);
        QCOMPARE(selections.count(), 1);
        f.scene.setClip(AnimNodePtr(), false);
        QVERIFY(f.scene.clip() == NullFC);
        QCOMPARE(f.scene.bars().size(), 1); // left for clear() to take away
        f.scene.setClip(other, false);
        other.release();
        QVERIFY(f.scene.clip() == NullFC); // died
        f.scene.setTime(5);
        f.scene.clear();
        QCOMPARE(f.barItems(), 0);
        QCOMPARE(f.scene.time(), 5.0); // the time line stays
    }

    void evaluatesAtItsTime()
    {
        static int heard;
        heard = 0;
        kxShownClip f;
        const NodePtr box = f.object("box");
        const AnimNodePtr block = f.blockOf(1); // 0 to 5 in 24 frames
        kxAnimManager::the()->addAnimation(box, block);
        f.add(f.clone(block, 0), 1);
        f.show();
        kxCallbacks callbacks;
        callbacks.add(kxMessageName::FrameChangedClipMaker, [](kxMessage&) { ++heard; });
        f.scene.setTime(36);
        QCOMPARE(heard, 1);
        QCOMPARE(kxAnimManager::the()->currentFrame(), 36.0);
        QCOMPARE(f.transform(box)->getTranslation().x(), 2.5f);
        f.scene.setTime(NAN);
        QCOMPARE(f.scene.time(), 36.0);
        f.scene.hideTimeItem();
        f.scene.hideTimeItem();
        QVERIFY(f.scene.itemsBoundingRect().height() < f.pitch());
        f.scene.setTime(48);
        f.scene.showTimeItem();
        QCOMPARE(heard, 2);
        f.scene.clear();
        f.scene.setTime(50); // without a clip
        QCOMPARE(heard, 2);
    }

    void switchesTracks_data()
    {
        kxColumns<int, int, bool, bool, QString>("button", "track", "active", "locked", "tip");
        kxRow("unlock", 0, 1, false, false, "Unlock the track");
        kxRow("lock", 1, 0, false, true, "Lock the track");
        kxRow("show", 2, 1, true, true, "Switch the track on");
        kxRow("hide", 3, 1, false, true, "Switch the track off");
    }

    void switchesTracks()
    {
        QFETCH(int, button);
        QFETCH(int, track);
        QFETCH(bool, active);
        QFETCH(bool, locked);
        kxShownClip f;
        const AnimNodePtr on[] = {f.add(f.blockOf(1), 5, track), f.add(f.blockOf(1), 7, track)};
        const AnimNodePtr off = f.add(f.blockOf(1), 5, 2);
        for (const AnimNodePtr& node : {on[0], on[1], off})
        {
            kxClipNodes::setActive(node, button == 3);
            kxClipNodes::setLocked(node, button != 1);
        }
        f.show();
        f.port()->grab(); // the column is where it was drawn
        const QSignalSpy states(&f.scene, SIGNAL(itemsChangedState()));
        const double dpi = double(kxPlatform::getDpiScaleX());
        const QPoint place(qRound((button * 20 + 10) * dpi), f.view.mapFromScene(0, track * f.pitch() + 20).y());
        QHelpEvent help(QEvent::ToolTip, place, f.port()->mapToGlobal(place));
        QApplication::sendEvent(f.port(), &help);
        QTEST(QToolTip::text(), "tip");
        kxPress(f.port(), place);
        kxRelease(f.port(), place);
        QCOMPARE(states.count(), 1);
        for (const AnimNodePtr& node : on)
        {
            QCOMPARE(node->isActive(), active);
            QCOMPARE(node->getLocked(), locked);
        }
        QCOMPARE(off->isActive(), button == 3);
        QCOMPARE(off->getLocked(), button != 1);
    }

    void changesAllBars()
    {
        kxShownClip f;
        const AnimNodePtr nodes[] = {f.add(f.blockOf(1)), f.add(f.blockOf(1), 2), f.add(f.blockOf(1), 4)};
        f.show();
        QSignalSpy selections(&f.scene, SIGNAL(selectionChanged())), states(&f.scene, SIGNAL(itemsChangedState()));
        f.barOf(nodes[0])->setLocked(true);
        f.scene.selectAll();
        QCOMPARE(f.scene.selectedBars().size(), 2); // a locked bar can't be selected
        QCOMPARE(selections.count(), 1);
        states.clear();
        f.scene.lockItems();
        QCOMPARE(states.count(), 1);
        QCOMPARE(selections.count(), 2);
        for (const AnimNodePtr& node : nodes)
            QVERIFY(node->getLocked());
        f.scene.unlockItems();
        for (const AnimNodePtr& node : nodes)
            QVERIFY(!node->getLocked());

        QSignalSpy duplicates(&f.scene, SIGNAL(itemDuplicated()));
        QVERIFY(!f.scene.duplicateSelectedItems() && !f.scene.copySelectedItems());
        QCOMPARE(duplicates.count(), 0);
        f.barOf(nodes[1])->setSelected(true);
        f.barOf(nodes[2])->setSelected(true);
        QVERIFY(f.scene.copySelectedItems());
        f.scene.setTime(240);
        QVERIFY(f.scene.paste());
        QCOMPARE(duplicates.count(), 1);
        QCOMPARE(f.scene.selectedBars().size(), 2);
        for (const kxAnimAbstractClipItem* bar : f.scene.selectedBars())
        {
            QVERIFY(bar->x() == 240.0 || bar->x() == 288.0);
            QVERIFY(!bar->node()->getFlipped());
        }
        QVERIFY(f.scene.duplicateSelectedItems(false));
        QCOMPARE(duplicates.count(), 2);
        QCOMPARE(f.scene.bars().size(), 7);
        for (const kxAnimAbstractClipItem* bar : f.scene.bars()) // a duplicate lies beside, not on top
            QVERIFY(f.scene.collidingItems(bar, Qt::IntersectsItemShape).isEmpty());
        f.scene.clear();
        QVERIFY(!f.scene.paste());
    }

    void keepsTheOrderOfSelection()
    {
        kxShownClip f;
        std::vector<AnimNodePtr> nodes;
        for (int i = 0; i < 9; ++i)
            nodes.push_back(f.add(f.blockOf(1), float(2 * i), 1));
        f.show();
        const auto selected = [&]
        {
            QString order;
            for (const kxAnimAbstractClipItem* bar : f.scene.selectedBars())
                order += QString::number(std::find(nodes.begin(), nodes.end(), bar->node()) - nodes.begin());
            return order;
        };
        for (const std::size_t i : {5, 2, 7, 0, 3, 8, 1})
            f.barOf(nodes[i])->setSelected(true);
        QCOMPARE(selected(), QString("5270381"));
        f.barOf(nodes[7])->setSelected(false);
        f.barOf(nodes[7])->setSelected(true);
        QCOMPARE(selected(), QString("5203817"));
        nodes[0]->moveBy(0, 50); // its bar is made anew
        f.changed(nodes[0], AnimNode::OffsetFieldMask);
        QApplication::processEvents();
        QCOMPARE(selected(), QString("5203817"));
        f.scene.setClip(f.clipNode, true);
        QCOMPARE(selected(), QString("5203817"));
        const kxAnimAbstractClipItem* last = nullptr;
        connect(&f.scene, &kxAnimClipScene::itemChanged, &f.scene,
                [&last](kxAnimAbstractClipItem* bar) { last = bar; });
        kxAnimManager::the()->setFPS(30);
        QCOMPARE(selected(), QString("5203817"));
        QCOMPARE(last, f.barOf(nodes[7])); // what the fields show
    }

    void refusesDrags()
    {
        const QString format = QLatin1String(kxAnimLibraryPayload::MimeType);
        typedef kxShownClip Shown;
        typedef osg::Share<AnimNode> Block;
        const std::pair<const char*, std::function<void(Shown&, Block&, QMimeData&)>> drags[] = {
            {"another format",
             [&](Shown&, Block&, QMimeData& data)
             {
                 data.setData("application/anim-clip-item", data.data(format));
                 data.removeFormat(format);
             }},
            {"cut off", [&](Shown&, Block&, QMimeData& data) { data.setData(format, data.data(format).left(10)); }},
            {"no rows", [](Shown&, Block&, QMimeData& data) { kxSetLibraryPayload(data, {}); }},
            {"two rows",
             [](Shown&, Block& block, QMimeData& data) {
                 kxSetLibraryPayload(data, {block->getId(), block->getId()});
             }},
            {"stale id", [](Shown&, Block& block, QMimeData&) { block.release(); }},
            {"an object", [](Shown& f, Block&, QMimeData& data) { kxSetLibraryPayload(data, {f.object()->getId()}); }},
            {"a clip", [](Shown&, Block& block, QMimeData&) { block->setCore(AnimClipBase::create()); }},
            {"no core", [](Shown&, Block& block, QMimeData&) { block->setCore(NodeCorePtr()); }},
            {"no clip shown", [](Shown& f, Block&, QMimeData&) { f.scene.clear(); }},
            {"what the clip stands in", [](Shown& f, Block& block, QMimeData&) { block->addChild(f.clipNode.get()); }},
            {"a clone of it",
             [](Shown& f, Block& block, QMimeData& data)
             {
                 const AnimNodePtr copy = f.clone(block, 0);
                 kxAnimManager::the()->addAnimation(f.object(), copy);
                 kxSetLibraryPayload(data, {copy->getId()});
                 block->addChild(f.clipNode.get());
             }},
        };
        for (const auto& [name, spoil] : drags)
        {
            kxShownClip f;
            osg::Share<AnimNode> block(f.blockOf(1));
            QMimeData data;
            kxSetLibraryPayload(data, {block->getId()});
            f.show();
            spoil(f, block, data);
            QSignalSpy drops(&f.scene, SIGNAL(dropEventOccured()));
            const QPoint place = f.at(10, 1);
            f.enter(data, place);
            QVERIFY2(f.barItems() == 0, name);
            QVERIFY2(!f.hold(data, place), name);
            QVERIFY2(!f.drop(data, place), name); // that no window system would send
            QCOMPARE(drops.count(), 0);
            QCOMPARE(f.clipNode->getNChildren(), 0u);
        }
    }

    void marksTracksUnderADrag()
    {
        kxShownClip f;
        f.add(f.blockOf(2), 1, 1);
        f.show();
        osg::Share<AnimNode> block(f.blockOf(1));
        kxClipNodes::setActive(block, false);
        QMimeData data;
        kxSetLibraryPayload(data, {block->getId()});
        f.enter(data, f.at(30, 0));
        QCOMPARE(f.barItems(), 2);
        const auto colour = [&f](int track)
        { return f.port()->grab().toImage().pixelColor(f.at(-3, track) - QPoint(0, 3)); };
        QVERIFY(f.hold(data, f.at(30, 0)));
        QVERIFY(colour(0).green() > colour(0).red());
        QVERIFY(!f.hold(data, f.at(30, 1)));
        QVERIFY(colour(1).red() > colour(1).green());
        QCOMPARE(colour(0), colour(2));
        QVERIFY(f.hold(data, f.at(72, 1))); // touches the bar's end
        f.enter(data, f.at(30, 0));         // without a leave
        QCOMPARE(f.barItems(), 2);
        f.leave();
        QCOMPARE(f.barItems(), 1);
        QCOMPARE(colour(1), colour(2));
        QVERIFY(!block->isActive());
        f.enter(data, f.at(30, 0));
        f.scene.clear(); // in the middle of a drag
        QVERIFY(!f.hold(data, f.at(30, 0)));
        QCOMPARE(f.barItems(), 0);
    }

    void takesDrops_data()
    {
        kxColumns<bool, float, float, float>("snap", "clipOffset", "clipScale", "firstKey");
        kxRow("plain", false, 0.0f, 1.0f, 0.0f);
        kxRow("snapped", true, 0.0f, 1.0f, 0.0f);
        kxRow("into a nested clip", false, 2.0f, 1.5f, 0.0f);
        kxRow("that starts later", true, 0.0f, 1.0f, 0.5f);
    }

    void takesDrops()
    {
        QFETCH(bool, snap);
        QFETCH(float, clipOffset);
        QFETCH(float, clipScale);
        QFETCH(float, firstKey);
        kxShownClip f;
        osg::Share<AnimNode> above(f.clip("Above", {f.clipNode}));
        f.clipNode->setOffset(Vec2f(clipOffset, 0));
        f.clipNode->setScale(clipScale);
        f.changed(f.clipNode, AnimNode::OffsetFieldMask | AnimNode::ScaleFieldMask);
        f.add(f.blockOf(10), 0, 0);
        f.show();
        f.scene.setSnapToGridX(snap);
        f.view.scale(7, 1);
        f.view.centerOn(10, 0);
        osg::Share<AnimNode> block(f.block("Block", {f.curve("translation", "X", {{firstKey, 0}, {firstKey + 1, 5}})}));
        kxClipNodes::setActive(block, false);
        QMimeData data;
        kxSetLibraryPayload(data, {block->getId()});
        const QPoint place = f.at(10, 2) + QPoint(4, 0);
        const double x = f.view.mapToScene(place).x();
        QVERIFY(x > 10.1 && x < 10.9);
        QSignalSpy drops(&f.scene, SIGNAL(dropEventOccured()));
        const kxMarks marks;
        QVERIFY(f.dragTo(data, place));
        QVERIFY(marks.has(f.clipNode.get()));
        QCOMPARE(drops.count(), 1);
        QCOMPARE(f.barItems(), 2);
        const AnimNodePtr clone = AnimNodePtr::dcast(f.clipNode->getChild(1));
        QVERIFY(clone != block.get() && clone->getCore() == block->getCore());
        QVERIFY(clone->isActive());
        QVERIFY(std::abs(f.barOf(clone)->x() - (snap ? 10 : x) - double(firstKey) * 24) < 0.01);
        QCOMPARE(f.barOf(clone)->y(), 2 * f.pitch());
        QCOMPARE(clone->getOffset().y(), 100.0f);
        QVERIFY(!f.dragTo(data, place)); // it is there
        QCOMPARE(f.clipNode->getNChildren(), 2u);
    }

    void followsUndo()
    {
        kxShownClip f;
        const AnimNodePtr kept = f.add(f.blockOf(1)), gone = f.add(f.blockOf(1), 2), moved = f.add(f.blockOf(1), 4);
        f.show();
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        const kxAnimAbstractClipItem* const bar = f.barOf(kept);
        f.barOf(moved)->setSelected(true);
        f.barOf(gone)->setSelected(true);
        f.scene.deleteSelectedItems();
        QCOMPARE(f.scene.bars().size(), 1);
        QCOMPARE(f.clipNode->getNChildren(), 1u);
        stack->undo();
        QCOMPARE(f.scene.bars().size(), 3);
        QVERIFY(f.barOf(gone) != nullptr && f.barOf(kept) == bar); // the others stay
        f.barOf(moved)->setSelected(true);
        moved->setOffset(Vec2f(5, 50)); // behind the scene's back
        f.changed(moved, AnimNode::OffsetFieldMask);
        stack->redo();
        QCOMPARE(f.scene.bars().size(), 1);
        stack->undo();
        QCOMPARE(f.barOf(moved)->pos(), QPointF(120, f.pitch()));
        f.scene.clear();
        stack->redo();
        QCOMPARE(f.barItems(), 0);
        stack->clear();
    }

    /// In a clip with an own time, at a rate that no second divides, after edits by scripts.
    void barsFollowTheirNodes()
    {
        kxShownClip f;
        kxAnimManager::the()->setFPS(23.976);
        const osg::Share<AnimNode> above(f.clip("Above", {f.clipNode}));
        const AnimNodePtr node = f.add(f.blockOf(2), 1.3f, 1), curve = AnimNodePtr::dcast(node->getChild(0));
        f.show();
        const std::tuple<AnimNodePtr, BitVector, std::function<void(const AnimNodePtr&)>> edits[] = {
            {node, AnimNode::OffsetFieldMask, [](const AnimNodePtr& each) { each->setOffset(Vec2f(2.7f, 150)); }},
            {node, AnimNode::ScaleFieldMask, [](const AnimNodePtr& each) { each->setScale(1.7f); }},
            {node, AnimNode::PostCyclesFieldMask, [](const AnimNodePtr& each) { each->setPostCycles(3); }},
            {f.clipNode, AnimNode::OffsetFieldMask, [](const AnimNodePtr& each) { each->setOffset(Vec2f(4, 0)); }},
            {above, AnimNode::ScaleFieldMask, [](const AnimNodePtr& each) { each->setScale(0.6f); }},
            {node, AnimNode::LockedFieldMask, [](const AnimNodePtr& each) { each->setLocked(true); }},
            {node, Node::TravMaskFieldMask, [](const AnimNodePtr& each) { each->setTravMask(0); }},
            {node, AnimNode::PostCyclesFieldMask, [](const AnimNodePtr& each) { each->setPostCycles(-1); }},
            {curve, BitVector(),
             [](const AnimNodePtr& each)
             {
                 kxAnimFixture::curveOf(each)->addPoint(Pnt2f(5, 9), {}, {}, 1, 1, true, true);
                 kxAnimFixture::keysChanged(each);
             }},
        };
        for (const auto& [edited, mask, edit] : edits)
        {
            edit(edited);
            f.changed(edited, mask);
            QApplication::processEvents();
            const auto* const bar = static_cast<kxAnimClipItem*>(f.barOf(node));
            const kxClipGeometry::Span span = kxClipNodes::spanOf(node);
            QVERIFY(std::abs(bar->x() - span.x) < 0.02);
            QVERIFY(std::abs(bar->rect().width() * bar->transform().m11() - span.width) < 0.02);
            QCOMPARE(float(bar->y()), kxPlatform::getDpiScaleX() * node->getOffset().y());
            QCOMPARE(bar->cyclesItem()->cycles(), node->getPostCycles());
            QCOMPARE(bar->isActive(), node->isActive());
            QCOMPARE(bar->isLocked(), node->getLocked());
        }
    }

    /// Whom an edit disturbs.
    void followsEditsOfOthers()
    {
        kxShownClip f;
        const AnimNodePtr node = f.add(f.blockOf(2)), other = f.add(f.blockOf(1), 4);
        f.show();
        f.barOf(node)->setSelected(true);
        QSignalSpy selections(&f.scene, SIGNAL(selectionChanged()));
        int changes = 0;
        connect(&f.scene, &kxAnimClipScene::itemChanged, &f.scene, [&changes] { ++changes; });
        QPointer<kxAnimAbstractClipItem> untouched = f.barOf(other); // a new bar may get a dead one's address
        const auto turnEnds = [&](int changesThen, bool stays)
        {
            QVERIFY(f.barOf(other) == untouched); // in the turn of an edit nothing goes under its hands
            QApplication::processEvents();
            QCOMPARE(changes, changesThen);
            QCOMPARE(untouched.isNull(), !stays);
            untouched = f.barOf(other);
        };
        node->moveBy(1, 50);
        f.changed(node, AnimNode::OffsetFieldMask);
        turnEnds(1, true);
        kxNodeUtils::setName(node, "Other name", true, NodePtr());
        turnEnds(2, true);
        QCOMPARE(f.barOf(node)->toolTip(), QString("Other name"));
        f.clipNode->setOffset(Vec2f(2, 0));
        f.changed(f.clipNode, AnimNode::OffsetFieldMask);
        turnEnds(3, false);
        f.add(f.blockOf(1), 8);
        turnEnds(3, true);
        QVERIFY(f.barOf(node)->isSelected());
        QCOMPARE(selections.count(), 0); // whoever shows the curves of the selection isn't disturbed
        f.clipNode->subChild(node);      // dies without a word
        turnEnds(3, true);
        QCOMPARE(selections.count(), 1);
        f.clipNode.release();
        QApplication::processEvents();
        QCOMPARE(f.barItems(), 0);
    }

    void tellsOnceATurn()
    {
        kxShownClip f;
        const AnimNodePtr node = f.add(f.blockOf(2));
        const kxAnimationWatch watch(nullptr);
        const QSignalSpy told(&watch, &kxAnimationWatch::animationsChanged);
        for (const bool value : {false, true})
            kxClipNodes::setActive(node, value);
        QApplication::processEvents();
        QCOMPARE(told.count(), 1);
    }

    void followsWhenADragEnds()
    {
        kxShownClip f;
        const AnimNodePtr held = f.add(f.blockOf(2)), other = f.add(f.blockOf(2), 4);
        f.show();
        QPointer<kxAnimAbstractClipItem> bar = f.barOf(held);
        f.port()->grab(); // the column is where it was drawn
        kxPress(f.port(), f.at(24, 0));
        kxDragTo(f.port(), f.at(30, 2));
        kxDragTo(f.port(), f.at(30, 0));
        const QImage picture = f.port()->grab().toImage();
        QCOMPARE(picture.pixelColor(f.at(-9, 2)), picture.pixelColor(f.at(-9, 3))); // marked no more
        QVERIFY(picture.pixelColor(f.at(-9, 0)) != picture.pixelColor(f.at(-9, 3)));
        for (const AnimNodePtr& node : {held, other})
        {
            node->moveBy(0, 100);
            f.changed(node, AnimNode::OffsetFieldMask);
        }
        QApplication::processEvents();
        QVERIFY(!bar.isNull());
        QCOMPARE(f.barOf(other)->y(), 0.0);
        kxRelease(f.port(), f.at(30, 0));
        QApplication::processEvents();
        QCOMPARE(f.barOf(other)->y(), 2 * f.pitch());
        QCOMPARE(f.barOf(held)->y(), 2 * f.pitch());
        QCOMPARE(f.barOf(held)->x(), 6.0);
    }

    void endsADragWhereABarGoes_data()
    {
        kxColumns<bool, QPoint>("undo", "grip");
        kxRow("deleted", false, QPoint(40, 0));
        kxRow("made anew by an undo", true, QPoint(40, 0));
        kxRow("made anew while an end is dragged", true, QPoint(69, 0));
    }

    /// Where bars were at the start of a drag that nobody ends has no part in the next one.
    void endsADragWhereABarGoes()
    {
        QFETCH(bool, undo);
        QFETCH(QPoint, grip);
        kxShownClip f;
        const AnimNodePtr held = f.add(f.blockOf(2), 1), second = f.add(f.blockOf(2), 5, 1),
                          other = f.add(f.blockOf(2), 9);
        f.show();
        f.port()->grab(); // the column is where it was drawn
        f.barOf(held)->setSelected(true);
        f.barOf(second)->setSelected(true);
        kxPress(f.port(), f.at(grip.x(), 0));
        kxDragTo(f.port(), f.at(grip.x() + 20, 0));
        const double x = f.barOf(held)->x();
        if (undo)
        {
            second->moveBy(0, 100);
            kxSend(kxMessageName::Undo);
        }
        else
            QTest::keyClick(&f.view, Qt::Key_Delete);
        kxDragTo(f.port(), f.at(grip.x() + 30, 0));
        if (undo)
        {
            QCOMPARE(f.barOf(held)->x(), x);
            QCOMPARE(float(f.barOf(second)->y()), 3 * float(f.pitch()));
            f.barOf(held)->setX(x + 1); // no end is held any more
            QCOMPARE(f.barOf(held)->x(), x + 1);
        }
        QCOMPARE(f.port()->grab().toImage().pixelColor(f.at(-3, 0)),
                 f.port()->grab().toImage().pixelColor(f.at(-3, 5)));
        kxRelease(f.port(), f.at(grip.x() + 30, 0));
        f.scene.clearSelection();
        kxPress(f.port(), f.at(240, 0));
        kxDragTo(f.port(), f.at(250, 0));
        kxRelease(f.port(), f.at(250, 0));
        QCOMPARE(f.barOf(other)->x(), 226.0);
        QCOMPARE(other->getOffset().x() * 24, 226.0f);
        kxUndoStack::get(0).stack()->clear();
    }

    void endsBehindTheTimeLine()
    {
        kxShownClip f;
        const AnimNodePtr node = f.add(f.blockOf(2), 1);
        f.show();
        f.scene.setTime(24); // where the bar begins
        f.port()->grab();    // the column is where it was drawn
        const QPoint end = f.at(24, 0) + QPoint(3, 0), beside = f.at(24, 1);
        for (const QPoint& place : {end, beside})
        {
            kxPress(f.port(), place);
            kxDragTo(f.port(), place + QPoint(40, 0));
            kxRelease(f.port(), place + QPoint(40, 0));
            QCOMPARE(f.scene.time() > 24, place == beside);
            QVERIFY(node->getOffset().x() > 1 && node->getScale() < 1);
        }
    }
};

QTEST_MAIN(tst_kxAnimClipScene)
#include "tst_kxAnimClipScene.moc"
