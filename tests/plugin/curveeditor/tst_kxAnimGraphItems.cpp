#include "kxGraphFixture.h"

#include <curveeditor/kxAnimGraphColors.h>
#include <curveeditor/kxAnimGraphLine.h>
#include <curveeditor/kxAnimTimeItem.h>

#include <QGraphicsLineItem>
#include <QPainter>
#include <kxTable.h>

#include <random>

class tst_kxAnimGraphItems : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    /// What is asked of a key before its handles were made is what they show then.
    void handlesAreThereFromTheStart()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {10, 2}, {20, 0}}});
        kxAnimGraphPoint* key = graph.point(0, 1);
        QVERIFY(key->childItems().isEmpty());
        key->setTangentTypes(3, 4);
        key->setInTangentPos(-2, 7);
        QCOMPARE(key->inTangentScenePos(), QPointF(8, 9));

        kxAnimGraphPoint* in = key->inTangentItem();
        QCOMPARE(key->childItems().size(), 4);
        QCOMPARE(in->pos(), QPointF(-2, 7));
        QCOMPARE(in->tangentType(), 3);
        QCOMPARE(key->outTangentItem()->tangentType(), 4);
        QVERIFY(!in->isVisible());

        // A handle that is moved from code is the handle of the key, and so is its line.
        in->setPos(-3, 1);
        Q_EMIT in->graphPointMoved(in);
        QCOMPARE(key->inTangentPos(), QPointF(-3, 1));
        QCOMPARE(key->outTangentPos(), QPointF(3, -1)); // mirrored
        for (QGraphicsItem* child : key->childItems())
            if (auto* line = qgraphicsitem_cast<QGraphicsLineItem*>(child))
                QVERIFY(line->line().p2() == key->inTangentPos() || line->line().p2() == key->outTangentPos());
    }

    /// Random moves: the collected keys are the items in order of time, each knows its index, and tangents that are
    /// computed where something moved are those of all computed at each step.
    void keysPassEachOther()
    {
        std::vector<std::pair<float, float>> places;
        for (int i = 0; i < 30; ++i)
            places.emplace_back(float(4 * i), float((i * 7) % 11));
        std::vector<osg::CCPnt> keys[2];
        for (const bool touchesAll : {false, true})
        {
            kxGraphFixture graph;
            graph.show({places});
            kxAnimGraphCurve* curve = graph.scene()->curves().first();
            std::mt19937 random(3);
            for (kxAnimGraphPoint* key : curve->points())
            {
                key->setOutTangentPos(double(random() % 5), double(random() % 7));
                key->setTangentTypes(int(random() % 6), int(random() % 6));
                key->cacheTangents();
            }
            for (int step = 0; step < 80; ++step)
            {
                for (int moves = 0; moves < 3; ++moves)
                    curve->point(random() % 30)->setPos(double(random() % 960) / 8, double(random() % 50) / 4);
                for (kxAnimGraphPoint* key : curve->points())
                    if (touchesAll)
                        key->setTangentTypes(key->inTangentType(), key->outTangentType());
                curve->collectControlPoints(keys[touchesAll]); // after those of the steps before
                for (int i = 0; i < 30; ++i)
                {
                    const kxAnimGraphPoint* key = curve->point(unsigned(i));
                    QCOMPARE(key->index(), i);
                    QCOMPARE(keys[touchesAll][std::size_t(30 * step + i)].x(), float(key->pos().x() / 24));
                    QVERIFY(i == 0 || curve->point(unsigned(i) - 1)->pos().x() < key->pos().x());
                }
            }
        }
        QVERIFY(keys[false] == keys[true]);
    }

    void aFreeHandleGrowsBack()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {20, 2}, {50, 0}}});
        kxAnimGraphPoint *key = graph.point(0, 1), *next = graph.point(0, 2);
        graph.scene()->curves().first()->animCurve()->getControlPoints(1) =
            osg::CCPnt({20 / 24.0f, 2}, {-4 / 24.0f, -1}, {10 / 24.0f, 5}, 5, 5);
        graph.scene()->curves().first()->updateFromCurve();
        const auto outAfter = [&](double x)
        {
            next->setPos(x, 0);
            std::vector<osg::CCPnt> keys;
            graph.scene()->curves().first()->collectControlPoints(keys);
            return key->outTangentPos();
        };
        QCOMPARE(outAfter(26), QPointF(6, 3)); // shortened along its direction
        QCOMPARE(outAfter(23), QPointF(3, 1.5));
        QCOMPARE(outAfter(40), QPointF(10, 5));
        QCOMPARE(key->inTangentPos(), QPointF(-4, -1));
    }

    /// The kernel keeps a free tangent that reaches its neighbour as short as the shorter gap; what is drawn follows.
    void aHandleThatReachesItsNeighbour()
    {
        kxGraphFixture graph;
        graph.scene()->setBreakTangents(true);
        graph.show({{{0, 0}, {12, 2}, {18, 0}}});
        kxAnimGraphPoint* key = graph.point(0, 1);
        key->setSelected(true);
        const QPoint from = graph.at(key->inTangentItem());
        graph.drag(from, from - QPoint(200, 0));
        QCOMPARE(graph.stack()->count(), 1);
        QVERIFY(std::abs(key->inTangentPos().x() - double(graph.key(0, 1).inX()) * 24) < 1e-4);
        QVERIFY(std::abs(key->inTangentPos().y() - double(graph.key(0, 1).inY())) < 1e-4);
        QCOMPARE(key->inTangentPos(), key->cachedInTangentPos());
    }

    /// Places that come from the kernel are neither snapped nor locked nor refused.
    void theKernelIsFollowed()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {10, 2}, {20, 0}}});
        kxAnimGraphCurve* curve = graph.scene()->curves().first();
        const osg::AnimCurvePtr kernel = curve->animCurve();
        graph.scene()->setLockX(true);
        for (osg::UInt32 i = 0; i < 3; ++i)
            kernel->getControlPoints(i).setX(float(10 * (i + 1)) / 24); // each where its neighbour was
        kernel->computeOuttangent(1, 0);
        curve->updateFromCurve();
        QCOMPARE(graph.point(0, 0)->pos().x(), 10.0);
        QCOMPARE(graph.point(0, 2)->pos().x(), 30.0);
        QCOMPARE(graph.point(0, 1)->outTangentType(), 0);
        QVERIFY(curve->isTimeTaken(30, graph.point(0, 0)) && !curve->isTimeTaken(0, graph.point(0, 1)));

        kernel->subPoint(0);
        curve->updateFromCurve();
        QCOMPARE(curve->points().size(), 2);
        kernel->clear();
        curve->updateFromCurve();
        QVERIFY(curve->points().isEmpty() && curve->path().isEmpty() && curve->boundingRect().isNull());
    }

    /// Over all pairs of types: the path and the channel when the scene is evaluated.
    void drawnIsPlayed()
    {
        std::mt19937 random(11);
        std::uniform_real_distribution<float> value(-50, 50), gap(0.5f, 12), part(0.05f, 0.6f);
        for (osg::UInt32 inType = 0; inType < 6; ++inType)
            for (osg::UInt32 outType = 0; outType < 6; ++outType)
            {
                kxGraphFixture graph;
                const osg::NodePtr object = graph.scope.object();
                const osg::AnimNodePtr node = graph.scope.curve("translation", "X", {});
                const osg::AnimCurvePtr curve = graph.scope.curveOf(node);
                kxAnimManager::the()->addAnimation(object, node);
                float frame = 0;
                for (int i = 0; i < 30; ++i)
                {
                    frame += gap(random);
                    const osg::Vec2f in(-part(random) * 0.5f / 24, value(random) / 9);
                    const osg::Vec2f out(part(random) * 0.5f / 24, value(random) / 9);
                    curve->addPoint(osg::Pnt2f(frame / 24, value(random)), in, out, inType, outType, true, true);
                }
                const auto compute = [&]
                {
                    for (osg::UInt32 i = 0; i < 30; ++i)
                    {
                        curve->computeIntangent(i, -1);
                        curve->computeOuttangent(i, -1);
                    }
                    graph.scope.keysChanged(node);
                };
                compute();
                kxAnimGraphCurve item(curve, graph.scene());
                for (int i = 1; i < 200; ++i)
                {
                    const QPointF drawn = item.path().pointAtPercent(i / 200.0);
                    const auto isAt = [x = drawn.x()](const kxAnimGraphPoint* key)
                    { return std::abs(key->x() - x) < 1e-6; };
                    if (std::any_of(item.points().begin(), item.points().end(), isAt))
                        continue; // a step
                    kxAnimManager::the()->setCurrentFrame(drawn.x(), true, false);
                    const double played = double(graph.scope.transform(object)->getTranslation()[0]);
                    QVERIFY2(std::abs(played - drawn.y()) < 1e-2,
                             qPrintable(QString("%1 %2 %3").arg(inType).arg(outType).arg(played - drawn.y())));
                }
                // The live tangents of items that move are those of the kernel.
                for (osg::UInt32 i = 0; i < 30; ++i)
                {
                    osg::CCPnt& key = curve->getControlPoints(i);
                    key.setY(key.y() / 2);
                    item.point(i)->setPos(item.point(i)->pos().x(), double(key.y()));
                }
                compute();
                std::vector<osg::CCPnt> keys;
                item.collectControlPoints(keys);
                for (osg::UInt32 i = 0; i < 30; ++i)
                {
                    const osg::Vec2f in = keys[i].intangent() - curve->getControlPoints(i).intangent();
                    const osg::Vec2f out = keys[i].outtangent() - curve->getControlPoints(i).outtangent();
                    QVERIFY(std::abs(in.x()) < 1e-5f && std::abs(in.y()) < 1e-3f);
                    QVERIFY(std::abs(out.x()) < 1e-5f && std::abs(out.y()) < 1e-3f);
                }
            }
    }

    /// What is drawn and what the mouse meets is a square of 6 by 6 pixels at any zoom.
    void squaresAreSixPixels()
    {
        for (const QPointF& zoom : {QPointF(10, -20), QPointF(0.01, -3), QPointF(900, -0.2)})
        {
            kxGraphFixture graph;
            graph.show({{{7, 1}}});
            graph.view.setTransform(QTransform::fromScale(zoom.x(), zoom.y()));
            graph.view.updatePointScale();
            graph.view.centerOn(7, 1);
            graph.scene()->timeItem()->hide();
            const QPoint middle = graph.at(graph.point(0, 0));
            int met = 0;
            for (int x = -6; x < 6; ++x)
                for (int y = -6; y < 6; ++y)
                    met += graph.view.itemAt(middle + QPoint(x, y)) == graph.point(0, 0);
            const QImage image = graph.view.viewport()->grab().toImage();
            const int ratio = int(image.devicePixelRatio()); // this test also runs with larger pixels
            int white = 0;
            for (int x = -6 * ratio; x < 6 * ratio; ++x)
                for (int y = -6 * ratio; y < 6 * ratio; ++y)
                    white += image.pixelColor(middle * ratio + QPoint(x, y)) == QColor(Qt::white);
            QCOMPARE(white, 36 * ratio * ratio);
            QVERIFY2(met >= 36 && met <= 49, qPrintable(QString::number(met))); // the edge belongs to it

            graph.point(0, 0)->setSelected(true); // an outline that is alike in both directions
            const QImage selected = graph.view.viewport()->grab().toImage();
            QRect outline;
            for (int x = -9 * ratio; x < 9 * ratio; ++x)
                for (int y = -9 * ratio; y < 9 * ratio; ++y)
                    if (const QPoint at = middle * ratio + QPoint(x, y); selected.pixel(at) != image.pixel(at))
                        outline |= QRect(x, y, 1, 1);
            QVERIFY(outline.isValid() && std::abs(outline.left() - outline.top()) < ratio &&
                    std::abs(outline.right() - outline.bottom()) < ratio);
        }
    }

    void theWheelZoomsAboutTheMouse()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {10, 2}}});
        const auto turn = [&graph](int delta, Qt::MouseButtons held = Qt::NoButton)
        {
            const QPoint at(110, 80);
            const QPointF before = graph.view.mapToScene(at);
            QWheelEvent event(at, graph.port()->mapToGlobal(at), {}, {0, delta}, held, Qt::NoModifier,
                              Qt::NoScrollPhase, false);
            QApplication::sendEvent(graph.port(), &event);
            const QPointF off = QPointF(graph.at(before) - at);
            return std::abs(off.x()) <= 1 && std::abs(off.y()) <= 1;
        };
        const auto scale = [&graph] { return QPointF(graph.view.transform().m11(), graph.view.transform().m22()); };
        QVERIFY(turn(120));
        QCOMPARE(scale(), QPointF(11.5, -23));
        graph.press(Qt::Key_X);
        QVERIFY(turn(-120) && turn(-120));
        QCOMPARE(scale(), QPointF(10 / 1.15, -23));
        QCOMPARE(kxAnimGraphPoint::square().width() * scale().x(), 6.0);
        turn(120, Qt::RightButton); // another gesture
        QCOMPARE(scale(), QPointF(10 / 1.15, -23));
    }

    void keysOfTheGraphAreNoShortcuts()
    {
        kxGraphFixture graph;
        const auto isTaken = [&graph](int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
        { return kxTakesKey(&graph.view, key, modifiers); };
        QVERIFY(isTaken(Qt::Key_F) && isTaken(Qt::Key_Delete) && isTaken(Qt::Key_A, Qt::ControlModifier));
        QVERIFY(!isTaken(Qt::Key_Z, Qt::ControlModifier) && !isTaken(Qt::Key_F, Qt::AltModifier) &&
                !isTaken(Qt::Key_W));
    }

    /// A line through keys with tangents that stick out of their segments on either side, painted in part.
    void whatIsSeenLooksLikeTheWhole()
    {
        for (const auto& [inReach, outReach] : {std::make_pair(9, 3), std::make_pair(3, 9)})
        {
            std::mt19937 random(5);
            kxAnimGraphLine line;
            line.start(300);
            const auto some = [&](int range) { return double(random() % unsigned(range)); };
            for (int i = 0; i < 300; ++i)
            {
                const QPointF key(4 * i, some(100));
                const bool isStep = random() % 5 == 0;
                line.addKey(key, isStep ? key : key - QPointF(some(inReach), some(20)),
                            isStep ? key : key + QPointF(some(outReach), -some(20)));
            }
            QPen pen(Qt::red);
            pen.setCosmetic(true);
            for (const int left : {-60, 0, 333, 334, 335, 336, 1150})
            {
                const auto painted = [&](bool isWhole)
                {
                    QImage image(400, 120, QImage::Format_RGB32);
                    image.fill(Qt::black);
                    QPainter painter(&image);
                    painter.setRenderHint(QPainter::Antialiasing);
                    painter.setWorldTransform(QTransform(4, 0, 0, 1, -4.0 * left, 10));
                    if (isWhole)
                        painter.strokePath(line.path(), pen);
                    else
                        line.paint(painter, left, left + 100, pen);
                    return image;
                };
                QVERIFY(painted(true) == painted(false));
            }
        }
    }

    /// Lines of one pixel at every eighth frame and value, each with its number.
    void gridStandsOnItsNumbers()
    {
        kxGraphFixture graph;
        graph.show({{{3, 14}, {4, 14}}}); // else a hint is there
        graph.view.setTransform(QTransform::fromScale(10, -10));
        graph.view.centerOn(3, 0);
        graph.scene()->timeItem()->hide();
        const QImage image = graph.port()->grab().toImage();
        const auto color = [&](const QPoint& place) { return image.pixelColor(place * int(image.devicePixelRatio())); };
        const QColor line = kxAnimGraphColors::Grid, back = kxAnimGraphColors::Background;
        for (const int frame : {-16, -8, 0, 8, 16, 24})
            for (const int value : {-8, 0, 8})
            {
                const QPoint cross = graph.at(QPointF(frame, value));
                QCOMPARE(color(cross + QPoint(0, 30)), line);
                QCOMPARE(color(cross + QPoint(-40, 0)), line);
                for (const QPoint& beside : {QPoint(-2, 30), QPoint(2, 30), QPoint(-40, -2), QPoint(-40, 2)})
                    QCOMPARE(color(cross + beside), back);
            }
        const auto isEmpty = [&](const QRect& from)
        {
            for (int x = from.left(); x <= from.right(); ++x)
                for (int y = from.top(); y <= from.bottom(); ++y)
                    if (color(graph.at(QPointF(24, 0)) + QPoint(x, y)) != back)
                        return false;
            return true;
        };
        QVERIFY(!isEmpty(QRect(1, -14, 25, 13)));
        QVERIFY(isEmpty(QRect(30, -14, 25, 13)));
    }

    void aPictureThatRestsStaysTheSame()
    {
        kxGraphFixture graph;
        graph.show({{{0, 0}, {10, 2}}, {{0, 4}, {12, 5}, {20, 0}}, {{0, -3}, {9, -5}}});
        graph.point(1, 1)->setSelected(true);
        const QImage first = graph.port()->grab().toImage();
        const QPoint middle = (graph.at(graph.point(1, 1)) + graph.at(graph.point(1, 1)->outTangentScenePos())) / 2;
        for (const QPoint& beside : {QPoint(3, -3), QPoint(-3, 3)}) // a thin line to the handle
            QVERIFY(first.pixelColor((middle + beside) * int(first.devicePixelRatio())) != QColor(Qt::yellow));
        for (int i = 0; i < 5; ++i)
            QVERIFY(graph.port()->grab().toImage() == first);
    }

    void denseLinesHaveNoGaps()
    {
        kxAnimGraphLine line;
        line.start(50000);
        for (int i = 0; i < 50000; ++i)
        {
            const QPointF key(i, 50 + 40 * std::sin(i * 0.0003) + i % 7);
            line.addKey(key, key - QPointF(0.5, 0), key + QPointF(0.5, 0));
        }
        QPen pen(Qt::red);
        pen.setCosmetic(true);
        for (const int ratio : {1, 2})
        {
            QImage image(QSize(400, 120) * ratio, QImage::Format_RGB32);
            image.setDevicePixelRatio(ratio);
            image.fill(Qt::black);
            QPainter painter(&image);
            painter.setWorldTransform(QTransform::fromScale(400 / 50000.0, 1));
            line.paint(painter, 0, 50000, pen);
            painter.end();
            for (int i = 0; i < 50000; i += 11)
            {
                const QPointF place(line.key(i).x() * 400 / 50000, line.key(i).y());
                QCOMPARE(image.pixelColor(int(place.x() * ratio), int(place.y() * ratio)), QColor(Qt::red));
            }
        }
    }
};

QTEST_MAIN(tst_kxAnimGraphItems)
#include "tst_kxAnimGraphItems.moc"
