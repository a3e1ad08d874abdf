#include <apart/kxPictureSize.h>
#include <apart/kxPictures.h>

#include <QBuffer>
#include <QElapsedTimer>
#include <QImageWriter>
#include <QtTest>
#include <kxTable.h>

/// Pictures are decoded by a process that may fail at each of them.
class tst_kxPictureProcess : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { kxPictures::useProgram(QStringLiteral("kxreader"), 20'000); }

    void failures_data()
    {
        kxColumns<QString>("reason");
        kxRow("abort", "it gave up on an error of its own");
        kxRow("end", "it ended");
        kxRow("sleep", "it took too long");
        kxRow("half", "it took too long");
        kxRow("huge", "its answer is damaged");
        kxRow("length", "its answer is damaged");
        kxRow("chatter", "its answer is damaged");
    }

    void failures()
    {
        QFETCH(QString, reason);
        kxPictures::useProgram(QStringLiteral("kxFaultyDecoder"), 1000);
        const QString stopped = QStringLiteral("the program that reads pictures stopped");
        QCOMPARE(decode("good"), QStringLiteral("#04010203"));
        QCOMPARE(decode(QTest::currentDataTag()), stopped + ": " + reason);
        QElapsedTimer time;
        time.start();
        QCOMPARE(decode(QTest::currentDataTag()), stopped + " at it before");
        QVERIFY(time.elapsed() < 500);
        QCOMPARE(decode("good"), QStringLiteral("#04010203")); // by another process
        QCOMPARE(decode("opens"), QStringLiteral("shut"));
    }

    void programIsMissing()
    {
        kxPictures::useProgram(QStringLiteral("/nowhere/kxreader"), 1000);
        QVERIFY(decode("good").startsWith("the program '/nowhere/kxreader' is missing"));
    }

    void formats_data()
    {
        kxColumns<QByteArray, QByteArray, int>("format", "kind", "pixels");
        kxRow("transparent PNG", QByteArray("png"), QByteArray("alpha"), int(QImage::Format_ARGB32));
        kxRow("16 bits", QByteArray("png"), QByteArray(), int(QImage::Format_RGBA64));
        kxRow("palette", QByteArray("png"), QByteArray(), int(QImage::Format_Indexed8));
        kxRow("JPEG", QByteArray("jpg"), QByteArray(), int(QImage::Format_RGB32));
        kxRow("progressive JPEG", QByteArray("jpg"), QByteArray("progressive"), int(QImage::Format_RGB32));
    }

    void formats()
    {
        QFETCH(QByteArray, format);
        QFETCH(int, pixels);
        QImage source(301, 7, QImage::Format_ARGB32);
        source.fill(QColor(200, 100, 50, 128));
        source.setPixelColor(300, 6, Qt::blue);
        source = source.convertToFormat(QImage::Format(pixels));
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        QImageWriter writer(&buffer, format);
        QFETCH(QByteArray, kind);
        writer.setProgressiveScanWrite(kind == "progressive");
        QVERIFY(writer.write(source));
        const std::vector<unsigned char> bytes(buffer.data().begin(), buffer.data().end());
        QString reason;
        const QImage expected = QImage::fromData(buffer.data()), image = kxPictures::decode(bytes, reason);
        QCOMPARE(image.convertToFormat(QImage::Format_RGBA8888), expected.convertToFormat(QImage::Format_RGBA8888));
        QCOMPARE(image.hasAlphaChannel(), expected.hasAlphaChannel());
        // The size stands somewhere in it; what is cut off before says none.
        QCOMPARE(kxPictureSize::of(bytes.data(), bytes.size()), source.size());
        bool isKnown = false;
        for (std::size_t length = 0; length < bytes.size(); ++length)
        {
            const std::vector<unsigned char> cut(bytes.begin(), bytes.begin() + std::ptrdiff_t(length));
            const QSize size = kxPictureSize::of(cut.data(), cut.size());
            QVERIFY(size == source.size() || (!size.isValid() && !isKnown));
            isKnown = size.isValid();
        }
        QVERIFY(isKnown);
    }

    /// What nobody draws so large comes smaller, each side on its own.
    void largeOnesAreScaled()
    {
        QImage source(9000, 40, QImage::Format_RGB32);
        source.fill(Qt::red);
        for (int x = 6000; x < 9000; ++x)
            for (int y = 0; y < 40; ++y)
                source.setPixelColor(x, y, Qt::blue);
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        QVERIFY(source.save(&buffer, "PNG"));
        QString reason;
        const QImage image = kxPictures::decode({buffer.data().begin(), buffer.data().end()}, reason);
        QCOMPARE(image.size(), QSize(kxPictures::LargestSide, 40));
        QVERIFY(image.pixelColor(5400, 30) == Qt::red && image.pixelColor(5500, 30) == Qt::blue);
    }

private:
    /// The first pixel, or the reason why there is none.
    static QString decode(const QByteArray& bytes)
    {
        QString reason;
        const QImage image = kxPictures::decode(std::vector<unsigned char>(bytes.begin(), bytes.end()), reason);
        return image.isNull() ? reason : image.pixelColor(0, 0).name(QColor::HexArgb);
    }
};

QTEST_GUILESS_MAIN(tst_kxPictureProcess)
#include "tst_kxPictureProcess.moc"
