#include "kxClipFixture.h"

#include <clipmaker/edits/kxClipNodes.h>
#include <clipmaker/kxAnimClipCyclesItem.h>
#include <clipmaker/kxAnimClipLabel.h>
#include <clipmaker/kxClipColor.h>

#include <kxHeard.h>
#include <kxMarks.h>
#include <kxMessageNames.h>
#include <kxScenegraph.h>
#include <osg/FieldContainerFactory.h>

#include <QMessageBox>
#include <kxTable.h>

#include <limits>

namespace
{
/// What the bar shows is where its node lies.
void compareToNode(const kxAnimClipItem* bar)
{
    const kxClipGeometry::Span span = kxClipNodes::spanOf(bar->node());
    const double width = bar->rect().width() * bar->transform().m11();
    QVERIFY2(
        std::abs(bar->x() - span.x) < 2.0e-3 && std::abs(width - span.width) < 2.0e-3,
        qPrintable(QStringLiteral("bar %1 + %2, node %3 + %4").arg(bar->x()).arg(width).arg(span.x).arg(span.width)));
    QCOMPARE(float(bar->y()), bar->node()->getOffset().y() * kxPlatform::getDpiScaleX());
}

QList<kxAnimClipLabel*> labelsOf(const QGraphicsItem* bar)
{
    QList<kxAnimClipLabel*> labels;
    for (QGraphicsItem* child : bar->childItems())
        if (auto* const label = dynamic_cast<kxAnimClipLabel*>(child))
            labels.append(label);
    return labels;
}
} // namespace

class tst_kxAnimClipItem : public QObject
{
    Q_OBJECT
public:
    static void initMain() { qputenv("QT_FONT_DPI", "144"); } // what is drawn grows with the screen

private Q_SLOTS:
    void dragsTakeTheNodeAlong_data()
    {
        // expected: start, track, length
        kxColumns<bool, QString, double, double, QRectF>("snap", "where", "frames", "tracks", "expected");
        kxRow("move", false, "middle", 10.5, 2.0, QRectF(82.5, 2, 48, 1));
        kxRow("move to whole frames", true, "middle", 10.5, 0.4, QRectF(83, 0, 48, 1));
        kxRow("move past the start of time", true, "middle", -82.5, 0.0, QRectF(-11, 0, 48, 1));
        kxRow("not above the first track", false, "middle", 0.0, -3.0, QRectF(72, 0, 48, 1));
        kxRow("right end", false, "right", 12.5, 2.0, QRectF(72, 0, 60.5, 1));
        kxRow("right end on whole frames", true, "right", -12.5, 0.0, QRectF(72, 0, 36, 1));
        kxRow("left end", false, "left", 12.5, 2.0, QRectF(84.5, 0, 35.5, 1));
        kxRow("left end outward", true, "left", -20.0, 0.0, QRectF(52, 0, 68, 1));
        kxRow("right end past the left one stays on this side", true, "right", -200.0, 0.0, QRectF());
        kxRow("left end past the right one stays on this side", true, "left", 200.0, 0.0, QRectF());
    }

    void dragsTakeTheNodeAlong()
    {
        QFETCH(bool, snap);
        QFETCH(QString, where);
        QFETCH(double, frames);
        QFETCH(double, tracks);
        QFETCH(QRectF, expected);
        kxClipFixture f;
        f.scene.setSnapToGridX(snap);
        kxAnimClipItem* const bar = f.bar(3, 2);
        const QPointF grip = where == "middle" ? f.middle(bar) : where == "left" ? f.leftEnd(bar) : f.rightEnd(bar);
        f.drag(grip, frames, tracks);
        compareToNode(bar);
        const QRectF shown = bar->sceneBoundingRect();
        QVERIFY(shown.width() > 0);
        if (expected.isNull())
            return;
        QCOMPARE(shown.left(), expected.left());
        QCOMPARE(float(shown.top()), float(expected.top()) * kxClipGeometry::trackPitch(kxPlatform::getDpiScaleX()));
        QVERIFY(std::abs(shown.width() - expected.width()) < 1.0e-4);
        QCOMPARE(double(bar->node()->getOffset().y()), 50 * expected.top()); // at any scale of the screen
    }

