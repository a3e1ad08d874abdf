#pragma once

#include <QKXSpiner.h>

#include <optional>
#include <vector>

/// `values` after an operator with the operand `value`; nothing where a result wouldn't be finite as the float that a
/// key holds, as after a divide by 0.
std::optional<std::vector<double>> kxAppliedToAll(const std::vector<double>& values, RelativeOperator op, double value);

/// The order in which keys may go from `from` to `to`, one by one, without one landing where another still waits.
///
///   to the right: the last first        to the left: the first first
///   a -> b -> c ->                       <- a <- b <- c
///
/// Holds for moves that keep the keys' order, as an add and a multiply by a positive number do. Both of one size.
std::vector<std::size_t> kxCollisionFreeOrder(const std::vector<double>& from, const std::vector<double>& to);
