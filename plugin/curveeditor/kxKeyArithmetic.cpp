#include <curveeditor/kxKeyArithmetic.h>

#include <algorithm>
#include <cmath>
#include <numeric>

std::optional<std::vector<double>> kxAppliedToAll(const std::vector<double>& values, RelativeOperator op, double value)
{
    std::vector<double> results = values;
    for (double& result : results)
        if (!QKXDoubleSpiner::applyRelative(op, value, result) || !std::isfinite(float(result)))
            return std::nullopt;
    return results;
}

std::vector<std::size_t> kxCollisionFreeOrder(const std::vector<double>& from, const std::vector<double>& to)
{
    std::vector<std::size_t> order(from.size());
    std::iota(order.begin(), order.end(), std::size_t(0));
    const auto goesRight = [&](std::size_t i) { return to[i] > from[i]; };
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b)
              {
                  if (goesRight(a) != goesRight(b))
                      return goesRight(a);
                  return goesRight(a) ? from[a] > from[b] : from[a] < from[b];
              });
    return order;
}
