#include "kxShownClip.h"

#include <clipmaker/kxClipColor.h>
#include <clipmaker/kxClipLayout.h>
#include <frame/kxPaneHint.h>

#include <kxUndo.h>

#include <QPainter>
#include <QtTest>

using namespace osg;

namespace
{
void wheel(const kxAnimClipView& view, const QPoint& at, int delta, Qt::MouseButtons held = Qt::NoButton)
{
    QWheelEvent event(at, view.mapToGlobal(at), QPoint(), QPoint(0, delta), held, Qt::NoModifier, Qt::NoScrollPhase,
                      false);
    QApplication::sendEvent(view.viewport(), &event);
}

void doubleClick(const kxShownClip& f, const QPoint& at, Qt::MouseButton button)
{
    kxSendMouse(f.port(), QEvent::MouseButtonDblClick, at, button, button);
    kxSendMouse(f.port(), QEvent::MouseButtonRelease, at, button, Qt::NoButton);
}
} // namespace

class tst_kxAnimClipView : public QObject
{
    Q_OBJECT
public:
    static void initMain() { qputenv("QT_FONT_DPI", "144"); } // what is drawn grows with the screen

private Q_SLOTS:
    void zoomsAboutAPoint()
    {
        kxShownClip f;
        const QPoint at(300, 120);
        const QPointF before = f.view.mapToScene(at);
        for (int i = 0; i < 20; ++i)
            wheel(f.view, at, 120);
        QVERIFY(std::abs(f.view.transform().m11() - std::pow(1.15, 20)) < 1e-6);
        QCOMPARE(f.view.transform().m22(), 1.0);
        QVERIFY((f.view.mapToScene(at) - before).manhattanLength() < 0.2);
        for (int i = 0; i < 20; ++i)
            wheel(f.view, at, -120);
        QVERIFY(std::abs(f.view.transform().m11() - 1) < 1e-9);
        QVERIFY((f.view.mapToScene(at) - before).manhattanLength() < 2);
        wheel(f.view, at, 120, Qt::LeftButton);
        wheel(f.view, at, 0); // the end of a gesture
        QVERIFY(std::abs(f.view.transform().m11() - 1) < 1e-9);
        QWheelEvent sideways(at, f.view.mapToGlobal(at), QPoint(), QPoint(120, 0), Qt::NoButton, Qt::AltModifier,
                             Qt::NoScrollPhase, false);
        QApplication::sendEvent(f.port(), &sideways); // with a key that swaps the axes
        QVERIFY(std::abs(f.view.transform().m11() - 1.15) < 1e-9);
        wheel(f.view, at, -120);

        kxSendMouse(f.port(), QEvent::MouseButtonPress, at, Qt::RightButton, Qt::RightButton);
        for (const int y : {130, 140, 100}) // down, down, up
            kxSendMouse(f.port(), QEvent::MouseMove, QPoint(500, y), Qt::NoButton, Qt::RightButton);
        kxSendMouse(f.port(), QEvent::MouseButtonRelease, QPoint(500, 100), Qt::RightButton, Qt::NoButton);
        QVERIFY(std::abs(f.view.transform().m11() - 1.05) < 1e-9);
        for (int i = 0; i < 400; ++i) // as far as there is a bound
            wheel(f.view, at, i < 200 ? -120 : 120);
        QVERIFY(std::isfinite(f.view.mapToScene(at).x()));
    }

    void frames()
    {
        kxShownClip f;
        f.view.frame(); // nothing to frame
        QCOMPARE(f.view.transform().m11(), 1.0);
        f.add(f.blockOf(2), 10, 0);
        f.add(f.blockOf(2), 14, 3);
        f.show();
        f.view.frame();
        // Frames 240 to 384, with room for the column.
        const QRectF seen = f.view.mapToScene(f.port()->rect()).boundingRect();
        const double margin = 144 * 80 * double(kxPlatform::getDpiScaleX()) / f.port()->width();
        QVERIFY(std::abs(seen.left() - (240 - margin)) < 1);
        QVERIFY(std::abs(seen.right() - 384) < 1);
        QVERIFY(std::abs(f.view.transform().m22() - 1) < 1e-9);
        QVERIFY(seen.top() < 0 && seen.bottom() > 200);

        // Where there is no room for all tracks, the first one is below the ruler; so it does at the start.
        const double strip = 20 * double(kxPlatform::getDpiScaleX());
        kxAnimClipView fresh;
        fresh.resize(300, 10); // as a layout may, before it has all sizes
        fresh.show();
        fresh.resize(600, 150);
        QCOMPARE(fresh.viewportTransform().map(QPointF(0, 0)).y(), strip);
        kxShownClip low;
        low.view.resize(600, 150);
        const auto firstTrack = [&low] { return low.view.viewportTransform().map(QPointF(0, 0)).y(); };
        for (int track = 0; track < 12; ++track)
            low.add(low.blockOf(2), 0, track);
        low.show();
        low.view.frame();
        QCOMPARE(firstTrack(), strip);

        // A lone trigger is a point in time: the zoom stays.
        kxShownClip lone;
        lone.add(lone.group<AnimSequenceBase>("Trigger", {}), 100);
        lone.show();
        lone.view.frame();
        QCOMPARE(lone.view.transform().m11(), 1.0);
        QVERIFY(lone.view.mapToScene(lone.port()->rect()).boundingRect().contains(QPointF(2400, 0)));
    }