    void refusesWhatNoNodeHolds()
    {
        kxClipFixture f;
        kxAnimClipItem* const bar = f.bar(3, 2);
        const osg::Vec2f offset = bar->node()->getOffset();
        const double infinity = std::numeric_limits<double>::infinity();
        for (const double factor : {0.0, -1.0, infinity, std::numeric_limits<double>::quiet_NaN(), 1.0e-300, 1.0e300})
            bar->setTransform(QTransform().scale(factor, 1), true);
        for (const double x : {infinity, std::numeric_limits<double>::quiet_NaN(), 1.0e300})
            bar->setPos(x, bar->y());
        QCOMPARE(bar->node()->getScale(), 1.0f);
        QCOMPARE(bar->node()->getOffset(), offset);
        compareToNode(bar);
    }

    void slidesBackFromACollision()
    {
        kxClipFixture f;
        f.scene.setSnapToGridX(true);
        kxAnimClipItem* const bar = f.bar(4, 2); // frames 96 to 144
        f.bar(0, 2);
        // Cycles count as well: a bar on the next track repeats to frame 144.
        f.bar(0, 2, 1, 2);
        f.drag(f.middle(bar), -60, 0, 3, false);
        QVERIFY(f.scene.checkCollisions(f.scene.selectedItems()));
        QCOMPARE(kxAnimAbstractClipItem::fromItem(f.scene.items(QPointF(40, 40)).value(0)), bar); // over its neighbour
        kxRelease(f.view.viewport(), f.view.mapFromScene(f.middle(bar)));
        QVERIFY(!bar->flags().testFlag(QGraphicsItem::ItemIsMovable));
        QTRY_VERIFY(bar->x() > 40 && bar->x() < 90); // on its way
        compareToNode(bar);
        QTRY_VERIFY(bar->flags().testFlag(QGraphicsItem::ItemIsMovable));
        QCOMPARE(bar->x(), 96.0);
        compareToNode(bar);

        f.drag(f.middle(bar), 0, 1);
        QTRY_COMPARE(bar->y(), 0.0);
        f.drag(f.middle(bar), -48, 0); // touches its neighbour
        QVERIFY(bar->flags().testFlag(QGraphicsItem::ItemIsMovable));
        QCOMPARE(bar->x(), 48.0);
    }

    void endsGoBackFromACollision_data()
    {
        kxColumns<bool>("left");
        kxRow("right end", false);
        kxRow("left end", true);
    }

    void endsGoBackFromACollision()
    {
        QFETCH(bool, left);
        kxClipFixture f;
        f.bar(0, 2);
        kxAnimClipItem* const bar = f.bar(3, 2);
        f.bar(6, 2);
        f.drag(left ? f.leftEnd(bar) : f.rightEnd(bar), left ? -40 : 40, 0);
        QVERIFY(bar->isReturning());
        QTRY_VERIFY(std::abs(bar->sceneBoundingRect().width() - 68) < 15); // on its way
        compareToNode(bar);
        QTRY_VERIFY(!bar->isReturning());
        QCOMPARE(bar->x(), 72.0);
        QVERIFY(std::abs(bar->sceneBoundingRect().width() - 48) < 1.0e-3);
        compareToNode(bar);
        QVERIFY(bar->isSelected()); // as before the drag
        f.drag(f.rightEnd(bar), 10, 0);
        QVERIFY(std::abs(bar->sceneBoundingRect().width() - 58) < 1.0e-3);
        QVERIFY(!bar->isReturning());
    }

    void lockedBarsStayWhereTheyAre()
    {
        kxClipFixture f;
        kxAnimClipItem* const bar = f.bar(4, 2);
        bar->setLocked(true);
        f.drag(f.middle(bar), 20, 1);
        f.drag(f.rightEnd(bar), 20, 0);
        QVERIFY(!bar->isSelected());
        QCOMPARE(bar->x(), 96.0);
        bar->setLocked(false);
        bar->setX(100); // no handle is left pressed
        QCOMPARE(bar->sceneBoundingRect().width(), 48.0);
        compareToNode(bar);

        f.bar(0, 2);
        f.drag(f.middle(bar), -60, 0);
        bar->setLocked(true); // while it slides back
        bar->finishedAnimation();
        QVERIFY(!(bar->flags() & (QGraphicsItem::ItemIsMovable | QGraphicsItem::ItemIsSelectable)));
        bar->setLocked(false);
        f.drag(f.middle(bar), -20, 0);
        delete bar; // a bar may die on its way
    }

