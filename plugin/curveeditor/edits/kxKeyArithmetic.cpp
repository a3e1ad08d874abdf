#include <curveeditor/edits/kxKeyArithmetic.h>

#include <cmath>

std::optional<std::vector<double>> kxAppliedToAll(const std::vector<double>& values, RelativeOperator op, double value)
{
    std::vector<double> results = values;
    for (double& result : results)
        if (!QKXDoubleSpiner::applyRelative(op, value, result) || !std::isfinite(float(result)))
            return std::nullopt;
    return results;
}
