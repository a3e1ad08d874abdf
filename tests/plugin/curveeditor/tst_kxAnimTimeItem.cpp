#include <curveeditor/kxAnimTimeItem.h>
#include <kxSendMouse.h>

#include <QGraphicsScene>
#include <QGraphicsSceneHoverEvent>
#include <QGraphicsView>
#include <QtTest>

#include <cmath>
#include <memory>

/// A time item in a view whose pixels are a tenth of a frame wide.
class tst_kxAnimTimeItem : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        _scene = std::make_unique<QGraphicsScene>(-1000, -1000, 2000, 2000);
        _view = std::make_unique<QGraphicsView>(_scene.get());
        _view->resize(400, 200);
        _view->scale(10, -1);
        _view->centerOn(0, 0);
        _item = new kxAnimTimeItem;
        _scene->addItem(_item);
        _view->show();
    }

    void cleanup()
    {
        _view.reset();
        _scene.reset();
    }

    void dragsInWholeFrames()
    {
        _item->setTime(3);
        QSignalSpy changes(_item, &kxAnimTimeItem::timeChanged);
        QSignalSpy presses(_item, &kxAnimTimeItem::timePressed);
        QWidget* viewport = _view->viewport();
        kxPress(viewport, at(3));
        QVERIFY(_item->isMoving());
        QCOMPARE(presses.takeFirst().first().toDouble(), 3.0);

        const auto dragTo = [&](double frame)
        {
            kxDragTo(viewport, at(frame));
            return changes.isEmpty() ? -1000.0 : changes.takeFirst().first().toDouble();
        };
        QCOMPARE(dragTo(3.4), -1000.0); // inside the frame
        QCOMPARE(dragTo(5.6), 5.0);
        QCOMPARE(dragTo(-2.7), -2.0);
        QCOMPARE(dragTo(-0.7), 0.0);
        QVERIFY(!std::signbit(_item->time()));
        kxDragTo(viewport, at(8) + QPoint(0, 40));
        QCOMPARE(_item->pos(), QPointF(8, 0)); // in x only
        kxRelease(viewport, at(8));
        QVERIFY(!_item->isMoving());
    }

    void staysWhileTheAnimationPlays()
    {
        _item->setPlaying(true);
        QSignalSpy changes(_item, &kxAnimTimeItem::timeChanged);
        kxPress(_view->viewport(), at(0));
        kxDragTo(_view->viewport(), at(7));
        kxRelease(_view->viewport(), at(7));
        QCOMPARE(_item->time(), 0.0);
        QVERIFY(changes.isEmpty());
        QVERIFY(!_item->isMoving()); // or no rubber band could start any more
    }

    void lightsUp()
    {
        _scene->setBackgroundBrush(Qt::black);
        const auto isOrange = [this] { return color().red() > color().blue() + 50; };
        const auto hover = [this](QEvent::Type type)
        {
            QGraphicsSceneHoverEvent event(type);
            _scene->sendEvent(_item, &event);
        };
        QVERIFY(color().blue() > 100 && !isOrange());
        hover(QEvent::GraphicsSceneHoverEnter);
        QVERIFY(isOrange());
        hover(QEvent::GraphicsSceneHoverLeave);
        QVERIFY(!isOrange());
        _item->setPlaying(true);
        QVERIFY(isOrange() && _item->cursor().shape() == Qt::ArrowCursor);
        hover(QEvent::GraphicsSceneHoverLeave);
        QVERIFY(isOrange()); // as long as it plays
        _item->setPlaying(false);
        QVERIFY(!isOrange() && _item->cursor().shape() == Qt::SizeHorCursor);
    }

private:
    /// In the middle of the line at frame 0, as it is seen.
    QColor color() const
    {
        const QPoint middle = at(0) + QPoint(0, 30);
        return _view->viewport()->grab().toImage().pixelColor(middle);
    }
    QPoint at(double frame) const { return _view->mapFromScene(QPointF(frame, 0)); }

    std::unique_ptr<QGraphicsScene> _scene;
    std::unique_ptr<QGraphicsView> _view;
    kxAnimTimeItem* _item = nullptr;
};

QTEST_MAIN(tst_kxAnimTimeItem)
#include "tst_kxAnimTimeItem.moc"
