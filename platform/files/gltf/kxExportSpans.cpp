#include <files/gltf/kxExportSpans.h>

#include <animation/kxCurveEvaluation.h>
#include <animation/kxCurveSegment.h>
#include <animation/kxNodeTime.h>
#include <kxCurveMath.h>

#include <algorithm>
#include <cmath>

using namespace osg;

namespace
{
using kxExportSources::Source;
using kxExportSpans::Span;

bool near(double a, double b)
{
    return std::abs(a - b) <= 1e-9 * std::max({1.0, std::abs(a), std::abs(b)});
}

/// A node's time as a straight line of the animation's time; of rate 0 it stands.
struct Line
{
    double rate = 1, shift = 0;
    double at(double seconds) const { return rate * seconds + shift; }
};

class Decomposer
{
public:
    Decomposer(bool isStepped, std::size_t& most) : _isStepped(isStepped), _most(most) {}

    /// `line` is the parent's time.
    void add(const Source& source, double start, double end, const Line& line)
    {
        const AnimNode& node = *source.node;
        const auto contentAt = [&](double time)
        { return kxNodeTime::contentTime(node, time, line.rate == 0 ? kxNodeTime::tolerance(time) : 0); };
        if (line.rate == 0)
            return addContent(source, start, end, Line{0, contentAt(line.shift)});
        std::vector<double> times;
        collectPasses(node, line.at(start), line.at(end), times);
        forEachPart(times, start, end, line,
                    [&](double from, double to)
                    {
                        // Inside of a part the content's time runs evenly: two times in it tell how.
                        const double one = from + 0.25 * (to - from), two = from + 0.75 * (to - from);
                        const double at = contentAt(line.at(one)), slope = (contentAt(line.at(two)) - at) / (two - one);
                        const double even = line.rate / double(node.getScale());
                        const double rate = std::abs(slope) < 0.5 * std::abs(even) ? 0 : std::copysign(even, slope);
                        addContent(source, from, to, Line{rate, at - rate * one});
                    });
    }

    std::vector<Span> spans;

private:
    /// Calls `part` for what lies between the times of a line at which something may change.
    template <class Part>
    void forEachPart(std::vector<double>& times, double start, double end, const Line& line, const Part& part)
    {
        for (double& time : times)
            time = (time - line.shift) / line.rate;
        std::sort(times.begin(), times.end());
        double from = start;
        for (const double time : times)
        {
            if (!mayGoOn())
                return;
            if (time > from && !near(time, from) && time < end && !near(time, end))
            {
                part(from, time);
                from = time;
            }
        }
        if (mayGoOn())
            part(from, end);
    }

    /// False where no more times are to be looked at: what was found is all that there will be. Those that begin no
    /// part count too, or a file with cycles shorter than the times can tell apart would be looked through for each.
    bool mayGoOn()
    {
        _most -= _most > 0 ? 1 : 0;
        return _most > 0;
    }

    /// The parent's times between `one` and `two` at which passes begin and end.
    void collectPasses(const AnimNode& node, double one, double two, std::vector<double>& times)
    {
        float a = 0, b = 0;
        if ((node.getPostCycles() == 0 && !node.getUsePlayRange()) || !node.getContentExtent(a, b))
            return;
        const double scale = double(node.getScale()), length = double(b) - double(a);
        const double low = (std::min(one, two) - double(node.getOffset().x())) / scale;
        const double high = (std::max(one, two) - double(node.getOffset().x())) / scale;
        double last = node.getPostCycles() >= 0 ? double(node.getPostCycles()) + 1 : INFINITY;
        last = length > 0 ? std::min(last, std::ceil((high - double(a)) / length)) : 0;
        const double first = length > 0 ? std::max(0.0, std::floor((low - double(a)) / length)) : 0;
        for (double i = 0; i <= last - first && times.size() <= _most; ++i)
            times.push_back(double(node.getOffset().x()) + scale * (double(a) + (first + i) * length));
    }

    void addContent(const Source& source, double start, double end, const Line& line)
    {
        if (source.curve != nullptr)
            return addCurve(*source.curve, start, end, line);
        if (!source.isTimed)
            return add(source.below.front(), start, end, line);
        std::vector<double> times;
        for (const Source& option : source.below)
        {
            double from = 0, to = 0;
            if (!kxNodeTime::extent(*option.node, from, to))
                continue;
            times.push_back(from);
            if (std::isfinite(to))
                times.push_back(to);
        }
        const auto addChosen = [&](double from, double to)
        {
            const double middle = line.rate == 0 ? line.shift : line.at(0.5 * (from + to));
            double time = middle;
            const Source* const chosen =
                kxNodeTime::choose(source.below, time, line.rate == 0 ? kxNodeTime::tolerance(time) : 0);
            const bool isHeld = line.rate == 0 || time != middle;
            add(chosen == nullptr ? source.below.back() : *chosen, from, to, isHeld ? Line{0, time} : line);
        };
        if (line.rate == 0)
            addChosen(start, end);
        else
            forEachPart(times, start, end, line, addChosen);
    }

