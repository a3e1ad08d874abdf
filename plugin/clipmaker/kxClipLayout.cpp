#include <clipmaker/kxClipLayout.h>

#include <clipmaker/edits/kxClipGeometry.h>

#include <osg/Finite.h>

#include <algorithm>
#include <cmath>

namespace
{
// Scene units below a track's top, at any dpi: where the buttons take a click.
constexpr int ButtonTop = 11;
constexpr int ButtonBottom = 30;

// Pixels a frame: the whole timeline in 400 pixels, and a frame over several screens.
constexpr double SmallestScale = 0.002;
constexpr double LargestScale = 10000;

constexpr int MostTicks = 100000;
} // namespace

kxClipLayout::TrackButton kxClipLayout::trackButtonAt(const QPointF& point, double left, double scale, float dpi)
{
    TrackButton hit;
    const int track = kxClipGeometry::trackOf(point.y(), dpi);
    const int inside = int(point.y() - double(track) * double(kxClipGeometry::trackPitch(dpi)));
    if (track < 0 || inside < ButtonTop || inside >= ButtonBottom)
        return hit;
    hit.track = track;
    const double place = std::floor((double(float(point.x())) - left) * scale / (ButtonPitch * double(dpi)));
    if (place >= 0 && place < ButtonCount)
        hit.button = Button(int(place));
    return hit;
}

int kxClipLayout::tickStep(double width)
{
    const int whole = int(std::clamp(width, 0.0, 1.0e8));
    if (whole < 11)
        return 1;
    int divisions = 0;
    for (float rest = float(whole); rest > 1; rest /= 10)
        ++divisions;
    const auto powerOf10 = [](int exponent) { return int(std::lround(std::pow(10.0, exponent))); };
    const int lead = whole / powerOf10(divisions - 1);
    return (lead < 2 ? 1 : lead < 4 ? 2 : 5) * powerOf10(std::max(divisions - 1, 1) - 1);
}

std::vector<double> kxClipLayout::ticks(double left, double right, int step)
{
    std::vector<double> found;
    if (step < 1 || !osg::isFinite(left, right) || (right - left) / step > MostTicks)
        return found;
    const double first = std::floor(left / step) + 1;
    for (int i = 0; i <= MostTicks && (first + i) * step < right; ++i)
        found.push_back((first + i) * step);
    return found;
}

int kxClipLayout::readableStep(int step, double scale, double labelWidth)
{
    for (const int coarser : {1, 2, 5, 10, 20, 50, 100})
        if (step * coarser * scale >= labelWidth)
            return step * coarser;
    return step * 1000;
}

QString kxClipLayout::frameText(double frame)
{
    const double whole = std::trunc(frame) + 0.0; // no -0
    return std::abs(frame - whole) < 0.0001 ? QString::number(whole, 'f', 0) : QString::number(frame, 'f', 2);
}

QRectF kxClipLayout::framed(double start, double length, double top, double height, double viewportWidth, float dpi)
{
    const double margin = double(float(ColumnWidth * double(dpi) / double(float(viewportWidth)) * length));
    return QRectF(start - margin, top, length + margin, height);
}

double kxClipLayout::boundedZoom(double scale, double factor)
{
    return std::clamp(scale * factor, SmallestScale, LargestScale) / scale;
}