    void labelsHideAndComeBack()
    {
        kxClipFixture f;
        kxAnimClipItem* const bar = f.bar(1, 6);
        const QList<kxAnimClipLabel*> labels = labelsOf(bar);
        QCOMPARE(labels.size(), 3);
        QCOMPARE(labels[0]->text(), QString("Block"));
        QCOMPARE(labels[1]->text(), QString("24.00 - 168.00 (144.00)"));
        QVERIFY(labels[1]->isVisible());
        f.view.scale(0.1, 1);
        f.scene.updateAllTexts();
        QVERIFY(!labels[0]->isVisible() && !labels[1]->isVisible());
        bar->setTransform(QTransform().scale(10, 1), true);
        QVERIFY(labels[0]->isVisible() && labels[1]->isVisible());
        QCOMPARE(labels[1]->text(), QString("24.00 - 1464.00 (1440.00)"));
        // Twelve pixels from the left end, whatever the scales.
        QCOMPARE(float((labels[0]->scenePos().x() - 24) * 0.2), 12 * kxPlatform::getDpiScaleX());

        bar->setFlipped(true);
        bar->setMotionBlur(true);
        bar->node()->setPostCycles(3);
        kxNodeUtils::setName(bar->node(), "<b>Block</b>", true, osg::NodePtr());
        bar->updateAllTexts(true);
        QCOMPARE(labels[2]->text(), QString("Flipped - Cycles (3) - MotionBlur"));
        f.view.centerOn(bar->mapToScene(0, 0));
        const QRect name(f.view.mapFromScene(labels[0]->scenePos()), labels[0]->boundingRect().size().toSize());
        const QImage picture = f.view.viewport()->grab().toImage().copy(name);
        int rightmost = 0;
        for (int x = 0; x < picture.width(); ++x)
            for (int y = 0; y < picture.height(); ++y)
                if (picture.pixelColor(x, y).lightness() < 60)
                    rightmost = x;
        QVERIFY(rightmost > picture.width() * 4 / 5); // the whole name is painted, as it is
    }

    void menuTellsMixedStates()
    {
        kxClipFixture f;
        std::vector<kxAnimClipItem*> bars = {f.bar(0, 2), f.bar(3, 2), f.bar(6, 2)};
        bars[1]->setFlipped(true);
        for (kxAnimClipItem* bar : bars)
        {
            bar->setActive(false);
            bar->setSelected(true);
        }
        bool seen = false;
        f.withMenu(bars[1],
                   [&f, &seen](QMenu* menu)
                   {
                       seen = f.entry(menu, "Info") != nullptr;
                       QVERIFY(seen && menu->isTearOffEnabled());
                       QVERIFY(!f.entry(menu, "Flipped")->isChecked() && !f.entry(menu, "Flipped")->icon().isNull());
                       QVERIFY(!f.entry(menu, "Active")->isChecked() && f.entry(menu, "Active")->icon().isNull());
                       QVERIFY(!f.entry(menu, "Show Source")->isEnabled() && !f.entry(menu, "Info")->isEnabled());
                   });
        QVERIFY(seen);
        bars[1]->setSelected(false);
        const kxHeard<> asked(kxMessageName::ShowCurves);
        f.withMenu(bars[1],
                   [&f](QMenu* menu)
                   {
                       QVERIFY(f.entry(menu, "Flipped")->isChecked() && f.entry(menu, "Flipped")->icon().isNull());
                       QVERIFY(f.entry(menu, "Show Source")->isEnabled() && f.entry(menu, "Info")->isEnabled());
                       f.entry(menu, "Show Source")->trigger();
                   });
        QCOMPARE(f.scene.selectedBars(), {bars[1]});
        QCOMPARE(boost::any_cast<osg::AnimNodePtr>(asked.last.get("node")), bars[1]->node());
    }

    void menuActsOnTheSelection()
    {
        kxClipFixture f;
        std::vector<kxAnimClipItem*> bars = {f.bar(0, 2), f.bar(3, 2), f.bar(6, 2)};
        bars[0]->setSelected(true);
        bars[1]->setSelected(true);
        const auto trigger = [&f, &bars](const char* text)
        { f.withMenu(bars[0], [&f, text](QMenu* menu) { f.entry(menu, text)->trigger(); }); };
        QSignalSpy states(&f.scene, SIGNAL(itemsChangedState()));
        trigger("Active");
        trigger("Flipped");
        trigger("Motion Blur");
        QCOMPARE(states.count(), 1); // for both bars
        for (std::size_t i = 0; i < bars.size(); ++i)
        {
            const osg::AnimNodePtr node = bars[i]->node();
            QCOMPARE(node->isActive(), i == 2);
            QCOMPARE(node->getFlipped(), i != 2);
            QCOMPARE(node->getMotionBlur(), i != 2);
        }
        trigger("Locked");
        QVERIFY(f.scene.selectedItems().isEmpty());
        QVERIFY(bars[1]->node()->getLocked());
        trigger("Locked"); // of the bar alone, as a locked one can't be selected
        QVERIFY(!bars[0]->node()->getLocked() && bars[1]->node()->getLocked());
    }

