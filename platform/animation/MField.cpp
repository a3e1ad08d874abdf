#include <osg/MField.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ostream>

namespace osg
{

namespace
{
/// Reads one value after another out of a text, as a scanner does: white space before a number is skipped, a literal
/// has to be exact.
class Scanner
{
public:
    explicit Scanner(const char* text) : _at(text), _end(text + std::strlen(text)) {}

    bool literal(char c)
    {
        if (_at == _end || *_at != c)
            return false;
        ++_at;
        return true;
    }

    bool number(float& value)
    {
        double wide = 0;
        if (!parse(wide))
            return false;
        value = float(wide); // a double's digits outlast a float's, but for ties that no written float has
        return std::isfinite(value);
    }

    bool number(UInt32& value)
    {
        std::int64_t wide = 0;
        if (!parse(wide) || wide < INT32_MIN || wide > std::int64_t(UINT32_MAX))
            return false;
        value = UInt32(wide);
        return true;
    }

private:
    template <class T>
    bool parse(T& value)
    {
        while (_at != _end && std::strchr(" \t\n\v\f\r", *_at) != nullptr)
            ++_at;
        if (_at != _end && *_at == '+' && _at + 1 != _end && _at[1] != '-')
            ++_at;
        const std::from_chars_result result = std::from_chars(_at, _end, value);
        if (result.ec != std::errc())
            return false;
        _at = result.ptr;
        return true;
    }

    const char* _at;
    const char* _end;
};

template <class T>
std::string shortest(T value)
{
    char buffer[64];
    const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof(buffer), value);
    return std::string(buffer, result.ptr);
}

CCPnt readPoint(const char* text)
{
    float v[6];
    UInt32 types[2];
    if (text == nullptr)
        return CCPnt();
    Scanner scanner(text);
    if (!scanner.literal('"'))
        return CCPnt();
    for (int i = 0; i < 6; ++i)
        if ((i > 0 && !scanner.literal(',')) || !scanner.number(v[i]))
            return CCPnt();
    for (UInt32& type : types)
        if (!scanner.literal(',') || !scanner.number(type))
            return CCPnt();
    return CCPnt(Pnt2f(v[0], v[1]), Vec2f(v[2], v[3]), Vec2f(v[4], v[5]), types[0], types[1]);
}

std::string writePoint(const CCPnt& point)
{
    std::string text = "\"";
    for (const float value : {point.x(), point.y(), point.inX(), point.inY(), point.outX(), point.outY()})
        text += toString(value) + ',';
    return text + toString(point.inType) + ',' + toString(point.outType) + '"';
}
} // namespace

std::string toString(float value)
{
    return shortest(value);
}

std::string toString(UInt32 value)
{
    return shortest(value);
}

void MField<CCPnt, 0>::pushValueByStr(const char* text)
{
    push_back(readPoint(text));
}

void MField<CCPnt, 0>::getValueByStr(std::string& text, UInt32 index) const
{
    if (index < size())
        text = writePoint((*this)[index]);
}

void MField<CCPnt, 0>::getValuesByStr(std::string& text) const
{
    text.clear();
    for (const CCPnt& point : *this)
    {
        if (!text.empty())
            text += ", ";
        text += writePoint(point);
    }
}

void MField<CCPnt, 0>::getValuesByStr(std::ostream& stream) const
{
    std::string text;
    getValuesByStr(text);
    stream << text;
}

void MField<CCPnt, 0>::dump() const
{
    std::fputs("STMFST : ", stdout);
}

} // namespace osg
