#include "kxClipMakerFixture.h"
#include "kxShownClip.h"

#include <clipmaker/kxAnimClipCyclesItem.h>
#include <clipmaker/kxAnimClipItem.h>

#include <kxOwned.h>
#include <kxSendMouse.h>
#include <kxWhere.h>

#include <kxPlatform.h>
#include <kxScenegraph.h>

#include <kxTable.h>

#include <functional>
#include <random>

using namespace osg;

/// Everything that a user and a script can do to a clip, at random: through the timeline, its fields and the tree, and
/// to the nodes themselves. The bars show their nodes in the end of each turn, and what the clip shows at a frame
/// doesn't depend on the frames before.
class tst_kxAnimClipWalk : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void barsFollowTheirNodes_data()
    {
        kxColumns<double, bool>("fps", "nested");
        kxRow("a clip", 24.0, false);
        kxRow("a clip in a clip with an own time", 23.976, true);
    }

    void barsFollowTheirNodes()
    {
        QFETCH(double, fps);
        QFETCH(bool, nested);
        kxClipMakerFixture scene;
        _maker = &scene;
        _view = scene.view;
        _shown = scene.shown;
        _tree = scene.tree;
        _form = scene.form;
        kxAnimManager::the()->setFPS(fps);
        _random.seed(7);
        _objects.clear();
        _blocks.clear();
        _edits.clear();
        _isPressed = false;
        for (const char* name : {"Box", "Ball"})
        {
            const NodePtr object = scene.object(name);
            _objects.push_back(scene.transform(object));
            _blocks.push_back(scene.block(name, {scene.curve("translation", "X", {{0, 0}, {1, 10}})}));
            kxAnimManager::the()->addAnimation(object, _blocks.back());
        }
        const AnimNodePtr clip = scene.clip("Show", {scene.clone(_blocks[0], 0), scene.clone(_blocks[1], 2, 1)});
        const kxOwned<AnimNode> above(scene.clip("Above", {}));
        kxAnimManager::the()->addToClipStructure(nested ? above.get() : clip);
        if (nested)
        {
            above->addChild(clip);
            clip->setOffset(Vec2f(1.3f, 0));
            above->setScale(1.7f);
            above->setPostCycles(2);
            write(above, Node::ChildrenFieldMask | AnimNode::ScaleFieldMask | AnimNode::PostCyclesFieldMask);
        }
        _clip = clip;
        scene.show();
        _tree->rebuild(false);
        _tree->expandAll();
        scene.select(_clip);
        QCOMPARE(_shown->clip(), _clip);
        kxSetLibraryPayload(_library, {_blocks[0]->getId()});
        addMouseEdits();
        addScriptEdits();
        for (int step = 0; step < 1200 && !QTest::currentTestFailed(); ++step)
        {
            const std::size_t which = std::size_t(below(int(_edits.size())));
            _edits[which]();
            if (below(3) == 0 || _isPressed)
                continue; // several in one turn, also while bars slide back
            for (kxAnimAbstractClipItem* bar : _shown->bars())
                bar->endReturn(); // not by the clock
            QApplication::processEvents();
            QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QVERIFY(_shown->clip() == clip || _shown->clip() == NullFC);
            if (_shown->clip() != NullFC)
                compareBars();
            if (QTest::currentTestFailed())
                qWarning("after edit %d in step %d", int(which), step);
            else if (step % 100 == 0)
                compareFrames();
        }
    }