    void motionBlurReachesIntoBlocks()
    {
        kxClipFixture f;
        const osg::AnimNodePtr inner = f.block("Inner", {f.curve("translation", "X", {{0, 0}, {1, 1}})});
        kxAnimAbstractClipItem* const blockBar = f.add(f.block("Outer", {inner}), 0, 0);
        const osg::AnimNodePtr child = f.block("Child", {});
        kxAnimAbstractClipItem* const clipBar = f.add(f.clip("Clip in clip", {child}), 0, 1);
        blockBar->setMotionBlur(true);
        clipBar->setMotionBlur(true);
        QVERIFY(inner->getMotionBlur());
        QVERIFY(osg::AnimNodePtr::dcast(inner->getChild(0))->getMotionBlur());
        QVERIFY(clipBar->node()->getMotionBlur() && !child->getMotionBlur());
    }

    void duplicates()
    {
        kxClipFixture f;
        kxAnimClipItem* const bar = f.bar(1, 2);
        bar->setFlipped(true);
        const kxMarks marks;
        bar->duplicateFlippedSelected(); // nothing is selected
        QVERIFY(marks.has(bar->node()->getParent()));
        QCOMPARE(f.scene.bars().size(), 2);
        kxAnimAbstractClipItem* const copy = f.scene.bars()[1];
        QVERIFY(copy->node() != bar->node() && copy->node()->getCore() == bar->node()->getCore());
        QVERIFY(!copy->node()->getFlipped());
        QCOMPARE(copy->x(), bar->x());
        QVERIFY(!f.scene.checkCollisions({copy}));

        QSignalSpy duplicated(&f.scene, SIGNAL(itemDuplicated()));
        bar->setSelected(true);
        copy->setSelected(true);
        bar->duplicateFlippedSelected();
        QCOMPARE(duplicated.count(), 1);
        QCOMPARE(f.scene.bars().size(), 4);
        QVERIFY(f.scene.bars()[2]->node()->getFlipped() && f.scene.bars()[3]->node()->getFlipped());
        bar->setFlipped(false);
        copy->setSelected(false);
        bar->duplicateSelected();
        QVERIFY(!f.scene.bars()[4]->node()->getFlipped());
        f.scene.clearSelection();
        kxAnimAbstractClipItem* const inner = f.add(f.clip("Inner", {f.clone(bar->node(), 0)}), 20, 0);
        inner->setLocked(true); // so that its menu can't select it
        f.withMenu(inner, [&f](QMenu* menu) { f.entry(menu, "Duplicate")->trigger(); });
        QVERIFY(f.scene.bars()[6]->node()->getCore() != inner->node()->getCore()); // a clip of its own
    }

    void lockedBarsAreReset()
    {
        kxClipFixture f;
        const osg::NodePtr box = f.object();
        const osg::AnimNodePtr block = f.block("Block", {f.curve("translation", "X", {{0, 3}, {1, 10}})});
        kxAnimManager::the()->addAnimation(box, block);
        kxAnimAbstractClipItem* const bar = f.add(f.clone(block, 0), 1, 0);
        bar->setLocked(true);
        f.transform(box)->setTranslation(osg::Vec3f(8, 0, 0));
        f.withMenu(bar, [&f](QMenu* menu) { f.entry(menu, "Reset")->trigger(); });
        QCOMPARE(f.transform(box)->getTranslation().x(), 3.0f);
    }

    void cursorTellsWhatADragDoes()
    {
        kxClipFixture f;
        kxAnimClipItem* const bar = f.bar(3, 2);
        const auto cursorAt = [&f](const QPointF& place)
        {
            kxSendMouse(f.view.viewport(), QEvent::MouseMove, f.view.mapFromScene(place), Qt::NoButton, Qt::NoButton);
            return f.view.viewport()->cursor().shape();
        };
        QCOMPARE(cursorAt(f.middle(bar)), Qt::SizeAllCursor);
        QCOMPARE(cursorAt(f.rightEnd(bar)), Qt::SizeHorCursor);
        QCOMPARE(cursorAt(f.middle(bar)), Qt::SizeAllCursor);
        bar->setLocked(true); // under the mouse
        QCOMPARE(cursorAt(f.leftEnd(bar)), Qt::ArrowCursor);
    }

