#include <apart/kxPictureProgram.h>

#include "kxPictureLine.h"

#include <apart/kxChild.h>
#include <apart/kxPictures.h>
#include <apart/kxSandbox.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QImageReader>

#include <unistd.h>

namespace
{
constexpr int Line = kxChild::FirstDescriptor;
/// Twice the largest picture and the file.
constexpr quint64 MostMemory = quint64(4) << 30;

QImage decode(QByteArray& bytes, QString& reason)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    const QSize size = reader.size();
    if (size.isValid() && qint64(size.width()) * size.height() > kxPictures::MostPixels)
    {
        reason = QStringLiteral("%1 x %2 pixels are too many").arg(size.width()).arg(size.height());
        return QImage();
    }
    QImage image = reader.read();
    if (image.isNull() || qint64(image.width()) * image.height() > kxPictures::MostPixels)
    {
        reason = reader.errorString();
        return QImage();
    }
    if (const QSize shown = kxPictures::shownSize(image.size()); shown != image.size())
        image = image.scaled(shown, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888);
}

bool answer(const QImage& image, const QString& reason)
{
    const QByteArray text = reason.toUtf8().left(int(kxPictureLine::LongestReason));
    kxPictureLine::Head head{};
    if (image.isNull())
        head.length = quint32(text.size());
    else
        head = {quint32(image.width()), quint32(image.height()), image.hasAlphaChannel() ? 1u : 0u,
                quint32(image.sizeInBytes())};
    const void* const bytes = image.isNull() ? static_cast<const void*>(text.constData()) : image.constBits();
    return kxPictureLine::answer(Line, &head, sizeof head) && kxPictureLine::answer(Line, bytes, head.length);
}
} // namespace

void kxPictureProgram::run(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    kxSandbox::loadPictureReaders();
    kxSandbox::Limits limits;
    limits.memory = MostMemory;
    const QString refused = kxSandbox::enter(limits, {});
    kxPictureLine::Head request{};
    while (kxPictureLine::receive(Line, &request, sizeof request) && request.length <= kxPictureLine::LargestRequest)
    {
        QByteArray bytes(int(request.length), Qt::Uninitialized);
        if (!kxPictureLine::receive(Line, bytes.data(), request.length))
            break;
        QString reason = refused;
        const QImage image = refused.isEmpty() ? decode(bytes, reason) : QImage();
        if (!answer(image, reason))
            break;
    }
    _exit(0);
}
