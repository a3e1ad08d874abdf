#include <animation/kxFrameTime.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
double snapped(double frame, double slack)
{
    const double whole = std::nearbyint(frame);
    return std::abs(frame - whole) <= slack ? whole : frame;
}
} // namespace

float kxFrameTime::seconds(double frame, double fps)
{
    const double limit = std::numeric_limits<float>::max();
    return float(std::clamp(frame / fps, -limit, limit));
}

double kxFrameTime::frame(double seconds, double fps)
{
    const double frame = seconds * fps;
    // Two roundings to float: that of the time, and that of a rate which was narrowed on its way. Never so much that
    // a quarter of a frame is lost.
    return snapped(frame, std::min(0.25, std::abs(frame) * 2.4e-7 + 1.0e-9));
}

int kxFrameTime::wholeFrame(double frame)
{
    if (std::isnan(frame))
        return 0;
    const double whole = std::trunc(snapped(frame, std::min(0.25, std::abs(frame) * 1.0e-9 + 1.0e-9)));
    return int(std::clamp(whole, double(std::numeric_limits<int>::min()), double(std::numeric_limits<int>::max())));
}
