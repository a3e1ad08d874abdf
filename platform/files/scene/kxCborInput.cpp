#include <files/scene/kxCborInput.h>

#include <QByteArray>

#include <algorithm>
#include <cmath>
#include <limits>

kxCborInput::kxCborInput(const char* data, qint64 size, kxFileReport& report)
    : _reader(QByteArray::fromRawData(data, int(size))), _size(size), _report(report)
{
}

bool kxCborInput::failed() const
{
    return _report.failed();
}

bool kxCborInput::fail(const QString& reason)
{
    return _report.fail(QStringLiteral("%1, at byte %2 of the content").arg(reason).arg(_reader.currentOffset()));
}

quint64 kxCborInput::enterArray()
{
    if (!failed() && !_reader.isArray())
        fail(QStringLiteral("a list was expected"));
    return enter();
}

quint64 kxCborInput::enterMap()
{
    if (!failed() && !_reader.isMap())
        fail(QStringLiteral("a table was expected"));
    return enter();
}

quint64 kxCborInput::enter()
{
    if (failed())
        return 0;
    const bool known = _reader.isLengthKnown();
    const quint64 count = known ? _reader.length() : 0;
    // Each element takes a byte at least.
    if (!known || count > quint64(_size - _reader.currentOffset()))
    {
        fail(QStringLiteral("a list claims more elements than the file can hold"));
        return 0;
    }
    if (++_depth > DeepestNesting || !_reader.enterContainer())
    {
        fail(QStringLiteral("the content is nested too deeply or damaged"));
        return 0;
    }
    return count;
}

void kxCborInput::leave()
{
    if (failed())
        return;
    --_depth;
    if (_reader.hasNext() || !_reader.leaveContainer())
        fail(QStringLiteral("a list doesn't end where it should"));
}

bool kxCborInput::readBool()
{
    if (failed())
        return false;
    if (!_reader.isBool())
        return fail(QStringLiteral("true or false was expected"));
    const bool value = _reader.toBool();
    _reader.next();
    return value;
}

quint64 kxCborInput::readUInt(quint64 largest)
{
    if (failed())
        return 0;
    if (!_reader.isUnsignedInteger() || _reader.toUnsignedInteger() > largest)
    {
        fail(QStringLiteral("a whole number from 0 to %1 was expected").arg(largest));
        return 0;
    }
    const quint64 value = _reader.toUnsignedInteger();
    _reader.next();
    return value;
}

qint64 kxCborInput::readInt(qint64 smallest, qint64 largest)
{
    if (failed())
        return 0;
    bool fits = false;
    qint64 value = 0;
    if (_reader.isUnsignedInteger())
    {
        fits = _reader.toUnsignedInteger() <= quint64(std::numeric_limits<qint64>::max());
        value = fits ? qint64(_reader.toUnsignedInteger()) : 0;
    }
    else if (_reader.isNegativeInteger())
    {
        const quint64 magnitude = quint64(_reader.toNegativeInteger()); // 0 stands for 2^64
        fits = magnitude > 0 && magnitude <= quint64(std::numeric_limits<qint64>::max());
        value = fits ? -qint64(magnitude) : 0;
    }
    if (!fits || value < smallest || value > largest)
    {
        fail(QStringLiteral("a whole number from %1 to %2 was expected").arg(smallest).arg(largest));
        return 0;
    }
    _reader.next();
    return value;
}

double kxCborInput::readNumber()
{
    if (failed())
        return 0;
    double value = std::numeric_limits<double>::quiet_NaN();
    if (_reader.isFloat())
        value = double(_reader.toFloat());
    else if (_reader.isDouble())
        value = _reader.toDouble();
    if (!std::isfinite(value))
    {
        fail(QStringLiteral("a finite number was expected"));
        return 0;
    }
    _reader.next();
    return value;
}

qint64 kxCborInput::stringLength()
{
    const qint64 length = _reader.isLengthKnown() ? qint64(_reader.currentStringChunkSize()) : -1;
    if (length < 0 || length > _size - _reader.currentOffset())
    {
        fail(QStringLiteral("a text or block is longer than the file"));
        return -1;
    }
    return length;
}

bool kxCborInput::readString(char* out, qint64 length)
{
    qint64 done = 0;
    for (;;)
    {
        char end = 0;
        const auto chunk =
            _reader.readStringChunk(done < length ? out + done : &end, done < length ? length - done : 1);
        if (chunk.status == QCborStreamReader::EndOfString)
            break;
        if (chunk.status == QCborStreamReader::Error || done + chunk.data > length)
            return fail(QStringLiteral("a text or block is damaged"));
        done += chunk.data;
    }
    return done == length || fail(QStringLiteral("a text or block is damaged"));
}

std::string kxCborInput::readText()
{
    if (failed())
        return std::string();
    if (!_reader.isString())
    {
        fail(QStringLiteral("a text was expected"));
        return std::string();
    }
    const qint64 length = stringLength();
    if (length < 0)
        return std::string();
    std::string text(std::size_t(length), '\0');
    return readString(&text[0], length) ? text : std::string();
}

void kxCborInput::readMap(std::map<std::string, std::string>& values)
{
    for (quint64 i = enterMap(); i > 0 && !failed(); --i)
    {
        const std::string name = readText();
        values[name] = readText();
    }
    leave();
}

void kxCborInput::readMap(std::map<std::string, double>& values)
{
    for (quint64 i = enterMap(); i > 0 && !failed(); --i)
    {
        const std::string name = readText();
        values[name] = readNumber();
    }
    leave();
}

void kxCborInput::readBytes(std::vector<unsigned char>& out)
{
    out.clear();
    readBytes(1,
              [&out](std::size_t length)
              {
                  out.resize(length);
                  return reinterpret_cast<char*>(out.data());
              });
}

void kxCborInput::readBytes(std::size_t unit, const std::function<char*(std::size_t length)>& room)
{
    if (failed())
        return;
    if (!_reader.isByteArray())
    {
        fail(QStringLiteral("a block of bytes was expected"));
        return;
    }
    const qint64 length = stringLength();
    if (length < 0)
        return;
    if (std::size_t(length) % unit != 0)
    {
        fail(QStringLiteral("a block of bytes has a length that doesn't fit its kind"));
        return;
    }
    readString(room(std::size_t(length)), length);
}

bool kxCborInput::mayUnpack(quint64 bytes)
{
    _unpacked += bytes;
    const quint64 budget = std::max(SmallestBudget, LargestGrowth * quint64(_size));
    return _unpacked <= budget || fail(QStringLiteral("the packed blocks claim more than %1 bytes").arg(budget));
}

void kxCborInput::skip()
{
    while (!failed() && _reader.isTag()) // what follows it is the value
        if (!_reader.next())
            fail(QStringLiteral("the content is damaged"));
    if (failed())
        return;
    if (_reader.type() == QCborStreamReader::Invalid)
    {
        fail(QStringLiteral("the content is damaged"));
        return;
    }
    if (_reader.isByteArray() || _reader.isString())
    {
        const qint64 length = stringLength();
        std::vector<char> text(length < 0 ? 0 : std::size_t(length));
        if (length >= 0)
            readString(text.data(), length);
        return;
    }
    if (!_reader.isArray() && !_reader.isMap())
    {
        if (!_reader.next())
            fail(QStringLiteral("the content is damaged"));
        return;
    }
    const quint64 count = _reader.isMap() ? 2 * enterMap() : enterArray();
    for (quint64 i = 0; i < count && !failed(); ++i)
        skip();
    leave();
}
