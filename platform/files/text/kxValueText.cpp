#include <files/text/kxValueText.h>

#include <QCryptographicHash>

#include <charconv>
#include <cstring>

using namespace osg;

namespace
{
constexpr std::size_t MostListed = 16; ///< numbers that are on a line of their own

template <class T>
void appendNumber(std::string& out, T value)
{
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value == T(0) ? T(0) : value); // no -0
    out.append(text, end.ptr);
}

template <class T>
std::string listed(const T* values, std::size_t count)
{
    if (count > MostListed)
        return std::to_string(count) + " numbers, digest " +
               kxValueText::digest(QByteArray::fromRawData(reinterpret_cast<const char*>(values), int(count * 4)));
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
    {
        if (i > 0)
            text += ' ';
        appendNumber(text, values[i]);
    }
    return text;
}

struct Printer
{
    std::string operator()(bool value) const { return value ? "yes" : "no"; }
    std::string operator()(Int32 value) const { return std::to_string(value); }
    std::string operator()(UInt32 value) const { return std::to_string(value); }
    std::string operator()(float value) const { return listed(&value, 1); }
    template <std::size_t N>
    std::string operator()(const Vector<float, N>& value) const
    {
        return listed(value.data(), N);
    }
    std::string operator()(const std::string& value) const { return kxValueText::quoted(value); }
    std::string operator()(const std::vector<UInt8>& bytes) const
    {
        return std::to_string(bytes.size()) + " bytes, digest " +
               kxValueText::digest(
                   QByteArray::fromRawData(reinterpret_cast<const char*>(bytes.data()), int(bytes.size())));
    }
    std::string operator()(const std::vector<UInt32>& values) const { return listed(values.data(), values.size()); }
    std::string operator()(const std::vector<float>& values) const { return listed(values.data(), values.size()); }
    std::string operator()(const std::vector<std::string>& values) const
    {
        std::string text;
        for (const std::string& value : values)
            text += (text.empty() ? "" : ", ") + kxValueText::quoted(value);
        return text;
    }
    std::string operator()(const MField<CCPnt, 0>& keys) const { return std::to_string(keys.size()) + " keys"; }
    template <class Reference>
    std::string operator()(const Reference&) const
    {
        return std::string();
    }
};

struct Hasher
{
    template <class T>
    quint64 of(const T* values, std::size_t count) const
    {
        return kxValueText::hash(values, count * sizeof(T), count);
    }
    quint64 operator()(bool value) const { return value ? 3 : 5; }
    quint64 operator()(Int32 value) const { return of(&value, 1); }
    quint64 operator()(UInt32 value) const { return of(&value, 1); }
    quint64 operator()(float value) const { return (*this)(std::vector<float>(1, value)); }
    template <std::size_t N>
    quint64 operator()(const Vector<float, N>& value) const
    {
        return (*this)(std::vector<float>(value.data(), value.data() + N));
    }
    quint64 operator()(const std::string& value) const { return of(value.data(), value.size()); }
    quint64 operator()(const std::vector<UInt8>& values) const { return of(values.data(), values.size()); }
    quint64 operator()(const std::vector<UInt32>& values) const { return of(values.data(), values.size()); }
    quint64 operator()(std::vector<float> values) const
    {
        for (float& value : values)
            value += 0.0f; // no -0
        return of(values.data(), values.size());
    }
    quint64 operator()(const std::vector<std::string>& values) const
    {
        quint64 result = values.size();
        for (const std::string& value : values)
            result = kxValueText::mixed(result, (*this)(value));
        return result;
    }
    quint64 operator()(const MField<CCPnt, 0>& keys) const
    {
        quint64 result = keys.size();
        for (const CCPnt& key : keys)
        {
            const float numbers[] = {key.x() + 0.0f,   key.y() + 0.0f,    key.inX() + 0.0f,
                                     key.inY() + 0.0f, key.outX() + 0.0f, key.outY() + 0.0f};
            const UInt32 types[] = {key.inType, key.outType};
            result = kxValueText::hash(types, sizeof types, kxValueText::hash(numbers, sizeof numbers, result));
        }
        return result;
    }
    template <class Reference>
    quint64 operator()(const Reference&) const
    {
        return 0;
    }
};
} // namespace

void kxValueText::append(std::string& out, float value)
{
    appendNumber(out, value);
}

void kxValueText::append(std::string& out, double value)
{
    appendNumber(out, value);
}

std::string kxValueText::of(const FieldValue& value)
{
    return std::visit(Printer{}, value);
}

std::string kxValueText::quoted(const std::string& text)
{
    std::string quoted = "\"";
    for (const char letter : text)
        if (letter == '\n')
            quoted += "\\n";
        else if (letter == '\r')
            quoted += "\\r";
        else
        {
            if (letter == '"' || letter == '\\')
                quoted += '\\';
            quoted += letter;
        }
    return quoted + '"';
}

std::string kxValueText::segment(const std::string& name)
{
    if (name.empty())
        return "(no name)";
    std::string text;
    for (const char letter : name)
        if (letter == '\n' || letter == '\r')
            text += letter == '\n' ? "\\n" : "\\r";
        else
        {
            if (std::strchr("\\/#:[]", letter) != nullptr)
                text += '\\';
            text += letter;
        }
    return text;
}

std::string kxValueText::digest(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex().left(16).toStdString();
}

quint64 kxValueText::hash(const void* bytes, std::size_t size, quint64 seed)
{
    const char* from = static_cast<const char*>(bytes);
    quint64 result = mixed(seed, size);
    for (; size >= sizeof(quint64); size -= sizeof(quint64), from += sizeof(quint64))
    {
        quint64 word = 0;
        std::memcpy(&word, from, sizeof word);
        result = mixed(result, word);
    }
    quint64 rest = 0;
    if (size > 0)
        std::memcpy(&rest, from, size);
    return mixed(result, rest);
}

quint64 kxValueText::hash(const FieldValue& value)
{
    return std::visit(Hasher{}, value);
}