    void pansAndLetsGo()
    {
        kxShownClip f;
        f.add(f.blockOf(2), 2, 1);
        f.show();
        const QPointF before = f.view.mapToScene(0, 0);
        kxPress(f.port(), {200, 200}, Qt::ControlModifier);
        kxDragTo(f.port(), {170, 180}, Qt::ControlModifier);
        kxRelease(f.port(), {170, 180}, Qt::ControlModifier);
        QCOMPARE(f.view.mapToScene(0, 0) - before, QPointF(30, 20));
        kxSendMouse(f.port(), QEvent::MouseButtonPress, {200, 200}, Qt::MiddleButton, Qt::MiddleButton);
        kxSendMouse(f.port(), QEvent::MouseMove, {230, 220}, Qt::NoButton, Qt::MiddleButton);
        QCOMPARE(f.view.mapToScene(0, 0), before);

        // The modifier that comes late doesn't keep a bar at the mouse.
        kxPress(f.port(), f.at(60, 1));
        kxRelease(f.port(), f.at(60, 1), Qt::ControlModifier);
        QVERIFY(f.scene.mouseGrabberItem() == nullptr);
    }

    void framesAtADoubleClick()
    {
        kxShownClip f;
        const AnimNodePtr block = f.add(f.blockOf(2), 2, 1);
        f.show();
        f.barOf(block)->setSelected(true);
        const QPoint end = f.at(94, 1);
        kxSendMouse(f.port(), QEvent::MouseButtonDblClick, end, Qt::LeftButton, Qt::LeftButton);
        kxSendMouse(f.port(), QEvent::MouseButtonRelease, end, Qt::RightButton, Qt::LeftButton);
        kxDragTo(f.port(), end + QPoint(20, 0)); // the left button holds the bar's end all the same
        kxRelease(f.port(), end + QPoint(20, 0));
        QCOMPARE(qRound(f.barOf(block)->sceneBoundingRect().width()), 68);
        QCOMPARE(f.view.transform().m11(), 1.0);
        f.scene.clearSelection();
        doubleClick(f, f.at(60, 1), Qt::RightButton); // on the bar, which takes the mouse
        QVERIFY(f.scene.mouseGrabberItem() == nullptr);
        const QPointF middle = f.view.mapToScene(f.port()->rect().center());
        QVERIFY(std::abs(middle.x() - 60) < 2);
        doubleClick(f, f.at(60, 4), Qt::LeftButton);
        QVERIFY(f.view.transform().m11() > 5);
    }

    void drawsTheRulerAtAnyZoom()
    {
        kxShownClip f;
        f.add(f.blockOf(1), 4, 5);
        f.show();
        f.view.scale(3, 1);
        f.view.centerOn(100, 0);
        f.scene.setTime(90);
        const QImage picture = f.port()->grab().toImage();
        const double dpi = double(kxPlatform::getDpiScaleX());
        const auto shows = [&](double x, double y, double width, double height, const QColor& colour)
        {
            const QRect area(qRound(x), qRound(y), qRound(width * dpi), qRound(height * dpi));
            for (int column = area.left(); column <= area.right(); ++column)
                for (int row = area.top(); row <= area.bottom(); ++row)
                    if (picture.pixelColor(column, row) == colour)
                        return true;
            return false;
        };
        for (const int track : {0, 2})
            for (int button = 0; button < kxClipLayout::ButtonCount; ++button)
            {
                const double top = f.at(0, track).y() - f.pitch() / 2 + 5 * dpi;
                const QRect icon(qRound(button * 20 * dpi), qRound(top), qRound(20 * dpi), qRound(20 * dpi));
                const QImage drawn = picture.copy(icon.adjusted(2, 2, -2, -2));
                QImage empty = drawn;
                empty.fill(kxClipColor::Background);
                QVERIFY(drawn != empty);
            }
        QVERIFY(shows(40, f.view.mapFromScene(0, 2 * f.pitch()).y() - 1, 5, 2, kxClipColor::TrackLine));
        // A number is low in the strip at the top; the current frame at the bottom, beside its line.
        QVERIFY(shows(f.at(100, 0).x(), 15 * dpi, 20, 3, kxClipColor::RulerText));
        const QRect time(f.at(90, 0).x() + 4, f.port()->height() - qRound(20 * dpi), qRound(20 * dpi),
                         qRound(20 * dpi));
        QVERIFY(shows(time.x(), time.y(), 20, 20, kxClipColor::CurrentTime));
    }

