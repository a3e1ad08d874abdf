#include <clipmaker/edits/kxClipGeometry.h>

#include <algorithm>
#include <cmath>

namespace
{
constexpr double LastTrack = 1.0e6;
constexpr double HandlePixels = 8;

bool isLength(double value)
{
    return std::isfinite(value) && value > 0;
}
} // namespace

kxClipGeometry::Span kxClipGeometry::barSpan(double startSeconds, double endSeconds, int postCycles, double fps)
{
    const double passes = double(std::max(postCycles, 0)) + 1;
    return {startSeconds * fps, std::max(0.0, (endSeconds - startSeconds) * fps / passes)};
}

double kxClipGeometry::cyclesWidth(double barWidth, int postCycles, double itemScale)
{
    if (postCycles >= 0 || !isLength(barWidth))
        return postCycles * barWidth;
    return isLength(itemScale) ? TimelineFrames / itemScale : TimelineFrames;
}

kxClipGeometry::Ticks kxClipGeometry::cycleTicks(double step, double width, double from, double to, double scale)
{
    Ticks ticks;
    if (!isLength(step) || !isLength(scale) || !std::isfinite(width))
        return ticks;
    const double stride = std::ceil(std::max(1.0, 1 / (step * scale)));
    const double last = std::min(std::floor(to / step), std::ceil(width / step * (1 - 1.0e-9)) - 1);
    const double first = std::max(1.0, std::floor(from / step / stride) * stride);
    if (!(first <= last) || last > 1.0e15)
        return ticks;
    ticks.first = qint64(first);
    ticks.last = qint64(last);
    ticks.stride = qint64(stride);
    return ticks;
}

double kxClipGeometry::snappedFrame(double x)
{
    return double(std::round(float(x)));
}

double kxClipGeometry::snappedTrack(double y, float dpi)
{
    const float pitch = trackPitch(dpi);
    return std::max(0.0, std::round(y / double(pitch)) * double(pitch));
}

int kxClipGeometry::trackOf(double y, float dpi)
{
    // A bar that is on a track may lie short of it by rounding.
    const double quotient = y / double(trackPitch(dpi)) + 1.0e-4;
    return int(std::clamp(quotient, -LastTrack, LastTrack));
}

double kxClipGeometry::movedFrames(double from, double to, double node)
{
    const bool agree = std::abs(from - node) <= std::max(0.01, 1.0e-6 * std::abs(from));
    return agree ? to - node : to - from;
}

float kxClipGeometry::movedUnits(double from, double to, float node, float dpi)
{
    const double start = from / double(dpi), exact = to / double(dpi), whole = std::round(exact);
    const double end = std::abs(exact - whole) < 1.0e-3 ? whole : exact;
    return float(std::abs(start - double(node)) <= 0.01 ? end - double(node) : exact - start);
}

float kxClipGeometry::stretchFactor(double from, double to, double node)
{
    if (!isLength(from) || !isLength(to))
        return 0;
    const bool agree = std::abs(from - node) <= 1.0e-3 * from;
    const float factor = float(to / (agree ? node : from));
    return std::isnormal(factor) ? factor : 0;
}

double kxClipGeometry::handleWidth(double scale, float dpi)
{
    return HandlePixels * double(dpi) / scale;
}

bool kxClipGeometry::handlesFit(double width, double scale)
{
    return width * scale > GrabWidth;
}

kxClipGeometry::Handle kxClipGeometry::handleAt(const QPointF& point, const QRectF& bar, double scale, float dpi)
{
    if (bar.width() * scale <= double(dpi) * GrabWidth || point.y() <= bar.top() || point.y() >= bar.bottom())
        return Handle::None;
    const double width = handleWidth(scale, dpi);
    if (point.x() > bar.right() - width)
        return Handle::Right;
    return point.x() < bar.left() + width ? Handle::Left : Handle::None;
}

bool kxClipGeometry::labelFits(double labelWidth, double viewScale, float offset, double barWidth)
{
    return labelWidth / viewScale + double(offset) < barWidth - double(offset);
}

QString kxClipGeometry::frameText(double frame)
{
    return QString::number(std::abs(frame) < 0.005 ? 0.0 : frame, 'f', 2);
}

QString kxClipGeometry::timeText(double from, double width)
{
    const double to = from + width;
    return frameText(from) + QLatin1String(" - ") + frameText(to) + QLatin1String(" (") + frameText(to - from) +
           QLatin1Char(')');
}

float kxClipGeometry::markerHalfWidth(float dpi, double viewScale)
{
    const float half = 5 * dpi;
    return viewScale > 1.0 ? float(double(half) / viewScale) : half;
}

QPolygonF kxClipGeometry::markerShape(float halfWidth, float dpi)
{
    const double h = double(halfWidth), neck = double(20 * dpi), foot = double(barHeight(dpi));
    return QPolygonF({{0, 0}, {h, neck}, {h, foot}, {-h, foot}, {-h, neck}, {0, 0}});
}
