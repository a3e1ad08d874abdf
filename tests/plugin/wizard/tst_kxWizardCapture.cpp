#include "kxPictureView.h"

#include <wizard/kxCaptureTable.h>
#include <wizard/kxWizardCapture.h>

#include <kxAnimFixture.h>
#include <osg/Share.h>

#include <QPushButton>
#include <kxTable.h>

#include <cmath>
#include <limits>

namespace
{
/// A picture whose left, middle and right differ, or whose top, middle and bottom do.
QImage striped(const QSize& size)
{
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(Qt::red);
    const int side = std::min(size.width(), size.height());
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            if (std::abs(2 * x + 1 - size.width()) < side && std::abs(2 * y + 1 - size.height()) < side)
                picture.setPixelColor(x, y, x < size.width() / 2 ? Qt::green : Qt::blue);
    picture.setDevicePixelRatio(2);
    return picture;
}
} // namespace

class tst_kxWizardCapture : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void writesKeys()
    {
        const osg::Share<osg::AnimNode> node(kxAnimFixture::curve("translation", "X", {{0, 0}, {1, 0}}));
        const osg::AnimCurvePtr curve = kxAnimFixture::curveOf(node);
        kxWizardCapture::setStart(curve, 4, 0);
        kxWizardCapture::setEnd(curve, 3, 10, 0);
        QCOMPARE(curve->getControlPoints(0).point(), osg::Pnt2f(0, 4));
        QCOMPARE(curve->getControlPoints(1).point(), osg::Pnt2f(3, 10));
        QCOMPARE(curve->getControlPoints(0).outY() / curve->getControlPoints(0).outX(), 2.0f);
        kxWizardCapture::setDuration(curve, 1.5, 0);
        QCOMPARE(curve->getControlPoints(1).point(), osg::Pnt2f(1.5f, 10));
        QCOMPARE(curve->getControlPoints(0).outY() / curve->getControlPoints(0).outX(), 4.0f); // follows the new time
    }

    void keepsKeysSortedAndFinite()
    {
        const float infinite = std::numeric_limits<float>::infinity();
        const osg::Share<osg::AnimNode> node(kxAnimFixture::curve("translation", "X", {{0, 1}, {2, 5}, {4, 2}}));
        const osg::AnimCurvePtr curve = kxAnimFixture::curveOf(node);
        kxWizardCapture::setDuration(curve, 1, 3);
        QCOMPARE(curve->getControlPoints(2).x(), 2.0f);
        kxWizardCapture::setDuration(curve, -7, 3);
        kxWizardCapture::setStart(curve, std::nanf(""), 3);
        kxWizardCapture::setEnd(curve, double(infinite), -infinite, 3);
        kxWizardCapture::setEnd(curve, 1e300, 8, 3);
        QCOMPARE(curve->getControlPoints(0).point(), osg::Pnt2f(0, 1));
        QCOMPARE(curve->getControlPoints(2).point(), osg::Pnt2f(2, 8));
        for (const osg::CCPnt& key : curve->getControlPoints())
            QVERIFY(std::isfinite(key.inX() + key.inY() + key.outX() + key.outY()));

        const osg::Share<osg::AnimNode> single(kxAnimFixture::curve("translation", "Z", {{1, 6}}));
        kxWizardCapture::setDuration(kxAnimFixture::curveOf(single), 3, 0);
        QCOMPARE(kxAnimFixture::curveOf(single)->getControlPoints(0).point(), osg::Pnt2f(3, 6));
        const osg::Share<osg::AnimNode> empty(kxAnimFixture::curve("translation", "Y", {}));
        for (const osg::AnimCurvePtr& nothing : {osg::AnimCurvePtr(), kxAnimFixture::curveOf(empty)})
        {
            kxWizardCapture::setStart(nothing, 1, 0);
            kxWizardCapture::setEnd(nothing, 1, 1, 0);
            kxWizardCapture::setDuration(nothing, 1, 0);
        }
        QVERIFY(kxAnimFixture::curveOf(empty)->isEmpty());
    }

    void grabsTheMiddle_data()
    {
        QTest::addColumn<QSize>("screen");
        kxRow("wide", QSize(640, 200));
        kxRow("high", QSize(200, 450));
        kxRow("square", QSize(96, 96));
        kxRow("smaller than the picture", QSize(40, 20));
    }

    void grabsTheMiddle()
    {
        QFETCH(QSize, screen);
        kxPictureView widget;
        widget.picture = striped(screen);
        const QPixmap picture = kxWizardCapture::grab(&widget, QSize(120, 96));
        QCOMPARE(picture.size(), QSize(120, 96));
        QCOMPARE(picture.devicePixelRatio(), 1.0);
        const QImage image = picture.toImage();
        for (const int y : {0, 95})
        {
            QCOMPARE(image.pixelColor(0, y), QColor(Qt::green)); // nothing of what lies beside the square
            QCOMPARE(image.pixelColor(119, y), QColor(Qt::blue));
        }
        QVERIFY(kxWizardCapture::grab(nullptr, QSize(96, 96)).isNull());
        QVERIFY(kxWizardCapture::grab(&widget, QSize()).isNull());
    }

    void keepsThePicture()
    {
        kxPictureView widget;
        widget.picture = striped(QSize(300, 200));
        QPushButton button("Capture Start");
        kxWizardCapture::showPicture(&button, QPixmap());
        QCOMPARE(button.text(), QString("Capture Start"));
        kxWizardCapture::showPicture(&button, kxWizardCapture::grab(&widget, QSize(144, 144)));
        QVERIFY(button.text().isEmpty() && !button.icon().isNull());
        const QIcon dense = kxWizardCapture::grabIcon(&widget, QSize(96, 96), 2);
        QCOMPARE(dense.availableSizes().size(), 2);
        kxWizardCapture::showPicture(&button, dense);
        const osg::ImagePtr image = kxWizardCapture::toImage(button.icon());
        const osg::Share<osg::Image> owner(image);
        const QImage picture = kxWizardCapture::toPixmap(image).toImage();
        QCOMPARE(picture.size(), QSize(96, 96));
        QCOMPARE(picture.pixelColor(20, 48), QColor(Qt::green));
        QCOMPARE(picture.pixelColor(75, 48), QColor(Qt::blue));
        kxWizardCapture::showText(&button, "Capture End");
        QVERIFY(button.icon().isNull());
        QCOMPARE(button.text(), QString("Capture End"));
    }

    void survivesDamagedPictures()
    {
        const osg::ImagePtr none = kxWizardCapture::toImage(QIcon());
        const osg::Share<osg::Image> owner(none);
        QVERIFY(none != osg::NullFC && none->getPixels().empty());
        QVERIFY(kxWizardCapture::toPixmap(none).isNull());
        QVERIFY(kxWizardCapture::toPixmap(osg::ImagePtr()).isNull());
        none->setEncoded({'n', 'o', ' ', 'p', 'i', 'c', 't', 'u', 'r', 'e'});
        QVERIFY(kxWizardCapture::toPixmap(none).isNull());
    }

    void namesDifferFromThoseOfAnimations()
    {
        kxAnimFixture f;
        const osg::NodePtr object = f.object("Door");
        QCOMPARE(kxWizardCapture::uniqueName("Door"), QString("Door"));
        const osg::Share<osg::AnimNode> group(f.group<osg::GroupBase>("Door", {}));
        QCOMPARE(kxWizardCapture::uniqueName("Door"), QString("Door_1"));
        object->setNodeName("Door_1");
        object->setCore(osg::AnimClipBase::create());
        QCOMPARE(kxWizardCapture::uniqueName("Door"), QString("Door_2"));
    }

    /// A new object may get the address of one that died.
    void takesObjectsInThePlaceOfDeadOnes()
    {
        const kxAnimFixture fixture;
        kxCaptureTable table;
        for (int round = 0; round < 50; ++round)
        {
            const osg::NodePtr object = kxAnimFixture::object("short-lived");
            table.add(object);
            QCOMPARE(table.present().size(), std::size_t(1));
            kxScene::the()->root()->subChild(object);
        }
    }
};

QTEST_MAIN(tst_kxWizardCapture)
#include "tst_kxWizardCapture.moc"