    void tellsWhatToDo()
    {
        kxShownClip f;
        f.scene.hideTimeItem();
        const QImage picture = f.port()->grab(QRect(200, 40, 800, 320)).toImage(); // beside column and strips
        const auto areaOf = [](const QImage& image, const QColor& colour, bool isThis = true)
        {
            QRect area;
            for (int x = 0; x < image.width(); ++x)
                for (int y = 0; y < image.height(); ++y)
                    if ((image.pixelColor(x, y) == colour) == isThis)
                        area |= QRect(x, y, 1, 1);
            return area;
        };
        const QRect title = areaOf(picture, kxClipColor::HintTitle), text = areaOf(picture, kxClipColor::Hint);
        QVERIFY(!title.isEmpty() && text.bottom() > title.bottom() + 10); // in a colour of its own, below
        QVERIFY(std::abs((title | text).center().y() - picture.height() / 2) < 12);

        QImage pane(600, 300, QImage::Format_RGB32);
        pane.fill(Qt::red);
        QPainter painter(&pane);
        const QRect right = pane.rect().adjusted(200, 0, 0, 0);
        kxPaneHint::paint(painter, right, {Qt::white, Qt::white, Qt::blue}, "Title", "What to do");
        const QRect sheet = areaOf(pane, Qt::red, false);
        QVERIFY((sheet.center() - right.center()).manhattanLength() <= 2); // in the middle
        QCOMPARE(areaOf(pane, Qt::blue), sheet);                           // to its edges, without a frame
    }

    void hearsKeys()
    {
        kxShownClip f;
        f.add(f.blockOf(1), 0, 0);
        f.add(f.blockOf(1), 2, 0);
        f.show();
        QSignalSpy deleted(&f.view, SIGNAL(itemsDeleted())), focus(&f.view, SIGNAL(gotFocus(QWidget*)));
        QFocusEvent in(QEvent::FocusIn);
        QApplication::sendEvent(&f.view, &in);
        QCOMPARE(focus.count(), 1);
        QTest::keyClick(&f.view, Qt::Key_A);
        QCOMPARE(f.scene.selectedBars().size(), 0);
        QTest::keyClick(&f.view, Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(f.scene.selectedBars().size(), 2);
        QTest::keyClick(&f.view, Qt::Key_C, Qt::ControlModifier);
        f.scene.setTime(240);
        QTest::keyClick(&f.view, Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(f.clipNode->getNChildren(), 4u);
        QCOMPARE(f.scene.bars().size(), 4);
        QTest::keyClick(&f.view, Qt::Key_D, Qt::ControlModifier);
        QCOMPARE(f.clipNode->getNChildren(), 6u);
        QTest::keyClick(&f.view, Qt::Key_Delete); // what was pasted
        QCOMPARE(f.clipNode->getNChildren(), 4u);
        QCOMPARE(deleted.count(), 1);
        for (const Qt::KeyboardModifier other : {Qt::AltModifier, Qt::MetaModifier}) // belong to menus
            for (const Qt::Key key : {Qt::Key_F, Qt::Key_Delete})
            {
                f.scene.selectAll();
                QKeyEvent asked(QEvent::ShortcutOverride, key, other);
                asked.ignore();
                QApplication::sendEvent(&f.view, &asked);
                QVERIFY(!asked.isAccepted());
                QTest::keyClick(&f.view, key, other);
            }
        QCOMPARE(f.view.transform().m11(), 1.0);
        QCOMPARE(f.clipNode->getNChildren(), 4u);
        QTest::keyClick(&f.view, Qt::Key_F);
        QVERIFY(f.view.transform().m11() != 1.0);
        kxUndoStack::get(0).stack()->clear();
    }
};

QTEST_MAIN(tst_kxAnimClipView)
#include "tst_kxAnimClipView.moc"
