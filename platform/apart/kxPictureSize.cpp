#include <apart/kxPictureSize.h>

#include <QtEndian>

#include <cstring>
#include <limits>

namespace
{
constexpr unsigned char Png[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n', 0, 0, 0, 13, 'I', 'H', 'D', 'R'};

/// The head of a frame of a JPEG: its marker, not those of tables between them.
bool isFrame(unsigned char marker)
{
    return marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
}

QSize ofJpeg(const unsigned char* bytes, std::size_t size)
{
    constexpr std::size_t SegmentHead = 4, FrameHead = 9;
    for (std::size_t at = 2; at + FrameHead <= size && bytes[at] == 0xff;)
    {
        const unsigned char marker = bytes[at + 1];
        if (isFrame(marker))
            return QSize(qFromBigEndian<quint16>(bytes + at + 7), qFromBigEndian<quint16>(bytes + at + 5));
        const bool isFilling = marker == 0xff;
        at += isFilling ? 1 : std::size_t(2) + qFromBigEndian<quint16>(bytes + at + 2);
        if (marker < SegmentHead) // no segment begins here
            break;
    }
    return QSize();
}
} // namespace

QSize kxPictureSize::of(const unsigned char* bytes, std::size_t size)
{
    if (size >= sizeof Png + 8 && std::memcmp(bytes, Png, sizeof Png) == 0)
    {
        const auto width = qFromBigEndian<quint32>(bytes + sizeof Png);
        const auto height = qFromBigEndian<quint32>(bytes + sizeof Png + 4);
        constexpr quint32 Largest = std::numeric_limits<int>::max();
        return width <= Largest && height <= Largest ? QSize(int(width), int(height)) : QSize();
    }
    return size > 3 && bytes[0] == 0xff && bytes[1] == 0xd8 ? ofJpeg(bytes, size) : QSize();
}
