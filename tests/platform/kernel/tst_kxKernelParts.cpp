#include <kxCapturedStderr.h>
#include <osg/Share.h>

#include <kxLog.h>
#include <kxPlatform.h>
#include <kxRenderWidget.h>
#include <kxServices.h>

#include <kernel/kxHostHooks.h>
#include <kernel/kxLogModel.h>
#include <kxController.h>
#include <kxShortcut.h>

#include <QBuffer>
#include <QtTest>

/// The small parts of the kernel: log, services, handles by id, pictures.
class tst_kxKernelParts : public QObject
{
    Q_OBJECT
public:
    static void initMain() { qputenv("QT_FONT_DPI", "144"); }

private Q_SLOTS:
    void logTexts()
    {
        kxLogModel& model = kxLogModel::the();
        kxCapturedStderr captured;
        model.clear();
        QString heard;
        const auto connection = connect(&model, &kxLogModel::added, [&](const kxLogEntry& e) { heard = e.text; });
        const std::string longText(5000, 'x');
        kxLog::warning("%s is %d of %.1f", "Schl\xc3\xbcssel", 3, 4.5);
        QCOMPARE(heard, QString::fromUtf8("Schl\xc3\xbcssel is 3 of 4.5"));
        kxLog::error("%s", longText.c_str());
        QCOMPARE(heard.size(), 5000);
        kxLog::error("\xff%s", "");
        kxLog::error(QString("100%s %n"));
        QCOMPARE(heard, QString("100%s %n"));
        disconnect(connection);

        QCOMPARE(model.entries().size(), std::size_t(4));
        QCOMPARE(model.entries().front().level, kxLogEntry::Warning);
        QVERIFY(!model.entries().front().startsScene);
        model.startScene("New");
        QCOMPARE(model.entries().back().text, QString("New"));
        QVERIFY(model.entries().back().startsScene);
        QVERIFY(captured.text().startsWith("warning: Schl\xc3\xbcssel is 3 of 4.5\nerror: x"));
    }

    void logIsBounded()
    {
        const kxCapturedStderr captured;
        for (std::size_t i = 0; i <= kxLogModel::Capacity; ++i)
            kxLog::info(QString::number(i));
        QCOMPARE(kxLogModel::the().entries().size(), kxLogModel::Capacity);
        QCOMPARE(kxLogModel::the().entries().back().text, QString::number(kxLogModel::Capacity));
    }

    void sizesFollowTheScreen()
    {
        QCOMPARE(kxPlatform::getDpiScaleX(), 1.5f);
        QCOMPARE(kxPlatform::getDpiScaleY(), 1.5f);
        QCOMPARE(kxPlatform::getSmallIconSize(), 24);
        QCOMPARE(kxPlatform::getMediumIconSize(), 36);
    }

    void services()
    {
        kxKernelServiceFactory& factory = kxKernelServiceFactory::the();
        const QByteArray unknown = "kxKernelServiceFactory: couldn't find class 'kxCameraService'!\n";
        const QByteArray null = "kxKernelServiceFactory: service 'kxCameraService' is NULL!\n";
        kxCapturedStderr captured;
        QVERIFY(factory.getService<kxCameraService>() == nullptr);
        QCOMPARE(captured.text(), unknown);
        factory.addService<kxCameraService>(nullptr);
        QVERIFY(factory.getService<kxCameraService>() == nullptr);
        QCOMPARE(captured.text(), unknown + null);

        auto* const early = new kxCameraService;
        factory.addService<kxCameraService>(early);
        {
            kxCameraService late;
            factory.addService<kxCameraService>(&late);
            delete early; // replaced already
            QCOMPARE(factory.getService<kxCameraService>(), &late);
        }
        QVERIFY(factory.getService<kxCameraService>() == nullptr);
        QCOMPARE(captured.text(), unknown + null + unknown);
        QCOMPARE(factory.getService<kxAnimationService>(), &kxAnimationService::the());
    }

