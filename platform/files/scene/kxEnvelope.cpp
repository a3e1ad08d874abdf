#include <files/scene/kxEnvelope.h>

#include <files/scene/kxFileReport.h>
#include <files/scene/kxProgress.h>

#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <zlib.h>

namespace
{
constexpr int VersionAt = 8, HeadChecksumAt = 12, LengthAt = 16, ChecksumAt = 24;
constexpr int BlockSize = 1 << 20;
constexpr qint64 ChecksumPart = 1 << 24;

quint32 crc(quint32 start, const char* data, qint64 size)
{
    // zlib starts anew for a null pointer, as an empty array may give it.
    return size == 0 ? start : quint32(crc32_z(start, reinterpret_cast<const Bytef*>(data), z_size_t(size)));
}
} // namespace

QByteArray kxEnvelope::head(const char* magic, quint64 length, quint32 checksum)
{
    std::array<char, HeadSize> bytes{};
    std::memcpy(bytes.data(), magic, MagicSize);
    qToLittleEndian(Version, bytes.data() + VersionAt);
    qToLittleEndian(length, bytes.data() + LengthAt);
    qToLittleEndian(checksum, bytes.data() + ChecksumAt);
    qToLittleEndian(crc(0, bytes.data(), HeadSize), bytes.data() + HeadChecksumAt);
    return QByteArray(bytes.data(), HeadSize);
}

bool kxEnvelope::check(const char* magic, const char* bytes, qint64 size, kxFileReport& report)
{
    if (size < MagicSize || std::memcmp(bytes, magic, MagicSize) != 0)
        return report.fail(QStringLiteral("this is no file of this kind, or its first bytes are damaged"));
    if (size < HeadSize)
        return report.fail(QStringLiteral("the file is cut off in its head, after %1 bytes").arg(size));
    QByteArray own(bytes, HeadSize);
    std::memset(own.data() + HeadChecksumAt, 0, 4);
    if (crc(0, own.constData(), HeadSize) != qFromLittleEndian<quint32>(bytes + HeadChecksumAt))
        return report.fail(QStringLiteral("the head of the file is damaged"));
    const quint32 version = qFromLittleEndian<quint32>(bytes + VersionAt);
    if (version != Version)
        return report.fail(
            QStringLiteral("the file has version %1; this program reads version %2").arg(version).arg(Version));
    const quint64 length = qFromLittleEndian<quint64>(bytes + LengthAt);
    const quint64 present = quint64(size - HeadSize);
    if (length != present)
        return report.fail(
            length > present ? QStringLiteral("the file is cut off: %1 of %2 bytes are there").arg(present).arg(length)
                             : QStringLiteral("%1 bytes stand behind the file's end").arg(present - length));
    if (present > quint64(LargestPayload))
        return report.fail(QStringLiteral("the file is larger than %1 bytes").arg(LargestPayload));
    quint32 sum = 0;
    for (qint64 at = 0; at < qint64(present); at += ChecksumPart)
    {
        sum = crc(sum, bytes + HeadSize + at, std::min(ChecksumPart, qint64(present) - at));
        if (!kxProgress::goesOn(0))
            return report.cancel();
    }
    if (sum != qFromLittleEndian<quint32>(bytes + ChecksumAt))
        return report.fail(QStringLiteral("the file is damaged: its checksum doesn't fit its content"));
    return true;
}

kxEnvelopeWriter::kxEnvelopeWriter(const QString& path, const char* magic) : _file(path), _magic(magic) {}

bool kxEnvelopeWriter::begin(kxFileReport& report)
{
    if (!_file.open(QIODevice::WriteOnly))
        return report.fail(_file);
    if (_file.write(QByteArray(kxEnvelope::HeadSize, '\0')) != kxEnvelope::HeadSize)
        return report.fail(_file);
    _block.reserve(BlockSize);
    return open(QIODevice::WriteOnly | QIODevice::Unbuffered);
}

qint64 kxEnvelopeWriter::writeData(const char* data, qint64 size)
{
    _length += quint64(size);
    _failed = _failed || isTooLarge();
    if (_failed)
        return size; // reported at commit()
    _checksum = crc(_checksum, data, size);
    const bool isLarge = size > BlockSize / 2; // goes past the block, and so after what the block holds
    if (isLarge || _block.size() + size > BlockSize)
        flushBlock();
    if (isLarge)
        _failed = _failed || _file.write(data, size) != size;
    else
        _block.append(data, int(size));
    return size;
}

void kxEnvelopeWriter::flushBlock()
{
    _failed = _failed || _file.write(_block) != _block.size();
    _block.resize(0);
}

const char* kxEnvelopeWriter::written()
{
    flushBlock();
    if (_failed || !_file.flush())
        return nullptr;
    // The file is written under another name, which only its own handle knows.
    const uchar* const bytes = _file.map(0, kxEnvelope::HeadSize + length());
    return bytes == nullptr ? nullptr : reinterpret_cast<const char*>(bytes) + kxEnvelope::HeadSize;
}

bool kxEnvelopeWriter::commit(kxFileReport& report)
{
    flushBlock();
    close();
    if (isTooLarge())
        return report.fail(QStringLiteral("the scene needs more than the %1 bytes that a file can hold")
                               .arg(kxEnvelope::LargestPayload));
    if (_failed || !_file.seek(0) || _file.write(head()) != kxEnvelope::HeadSize || !_file.commit())
        return report.fail(_file);
    return true;
}

bool kxEnvelopeReader::open(const QString& path, const char* magic, kxFileReport& report)
{
    if (QFileInfo(path).isDir())
        return report.fail(QStringLiteral("this is a folder"));
    _file.setFileName(path);
    if (!_file.open(QIODevice::ReadOnly))
        return report.fail(_file);
    const qint64 size = _file.size();
    const char* bytes = size > 0 ? reinterpret_cast<const char*>(_file.map(0, size)) : nullptr;
    if (bytes == nullptr)
    {
        _bytes = _file.read(kxEnvelope::LargestPayload);
        bytes = _bytes.constData();
    }
    if (!kxEnvelope::check(magic, bytes, _bytes.isNull() ? size : _bytes.size(), report))
        return false;
    _data = bytes + kxEnvelope::HeadSize;
    _size = (_bytes.isNull() ? size : _bytes.size()) - kxEnvelope::HeadSize;
    return true;
}
