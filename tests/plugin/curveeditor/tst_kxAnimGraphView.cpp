#include "kxGraphFixture.h"

#include <curveeditor/kxAnimTimeItem.h>
#include <curveeditor/kxGraphSelectionOverlay.h>
#include <kernel/kxLogModel.h>
#include <kxHeard.h>
#include <osg/Share.h>

#include <kxMessageNames.h>

#include <kxTable.h>

#include <limits>

Q_DECLARE_METATYPE(Qt::MouseButton)

namespace
{
/// Within a pixel: views scroll by whole ones.
bool isNear(const QPointF& a, const QPointF& b, double pixels = 1)
{
    return std::abs(a.x() - b.x()) <= pixels && std::abs(a.y() - b.y()) <= pixels;
}
} // namespace

/// The graph under real mouse and key events.
class tst_kxAnimGraphView : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aDragIsOneStep()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {10, 2}, {20, 0}}});
        QSignalSpy edits(&graph.view, qOverload<>(&kxAnimGraphView::sceneChanged));
        const QPoint from = graph.at(graph.point(0, 1));
        graph.drag(from, from + QPoint(30, -40), 12);
        QCOMPARE(graph.stack()->count(), 1);
        QCOMPARE(graph.stack()->text(0).contains("Move Control Points"), true);
        QCOMPARE(graph.place(0, 1), QPointF(13, 4));
        QCOMPARE(edits.count(), 12);

        // Past its neighbour, as another step.
        const QPoint next = graph.at(graph.point(0, 1));
        graph.drag(next, next + QPoint(100, 0), 20);
        QCOMPARE(graph.stack()->count(), 2);
        QCOMPARE(graph.place(0, 2), QPointF(23, 4));
        QCOMPARE(graph.place(0, 1), QPointF(20, 0));

        graph.stack()->undo();
        graph.stack()->undo();
        QVERIFY(isNear(graph.place(0, 1), QPointF(10, 2), 1e-4));
        QVERIFY(isNear(graph.place(0, 2), QPointF(20, 0), 1e-4));
    }

    void aClickLeavesNoStep()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {10, 2}}});
        graph.click(graph.at(graph.point(0, 1)));
        QVERIFY(graph.point(0, 1)->isSelected());
        QVERIFY(graph.point(0, 1)->tangentsShown());
        graph.click(graph.at(graph.point(0, 0)));
        QVERIFY(!graph.point(0, 1)->isSelected());
        QVERIFY(!graph.point(0, 1)->tangentsShown());
        graph.scene()->selectAllPoints();
        graph.click(graph.at(graph.point(0, 1))); // one of several selected: it alone stays so
        QCOMPARE(graph.scene()->selectedCount(), 1);
        QCOMPARE(graph.stack()->count(), 0);

        // A drag that the snapping swallows is none either.
        graph.scene()->setSnapToGridX(true);
        graph.scene()->setSnapToGridY(true);
        const QPoint from = graph.at(graph.point(0, 1));
        graph.drag(from, from + QPoint(4, 3));
        QCOMPARE(graph.stack()->count(), 0);

        // Nor one that comes back.
        graph.scene()->setSnapToGridX(false);
        graph.scene()->setSnapToGridY(false);
        kxPress(graph.view.viewport(), from);
        for (const QPoint& by : {QPoint(13, -7), QPoint(31, -17), QPoint(0, 0)})
            kxDragTo(graph.view.viewport(), from + by);
        kxRelease(graph.view.viewport(), from);
        QCOMPARE(graph.stack()->count(), 0);
    }

    void draggedKeysKeepTheirDistances_data()
    {
        using Places = QVector<QPointF>;
        kxColumns<bool, Places, int>("snaps", "places", "grabbed");
        Places onEachFrame;
        for (int i = -4; i < 5; ++i)
            onEachFrame.append(QPointF(i, i % 3));
        const Places offTheGrid{{0.25, 0.5}, {4, 0.75}, {7.5, 1}, {12.25, 0}};
        kxRow("on each frame, freely, by the first", false, onEachFrame, 0);
        kxRow("on each frame, snapped, by one between", true, onEachFrame, 5);
        kxRow("on each frame, snapped, by the last", true, onEachFrame, 8);
        kxRow("off the grid, freely", false, offTheGrid, 1);
        kxRow("off the grid, snapped", true, offTheGrid, 1);
    }

    /// Selected keys on neighbouring frames neither block each other nor drift apart, whichever is grabbed.
    void draggedKeysKeepTheirDistances()
    {
        QFETCH(bool, snaps);
        QFETCH(QVector<QPointF>, places);
        QFETCH(int, grabbed);
        kxGraphFixture graph;
        std::vector<std::pair<float, float>> keys;
        for (const QPointF& place : places)
            keys.emplace_back(float(place.x()), float(place.y()));
        graph.show({keys});
        graph.scene()->setSnapToGridX(snaps);
        graph.scene()->setSnapToGridY(snaps);
        graph.press(Qt::Key_A, Qt::ControlModifier);

        const QPoint from = graph.at(graph.point(0, unsigned(grabbed)));
        const auto areAllMovedBy = [&](const QPointF& way)
        {
            for (int i = 0; i < places.size(); ++i)
                if (!isNear(graph.place(0, osg::UInt32(i)), places[i] + way, 2e-3))
                    return false;
            return true;
        };
        kxPress(graph.port(), from);
        for (const int x : {3, 7, 10, 13, 24, 30, 17, 10, -2, -5, -10, -25, -30, -18, -10, 2, 10, 0})
        {
            kxDragTo(graph.port(), from + QPoint(x, x));
            const QPointF moved = graph.place(0, osg::UInt32(grabbed)) - places[grabbed];
            QVERIFY2(areAllMovedBy(moved), qPrintable(QString("after %1 pixels").arg(x)));
            if (x % 10 == 0)
                QCOMPARE(moved.x(), x / 10.0);
        }
        kxRelease(graph.port(), from);
    }

    /// A key that doesn't move keeps its frame to itself: who would come there, and who would follow onto theirs, wait
    /// until they are past it.
    void keysThatStayHoldTheirFrames()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {1, 1}, {2, 2}, {3, 3}, {6, 1}, {9, 2}}});
        graph.scene()->setSnapToGridX(true);
        const auto frames = [&]
        {
            QVector<int> all;
            for (osg::UInt32 i = 0; i < 6; ++i)
                all.append(qRound(graph.place(0, i).x()));
            return all;
        };
        for (const unsigned int i : {0, 1, 2, 3})
            graph.point(0, i)->setSelected(true);
        const QPoint from = graph.at(graph.point(0, 0));
        kxPress(graph.port(), from);
        const auto dragTo = [&](int frame)
        {
            kxDragTo(graph.port(), from + QPoint(10 * frame, 0));
            return frames();
        };
        QCOMPARE(dragTo(2), (QVector<int>{2, 3, 4, 5, 6, 9}));
        // The last one is refused, so that each of those before it finds the frame before it taken.
        QCOMPARE(dragTo(3), (QVector<int>{2, 3, 4, 5, 6, 9}));
        QCOMPARE(dragTo(7), (QVector<int>{4, 6, 7, 8, 9, 10}));
        QCOMPARE(dragTo(11), (QVector<int>{6, 9, 11, 12, 13, 14}));
        QCOMPARE(dragTo(0), (QVector<int>{0, 1, 2, 3, 6, 9}));
        kxRelease(graph.port(), from);
        QCOMPARE(graph.stack()->count(), 1);
        graph.stack()->undo();
        QCOMPARE(frames(), (QVector<int>{0, 1, 2, 3, 6, 9}));
    }

    void heldAxes()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {10, 2}, {30, 0}}});
        const auto dragBy = [&](const QPoint& by)
        {
            const QPoint from = graph.at(graph.point(0, 1));
            graph.drag(from, from + by);
            return graph.place(0, 1);
        };
        graph.press(Qt::Key_X);
        QCOMPARE(dragBy(QPoint(30, 40)), QPointF(13, 2));
        graph.press(Qt::Key_Y);
        QCOMPARE(dragBy(QPoint(30, 40)), QPointF(13, 0));
        QTest::keyRelease(&graph.view, Qt::Key_Q); // any key ends it
        QCOMPARE(dragBy(QPoint(10, -20)), QPointF(14, 1));
        graph.press(Qt::Key_X);
        QFocusEvent out(QEvent::FocusOut);
        QApplication::sendEvent(&graph.view, &out);
        QVERIFY(!graph.scene()->lockX() && !graph.scene()->lockY());
        graph.press(Qt::Key_X, Qt::ControlModifier);
        QVERIFY(!graph.scene()->lockX() && !graph.scene()->lockY());
    }

    void handleDragIsOneStep()
    {
        for (const bool isBroken : {false, true})
        {
            kxGraphFixture graph;
            graph.scene()->setBreakTangents(isBroken);
            graph.show({{{0, 0}, {12, 2}, {24, 0}}});
            graph.click(graph.at(graph.point(0, 1)));
            const osg::CCPnt before = graph.key(0, 1);
            const QPoint from = graph.at(graph.point(0, 1)->outTangentScenePos()); // made when the mouse comes
            graph.drag(from, from + QPoint(-10, -40), 8);
            QCOMPARE(graph.stack()->count(), 1);
            const osg::CCPnt after = graph.key(0, 1);
            QCOMPARE(after.point(), before.point());
            QCOMPARE(after.outType, 5u);
            QCOMPARE(after.inType, isBroken ? before.inType : 5u);
            QVERIFY(after.outY() > before.outY() + 1.5f);
            QCOMPARE(after.intangent() == -after.outtangent(), !isBroken);
            graph.stack()->undo();
            QCOMPARE(graph.key(0, 1), before);
            graph.view.setTangentType(0);
            QVERIFY(!graph.point(0, 1)->outTangentItem()->isVisible());
        }
    }

    /// Where keys are so close that handles lie on them.
    void selectedKeysLieOverHandles()
    {
        kxGraphFixture graph;
        graph.show({{{4, 1}, {4.4f, 1.1f}, {4.8f, 1}, {5.1f, 1.1f}}});
        graph.click(graph.at(graph.point(0, 2))); // its handles have been met
        graph.scene()->selectAllPoints();
        for (const unsigned int i : {1, 2, 0, 3})
        {
            const QPointF before = graph.place(0, i);
            const QPoint from = graph.at(graph.point(0, i));
            graph.drag(from, from + QPoint(30, 0));
            QVERIFY(isNear(graph.place(0, i), before + QPointF(3, 0), 1e-3));
            QCOMPARE(graph.key(0, i).outType, 1u);
        }
        QCOMPARE(graph.stack()->count(), 4);
    }

    void rubberBand_data()
    {
        // from: pixels from the two keys' middle
        kxColumns<QPoint, QPoint, int>("from", "to", "selected");
        kxRow("left to right, down", QPoint(-80, -80), QPoint(80, 80), 2);
        kxRow("right to left, up", QPoint(80, 80), QPoint(-80, -80), 2);
        kxRow("one of them", QPoint(20, -60), QPoint(80, 60), 1);
        kxRow("the edge of a key", QPoint(70, 60), QPoint(52, -60), 1);
        kxRow("beside a key", QPoint(70, 60), QPoint(55, -60), 0);
    }

    void rubberBand()
    {
        QFETCH(QPoint, from);
        QFETCH(QPoint, to);
        QFETCH(int, selected);
        kxGraphFixture graph;
        graph.show({{{-5, 0}, {5, 0}, {25, 0}}});
        QSignalSpy selections(graph.scene(), &QGraphicsScene::selectionChanged);
        const QPoint middle = graph.at(QPointF(0, 0));
        kxPress(graph.port(), middle + from);
        kxDragTo(graph.port(), middle + to / 2);
        kxDragTo(graph.port(), middle + to);
        auto* const overlay = graph.view.findChild<kxGraphSelectionOverlay*>();
        QVERIFY(overlay->isVisible());
        const QRect band = QRect(middle + from, middle + to).normalized();
        QCOMPARE(overlay->rectangle(), band);
        const QImage seen = graph.view.grab().toImage();
        QCOMPARE(seen.pixelColor(band.topLeft()), QColor(Qt::white));
        QVERIFY(seen.pixelColor(band.topLeft() - QPoint(1, 1)) != QColor(Qt::white)); // a line of one pixel
        kxRelease(graph.port(), middle + to);
        QCOMPARE(graph.scene()->selectedItems().size(), selected);
        QCOMPARE(selections.count(), selected > 0 ? 1 : 0);
        QVERIFY(!overlay->isVisible() && !overlay->rectangle().isValid());
        QCOMPARE(graph.stack()->count(), 0);
    }

    void pan_data()
    {
        kxColumns<Qt::MouseButton, int, bool>("button", "modifiers", "pans");
        kxRow("middle", Qt::MiddleButton, int(Qt::NoModifier), true);
        kxRow("left with Ctrl", Qt::LeftButton, int(Qt::ControlModifier), true);
        kxRow("left with Ctrl and Shift", Qt::LeftButton, int(Qt::ControlModifier | Qt::ShiftModifier), false);
    }

    void pan()
    {
        QFETCH(Qt::MouseButton, button);
        QFETCH(int, modifiers);
        QFETCH(bool, pans);
        kxGraphFixture graph;
        graph.show({{{0, 0}, {10, 2}}});
        const QPoint from = graph.at(graph.point(0, 1)); // on a key: it must not come along
        const QPointF under = graph.view.mapToScene(from);
        const auto keys = Qt::KeyboardModifiers(modifiers);
        kxSendMouse(graph.port(), QEvent::MouseButtonPress, from, button, button, keys);
        for (int i = 1; i <= 5; ++i)
            kxSendMouse(graph.port(), QEvent::MouseMove, from + QPoint(-9 * i, 7 * i), Qt::NoButton, button, keys);
        const QPoint to = from + QPoint(-45, 35);
        QCOMPARE(isNear(graph.view.mapToScene(to), under, 0.01), pans);
        QCOMPARE(graph.port()->cursor().shape() == Qt::ClosedHandCursor, pans);
        kxSendMouse(graph.port(), QEvent::MouseMove, to, Qt::NoButton, Qt::NoButton); // released elsewhere
        QVERIFY(graph.port()->cursor().shape() != Qt::ClosedHandCursor);
        QCOMPARE(graph.place(0, 1), QPointF(10, 2));
        graph.click(graph.at(graph.point(0, 1)));
        QVERIFY(graph.point(0, 1)->isSelected()); // events reach the items again
    }

    void zoomOutEnds()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {10, 2}}});
        graph.view.setTransform(QTransform::fromScale(1, -0.00001));
        const QTransform before = graph.view.transform();
        kxSendMouse(graph.port(), QEvent::MouseButtonPress, QPoint(9, 9), Qt::RightButton, Qt::RightButton);
        kxSendMouse(graph.port(), QEvent::MouseMove, QPoint(9, 5), Qt::NoButton, Qt::RightButton);
        QCOMPARE(graph.view.transform(), before);
        kxSendMouse(graph.port(), QEvent::MouseMove, QPoint(9, 6), Qt::NoButton, Qt::RightButton);
        QCOMPARE(graph.view.transform().m11(), 1.05); // down again, though above the press
        kxSendMouse(graph.port(), QEvent::MouseButtonRelease, QPoint(9, 6), Qt::RightButton, Qt::NoButton);
        graph.view.frameAll();
        graph.click(graph.at(graph.point(0, 0)));
        QVERIFY(graph.point(0, 0)->isSelected());
    }

    void frame()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {300000, 5}}, {{50, -2000}, {60, 2000}}});
        graph.press(Qt::Key_F);
        const QRectF handles(-150000, -2000, 600000, 4000); // those of the outer keys are half a gap away
        QVERIFY(graph.view.sceneRect().contains(handles));
        const QRectF seen = graph.view.mapToScene(graph.port()->rect()).boundingRect();
        QVERIFY(seen.contains(handles));
        QVERIFY(seen.width() < 610000 && seen.height() < 4200);
    }

    void frameOfOneValue()
    {
        kxGraphFixture graph;
        graph.view.frameAll(); // nothing
        QCOMPARE(graph.view.transform().m22(), -20.0);
        graph.show({{{10, 7}, {50, 7}}});
        for (int i = 0; i < 40; ++i)
            graph.view.frameAll();
        QCOMPARE(graph.view.transform().m22(), -20.0);
        QVERIFY(isNear(graph.at(QPointF(30, 7)), QPoint(300, 200), 3));
        const QRectF seen = graph.view.mapToScene(graph.port()->rect()).boundingRect();
        QVERIFY(seen.left() < -10 && seen.right() > 70 && seen.width() < 84);
    }

    void doubleClicks()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {10, 2}}});
        const QPointF clicked = graph.view.mapToScene(40, 50);
        kxSendMouse(graph.port(), QEvent::MouseButtonDblClick, QPoint(40, 50), Qt::RightButton, Qt::RightButton);
        QVERIFY(isNear(graph.at(clicked), QPoint(300, 200)));
        kxSendMouse(graph.port(), QEvent::MouseButtonDblClick, QPoint(40, 50), Qt::LeftButton, Qt::LeftButton);
        QVERIFY(isNear(graph.at(QPointF(5, 1)), QPoint(300, 200), 3));
    }

    void copyAndPaste()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {6, 2}, {10, 5}}, {{100, 7}, {102, 8}}});
        kxAnimFixture::curveOf(graph.nodes[0])->computeOuttangent(1, 2);
        graph.point(0, 2)->setSelected(true);
        graph.point(0, 1)->setSelected(true);
        graph.point(1, 0)->setSelected(true);
        graph.press(Qt::Key_C, Qt::ControlModifier);
        kxAnimManager::the()->setCurrentFrame(48, true, false);
        graph.press(Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(graph.place(0, 3), QPointF(48, 2)); // each block begins at the current frame
        QCOMPARE(graph.place(0, 4), QPointF(52, 5));
        QCOMPARE(graph.key(0, 3).outType, 2u);
        QCOMPARE(graph.place(1, 0), QPointF(48, 7));
        QCOMPARE(graph.scene()->curves()[0]->points().size(), 5);
        QCOMPARE(graph.stack()->count(), 1);
        kxSend(kxMessageName::PasteKeys); // once more on the same keys
        QCOMPARE(kxAnimFixture::curveOf(graph.nodes[0])->getControlPoints().size(), std::size_t(5));
        graph.stack()->setIndex(0);
        QCOMPARE(kxAnimFixture::curveOf(graph.nodes[0])->getControlPoints().size(), std::size_t(3));
    }

    void badTangents()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {10, 2}, {20, 0}}});
        const float bad[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()};
        for (const float value : bad)
        {
            kxAnimFixture::curveOf(graph.nodes[0])->getControlPoints(1).setOuttangent({0.1f, value});
            graph.view.refresh();
            int warnings = 0;
            const auto connection = connect(&kxLogModel::the(), &kxLogModel::added, this,
                                            [&warnings](const kxLogEntry& entry)
                                            { warnings += entry.text.startsWith("Detected corrupted curve") ? 1 : 0; });
            const QRectF extent = graph.scene()->curvesBoundingRect();
            disconnect(connection);
            QCOMPARE(warnings, 2); // the handle and its line
            QVERIFY(extent.contains(QRectF(0, 0, 20, 2)));
            QVERIFY(extent.width() < 32 && extent.height() < 10);
            graph.view.frameAll();
            graph.view.grab();
        }
    }

    void timeItem()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {10, 2}}});
        kxHeard<1> frames(kxMessageName::FrameChangedCurveEditor);
        graph.scene()->setFrame(7.5);
        QCOMPARE(frames.count, 1);
        QCOMPARE(boost::any_cast<double>(frames.last.get("frame")), 7.5);
        graph.scene()->clear();
        QVERIFY(graph.scene()->items().contains(graph.scene()->timeItem()));
        QCOMPARE(graph.scene()->timeItem()->time(), 7.5);

        graph.view.setAnimations(graph.nodes);
        const QPoint line = graph.at(QPointF(7.5, -5));
        kxPress(graph.port(), line);
        kxDragTo(graph.port(), line + QPoint(42, 0));
        QCOMPARE(graph.scene()->timeItem()->time(), 11.0);
        QVERIFY(!graph.view.findChild<kxGraphSelectionOverlay*>()->isVisible());
        graph.view.refresh(); // the item leaves the scene and comes back under the mouse
        kxRelease(graph.port(), line + QPoint(42, 0));
        QVERIFY(!graph.scene()->timeItemMoving());

        kxMessage playing;
        playing.set("playing", true);
        kxController::call(kxMessageName::TimeLineChangedPlay, playing, 0);
        QVERIFY(!graph.scene()->timeItem()->flags().testFlag(QGraphicsItem::ItemIsMovable));
        kxMessage wrong;
        wrong.set("playing", 0);
        kxController::call(kxMessageName::TimeLineChangedPlay, wrong, 0); // of another type: absent
        QVERIFY(!graph.scene()->timeItem()->flags().testFlag(QGraphicsItem::ItemIsMovable));
    }

    void messagesOnRelease()
    {
        kxGraphFixture graph;
        kxHeard<2> selections(kxMessageName::SelectedAnimations);
        kxHeard<3> bars(kxMessageName::UpdateClipScene);
        graph.click(QPoint(50, 50));
        QCOMPARE(selections.count, 0); // nothing is shown
        graph.show({{{0, 0}, {10, 2}}});
        QCoreApplication::processEvents();
        graph.click(QPoint(50, 50));
        QCOMPARE(selections.count, 1);
        QVERIFY(boost::any_cast<std::vector<osg::AnimNodePtr>>(selections.last.get("nodes")) == graph.nodes);
        QCoreApplication::processEvents();
        bars.count = 0;
        graph.click(QPoint(50, 50));
        QCOMPARE(bars.count, 0); // nothing is new
        graph.drag(graph.at(graph.point(0, 1)), QPoint(50, 50));
        QCoreApplication::processEvents(); // the scene announces its changes late
        graph.click(QPoint(150, 50));
        QVERIFY(bars.count >= 1);
        bars.count = 0;
        graph.point(0, 1)->setSelected(true);
        QSignalSpy deletions(&graph.view, &kxAnimGraphView::controlPointsDeleted);
        graph.press(Qt::Key_Delete);
        QVERIFY(bars.count == 1 && deletions.count() == 1);
    }

    void selectionSurvivesNothing()
    {
        // Keys that die while they are selected are reported once, and nobody meets one of them half gone.
        kxGraphFixture graph;
        graph.show({{{0, 0}, {10, 2}, {20, 0}}});
        QSignalSpy selections(graph.scene(), &QGraphicsScene::selectionChanged);
        connect(graph.scene(), &QGraphicsScene::selectionChanged, this,
                [&graph]
                {
                    QList<kxAnimGraphPoint*> points;
                    graph.scene()->selectedPoints(points);
                    for (const kxAnimGraphPoint* const point : points)
                        QVERIFY(point->curve() != nullptr);
                });
        graph.scene()->selectAllPoints();
        QCOMPARE(selections.count(), 1);
        graph.view.setAnimation(graph.nodes[0]);
        QCOMPARE(selections.count(), 2);
        graph.scene()->selectAllPoints();
        graph.scene()->curves()[0]->rebuildFromCurve();
        QCOMPARE(selections.count(), 4);
        QCOMPARE(graph.scene()->selectedItems().size(), 0);
    }

    void objectsMayDie()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {10, 2}}, {{0, 4}, {12, 5}}});
        const QPoint from = graph.at(graph.point(1, 1));
        graph.scene()->selectAllPoints();
        graph.scene()->copySelectedPoints();
        kxPress(graph.port(), from);
        kxDragTo(graph.port(), from + QPoint(10, 10));
        graph.letGo(graph.nodes[0]); // in the middle of the drag
        kxDragTo(graph.port(), from + QPoint(20, 20));
        delete graph.scene()->curves()[0];
        kxDragTo(graph.port(), from + QPoint(30, 20));
        QCOMPARE(graph.place(1, 1), QPointF(15, 4));
        kxRelease(graph.port(), from + QPoint(30, 20));
        QCOMPARE(graph.view.nodes(), std::vector<osg::AnimNodePtr>{graph.nodes[1]});

        graph.view.setTangentType(3);
        graph.scene()->copySelectedPoints();
        graph.scene()->pasteKeys();
        graph.scene()->deleteSelectedPoints();
        graph.view.frameAll();
        graph.view.grab();
        while (graph.stack()->canUndo())
            graph.stack()->undo();
        graph.letGo(graph.nodes[1]);
        graph.view.refresh();
        QVERIFY(graph.scene()->curves().isEmpty());
        QVERIFY(graph.scene()->isEmpty());
        graph.stack()->setIndex(graph.stack()->count());
        graph.nodes.clear();
    }

    void callbacks()
    {
        kxAnimManager* const manager = kxAnimManager::the();
        {
            kxGraphFixture graph;
            graph.show({{{0, 0}, {24, 2}}});
            graph.scene()->selectAllPoints();
            manager->setFPS(48);
            QCOMPARE(graph.point(0, 1)->pos(), QPointF(48, 2));
            kxAnimFixture::curveOf(graph.nodes[0])->addPoint({2, 5}, {}, {}, 1, 1, true, true);
            kxSend(kxMessageName::UpdateGraphView);
            QCOMPARE(graph.scene()->curves()[0]->points().size(), 3);
        }
        kxSend(kxMessageName::UpdateGraphView); // the view has gone
        manager->setPlaybackContextHint(1);
        manager->reevaluateAnimations(true);
        manager->setPlaybackContextHint(0);
    }

    void bars()
    {
        kxGraphFixture graph;
        const osg::AnimNodePtr node = osg::AnimNodeBase::create();
        const osg::TimeShapeCachePtr cache = osg::TimeShapeCacheBase::create();
        cache->setRange({1, 3});
        node->setCore(cache);
        graph.own(node);
        graph.view.setAnimations(graph.nodes);
        QVERIFY(!graph.scene()->isEmpty());
        QCOMPARE(graph.scene()->curvesBoundingRect(), QRectF(24, -5, 48, 10));
        graph.view.setAnimation(osg::AnimNodePtr());
        const osg::Share<osg::AnimNode> bare(osg::AnimNodeBase::create());
        graph.view.setAnimation(bare); // no core
        QCOMPARE(graph.view.nodes(), graph.nodes);
    }

    void lockedItems()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {10, 2}}});
        graph.click(graph.at(graph.point(0, 1)));
        QSignalSpy selections(graph.scene(), &QGraphicsScene::selectionChanged);
        graph.scene()->lockItems();
        QCOMPARE(selections.count(), 1);
        QVERIFY(!graph.point(0, 1)->tangentsShown());
        graph.drag(graph.at(graph.point(0, 1)), QPoint(50, 50));
        QCOMPARE(graph.place(0, 1), QPointF(10, 2));
        graph.scene()->unlockItems();
        graph.drag(graph.at(graph.point(0, 1)), graph.at(QPointF(11, 3)));
        QCOMPARE(graph.place(0, 1), QPointF(11, 3));
    }
};

QTEST_MAIN(tst_kxAnimGraphView)
#include "tst_kxAnimGraphView.moc"
