#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

/// Vertices that are the same in some way.
namespace kxAlike
{
template <class T>
std::uint64_t bitsOf(T value)
{
    std::uint32_t bits = 0;
    value += T(0); // there are two floats that are 0
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// For each vertex the first one that is the same to `hash` and `isSame`.
template <class Hash, class IsSame>
std::vector<std::uint32_t> first(std::size_t vertices, const Hash& hash, const IsSame& isSame)
{
    constexpr auto None = std::uint32_t(-1);
    std::size_t mask = 15;
    while (mask < vertices * 3 / 2)
        mask = mask * 2 + 1;
    std::vector<std::uint32_t> table(mask + 1, None), found(vertices);
    for (std::size_t v = 0; v < vertices; ++v)
    {
        std::size_t at = hash(v) & mask;
        while (table[at] != None && !isSame(table[at], v))
            at = (at + 1) & mask;
        if (table[at] == None)
            table[at] = std::uint32_t(v);
        found[v] = table[at];
    }
    return found;
}

template <class T>
std::size_t hashOf(const T* values, std::size_t count, std::size_t hash = 0)
{
    constexpr std::uint64_t Odd = 0x9e3779b97f4a7c15;
    for (std::size_t i = 0; i < count; ++i)
    {
        hash = (hash ^ bitsOf(values[i])) * Odd;
        hash ^= hash >> 32;
    }
    return hash;
}
} // namespace kxAlike
