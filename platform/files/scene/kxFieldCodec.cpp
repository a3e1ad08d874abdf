#include <files/scene/kxFieldCodec.h>

#include <files/scene/kxCborInput.h>

#include <osg/Finite.h>

#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <zlib.h>

using namespace osg;

static_assert(std::is_same_v<std::variant_alternative_t<kxFieldCodec::ReferenceKind, FieldValue>, FieldContainerPtr>);
static_assert(std::is_same_v<std::variant_alternative_t<kxFieldCodec::ReferenceListKind, FieldValue>,
                             std::vector<FieldContainerPtr>>);

namespace
{
constexpr std::size_t FloatsAKey = 6;
constexpr std::size_t SmallestPacked = 128;
constexpr quint64 LargestUnpacked = quint64(1) << 30;
constexpr quint64 DeflateLimit = 1040; ///< no packed byte stands for more bytes than this

void appendBytes(QCborStreamWriter& out, const std::vector<unsigned char>& bytes)
{
    out.appendByteString(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size()));
}

template <class T>
void appendNumbers(QCborStreamWriter& out, const T* values, std::size_t count)
{
    if constexpr (QSysInfo::ByteOrder == QSysInfo::LittleEndian)
        return out.appendByteString(reinterpret_cast<const char*>(values), qsizetype(count) * qsizetype(sizeof(T)));
    std::vector<unsigned char> bytes(count * sizeof(T));
    qToLittleEndian<T>(values, qsizetype(count), bytes.data());
    appendBytes(out, bytes);
}

/// Readers refuse what isn't finite; a file that was written can be read.
float finite(float value)
{
    return std::isfinite(value) ? value : 0.0f;
}

struct Writer
{
    QCborStreamWriter& out;
    bool isPacked;

    void operator()(bool value) { out.append(value); }
    void operator()(Int32 value) { out.append(qint64(value)); }
    void operator()(UInt32 value) { out.append(quint64(value)); }
    void operator()(float value) { out.append(finite(value)); }
    template <std::size_t N>
    void operator()(const Vector<float, N>& value)
    {
        (*this)(std::vector<float>(value.data(), value.data() + N));
    }
    void operator()(const std::string& value) { out.appendTextString(value.data(), qsizetype(value.size())); }
    void operator()(const std::vector<UInt32>& values) { appendNumbers(out, values.data(), values.size()); }
    void operator()(const std::vector<float>& values)
    {
        if (isFinite(values))
            return appendNumbers(out, values.data(), values.size());
        std::vector<float> repaired(values.size());
        std::transform(values.begin(), values.end(), repaired.begin(), finite);
        appendNumbers(out, repaired.data(), repaired.size());
    }
    void operator()(const std::vector<std::string>& values)
    {
        out.startArray(quint64(values.size()));
        for (const std::string& value : values)
            (*this)(value);
        out.endArray();
    }
    void operator()(const std::vector<UInt8>& bytes)
    {
        uLongf size = compressBound(uLong(bytes.size()));
        if (isPacked && bytes.size() >= SmallestPacked && bytes.size() <= LargestUnpacked)
        {
            std::vector<unsigned char> packed(size);
            if (compress2(packed.data(), &size, bytes.data(), uLong(bytes.size()), Z_BEST_SPEED) == Z_OK &&
                size < bytes.size() - bytes.size() / 10)
            {
                packed.resize(size);
                out.startArray(2);
                out.append(quint64(bytes.size()));
                appendBytes(out, packed);
                out.endArray();
                return;
            }
        }
        appendBytes(out, bytes);
    }
    void operator()(const MField<CCPnt, 0>& keys)
    {
        std::vector<float> numbers(keys.size() * FloatsAKey);
        std::vector<unsigned char> types(keys.size());
        bool small = true;
        float* n = numbers.data();
        for (std::size_t i = 0; i < keys.size(); ++i)
        {
            const CCPnt& key = keys[i];
            for (const float number : {key.x(), key.y(), key.inX(), key.inY(), key.outX(), key.outY()})
                *n++ = finite(number);
            small = small && key.inType < 16 && key.outType < 16;
            types[i] = static_cast<unsigned char>((key.inType & 15u) | (key.outType & 15u) << 4);
        }
        out.startArray(2);
        appendNumbers(out, numbers.data(), numbers.size());
        if (small)
            appendBytes(out, types);
        else
        {
            std::vector<UInt32> wide;
            for (const CCPnt& key : keys)
            {
                wide.push_back(key.inType);
                wide.push_back(key.outType);
            }
            appendNumbers(out, wide.data(), wide.size());
        }
        out.endArray();
    }
    void operator()(const FieldContainerPtr&) { out.append(quint64(0)); }
    void operator()(const std::vector<FieldContainerPtr>&)
    {
        out.startArray(0);
        out.endArray();
    }
};

template <class T>
std::vector<T> numbers(const std::vector<unsigned char>& bytes)
{
    std::vector<T> values(bytes.size() / sizeof(T));
    qFromLittleEndian<T>(bytes.data(), qsizetype(values.size()), values.data());
    return values;
}

