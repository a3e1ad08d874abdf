#include "kxExrFile.h"

#include <ImfChannelList.h>
#include <ImfChromaticitiesAttribute.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfOutputFile.h>
#include <ImfStandardAttributes.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QSaveFile>

#include <stdexcept>

namespace
{
class Sink : public Imf::OStream
{
public:
    explicit Sink(QSaveFile& file) : Imf::OStream("file"), _file(file) {}
    void write(const char bytes[], int count) override
    {
        if (_file.write(bytes, count) != count)
            throw std::runtime_error(_file.errorString().toStdString());
    }
    std::uint64_t tellp() override { return std::uint64_t(_file.pos()); }
    void seekp(std::uint64_t place) override { _file.seek(qint64(place)); }

private:
    QSaveFile& _file;
};

void writeTo(Sink& sink, const kxLightImage& picture, bool hasAlpha)
{
    constexpr std::size_t Pixel = 4 * sizeof(std::uint16_t);
    const std::size_t row = Pixel * std::size_t(picture.size.width());
    Imf::Header header(picture.size.width(), picture.size.height());
    header.compression() = Imf::ZIP_COMPRESSION;
    Imf::addChromaticities(header, Imf::Chromaticities()); // those of sRGB
    Imf::FrameBuffer buffer;
    const char* const names[] = {"R", "G", "B", "A"};
    for (int i = 0; i < (hasAlpha ? 4 : 3); ++i)
    {
        header.channels().insert(names[i], Imf::Channel(Imf::HALF));
        // The library's interface takes what it only reads without const.
        char* const start = reinterpret_cast<char*>(const_cast<std::uint16_t*>(picture.halves.data() + i));
        buffer.insert(names[i], Imf::Slice(Imf::HALF, start, Pixel, row));
    }
    Imf::OutputFile file(sink, header);
    file.setFrameBuffer(buffer);
    file.writePixels(picture.size.height());
}
} // namespace

bool kxExrFile::isName(const QString& file)
{
    return QFileInfo(file).suffix().toLower() == QLatin1String("exr");
}

bool kxExrFile::write(const kxLightImage& picture, bool hasAlpha, const QString& file, QString& error)
{
    QSaveFile whole(file);
    QString reason;
    if (whole.open(QIODevice::WriteOnly))
    {
        try
        {
            Sink sink(whole);
            writeTo(sink, picture, hasAlpha);
        }
        catch (const std::exception& exception)
        {
            reason = QString::fromUtf8(exception.what());
        }
        if (reason.isEmpty() && whole.commit())
            return true;
    }
    error = QCoreApplication::translate("kxExrFile", "'%1' can't be written: %2")
                .arg(file, whole.error() == QFileDevice::NoError ? reason : whole.errorString());
    return false;
}
