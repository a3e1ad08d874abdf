#include <apart/kxPictures.h>
#include <kxLog.h>
#include <kxRenderWidget.h>

#include <cstring>

namespace
{
/// By a process of its own: the bytes may be a stranger's.
QImage decoded(const std::vector<osg::UInt8>& bytes)
{
    QString reason;
    const QImage image = kxPictures::decode(bytes, reason);
    if (image.isNull())
        kxLog::warning("A picture can't be read: %s", qUtf8Printable(reason));
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
