#include <files/import/kxSurfacePictures.h>

#include <files/import/kxImageImport.h>
#include <files/scene/kxFileReport.h>

#include <QImage>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
/// Of all pictures of a file that are joined: they are decoded, which takes a share of a reader's time and memory.
constexpr qint64 MostTexels = qint64(1) << 26;

/// By a value of a picture, what it means.
typedef std::array<uchar, 256> Meaning;

Meaning roughnessOf(const std::optional<float>& exponent)
{
    Meaning meaning{};
    for (std::size_t value = 0; value < meaning.size(); ++value)
    {
        const float gloss = float(value) / 255;
        const float rough = !exponent ? gloss : *exponent > 0 ? std::sqrt(2 / (*exponent * gloss + 2)) : 1 - gloss;
        meaning[value] = uchar(std::lround(255 * rough));
    }
    return meaning;
}

/// Writes one byte of each texel.
void put(const QImage& from, int part, const Meaning& meaning, QImage& to)
{
    for (int y = 0; y < to.height(); ++y)
    {
        const uchar* const source = from.constScanLine(y) + part;
        uchar* const target = to.scanLine(y) + part;
        for (int at = 0; at < 4 * to.width(); at += 4)
            target[at] = meaning[source[at]];
    }
}
} // namespace

ImagePtr kxSurfacePictures::joined(const Parts& parts, const QString& name)
{
    const auto id = [](const ImagePtr& image) { return image == NullFC ? 0 : image->getId(); };
    const std::array<UInt32, 3> ids = {id(parts.occlusion), id(parts.roughness), id(parts.metal)};
    const auto found = _joined.emplace(std::pair(ids, parts.exponent), osg::Share<Image>());
    if (found.second)
        found.first->second = join(parts, name);
    return found.first->second.get();
}

ImagePtr kxSurfacePictures::join(const Parts& parts, const QString& name)
{
    const std::array<ImagePtr, 3> sources = {parts.occlusion, parts.roughness, parts.metal};
    QSize size;
    for (const ImagePtr& source : sources)
        if (source != NullFC)
            size = size.expandedTo(kxImageImport::sizeOf(source));
    _texels += qint64(size.width()) * size.height();
    if (_texels > MostTexels)
    {
        _report.note(
            QStringLiteral("'%1': its pictures of metal and roughness are too large to be joined, and left out")
                .arg(name));
        return ImagePtr();
    }
    QImage result(size, QImage::Format_RGBX8888);
    result.fill(Qt::white);
    for (int part = 0; part < 3; ++part)
    {
        const ImagePtr& source = sources[std::size_t(part)];
        if (source == NullFC)
            continue;
        // Without its alpha, which would darken what is scaled.
        const QImage pixels = kxImageImport::decoded(source).convertToFormat(QImage::Format_RGBX8888);
        if (pixels.isNull())
        {
            _report.note(
                QStringLiteral("'%1': a picture of its metal or roughness is damaged: both are left out").arg(name));
            return ImagePtr();
        }
        const QImage scaled = pixels.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        put(scaled.convertToFormat(QImage::Format_RGBX8888), part,
            roughnessOf(part == 1 ? parts.exponent : std::nullopt), result);
    }
    return kxImageImport::fromPixels(result);
}
