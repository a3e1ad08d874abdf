#pragma once

#include <osg/CCPnt.h>

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <vector>

namespace osg
{

/// True where each number is finite: neither infinite nor no number at all.
template <class... Numbers>
auto isFinite(Numbers... numbers) -> std::enable_if_t<(std::is_arithmetic_v<Numbers> && ...), bool>
{
    return (std::isfinite(numbers) && ...);
}

template <class T>
bool isFinite(const T* values, std::size_t count)
{
    return std::all_of(values, values + count, [](T value) { return std::isfinite(value); });
}

template <class T>
bool isFinite(const std::vector<T>& values)
{
    return isFinite(values.data(), values.size());
}

template <class T, std::size_t N>
bool isFinite(const detail::Components<T, N>& values)
{
    return isFinite(values.data(), N);
}

inline bool isFinite(const CCPnt& key)
{
    return isFinite(key.point()) && isFinite(key.intangent()) && isFinite(key.outtangent());
}

} // namespace osg
