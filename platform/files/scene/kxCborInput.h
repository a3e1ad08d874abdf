#pragma once

#include <files/scene/kxFileReport.h>

#include <QCborStreamReader>

#include <functional>
#include <map>
#include <string>
#include <vector>

/// Reads CBOR that may be damaged in any way: never deeper than a limit, never a length beyond what is left.
///
/// After the first failure each call gives its empty value and failed() holds; loops end by counts that were checked.
class kxCborInput
{
public:
    /// `data` has to outlive this. `size` fits an int.
    kxCborInput(const char* data, qint64 size, kxFileReport& report);

    bool failed() const;
    bool fail(const QString& reason);
    kxFileReport& report() { return _report; }

    /// Steps into an array or map and gives its number of elements (of pairs); 0 on failure.
    quint64 enterArray();
    quint64 enterMap();
    void leave();

    bool isArray() const { return _reader.isArray(); }

    bool readBool();
    /// A number from 0 to `largest`.
    quint64 readUInt(quint64 largest);
    qint64 readInt(qint64 smallest, qint64 largest);
    /// A single or double precision number, finite.
    double readNumber();
    std::string readText();
    /// Names with a text or a number each; what is known of other names stays.
    void readMap(std::map<std::string, std::string>& values);
    void readMap(std::map<std::string, double>& values);
    void readBytes(std::vector<unsigned char>& out);
    /// Bytes of a length that is a multiple of `unit`, to where `room` has it for so many.
    void readBytes(std::size_t unit, const std::function<char*(std::size_t length)>& room);
    /// Before a packed block is unpacked: false, and failed, where all that were unpacked would be more than a file of
    /// this length can mean.
    bool mayUnpack(quint64 bytes);
    /// Passes over a value of any kind.
    void skip();
    /// Of all bytes, from 0 to 1.
    double share() const { return double(offset()) / double(_size); }
    /// How many bytes were read.
    qint64 offset() const { return _reader.currentOffset(); }
    /// True where all was read.
    bool atEnd() const { return offset() >= _size; }

private:
    static constexpr int DeepestNesting = 32;
    static constexpr quint64 SmallestBudget = quint64(4) << 30, LargestGrowth = 40; ///< of packed blocks

    quint64 enter();
    /// The length of the string that comes next; -1 on failure.
    qint64 stringLength();
    bool readString(char* out, qint64 length);

    QCborStreamReader _reader;
    qint64 _size;
    kxFileReport& _report;
    int _depth = 0;
    quint64 _unpacked = 0;
};

/// Of bytes in memory, where it doesn't matter why they can't be read. They have to outlive this.
class kxCborBytes : private kxFileReport, public kxCborInput
{
public:
    explicit kxCborBytes(const QByteArray& bytes)
        : kxCborInput(bytes.constData(), bytes.size(), static_cast<kxFileReport&>(*this))
    {
    }
    using kxCborInput::fail;
    using kxCborInput::failed;
};