    void addCurve(const AnimCurve& curve, double start, double end, const Line& line)
    {
        UInt32 cursor = 0;
        if (line.rate == 0)
        {
            const double tolerance = kxNodeTime::tolerance(line.shift);
            return append(
                still(start, end, double(kxCurveEvaluation::value(curve, line.shift, cursor, tolerance, _isStepped))));
        }
        std::vector<double> times;
        collectKeys(curve, line.at(start), line.at(end), times);
        forEachPart(times, start, end, line,
                    [&](double from, double to) { addPiece(curve, from, to, line.at(0.5 * (from + to)), line); });
    }

    static bool repeats(UInt32 mode)
    {
        return mode == UInt32(InfinityMode::Loop) || mode == UInt32(InfinityMode::LoopWithOffset) ||
               mode == UInt32(InfinityMode::Oscillate);
    }

    /// The curve's times between `one` and `two` at which keys lie, in repeats too.
    void collectKeys(const AnimCurve& curve, double one, double two, std::vector<double>& times)
    {
        const std::vector<CCPnt>& keys = curve.getControlPoints();
        const double front = double(keys.front().x()), back = double(keys.back().x()), length = back - front;
        const double low = std::min(one, two), high = std::max(one, two);
        const auto isEarlier = [](const CCPnt& key, double time) { return double(key.x()) < time; };
        const auto add = [&](double period)
        {
            const double a = low - period * length, b = high - period * length;
            const bool isFlipped = isMirrored(curve, period);
            const double from = isFlipped ? front + back - b : a, to = isFlipped ? front + back - a : b;
            for (auto key = std::lower_bound(keys.begin(), keys.end(), from, isEarlier);
                 key != keys.end() && double(key->x()) <= to && times.size() <= _most; ++key)
                times.push_back(placeIn(curve, period, double(key->x())));
        };
        if (!(length > 0))
            return add(0);
        double first = std::floor((low - front) / length), last = std::floor((high - front) / length);
        if (!repeats(curve.getPreInfinityMode()))
            first = std::max(first, 0.0);
        if (!repeats(curve.getPostInfinityMode()))
            last = std::min(last, 0.0);
        for (double i = 0; i <= last - first && times.size() <= _most; ++i)
            add(first + i);
    }

    static bool isMirrored(const AnimCurve& curve, double period)
    {
        const UInt32 mode = period < 0 ? curve.getPreInfinityMode() : curve.getPostInfinityMode();
        return mode == UInt32(InfinityMode::Oscillate) && std::fmod(period, 2.0) != 0;
    }

    /// Where a time between the keys lies in a period of the repeats.
    static double placeIn(const AnimCurve& curve, double period, double time)
    {
        const std::vector<CCPnt>& keys = curve.getControlPoints();
        const double front = double(keys.front().x()), back = double(keys.back().x());
        return (isMirrored(curve, period) ? front + back - time : time) + period * (back - front);
    }

    /// `middle` is a time of the curve inside of the piece.
    void addPiece(const AnimCurve& curve, double start, double end, double middle, const Line& line)
    {
        const std::vector<CCPnt>& keys = curve.getControlPoints();
        const double front = double(keys.front().x()), back = double(keys.back().x()), length = back - front;
        if (middle > front && middle < back)
            return addSegment(keys, start, end, middle, line, 0);
        const UInt32 mode = middle <= front ? curve.getPreInfinityMode() : curve.getPostInfinityMode();
        if (!repeats(mode) || !(length > 0))
        {
            const auto at = [&](double seconds)
            {
                // On the side of the ends where the piece is.
                UInt32 cursor = 0;
                const double time =
                    middle <= front ? std::min(line.at(seconds), front) : std::max(line.at(seconds), back);
                if (mode != UInt32(InfinityMode::Linear) || time == front || time == back)
                    return double(middle <= front ? keys.front().y() : keys.back().y());
                return double(kxCurveEvaluation::value(curve, time, cursor, 0, _isStepped));
            };
            Span span = still(start, end, at(start));
            span.last = at(end);
            span.isOutside = span.isStill();
            return append(span);
        }
        const double period = std::floor((middle - front) / length);
        const double offset =
            mode == UInt32(InfinityMode::LoopWithOffset) ? period * (double(keys.back().y()) - keys.front().y()) : 0;
        Line inside = {line.rate, line.shift - period * length};
        if (isMirrored(curve, period))
            inside = Line{-inside.rate, front + back - inside.shift};
        addSegment(keys, start, end, inside.at(0.5 * (start + end)), inside, offset);
    }

