#pragma once

#include <QKXSpiner.h>

#include <optional>
#include <vector>

/// `values` after an operator with the operand `value`; nothing where a result wouldn't be finite as the float that a
/// key holds, as after a divide by 0.
std::optional<std::vector<double>> kxAppliedToAll(const std::vector<double>& values, RelativeOperator op, double value);
