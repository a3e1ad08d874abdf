#include <files/import/kxImageImport.h>

#include <apart/kxPictures.h>
#include <files/scene/kxFileReport.h>

#include <QBuffer>
#include <QCryptographicHash>
#include <QImage>
#include <QImageReader>

#include <cmath>
#include <cstring>
#include <tiny_gltf.h>

using namespace osg;

namespace
{
/// Pictures of more texels are refused: their size alone would fill the memory.
constexpr qint64 MostTexels = qint64(1) << 28;

QByteArray view(const std::vector<unsigned char>& bytes)
{
    return QByteArray::fromRawData(reinterpret_cast<const char*>(bytes.data()), int(bytes.size()));
}

bool isJpeg(const std::vector<unsigned char>& bytes)
{
    return bytes.size() > 3 && bytes[0] == 0xff && bytes[1] == 0xd8;
}

bool isPng(const std::vector<unsigned char>& bytes)
{
    return bytes.size() > 33 && std::memcmp(bytes.data(), "\x89PNG", 4) == 0;
}

/// An uncompressed Targa begins as a cursor does, which Qt takes it for.
bool looksLikeCursor(const std::vector<unsigned char>& bytes)
{
    return bytes.size() > 3 && std::memcmp(bytes.data(), "\0\0\2\0", 4) == 0;
}

QImage decode(const std::vector<unsigned char>& bytes)
{
    QByteArray data = view(bytes);
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    const QSize size = looksLikeCursor(bytes) ? QSize() : reader.size();
    if (size.isValid() && qint64(size.width()) * size.height() <= MostTexels)
        return reader.read().convertToFormat(QImage::Format_RGBA8888);
    // Formats that Qt leaves out.
    tinygltf::Image image;
    std::string error, warning;
    if (size.isValid() || bytes.empty() ||
        !tinygltf::LoadImageData(&image, 0, &error, &warning, 0, 0, bytes.data(), int(bytes.size()), nullptr) ||
        image.bits != 8 || image.component != 4 || image.width <= 0 || image.height <= 0 ||
        image.image.size() != std::size_t(image.width) * std::size_t(image.height) * 4)
        return QImage();
    return QImage(image.image.data(), image.width, image.height, image.width * 4, QImage::Format_RGBA8888).copy();
}

/// The picture as a file; empty where it has no pixels.
QImage pixelsOf(const ImagePtr& image)
{
    if (image == NullFC || image->getPixels().empty())
        return QImage();
    return QImage(image->getPixels().data(), int(image->getWidth()), int(image->getHeight()),
                  4 * int(image->getWidth()), QImage::Format_RGBA8888)
        .copy();
}

std::vector<unsigned char> pngOf(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, "PNG"))
        return {};
    return std::vector<unsigned char>(bytes.begin(), bytes.end());
}

/// Colour types 4 and 6 have an alpha channel, 3 may have one.
bool pngMayHaveAlpha(const std::vector<unsigned char>& bytes)
{
    return bytes[25] >= 3;
}

bool anyTransparent(const QImage& image)
{
    for (int y = 0; y < image.height(); ++y)
    {
        const uchar* const row = image.constScanLine(y);
        for (int x = 0; x < image.width(); ++x)
            if (row[4 * x + 3] != 255)
                return true;
    }
    return false;
}

ImagePtr imageOf(std::vector<unsigned char> bytes, bool opaque, const QString& name, kxFileReport& report)
{
    const auto refuse = [&]
    {
        report.note(QStringLiteral("the picture '%1' can't be read and is left out").arg(name));
        return ImagePtr();
    };
    if (bytes.empty())
        return ImagePtr(); // which is told where it is looked for
    const bool keep = isJpeg(bytes) || isPng(bytes);
    if (keep && !(opaque && isPng(bytes) && pngMayHaveAlpha(bytes)))
    {
        QByteArray data = view(bytes);
        QBuffer buffer(&data);
        buffer.open(QIODevice::ReadOnly);
        const QSize size = QImageReader(&buffer).size();
        if (!size.isValid() || qint64(size.width()) * size.height() > MostTexels)
            return refuse();
        const ImagePtr image = Image::create();
        image->setEncoded(std::move(bytes));
        return image;
    }
    const QImage pixels = decode(bytes);
    if (pixels.isNull())
        return refuse();
    const bool repaint = opaque && anyTransparent(pixels);
    if (keep && !repaint)
    {
        const ImagePtr image = Image::create();
        image->setEncoded(std::move(bytes));
        return image;
    }
    return kxImageImport::fromPixels(repaint ? pixels.convertToFormat(QImage::Format_RGBX8888) : pixels);
}
} // namespace

ImagePtr kxImageImport::fromEncoded(std::vector<unsigned char> bytes, bool opaque, const QString& name, Known& known,
                                    kxFileReport& report)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(view(bytes));
    const auto [entry, isNew] = known.try_emplace(hash.result() + char(opaque));
    if (isNew || entry->second.get() == NullFC) // each name of what can't be read is told
        entry->second = imageOf(std::move(bytes), opaque, name, report);
    return entry->second.get();
}

ImagePtr kxImageImport::fromPixels(const QImage& pixels)
{
    const ImagePtr image = Image::create();
    std::vector<UInt8> bytes;
    bytes.reserve(std::size_t(pixels.width()) * std::size_t(pixels.height()) * 4);
    for (int y = 0; y < pixels.height(); ++y)
        bytes.insert(bytes.end(), pixels.constScanLine(y),
                     pixels.constScanLine(y) + 4 * std::ptrdiff_t(pixels.width()));
    image->set(UInt32(pixels.width()), UInt32(pixels.height()), std::move(bytes));
    return image;
}

QImage kxImageImport::decoded(const ImagePtr& image)
{
    return image->getPixels().empty() ? decode(image->getEncoded()) : pixelsOf(image);
}

QSize kxImageImport::sizeOf(const ImagePtr& image)
{
    if (!image->getPixels().empty())
        return QSize(int(image->getWidth()), int(image->getHeight()));
    QByteArray data = view(image->getEncoded());
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    return QImageReader(&buffer).size();
}

float kxImageImport::linearFromSrgb(float value)
{
    return value <= 0.04045f ? value / 12.92f : std::pow((value + 0.055f) / 1.055f, 2.4f);
}

std::vector<unsigned char> kxImageImport::encoded(const ImagePtr& image, bool& jpeg)
{
    jpeg = image != NullFC && isJpeg(image->getEncoded());
    if (image == NullFC || jpeg || isPng(image->getEncoded()))
        return image == NullFC ? std::vector<unsigned char>() : image->getEncoded();
    const QImage pixels = pixelsOf(image);
    return pixels.isNull() ? std::vector<unsigned char>() : pngOf(pixels);
}

bool kxImageImport::hasAlpha(const ImagePtr& image)
{
    if (image == NullFC || isJpeg(image->getEncoded()))
        return false;
    if (isPng(image->getEncoded()))
    {
        QString reason; // what can't be read shows nothing through
        return pngMayHaveAlpha(image->getEncoded()) && anyTransparent(kxPictures::decode(image->getEncoded(), reason));
    }
    return anyTransparent(pixelsOf(image));
}
