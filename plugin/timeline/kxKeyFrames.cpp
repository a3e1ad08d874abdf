#include <timeline/kxKeyFrames.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
bool isLess(double a, double b)
{
    return a < b;
}
} // namespace

int kxKeyFrames::truncated(double frame)
{
    if (std::isnan(frame))
        return 0;
    constexpr double Lowest = std::numeric_limits<int>::min();
    constexpr double Highest = std::numeric_limits<int>::max();
    return int(std::clamp(frame, Lowest, Highest));
}

float kxKeyFrames::previous(const std::set<float>& keys, int frame)
{
    const auto notBefore = std::lower_bound(keys.begin(), keys.end(), double(frame), isLess);
    return notBefore == keys.begin() ? *keys.rbegin() : *std::prev(notBefore);
}

float kxKeyFrames::next(const std::set<float>& keys, int frame)
{
    const auto behind = std::upper_bound(keys.begin(), keys.end(), double(frame), isLess);
    return behind == keys.end() ? *keys.begin() : *behind;
}
