#include <kxLog.h>
#include <kxRenderWidget.h>

#include <QBuffer>
#include <QImageReader>

#include <cstring>

namespace
{
/// A file of a few bytes can claim any size; 2^28 pixels are 1 GB.
constexpr qint64 MaxPixels = qint64(1) << 28;

QImage decoded(const std::vector<osg::UInt8>& bytes)
{
    QByteArray data = QByteArray::fromRawData(reinterpret_cast<const char*>(bytes.data()), int(bytes.size()));
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    const QSize size = reader.size();
    if (size.isValid() && qint64(size.width()) * size.height() > MaxPixels)
    {
        kxLog::warning("A picture of %d x %d pixels is too large to be read", size.width(), size.height());
        return QImage();
    }
    const QImage image = reader.read();
    if (image.isNull())
        kxLog::warning("A picture can't be read: %s", qUtf8Printable(reader.errorString()));
    return image;
}
} // namespace

bool QImageConverter::convertToOSGImage(const QImage& source, const osg::ImagePtr& target)
{
    if (source.isNull() || target == osg::NullFC)
        return false;
    const QImage image = source.convertToFormat(QImage::Format_RGBA8888);
    if (image.isNull())
        return false;

    const std::size_t rowBytes = std::size_t(image.width()) * 4;
    std::vector<osg::UInt8> pixels(rowBytes * std::size_t(image.height()));
    for (int y = 0; y < image.height(); ++y)
        std::memcpy(pixels.data() + std::size_t(y) * rowBytes, image.constScanLine(y), rowBytes);
    if (!target->set(osg::UInt32(image.width()), osg::UInt32(image.height()), std::move(pixels)))
        return false;
    target->setEncoded({}); // the bytes of another picture
    osg::markChanged(target, osg::Image::SizeFieldMask | osg::Image::PixelsFieldMask | osg::Image::EncodedFieldMask);
    return true;
}

QImage QImageConverter::convertToQImage(const osg::ImagePtr& source)
{
    if (source == osg::NullFC)
        return QImage();
    const std::vector<osg::UInt8>& pixels = source->getPixels();
    if (pixels.empty())
        return source->getEncoded().empty() ? QImage() : decoded(source->getEncoded());

    QImage image(int(source->getWidth()), int(source->getHeight()), QImage::Format_RGBA8888);
    const std::size_t rowBytes = std::size_t(source->getWidth()) * 4;
    if (image.isNull() || pixels.size() != rowBytes * source->getHeight())
        return QImage();
    for (int y = 0; y < image.height(); ++y)
        std::memcpy(image.scanLine(y), pixels.data() + std::size_t(y) * rowBytes, rowBytes);
    return image;
}