/// As many as there are, in groups of so many.
template <class T>
std::vector<T> readNumbers(kxCborInput& in, std::size_t group)
{
    std::vector<T> values;
    in.readBytes(group * sizeof(T),
                 [&values](std::size_t length)
                 {
                     values.resize(length / sizeof(T));
                     return reinterpret_cast<char*>(values.data());
                 });
    qFromLittleEndian<T>(values.data(), qsizetype(values.size()), values.data());
    return values;
}

std::vector<float> readFloats(kxCborInput& in, std::size_t group)
{
    std::vector<float> values = readNumbers<float>(in, group);
    if (!isFinite(values))
    {
        in.fail(QStringLiteral("a number isn't finite"));
        values.clear();
    }
    return values;
}

template <std::size_t N>
FieldValue readVector(kxCborInput& in)
{
    const std::vector<float> values = readFloats(in, N);
    Vector<float, N> vector;
    if (!in.failed() && values.size() != N)
        in.fail(QStringLiteral("a vector of %1 numbers was expected").arg(N));
    if (!in.failed())
        std::copy(values.begin(), values.end(), vector.data());
    return FieldValue(vector);
}

std::vector<unsigned char> readBlock(kxCborInput& in)
{
    std::vector<unsigned char> bytes;
    if (!in.isArray())
    {
        in.readBytes(bytes);
        return bytes;
    }
    if (in.enterArray() != 2)
        in.fail(QStringLiteral("a packed block was expected"));
    const quint64 length = in.readUInt(LargestUnpacked);
    std::vector<unsigned char> packed;
    in.readBytes(packed);
    in.leave();
    if (in.failed())
        return bytes;
    if (length > DeflateLimit * packed.size())
    {
        in.fail(QStringLiteral("a packed block claims more than it can hold"));
        return bytes;
    }
    if (!in.mayUnpack(length))
        return bytes;
    bytes.resize(std::size_t(length));
    uLongf size = uLongf(length);
    if (uncompress(bytes.data(), &size, packed.data(), uLong(packed.size())) != Z_OK || size != length)
    {
        in.fail(QStringLiteral("a packed block is damaged"));
        bytes.clear();
    }
    return bytes;
}

MField<CCPnt, 0> readKeys(kxCborInput& in)
{
    MField<CCPnt, 0> keys;
    if (in.enterArray() != 2)
        in.fail(QStringLiteral("keys were expected"));
    const std::vector<float> values = readFloats(in, FloatsAKey);
    std::vector<unsigned char> types;
    in.readBytes(types);
    in.leave();
    const std::size_t count = values.size() / FloatsAKey;
    const bool wide = types.size() == 8 * count;
    if (!in.failed() && !wide && types.size() != count)
        in.fail(QStringLiteral("keys and their types don't fit each other"));
    if (in.failed())
        return keys;
    const std::vector<UInt32> wideTypes = wide ? numbers<UInt32>(types) : std::vector<UInt32>();
    keys.reserve(count);
    bool sorted = true;
    for (std::size_t i = 0; i < count; ++i)
    {
        const float* const n = &values[i * FloatsAKey];
        const UInt32 inType = wide ? wideTypes[2 * i] : UInt32(types[i] & 15u);
        const UInt32 outType = wide ? wideTypes[2 * i + 1] : UInt32(types[i] >> 4);
        keys.emplace_back(Pnt2f(n[0], n[1]), Vec2f(n[2], n[3]), Vec2f(n[4], n[5]), inType, outType);
        sorted = sorted && (i == 0 || n[-long(FloatsAKey)] <= n[0]);
    }
    if (!sorted)
        std::stable_sort(keys.begin(), keys.end(), [](const CCPnt& a, const CCPnt& b) { return a.x() < b.x(); });
    return keys;
}

std::vector<std::string> readTexts(kxCborInput& in)
{
    std::vector<std::string> texts;
    const quint64 count = in.enterArray();
    for (quint64 i = 0; i < count && !in.failed(); ++i)
        texts.push_back(in.readText());
    in.leave();
    return texts;
}
} // namespace

void kxFieldCodec::write(QCborStreamWriter& out, const FieldValue& value, bool isPacked)
{
    std::visit(Writer{out, isPacked}, value);
}

FieldValue kxFieldCodec::read(kxCborInput& in, std::size_t kind)
{
    typedef std::numeric_limits<Int32> Limits;
    switch (kind)
    {
    case 0:
        return FieldValue(in.readBool());
    case 1:
        return FieldValue(Int32(in.readInt(Limits::min(), Limits::max())));
    case 2:
        return FieldValue(UInt32(in.readUInt(0xffffffffu)));
    case 3:
        return FieldValue(float(in.readNumber()));
    case 4:
        return readVector<2>(in);
    case 5:
        return readVector<3>(in);
    case 6:
        return readVector<4>(in);
    case 7:
        return FieldValue(in.readText());
    case 8:
        return FieldValue(readBlock(in));
    case 9:
        return FieldValue(readNumbers<UInt32>(in, 1));
    case 10:
        return FieldValue(readFloats(in, 1));
    case 11:
        return FieldValue(readTexts(in));
    case 14:
        return FieldValue(readKeys(in));
    default:
        in.fail(QStringLiteral("a value of an unknown kind"));
        return FieldValue(false);
    }
}