    void paintsSharply()
    {
        kxClipFixture f;
        const double pixel = 0.5;
        kxAnimClipItem* const bar = f.bar(float((24 + pixel / 2) / 24), 4, 0, 3); // between two pixels
        f.view.setRenderHint(QPainter::Antialiasing);                             // as the clip maker's
        f.view.centerOn(bar);
        const QImage picture = f.view.viewport()->grab().toImage();
        const auto colours = [&](double frame, double y)
        {
            const QPoint place = f.view.mapFromScene(QPointF(frame, y));
            QSet<QRgb> found;
            for (int x = -4; x <= 4; ++x)
                found.insert(picture.pixel(place + QPoint(x, 0)));
            return found;
        };
        const QRgb tick = kxClipColor::CycleTick.rgb();
        const QRectF area = bar->sceneBoundingRect();
        QCOMPARE(colours(area.left(), area.bottom() - 3).size(), 2); // ground and handle
        const double pass = area.width(), border = area.right() + pass;
        for (const double y : {area.top() + 9, area.bottom() - 9}) // ticks are as high as the screen is fine
        {
            QVERIFY(colours(border, y).contains(tick));
            QVERIFY(colours(border, y).size() <= 3); // and the pattern
            QVERIFY(!colours(border + pass / 2, y).contains(tick));
        }
        QVERIFY(!colours(border, area.center().y()).contains(tick));
    }

    void endlessCyclesReachTheEndOfTime()
    {
        kxClipFixture f;
        kxAnimClipItem* const bar = f.bar(1, 2, 0, -1);
        const double reach = bar->cyclesItem()->sceneBoundingRect().width();
        bar->setTransform(QTransform().scale(3, 1), true);
        QVERIFY(std::abs(bar->cyclesItem()->sceneBoundingRect().width() - reach) < 1);
    }

    void informs()
    {
        kxClipFixture f;
        kxAnimClipItem* const bar = f.bar(1, 2, 0, 1);
        QString title, text;
        QTimer::singleShot(0, &f.view,
                           [&title, &text]
                           {
                               auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                               title = box->text();
                               text = box->informativeText();
                               box->reject();
                           });
        bar->info();
        QCOMPARE(title, QString("Block Animation Information"));
        const QStringList lines = text.split('\n');
        QCOMPARE(lines.size(), 12);
        QCOMPARE(lines[0], QString("Curves:\t1"));
        QCOMPARE(lines[4], QString("ControlPoints:\t6"));
        QCOMPARE(lines[7], QString("Local Scale:\t1"));
        QCOMPARE(lines[9], QString("Local Offset:\t1 seconds (24 frames)"));
        QVERIFY(text.endsWith('\n'));
    }

    void doesNothingWithoutItsNode()
    {
        kxClipFixture f;
        kxAnimClipItem* const bar = f.bar(1, 2, 0, 2);
        kxAnimClipItem* const ghost = f.bar(8, 2);
        const osg::AnimNodePtr untouched = ghost->node();
        ghost->invalidateNode();
        f.clipNode->subChild(bar->node());
        QVERIFY(bar->node() == osg::NullFC);
        kxAnimClipItem empty(osg::AnimNodePtr(), nullptr);
        f.scene.addItem(&empty);
        for (kxAnimClipItem* dead : {bar, ghost, &empty})
        {
            dead->setActive(false);
            dead->setLocked(false);
            dead->setFlipped(true);
            dead->setMotionBlur(true);
            dead->updateAllTexts(true);
            for (const char* const slot : {"play", "reset", "showSource", "info", "duplicate"})
                QMetaObject::invokeMethod(dead, slot);
            dead->setPos(77, 0);
            dead->setTransform(QTransform().scale(2, 1), true);
        }
        f.withMenu(ghost, [&f](QMenu* menu) { QVERIFY(!f.entry(menu, "Active")->isChecked()); });
        QCOMPARE(ghost->x(), 77.0);
        QVERIFY(untouched->isActive() && !untouched->getFlipped() && !untouched->getLocked());
        QCOMPARE(untouched->getOffset().x(), 8.0f);
        QCOMPARE(untouched->getScale(), 1.0f);
        QCOMPARE(f.clipNode->getNChildren(), 1u);
        f.view.grab();
    }
};

QTEST_MAIN(tst_kxAnimClipItem)
#include "tst_kxAnimClipItem.moc"
