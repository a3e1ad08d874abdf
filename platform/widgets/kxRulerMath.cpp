#include <widgets/kxRulerMath.h>

#include <osg/Finite.h>

#include <cmath>
#include <limits>

namespace
{
constexpr qint64 IntMin = std::numeric_limits<int>::min();
constexpr qint64 IntMax = std::numeric_limits<int>::max();

/// Ends of a full range as they are shown: at least one frame apart.
struct Limits
{
    qint64 start;
    qint64 end;
};

Limits limitsOf(const kxRulerMath::Range& full)
{
    const qint64 start = full.start;
    return {start, qMax<qint64>(full.end, start + 1)};
}

/// `range`, or `fallback` where it doesn't fit the type or is empty.
kxRulerMath::Range checked(qint64 start, qint64 end, const kxRulerMath::Range& fallback)
{
    if (start < IntMin || end > IntMax || start >= end)
        return fallback;
    return {int(start), int(end)};
}
} // namespace

namespace kxRulerMath
{
int Scale::frameAt(double pixel) const
{
    const double last = qMin(end(), double(IntMax));
    return int(qBound(start, std::floor(toFrame(pixel) + 0.5), last));
}

Scale makeScale(int start, int end, double left, double right)
{
    Scale scale;
    scale.start = start;
    scale.length = qMax(1.0, double(end) - double(start));
    scale.left = left;
    scale.width = qMax(1.0, right - left);
    return scale;
}

qint64 majorStep(const Scale& scale, double minPixels)
{
    const double frames = minPixels / scale.pixelsPerFrame();
    qint64 decade = 1;
    // Frames span 2^32, a label at most some thousand pixels: the loop ends long before the type does.
    while (decade < qint64(1e15))
    {
        for (const qint64 lead : {1, 2, 5})
        {
            if (double(decade * lead) >= frames)
                return decade * lead;
        }
        decade *= 10;
    }
    return decade;
}

qint64 minorStep(const Scale& scale, qint64 major, double minPixels)
{
    for (const qint64 parts : {10, 5, 2})
    {
        // Halves of 5 and fifths of 2 are no whole frames.
        const qint64 step = major / parts;
        if (step * parts == major && double(step) * scale.pixelsPerFrame() >= minPixels)
            return step;
    }
    return major;
}

qint64 tickAtOrBefore(double frame, qint64 step)
{
    return qint64(std::floor(frame / double(step))) * step;
}

int longestLabel(const Scale& scale)
{
    return qMax(QString::number(scale.start, 'f', 0).size(), QString::number(scale.end(), 'f', 0).size());
}

double snapToDevice(double x, double pixelRatio)
{
    return (std::floor(x * pixelRatio) + 0.5) / pixelRatio;
}

QVector<Mark> visibleMarks(const QMap<float, QColor>& keys, const Scale& scale, double from, double to,
                           double pixelRatio)
{
    QVector<Mark> marks;
    auto key = keys.lowerBound(float(scale.toFrame(from)));
    const float lastFrame = float(scale.toFrame(to));
    while (key != keys.constEnd() && key.key() <= lastFrame)
    {
        const qint64 column = qint64(std::floor(scale.toPixel(double(key.key())) * pixelRatio));
        marks.append({column, key.value()});
        const auto shown = key++;
        if (key == keys.constEnd() || scale.toPixel(double(key.key())) * pixelRatio >= double(column + 1))
            continue;
        // The rest of a crowded column is skipped in one go.
        key = keys.lowerBound(float(scale.toFrame(double(column + 1) / pixelRatio)));
        while (key != keys.constEnd() && key.key() <= shown.key())
            ++key;
    }
    return marks;
}

QString timeText(double frame, double fps)
{
    if (!(fps > 0) || !osg::isFinite(fps, frame))
        return {};
    const double seconds = std::fabs(frame) / fps;
    if (seconds > 1e12)
        return {};
    const qint64 milliseconds = std::llround(seconds * 1000);
    return QStringLiteral("%1%2:%3.%4")
        .arg(frame < 0 && milliseconds > 0 ? QStringLiteral("-") : QString())
        .arg(milliseconds / 60000)
        .arg(milliseconds / 1000 % 60, 2, 10, QLatin1Char('0'))
        .arg(milliseconds % 1000, 3, 10, QLatin1Char('0'));
}

Range withStart(const Range& range, const Range& full, qint64 frame)
{
    const qint64 latest = qint64(range.end) - 1;
    const qint64 earliest = qMin(limitsOf(full).start, latest);
    return checked(qBound(earliest, frame, latest), range.end, range);
}

Range withEnd(const Range& range, const Range& full, qint64 frame)
{
    const qint64 earliest = qint64(range.start) + 1;
    const qint64 latest = qMax(limitsOf(full).end, earliest);
    return checked(range.start, qBound(earliest, frame, latest), range);
}

Range moved(const Range& range, const Range& full, qint64 frames)
{
    const Limits limits = limitsOf(full);
    const qint64 length = qint64(range.end) - range.start;
    if (length < 1 || length > limits.end - limits.start)
        return range;
    const qint64 start = qBound(limits.start, range.start + frames, limits.end - length);
    return checked(start, start + length, range);
}

Block rangeBlock(const Scale& scale, const Range& range, double minWidth)
{
    const double right = scale.left + scale.width;
    Block block{qBound(scale.left, scale.toPixel(range.start), right),
                qBound(scale.left, scale.toPixel(range.end), right)};
    const double missing = qMin(minWidth, scale.width) - (block.right - block.left);
    if (missing > 0)
    {
        // Widened to both sides, then pushed back into the scale.
        const double left = (block.left + block.right) / 2 - (block.right - block.left + missing) / 2;
        block.right = left + qMin(minWidth, scale.width);
        block.left = left;
        const double push = block.left < scale.left ? scale.left - block.left : qMin(0.0, right - block.right);
        block.left += push;
        block.right += push;
    }
    return block;
}
} // namespace kxRulerMath
