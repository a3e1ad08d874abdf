#include <timeline/kxKeyFrames.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
double snapped(double frame, double relativeSlack)
{
    const double whole = std::nearbyint(frame);
    const double slack = std::min(0.25, std::abs(frame) * relativeSlack + 1.0e-9);
    return std::abs(frame - whole) <= slack ? whole : frame;
}
} // namespace

int kxKeyFrames::truncated(double frame)
{
    if (std::isnan(frame))
        return 0;
    constexpr double Lowest = std::numeric_limits<int>::min();
    constexpr double Highest = std::numeric_limits<int>::max();
    return int(std::clamp(snapped(frame, 1.0e-9), Lowest, Highest));
}

float kxKeyFrames::ofKey(float seconds, double fps)
{
    return float(snapped(double(seconds) * fps, 2.4e-7));
}

float kxKeyFrames::previous(const std::set<float>& keys, int frame)
{
    const auto notBefore =
        std::find_if(keys.begin(), keys.end(), [frame](float key) { return !(double(key) < double(frame)); });
    return notBefore == keys.begin() ? *keys.rbegin() : *std::prev(notBefore);
}

float kxKeyFrames::next(const std::set<float>& keys, int frame)
{
    const auto behind =
        std::find_if(keys.begin(), keys.end(), [frame](float key) { return double(key) > double(frame); });
    return behind == keys.end() ? *keys.begin() : *behind;
}