    void pictures()
    {
        const osg::Share target(osg::Image::create());
        // Damaged and missing ones are null.
        const kxCapturedStderr captured;
        QVERIFY(QImageConverter::convertToQImage(target).isNull());
        target->setEncoded({0x89, 'P', 'N', 'G', 1, 2, 3});
        QVERIFY(QImageConverter::convertToQImage(target).isNull());
        // A bitmap header that claims 2^31 - 1 pixels a side.
        target->setEncoded({'B', 'M', 60, 0,    0,    0,    0,    0,    0,    0,    54,   0, 0, 0,  40,
                            0,   0,   0,  0xff, 0xff, 0xff, 0x7f, 0xff, 0xff, 0xff, 0x7f, 1, 0, 24, 0});
        QVERIFY(QImageConverter::convertToQImage(target).isNull());
        QVERIFY(QImageConverter::convertToQImage(osg::ImagePtr()).isNull());
        QVERIFY(!QImageConverter::convertToOSGImage(QImage(), target));
        QVERIFY(!QImageConverter::convertToOSGImage(QImage(1, 1, QImage::Format_RGB32), osg::ImagePtr()));

        QImage source(3, 2, QImage::Format_ARGB32); // rows that don't end on 4 pixels, colours in another order
        source.fill(Qt::transparent);
        source.setPixelColor(2, 0, QColor(250, 20, 30, 128));
        source.setPixelColor(0, 1, Qt::blue);

        QByteArray png;
        QBuffer buffer(&png);
        QVERIFY(source.save(&buffer, "PNG"));
        target->setEncoded(std::vector<osg::UInt8>(png.begin(), png.end()));
        const QImage decoded = QImageConverter::convertToQImage(target);
        QCOMPARE(decoded.convertToFormat(QImage::Format_ARGB32), source);

        source.setPixelColor(1, 1, Qt::green);
        QVERIFY(QImageConverter::convertToOSGImage(source, target));
        QVERIFY(target->getEncoded().empty());
        QCOMPARE(target->getPixels()[8], osg::UInt8(250));
        QCOMPARE(QImageConverter::convertToQImage(target).convertToFormat(QImage::Format_ARGB32), source);
    }

    void changedAnimationsAreToldOnce()
    {
        kxAnimationService& service = kxAnimationService::the();
        int told = 0, answers = 0;
        const auto counting = connect(&service, &kxAnimationService::changed, [&] { ++told; });
        service.animationsChanged();
        QCOMPARE(told, 1);
        const auto answering = connect(&service, &kxAnimationService::changed,
                                       [&]
                                       {
                                           if (answers++ < 5)
                                               service.animationsChanged();
                                       });
        service.animationsChanged();
        QCOMPARE(told, 3); // once more for what the listener changed, and no longer
        disconnect(answering);
        service.animationsChanged();
        QCOMPARE(told, 4);
        disconnect(counting);
    }

    void keysAreListedOnce()
    {
        const int before = kxShortcut::entries().size();
        for (int i = 0; i < 2; ++i)
        {
            kxShortcut::addKey("Tool", Qt::Key_K, Qt::ControlModifier, "Key");
            kxShortcut::addKey("Tool", Qt::Key_K, Qt::ShiftModifier, "Key");
            kxShortcut::addKey("Tool", Qt::Key_K, Qt::ControlModifier, "Key all");
        }
        QCOMPARE(kxShortcut::entries().size(), before + 3);
        QCOMPARE(kxShortcut::entries()[before + 1].sequence(), QKeySequence(Qt::SHIFT + Qt::Key_K));
    }

    void whatTheHostGives()
    {
        auto* const view = reinterpret_cast<kxQGLWidget*>(&kxLogModel::the()); // never looked into
        kxOSGWidget::setMGLW(view);
        QVERIFY(kxOSGWidget::getMGLW(-1) == view && kxOSGWidget::getMGLW(0) == view);
        QVERIFY(kxOSGWidget::getMGLW(1) == nullptr && kxOSGWidget::getMGLW(-2) == nullptr);
        kxOSGWidget::setMGLW(nullptr);
        QString updates;
        kxHostHooks::the().updateBehavior = [&updates](bool force) { updates += force ? "forced " : "asked "; };
        kxController::updateBehavior(true);
        kxController::updateBehavior(false);
        QCOMPARE(updates, QString("forced asked "));
        kxHostHooks::the().updateBehavior = nullptr;
    }
};

QTEST_MAIN(tst_kxKernelParts)
#include "tst_kxKernelParts.moc"