    void addSegment(const std::vector<CCPnt>& keys, double start, double end, double middle, const Line& line,
                    double offset)
    {
        const auto behind = std::upper_bound(keys.begin(), keys.end(), middle,
                                             [](double time, const CCPnt& key) { return time < double(key.x()); });
        const auto next = std::clamp(behind, keys.begin() + 1, keys.end() - 1);
        const CCPnt &a = *(next - 1), &b = *next;
        const bool isStep = a.outtangent() == Vec2f() && b.intangent() == Vec2f();
        if (_isStepped || isStep)
        {
            Span span = still(start, end, double(a.y()) + offset);
            span.isOutside = false;
            return append(span);
        }
        Span span;
        span.start = start;
        span.end = end;
        span.key = &a;
        span.rate = line.rate;
        span.shift = line.shift;
        span.offset = offset;
        append(span);
    }

    static Span still(double start, double end, double value)
    {
        Span span;
        span.start = start;
        span.end = end;
        span.first = span.last = value;
        span.isOutside = true;
        return span;
    }

    static bool goesOn(const Span& a, const Span& b)
    {
        if (a.key != b.key || a.isOutside != b.isOutside)
            return false;
        if (a.key == nullptr)
            return a.isOutside && a.isStill() && b.isStill() && a.first == b.first;
        return a.rate == b.rate && near(a.shift, b.shift) && a.offset == b.offset;
    }

    void append(const Span& span)
    {
        if (!spans.empty() && goesOn(spans.back(), span))
            spans.back().end = span.end;
        else
            spans.push_back(span);
    }

    const bool _isStepped;
    std::size_t& _most; ///< times that may still be looked at
};
} // namespace

double Span::value(double seconds) const
{
    const double inside = std::clamp(seconds, start, end);
    if (key == nullptr)
        return end > start ? first + (last - first) * (inside - start) / (end - start) : first;
    double local = rate * inside + shift;
    // Keys lie where they lie, whatever is lost on the way there.
    for (const double time : {double(key[0].x()), double(key[1].x())})
        if (near(local, time))
            local = time;
    return double(kxCurveMath::segmentValue(key[0], key[1], local)) + offset;
}

bool Span::isStraight() const
{
    return key == nullptr || kxCurveSegment(key[0], key[1], 1 / (double(key[1].x()) - key[0].x())).isChord();
}

bool Span::isCubic() const
{
    if (key == nullptr)
        return false;
    const double dx = double(key[1].x()) - key[0].x(), third = dx / 3;
    return std::abs(key[0].outX() - third) <= 1e-6 * dx && std::abs(key[1].inX() + third) <= 1e-6 * dx;
}

double Span::slope(double seconds) const
{
    if (key == nullptr)
        return end > start ? (last - first) / (end - start) : 0;
    const double dx = double(key[1].x()) - key[0].x(), dy = double(key[1].y()) - key[0].y();
    if (isStraight())
        return rate * dy / dx;
    const double u = std::clamp((rate * seconds + shift - double(key[0].x())) / dx, 0.0, 1.0), w = 1 - u;
    return rate * 3 *
           (w * w * key[0].outY() + 2 * w * u * (dy + double(key[1].inY()) - key[0].outY()) -
            u * u * double(key[1].inY())) /
           dx;
}

void Span::sample(double from, double to, Samples& samples) const
{
    const double parts = double(samples.size() + 1);
    if (isStraight())
    {
        const double low = value(from), rise = value(to) - low;
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = {double(i + 1) / parts, low + rise * double(i + 1) / parts};
        return;
    }
    // Along the curve no time has to be looked for, and where it rises steeply the samples lie close.
    const double x = double(key[0].x()), length = double(key[1].x()) - x, y = double(key[0].y()) + offset;
    const kxCurvePolynomial curve(kxCurveSegment(key[0], key[1], 1 / length));
    const auto parameterAt = [&](double seconds)
    { return curve.parameterAt(std::clamp((rate * seconds + shift - x) / length, 0.0, 1.0)); };
    const double begin = parameterAt(from), step = (parameterAt(to) - begin) / parts;
    for (std::size_t i = 0; i < samples.size(); ++i)
    {
        const double u = begin + double(i + 1) * step;
        const double seconds = (x + length * curve.x(u) - shift) / rate;
        samples[i] = {std::clamp((seconds - from) / (to - from), 0.0, 1.0), y + curve.y(u)};
    }
}

std::vector<Span> kxExportSpans::of(const Source& source, double start, double end, bool isStepped, std::size_t& most)
{
    Decomposer decomposer(isStepped, most);
    decomposer.add(source, start, end, Line());
    if (decomposer.spans.empty())
        decomposer.add(source, start, end, Line{0, start});
    return std::move(decomposer.spans);
}

double kxExportSpans::valueAt(const Source& source, double seconds, bool isStepped)
{
    std::size_t most = 0; // one time has no parts
    Decomposer decomposer(isStepped, most);
    decomposer.add(source, seconds, seconds, Line{0, seconds});
    return decomposer.spans.front().first;
}
