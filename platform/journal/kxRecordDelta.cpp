#include <journal/kxRecordDelta.h>

#include <QtEndian>

#include <algorithm>
#include <string_view>
#include <zlib.h>

// [checksum of `from`, length of `wanted`], then [start in `from`, bytes copied from there, bytes given, these bytes]
// as often as needed; all numbers of 4 bytes, little-endian.

namespace
{
constexpr int Smallest = 1024; ///< of a record that is worth it
constexpr int Match = 32;      ///< equal bytes at which both are taken to go on alike
constexpr int Window = 1024;   ///< in which that is looked for

quint32 checksum(const QByteArray& bytes)
{
    return quint32(crc32_z(0, reinterpret_cast<const Bytef*>(bytes.constData()), z_size_t(bytes.size())));
}

void append(QByteArray& out, int number)
{
    char bytes[4];
    qToLittleEndian<quint32>(quint32(number), bytes);
    out.append(bytes, 4);
}

int numberAt(const QByteArray& bytes, int at)
{
    return int(qFromLittleEndian<quint32>(bytes.constData() + at));
}

int commonLength(const QByteArray& a, int atA, const QByteArray& b, int atB)
{
    const int most = std::min(a.size() - atA, b.size() - atB);
    const char* const start = a.constData() + atA;
    return int(std::mismatch(start, start + most, b.constData() + atB).first - start);
}

/// How far behind `at` these bytes are found; -1 for nowhere in the window.
int distance(const QByteArray& in, int at, const QByteArray& of, int atOf)
{
    if (of.size() - atOf < Match || at >= in.size())
        return -1;
    const std::string_view window(in.constData() + at, std::size_t(std::min(in.size() - at, Window)));
    const std::size_t found = window.find(std::string_view(of.constData() + atOf, Match));
    return found == std::string_view::npos ? -1 : int(found);
}

/// Bytes of both that have changed in place.
int changedLength(const QByteArray& a, int atA, const QByteArray& b, int atB)
{
    const int most = std::min({a.size() - atA, b.size() - atB, Window});
    int equal = 0;
    for (int i = 0; i < most; ++i)
    {
        equal = a[atA + i] == b[atB + i] ? equal + 1 : 0;
        if (equal == Match)
            return i + 1 - Match;
    }
    return most;
}
} // namespace

QByteArray kxRecordDelta::make(const QByteArray& wanted, const QByteArray& from)
{
    QByteArray delta;
    if (wanted.size() < Smallest || from.isEmpty())
        return delta;
    append(delta, int(checksum(from)));
    append(delta, wanted.size());
    int at = 0, atFrom = 0;
    while (at < wanted.size())
    {
        const int copied = commonLength(wanted, at, from, atFrom);
        append(delta, atFrom);
        append(delta, copied);
        at += copied;
        atFrom += copied;
        // Of the ways on, that which gives the fewest bytes: `from` has more here, `wanted` has, or both were changed.
        int given = 0;
        if (const int more = distance(from, atFrom, wanted, at); more >= 0)
            atFrom += more;
        else if (const int own = distance(wanted, at, from, atFrom); own >= 0)
            given = own;
        else
        {
            given = changedLength(wanted, at, from, atFrom);
            atFrom += given;
            if (given == 0)
                given = wanted.size() - at; // `from` is at its end
        }
        append(delta, given);
        delta.append(wanted.constData() + at, given);
        at += given;
        if (delta.size() > wanted.size() / 2)
            return QByteArray();
    }
    return delta;
}

QByteArray kxRecordDelta::apply(const QByteArray& delta, const QByteArray& from)
{
    QByteArray wanted;
    if (delta.size() < 8 || quint32(numberAt(delta, 0)) != checksum(from))
        return wanted;
    wanted.reserve(numberAt(delta, 4));
    for (int at = 8; at + 12 <= delta.size();)
    {
        const int start = numberAt(delta, at), copied = numberAt(delta, at + 4), given = numberAt(delta, at + 8);
        at += 12;
        if (start < 0 || copied < 0 || given < 0 || start > from.size() - copied || at > delta.size() - given)
            return QByteArray();
        wanted.append(from.constData() + start, copied);
        wanted.append(delta.constData() + at, given);
        at += given;
    }
    return wanted.size() == numberAt(delta, 4) ? wanted : QByteArray();
}
