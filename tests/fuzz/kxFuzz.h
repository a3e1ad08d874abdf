#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstring>

/// An input as a row of values; zeros where it has no more.
class kxFuzzInput
{
public:
    kxFuzzInput(const std::uint8_t* data, std::size_t size) : _at(reinterpret_cast<const char*>(data)), _left(size) {}

    bool isEmpty() const { return _left == 0; }
    template <class T>
    T take()
    {
        T value{};
        const std::size_t size = _left < sizeof value ? _left : sizeof value;
        std::memcpy(&value, _at, size);
        _at += size;
        _left -= size;
        return value;
    }
    QByteArray bytes(std::size_t wanted)
    {
        const QByteArray taken(_at, int(wanted < _left ? wanted : _left));
        _at += taken.size();
        _left -= std::size_t(taken.size());
        return taken;
    }

private:
    const char* _at;
    std::size_t _left;
};