private:
    int below(int count) { return int(_random() % unsigned(count)); }
    float part(float most) { return most * float(below(1000)) / 1000; }
    QPoint place() { return {below(_view->viewport()->width()), below(_view->viewport()->height())}; }
    /// A child of the shown clip; null where it has none.

    AnimNodePtr child()
    {
        const UInt32 count = _clip->getNChildren();
        return count == 0 ? AnimNodePtr() : AnimNodePtr::dcast(_clip->getChild(UInt32(below(int(count)))));
    }

    void write(const AnimNodePtr& node, const BitVector& mask) const
    {
        if (node != NullFC)
            kxAnimFixture::changed(node, mask);
    }

    void addMouseEdits()
    {
        const auto few = [this] { return _clip->getNChildren() < 30; };
        QUndoStack* const stack = kxUndoStack::get(0).stack();
        for (int i = 0; i < 8; ++i)
            _edits.emplace_back([this] { drag(); });
        const std::vector<std::function<void()>> more = {
            [this] { kxPress(_view->viewport(), place()), _isPressed = true; },
            [this] { kxDragTo(_view->viewport(), place()); },
            [this] { kxRelease(_view->viewport(), place()), _isPressed = false; },
            [this, few] { dragFromLibrary(few() && below(2) == 0); },
            [this] { _view->frame(); },
            [this] { _shown->setSnapToGridX(below(2) == 0); },
            [this] { _shown->selectAll(); },
            [this] { _shown->clearSelection(); },
            kxWhere(few, [this] { _shown->duplicateSelectedItems(below(2) == 0); }),
            [this] { _shown->deleteSelectedItems(); },
            [this] { _shown->copySelectedItems(); },
            kxWhere(few, [this] { _shown->paste(); }),
            [this] { _shown->flipSelectedItems(below(2) == 0); },
            [this] { _shown->activeSelectedItems(below(3) != 0); },
            [this] { _shown->lockItems(below(8) == 0); },
            [this] { _shown->motionBlurSelectedItems(below(2) == 0); },
            [this] { _form->_start->setValue(double(part(400)) - 50); },
            [this] { _form->_duration->setValue(double(part(300))); },
            [this] { _form->_postCycles->setValue(below(5) - 1); },
            [this] { _shown->setTime(double(part(300))); },
            [this] { _shown->setClip(_clip, true); },
            [this] { _shown->clear(), _shown->setClip(_clip, false); },
            [this] { _tree->rebuild(true); },
            [this] { _tree->clearSelection(), _maker->select(_clip); },
            [this] { _view->viewport()->grab(); },
            [stack] { stack->undo(); },
            [stack] { stack->undo(); },
            [stack] { stack->redo(); },
        };
        _edits.insert(_edits.end(), more.begin(), more.end());
    }

    void addScriptEdits()
    {
        const auto to = [this](const BitVector& mask, const std::function<void(const AnimNodePtr&)>& edit)
        {
            _edits.emplace_back(
                [this, mask, edit]
                {
                    // The clip and what stands above it as well as a bar's own node.
                    const int which = below(8);
                    const AnimNodePtr above = AnimNodePtr::dcast(_clip->getParent());
                    const AnimNodePtr node = which == 0 ? _clip : which == 1 ? above : child();
                    if (node == NullFC)
                        return;
                    edit(node);
                    write(node, mask);
                });
        };
        to(AnimNode::OffsetFieldMask,
           [this](const AnimNodePtr& node) { node->setOffset(Vec2f(part(12), 50.0f * float(below(6)))); });
        to(AnimNode::ScaleFieldMask, [this](const AnimNodePtr& node) { node->setScale(0.4f + part(2)); });
        to(AnimNode::PostCyclesFieldMask, [this](const AnimNodePtr& node) { node->setPostCycles(below(4) - 1); });
        to(AnimNode::FlippedFieldMask, [this](const AnimNodePtr& node) { node->setFlipped(below(2) == 0); });
        to(AnimNode::LockedFieldMask, [this](const AnimNodePtr& node) { node->setLocked(below(6) == 0); });
        to(Node::TravMaskFieldMask,
           [this](const AnimNodePtr& node) { node->setTravMask(below(4) == 0 ? 0 : Node::Active); });
        to(AnimNode::MotionBlurFieldMask, [this](const AnimNodePtr& node) { node->setMotionBlur(below(2) == 0); });
        to(BitVector(), [this](const AnimNodePtr& node)
           { kxNodeUtils::setName(node, "Name " + std::to_string(below(9)), false, NodePtr()); });
        _edits.emplace_back(
            [this]
            {
                const AnimNodePtr curve = AnimNodePtr::dcast(_blocks[std::size_t(below(2))]->getChild(0));
                kxAnimFixture::curveOf(curve)->addPoint(Pnt2f(part(3), part(9)), Vec2f(), Vec2f(), 1, 1, true, true);
                kxAnimFixture::keysChanged(curve);
            });
        _edits.emplace_back(
            [this]
            {
                if (_clip->getNChildren() > 20)
                    return;
                const AnimNodePtr copy = kxAnimFixture::clone(_blocks[std::size_t(below(2))], part(10), below(6));
                _clip->addChild(below(3) == 0 ? kxAnimFixture::clip("Inner", {copy}) : copy);
                write(_clip, Node::ChildrenFieldMask);
            });
        _edits.emplace_back(
            [this]
            {
                _clip->addChild(kxAnimFixture::group<AnimSequenceBase>("Trigger", {}));
                write(_clip, Node::ChildrenFieldMask);
            });
        for (const bool isMarked : {true, false}) // what dies is missed by nobody who holds its id
            _edits.emplace_back(
                [this, isMarked]
                {
                    if (const AnimNodePtr gone = child())
                        _clip->subChild(gone);
                    if (isMarked)
                        write(_clip, Node::ChildrenFieldMask);
                });
    }

    void drag()
    {
        if (_shown->bars().isEmpty())
            return;
        QWidget* const port = _view->viewport();
        const QRectF bar = _shown->bars()[below(_shown->bars().size())]->sceneBoundingRect();
        const double ends[] = {bar.left() + 1, bar.center().x(), bar.right() - 1};
        QPoint at = _view->mapFromScene(QPointF(ends[below(3)], bar.center().y()));
        kxPress(port, at);
        for (int step = below(12); step >= 0; --step)
            kxDragTo(port, at += QPoint(below(41) - 20, below(41) - 20));
        kxRelease(port, at);
    }

    /// Drops a block or goes on holding it; the next one enters without a leave.
    void dragFromLibrary(bool drops)
    {
        const QPoint at = place();
        QDragEnterEvent enter(at, Qt::CopyAction, &_library, Qt::LeftButton, Qt::NoModifier);
        QDragMoveEvent hold(at, Qt::CopyAction, &_library, Qt::LeftButton, Qt::NoModifier);
        QDropEvent drop(at, Qt::CopyAction, &_library, Qt::LeftButton, Qt::NoModifier);
        for (QEvent* event : std::initializer_list<QEvent*>{&enter, &hold, &drop})
            if (drops || event != &drop)
                QApplication::sendEvent(_view->viewport(), event);
    }

    void compareBars()
    {
        QCOMPARE(_shown->clip(), _clip);
        QCOMPARE(_shown->bars().size(), int(_clip->getNChildren()));
        const double fps = kxAnimManager::the()->fps();
        for (const kxAnimAbstractClipItem* bar : _shown->bars())
        {
            const AnimNodePtr node = bar->node();
            QVERIFY(node != NullFC);
            BoxVolume volume;
            node->getWorldVolume(volume);
            Pnt3f start, end;
            volume.getBounds(start, end);
            const double from = double(start.x()) * fps, to = double(end.x()) * fps;
            const double error = 0.02 + 1.0e-6 * (std::abs(from) + std::abs(to));
            double shownTo = bar->x();
            if (const auto* const block = dynamic_cast<const kxAnimClipItem*>(bar))
            {
                const int passes = 1 + std::max(0, block->cyclesItem()->cycles());
                shownTo += passes * block->rect().width() * block->transform().m11();
                QCOMPARE(block->cyclesItem()->cycles(), node->getPostCycles());
            }
            QVERIFY2(
                std::abs(bar->x() - from) < error && std::abs(shownTo - to) < error,
                qPrintable(QStringLiteral("bar %1 to %2, node %3 to %4").arg(bar->x()).arg(shownTo).arg(from).arg(to)));
            QVERIFY(std::abs(bar->y() - double(kxPlatform::getDpiScaleX() * node->getOffset().y())) < 0.02);
            QCOMPARE(bar->isActive(), node->isActive());
            QCOMPARE(bar->isLocked(), node->getLocked());
        }
    }

    void compareFrames()
    {
        const auto valuesAt = [this](int frame)
        {
            _shown->setTime(frame);
            std::vector<float> values;
            for (const TransformPtr& object : _objects)
                values.push_back(object->getTranslation().x());
            return values;
        };
        constexpr int Frames = 150;
        std::vector<std::vector<float>> forward;
        for (int frame = 0; frame < Frames; ++frame)
            forward.push_back(valuesAt(frame));
        for (int frame = Frames - 1; frame >= 0; frame -= 7)
            QCOMPARE(valuesAt(frame), forward[std::size_t(frame)]);
        for (int i = 0; i < 40; ++i)
        {
            const int frame = below(Frames);
            QCOMPARE(valuesAt(frame), forward[std::size_t(frame)]);
        }
    }

    std::mt19937 _random;
    std::vector<std::function<void()>> _edits;
    std::vector<TransformPtr> _objects;
    std::vector<AnimNodePtr> _blocks;
    AnimNodePtr _clip;
    kxAnimClipView* _view = nullptr;
    kxAnimClipScene* _shown = nullptr;
    kxAnimClipStructureWidget* _tree = nullptr;
    kxAnimClipEditorGUIW* _form = nullptr;
    QMimeData _library; // what a drag of a block carries
    kxClipMakerFixture* _maker = nullptr;
    bool _isPressed = false;
};

QTEST_MAIN(tst_kxAnimClipWalk)
#include "tst_kxAnimClipWalk.moc"
