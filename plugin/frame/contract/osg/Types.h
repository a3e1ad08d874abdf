#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace osg
{

typedef std::int32_t Int32;
typedef std::uint8_t UInt8;
typedef std::uint32_t UInt32;
typedef std::uint64_t UInt64;
typedef float Real32;
typedef double Real64;

/// A set of 128 bits: the fields of a container that a change touches.
class BitVector
{
public:
    constexpr BitVector() = default;
    constexpr BitVector(UInt64 low, UInt64 high) : _low(low), _high(high) {}

    /// The set that holds bit `index` alone; `index` < 128.
    static constexpr BitVector bit(unsigned index)
    {
        return index < 64 ? BitVector(UInt64(1) << index, 0) : BitVector(0, UInt64(1) << (index - 64));
    }
    static constexpr BitVector all() { return BitVector(~UInt64(0), ~UInt64(0)); }

    constexpr UInt64 low() const { return _low; }
    constexpr UInt64 high() const { return _high; }
    constexpr bool any() const { return (_low | _high) != 0; }
    constexpr bool intersects(const BitVector& other) const
    {
        return ((_low & other._low) | (_high & other._high)) != 0;
    }

    constexpr BitVector operator|(const BitVector& o) const { return BitVector(_low | o._low, _high | o._high); }
    constexpr BitVector operator&(const BitVector& o) const { return BitVector(_low & o._low, _high & o._high); }
    constexpr BitVector operator~() const { return BitVector(~_low, ~_high); }
    BitVector& operator|=(const BitVector& o)
    {
        _low |= o._low;
        _high |= o._high;
        return *this;
    }
    constexpr bool operator==(const BitVector& o) const { return _low == o._low && _high == o._high; }
    constexpr bool operator!=(const BitVector& o) const { return !(*this == o); }

private:
    UInt64 _low = 0;
    UInt64 _high = 0;
};

/// Every field of a container.
constexpr BitVector FieldBits = BitVector::all();

} // namespace osg
